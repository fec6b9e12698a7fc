#include "AudioCodec/wave/riff/StreamSource.h"

#include "platform/base/Types.h"

namespace {

// What may be asked of a stream without looking first whether it holds as much.
constexpr uint64_t kUncheckedBytes = 65536;

// A stream that claims to stand past it is no stream to compute with.
constexpr uint64_t kLargestPosition = uint64_t{1} << 62;

}  // namespace

bool StreamSource::Read(void* buffer, size_t count) {
    uint32_t done = 0;
    return m_stream.Read(buffer, static_cast<uint32_t>(count), &done) == S_OK && done == count;
}

bool StreamSource::Move(int64_t distance, uint32_t origin, uint64_t* place) {
    LARGE_INTEGER move{};
    move.QuadPart = distance;
    ULARGE_INTEGER reached{};
    if (m_stream.Seek(move, origin, &reached) != S_OK || reached.QuadPart > kLargestPosition) return false;
    if (place) *place = reached.QuadPart;
    return true;
}

bool StreamSource::Skip(uint64_t count) {
    return count <= kLargestPosition && Move(static_cast<int64_t>(count), STREAM_SEEK_CUR);
}

bool StreamSource::Tell(uint64_t& place) { return Move(0, STREAM_SEEK_CUR, &place); }

bool StreamSource::Holds(uint64_t count) {
    if (count <= kUncheckedBytes) return true;
    uint64_t here = 0;
    uint8_t last = 0;
    return Tell(here) && Move(static_cast<int64_t>(here + count - 1), STREAM_SEEK_SET) && Read(&last, 1) &&
           Move(static_cast<int64_t>(here), STREAM_SEEK_SET);
}
