// Audio on its way into a WAV file of one of the module's formats: mixed and converted where the program's
// frames aren't what the file is to have, counted, and proved at the end. Knows nothing of the file but the
// path to open it by. One thread at a time.
//
//   six channels for two --(1)--> two
//   more than 65535 Hz ----(2)--> the file's rate and channels    the module's writer can't be told of them
//   all ------------------(3)--> the module's writer, which converts the rest
//
// After a failure of any of these nothing more may be written.
#pragma once

#include <optional>

#include "AudioCodec/wave/IAC3Writer.h"
#include "capi/Tags.h"
#include "capi/audio/PushedConversion.h"
#include "capi/chunks/CarriedChunks.h"
#include "capi/handles/WaveObjects.h"
#include "capi/output/OutputFile.h"

// What is written, decided before a file is touched.
struct WavePlan {
    AudioShape input;  // as the program gives it
    uint32_t formatIndex = 0;
    vlw_text text = VLW_TEXT_AUTO;
    const CarriedChunks* chunks = nullptr;  // of another file, to follow audio and tags; borrowed
};

class WaveOutput {
public:
    // Opens the file. Throws Failure, VLW_UNSUPPORTED for channels that can't be had.
    WaveOutput(const Module& module, const WavePlan& plan, const OutputFile& file, FileLabel label);

    // A file that is made of frames of another rate begins with this one of those that a reader would make.
    static int64_t FirstFrame(uint32_t fromRate, uint32_t toRate);
    // And it has so many frames of those of the source.
    static int64_t FramesOf(int64_t frames, uint32_t fromRate, uint32_t toRate);
    // Whether a file of so many frames is far from the size where their exact number tells if it can be.
    static bool FitsEasily(int64_t frames, const AudioFormatInfo& format);

    // Takes the frames or throws Failure: VLW_TOO_LARGE before any of them is written.
    void Write(const int16_t* samples, size_t frames);
    uint32_t InputChannels() const { return m_plan.input.channels; }
    // Of the file, once it is finished.
    int64_t Frames() const { return m_frames; }
    int64_t Taken() const { return static_cast<int64_t>(m_taken); }
    // Throws Failure with VLW_TOO_LARGE where the file would have no room for so many bytes more.
    void RequireRoom(uint64_t frames, uint64_t more) const;
    // Writes what is held back, the tags and the chunks, and has the closed file prove itself: its sizes, its
    // format, as many frames as were taken, the tags that are expected of it and the chunks. Throws Failure.
    void Finish(const Tags& tags, const Tags& expected);

private:
    void WriteShaped(const int16_t* samples, uint32_t frames);
    void WriteToModule(const int16_t* samples, uint32_t frames);
    void AppendChunks();
    bool HasItsSize() const;
    bool HasItsChunks() const;
    uint64_t FileSize() const;
    bool HasItsAudio();
    bool HasTags(const Tags& expected) const;

    const Module& m_module;
    const WavePlan m_plan;
    const OutputFile& m_file;
    const FileLabel m_label;
    AudioFormatInfo m_format;
    AudioShape m_given;                        // to the writer
    double m_ratio = 1;                        // frames of the file for one that was taken
    std::optional<PushedConversion> m_pushed;  // (2)
    RefPtr<IAC3Writer> m_writer;
    std::vector<int16_t> m_mixed;  // (1)
    uint64_t m_taken = 0;
    int64_t m_frames = 0;
    uint64_t m_written = 0;   // into the module's writer
    uint64_t m_chunksAt = 0;  // bytes of the file without them
};
