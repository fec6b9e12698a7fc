#include "AudioCodec/metadata/CACMetadataEditor.h"

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/MetadataHandOver.h"
#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/metadata/TagChanges.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/riff/FormatInfo.h"
#include "platform/base/LastError.h"

namespace {

constexpr InterfaceTableEntry kInterfaces[] = {
    {&IID_IAC3MetadataEditor, 0}, {&IID_IAttributeContainer64, 0}, {&IID_IBase, 0}, {nullptr, 0}};

// The result is one for all reasons; the last error tells of memory, as of what the system refuses.
Result CannotOpenOnThrow(bool noMemory) {
    if (noMemory) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return RESULT_CANNOT_OPEN;
}

}  // namespace

CACMetadataEditor::CACMetadataEditor(const char16_t* path) : m_path(path ? path : u"") {}

Result CACMetadataEditor::InternalQueryInterface(const GUID* iid, void** object) {
    return FindInterfaceEntry(this, kInterfaces, iid, object);
}

const char16_t* CACMetadataEditor::GetClassName() { return u"CACMetadataEditor"; }

Result CACMetadataEditor::Open() {
    const auto alone = Alone();
    const Result opened = AtBorder(CannotOpenOnThrow, [&] { return OpenFile(); });
    if (opened != RESULT_OK) m_wave.CloseFile();
    return opened;
}

Result CACMetadataEditor::OpenFile() {
    m_options = {GetBool(ATTR_EDIT_ANY_FORMAT), GetBool(ATTR_EDIT_CHANGED_ONLY),
                 InfoEncodingOf(GetLong(ATTR_INFO_ENCODING))};
    m_wave.KeepFormat(m_options.anyFormat || m_options.changedOnly);
    m_wave.KeepChunks(m_options.changedOnly ? InfoWanted::Tags : InfoWanted::All);
    const Result opened = m_wave.OpenForReading(m_path.c_str(), false);
    if (opened != RESULT_OK) return opened;
    m_sourceFormat = m_wave.Format();
    if (m_sourceFormat.IsDirectPcm()) return RESULT_OK;
    if (!m_options.anyFormat) return RESULT_NOT_PCM;
    m_sourceFormat.blockAlign = m_wave.ToldBlockAlign();
    return RESULT_OK;
}

Result CACMetadataEditor::Save() {
    const auto alone = Alone();
    const Result saved = AtBorder(RESULT_NO_MEMORY, [&] { return SaveFile(); });
    // What was stored half way stays out of the file.
    if (saved != RESULT_OK) m_wave.SetModified(false);
    m_wave.CloseFile();
    return saved;
}

Result CACMetadataEditor::SaveFile() {
    // To save what was found would take away what wasn't. Without the attributes hosts know no failure here.
    if (m_wave.HasSource() && m_wave.ReadFailed()) return m_options.AreSet() ? RESULT_NOT_WAVE : RESULT_OK;
    const Result stored = m_options.changedOnly ? StoreChanges() : StoreTags();
    if (stored != RESULT_OK) return stored;
    const Result written = m_wave.WriteChanges();
    return m_options.AreSet() ? written : RESULT_OK;
}

Result CACMetadataEditor::StoreTags() {
    if (m_metadata) MetadataToTags(m_tags, *m_metadata, ZeroNumbers::Keep);
    if (m_tags.empty()) return RESULT_OK;
    TagsToChunks(m_tags, m_wave.Chunks(), m_options.encoding);
    m_wave.SetModified(true);
    return RESULT_OK;
}

Result CACMetadataEditor::StoreChanges() {
    if (!m_metadata || !m_wave.HasSource()) return RESULT_OK;
    std::string entries;
    if (!m_wave.ReadEntries(entries)) return RESULT_NOT_WAVE;
    auto changed = ChangedInfoEntries(entries, m_wave.Chunks(), *m_metadata, m_options.encoding);
    if (!changed) return RESULT_OK;
    entries = {};  // there may be many megabytes of them
    m_wave.SetEntries(std::move(*changed));
    m_wave.SetModified(true);
    return RESULT_OK;
}

Result CACMetadataEditor::Close() {
    const auto alone = Alone();
    return m_wave.CloseFile();
}

Result CACMetadataEditor::GetSourceFormat(AudioFormatInfo* format) {
    const auto alone = Alone();
    if (!format) return RESULT_BAD_ARGUMENT;
    FillFormatInfo(m_sourceFormat, format);
    return RESULT_OK;
}

Result CACMetadataEditor::SetMetadata(IAC3Metadata* source) {
    const auto alone = Alone();
    return KeepMetadata(source, m_metadata);
}

Result CACMetadataEditor::GetMetadata(IAC3Metadata** metadata) {
    const auto alone = Alone();
    return GiveMetadata(metadata, [&](IAC3Metadata& object) {
        TagList tags;
        // A save of what differs asks the file itself for the tags that nobody here knows.
        const auto read = m_options.changedOnly ? TakeTags : ChunksToTags;
        read(tags, m_wave.Chunks(), m_options.encoding);
        TagsToMetadata(tags, object);
        // Whole or not at all: Save takes this list for the file's tags, after another Open too.
        m_tags.clear();
        if (!m_wave.ReadFailed()) m_tags = std::move(tags);
        return RESULT_OK;
    });
}
