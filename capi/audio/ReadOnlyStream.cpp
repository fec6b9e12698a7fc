#include "capi/audio/ReadOnlyStream.h"

int32_t ReadOnlyStream::QueryInterface(const GUID&, void** object) {
    if (object) *object = nullptr;
    return PLATFORM_NO_INTERFACE;
}

int32_t ReadOnlyStream::Seek(LARGE_INTEGER move, uint32_t origin, ULARGE_INTEGER* position) {
    uint64_t from = 0;
    if (origin == STREAM_SEEK_CUR) from = m_place;
    if (origin == STREAM_SEEK_END) from = SizeOfStream();
    const int64_t target = static_cast<int64_t>(from) + move.QuadPart;
    if (origin > STREAM_SEEK_END || target < 0) return PLATFORM_BAD_ARGUMENT;
    m_place = static_cast<uint64_t>(target);
    if (position) position->QuadPart = m_place;
    return PLATFORM_OK;
}
