// (1) the head of the tag, (2) past the extended head, (3) frame by frame.
#include "capi/handles/Id3Frames.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

#include "riff/ByteOrder.h"

namespace {

constexpr size_t kTagHead = 10;
constexpr size_t kFrameHead = 10;
constexpr uint8_t kUnsynchronised = 0x80;
constexpr uint8_t kHasExtendedHead = 0x40;  // in version 2: the tag is compressed
constexpr uint64_t kTextMost = uint64_t{1} << 20;
constexpr uint64_t kAllTextMost = uint64_t{4} << 20;
constexpr size_t kFramesMost = 65536;
constexpr size_t kUsedMost = 256;

// What differs between the versions 2, 3 and 4.
struct Version {
    uint8_t number;
    size_t idSize;
    size_t headSize;  // of a frame
    uint8_t packed;   // flags of a frame that is compressed or encrypted
};
constexpr Version kVersions[] = {{2, 3, 6, 0}, {3, 4, 10, 0x80 | 0x40}, {4, 4, 10, 0x08 | 0x04}};

// A number of seven bits in each of four bytes.
uint32_t LoadSafe(const uint8_t* bytes) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 7 | (bytes[i] & 0x7Fu);
    return value;
}
void StoreSafe(uint8_t* bytes, size_t value) {
    for (int i = 4; i-- > 0; value >>= 7) bytes[i] = static_cast<uint8_t>(value & 0x7F);
}
bool IsSafe(const uint8_t* bytes) {
    return std::all_of(bytes, bytes + 4, [](uint8_t byte) { return byte < 0x80; });
}

// The content of a tag, in order. Up to version 3 a tag may have a zero after each FF that isn't part of it.
class TagBytes {
public:
    TagBytes(InputBlocks& blocks, uint64_t end) : m_blocks(blocks), m_end(end) {}
    void LeaveOutZeros() { m_leavesOut = true; }

    bool Read(uint8_t* to, size_t count) {
        if (count > m_end - m_blocks.Place()) return false;
        if (!m_leavesOut) return m_blocks.Read(to, count);
        for (; count != 0; --count, ++to) {
            const bool wasFull = m_last == 0xFF;
            if (!Next()) return false;
            if (wasFull && m_last == 0 && !Next()) return false;
            *to = m_last;
        }
        return true;
    }
    bool Skip(uint64_t count) {
        if (count > m_end - m_blocks.Place()) return false;
        if (!m_leavesOut) return m_blocks.Skip(count);
        uint8_t passed = 0;
        while (count != 0 && Read(&passed, 1)) --count;
        return count == 0;
    }
    // Bytes of the next so many that a frame of this size leads to; zeros past the end.
    void PeekAfter(uint64_t size, uint8_t* to, size_t count) {
        const uint64_t here = m_blocks.Place();
        std::fill_n(to, count, uint8_t{0});
        if (size <= m_end - here && count <= m_end - here - size) {
            m_blocks.MoveTo(here + size);
            m_blocks.Peek(to, count);
        }
        m_blocks.MoveTo(here);
    }
    bool Holds(uint64_t size) const { return size <= m_end - m_blocks.Place(); }

private:
    bool Next() { return m_blocks.Place() < m_end && m_blocks.Read(&m_last, 1); }

    InputBlocks& m_blocks;
    const uint64_t m_end;
    bool m_leavesOut = false;
    uint8_t m_last = 0;
};

class FrameFilter {
public:
    FrameFilter(const Version& version, TagBytes& bytes, std::vector<uint8_t>& made)
        : m_version(version), m_bytes(bytes), m_made(made) {}

    void Run() {
        uint8_t head[kFrameHead] = {};
        for (size_t frames = 0; frames < kFramesMost && m_used < kUsedMost; ++frames) {
            if (!m_bytes.Read(head, m_version.headSize) || !IsId(head)) return;
            const uint64_t content = SizeOf(head);
            if (!m_bytes.Holds(content)) return;
            if (!(IsOfUse(head, content) ? Take(head, content) : m_bytes.Skip(content))) return;
        }
    }

private:
    bool IsId(const uint8_t* bytes) const {
        return std::all_of(bytes, bytes + m_version.idSize, [](uint8_t byte) {
            return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
        });
    }

