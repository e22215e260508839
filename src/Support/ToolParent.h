#pragma once

/// How the capture tool knows whose child it is, also when that one has ended before it could ask.
namespace ToolParent {

/// The environment variable with the parent's process id. Without it the parent is whoever is when
/// a recording begins.
inline constexpr const char* variable = "TAMRIK_PARENT";

} // namespace ToolParent
