// What a save has to know of a WAV file: where its chunks lie, which size is a lie and what it ought to be,
// and what stands at the end. Walks as the reader does, over headers alone, so it finds what a reader finds.
// Reads no audio and changes nothing. Values of one moment; one thread at a time.
//
// Decisions: a last header that declares more than the file holds is a chunk cut short, unless
// something speaks against it: no printable id, a place after the end that the RIFF header tells, a missing
// pad byte in front, or the form of a "TAG" trailer. What is no chunk is the tail. A "data" chunk of size 0
// has all that follows for its audio, unless that is chunks with printable ids, up to one that a reader takes
// or to the end of the file, or unless no format stands in front.
#pragma once

#include <cstdint>
#include <deque>

#include "platform/base/Types.h"
#include "riff/Chunk.h"

class BlockSource;
class ChunkWalk;
struct WaveFormat;

struct WaveChunk : Chunk {
    uint32_t type = 0;  // the first 4 bytes of the content

    bool IsList() const { return id == ChunkId::kList && IsInfo(); }
    bool IsUnfinishedList() const { return id == ChunkId::kUnfinished && IsInfo(); }

private:
    bool IsInfo() const { return declared >= kListTypeSize && type == ChunkId::kInfo; }
};

class CWaveLayout {
public:
    // Walks the file. False if there is no chunk or a read fails. May throw bad_alloc.
    bool Read(HANDLE file);

    // The file is laid out as the writer does it: format, audio, and at the most one "INFO" list.
    bool IsWritersOwn(const WaveFormat& format) const;

    // The last chunk is an "INFO" list, and nothing stands after it.
    bool EndsWithList() const { return m_count != 0 && m_last.IsList() && m_tail == 0; }

    uint64_t RiffEnd() const { return m_riffEnd; }                 // as the RIFF header tells it
    const WaveChunk& Data() const { return m_data; }               // the last of its kind; offset 0: none
    const WaveChunk& Last() const { return m_last; }               // the only one whose two sizes can differ
    const std::deque<uint64_t>& Lists() const { return m_lists; }  // places of all "INFO" lists

    // After the last chunk and its pad byte, which the file may lack. An unfinished list counts as not there.
    uint64_t End() const { return m_end; }
    uint64_t Tail() const { return m_tail; }  // bytes from there to the end of the file that are no chunk

private:
    bool Walk(BlockSource& file);
    static bool Look(BlockSource& file, const ChunkWalk& walk, WaveChunk& chunk);
    bool HasRoom(const WaveChunk& chunk) const { return chunk.declared <= m_fileSize - chunk.Content(); }
    bool LooksLikeTrailer(const WaveChunk& chunk) const;
    bool IsCutShort(BlockSource& file, const WaveChunk& chunk) const;
    bool ChunksFollow(BlockSource& file, uint64_t offset) const;
    bool ChunksStandAt(BlockSource& file, uint64_t offset) const;
    void Take(const WaveChunk& chunk);

    uint64_t m_fileSize = 0;
    uint64_t m_riffEnd = 0;
    uint64_t m_end = 0;
    uint64_t m_tail = 0;
    uint64_t m_count = 0;  // of chunks
    bool m_formatSeen = false;
    WaveChunk m_first;
    WaveChunk m_data;
    WaveChunk m_last;
    std::deque<uint64_t> m_lists;
};
