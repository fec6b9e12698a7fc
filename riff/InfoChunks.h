// The sub-chunks of an "INFO" list: an id and the bytes that its size declares, in the order of the ids as
// little-endian numbers, each id once. Gives the bytes no meaning. The bytes lie in one block, so that a
// million entries take no more than twice what they take in a file.
//
// Decisions: all of them together, with what is noted of each, stay below 64 MiB, and std::bad_alloc says
// where they wouldn't.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

class InfoChunks {
    // Leaves new bytes as they are: all of them get filled, and a first touch of large memory is dear.
    struct UnsetBytes : std::allocator<char> {
        template <class>
        struct rebind {
            using other = UnsetBytes;
        };
        void construct(char*) noexcept {}
        void construct(char* place, char value) noexcept { *place = value; }
    };

    struct Slot {
        uint32_t id;
        uint32_t start;  // in m_bytes
        uint32_t size;
    };

public:
    static constexpr size_t kMostBytes = size_t{64} << 20;

    using Entry = std::pair<uint32_t, std::string_view>;  // valid until the next change

    class Iterator {
    public:
        Iterator(const InfoChunks& chunks, size_t at) : m_chunks(chunks), m_at(at) {}
        Entry operator*() const { return m_chunks.At(m_at); }
        Iterator& operator++() {
            ++m_at;
            return *this;
        }
        bool operator!=(const Iterator& other) const { return m_at != other.m_at; }

    private:
        const InfoChunks& m_chunks;
        size_t m_at;
    };

    InfoChunks() = default;
    InfoChunks(std::initializer_list<Entry> entries);

    Iterator begin() const { return {*this, 0}; }
    Iterator end() const { return {*this, m_slots.size()}; }
    bool empty() const { return m_slots.empty(); }
    size_t size() const { return m_slots.size(); }
    bool operator==(const InfoChunks& other) const;

    // The bytes under an id; nothing where there are none.
    std::optional<std::string_view> Find(uint32_t id) const;

    // In place of what is there. `bytes` lie elsewhere. May throw bad_alloc.
    void Set(uint32_t id, std::string_view bytes);
    void Erase(uint32_t id);
    void clear();  // gives more than a little memory back too

    // For a list on its way in: `fill(char*)` puts `held` bytes, of which the first `kept` become an entry if
    // it returns true. Of two entries with one id the first stays. Nothing else is asked before Seal. May
    // throw bad_alloc.
    template <class Fill>
    bool Append(uint32_t id, uint32_t held, uint32_t kept, Fill&& fill) {
        const uint32_t start = Grow(held);
        const bool filled = fill(m_bytes.data() + start);
        m_bytes.resize(start + (filled ? kept : 0));
        if (filled) m_slots.push_back({id, start, kept});
        return filled;
    }
    void Seal();

private:
    Entry At(size_t index) const;
    size_t PlaceOf(uint32_t id) const;
    uint32_t Grow(size_t size);

    std::vector<Slot> m_slots;
    std::vector<char, UnsetBytes> m_bytes;
};
