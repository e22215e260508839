#include "Support/Log.h"

#include <cstdio>
#include <cstdlib>

namespace {

Log::Sink& currentSink()
{
    static Log::Sink sink;
    return sink;
}

/// One fwrite, so that lines of two threads or processes do not mix.
void writeToStandardError(const QString& text)
{
    QByteArray bytes = "Tamrik: " + text.toUtf8();
    if (!bytes.endsWith('\n'))
        bytes += '\n';
    // Nowhere is left to report a standard error that cannot be written.
    (void)std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
    std::fflush(stderr);
}

} // namespace

void Log::line(const QString& text)
{
    if (currentSink())
        currentSink()(text);
    else
        writeToStandardError(text);
}

void Log::fatal(const QString& text)
{
    writeToStandardError(text);
    std::abort();
}

void Log::setSink(Sink sink)
{
    currentSink() = std::move(sink);
}
