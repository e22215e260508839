#include "HotKey.h"

#include "Support/Log.h"

#include <limits>

std::map<std::uint32_t, std::function<void()>> HotKey::callbacks;
std::uint32_t HotKey::nextIdentifier = 1;
bool HotKey::handlerInstalled = false;

std::unique_ptr<HotKey> HotKey::create(std::uint32_t keyCode, std::uint32_t modifiers,
                                       std::function<void()> handler)
{
    installHandlerIfNeeded();
    const std::uint32_t identifier = takeIdentifier();
    const auto ref = Platform::registerHotKey(keyCode, modifiers, identifier);
    if (!ref)
        return nullptr;
    callbacks[identifier] = std::move(handler);
    return std::unique_ptr<HotKey>(new HotKey(*ref));
}

HotKey::HotKey(Platform::HotKeyReference ref)
    : m_ref(ref)
{
}

HotKey::~HotKey()
{
    Platform::unregisterHotKey(m_ref);
}

std::uint32_t HotKey::takeIdentifier()
{
    if (nextIdentifier == std::numeric_limits<std::uint32_t>::max())
        Log::fatal(QStringLiteral("no hot key identifiers left"));
    return nextIdentifier++;
}

void HotKey::installHandlerIfNeeded()
{
    if (handlerInstalled)
        return;
    Platform::setHotKeyHandler([](std::uint32_t identifier) {
        const auto found = callbacks.find(identifier);
        if (found == callbacks.end())
            return;
        const auto handler = found->second; // a copy: it may register another hot key
        handler();
    });
    handlerInstalled = true;
}
