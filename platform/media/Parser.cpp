#include "platform/media/Parser.h"

#include <cstring>

#include "platform/media/CodecBlock.h"
#include "platform/media/MediaTime.h"
#include "platform/media/PinLists.h"

namespace {

// Of other sources nothing is known, and some read on from where they are.
bool HonoursPositions(IPin& output) {
    const RefPtr<IBaseFilter> source = OwnerOf(output);
    GUID id = {};
    return source && SUCCEEDED(source->GetClassID(&id)) && id == CLSID_AsyncReader;
}

}  // namespace

HRESULT Parser::Open(IPin& source) {
    m_reader = FaceOf<IAsyncReader>(&source, IID_IAsyncReader);
    if (!m_reader) return VFW_E_NO_TRANSPORT;
    m_demuxer = std::make_unique<Demuxer>(*m_reader, HonoursPositions(source), m_stop);
    const HRESULT result = m_demuxer->Open();
    if (FAILED(result)) return result;
    m_type = CodecType(m_demuxer->Codec());
    m_sampleRate = m_demuxer->Codec().sample_rate;
    if (FAILED(m_demuxer->Duration(m_duration))) m_duration = -1;
    return S_OK;
}

void Parser::Forget() {
    m_demuxer.reset();
    m_reader.Reset();
    m_start = 0;
}

HRESULT Parser::Output::QueryInterface(const GUID& iid, void** object) {
    return GiveFace(
        {{IID_IPin, static_cast<IPin*>(this)}, {IID_IMediaSeeking, static_cast<IMediaSeeking*>(this)}}, iid,
        object);
}

std::vector<MediaType> Parser::Output::OfferedTypes() {
    if (!m_parser.m_demuxer) return {};
    return {m_parser.m_type};
}

HRESULT Parser::Output::Duration(REFERENCE_TIME& duration) {
    const std::lock_guard lock(m_parser.Lock());
    if (!m_parser.m_demuxer) return VFW_E_NOT_CONNECTED;
    if (m_parser.m_duration < 0) return E_FAIL;
    duration = m_parser.m_duration;
    return S_OK;
}

REFERENCE_TIME Parser::Output::StartPosition() {
    const std::lock_guard lock(m_parser.Lock());
    return m_parser.m_start;
}

HRESULT Parser::Activate() {
    if (!m_demuxer) return S_OK;  // stands in the graph without a connection
    m_output.DeliverNewSegment(m_start, kEndOfTime);
    return StartWorker();
}

HRESULT Parser::SeekTo(REFERENCE_TIME position) {
    const std::lock_guard lock(Lock());
    if (!m_demuxer) return VFW_E_NOT_CONNECTED;
    m_start = position;
    const bool active = State() != State_Stopped;
    if (active) StopWorker();
    m_output.DeliverNewSegment(position, kEndOfTime);
    const HRESULT result = active ? StartWorker() : S_OK;
    if (FAILED(result)) m_output.DeliverEndOfStream();  // nobody shall wait for what doesn't come
    return result;
}

HRESULT Parser::StartWorker() {
    const int64_t frame = TimeToFrames(m_start, m_sampleRate);
    return AtBorder(E_OUTOFMEMORY, [&] {
        m_worker = std::thread([this, frame] { Work(frame); });
        return S_OK;
    });
}

// The flush makes the filters behind let go of the worker, and the source of requests.
void Parser::StopWorker() {
    if (!m_worker.joinable()) return;
    m_stop = true;
    m_output.DeliverBeginFlush();
    m_reader->BeginFlush();
    m_worker.join();
    m_reader->EndFlush();
    m_output.DeliverEndFlush();
    m_stop = false;
}

void Parser::Work(int64_t startFrame) {
    try {
        PushPackets(startFrame);
    } catch (...) {
        // Ends the stream early, as damage does.
    }
    if (!m_stop) m_output.DeliverEndOfStream();
}

void Parser::PushPackets(int64_t startFrame) {
    int64_t place = 0;
    if (FAILED(m_demuxer->MoveTo(startFrame, place))) return;
    REFERENCE_TIME time = FramesToTime(place - startFrame, m_sampleRate);
    const UniquePacket packet(av_packet_alloc());
    if (!packet) return;
    auto sample = Make<MediaSample>();
    for (bool first = true; !m_stop && m_demuxer->Next(*packet) == S_OK; first = false) {
        if (sample->IsShared()) sample = Make<MediaSample>();
        const auto size = static_cast<size_t>(packet->size);
        std::memcpy(sample->Resize(size), packet->data, size);
        av_packet_unref(packet.get());
        if (first) {
            sample->SetDiscontinuity(TRUE);
            sample->SetTime(&time, nullptr);
        }
        if (m_output.Deliver(*sample) != S_OK) return;
    }
}
