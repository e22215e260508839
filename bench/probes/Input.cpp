#include "probes/Input.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include <sys/uio.h>
#include <xcb/xcbext.h>

namespace Bench {

namespace {

// X11/keysymdef.h
constexpr xcb_keysym_t escape = 0xff1b;
constexpr xcb_keysym_t leftShift = 0xffe1;
constexpr xcb_keysym_t leftAlt = 0xffe9;
constexpr xcb_keysym_t letterS = 0x0073;

// The one request of XTEST that is needed here, as the XTEST Extension Protocol 2.2 has it; the
// extension's C header is in none of the packages that building takes.
xcb_extension_t xtest = {"XTEST", 0};
constexpr std::uint8_t fakeInputOpcode = 2;

struct FakeInputRequest {
    std::uint8_t majorOpcode = 0; // xcb fills in the first four bytes
    std::uint8_t minorOpcode = 0;
    std::uint16_t length = 0;
    std::uint8_t type = 0;
    std::uint8_t detail = 0;
    std::uint16_t unused1 = 0;
    std::uint32_t delay = 0; // milliseconds
    xcb_window_t root = XCB_NONE;
    std::uint32_t unused2[2] = {};
    std::int16_t x = 0;
    std::int16_t y = 0;
    std::uint32_t unused3 = 0;
    std::uint16_t unused4 = 0;
    std::uint8_t unused5 = 0;
    std::uint8_t device = 0;
};
static_assert(sizeof(FakeInputRequest) == 36);

} // namespace

Input::Input(const Connection& connection)
    : m_connection(connection)
    , m_symbols(xcb_key_symbols_alloc(connection))
{
    connection.firstEvent(xtest);
}

Input::~Input()
{
    xcb_key_symbols_free(m_symbols);
}

Clock::time_point Input::fake(std::uint8_t type, std::uint8_t detail, int x, int y)
{
    FakeInputRequest request;
    request.type = type;
    request.detail = detail;
    request.root = m_connection.root();
    request.x = static_cast<std::int16_t>(x);
    request.y = static_cast<std::int16_t>(y);
    constexpr xcb_protocol_request_t kind = {1, &xtest, fakeInputOpcode, 1};
    iovec parts[3] = {}; // xcb uses the two before the one that it is given
    parts[2] = {&request, sizeof request};
    const auto before = Clock::now();
    xcb_send_request(m_connection, 0, parts + 2, &kind);
    xcb_flush(m_connection);
    return before;
}

std::uint8_t Input::keyCode(xcb_keysym_t symbol) const
{
    const Owned<xcb_keycode_t> codes(xcb_key_symbols_get_keycode(m_symbols, symbol));
    if (!codes || *codes == XCB_NO_SYMBOL)
        throw std::runtime_error("the keyboard lacks a key");
    return *codes;
}

Clock::time_point Input::press(std::initializer_list<xcb_keysym_t> symbols)
{
    std::vector<std::uint8_t> codes;
    for (const xcb_keysym_t symbol : symbols)
        codes.push_back(keyCode(symbol));
    Clock::time_point last;
    for (const std::uint8_t code : codes)
        last = fake(XCB_KEY_PRESS, code);
    std::reverse(codes.begin(), codes.end());
    for (const std::uint8_t code : codes)
        fake(XCB_KEY_RELEASE, code);
    return last;
}

void Input::movePointer(int x, int y)
{
    fake(XCB_MOTION_NOTIFY, 0, x, y);
}

Clock::time_point Input::setButton(bool down)
{
    return fake(down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, 1);
}

Clock::time_point pressHotKey(Input& input)
{
    return input.press({leftAlt, leftShift, letterS});
}

void pressEscape(Input& input)
{
    input.press({escape});
}

} // namespace Bench
