// Ids of chunks that are carried from one file to another, beside those of WaveTypes.h.
#pragma once

#include "riff/WaveTypes.h"

inline constexpr uint32_t kBroadcast = FourCC("bext");  // EBU Tech 3285
inline constexpr uint32_t kCuePoints = FourCC("cue ");
inline constexpr uint32_t kPlaylist = FourCC("plst");
inline constexpr uint32_t kSampler = FourCC("smpl");
inline constexpr uint32_t kLabels = FourCC("adtl");  // the type of a list: texts of cue points
inline constexpr uint32_t kLabel = FourCC("labl");   // in it: a point's name
inline constexpr uint32_t kRegion = FourCC("ltxt");  // in it: a point's length, and a text
inline constexpr uint32_t kId3 = FourCC("id3 ");
inline constexpr uint32_t kId3OfAiff = FourCC("ID3 ");  // some WAV files have it so too
inline constexpr uint32_t kMarkers = FourCC("MARK");    // cue points of AIFF, with their names
