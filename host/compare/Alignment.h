// By how many frames the audio of one source comes later than the same audio in another.
//
// A stretch of a, three seconds from its first sound on, is held against each place of b within a second of
// its own: (1) The sums of their products say, for all shifts at once by a transform, how alike they are;
// over the loudness of both, as far as both are there, a sum is greatest where b is a, louder or not. (2) The
// transform rounds, and audio that repeats itself has many such places, so the best are compared sample by
// sample, and of equal ones the nearest is taken. Whether all the rest is the same then is for a Comparison
// to say.
//
// Decisions: channels are mixed by different weights, so that those which are each other's opposite don't
// cancel out.
#pragma once

#include <cstdint>

#include "capi/vlwav.hpp"

// Frames, positive where b comes later; 0 also where nothing alike is found. Both have to be seekable, of one
// rate and channel count, and stand anywhere afterwards. Memory is that of eight seconds. Throws what reading
// throws, Failure and std::bad_alloc.
int64_t FindOffset(vlw::Reader& a, vlw::Reader& b);
