// (1) the head of the tag, (2) its bytes as they were before each 0 after an FF, where the tag says so, (3)
// past the extended head, (4) frame by frame.
#include "capi/id3/Id3Frames.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

namespace {

constexpr size_t kTagHead = 10;
constexpr uint8_t kUnsynchronised = 0x80;
constexpr uint8_t kHasExtendedHead = 0x40;  // in version 2 of 2.x: the tag is compressed
constexpr size_t kTextMost = size_t{1} << 20;
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

uint32_t LoadBig(const uint8_t* bytes, size_t count) {
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) value = value << 8 | bytes[i];
    return value;
}

// Seven bits of each byte.
uint32_t LoadSafe(const uint8_t* bytes) {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 7 | (bytes[i] & 0x7Fu);
    return value;
}
void StoreSafe(char* bytes, size_t value) {
    for (int i = 4; i-- > 0; value >>= 7) bytes[i] = static_cast<char>(value & 0x7F);
}
bool IsSafe(const uint8_t* bytes) {
    return std::all_of(bytes, bytes + 4, [](uint8_t byte) { return byte < 0x80; });
}

std::vector<uint8_t> Synchronised(const uint8_t* bytes, size_t size) {
    std::vector<uint8_t> clean;
    clean.reserve(size);
    for (size_t i = 0; i < size; ++i)
        if (bytes[i] != 0 || i == 0 || bytes[i - 1] != 0xFF) clean.push_back(bytes[i]);
    return clean;
}

class FrameFilter {
public:
    FrameFilter(const Version& version, std::vector<char>& made) : m_version(version), m_made(made) {}

    void Run(const uint8_t* bytes, size_t size) {
        for (size_t frames = 0; frames < kFramesMost && m_used < kUsedMost; ++frames) {
            if (size <= m_version.headSize || !IsId(bytes)) return;
            const size_t content = SizeOf(bytes, size);
            if (content > size - m_version.headSize) return;
            if (IsOfUse(bytes, content)) Take(bytes, content);
            bytes += m_version.headSize + content;
            size -= m_version.headSize + content;
        }
    }

private:
    bool IsId(const uint8_t* bytes) const {
        return std::all_of(bytes, bytes + m_version.idSize, [](uint8_t byte) {
            return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
        });
    }

    // Some programs write plain sizes in version 4: the right one leads to a frame, to room or to the end.
    size_t SizeOf(const uint8_t* frame, size_t left) const {
        if (m_version.number != 4) return LoadBig(frame + m_version.idSize, m_version.number == 2 ? 3 : 4);
        const size_t safe = LoadSafe(frame + 4);
        const size_t plain = LoadBig(frame + 4, 4);
        const auto leadsOn = [&](size_t content) {
            if (content > left - m_version.headSize) return false;
            const uint8_t* const next = frame + m_version.headSize + content;
            const size_t rest = left - m_version.headSize - content;
            return rest <= m_version.headSize || *next == 0 || IsId(next);
        };
        return IsSafe(frame + 4) && (leadsOn(safe) || !leadsOn(plain)) ? safe : plain;
    }

    bool IsOfUse(const uint8_t* frame, size_t content) {
        const std::string id(frame, frame + m_version.idSize);
        if (m_version.packed != 0 && (frame[9] & m_version.packed) != 0) return false;
        if (id == "APIC" || id == "PIC") return true;
        if (content > kTextMost) return false;
        if (id == "COMM" || id == "COM") return true;
        return id[0] == 'T' && m_seen.insert(id).second;
    }

    void Take(const uint8_t* frame, size_t content) {
        const size_t at = m_made.size();
        m_made.insert(m_made.end(), frame, frame + m_version.headSize + content);
        if (m_version.number == 4) StoreSafe(&m_made[at + 4], content);
        ++m_used;
    }

    const Version& m_version;
    std::vector<char>& m_made;
    std::set<std::string> m_seen;
    size_t m_used = 0;
};

}  // namespace

std::vector<char> FramesOfUse(const uint8_t* bytes, size_t size) {
    if (size < kTagHead || std::string_view(reinterpret_cast<const char*>(bytes), 3) != "ID3") return {};
    const auto* const version = std::find_if(std::begin(kVersions), std::end(kVersions),
                                             [&](const Version& row) { return row.number == bytes[3]; });
    if (version == std::end(kVersions)) return {};
    uint8_t flags = bytes[5];
    if (version->number == 2 && (flags & kHasExtendedHead) != 0) return {};
    size = std::min<size_t>(LoadSafe(bytes + 6), size - kTagHead);
    std::vector<char> made(bytes, bytes + kTagHead);  // (1)
    bytes += kTagHead;
    std::vector<uint8_t> clean;
    if ((flags & kUnsynchronised) != 0 && version->number != 4) {  // (2)
        clean = Synchronised(bytes, size);
        bytes = clean.data();
        size = clean.size();
        flags = static_cast<uint8_t>(flags & ~kUnsynchronised);
    }
    if ((flags & kHasExtendedHead) != 0 && size >= 4) {  // (3)
        const size_t whole = version->number == 4 ? LoadSafe(bytes) : LoadBig(bytes, 4) + size_t{4};
        bytes += std::min(whole, size);
        size -= std::min(whole, size);
    }
    FrameFilter(*version, made).Run(bytes, size);  // (4)
    made[5] = static_cast<char>(flags & kUnsynchronised);
    StoreSafe(&made[6], made.size() - kTagHead);
    return made;
}
