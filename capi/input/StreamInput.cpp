#include "capi/input/StreamInput.h"

StreamInput::StreamInput(std::shared_ptr<const CallerStream> stream, uint64_t start, uint64_t size)
    : Input(size, FileLabel::OfSource()), m_stream(std::move(stream)), m_start(start) {}

size_t StreamInput::Get(uint64_t place, void* buffer, size_t count) {
    if (m_place != place) {
        m_place.reset();
        m_stream->MoveTo(static_cast<int64_t>(m_start + place));
    }
    m_place.reset();  // after a failure the stream may stand anywhere
    const size_t done = m_stream->Read(buffer, count);
    m_place = place + done;
    return done;
}
