// What libvlimage.so offers to libvlplatform.so, which loads it when an image is first loaded or saved: the
// image libraries behind it aren't in the process before. Nothing throws here.
#pragma once

#include "platform/base/Guid.h"
#include "platform/base/Types.h"
#include "platform/com/Stream.h"
#include "platform/image/Raster.h"

// Where an encoder's bytes go.
struct ImageTarget {
    void* context;
    bool (*write)(void* context, const void* bytes, uint32_t size);  // false: they could not be written
};

using ImageEncoder = HRESULT (*)(const Raster& raster, const ImageTarget& target);

struct ImageFunctions {
    // Decodes into `raster`, which is in no particular state after a failure.
    HRESULT (*decode)(IStream& stream, Raster& raster);
    // The encoder for a format, or where that is null for an extension with its dot; null if there is none.
    ImageEncoder (*findEncoder)(const GUID* format, const WCHAR* extension);
};

// The one function that the library shows, by this name.
inline constexpr char kImageFunctionsName[] = "VlImageFunctions";
using GetImageFunctions = const ImageFunctions* (*)();
