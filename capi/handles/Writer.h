// What a writer handle does: settings for the files to come, and one file at a time, which comes into being
// whole. One thread at a time.
#pragma once

#include <memory>
#include <optional>

#include "capi/FormatChoice.h"
#include "capi/Handle.h"
#include "capi/Tags.h"
#include "capi/handles/WaveOutput.h"
#include "capi/input/CallerStream.h"
#include "capi/output/OutputTarget.h"

class Writer {
public:
    explicit Writer(ModuleUse& module) : m_module(module) {}

    // Throw Failure with VLW_BAD_ARGUMENT for what is out of range.
    void SetInput(uint32_t rate, uint32_t channels);
    void SetOutput(uint32_t rate, uint32_t channels, uint32_t bits);
    void SetText(vlw_text text);
    void SetTags(const Tags* tags) { m_tags = tags ? *tags : Tags(); }
    // For the files to come; borrowed until they are finished.
    void SetChunks(const CarriedChunks* chunks) { m_chunks = chunks; }

    // Begin a file in place of one that isn't finished. Throw Failure, and there is none then.
    void CreateFile(const std::string& path, uint32_t flags);
    void CreateAt(int descriptor, uint32_t flags);
    void CreateStream(const std::shared_ptr<const CallerStream>& stream, uint32_t flags);
    void CreateInMemory(uint32_t flags);

    // Take all frames or throw Failure, and then the file can only be dropped.
    void Write(const int16_t* samples, size_t frames);
    void Write(const float* samples, size_t frames);
    int64_t Tell() const { return m_taken; }
    // Throws Failure. With VLW_WOULD_LOSE, and with VLW_TOO_LARGE for the sake of the tags, the file stays
    // open.
    void Finish();
    // What the last finished file doesn't keep of its tags, clause by clause.
    const std::vector<std::string>& Losses() const { return m_losses; }
    // Of the last finished file.
    int64_t Frames() const { return m_frames; }
    void Drop() noexcept;
    // The finished file in memory, allocated for vlw_free; once. Throws Failure.
    void Take(void** bytes, size_t* size);

private:
    enum class State { None, Open, Broken, Finished };

    WavePlan MakePlan(const Module& module) const;
    void Begin(uint32_t flags);
    void Start(std::unique_ptr<OutputTarget> target, const WavePlan& plan, const FileLabel& label);
    void RequireState(State state) const;

    ModuleUse& m_module;
    AudioShape m_input;
    FormatWish m_wish;
    vlw_text m_text = VLW_TEXT_AUTO;
    Tags m_tags;
    const CarriedChunks* m_chunks = nullptr;
    std::vector<std::string> m_losses;
    int64_t m_frames = 0;

    State m_state = State::None;
    uint32_t m_flags = 0;
    FileLabel m_label;
    vlw_text m_openText = VLW_TEXT_AUTO;
    int64_t m_taken = 0;
    std::unique_ptr<OutputTarget> m_target;  // before the audio, which borrows its file
    std::optional<WaveOutput> m_audio;
    std::vector<int16_t> m_steps;  // floats on their way
};

struct vlw_writer : FileHandle<Writer> {
    using FileHandle::FileHandle;
};
