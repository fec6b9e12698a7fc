#include "riff/InfoChunks.h"

#include <algorithm>
#include <new>

InfoChunks::InfoChunks(std::initializer_list<Entry> entries) {
    for (const auto& [id, bytes] : entries) Set(id, bytes);
}

InfoChunks::Entry InfoChunks::At(size_t index) const {
    const Slot& slot = m_slots[index];
    return {slot.id, {m_bytes.data() + slot.start, slot.size}};
}

bool InfoChunks::operator==(const InfoChunks& other) const {
    if (m_slots.size() != other.m_slots.size()) return false;
    for (size_t i = 0; i < m_slots.size(); ++i)
        if (At(i) != other.At(i)) return false;
    return true;
}

size_t InfoChunks::PlaceOf(uint32_t id) const {
    const auto place = std::lower_bound(m_slots.begin(), m_slots.end(), id,
                                        [](const Slot& slot, uint32_t wanted) { return slot.id < wanted; });
    return static_cast<size_t>(place - m_slots.begin());
}

std::optional<std::string_view> InfoChunks::Find(uint32_t id) const {
    const size_t place = PlaceOf(id);
    if (place == m_slots.size() || m_slots[place].id != id) return std::nullopt;
    return At(place).second;
}

uint32_t InfoChunks::Grow(size_t size) {
    const size_t start = m_bytes.size();
    const size_t taken = start + m_slots.size() * sizeof(Slot);
    if (taken > kMostBytes || size > kMostBytes - taken) throw std::bad_alloc();
    m_bytes.resize(start + size);
    return static_cast<uint32_t>(start);
}

void InfoChunks::Set(uint32_t id, std::string_view bytes) {
    Erase(id);
    const uint32_t start = Grow(bytes.size());
    bytes.copy(m_bytes.data() + start, bytes.size());
    m_slots.insert(m_slots.begin() + static_cast<std::ptrdiff_t>(PlaceOf(id)),
                   {id, start, static_cast<uint32_t>(bytes.size())});
}

void InfoChunks::Erase(uint32_t id) {
    const size_t place = PlaceOf(id);
    if (place == m_slots.size() || m_slots[place].id != id) return;
    // What is gone leaves no hole: a file's largest chunk is often the one that is replaced.
    const Slot gone = m_slots[place];
    m_slots.erase(m_slots.begin() + static_cast<std::ptrdiff_t>(place));
    const auto start = m_bytes.begin() + static_cast<std::ptrdiff_t>(gone.start);
    m_bytes.erase(start, start + static_cast<std::ptrdiff_t>(gone.size));
    for (Slot& slot : m_slots)
        if (slot.start > gone.start) slot.start -= gone.size;
}

void InfoChunks::clear() {
    // A file may have a million small lists, each in place of the one before it.
    constexpr size_t kLittle = 4096;
    if (m_bytes.capacity() + m_slots.capacity() * sizeof(Slot) > kLittle) *this = {};
    m_slots.clear();
    m_bytes.clear();
}

void InfoChunks::Seal() {
    // By place within an id, so that the first that came in stands first, without memory for a stable sort.
    // Where two share a place, the first of them is empty.
    const auto placeOf = [](const Slot& slot) { return uint64_t{slot.id} << 32 | slot.start; };
    const auto precedes = [&](const Slot& a, const Slot& b) {
        return placeOf(a) != placeOf(b) ? placeOf(a) < placeOf(b) : a.size < b.size;
    };
    if (!std::is_sorted(m_slots.begin(), m_slots.end(), precedes))
        std::sort(m_slots.begin(), m_slots.end(), precedes);
    m_slots.erase(std::unique(m_slots.begin(), m_slots.end(),
                              [](const Slot& a, const Slot& b) { return a.id == b.id; }),
                  m_slots.end());
}
