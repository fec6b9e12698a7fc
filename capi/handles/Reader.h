// Reads one file after another: the stages that a file's audio takes to the program, its length and place,
// and its tags. The stages are built with the first frame that is read, so that a look at a file costs
// little.
//
// Decisions: channels are mixed before the rate is converted. A source that gives its bytes in order refuses
// every seek, also one to where it stands. Of an AIFF file name, author, copyright and the first annotation
// are tags. A cut file's record tells how much of it is there. Chunks are found by a walk that is kept
// between two questions, so that nothing is kept of them.
#pragma once

#include <memory>
#include <optional>

#include "capi/Handle.h"
#include "capi/Tags.h"
#include "capi/audio/SourceStages.h"
#include "capi/chunks/SourceChunks.h"
#include "capi/vlwav_more.h"

class Reader {
public:
    explicit Reader(ModuleUse& module) : m_module(module) {}

    // 0: the file's own. Throws Failure: VLW_UNSUPPORTED, VLW_BAD_STATE after the first frame.
    void SetOutput(uint32_t rate, uint32_t channels);
    void SetText(vlw_text text) { m_text = text; }
    // Whether files opened from now on are taken at their head's word until a frame is wanted, where that
    // tells the length.
    void SetLate(bool late) { m_late = late; }

    // Takes the source over. Throws Failure, and no file is open then.
    void Open(std::unique_ptr<Input> input);
    void Close() noexcept;
    bool IsOpen() const { return m_file != nullptr; }

    // The rest needs an open file; those that fail throw Failure.
    const SourceFacts& Facts() const { return m_file->facts; }
    Tags ReadTags();      // of the list or the texts, and what only an "id3 " chunk has
    Tags ReadListTags();  // without the latter
    Tags ReadId3Tags();
    // The chunks in the order of the file, from the first: false past the last. Going on by one costs that
    // one.
    bool FindChunk(uint64_t index, vlw_chunk& found);
    uint64_t CountChunks();
    uint32_t Rate() const;
    uint32_t Channels() const;
    int64_t Frames() const;  // VLW_UNKNOWN
    int64_t Position() const { return m_file->position; }
    bool IsSeekable() const { return m_file->input->IsSeekable(); }
    // VLW_OK, or VLW_END where the place lies beyond the end.
    vlw_code SeekTo(int64_t frame);
    // VLW_OK, VLW_END, VLW_CUT. `done` is written in any case.
    vlw_code Read(int16_t* buffer, size_t frames, size_t& done);
    // Why the last read was VLW_CUT.
    Failure CutReason() const;
    const FileLabel& Label() const { return m_file->input->Label(); }
    Input& Source() { return *m_file->input; }

private:
    struct OpenFile {
        std::unique_ptr<Input> input;
        SourceFacts facts;
        std::unique_ptr<SourceStages> stages;  // null before they are needed
        FrameSource* last = nullptr;           // of the stages; null before they are built
        int64_t position = 0;
        bool wasRead = false;
        std::unique_ptr<SourceChunks> chunks;  // a walk that was begun
        uint64_t chunksPassed = 0;             // by it
    };

    ConversionTarget Target(const SourceFacts& facts) const;
    void RequireChannels(const SourceFacts& facts) const;
    void OpenSource(OpenFile& file);
    FrameSource& LastStage();  // built with the first use
    std::unique_ptr<SourceChunks> BeginChunks() const;
    void PassOver(FrameSource& last, int64_t frame);

    ModuleUse& m_module;
    std::unique_ptr<ModuleReaders> m_readers;
    std::unique_ptr<OpenFile> m_file;
    uint32_t m_rate = 0;
    uint32_t m_channels = 0;
    vlw_text m_text = VLW_TEXT_AUTO;
    bool m_late = false;
};

struct vlw_reader : FileHandle<Reader> {
    using FileHandle::FileHandle;
};
