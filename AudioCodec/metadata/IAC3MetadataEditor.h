// Changes the metadata of an existing WAV file of 8 or 16-bit PCM without touching its audio: Open,
// GetMetadata, SetMetadata, Save. One thread at a time calls an editor. The order of the operations is the
// binary border: nothing moves, nothing is added.
#pragma once

#include "AudioCodec/attributes/IAttributeContainer64.h"
#include "AudioCodec/wave/riff/AudioFormatInfo.h"

struct IAC3Metadata;

struct IAC3MetadataEditor : IAttributeContainer64 {
    // Opens the path that CreateMetadataEditor got, for reading and writing. 0, 1000, 1001, 1003 or 1007.
    virtual Result Open() = 0;
    // Writes what SetMetadata said and closes the file. Always 0; the file holds the old tags or the new
    // ones.
    virtual Result Save() = 0;
    virtual Result Close() = 0;  // saves nothing; always 0
    virtual Result GetSourceFormat(AudioFormatInfo* format /*out*/) = 0;
    // Kept as a copy until Save; several calls merge. Without it Save keeps the file's own tags. 0, 2 or 4.
    virtual Result SetMetadata(IAC3Metadata* source /*in*/) = 0;
    virtual Result GetMetadata(IAC3Metadata** metadata /*out: one reference, a new object each time*/) = 0;

protected:
    ~IAC3MetadataEditor() = default;
};

inline constexpr GUID IID_IAC3MetadataEditor = MakeGuid("03195485-368E-43F9-9C5A-E0F5BEFB14EA");
