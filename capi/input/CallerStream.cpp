#include "capi/input/CallerStream.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "capi/SystemFailure.h"

namespace {

constexpr size_t kFirstSize = sizeof(vlw_stream);  // in version 1.0
constexpr int64_t kLargestErrno = 4095;            // of any system

// The count that a callback answered, which is at most what it was asked for.
size_t CountOf(int64_t answer, size_t asked, const char* what) {
    if (answer < 0 && answer >= -kLargestErrno) throw SystemFailure(static_cast<int>(-answer), what, {});
    if (answer < 0 || static_cast<uint64_t>(answer) > asked)
        throw Failure(VLW_BAD_ARGUMENT, std::string(what) + " failed: the callback answered " +
                                            std::to_string(answer) + " for " + std::to_string(asked) +
                                            " bytes.");
    return static_cast<size_t>(answer);
}

}  // namespace

std::shared_ptr<CallerStream> CallerStream::TakeOver(const vlw_stream* stream) {
    if (!stream || stream->size < kFirstSize) return nullptr;
    vlw_stream known{};
    std::memcpy(&known, stream, std::min(stream->size, sizeof known));
    try {
        return std::make_shared<CallerStream>(known);
    } catch (...) {
        if (known.close) known.close(known.user);
        throw;
    }
}

CallerStream::~CallerStream() {
    if (m_stream.close) m_stream.close(m_stream.user);
}

size_t CallerStream::Read(void* buffer, size_t count) const {
    return CountOf(m_stream.read(m_stream.user, buffer, count), count, "Reading from the program's stream");
}

int CallerStream::Write(const void* bytes, size_t count) const {
    const auto* at = static_cast<const char*>(bytes);
    while (count > 0) {
        const int64_t done = m_stream.write(m_stream.user, at, count);
        if (done == -EINTR) continue;
        if (done < 0 && done >= -kLargestErrno) return static_cast<int>(-done);
        // None, or more than were offered: a stream that can't be relied on.
        if (done <= 0 || static_cast<uint64_t>(done) > count) return EIO;
        at += done;
        count -= static_cast<size_t>(done);
    }
    return 0;
}

std::optional<int64_t> CallerStream::Seek(int64_t offset, int whence) const {
    if (!m_stream.seek) return std::nullopt;
    const int64_t place = m_stream.seek(m_stream.user, offset, whence);
    return place < 0 ? std::nullopt : std::optional(place);
}

void CallerStream::MoveTo(int64_t place) const {
    constexpr const char* kWhat = "Moving in the program's stream";
    const int64_t answer = m_stream.seek(m_stream.user, place, SEEK_SET);
    if (answer < 0 && answer >= -kLargestErrno) throw SystemFailure(static_cast<int>(-answer), kWhat, {});
    if (answer != place)
        throw Failure(VLW_BAD_ARGUMENT, std::string(kWhat) + " failed: the callback answered " +
                                            std::to_string(answer) + " for the place " +
                                            std::to_string(place) + '.');
}
