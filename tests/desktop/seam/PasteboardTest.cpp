#include "Platform/Pasteboard.h"

#include "desktop/seam/Xdotool.h"
#include "support/EventLoop.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <set>

namespace {

/// What another program reads from the clipboard; our event loop serves it meanwhile.
QByteArray paste(const char* target)
{
    QProcess xclip;
    xclip.start(QStringLiteral("xclip"),
                {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-o"),
                 QStringLiteral("-t"), QString::fromLatin1(target)});
    if (!runUntil([&xclip] { return xclip.state() == QProcess::NotRunning; }))
        ADD_FAILURE() << "xclip does not end";
    return xclip.readAllStandardOutput();
}

std::set<QByteArray> offered()
{
    const auto lines = paste("TARGETS").trimmed().split('\n');
    return {lines.begin(), lines.end()};
}

QByteArray someBytes()
{
    QByteArray bytes("\x89PNG\r\n\x1a\n", 8);
    for (int i = 0; i < 3'000'000; ++i)
        bytes.append(static_cast<char>((i * 31) ^ (i >> 8)));
    return bytes;
}

const QUrl file = QUrl::fromLocalFile(QStringLiteral("/tmp/Tamrik ü 1 #2.png"));
constexpr const char* encoded = "file:///tmp/Tamrik%20%C3%BC%201%20%232.png";

} // namespace

TEST(Pasteboard, OffersThePngsBytesAsTheyStand)
{
    const QByteArray png = someBytes();
    Platform::writePasteboard({.png = png, .fileURL = file});
    EXPECT_EQ(paste("image/png"), png);
}

TEST(Pasteboard, OffersTheFileToPrograms)
{
    Platform::writePasteboard({.png = QByteArray("png"), .fileURL = file});
    EXPECT_EQ(paste("text/uri-list"), QByteArray(encoded) + "\r\n");
}

TEST(Pasteboard, OffersTheFileToFileManagers)
{
    Platform::writePasteboard({.png = std::nullopt, .fileURL = file});
    EXPECT_EQ(paste("x-special/gnome-copied-files"), QByteArray("copy\n") + encoded);
    EXPECT_EQ(paste("application/x-kde-cutselection"), "0");
    EXPECT_FALSE(offered().contains("image/png"));
}

TEST(Pasteboard, AnItemReplacesTheOneBefore)
{
    Platform::writePasteboard({.png = QByteArray("png"), .fileURL = file});
    Platform::writePasteboard({.png = QByteArray("other"), .fileURL = std::nullopt});
    EXPECT_EQ(paste("image/png"), "other");
    EXPECT_FALSE(offered().contains("text/uri-list"));
    EXPECT_FALSE(offered().contains("x-special/gnome-copied-files"));
}
