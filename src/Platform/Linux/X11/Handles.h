#pragma once

#include <cstdlib>
#include <memory>

/// RAII aliases for what xcb hands out. Free of the C headers themselves.
namespace X11 {

struct FreeWithLibc {
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply or an error from the X server; xcb allocates it, its reader frees it.
template <class Struct>
using Reply = std::unique_ptr<Struct, FreeWithLibc>;

} // namespace X11
