// Where a read goes on after MoveTo: (1) at the start, if nothing was given since Open; (2) straight at the
// frame or its block, where positions are honoured and these stand for themselves; (3) else from a new Open,
// at the start. (4) Of a source in order the packets before the block are read there, and not decoded.
// Whoever decodes drops what still lies before the frame, so that it comes out as it does in a straight read.
#include "platform/media/Demuxer.h"

#include <algorithm>
#include <array>
#include <bit>
#include <new>
#include <string_view>

#include "platform/media/AiffHead.h"
#include "platform/media/MediaTime.h"
#include "platform/sync/ForkPass.h"

namespace {

// A few packets are enough to know the stream; a caller's slow source isn't read far for nothing.
constexpr int64_t kBytesForTheHead = 32768;

constexpr int kPcmPacketSize = 32768;

// A damaged head may tell any number; no buffer shall grow by it.
constexpr int kMostChannels = 64;

struct FormatRow {
    std::string_view id;    // the first four bytes
    std::string_view type;  // the four at 8
    const char* demuxer;
};
constexpr FormatRow kFormats[] = {
    {"RIFF", "WAVE", "wav"}, {"RIFX", "WAVE", "wav"},  {"RF64", "WAVE", "wav"},
    {"BW64", "WAVE", "wav"}, {"FORM", "AIFF", "aiff"}, {"FORM", "AIFC", "aiff"},
};

// The demuxer for what the stream starts with, or null. The stream goes on after those bytes.
const AVInputFormat* FindFormat(std::string_view head) {
    for (const FormatRow& row : kFormats) {
        if (head.substr(0, 4) == row.id && head.substr(8, 4) == row.type)
            return av_find_input_format(row.demuxer);
    }
    return nullptr;
}

// Codecs whose frames stand each for themselves, all of one size.
bool IsPlainPcm(AVCodecID codec) {
    return codec >= AV_CODEC_ID_FIRST_AUDIO && codec < AV_CODEC_ID_ADPCM_IMA_QT;
}

// Codecs whose blocks can be decoded from any one on, where 4 bits make a sample.
struct BlockRow {
    AVCodecID codec;
    int headBytes;  // for each channel, as all here
    int stepBytes;
};
constexpr BlockRow kBlocks[] = {{AV_CODEC_ID_ADPCM_IMA_WAV, 4, 4}, {AV_CODEC_ID_ADPCM_MS, 7, 1}};

template <class T>
T* OrThrow(T* allocated) {
    if (!allocated) throw std::bad_alloc();
    return allocated;
}

}  // namespace

Demuxer::Demuxer(IAsyncReader& reader, bool honoursPositions, const std::atomic<bool>& stop)
    : m_reader(reader),
      m_honoursPositions(honoursPositions),
      m_stop(stop),
      m_ahead(OrThrow(av_packet_alloc())) {}

HRESULT Demuxer::Open() {
    av_packet_unref(m_ahead.get());
    m_format.reset();
    m_atStart = false;
    // A source that doesn't honour positions still goes back for a read at 0, so each Open begins with
    // a new one.
    m_io = std::make_unique<ReaderIo>(m_reader, m_honoursPositions, m_stop);
    HRESULT result = OpenFormat();
    // A file without any packet is one all the same. Where the source failed, be it while audio was tried or
    // chunks were looked for, Next tells it.
    const HRESULT first = SUCCEEDED(result) ? ReadPacket(*m_ahead) : S_FALSE;
    if (FAILED(first) && SUCCEEDED(m_io->Failure())) result = first;
    if (m_stop) result = E_FAIL;  // some read failed for that alone: nothing that came of it can be trusted
    if (FAILED(result)) {
        m_format.reset();
        return result;
    }
    // Where the demuxer found the audio: it knows the layout of each format, so nothing is parsed here again.
    m_dataStart = m_ahead->size > 0 ? m_ahead->pos : -1;
    m_atStart = true;
    return S_OK;
}

