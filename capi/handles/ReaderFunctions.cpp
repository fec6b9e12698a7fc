// The functions of vlwav.h that read. Queries leave no record.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "capi/FormatRecord.h"
#include "capi/audio/Samples.h"
#include "capi/handles/FactsRecord.h"
#include "capi/handles/Reader.h"
#include "capi/input/MemoryInput.h"
#include "capi/input/OpenInput.h"

namespace {

constexpr size_t kFloatBlock = 8192;  // samples

bool IsOpen(const vlw_reader* reader) { return reader && reader->work->IsOpen(); }

// Opens what `source` makes. An open file is closed first, in any case.
template <class Source>
vlw_code OpenWith(vlw_reader* reader, Source&& source) {
    return Guarded(reader, [&] {
        reader->work->Close();
        reader->work->Open(source());
        return VLW_OK;
    });
}

// Runs a read, and leaves the reason of a cut file in the record.
template <class Work>
vlw_code GuardedRead(vlw_reader* reader, const void* buffer, size_t frames, size_t* done, Work&& read) {
    size_t count = 0;
    vlw_code code = Guarded(reader, [&] {
        if (!buffer && frames != 0) return VLW_BAD_ARGUMENT;
        if (!IsOpen(reader)) return VLW_BAD_STATE;
        return read(count);
    });
    if (code == VLW_CUT) {
        code = Guarded(reader, [&]() -> vlw_code { throw reader->work->CutReason(); });
    }
    if (done) *done = count;
    return code;
}

}  // namespace

vlw_code vlw_reader_new(vlw_module* module, vlw_reader** reader) { return NewHandle(reader, module); }

void vlw_reader_free(vlw_reader* reader) { delete reader; }

const vlw_error* vlw_reader_error(const vlw_reader* reader) { return reader ? reader->error.Get() : nullptr; }

vlw_code vlw_reader_output(vlw_reader* reader, uint32_t rate, uint32_t channels) {
    return Guarded(reader, [&] {
        reader->work->SetOutput(rate, channels);
        return VLW_OK;
    });
}

vlw_code vlw_reader_text(vlw_reader* reader, vlw_text text) {
    return Guarded(reader, [&] {
        if (text < VLW_TEXT_AUTO || text > VLW_TEXT_UTF8) return VLW_BAD_ARGUMENT;
        reader->work->SetText(text);
        return VLW_OK;
    });
}

vlw_code vlw_reader_decode_late(vlw_reader* reader, int late) {
    return Guarded(reader, [&] {
        reader->work->SetLate(late != 0);
        return VLW_OK;
    });
}

size_t vlw_reader_chunk_count(vlw_reader* reader) {
    size_t count = 0;
    const vlw_code code = Guarded(reader, [&] {
        if (!IsOpen(reader)) return VLW_BAD_STATE;
        count = reader->work->CountChunks();
        return VLW_OK;
    });
    return code == VLW_OK ? count : 0;
}

vlw_code vlw_reader_chunk(vlw_reader* reader, size_t index, vlw_chunk* chunk) {
    return Guarded(reader, [&] {
        constexpr size_t kFirstSize = offsetof(vlw_chunk, bytes) + sizeof(uint32_t);
        if (!chunk || chunk->size < kFirstSize) return VLW_BAD_ARGUMENT;
        if (!IsOpen(reader)) return VLW_BAD_STATE;
        vlw_chunk found{};
        found.size = chunk->size;
        if (!reader->work->FindChunk(index, found)) return VLW_END;
        std::memcpy(chunk, &found, std::min(found.size, sizeof found));
        return VLW_OK;
    });
}

vlw_code vlw_reader_open(vlw_reader* reader, const char* path) {
    return OpenWith(reader, [&] {
        if (!path) throw Failure(VLW_BAD_ARGUMENT, "No path was given.");
        return OpenPath(path);
    });
}

vlw_code vlw_reader_open_fd(vlw_reader* reader, int fd) {
    return OpenWith(reader, [&] { return OpenDescriptor(fd); });
}

