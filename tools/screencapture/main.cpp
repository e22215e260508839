#include "Arguments.h"
#include "Still.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <new>
#include <span>

namespace {

constexpr int exitFailed = 1;
constexpr int exitMisused = 2;

/// The one place that speaks: one line, whatever a file's name or an argument holds.
int report(const Failure& failure, int status)
{
    std::string line = failure.message;
    std::replace_if(
        line.begin(), line.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }, '?');
    std::fprintf(stderr, "screencapture: %s\n", line.c_str());
    return status;
}

int run(std::span<const char* const> words)
{
    const Result<Arguments> arguments = parseArguments(words);
    if (!arguments)
        return report(arguments.failure(), exitMisused);
    if (const PossibleFailure failure = takeStill(*arguments))
        return report(*failure, exitFailed);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    // A server that goes away and a file that grows too large shall be errors to report, not the
    // end of the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        const std::span<const char* const> words(argv, static_cast<std::size_t>(argc));
        return run(words.subspan(std::min<std::size_t>(1, words.size())));
    } catch (const std::bad_alloc&) {
        return report({"not enough memory"}, exitFailed);
    }
}
