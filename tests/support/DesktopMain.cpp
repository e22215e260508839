// Runs its tests as a program on a virtual desktop of their own, which TAMRIK_TEST_DESKTOP
// describes in the options of scripts/desktop. The desktop ends with this process.

#include "support/TestLog.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

struct ClosePipe {
    void operator()(std::FILE* pipe) const { pclose(pipe); }
};

/// Starts the desktop and takes over its environment; false when it did not start, after the script
/// has said why.
bool enterDesktop(const std::string& options)
{
    const std::string name = "test-" + std::to_string(getpid());
    const std::string command = "exports=$('" TAMRIK_DESKTOP_SCRIPT "' start --name " + name +
                                " --until-exit-of " + std::to_string(getpid()) + " " + options +
                                ") && eval \"$exports\" && env -0";
    const std::unique_ptr<std::FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
    if (!pipe)
        return false;
    std::string environment;
    char buffer[4096];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, pipe.get()))
        environment.append(buffer, count);

    bool found = false;
    for (std::size_t begin = 0; begin < environment.size();) {
        const std::size_t end = environment.find('\0', begin);
        const std::string entry = environment.substr(begin, end - begin);
        const std::size_t equals = entry.find('=');
        setenv(entry.substr(0, equals).c_str(), entry.substr(equals + 1).c_str(), 1);
        found = true;
        begin = end == std::string::npos ? environment.size() : end + 1;
    }
    return found;
}

} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const char* options = std::getenv("TAMRIK_TEST_DESKTOP");
    if (!enterDesktop(options ? options : "")) {
        std::fprintf(stderr, "the virtual desktop did not start\n");
        return EXIT_FAILURE;
    }
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    TestLog::install();
    return RUN_ALL_TESTS();
}
