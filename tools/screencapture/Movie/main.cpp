#include "Arguments.h"
#include "Movie/Recording.h"
#include "Report.h"
#include "StopSignals.h"

#include <algorithm>
#include <csignal>
#include <new>
#include <span>

namespace {

int run(std::span<const char* const> words, const StopSignals& signals)
{
    const Result<Arguments> arguments = parseArguments(words);
    if (!arguments) {
        report(arguments.failure());
        return ExitStatus::misused;
    }
    const Result<int> earlySignal = recordMovie(*arguments, signals);
    if (!earlySignal) {
        report(earlySignal.failure());
        return ExitStatus::failed;
    }
    if (*earlySignal != 0)
        StopSignals::endBy(*earlySignal);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const StopSignals signals;
    // A server that goes away and a file that grows too large shall be errors to report, not the
    // end of the process.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        const std::span<const char* const> words(argv, static_cast<std::size_t>(argc));
        return run(words.subspan(std::min<std::size_t>(1, words.size())), signals);
    } catch (const std::bad_alloc&) {
        report({"not enough memory"});
        return ExitStatus::failed;
    }
}
