// Edits the tags of one WAV file after another in place, by the module's editor, which is told to write what
// differs and nothing else. What the file will make of the tags is tried before on a small file with the same
// list.
//
// Decisions: pictures and tags that WAV files don't keep are losses. A file of another kind than WAV is
// VLW_UNSUPPORTED. A save that fails for any other reason than a loss closes the file too, with its old tags
// or the new.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "AudioCodec/metadata/IAC3MetadataEditor.h"
#include "capi/Handle.h"
#include "capi/Tags.h"
#include "capi/input/Input.h"
#include "capi/input/SourceFacts.h"

class Editor {
public:
    explicit Editor(ModuleUse& module) : m_module(module) {}

    void SetText(vlw_text text) { m_text = text; }

    // A file that is open is closed first. Throws Failure, and no file is open then.
    void Open(const char* path);
    void Close() noexcept;
    bool IsOpen() const { return m_file != nullptr; }

    // The rest needs an open file.
    const SourceFacts& Facts() const { return m_file->facts; }
    vlw_tags* LentTags() { return &m_file->tags; }
    // Throws Failure; with VLW_WOULD_LOSE the file stays open and as it was.
    void Save(uint32_t flags);

private:
    struct OpenFile {
        std::string path;              // as it was given
        std::string fullPath;          // wherever the program stands when it saves
        std::unique_ptr<Input> input;  // for looking, beside the editor
        SourceFacts facts;
        RefPtr<vlacwav3::IAC3MetadataEditor> editor;
        vlw_text text = VLW_TEXT_AUTO;
        Tags before;
        vlw_tags tags;  // the program's
    };

    // What the file will hold; throws Failure.
    Tags Try(const Module& module, const OpenFile& file) const;

    ModuleUse& m_module;
    std::unique_ptr<OpenFile> m_file;
    vlw_text m_text = VLW_TEXT_AUTO;
};

struct vlw_editor : FileHandle<Editor> {
    using FileHandle::FileHandle;
};
