// The functions of vlwav_more.h that write files of any bytes.
#include "capi/Guarded.h"
#include "capi/output/PlainFile.h"
#include "capi/output/TemporaryNames.h"
#include "capi/posix/ProcessMark.h"
#include "capi/vlwav_more.h"

struct vlw_file {
    // A child of the process leaves the parent's files alone.
    ~vlw_file() {
        if (!process.IsOurs()) static_cast<void>(content.release());
    }

    ErrorRecord error;
    ProcessMark process;
    std::unique_ptr<PlainFile> content = std::make_unique<PlainFile>();
    bool isBroken = false;
};

vlw_code vlw_file_new(vlw_file** file) { return NewHandle(file); }

void vlw_file_free(vlw_file* file) { delete file; }

const vlw_error* vlw_file_error(const vlw_file* file) { return file ? file->error.Get() : nullptr; }

vlw_code vlw_file_create(vlw_file* file, const char* path, uint32_t flags) {
    return Guarded(file, [&] {
        if (!path || (flags & ~uint32_t{VLW_OVERWRITE})) return VLW_BAD_ARGUMENT;
        file->content->Create(path, flags);
        file->isBroken = false;
        return VLW_OK;
    });
}

vlw_code vlw_file_write(vlw_file* file, const void* bytes, size_t size) {
    return Guarded(file, [&] {
        if (!bytes && size != 0) return VLW_BAD_ARGUMENT;
        if (!file->content->IsOpen() || file->isBroken) return VLW_BAD_STATE;
        file->isBroken = true;  // unless it ends well
        file->content->Write(bytes, size);
        file->isBroken = false;
        return VLW_OK;
    });
}

vlw_code vlw_file_finish(vlw_file* file) {
    return Guarded(file, [&] {
        if (!file->content->IsOpen() || file->isBroken) return VLW_BAD_STATE;
        file->isBroken = true;
        file->content->Finish();
        file->isBroken = false;
        return VLW_OK;
    });
}

void vlw_remove_temporaries(void) { TemporaryNames::RemoveAll(); }
