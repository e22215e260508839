#include "Arguments.h"
#include "MovieProgram.h"
#include "Report.h"
#include "Still.h"

#include <algorithm>
#include <csignal>
#include <new>
#include <span>

namespace {

int run(int argc, char** argv)
{
    const std::span<const char* const> words(argv, static_cast<std::size_t>(argc));
    const Result<Arguments> arguments =
        parseArguments(words.subspan(std::min<std::size_t>(1, words.size())));
    if (!arguments) {
        report(arguments.failure());
        return ExitStatus::misused;
    }
    const PossibleFailure failure =
        arguments->isMovie ? becomeMovieProgram(argv) : takeStill(*arguments);
    if (failure) {
        report(*failure);
        return ExitStatus::failed;
    }
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
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        report({"not enough memory"});
        return ExitStatus::failed;
    }
}
