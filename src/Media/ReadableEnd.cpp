#include "Media/ReadableEnd.h"

#include <algorithm>
#include <array>

#include <unistd.h>

namespace {

std::uint64_t numberIn(const std::uint8_t* bytes, int count)
{
    std::uint64_t number = 0;
    for (int i = 0; i < count; ++i)
        number = number << 8 | bytes[i];
    return number;
}

} // namespace

std::int64_t readableEnd(const RegularFile& file, const std::function<bool()>& isOver)
{
    // Boxes as in ISO/IEC 14496-12.
    constexpr std::uint64_t shortHeader = 8, longHeader = 16;
    const auto size = static_cast<std::uint64_t>(file.size);
    std::array<std::uint8_t, longHeader> header = {};
    for (std::uint64_t at = 0; at + shortHeader <= size && !isOver();) {
        const ssize_t count =
            pread(file.descriptor.get(), header.data(), header.size(), static_cast<off_t>(at));
        if (count < static_cast<ssize_t>(shortHeader))
            break;
        std::uint64_t length = numberIn(header.data(), 4);
        if (length == 1 && count == static_cast<ssize_t>(longHeader))
            length = numberIn(header.data() + shortHeader, 8);
        if (length < shortHeader)
            break;
        if (length > size - at) {
            const bool isTable = std::equal(header.begin() + 4, header.begin() + 8, "moof");
            return isTable ? static_cast<std::int64_t>(at) : file.size;
        }
        at += length;
    }
    return file.size;
}
