// Changes the metadata of an existing WAV file of 8 or 16-bit PCM, or of any format with
// ATTR_EDIT_ANY_FORMAT, without touching its audio: Open, GetMetadata, SetMetadata, Save. One thread at a
// time calls an editor. The order of the operations is the binary border: nothing moves, nothing is added.
//
// ATTR_EDIT_ANY_FORMAT, ATTR_EDIT_CHANGED_ONLY and ATTR_INFO_ENCODING are set before Open and hold for the
// file that it opens. "An attribute" below is one of them with a value that isn't false or 0.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"
#include "AudioCodec/wave/riff/AudioFormatInfo.h"

namespace vlacwav3 {

struct IAC3Metadata;

struct IAC3MetadataEditor : IAttributeContainer64 {
    // Opens the path that CreateMetadataEditor got, for reading and writing. RESULT_OK; otherwise nothing is
    // open: RESULT_CANNOT_OPEN, RESULT_NOT_PCM, RESULT_NOT_WAVE, RESULT_FILE_IN_USE.
    virtual Result Open() = 0;
    // Writes what SetMetadata said and closes the file, which then holds the old tags or the new ones, never
    // a mixture. RESULT_OK, also where none is open, and without an attribute where the file couldn't be
    // written: read it again where that matters. RESULT_NO_MEMORY: the tags are the old ones. With an
    // attribute also RESULT_WRITE_FAILED: the tags are the old ones or the new; and RESULT_NOT_WAVE: the
    // system refused a read, so that not all tags of the file may be known. Nothing is written then, without
    // an attribute neither.
    //
    // With ATTR_EDIT_CHANGED_ONLY those tags are written whose attributes differ from what GetMetadata tells,
    // and nothing at all where none does. A text that SetMetadata never brought, and a number that is 0, is a
    // tag that goes.
    virtual Result Save() = 0;
    virtual Result Close() = 0;  // saves nothing; always RESULT_OK
    // The file's own format, all 0 before an Open; of other formats than PCM of 8 and 16 bits as the file
    // tells it. RESULT_OK, RESULT_BAD_ARGUMENT for null.
    virtual Result GetSourceFormat(AudioFormatInfo* format /*out*/) = 0;
    // Kept as a copy until Save; several calls merge. Without it Save keeps the file's own tags. RESULT_OK,
    // RESULT_BAD_ARGUMENT for null, RESULT_NO_MEMORY.
    virtual Result SetMetadata(IAC3Metadata* source /*in*/) = 0;
    // The tags of the file. RESULT_OK; otherwise *metadata is null: RESULT_NO_MEMORY, or RESULT_BAD_ARGUMENT
    // for a null receiver.
    virtual Result GetMetadata(IAC3Metadata** metadata /*out: one reference, a new object each time*/) = 0;

protected:
    ~IAC3MetadataEditor() = default;
};

inline constexpr GUID IID_IAC3MetadataEditor = MakeGuid("03195485-368E-43F9-9C5A-E0F5BEFB14EA");

}  // namespace vlacwav3