HRESULT Demuxer::OpenFormat() {
    std::array<char, 12> head = {};
    AVIOContext* const io = m_io->Context();
    const int read = avio_read(io, std::bit_cast<unsigned char*>(head.data()), int{head.size()});
    if (read != int{head.size()}) return ReasonOf(read);
    avio_seek(io, 0, SEEK_SET);  // within its buffer: nothing is asked for twice
    const AVInputFormat* const format = FindFormat({head.data(), head.size()});
    if (!format) return VFW_E_INVALID_FILE_FORMAT;

    const bool isLittleEndian = MakeBigEndian({io->buf_ptr, static_cast<size_t>(io->buf_end - io->buf_ptr)});
    AVFormatContext* context = OrThrow(avformat_alloc_context());
    context->pb = io;
    const int opened = avformat_open_input(&context, "", format, nullptr);
    if (opened < 0) return ReasonOf(opened);  // freed there
    m_io->EndOfHead();
    m_format.reset(context);
    // After the head was read, which may be of any length: this bounds the packets that are tried.
    context->probesize = kBytesForTheHead;
    const ForkPass pass;  // it opens decoders too, under a lock of their library
    const int found = avformat_find_stream_info(context, nullptr);
    if (found < 0) return ReasonOf(found);
    const int stream = av_find_best_stream(context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (stream < 0) return ReasonOf(stream);
    m_stream = static_cast<size_t>(stream);
    if (isLittleEndian) {
        AVCodecID& id = context->streams[m_stream]->codecpar->codec_id;
        id = LittleEndianOf(id);
    }
    const AVCodecParameters& codec = Codec();
    // Out of the reach of MakeBigEndian, and taken for 16 bits.
    if (codec.codec_tag == MKTAG('s', 'o', 'w', 't') && codec.bits_per_coded_sample != 16)
        return VFW_E_INVALID_FILE_FORMAT;
    // Larger packets save time, where the demuxer offers them. The rest of a damaged one is lost, which PCM
    // can't be.
    if (IsPlainPcm(codec.codec_id))
        av_opt_set_int(context, "max_size", kPcmPacketSize, AV_OPT_SEARCH_CHILDREN);
    const int channels = codec.ch_layout.nb_channels;
    const bool known = codec.sample_rate > 0 && codec.sample_rate <= kTimeUnitsPerSecond && channels > 0;
    return known && channels <= kMostChannels ? S_OK : VFW_E_INVALID_FILE_FORMAT;
}

// What an error of the libraries, in front of the first packet, comes from.
HRESULT Demuxer::ReasonOf(int error) const {
    if (FAILED(m_io->Failure())) return m_io->Failure();
    return error == AVERROR(ENOMEM) ? E_OUTOFMEMORY : VFW_E_INVALID_FILE_FORMAT;
}

HRESULT Demuxer::Duration(REFERENCE_TIME& duration) const {
    const AVStream& stream = Stream();
    duration = 0;
    // The stream's own comes first; the file's may be an estimate from its size and bit rate.
    if (stream.duration > 0) {
        duration = av_rescale_q(stream.duration, stream.time_base, AVRational{1, kTimeUnitsPerSecond});
    } else if (m_format->duration > 0) {
        duration = av_rescale(m_format->duration, kTimeUnitsPerSecond, AV_TIME_BASE);
    } else {
        return E_FAIL;
    }
    return duration < 0 ? E_FAIL : S_OK;
}

Demuxer::Unit Demuxer::DecodedAlone() const {
    // The library asks for one that it may change, and doesn't change it.
    AVCodecParameters& codec = *m_format->streams[m_stream]->codecpar;
    const int channels = codec.ch_layout.nb_channels;
    if (IsPlainPcm(codec.codec_id)) {
        const int64_t frame = int64_t{av_get_bits_per_sample(codec.codec_id)} * channels / 8;
        // A frame size that the head contradicts would lead into the middle of a frame.
        return frame == codec.block_align ? Unit{frame, 1} : Unit{};
    }
    // Blocks that begin with the whole state of the decoder, and are filled to the last byte.
    for (const BlockRow& row : kBlocks) {
        if (row.codec != codec.codec_id || codec.bits_per_coded_sample != 4 || channels > 2) continue;
        const int body = codec.block_align - row.headBytes * channels;
        if (body < 0 || body % (row.stepBytes * channels) != 0) break;
        return {codec.block_align, av_get_audio_frame_duration2(&codec, codec.block_align)};
    }
    return {};
}

std::optional<Demuxer::Place> Demuxer::PlaceOf(int64_t frame) const {
    const Unit unit = m_format && m_dataStart >= 0 ? DecodedAlone() : Unit{};
    if (unit.bytes <= 0 || unit.frames <= 0) return {};
    const AVStream& stream = Stream();
    const int64_t frames =
        av_rescale_q(stream.duration, stream.time_base, AVRational{1, Codec().sample_rate});
    // The head may promise more than the file has. A place at the end or after it is left to a straight read,
    // which knows where the stream ends.
    const int64_t whole = (m_io->Size() - m_dataStart) / unit.bytes;
    const int64_t index = frame / unit.frames;
    if (frame >= frames || index >= whole) return {};
    return Place{m_dataStart + index * unit.bytes, index * unit.frames};
}

HRESULT Demuxer::MoveTo(int64_t frame, int64_t& place) {
    place = 0;
    // (1) The first packet, read by Open, isn't read again: some sources can't.
    if (frame == 0 && m_atStart) return S_OK;
    const std::optional<Place> direct = PlaceOf(frame);
    if (direct && m_honoursPositions) m_io->Resume();
    if (direct && m_honoursPositions && avio_seek(m_format->pb, direct->at, SEEK_SET) >= 0) {
        av_packet_unref(m_ahead.get());
        // (2) What the demuxer had read ahead belongs to the old place.
        avformat_flush(m_format.get());
        m_atStart = false;
        place = direct->frame;
        return S_OK;
    }
    // (1) or (3)
    const HRESULT opened = m_atStart ? S_OK : Open();
    if (FAILED(opened) || !direct) return opened;
    place = direct->frame;
    return PassOver(direct->at);  // (4)
}

// Makes Next begin at this byte of the file, at which a block or a frame starts.
HRESULT Demuxer::PassOver(int64_t at) {
    m_atStart = false;
    AVPacket& packet = *m_ahead;
    while (packet.size > 0 && packet.pos + packet.size <= at) {
        av_packet_unref(&packet);
        const HRESULT result = ReadPacket(packet);
        if (FAILED(result)) return result;
    }
    // A packet holds several; those before the place go.
    if (packet.size > 0 && packet.pos < at) {
        const auto before = static_cast<int>(at - packet.pos);
        packet.data += before;
        packet.size -= before;
    }
    return S_OK;
}

HRESULT Demuxer::Next(AVPacket& packet) {
    m_atStart = false;
    HRESULT result = S_OK;
    if (m_ahead->size > 0)
        av_packet_move_ref(&packet, m_ahead.get());
    else
        result = ReadPacket(packet);
    if (result != S_OK || SUCCEEDED(m_io->Failure()) || IsPlainPcm(Codec().codec_id)) return result;
    // The last packet in front of a failure may be torn by it, and isn't what stands in the file then. Of PCM
    // all that came of it is good.
    result = ReadPacket(*m_ahead);
    if (result != S_OK) av_packet_unref(&packet);
    return result;
}

HRESULT Demuxer::ReadPacket(AVPacket& packet) {
    // Between packets the wish to stop is seen here, inside of one by ReaderIo.
    while (!m_stop) {
        const int read = av_read_frame(m_format.get(), &packet);
        if (read == AVERROR(ENOMEM)) return E_OUTOFMEMORY;
        if (read < 0) return FAILED(m_io->Failure()) ? m_io->Failure() : S_FALSE;
        if (packet.stream_index == static_cast<int>(m_stream) && packet.size > 0) return S_OK;
        av_packet_unref(&packet);
    }
    return S_FALSE;
}
