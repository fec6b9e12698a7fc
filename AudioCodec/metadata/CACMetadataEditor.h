// Changes the metadata of an existing WAV file of 8 or 16-bit PCM, or of any format where the host says so.
// The audio is neither read nor written. One thread at a time.
//
// Decisions: how a file is saved, whatever its layout, without losing audio or foreign chunks is CWaveFile's;
// a failed Open leaves no handle behind, so that a Save after it reaches nothing. A Save that finds no memory
// returns RESULT_NO_MEMORY and leaves the file as it was. A null path makes Open return RESULT_CANNOT_OPEN.
// The attributes ATTR_EDIT_ANY_FORMAT, ATTR_EDIT_CHANGED_ONLY and ATTR_INFO_ENCODING count as they stand at
// Open. Where one of them is set Save reports its failures, and with either of the first two the format
// record stays to the byte. Where the system refused a read while the file was walked, tags may have been
// missed: Save then writes nothing, with these attributes or without, and reports it with them. The block
// align of other formats is told as the record has it: there it doesn't follow from channels and bits.
#pragma once

#include <string>

#include "AudioCodec/metadata/CMetadata.h"
#include "AudioCodec/metadata/IAC3MetadataEditor.h"
#include "AudioCodec/metadata/InfoText.h"
#include "AudioCodec/metadata/TagList.h"
#include "AudioCodec/shell/templates/BaseImpl.h"
#include "AudioCodec/wave/riff/CWaveFile.h"
#include "platform/com/RefPtr.h"

class CACMetadataEditor : public CAttributeContainerImpl<IAC3MetadataEditor> {
public:
    explicit CACMetadataEditor(const char16_t* path);  // copied; throws std::bad_alloc

    Result Open() override;
    Result Save() override;
    Result Close() override;
    Result GetSourceFormat(AudioFormatInfo* format) override;
    Result SetMetadata(IAC3Metadata* source) override;
    Result GetMetadata(IAC3Metadata** metadata) override;

protected:
    Result InternalQueryInterface(const GUID* iid, void** object) override;
    const char16_t* GetClassName() override;

private:
    struct Options {
        bool anyFormat = false;
        bool changedOnly = false;
        InfoEncoding encoding = InfoEncoding::Ansi;
        bool AreSet() const { return anyFormat || changedOnly || encoding != InfoEncoding::Ansi; }
    };

    Result OpenFile();
    Result SaveFile();
    Result StoreTags();
    Result StoreChanges();

    const std::u16string m_path;
    Options m_options;  // as of Open
    CWaveFile m_wave;
    WaveFormat m_sourceFormat;
    RefPtr<CMetadata> m_metadata;  // what Save writes; null: the file's own tags
    TagList m_tags;
};
