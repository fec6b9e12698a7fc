#include "capi/chunks/ChunkFate.h"

#include <algorithm>
#include <iterator>

#include "capi/chunks/ChunkIds.h"

namespace {

struct FateRow {
    uint32_t id;
    ChunkFate fate;
};

constexpr FateRow kWaveFates[] = {
    {ChunkId::kFmt, ChunkFate::Own},        {ChunkId::kData, ChunkFate::Own},
    {ChunkId::kUnfinished, ChunkFate::Own},  // nothing but zeros
    {ChunkId::kFact, ChunkFate::Old},        // the number of frames
    {FourCC("PEAK"), ChunkFate::Old},        // the loudest samples
    {FourCC("levl"), ChunkFate::Old},        // a curve of them
    {FourCC("elm1"), ChunkFate::Old},        // room for one, and for other things of an editor
    {FourCC("MD5 "), ChunkFate::Old},        // a sum of the audio's bytes
    {FourCC("ds64"), ChunkFate::Old},        // sizes of a file beyond 4 GiB
    {FourCC("slnt"), ChunkFate::Old},        // a stretch of silence
    {ChunkId::kJunk, ChunkFate::Old},       {FourCC("junk"), ChunkFate::Old},
    {ChunkId::kPad, ChunkFate::Old},        {FourCC("FLLR"), ChunkFate::Old},
};
constexpr FateRow kAiffFates[] = {
    {ChunkId::kCommon, ChunkFate::Own}, {FourCC("SSND"), ChunkFate::Own}, {FourCC("FVER"), ChunkFate::Own},
    {FourCC("NAME"), ChunkFate::Own},   {FourCC("AUTH"), ChunkFate::Own}, {FourCC("(c) "), ChunkFate::Own},
    {FourCC("ANNO"), ChunkFate::Own},   {FourCC("FLLR"), ChunkFate::Old}, {FourCC("JUNK"), ChunkFate::Old},
    {kMarkers, ChunkFate::Carried},     {kId3OfAiff, ChunkFate::Carried},
};
constexpr FateRow kListFates[] = {
    {ChunkId::kInfo, ChunkFate::Tags}, {FourCC("wavl"), ChunkFate::Old},  // audio and stretches of silence
};

template <size_t count>
const FateRow* Find(const FateRow (&rows)[count], uint32_t id) {
    const auto* const row =
        std::find_if(std::begin(rows), std::end(rows), [&](const FateRow& each) { return each.id == id; });
    return row == std::end(rows) ? nullptr : row;
}

bool IsPrintable(uint32_t id) {
    for (int shift = 0; shift < 32; shift += 8)
        if ((id >> shift & 0xFF) < 0x20 || (id >> shift & 0xFF) >= 0x7F) return false;
    return true;
}

}  // namespace

ChunkFate FateOf(const Chunk& chunk, uint32_t listType, bool isWave, bool isWhole) {
    const FateRow* row = nullptr;
    if (!isWave)
        row = Find(kAiffFates, chunk.id);
    else
        row = chunk.id == ChunkId::kList ? Find(kListFates, listType) : Find(kWaveFates, chunk.id);
    if (row && row->fate != ChunkFate::Carried) return row->fate;
    const bool hasPlace = row || (isWave && IsPrintable(chunk.id));
    return hasPlace && isWhole ? ChunkFate::Carried : ChunkFate::Lost;
}

std::string ChunkName(uint32_t id) {
    std::string name = "\"";
    for (int shift = 0; shift < 32; shift += 8) {
        const auto byte = static_cast<char>(id >> shift & 0xFF);
        name += byte >= 0x20 && byte < 0x7F ? byte : '?';
    }
    return name + '"';
}
