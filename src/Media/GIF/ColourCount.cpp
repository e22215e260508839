#include "Media/GIF/ColourCount.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int slotBits = 16;
constexpr std::size_t slotCount = std::size_t{1} << slotBits;
constexpr std::size_t mostColours = slotCount / 2;

std::size_t hashOf(std::uint32_t key)
{
    return key * 0x9e3779b1U >> (32 - slotBits); // the golden ratio spreads neighbours
}

} // namespace

using namespace GIF;

Pixel ColourCount::Entry::mean() const
{
    const auto rounded = [this](std::uint64_t sum) {
        return static_cast<int>((sum + count / 2) / count);
    };
    return opaque(rounded(red), rounded(green), rounded(blue));
}

ColourCount::ColourCount()
    : m_slots(slotCount)
{
}

ColourCount::Slot& ColourCount::slotOf(Pixel colour)
{
    const std::uint32_t key = colour & m_mask;
    for (std::size_t i = hashOf(key);; i = (i + 1) % slotCount) {
        if (m_slots[i].key == key || m_slots[i].key == empty)
            return m_slots[i];
    }
}

void ColourCount::add(Pixel colour, std::uint32_t times)
{
    const auto sum = [times](int channel) {
        return std::uint64_t{times} * static_cast<unsigned>(channel);
    };
    add(Entry{times, sum(red(colour)), sum(green(colour)), sum(blue(colour))}, colour);
}

void ColourCount::add(const Entry& entry, Pixel colour)
{
    Slot& slot = slotOf(colour);
    const bool isNew = slot.key == empty;
    slot.key = colour & m_mask;
    slot.entry.count += entry.count;
    slot.entry.red += entry.red;
    slot.entry.green += entry.green;
    slot.entry.blue += entry.blue;
    if (isNew && ++m_used == mostColours)
        merge();
}

void ColourCount::add(const ColourCount& other)
{
    for (const Entry& entry : other.entries())
        add(entry, entry.mean());
}

void ColourCount::merge()
{
    const std::vector<Slot> old = std::exchange(m_slots, std::vector<Slot>(slotCount));
    m_used = 0;
    m_mask = (m_mask & 0x7f7f7f) << 1; // one bit a channel less
    for (const Slot& slot : old) {
        if (slot.key != empty)
            add(slot.entry, slot.key);
    }
}

std::vector<ColourCount::Entry> ColourCount::entries() const
{
    std::vector<std::pair<std::uint32_t, Entry>> sorted;
    for (const Slot& slot : m_slots) {
        if (slot.key != empty)
            sorted.emplace_back(slot.key, slot.entry);
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const auto& one, const auto& other) { return one.first < other.first; });
    std::vector<Entry> entries;
    entries.reserve(sorted.size());
    for (const auto& [key, entry] : sorted)
        entries.push_back(entry);
    return entries;
}
