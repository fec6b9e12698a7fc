// Metadata of a file as a host sees it: attributes under the ids of AttributeIds.h, and pictures, each one
// encoded image bytes under a small number. Knows no file. Attribute operations may come from any thread,
// picture operations from one at a time. The order of the operations is the binary border: nothing moves,
// nothing is added. Images are those of platform/image/Image.h.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"

namespace vlacwav3 {

class CImage;
struct PictureSet;  // opaque to a host: it goes from GetPictureSet to MergePictures

// Where a picture id is asked for: the caller names none. Setting then stores under 0, getting takes the
// best picture there is.
inline constexpr int32_t PICTURE_ID_NONE = -1;

struct IAC3Metadata : IAttributeContainer64 {
    // Copies a fixed list of attributes, and the pictures; what the source doesn't have stays, and a null
    // source changes nothing. Always RESULT_OK.
    virtual Result CopyFrom(IAC3Metadata* source /*in*/) = 0;
    // Stores the image, which stays the caller's, as a JPEG. RESULT_OK; RESULT_NO_MEMORY where there is no
    // memory, or the way through a temporary file fails; RESULT_BAD_ARGUMENT for an image that is empty or
    // can't be encoded, and for null, which also marks the set as cleared if `further` is null.
    virtual Result SetPictureFromImage(CImage* image /*in*/, int32_t id /*in*/, void* further /*in*/) = 0;
    // Decodes a picture. RESULT_OK, also where it can't be decoded: the image is empty then. RESULT_FAILED
    // where the object has no picture at all, and nothing is written; where there is none under this id the
    // image is null. RESULT_NO_MEMORY, the image null; RESULT_BAD_ARGUMENT for a null receiver.
    virtual Result GetPictureImage(CImage** image /*out: deleted by the caller*/, int32_t& id /*in*/,
                                   char16_t** text /*out: empty, owned by the caller, may be null*/) = 0;
    // RESULT_OK; with null and 0 bytes where there is none under this id. RESULT_FAILED where the object has
    // no picture at all, and nothing is written; RESULT_NO_MEMORY for the text, RESULT_BAD_ARGUMENT for a
    // null receiver of the data or size.
    virtual Result GetPictureData(const uint8_t** data /*out: borrowed, valid while the picture stays*/,
                                  uint32_t* size /*out: bytes*/,
                                  char16_t** text /*out: file extension, owned by the caller, may be null*/,
                                  int32_t& id /*in*/) = 0;
    // Stores the file's bytes as they are. RESULT_OK, RESULT_NO_MEMORY if they can't be read or kept,
    // RESULT_BAD_ARGUMENT if the file can't be opened.
    virtual Result SetPictureFromFile(const char16_t* path /*in*/, int32_t id /*in*/) = 0;
    virtual Result PictureOperationUnsupported() = 0;  // always RESULT_NOT_SUPPORTED
    // Copies every picture of the set into this object's, in place of those under the same ids. RESULT_OK,
    // RESULT_BAD_ARGUMENT for null, RESULT_NO_MEMORY, what was copied by then staying.
    virtual Result MergePictures(PictureSet* source /*in*/) = 0;
    // Always RESULT_OK.
    virtual Result GetPictureSet(
        PictureSet** set /*out: borrowed, lives as long as this object; may be null*/) = 0;

protected:
    ~IAC3Metadata() = default;
};

inline constexpr GUID IID_IAC3Metadata = MakeGuid("C6883FD0-1887-40D2-B86A-0F8333E87074");

}  // namespace vlacwav3
