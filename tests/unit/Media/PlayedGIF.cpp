#include "unit/Media/PlayedGIF.h"

#include "Media/Av/Handles.h"

#include <QImageReader>

#include <gtest/gtest.h>

namespace {

PlayedGIF byQt(const std::string& path)
{
    PlayedGIF gif;
    QImageReader reader(QString::fromStdString(path), "gif");
    QImage frame;
    while (reader.read(&frame)) {
        gif.frames.push_back(frame.convertToFormat(QImage::Format_RGB32));
        gif.delays.push_back(reader.nextImageDelay() / 10);
    }
    gif.isEndless = reader.loopCount() == -1;
    return gif;
}

PlayedGIF byFFmpeg(const std::string& path)
{
    PlayedGIF gif;
    AVDictionary* options = nullptr;
    for (const char* name : {"min_delay", "max_gif_delay"}) // which it would otherwise correct
        av_dict_set_int(&options, name, name[1] == 'i' ? 0 : 65535, 0);
    AVFormatContext* opened = nullptr;
    const int error = avformat_open_input(&opened, path.c_str(), nullptr, &options);
    av_dict_free(&options);
    if (error < 0)
        return gif;
    const Av::Input file(opened);
    const Av::Codec codec(avcodec_alloc_context3(avcodec_find_decoder(AV_CODEC_ID_GIF)));
    avcodec_parameters_to_context(codec.get(), file->streams[0]->codecpar);
    codec->thread_count = 1;
    EXPECT_GE(avcodec_open2(codec.get(), nullptr, nullptr), 0);
    const Av::Packet packet(av_packet_alloc());
    const Av::Frame frame(av_frame_alloc());
    for (; av_read_frame(opened, packet.get()) >= 0; av_packet_unref(packet.get())) {
        gif.delays.push_back(static_cast<int>(packet->duration));
        avcodec_send_packet(codec.get(), packet.get());
        if (avcodec_receive_frame(codec.get(), frame.get()) < 0)
            continue;
        EXPECT_EQ(frame->format, AV_PIX_FMT_RGB32);
        gif.frames.push_back(QImage(frame->data[0], frame->width, frame->height, frame->linesize[0],
                                    QImage::Format_ARGB32)
                                 .convertToFormat(QImage::Format_RGB32));
    }
    return gif;
}

} // namespace

PlayedGIF PlayedGIF::of(const std::string& path)
{
    PlayedGIF gif = byQt(path);
    if (gif.frames.empty()) {
        ADD_FAILURE() << path << " is no GIF";
        return gif;
    }
    const PlayedGIF other = byFFmpeg(path);
    EXPECT_EQ(gif.delays, other.delays);
    EXPECT_EQ(gif.frames.size(), other.frames.size());
    for (std::size_t i = 0; i < std::min(gif.frames.size(), other.frames.size()); ++i)
        EXPECT_TRUE(gif.frames[i] == other.frames[i]) << "frame " << i;
    return gif;
}

std::vector<int> PlayedGIF::greys() const
{
    std::vector<int> greys;
    for (const QImage& frame : frames)
        greys.push_back(qGray(frame.pixel(frame.width() / 2, frame.height() / 2)));
    return greys;
}
