#include "capi/handles/Editor.h"

#include "capi/ModuleFailure.h"
#include "capi/SystemFailure.h"
#include "capi/TagLosses.h"
#include "capi/TagTransfer.h"
#include "capi/TextEncoding.h"
#include "capi/handles/SourceTags.h"
#include "capi/handles/WriteFailure.h"
#include "capi/input/OpenInput.h"
#include "capi/input/SourceScan.h"
#include "platform/base/LastError.h"
#include "platform/base/Utf.h"

namespace {

constexpr uint64_t kListRoom = 4096;  // bytes that a save may need at the least

// An editor that writes what differs, with the file open. Throws Failure.
RefPtr<IAC3MetadataEditor> OpenModuleEditor(const Module& module, const std::string& path, vlw_text text) {
    RefPtr<IAC3MetadataEditor> editor;
    const RefPtr<IPrivateCodecMain3> codec = module.CreateCodec();
    RequireModule(codec->CreateMetadataEditor(Utf::FromUtf8(path).c_str(), editor.Put()), "Opening", path);
    RequireModule(editor->SetBool(ATTR_EDIT_ANY_FORMAT, 1), "Opening", path);
    RequireModule(editor->SetBool(ATTR_EDIT_CHANGED_ONLY, 1), "Opening", path);
    SetEncoding(*editor, text);
    SetLastError(ERROR_SUCCESS);
    const Result opened = editor->Open();
    if (opened == RESULT_CANNOT_OPEN && GetLastError() == ERROR_ACCESS_DENIED)
        throw Failure(VLW_NO_PERMISSION, path + " can't be opened for writing; check the rights on it.",
                      path);
    RequireModule(opened, "Opening", path);
    return editor;
}

// Why a save failed, as far as it can be told.
int FindWriteError(const std::string& path) {
    Descriptor file;
    const int error = file.Open(path);
    return error != 0 ? error : FindWriteError(file, kListRoom);
}

// Saves what differs between the tags, and closes.
void SaveChanges(IAC3MetadataEditor& editor, const Tags& tags, const Tags& before, const std::string& path) {
    RefPtr<IAC3Metadata> metadata;
    RequireModule(editor.GetMetadata(metadata.Put()), "Reading the tags of", path);
    StoreTags(tags, before, *metadata);
    RequireModule(editor.SetMetadata(metadata.Get()), "Saving the tags of", path);
    ForgetLastError();
    if (editor.Save() == RESULT_OK) return;
    const int error = FindWriteError(path);
    throw SystemFailure(error, "Saving the tags of " + path, path);
}

}  // namespace

void Editor::Open(const char* path) {
    Close();
    auto file = std::make_unique<OpenFile>();
    file->path = path;
    file->text = m_text;
    const Module& module = m_module.Get();
    file->input = OpenPathUnshared(path);
    file->facts = ScanSource(*file->input);
    if (!file->facts.isWave)
        throw Failure(VLW_UNSUPPORTED, file->path + " is no WAV file; tags of other kinds are only read.",
                      path);
    if (!file->input->IsSeekable())
        throw Failure(VLW_NOT_SEEKABLE, file->path + " is no regular file and can't be edited.", path);
    file->editor = OpenModuleEditor(module, file->path, m_text);
    file->before = ReadSourceTags(ModuleReaders(module), *file->input, file->facts, m_text);
    file->tags.content = file->before;
    m_file = std::move(file);
}

void Editor::Close() noexcept {
    if (m_file && m_file->editor) m_file->editor->Close();
    m_file.reset();
}

// On a file in memory that has the list alone.
Tags Editor::Try(const Module& module, const OpenFile& file) const {
    const ModuleReaders readers(module);
    Descriptor copy;
    const std::vector<uint8_t> small = FileOfList(ReadListEntries(*file.input, file.facts));
    constexpr const char* kName = "a trial of the tags";
    RequireSystem(copy.MakeInMemory(), "Making", kName);
    RequireSystem(copy.Write(small.data(), small.size()), "Writing", kName);
    const std::string path = copy.ReopeningPath();
    SaveChanges(*OpenModuleEditor(module, path, file.text), file.tags.content, file.before, path);
    const std::unique_ptr<Input> input = OpenPathUnshared(path.c_str());
    return ReadSourceTags(readers, *input, ScanSource(*input), file.text);
}

void Editor::Save(uint32_t flags) {
    OpenFile& file = *m_file;
    const Tags& tags = file.tags.content;
    if (tags == file.before) {
        Close();
        return;
    }
    const Module& module = m_module.Get();
    const Tags kept = Try(module, file);
    const std::vector<std::string> losses = TagLosses(tags, kept);
    if (!losses.empty() && !(flags & VLW_LOSSY))
        throw Failure(VLW_WOULD_LOSE,
                      file.path + " can't keep its tags as they are: " + JoinClauses(losses) + '.',
                      file.path);
    const std::unique_ptr<OpenFile> closing = std::move(m_file);  // whatever happens from here on
    SaveChanges(*closing->editor, tags, closing->before, closing->path);
    closing->editor->Close();
    // The list may lie elsewhere now.
    const std::unique_ptr<Input> input = OpenPathUnshared(closing->path.c_str());
    const Tags held = ReadSourceTags(ModuleReaders(module), *input, ScanSource(*input), closing->text);
    if (!(held == kept))
        throw Failure(VLW_SYSTEM, closing->path + " doesn't give back the tags that were saved.",
                      closing->path);
}
