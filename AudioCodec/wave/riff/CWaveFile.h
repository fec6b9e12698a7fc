// The one piece that knows the RIFF WAVE layout: walks the chunks of a file or of a caller's stream, moves
// audio bytes, and writes header and "INFO" list. Gives no meaning to the list's sub-chunks and converts no
// samples. One thread at a time, under the rule of its owner.
//
// Decisions: sizes are checked against the file (or by touching a stream's last byte) before memory is taken.
// A format record that claims more extra bytes than its chunk has gets those that are there. A list of fewer
// than 4 bytes is passed over like an unknown chunk. A sub-chunk that reaches past its list is cut there, one
// that the file's end cuts off within its list fails the parse. A failed open leaves no handle behind. A file
// that was there before is changed by CTagSave, so that its audio and its other chunks stay. A stream that
// refuses a move fails the parse. A header that the system refuses to read ends the walk like the file's end
// does, and is remembered: what was found then may not be all.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "AudioCodec/shell/object/ResultCodes.h"
#include "platform/base/UniqueHandle.h"
#include "riff/InfoList.h"
#include "riff/WaveFormat.h"

class ByteSource;
class ChunkWalk;
namespace vlacwav3 {
struct IStream;
}

class CWaveFile {
public:
    CWaveFile() = default;
    CWaveFile(const CWaveFile&) = delete;
    CWaveFile& operator=(const CWaveFile&) = delete;
    ~CWaveFile();  // closes the file as CloseFile does

    // Opens and walks a file, for reading alone or for editing. Returns RESULT_OK, RESULT_CANNOT_OPEN,
    // RESULT_NOT_WAVE or RESULT_FILE_IN_USE. May throw bad_alloc.
    Result OpenForReading(const char16_t* path, bool readOnly);

    // Creates a file for BeginAudio. Returns RESULT_OK; RESULT_CANNOT_OPEN or RESULT_FILE_IN_USE with
    // `overwrite`, RESULT_CANNOT_CREATE without.
    Result OpenForWriting(const char16_t* path, bool overwrite);

    // Leaves the file for a stream that the caller keeps alive; the image begins at its current place.
    void AttachStream(IStream* stream);

    // Walks the chunks. True if the walk ended well and a format was found. May throw bad_alloc.
    bool ParseChunks();

    // Puts an empty WAV of this format into the file created last and stands at its audio.
    void BeginAudio(const WaveFormat& format);

    // Writes audio at the current place. Returns RESULT_OK; RESULT_FAILED before BeginAudio;
    // RESULT_WRITE_FAILED if the file took less or would pass 4 GiB.
    Result WriteData(const void* bytes, uint32_t count);

    // Header in front, and with `final` the list after the audio, where the file then ends; a list that would
    // reach past 4 GiB stays out. Failures of the writes are not reported.
    void WriteHeader(bool final) noexcept;

    // Writes what changed: header and list of a file that was created, whose writes aren't looked at, the
    // tags of one that was opened. Returns RESULT_OK, also where nothing changed; RESULT_WRITE_FAILED,
    // RESULT_NO_MEMORY for an opened file, which then holds the old tags or the new ones; RESULT_WRITE_FAILED
    // for a created one that has no room for its tags.
    Result WriteChanges() noexcept;

    // Ends the work on the file; what changed is written first, as WriteChanges does. Always RESULT_OK.
    Result CloseFile() noexcept;

    int64_t TellData() const;  // place in bytes from the start of the audio; 0 without file or stream

    // Reads audio at the current place, on a file up to the declared end. Returns RESULT_OK, RESULT_FAILED
    // without file or stream, or RESULT_NOT_WAVE.
    Result ReadData(uint32_t count, void* buffer, uint32_t* done);

    // Moves to a frame of the audio: bytes, rounded down to a frame, held between start and end. Origins: 1
    // from the current place, 2 from the end, others from the start. Returns RESULT_OK or RESULT_NOT_WAVE.
    Result SeekData(int64_t offset, uint32_t origin);

    // There is a file or a stream to work on.
    bool HasSource() const { return m_file || m_stream; }

    // These answer from the last walk, also after CloseFile.
    const WaveFormat& Format() const { return m_format; }
    uint32_t DataSize() const { return m_dataSize; }
    InfoChunks& Chunks() { return m_chunks; }
    // From the next walk on. Without all of them a list can't be written from Chunks.
    void KeepChunks(InfoWanted wanted) { m_wantedChunks = wanted; }
    uint16_t ToldBlockAlign() const { return m_toldBlockAlign; }  // as the file's format record has it
    // The system refused a read in it, or memory ran out, so chunks may have been missed. Of a file alone.
    bool ReadFailed() const { return m_readFailed; }

    // The entries of the last "INFO" list of the opened file, as they stand there; empty without one. False
    // where the system refuses to read them. May throw bad_alloc.
    bool ReadEntries(std::string& entries) const;
    // To be written in place of Chunks, which become what a reader will find in them. May throw bad_alloc,
    // with nothing changed.
    void SetEntries(std::string entries);
    // The format record of an opened file stays as it is, to the byte.
    void KeepFormat(bool keep) { m_keepFormat = keep; }

    void SetReadOnly(bool readOnly) { m_readOnly = readOnly; }
    void SetModified(bool modified) { m_modified = modified; }

private:
    struct ChunkRule;

    bool Walk(ByteSource& source);
    bool ParseChunk(ChunkWalk& walk);
    bool ParseFormat(ChunkWalk& walk);
    bool ParseList(ChunkWalk& walk);
    bool ParseData(ChunkWalk& walk);
    static bool ParseFact(ChunkWalk& walk);

    // On the file or the stream, whichever there is.
    bool Tell(int64_t& position) const;
    bool Move(int64_t distance, uint32_t origin, int64_t* position = nullptr) const;
    bool MoveTo(int64_t position) const;

    void Write(const void* bytes, size_t count) const;
    uint64_t EndWithList(uint64_t entries) const;
    bool HasRoomForList() const;
    Result SaveTags() const noexcept;

    bool m_readOnly = false;
    bool m_modified = false;     // header and list must be rewritten at CloseFile
    bool m_formatFound = false;  // a "fmt " chunk was taken over, ever
    bool m_writable = false;     // audio may be written: the file was created here
    bool m_readFailed = false;   // in the last walk, or it didn't come to its end
    bool m_keepFormat = false;
    uint16_t m_toldBlockAlign = 0;
    uint32_t m_dataOffset = 0;  // of the first audio byte; 0 as long as no "data" chunk was seen
    uint32_t m_dataSize = 0;    // audio bytes as declared, or as written
    WaveFormat m_format;
    InfoChunks m_chunks;
    InfoWanted m_wantedChunks = InfoWanted::All;
    uint64_t m_entriesPlace = 0;  // of those that m_chunks were read from
    uint64_t m_entriesSize = 0;   // as the list declares it; 0: there are none
    std::optional<std::string> m_entries;
    UniqueHandle m_file;
    IStream* m_stream = nullptr;  // borrowed
};
