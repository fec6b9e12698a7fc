#include "AudioCodec/metadata/CMetadata.h"

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/attributes/StoreTypes.h"
#include "AudioCodec/shell/Border.h"
#include "AudioCodec/shell/HandedOut.h"

namespace {

constexpr InterfaceTableEntry kInterfaces[] = {
    {&IID_IAC3Metadata, 0}, {&IID_IAttributeContainer64, 0}, {&IID_IBase, 0}, {nullptr, 0}};

}  // namespace

Result CreateMetadataObject(IAC3Metadata** metadata) { return CreateObject<CMetadata>(metadata); }

Result CMetadata::InternalQueryInterface(const GUID* iid, void** object) {
    return FindInterfaceEntry(this, kInterfaces, iid, object);
}

const char16_t* CMetadata::GetClassName() { return u"CMetadata"; }

// Nothing is emptied first, and no result is looked at: what the source doesn't have stays as it is here.
Result CMetadata::CopyFrom(IAC3Metadata* source) {
    if (!source) return RESULT_OK;
    for (const MetadataId& row : kMetadataIds) {
        if (TypeNibble(row.id) == NIBBLE_STRING)
            CopyText(row.id, *source);
        else
            SetLong(row.id, source->GetLong(row.id));
    }
    PictureSet* pictures = nullptr;
    source->GetPictureSet(&pictures);
    MergePictures(pictures);
    return RESULT_OK;
}

void CMetadata::CopyText(uint32_t id, IAC3Metadata& source) {
    HandedOutText text(source);
    if (source.GetString(id, text.Put()) == RESULT_OK && text.Get()) SetString(id, text.Get());
}

Result CMetadata::SetPictureFromImage(CImage* /*image*/, int32_t /*id*/, void* /*further*/) {
    return RESULT_NOT_SUPPORTED;
}

Result CMetadata::GetPictureImage(CImage** /*image*/, int32_t& /*id*/, char16_t** /*text*/) {
    return m_pictures.m_records.empty() ? RESULT_FAILED : RESULT_NOT_SUPPORTED;
}

Result CMetadata::GetPictureData(const uint8_t** /*data*/, uint32_t* /*size*/, char16_t** /*text*/,
                                 int32_t& /*id*/) {
    return m_pictures.m_records.empty() ? RESULT_FAILED : RESULT_NOT_SUPPORTED;
}

Result CMetadata::SetPictureFromFile(const char16_t* /*path*/, int32_t /*id*/) {
    return RESULT_NOT_SUPPORTED;
}

Result CMetadata::PictureOperationUnsupported() { return RESULT_NOT_SUPPORTED; }

Result CMetadata::MergePictures(PictureSet* source) {
    if (!source) return RESULT_BAD_ARGUMENT;
    return AtBorder(RESULT_NO_MEMORY, [&] {
        m_pictures.MergePictures(*source);
        return RESULT_OK;
    });
}

Result CMetadata::GetPictureSet(PictureSet** set) {
    if (set) *set = &m_pictures;
    return RESULT_OK;
}
