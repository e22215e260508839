#pragma once

#include "Platform/HotKeys.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

/// One global keyboard shortcut, registered for as long as the object lives. Main thread only.
class HotKey {
public:
    /// Registers a shortcut. `keyCode` is a virtual key code, `modifiers` a mask of
    /// Platform::HotKeyModifier bits, `handler` runs at each press. Null when the desktop refuses
    /// it.
    static std::unique_ptr<HotKey> create(std::uint32_t keyCode, std::uint32_t modifiers,
                                          std::function<void()> handler);

    ~HotKey();
    HotKey(const HotKey&) = delete;
    HotKey& operator=(const HotKey&) = delete;

private:
    explicit HotKey(Platform::HotKeyReference ref);

    /// Takes the next identifier: 1, 2, 3, ... in the order of creation. A refused registration
    /// uses up its identifier too.
    static std::uint32_t takeIdentifier();
    static void installHandlerIfNeeded();

    /// What to run for which identifier. An entry outlives its hot key, which is harmless:
    /// identifiers are never used again.
    static std::map<std::uint32_t, std::function<void()>> callbacks;
    static std::uint32_t nextIdentifier;
    static bool handlerInstalled;

    Platform::HotKeyReference m_ref;
};
