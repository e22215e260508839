#include "Platform/Linux/X11/ModifierMap.h"

#include "Platform/HotKeys.h"
#include "Platform/Linux/X11/QtConnection.h"

#include <X11/keysym.h>
#include <xcb/xcb_keysyms.h>

#include <initializer_list>

namespace {

struct FreeSymbols {
    void operator()(xcb_key_symbols_t* symbols) const { xcb_key_symbols_free(symbols); }
};
using KeySymbols = std::unique_ptr<xcb_key_symbols_t, FreeSymbols>;

/// The modifier (Mod1 to Mod5) that any key with one of `keysyms` sets; `fallback` when there is
/// none.
std::uint16_t modifierOf(xcb_key_symbols_t& symbols,
                         const xcb_get_modifier_mapping_reply_t& mapping,
                         std::initializer_list<xcb_keysym_t> keysyms, std::uint16_t fallback)
{
    const xcb_keycode_t* keyCodes = xcb_get_modifier_mapping_keycodes(&mapping);
    const int perModifier = mapping.keycodes_per_modifier;
    for (const xcb_keysym_t keysym : keysyms) {
        const X11::Reply<xcb_keycode_t> wanted(xcb_key_symbols_get_keycode(&symbols, keysym));
        if (!wanted)
            continue;
        for (int modifier = XCB_MAP_INDEX_1; modifier <= XCB_MAP_INDEX_5; ++modifier) {
            for (int i = 0; i < perModifier; ++i) {
                const xcb_keycode_t code = keyCodes[modifier * perModifier + i];
                for (const xcb_keycode_t* w = wanted.get(); *w != XCB_NO_SYMBOL; ++w) {
                    if (*w == code)
                        return static_cast<std::uint16_t>(1 << modifier);
                }
            }
        }
    }
    return fallback;
}

} // namespace

X11::ModifierMap::ModifierMap()
    : m_alt(XCB_MOD_MASK_1)
    , m_super(XCB_MOD_MASK_4)
    , m_numLock(XCB_MOD_MASK_2)
{
    const auto cookie = xcb_get_modifier_mapping(qtConnection());
    const Reply<xcb_get_modifier_mapping_reply_t> mapping(
        xcb_get_modifier_mapping_reply(qtConnection(), cookie, nullptr));
    const KeySymbols symbols(xcb_key_symbols_alloc(qtConnection()));
    if (!mapping || !symbols)
        return;
    m_alt = modifierOf(*symbols, *mapping, {XK_Alt_L, XK_Alt_R, XK_Meta_L}, m_alt);
    m_super = modifierOf(*symbols, *mapping, {XK_Super_L, XK_Super_R}, m_super);
    m_numLock = modifierOf(*symbols, *mapping, {XK_Num_Lock}, m_numLock);
    m_scrollLock = modifierOf(*symbols, *mapping, {XK_Scroll_Lock}, m_scrollLock);
}

std::uint16_t X11::ModifierMap::fromHotKeyMask(std::uint32_t mask) const
{
    namespace Bit = Platform::HotKeyModifier;
    unsigned state = 0;
    if (mask & Bit::command)
        state |= XCB_MOD_MASK_CONTROL;
    if (mask & Bit::shift)
        state |= XCB_MOD_MASK_SHIFT;
    if (mask & Bit::option)
        state |= m_alt;
    if (mask & Bit::control)
        state |= m_super;
    return static_cast<std::uint16_t>(state);
}

std::uint16_t X11::ModifierMap::relevant() const
{
    return static_cast<std::uint16_t>(XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | m_alt | m_super);
}

std::vector<std::uint16_t> X11::ModifierMap::lockVariants() const
{
    std::vector<std::uint16_t> variants{0};
    for (const unsigned lock :
         {unsigned{XCB_MOD_MASK_LOCK}, unsigned{m_numLock}, unsigned{m_scrollLock}})
    {
        const std::size_t without = lock ? variants.size() : 0;
        for (std::size_t i = 0; i < without; ++i)
            variants.push_back(static_cast<std::uint16_t>(variants[i] | lock));
    }
    return variants;
}
