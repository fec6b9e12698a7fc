// The public headers declare their names in namespace vlacwav3. A program that was written for global names,
// as this project's own sources are, defines VLACWAV3_GLOBAL_NAMES for the compiler and finds them there too.
#pragma once

namespace vlacwav3 {}

#ifdef VLACWAV3_GLOBAL_NAMES
using namespace vlacwav3;  // NOLINT(google-global-names-in-headers): asked for
#endif
