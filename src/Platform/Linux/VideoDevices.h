#pragma once

#include <string>

/// The kernel's video devices.
namespace VideoDevices {

/// Whether there are any in `folder` and the user may open none of them.
bool areRefused(const std::string& folder);

} // namespace VideoDevices
