// The functions of vlwav.h that edit in place.
#include "capi/FormatRecord.h"
#include "capi/handles/Editor.h"
#include "capi/handles/FactsRecord.h"

namespace {

bool IsOpen(const vlw_editor* editor) { return editor && editor->work->IsOpen(); }

}  // namespace

vlw_code vlw_editor_new(vlw_module* module, vlw_editor** editor) { return NewHandle(editor, module); }

void vlw_editor_free(vlw_editor* editor) { delete editor; }

const vlw_error* vlw_editor_error(const vlw_editor* editor) { return editor ? editor->error.Get() : nullptr; }

vlw_code vlw_editor_text(vlw_editor* editor, vlw_text text) {
    return Guarded(editor, [&] {
        if (text < VLW_TEXT_AUTO || text > VLW_TEXT_UTF8) return VLW_BAD_ARGUMENT;
        editor->work->SetText(text);
        return VLW_OK;
    });
}

vlw_code vlw_editor_open(vlw_editor* editor, const char* path) {
    return Guarded(editor, [&] {
        if (!path) {
            editor->work->Close();
            return VLW_BAD_ARGUMENT;
        }
        editor->work->Open(path);
        return VLW_OK;
    });
}

vlw_code vlw_editor_format(const vlw_editor* editor, vlw_format* format) {
    if (!editor) return VLW_BAD_ARGUMENT;
    return IsOpen(editor) ? PutFormat(RecordOf(editor->work->Facts()), format) : VLW_BAD_STATE;
}

vlw_tags* vlw_editor_tags(vlw_editor* editor) { return IsOpen(editor) ? editor->work->LentTags() : nullptr; }

vlw_code vlw_editor_save(vlw_editor* editor, uint32_t flags) {
    return Guarded(editor, [&] {
        if (flags & ~uint32_t{VLW_LOSSY}) return VLW_BAD_ARGUMENT;
        if (!IsOpen(editor)) return VLW_BAD_STATE;
        editor->work->Save(flags);
        return VLW_OK;
    });
}

void vlw_editor_close(vlw_editor* editor) {
    Guarded(editor, [&] {
        editor->work->Close();
        return VLW_OK;
    });
}
