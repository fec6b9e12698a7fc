// Puts a new "INFO" list into an existing WAV file, in place: no audio is read, written or moved, and chunks
// of other kinds stay as they are. Its owner says when. The file is right whatever happens: at any moment a
// reader finds the old tags or the new ones, since of two lists it takes the last. One thread at a time.
//
//   before  | RIFF | ... chunks ... | LIST old |                    the list's own place P, the end E
//   step 1  | RIFF | ... chunks ... | LIST old | JUNK | LIST new |  a copy at C; its id comes last
//   step 2  | RIFF | ... chunks ... | LIST new | JUNK | LIST new |  under a JUNK header that spans it all
//   step 3  | RIFF | ... chunks ... | LIST new |                    cut
//
// What a write relies on is flushed before it, within the steps too: a cut of the power may keep any part
// of what isn't. Where no list ends the file, the copy is the list itself. Other lists of the type become
// filler of the same length. A failure in step 1 takes everything back; from step 2 on the copy stays, and
// is the new tags. Whether all went well is returned, since the file alone can't tell.
//
// Decisions: the size of a last chunk that lies is set right. Bytes at the end that are no chunk go into a
// JUNK chunk; if they are more than 1 MiB, or if a number doesn't fit into 32 bits, the file is left as it
// was; so is one that would end up longer than 4 GiB. What an interrupted save left without an id at the end
// of the file is cut away.
#pragma once

#include <string>
#include <string_view>

#include "AudioCodec/wave/riff/CFileEdit.h"
#include "AudioCodec/wave/riff/CWaveLayout.h"
#include "riff/InfoList.h"

class CTagSave {
public:
    // `file`: open for reading and writing, sound enough to be opened. `format`: what its reader made of it;
    // written back where the layout is the writer's own. Null: the record stays as it is, to the byte.
    CTagSave(HANDLE file, const WaveFormat* format) : m_handle(file), m_file(file), m_format(format) {}

    // These make the tags of the file, from a map or from the entries of a list as they are to stand there;
    // where there are none the list goes. Once for an object. False: a step failed, or the file can't be
    // rewritten. May throw bad_alloc; the destructor then leaves the file as it was.
    bool Run(const InfoChunks& chunks);
    bool Run(std::string_view entries);

private:
    using Places = std::deque<uint64_t>;  // of older lists

    bool Plan(uint64_t entries);
    bool Store();
    bool LowerRiffSize();
    bool DropUnfinishedList();
    bool SetSizeRight();
    bool WrapTail();
    bool RewriteFormat();
    bool AppendCopy();
    bool MoveIntoPlace();
    bool StoreList();
    bool RemoveLists();

    bool WriteNumber(uint64_t place, uint32_t number);
    bool WriteChunkHeader(uint64_t place, uint32_t id, uint64_t size);
    bool WriteRiffSize(uint64_t end);
    bool MakeOlderListsFiller();
    bool MakeFiller(uint64_t place);
    bool MakeFiller(Places::const_iterator list, const Places::const_iterator& end);

    HANDLE m_handle;
    CFileEdit m_file;
    const WaveFormat* m_format;
    CWaveLayout m_layout;
    std::string m_list;     // the new one with its pad byte; empty: none
    uint64_t m_end = 0;     // E: of what stays and the old list
    uint64_t m_place = 0;   // P: of the list that the file ends with, else E
    uint64_t m_copyAt = 0;  // C
};
