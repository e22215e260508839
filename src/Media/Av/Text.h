#pragma once

#include <string>

namespace Av {

/// What an error number of FFmpeg's means.
std::string text(int error);

} // namespace Av
