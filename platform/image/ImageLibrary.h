// The image library of the process: libvlimage.so, which lies beside libvlplatform.so. It is loaded at the
// first use and goes with the last image object, so that a process without pictures never maps an image
// library. Any thread.
#pragma once

struct ImageFunctions;

namespace ImageLibrary {

// Each image object says when it comes and goes.
void CountImage();
void DropImage();

// Starts the library if it doesn't run. For image objects alone, whose count keeps it. Null if it can't be
// had; the next call tries again.
const ImageFunctions* Use();

}  // namespace ImageLibrary
