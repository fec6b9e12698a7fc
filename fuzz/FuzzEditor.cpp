// The metadata editor over any file with any tags: a save leaves each byte of audio and of foreign chunks
// where it was, and the tags are the ones that were wanted; or it leaves the whole file as it was.
#include <unistd.h>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/CACMetadataEditor.h"
#include "fuzz/PlainWave.h"
#include "fuzz/ScriptBytes.h"
#include "fuzz/TagAttributes.h"
#include "tests/support/ScopedFile.h"

namespace {

using Bytes = std::vector<uint8_t>;

// What a save may write to: lists of tags, filler, a list that isn't finished, and the record of a format.
bool IsTheEditors(const PlainWave::Span& chunk) {
    return chunk.isInfo || chunk.id == ChunkId::kJunk || chunk.id == ChunkId::kPad ||
           chunk.id == ChunkId::kUnfinished || chunk.id == ChunkId::kFmt;
}

void CheckKept(const Bytes& before, const Bytes& after) {
    const PlainWave plain(before);
    const auto at = [&](uint64_t place) { return before.begin() + static_cast<std::ptrdiff_t>(place); };
    uint64_t end = std::min<uint64_t>(plain.end, before.size());
    for (const PlainWave::Span& chunk : plain.chunks) {
        const uint64_t content = chunk.place + kChunkHeaderSize;
        const uint64_t size = std::min(chunk.size, before.size() - content);
        // One that reaches past the end may be none, and may then move with the rest; a list that an earlier
        // save left unfinished goes.
        if (size < chunk.size && chunk.id != ChunkId::kData)
            end = chunk.id == ChunkId::kUnfinished ? before.size() : content;
        if (end == content || IsTheEditors(chunk)) continue;
        Check(content + size <= after.size() &&
                  std::equal(at(content), at(content + size), after.begin() + (at(content) - before.begin())),
              "audio and foreign chunks stay where they were");
    }
    const bool isThere = std::search(after.begin(), after.end(), at(end), before.end()) != after.end();
    Check(end == before.size() || isThere, "what is no chunk stays in the file");
}

TagTexts TagsOf(IAC3MetadataEditor& editor) {
    RefPtr<IAC3Metadata> metadata;
    Check(editor.GetMetadata(metadata.Put()) == RESULT_OK, "an open file tells its tags");
    return WrittenTags(*metadata);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ScriptBytes script(data, size);
    ScriptBytes tags = script.Part(kHead);
    const uint32_t options = tags.Next();
    const bool isChangedOnly = options / 2 % 2 == 1;
    const uint32_t encoding = options / 4 % 3;
    ScriptBytes failing = tags.Part(2);
    const ScopedFile file(script.Rest());
    const Bytes before = file.Bytes();
    const auto make = [&] {
        auto editor = RefPtr<CACMetadataEditor>::Retain(new CACMetadataEditor(file.Wide().c_str()));
        editor->SetBool(ATTR_EDIT_ANY_FORMAT, options % 2);
        editor->SetBool(ATTR_EDIT_CHANGED_ONLY, isChangedOnly);
        editor->SetLong(ATTR_INFO_ENCODING, encoding);
        return editor;
    };
    const auto editor = make();
    if (editor->Open() != RESULT_OK) {
        Check(file.Bytes() == before, "a file that doesn't open stays as it is");
        return 0;
    }
    RefPtr<IAC3Metadata> metadata;
    Check(editor->GetMetadata(metadata.Put()) == RESULT_OK, "an open file tells its tags");
    SetTagAttributes(tags, *metadata);
    const TagTexts wanted = WrittenTags(*metadata);
    Check(editor->SetMetadata(metadata.Get()) == RESULT_OK, "tags are taken");
    Result saved = RESULT_OK;
    bool failed = false;
    {
        const FailureByScript failure(failing);
        saved = editor->Save();
        failed = failure.HasFailed();
    }
    const Bytes after = file.Bytes();
    CheckKept(before, after);
    Check(saved != RESULT_NO_MEMORY || after == before, "without memory nothing is written");
    if (failed) return 0;

    const auto again = make();
    Check(again->Open() == RESULT_OK, "a file that was saved opens");
    const TagTexts found = TagsOf(*again);
    // Windows-1252 can't hold all of them, and a date that is written as a whole may keep what isn't one.
    const bool holdsAll = isChangedOnly && encoding != 0;
    Check(saved != RESULT_OK || !holdsAll || found == wanted, "the tags are the ones that were wanted");
    if (saved != RESULT_OK) Check(after == before, "a save that is refused writes nothing");
    return 0;
}
