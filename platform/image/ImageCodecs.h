// The decoders and encoders, each in a file of its own. A decoder reads one whole image of its format and
// returns E_FAIL for anything else, whatever the bytes are; an encoder writes one. Both may throw
// std::bad_alloc, which ends in ImageCodecs.cpp.
//
// libjpeg and libpng leave by longjmp: what they call, and what calls them down to the setjmp, holds no
// object with a destructor. The owners of such objects stand one frame above the setjmp.
#pragma once

#include "platform/image/ImageFunctions.h"
#include "platform/image/ImageSource.h"
#include "platform/image/Raster.h"

HRESULT DecodeJpeg(ImageSource& source, Raster& raster);  // grey: 8 bits; CMYK: 32; others: 24
HRESULT DecodePng(ImageSource& source, Raster& raster);   // 2 bits become 8, 16 bits a colour become 32
HRESULT DecodeGif(ImageSource& source, Raster& raster);   // the first frame on its screen, 8 bits
HRESULT DecodeBmp(ImageSource& source, Raster& raster);

HRESULT EncodeJpeg(const Raster& raster, const ImageTarget& target);
HRESULT EncodePng(const Raster& raster, const ImageTarget& target);
HRESULT EncodeBmp(const Raster& raster, const ImageTarget& target);
