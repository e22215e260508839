#include "Media/Pictures/PngRows.h"

#include <csetjmp>

#include <png.h>

// libpng leaves a function that fails by longjmp, to where setjmp stands. No object with a
// destructor may live between the two, so each function below that calls into it holds plain values
// only.

struct PngRows::Decoder {
    png_structp png = nullptr;
    png_infop info = nullptr;
    bool hasAlpha = false;
    int passes = 1;
    qint64 rowsLeft = 0;

    ~Decoder() { png_destroy_read_struct(&png, &info, nullptr); }

    bool create(QIODevice& file);
    bool readHeader();
    void correctGamma();
};

namespace {

[[noreturn]] void onError(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

void onWarning(png_structp, png_const_charp)
{
    // What can be read in spite of it is shown.
}

void readBytes(png_structp png, png_bytep bytes, size_t size)
{
    auto* const file = static_cast<QIODevice*>(png_get_io_ptr(png));
    void* const start = bytes;
    if (file->read(static_cast<char*>(start), static_cast<qint64>(size)) !=
        static_cast<qint64>(size))
        onError(png, nullptr);
}

} // namespace

bool PngRows::Decoder::create(QIODevice& file)
{
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning);
    info = png ? png_create_info_struct(png) : nullptr;
    if (info)
        png_set_read_fn(png, &file, readBytes);
    return info;
}

bool PngRows::Decoder::readHeader()
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    png_read_info(png, info);
    hasAlpha = (png_get_color_type(png, info) & PNG_COLOR_MASK_ALPHA) != 0 ||
               png_get_valid(png, info, PNG_INFO_tRNS) != 0;
    png_set_scale_16(png);
    png_set_expand(png);
    png_set_gray_to_rgb(png);
    if (!hasAlpha)
        png_set_filler(png, 0xff, PNG_FILLER_AFTER);
    correctGamma();
    passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    rowsLeft = qint64{passes} * png_get_image_height(png, info);
    return png_get_rowbytes(png, info) == png_size_t{4} * png_get_image_width(png, info);
}

void PngRows::Decoder::correctGamma()
{
    double gamma = 0;
    const bool isNamed = png_get_valid(png, info, PNG_INFO_sRGB | PNG_INFO_iCCP) != 0;
    // libpng leaves alone what comes close to sRGB.
    if (!isNamed && png_get_gAMA(png, info, &gamma) && gamma > 0)
        png_set_gamma(png, PNG_DEFAULT_sRGB, gamma);
}

std::unique_ptr<PngRows> PngRows::open(QIODevice& file)
{
    auto decoder = std::make_unique<Decoder>();
    if (!decoder->create(file) || !decoder->readHeader())
        return nullptr;
    return std::unique_ptr<PngRows>(new PngRows(std::move(decoder)));
}

PngRows::PngRows(std::unique_ptr<Decoder> decoder)
    : m_decoder(std::move(decoder))
{
}

PngRows::~PngRows() = default;

int PngRows::width() const
{
    return static_cast<int>(png_get_image_width(m_decoder->png, m_decoder->info));
}

int PngRows::height() const
{
    return static_cast<int>(png_get_image_height(m_decoder->png, m_decoder->info));
}

bool PngRows::hasAlpha() const
{
    return m_decoder->hasAlpha;
}

int PngRows::passes() const
{
    return m_decoder->passes;
}

QColorSpace PngRows::colorSpace() const
{
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 size = 0;
    if (!png_get_iCCP(m_decoder->png, m_decoder->info, &name, &compression, &profile, &size))
        return {};
    const void* const start = profile;
    return QColorSpace::fromIccProfile({static_cast<const char*>(start), static_cast<int>(size)});
}

bool PngRows::readRow(unsigned char* row)
{
    if (m_decoder->rowsLeft == 0 || setjmp(png_jmpbuf(m_decoder->png)) != 0)
        return false;
    png_read_row(m_decoder->png, row, nullptr); // a pass leaves the others' pixels as they are
    --m_decoder->rowsLeft;
    return true;
}
