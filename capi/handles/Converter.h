// Makes a WAV file of a file of any kind: from a reader to a writer, tags from one to the other. The target
// appears whole or not at all, but for what takes bytes in order: it gets them as they are made.
//
// Decisions: a target that is the source itself, under whatever name, is VLW_BAD_ARGUMENT. Of a source that
// is known to be cut nothing is written unless that is wanted. Of a long source several threads make the
// frames where that pays: where the filter has work, and the source can be begun anywhere. Else one does all.
// An "id3 " chunk that is carried holds its tags: of these the target's list gets what it can keep as it is,
// and the rest isn't lost.
#pragma once

#include <optional>
#include <string>

#include "capi/audio/Dither.h"
#include "capi/handles/LiveOutput.h"
#include "capi/handles/Reader.h"
#include "capi/handles/Writer.h"

class Converter {
public:
    explicit Converter(ModuleUse& module) : m_module(module), m_reader(module), m_writer(module) {}

    // What the run before made isn't told any more.
    void Forget() noexcept;
    // VLW_OK, or VLW_CUT with VLW_PARTIAL. Throws Failure.
    vlw_code Run(const vlw_place& source, const vlw_place& target, const vlw_conversion& wish);
    // Why the last run was VLW_CUT.
    Failure CutReason() const { return m_reader.CutReason(); }
    void SetSeed(uint64_t seed) { m_seed = seed; }
    void Release() noexcept;  // the source, after a run
    // Whether the last run failed because the source ends early, which VLW_PARTIAL allows.
    bool RefusedCut() const { return m_refusedCut; }

    // Of the last run that made a file.
    const std::optional<vlw_format>& Made() const { return m_made; }
    const std::string& Notes() const { return m_notes; }
    // Of the run, once its source is open, and of the last one.
    const std::optional<vlw_format>& SourceFormat() const { return m_source; }

private:
    [[noreturn]] void RefuseCut();
    AudioFormatInfo ChooseTarget(const vlw_conversion& wish) const;
    void SetUp(const AudioFormatInfo& format, const vlw_conversion& wish);
    void Begin(const vlw_place& target, const AudioFormatInfo& format, const vlw_conversion& wish);
    void BeginLive(const AudioFormatInfo& format, const vlw_conversion& wish);
    void Finish();
    uint32_t ChooseThreads(const AudioFormatInfo& format, const vlw_conversion& wish) const;
    vlw_code Copy(const AudioFormatInfo& format, const vlw_conversion& wish);
    vlw_code CopyInPieces(const AudioFormatInfo& format, const vlw_conversion& wish);
    Tags CollectTags(const vlw_conversion& wish);
    // What a WAV file gives back of them as it was given.
    Tags KeptAsTheyAre(const Tags& tags, vlw_text text) const;
    void NoteFormat(const AudioFormatInfo& format);
    void NoteRest();
    bool Dithers(const AudioFormatInfo& format, const vlw_conversion& wish) const;
    CarryTarget CarryTo(const AudioFormatInfo& format, const vlw_conversion& wish) const;
    void Give(const int16_t* samples, size_t frames);
    int64_t Given() const { return m_live ? m_live->Frames() : m_writer.Tell(); }
    size_t BlockFrames() const;
    void PassOver(int64_t frames);
    int64_t FirstFrame(const AudioFormatInfo& format) const;
    int64_t TargetFrames(int64_t sourceFrames, const AudioFormatInfo& format) const;
    std::optional<int64_t> SureFrames(const vlw_conversion& wish) const;
    int64_t InSourceFrames(int64_t frames, uint32_t rate) const;
    void Note(const std::string& line);

    ModuleUse& m_module;
    Reader m_reader;
    Writer m_writer;
    std::optional<vlw_format> m_source;
    std::optional<vlw_format> m_made;
    std::string m_notes;
    bool m_refusedCut = false;
    uint64_t m_seed = 0;
    std::optional<Dither> m_dither;  // of the run
    std::vector<int16_t> m_dithered;
    std::optional<CarriedChunks> m_chunks;  // of the run; the writer borrows them
    Tags m_tags;                            // of the target
    std::vector<std::string> m_tagLosses;
    std::optional<LiveOutput> m_live;  // in place of the writer
    uint32_t m_channels = 1;           // of the target
    uint32_t m_threads = 1;            // of the run; more than one: they make pieces
};

struct vlw_converter : FileHandle<Converter> {
    using FileHandle::FileHandle;
};