vlw_code vlw_reader_open_memory(vlw_reader* reader, const void* bytes, size_t size) {
    return OpenWith(reader, [&]() -> std::unique_ptr<Input> {
        if (!bytes) throw Failure(VLW_BAD_ARGUMENT, "No bytes were given.");
        return std::make_unique<MemoryInput>(bytes, size);
    });
}

vlw_code vlw_reader_open_stream(vlw_reader* reader, const vlw_stream* stream) {
    // First of all, so that its `close` is called whatever fails.
    std::shared_ptr<CallerStream> taken;
    const auto take = [&] { taken = CallerStream::TakeOver(stream); };
    if (!reader) {
        try {
            take();
        } catch (...) {
            // It was closed then, too.
        }
        return VLW_BAD_ARGUMENT;
    }
    return OpenWith(reader, [&] {
        take();
        if (!taken || !taken->CanRead())
            throw Failure(VLW_BAD_ARGUMENT, "No stream that can be read was given.");
        return OpenStream(std::move(taken));
    });
}

void vlw_reader_close(vlw_reader* reader) {
    Guarded(reader, [&] {
        reader->work->Close();
        return VLW_OK;
    });
}

vlw_code vlw_reader_format(const vlw_reader* reader, vlw_format* format) {
    if (!reader) return VLW_BAD_ARGUMENT;
    return IsOpen(reader) ? PutFormat(RecordOf(reader->work->Facts()), format) : VLW_BAD_STATE;
}

vlw_code vlw_reader_tags(vlw_reader* reader, vlw_tags* tags) {
    return Guarded(reader, [&] {
        if (!tags) return VLW_BAD_ARGUMENT;
        if (!IsOpen(reader)) return VLW_BAD_STATE;
        tags->content = reader->work->ReadTags();
        return VLW_OK;
    });
}

uint32_t vlw_reader_rate(const vlw_reader* reader) { return IsOpen(reader) ? reader->work->Rate() : 0; }

uint32_t vlw_reader_channels(const vlw_reader* reader) {
    return IsOpen(reader) ? reader->work->Channels() : 0;
}

int64_t vlw_reader_frames(const vlw_reader* reader) { return IsOpen(reader) ? reader->work->Frames() : 0; }

int64_t vlw_reader_tell(const vlw_reader* reader) { return IsOpen(reader) ? reader->work->Position() : 0; }

int vlw_reader_seekable(const vlw_reader* reader) {
    return IsOpen(reader) && reader->work->IsSeekable() ? 1 : 0;
}

int vlw_reader_length_told(const vlw_reader* reader) {
    return IsOpen(reader) && reader->work->Facts().declaredBytes ? 1 : 0;
}

vlw_code vlw_reader_seek(vlw_reader* reader, int64_t frame) {
    return Guarded(reader, [&] { return IsOpen(reader) ? reader->work->SeekTo(frame) : VLW_BAD_STATE; });
}

vlw_code vlw_reader_read_int16(vlw_reader* reader, int16_t* buffer, size_t frames, size_t* done) {
    return GuardedRead(reader, buffer, frames, done,
                       [&](size_t& count) { return reader->work->Read(buffer, frames, count); });
}

vlw_code vlw_reader_read_float(vlw_reader* reader, float* buffer, size_t frames, size_t* done) {
    return GuardedRead(reader, buffer, frames, done, [&](size_t& count) {
        const size_t channels = reader->work->Channels();
        int16_t block[kFloatBlock];
        for (vlw_code code = VLW_OK; count < frames && code == VLW_OK;) {
            size_t got = 0;
            const auto put = [&] {
                std::transform(block, block + got * channels, buffer + count * channels, ToFloat);
                count += got;
            };
            try {
                code = reader->work->Read(block, std::min(frames - count, kFloatBlock / channels), got);
            } catch (...) {
                put();  // what came before the failure
                throw;
            }
            put();
            if (code != VLW_OK) return code;
        }
        return VLW_OK;
    });
}
