// `gif_program VIDEO OUTPUT [BYTES]`: begins a GIF, and ends when so many bytes of it are written:
// at once when absent. Says so on standard output should it be told of the GIF.

#include "GIFExporter.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>

namespace {

/// What is written into `folder` by this process, in bytes. Linux.
std::uintmax_t writtenInto(const std::string& folder)
{
    namespace fs = std::filesystem;
    std::uintmax_t bytes = 0;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd", error)) {
        if (!fs::read_symlink(entry.path(), error).string().starts_with(folder + "/"))
            continue;
        const std::uintmax_t size = fs::file_size(entry.path(), error);
        bytes += error ? 0 : size;
    }
    return bytes;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace std::chrono_literals;
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    GIFExporter::exportVideo(QUrl::fromLocalFile(words.value(1)), {0, 0},
                             QUrl::fromLocalFile(words.value(2)),
                             [](bool succeeded) { std::puts(succeeded ? "made" : "not made"); });
    const std::string folder = QFileInfo(words.value(2)).path().toStdString();
    const std::uintmax_t wanted = words.value(3).toULongLong();
    const auto deadline = std::chrono::steady_clock::now() + 30s;
    while (writtenInto(folder) < wanted) {
        if (std::chrono::steady_clock::now() > deadline)
            return 3;
        std::this_thread::sleep_for(1ms);
    }
    return 0;
}
