#include "Report.h"

#include <algorithm>
#include <cstdio>

void report(const Failure& failure)
{
    // One line, whatever a file's name or an argument holds.
    std::string line = failure.message;
    std::replace_if(
        line.begin(), line.end(),
        [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }, '?');
    std::fprintf(stderr, "screencapture: %s\n", line.c_str());
}
