// Metadata of a file as a host sees it: attributes under the ids of AttributeIds.h, and pictures, each one
// encoded image bytes under a small number. Knows no file. Attribute operations may come from any thread,
// picture operations from one at a time. The order of the operations is the binary border: nothing moves,
// nothing is added. Images are those of platform/image/Image.h.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"

class CImage;
struct PictureSet;  // opaque to a host: it goes from GetPictureSet to MergePictures

// Where a picture id is asked for: the caller names none. Setting then stores under 0, getting takes the
// best picture there is.
inline constexpr int32_t PICTURE_ID_NONE = -1;

struct IAC3Metadata : IAttributeContainer64 {
    // Copies a fixed list of attributes, and the pictures; what the source doesn't have stays. Always 0.
    virtual Result CopyFrom(IAC3Metadata* source /*in*/) = 0;
    // Stores the image, which stays the caller's, as a JPEG. 0; 2 where the way through a temporary file
    // fails; 4 for an image that is empty or can't be encoded, and for null, which also marks the set as
    // cleared if `further` is null.
    virtual Result SetPictureFromImage(CImage* image /*in*/, int32_t id /*in*/, void* further /*in*/) = 0;
    // Decodes a picture. 0, also where it can't be decoded: the image is empty then; 1 where there is no such
    // picture, 2, 4 for a null receiver. Nothing is written for an object without pictures; otherwise 1 and 2
    // return a null image.
    virtual Result GetPictureImage(CImage** image /*out: deleted by the caller*/, int32_t& id /*in*/,
                                   char16_t** text /*out: empty, owned by the caller, may be null*/) = 0;
    // 0, or 1 where there is no picture at all, and nothing is written; an id that isn't there returns null
    // and 0 bytes. 2 without memory for the text, 4 for a null receiver of the data or size.
    virtual Result GetPictureData(const uint8_t** data /*out: borrowed, valid while the picture stays*/,
                                  uint32_t* size /*out: bytes*/,
                                  char16_t** text /*out: file extension, owned by the caller, may be null*/,
                                  int32_t& id /*in*/) = 0;
    // Stores the file's bytes as they are. 0, 2 if they can't be read, 4 if the file can't be opened.
    virtual Result SetPictureFromFile(const char16_t* path /*in*/, int32_t id /*in*/) = 0;
    virtual Result PictureOperationUnsupported() = 0;  // always 5
    // Copies every picture of the set into this object's. 0 or 4.
    virtual Result MergePictures(PictureSet* source /*in*/) = 0;
    virtual Result GetPictureSet(PictureSet** set /*out: borrowed, lives as long as this object*/) = 0;

protected:
    ~IAC3Metadata() = default;
};

inline constexpr GUID IID_IAC3Metadata = MakeGuid("C6883FD0-1887-40D2-B86A-0F8333E87074");
