// Metadata as it crosses the border: the attributes that every object has, and a set of pictures. Knows no
// file and no tags. Picture operations run on one thread at a time.
//
// Decisions: a merge that runs out of memory returns RESULT_NO_MEMORY; a null source of CopyFrom changes
// nothing; an image for a number that isn't there is null, with RESULT_FAILED; a getter without memory for
// its text returns RESULT_NO_MEMORY and nothing else; an image on its way into the set passes through a file
// of its own, which only its user may read and which is gone afterwards, whatever happened.
#pragma once

#include <string>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/metadata/PictureSet.h"
#include "AudioCodec/shell/templates/BaseImpl.h"

class CMetadata : public CAttributeContainerImpl<IAC3Metadata> {
public:
    // As CopyFrom, but RESULT_NO_MEMORY where something of the source is missing here for that reason.
    Result Merge(IAC3Metadata& source);

    Result CopyFrom(IAC3Metadata* source) override;
    Result SetPictureFromImage(CImage* image, int32_t id, void* further) override;
    Result GetPictureImage(CImage** image, int32_t& id, char16_t** text) override;
    Result GetPictureData(const uint8_t** data, uint32_t* size, char16_t** text, int32_t& id) override;
    Result SetPictureFromFile(const char16_t* path, int32_t id) override;
    Result PictureOperationUnsupported() override;
    Result MergePictures(PictureSet* source) override;
    Result GetPictureSet(PictureSet** set) override;

protected:
    Result InternalQueryInterface(const GUID* iid, void** object) override;
    const char16_t* GetClassName() override;

private:
    Result StoreFile(const char16_t* path, int32_t id);
    Result StoreImage(CImage& image, int32_t id);
    char16_t* AllocText(size_t room, const std::u16string& text);
    Result CopyText(uint32_t id, IAC3Metadata& source);

    PictureSet m_pictures;
};

// Returns a new, empty object with one reference; RESULT_BAD_ARGUMENT for a null receiver, RESULT_NO_MEMORY
// if it can't be had.
Result CreateMetadataObject(IAC3Metadata** metadata);
