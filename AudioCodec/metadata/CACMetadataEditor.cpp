#include "AudioCodec/metadata/CACMetadataEditor.h"

#include "AudioCodec/metadata/MetadataHandOver.h"
#include "AudioCodec/metadata/MetadataTransfer.h"
#include "AudioCodec/metadata/TagMapping.h"
#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/riff/FormatInfo.h"

namespace {

constexpr InterfaceTableEntry kInterfaces[] = {
    {&IID_IAC3MetadataEditor, 0}, {&IID_IAttributeContainer64, 0}, {&IID_IBase, 0}, {nullptr, 0}};

}  // namespace

CACMetadataEditor::CACMetadataEditor(const char16_t* path) : m_path(path ? path : u"") {}

Result CACMetadataEditor::InternalQueryInterface(const GUID* iid, void** object) {
    return FindInterfaceEntry(this, kInterfaces, iid, object);
}

const char16_t* CACMetadataEditor::GetClassName() { return u"CACMetadataEditor"; }

Result CACMetadataEditor::Open() {
    const Result opened = AtBorder(RESULT_CANNOT_OPEN, [&] { return OpenFile(); });
    if (opened != RESULT_OK) m_wave.CloseFile();
    return opened;
}

Result CACMetadataEditor::OpenFile() {
    const Result opened = m_wave.OpenForReading(m_path.c_str(), false);
    if (opened != RESULT_OK) return opened;
    m_sourceFormat = m_wave.Format();
    return m_sourceFormat.IsDirectPcm() ? RESULT_OK : RESULT_NOT_PCM;
}

Result CACMetadataEditor::Save() {
    const Result stored = AtBorder(RESULT_NO_MEMORY, [&] {
        StoreTags();
        return RESULT_OK;
    });
    if (stored != RESULT_OK) m_wave.SetModified(false);
    m_wave.CloseFile();
    return stored;
}

void CACMetadataEditor::StoreTags() {
    if (m_metadata) MetadataToTags(m_tags, *m_metadata, ZeroNumbers::Keep);
    if (m_tags.empty()) return;
    TagsToChunks(m_tags, m_wave.Chunks());
    m_wave.SetModified(true);
}

Result CACMetadataEditor::Close() { return m_wave.CloseFile(); }

Result CACMetadataEditor::GetSourceFormat(AudioFormatInfo* format) {
    if (!format) return RESULT_BAD_ARGUMENT;
    FillFormatInfo(m_sourceFormat, format);
    return RESULT_OK;
}

Result CACMetadataEditor::SetMetadata(IAC3Metadata* source) { return KeepMetadata(source, m_metadata); }

Result CACMetadataEditor::GetMetadata(IAC3Metadata** metadata) {
    return GiveMetadata(metadata, [&](IAC3Metadata& object) {
        m_tags.clear();
        ChunksToTags(m_tags, m_wave.Chunks());
        TagsToMetadata(m_tags, object);
        return RESULT_OK;
    });
}
