// The functions of vlwav.h on writing.
#include "capi/handles/Writer.h"

namespace {

// Runs what returns nothing and throws what fails.
template <class Work>
vlw_code Do(vlw_writer* writer, Work&& work) noexcept {
    return Guarded(writer, [&] {
        work(*writer->work);
        return VLW_OK;
    });
}

template <class Sample>
vlw_code WriteFrames(vlw_writer* writer, const Sample* buffer, size_t frames) noexcept {
    return Do(writer, [&](Writer& work) { work.Write(buffer, frames); });
}

}  // namespace

vlw_code vlw_writer_new(vlw_module* module, vlw_writer** writer) { return NewHandle(writer, module); }

void vlw_writer_free(vlw_writer* writer) { delete writer; }

const vlw_error* vlw_writer_error(const vlw_writer* writer) { return writer ? writer->error.Get() : nullptr; }

vlw_code vlw_writer_input(vlw_writer* writer, uint32_t rate, uint32_t channels) {
    return Do(writer, [&](Writer& work) { work.SetInput(rate, channels); });
}

vlw_code vlw_writer_output(vlw_writer* writer, uint32_t rate, uint32_t channels, uint32_t bits) {
    return Do(writer, [&](Writer& work) { work.SetOutput(rate, channels, bits); });
}

vlw_code vlw_writer_text(vlw_writer* writer, vlw_text text) {
    return Do(writer, [&](Writer& work) { work.SetText(text); });
}

vlw_code vlw_writer_tags(vlw_writer* writer, const vlw_tags* tags) {
    return Do(writer, [&](Writer& work) { work.SetTags(tags ? &tags->content : nullptr); });
}

vlw_code vlw_writer_create(vlw_writer* writer, const char* path, uint32_t flags) {
    return Guarded(writer, [&] {
        if (!path) return VLW_BAD_ARGUMENT;
        writer->work->CreateFile(path, flags);
        return VLW_OK;
    });
}

vlw_code vlw_writer_create_fd(vlw_writer* writer, int fd, uint32_t flags) {
    return Do(writer, [&](Writer& work) { work.CreateAt(fd, flags); });
}

vlw_code vlw_writer_create_stream(vlw_writer* writer, const vlw_stream* stream, uint32_t flags) {
    std::shared_ptr<CallerStream> taken;
    try {
        taken = CallerStream::TakeOver(stream);  // first, since it is closed also where there is no writer
    } catch (...) {
        return Guarded(writer, [] { return VLW_NO_MEMORY; });
    }
    return Do(writer, [&](Writer& work) { work.CreateStream(taken, flags); });
}

vlw_code vlw_writer_create_memory(vlw_writer* writer, uint32_t flags) {
    return Do(writer, [&](Writer& work) { work.CreateInMemory(flags); });
}

vlw_code vlw_writer_write_int16(vlw_writer* writer, const int16_t* buffer, size_t frames) {
    return WriteFrames(writer, buffer, frames);
}

vlw_code vlw_writer_write_float(vlw_writer* writer, const float* buffer, size_t frames) {
    return WriteFrames(writer, buffer, frames);
}

int64_t vlw_writer_tell(const vlw_writer* writer) { return writer ? writer->work->Tell() : 0; }

vlw_code vlw_writer_finish(vlw_writer* writer) {
    return Do(writer, [](Writer& work) { work.Finish(); });
}

void vlw_writer_drop(vlw_writer* writer) {
    Do(writer, [](Writer& work) { work.Drop(); });
}

vlw_code vlw_writer_take(vlw_writer* writer, void** bytes, size_t* size) {
    return Guarded(writer, [&] {
        if (!bytes || !size) return VLW_BAD_ARGUMENT;
        writer->work->Take(bytes, size);
        return VLW_OK;
    });
}