    // Some programs write plain sizes in version 4: the right one leads to a frame, to room or to the end.
    uint64_t SizeOf(const uint8_t* head) const {
        if (m_version.number == 2) return LoadBE32(head + 2) & 0xFFFFFF;
        const uint32_t plain = LoadBE32(head + 4);
        if (m_version.number == 3) return plain;
        const uint32_t safe = LoadSafe(head + 4);
        const auto leadsOn = [&](uint32_t size) {
            uint8_t next[4] = {};
            m_bytes.PeekAfter(size, next, sizeof next);
            return m_bytes.Holds(size) && (next[0] == 0 || IsId(next));
        };
        return IsSafe(head + 4) && (safe == plain || leadsOn(safe) || !leadsOn(plain)) ? safe : plain;
    }

    bool IsOfUse(const uint8_t* head, uint64_t content) {
        const std::string id(head, head + m_version.idSize);
        if (m_version.packed != 0 && (head[9] & m_version.packed) != 0) return false;
        if (id == "APIC" || id == "PIC") return true;
        const bool isComment = id == "COMM" || id == "COM";
        if (content > kTextMost || content > m_textLeft) return false;
        if (!isComment && (id[0] != 'T' || !m_seen.insert(id).second)) return false;
        m_textLeft -= content;
        return true;
    }

    bool Take(const uint8_t* head, uint64_t content) {
        const size_t at = m_made.size();
        m_made.insert(m_made.end(), head, head + m_version.headSize);
        if (m_version.number == 4) StoreSafe(&m_made[at + 4], content);
        const size_t contentAt = m_made.size();
        m_made.resize(contentAt + content);
        ++m_used;
        if (m_bytes.Read(m_made.data() + contentAt, content)) return true;
        m_made.resize(at);
        return false;
    }

    const Version& m_version;
    TagBytes& m_bytes;
    std::vector<uint8_t>& m_made;
    std::set<std::string> m_seen;
    size_t m_used = 0;
    uint64_t m_textLeft = kAllTextMost;
};

}  // namespace

std::vector<uint8_t> FramesOfUse(InputBlocks& blocks, const Extent& tag) {
    std::vector<uint8_t> made(kTagHead);
    blocks.MoveTo(tag.place);
    if (tag.size < kTagHead || !blocks.Read(made.data(), kTagHead)) return {};  // (1)
    const auto* const version = std::find_if(std::begin(kVersions), std::end(kVersions),
                                             [&](const Version& row) { return row.number == made[3]; });
    const uint8_t flags = made[5];
    if (std::string_view(reinterpret_cast<const char*>(made.data()), 3) != "ID3" ||
        version == std::end(kVersions) || (version->number == 2 && (flags & kHasExtendedHead) != 0))
        return {};
    const bool isClean = (flags & kUnsynchronised) == 0 || version->number == 4;
    TagBytes bytes(blocks, blocks.Place() + std::min<uint64_t>(LoadSafe(&made[6]), tag.size - kTagHead));
    if (!isClean) bytes.LeaveOutZeros();
    if ((flags & kHasExtendedHead) != 0) {  // (2)
        uint8_t size[4] = {};
        if (!bytes.Read(size, sizeof size)) return {};
        // Version 4 counts these four bytes too.
        const uint32_t more = version->number == 4 ? std::max(LoadSafe(size), 4u) - 4 : LoadBE32(size);
        if (!bytes.Skip(more)) return {};
    }
    FrameFilter(*version, bytes, made).Run();                      // (3)
    made[5] = version->number == 4 ? flags & kUnsynchronised : 0;  // there each frame tells it too
    StoreSafe(&made[6], made.size() - kTagHead);
    return made;
}
