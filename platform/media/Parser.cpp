// A seek while data moves, step by step: (1) the worker is asked to stop, (2) a flush frees it from whoever
// it waits for, (3) it is joined, (4) the flush ends, (5) the new segment is announced, (6) a new worker
// starts. Invariant: no sample of the old place arrives after (4), none of the new one before (5).
#include "platform/media/Parser.h"

#include <memory>
#include <new>

#include "platform/media/CodecBlock.h"
#include "platform/media/MediaTime.h"
#include "platform/media/PinLists.h"
#include "platform/sync/StartThread.h"

namespace {

// Of other sources nothing is known, and some read on from where they are.
bool HonoursPositions(IPin& output) {
    const RefPtr<IBaseFilter> source = OwnerOf(output);
    GUID id = {};
    return source && SUCCEEDED(source->GetClassID(&id)) && id == CLSID_AsyncReader;
}

std::shared_ptr<AVPacket> NewPacket() {
    UniquePacket packet(av_packet_alloc());
    if (!packet) throw std::bad_alloc();
    return packet;
}

}  // namespace

HRESULT Parser::Open(IPin& source) {
    m_reader = FaceOf<IAsyncReader>(&source, IID_IAsyncReader);
    if (!m_reader) return VFW_E_NO_TRANSPORT;
    // Kept before it is opened: a failure has the pin drop the connection, and Forget then ends both.
    m_demuxer = std::make_unique<Demuxer>(*m_reader, HonoursPositions(source), m_stop);
    const HRESULT result = m_demuxer->Open();
    if (FAILED(result)) return result;
    m_type = CodecType(m_demuxer->Codec());
    m_sampleRate = m_demuxer->Codec().sample_rate;
    // Asked now, since the demuxer will be the worker's alone and questions come from any thread.
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
    // The worker takes no lock of the filter, so it can be waited for under it.
    const bool active = State() != State_Stopped;
    if (active) StopWorker();
    // (5) A stopped graph is told too: positions are asked for before it runs.
    m_output.DeliverNewSegment(position, kEndOfTime);
    const HRESULT result = active ? StartWorker() : S_OK;  // (6)
    if (FAILED(result)) m_output.DeliverFailure(result);   // nobody shall wait for what doesn't come
    return result;
}

HRESULT Parser::StartWorker() {
    const int64_t frame = TimeToFrames(m_start, m_sampleRate);
    return AtBorder(E_OUTOFMEMORY, [&] {  // or no thread could be had
        m_worker = StartThread([this, frame] { Work(frame); });
        return S_OK;
    });
}

// Leaves no worker, and the filters ready for the next one. The flush makes those that receive let go of the
// worker, and the source of its requests. It also drops what was told of a worker that couldn't be started.
void Parser::StopWorker() {
    if (!m_reader) return;
    // (1) First, or the worker that the flush lets go would report the end of the stream.
    m_stop = true;
    m_output.DeliverBeginFlush();  // (2)
    m_reader->BeginFlush();
    // (3) Only then may samples be taken again, (4).
    if (m_worker.joinable()) m_worker.join();
    m_reader->EndFlush();
    m_output.DeliverEndFlush();  // (4)
    m_stop = false;
}

void Parser::Work(int64_t startFrame) {
    const HRESULT result = AtBorder(ResultOfThrow, [&] { return PushPackets(startFrame); });
    // A worker that was stopped says nothing: who reads would take a seek for the end.
    if (m_stop) return;
    if (FAILED(result))
        m_output.DeliverFailure(result);
    else
        m_output.DeliverEndOfStream();
}

// Until the end, the wish to stop, or a failure in front of the parser or after it.
HRESULT Parser::PushPackets(int64_t startFrame) {
    int64_t place = 0;
    HRESULT result = m_demuxer->MoveTo(startFrame, place);
    if (FAILED(result)) return result;
    // 0, or negative by what lies between the place where decoding can begin and the one that was asked for.
    REFERENCE_TIME time = FramesToTime(place - startFrame, m_sampleRate);
    std::shared_ptr<AVPacket> packet = NewPacket();
    auto sample = Make<MediaSample>();
    for (bool first = true; !m_stop; first = false) {
        result = m_demuxer->Next(*packet);
        if (result != S_OK) return result;
        sample->Show(packet, packet->data, static_cast<size_t>(packet->size));
        if (first) {
            sample->SetDiscontinuity(TRUE);
            sample->SetTime(&time, nullptr);
        }
        // S_FALSE too: by a flush or for ever, nobody wants more.
        result = m_output.Deliver(*sample);
        if (result != S_OK) return result;
        // One sample does for all packets, unless someone keeps it, and its packet with it: the bytes must
        // not change under him.
        if (sample->IsShared()) {
            sample = Make<MediaSample>();
            packet = NewPacket();
        }
        av_packet_unref(packet.get());
    }
    return S_OK;
}
