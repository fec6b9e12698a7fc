#include "capi/handles/Editor.h"

#include <cerrno>
#include <filesystem>
#include <new>
#include <vector>

#include "capi/ModuleFailure.h"
#include "capi/SystemFailure.h"
#include "capi/TagLosses.h"
#include "capi/TagTransfer.h"
#include "capi/TextEncoding.h"
#include "capi/handles/ListFile.h"
#include "capi/handles/SourceTags.h"
#include "capi/handles/WriteFailure.h"
#include "capi/input/OpenInput.h"
#include "capi/input/SourceScan.h"
#include "capi/posix/FileNames.h"
#include "platform/base/Utf.h"

namespace {

constexpr uint64_t kListRoom = 4096;  // bytes that a save may need at the least
constexpr uint32_t kCopyBlock = 65536;

// An editor that writes what differs, with the file open. Throws Failure.
RefPtr<IAC3MetadataEditor> OpenModuleEditor(const Module& module, const std::string& path, vlw_text text) {
    RefPtr<IAC3MetadataEditor> editor;
    const RefPtr<IPrivateCodecMain3> codec = module.CreateCodec();
    RequireModule(codec->CreateMetadataEditor(Utf::FromUtf8(path).c_str(), editor.Put()), "Opening", path);
    RequireModule(editor->SetBool(ATTR_EDIT_ANY_FORMAT, 1), "Opening", path);
    RequireModule(editor->SetBool(ATTR_EDIT_CHANGED_ONLY, 1), "Opening", path);
    SetEncoding(*editor, text);
    ForgetLastError();
    const Result opened = editor->Open();
    if (const int error = opened == RESULT_CANNOT_OPEN ? LastSystemError() : 0)
        throw SystemFailure(error, "Opening " + path + " for writing", path);
    RequireModule(opened, "Opening", path);
    return editor;
}

// Before it is opened: what isn't a regular file may wait for its other end, or lose bytes to a look.
void RequireRegular(const std::string& path) {
    FileNames::Facts facts;
    RequireSystem(FileNames::Look(path, facts), "Opening", path);
    if (facts.folder) throw SystemFailure(EISDIR, "Opening " + path, path);
    if (!facts.regular)
        throw Failure(VLW_NOT_SEEKABLE, path + " is no regular file and can't be edited.", path);
}

SourceFacts ScanWaveFile(Input& input) {
    SourceFacts facts = ScanSource(input);
    if (!facts.isWave)
        throw Failure(VLW_UNSUPPORTED,
                      input.Label().path + " is no WAV file; tags of other kinds are only read.",
                      input.Label().path);
    return facts;
}

// Refused without a lock, and for what it is.
void RequireEditable(Input& input) { static_cast<void>(ListFile(input, ScanWaveFile(input))); }

// Why a save failed, as far as it can be told.
int FindSaveError(const std::string& path) {
    Descriptor file;
    uint64_t size = 0;
    const int error = file.Open(path, size);
    return error != 0 ? error : FindWriteError(file, kListRoom);
}

// Saves what differs between the tags, and closes.
void SaveChanges(const Module& module, IAC3MetadataEditor& editor, const Tags& tags, const Tags& before,
                 const std::string& path) {
    RefPtr<IAC3Metadata> present;
    RequireModule(editor.GetMetadata(present.Put()), "Reading the tags of", path);
    const RefPtr<IAC3Metadata> metadata = module.NewMetadata();
    StoreChangedTags(tags, before, *present, *metadata);
    RequireModule(editor.SetMetadata(metadata.Get()), "Saving the tags of", path);
    ForgetLastError();
    const Result saved = editor.Save();
    if (saved == RESULT_OK) return;
    if (saved == RESULT_NO_MEMORY) throw std::bad_alloc();
    throw SystemFailure(FindSaveError(path), "Saving the tags of " + path, path);
}

// From the start: the list may lie elsewhere now.
Tags ReadBack(const Module& module, const std::string& path, vlw_text text) {
    const std::unique_ptr<Input> input = OpenPathUnshared(path.c_str());
    return ReadSourceTags(ModuleReaders(module), *input, ScanSource(*input), text);
}

// A file that has the list alone, block by block.
void WriteList(const Descriptor& target, Input& input, const SourceFacts& facts, const std::string& path) {
    ListFile list(input, facts);
    std::vector<uint8_t> block(kCopyBlock);
    for (uint32_t done = 1; done != 0;) {
        list.Read(block.data(), kCopyBlock, &done);
        list.ThrowFailure();
        RequireSystem(target.Write(block.data(), done), "Trying the tags of", path);
    }
}

}  // namespace

void Editor::Open(const char* path) {
    Close();
    auto file = std::make_unique<OpenFile>();
    file->path = path;
    file->text = m_text;
    const Module& module = m_module.Get();
    RequireRegular(path);
    RequireEditable(*OpenPathUnshared(path));
    file->editor = OpenModuleEditor(module, file->path, m_text);
    // Only now nobody else changes it.
    file->fullPath = std::filesystem::absolute(path).native();
    file->input = OpenPathUnshared(path);
    file->facts = ScanWaveFile(*file->input);
    file->before = ReadSourceTags(ModuleReaders(module), *file->input, file->facts, m_text);
    file->tags.content = file->before;
    m_file = std::move(file);
}

void Editor::Close() noexcept { m_file.reset(); }

// On a file in memory that has the list alone.
Tags Editor::Try(const Module& module, const OpenFile& file) const {
    Descriptor copy;
    RequireSystem(copy.MakeInMemory(), "Trying the tags of", file.path);
    WriteList(copy, *file.input, file.facts, file.path);
    const std::string path = copy.ReopeningPath();
    try {
        SaveChanges(module, *OpenModuleEditor(module, path, file.text), file.tags.content, file.before, path);
        return ReadBack(module, path, file.text);
    } catch (const Failure& failure) {  // its path says nothing to a program
        throw Failure(failure.Code(), "Trying the tags of " + file.path + " in memory failed.", file.path,
                      failure.System());
    }
}

void Editor::Save(uint32_t flags) {
    std::unique_ptr<OpenFile> closing = std::move(m_file);  // whatever happens, but for what would be lost
    const OpenFile& file = *closing;
    const Tags& tags = file.tags.content;
    if (tags == file.before) return;
    const Module& module = m_module.Get();
    const Tags kept = Try(module, file);
    const std::vector<std::string> losses = TagLosses(tags, kept);
    if (!losses.empty() && !(flags & VLW_LOSSY)) {
        Failure failure(VLW_WOULD_LOSE,
                        file.path + " can't keep its tags as they are: " + JoinClauses(losses) + '.',
                        file.path);
        m_file = std::move(closing);
        throw failure;
    }
    SaveChanges(module, *file.editor, tags, file.before, file.path);
    if (!(ReadBack(module, file.fullPath, file.text) == kept))
        throw Failure(VLW_SYSTEM, file.path + " doesn't give back the tags that were saved.", file.path);
}
