// A file, step by step: (1) settle what is written, or refuse, (2) the place where it comes into being, (3)
// the frames, (4) foresee the tags, or refuse and stay at (3), (5) close it and have it prove itself, (6)
// hand it over. Until (6) the target is as it was, whatever fails.
#include "capi/handles/Writer.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "capi/FormatLimits.h"
#include "capi/SystemFailure.h"
#include "capi/TagLosses.h"
#include "capi/audio/ChannelMix.h"
#include "capi/audio/Samples.h"
#include "capi/handles/TagTrial.h"
#include "capi/output/NamedTarget.h"
#include "platform/file/TempFolder.h"

using namespace FormatLimits;

namespace {

constexpr uint32_t kKnownFlags = VLW_OVERWRITE | VLW_LOSSY;
constexpr uint32_t kDefaultBits = 16;
constexpr size_t kFloatFrames = 4096;  // floats are turned into steps in blocks of this size

void RequireRange(const char* what, uint32_t value, uint32_t least, uint32_t most) {
    if (value < least || value > most)
        throw Failure(VLW_BAD_ARGUMENT, std::string(what) + " must be from " + std::to_string(least) +
                                            " to " + std::to_string(most) + ", not " + std::to_string(value) +
                                            ".");
}

FileLabel Nameless() { return {"the target", {}}; }

// Opens a target; what fails bears its name.
template <class Target, class... Arguments>
std::unique_ptr<OutputTarget> Opened(const FileLabel& label, std::unique_ptr<Target> target,
                                     const Arguments&... arguments) {
    const int error = target->Open(arguments...);
    if (error != 0) throw SystemFailure(error, "Making " + label.name, label.path);
    return target;
}

std::unique_ptr<OutputTarget> ToDescriptor(Descriptor descriptor, const FileLabel& label) {
    const auto shared = std::make_shared<const Descriptor>(std::move(descriptor));
    const auto taker = [shared](const void* bytes, size_t size) { return shared->Write(bytes, size); };
    const auto flusher = [shared] { return shared->IsRegular() ? shared->Flush() : 0; };
    return Opened(label, std::make_unique<OrderedTarget>(taker, flusher), TempFolderPath());
}

}  // namespace

void Writer::SetInput(uint32_t rate, uint32_t channels) {
    RequireRange("The input's rate", rate, kLeastRate, kMostRate);
    RequireRange("The input's channel count", channels, 1, kMostChannels);
    m_input = {rate, channels};
}

void Writer::SetOutput(uint32_t rate, uint32_t channels, uint32_t bits) {
    if (rate != 0) RequireRange("The output's rate", rate, kLeastRate, kMostRate);
    RequireRange("The output's channel count", channels, 0, kMostChannels);
    m_wish = {rate, channels, bits};
}

void Writer::SetText(vlw_text text) {
    RequireRange("The text's form", static_cast<uint32_t>(text), VLW_TEXT_AUTO, VLW_TEXT_UTF8);
    m_text = text;
}

// (1)
WavePlan Writer::MakePlan(const Module& module) const {
    if (m_input.rate == 0)
        throw Failure(VLW_BAD_STATE, "What will be given, vlw_writer_input, has to be told first.");
    const FormatWish wanted = {m_wish.rate ? m_wish.rate : m_input.rate,
                               m_wish.channels ? m_wish.channels : m_input.channels,
                               m_wish.bits ? m_wish.bits : kDefaultBits};
    const uint32_t index = ChooseFormat(module.Formats(), wanted, wanted);
    const AudioFormatInfo& nearest = module.Formats()[index];
    if (!Fulfils(nearest, wanted))
        throw Failure(VLW_UNSUPPORTED, DescribeFormat(wanted) + " can't be written; the nearest format is " +
                                           DescribeFormat(nearest) + ".");
    if (!CanMix(m_input.channels, wanted.channels))
        throw Failure(VLW_UNSUPPORTED, std::to_string(wanted.channels) + " channels can't be made of " +
                                           std::to_string(m_input.channels) +
                                           "; the nearest format has 1 channel.");
    return {m_input, index, m_text, m_chunks};
}

void Writer::Begin(uint32_t flags) {
    Drop();
    if ((flags & ~kKnownFlags) != 0)
        throw Failure(VLW_BAD_ARGUMENT, "A file is created with VLW_OVERWRITE and VLW_LOSSY at the most.");
    m_flags = flags;
}

void Writer::Start(std::unique_ptr<OutputTarget> target, const WavePlan& plan, const FileLabel& label) {
    m_target = std::move(target);
    m_audio.emplace(m_module.Get(), plan, m_target->File(), label);
    m_label = label;
    m_openText = plan.text;
    m_taken = 0;
    m_state = State::Open;
}

void Writer::CreateFile(const std::string& path, uint32_t flags) {
    Begin(flags);
    const WavePlan plan = MakePlan(m_module.Get());
    const FileLabel label = FileLabel::OfPath(path);
    FileNames::Facts facts;
    const int looked = FileNames::Look(path, facts);
    if (looked != 0 && looked != ENOENT) throw SystemFailure(looked, "Looking at " + path, path);
    const bool exists = looked == 0;
    const bool overwrite = (flags & VLW_OVERWRITE) != 0;
    if (exists && !overwrite) throw SystemFailure(EEXIST, "Making " + path, path);
    if (exists && !facts.regular) {  // a device or a pipe: it is written, never replaced
        Descriptor descriptor;
        const int error = descriptor.OpenForWriting(path);
        if (error != 0) throw SystemFailure(error, "Opening " + path, path);
        return Start(ToDescriptor(std::move(descriptor), label), plan, label);
    }
    Start(Opened(label, std::make_unique<NamedTarget>(), path, exists ? &facts : nullptr, overwrite), plan,
          label);
}

void Writer::CreateAt(int number, uint32_t flags) {
    Begin(flags);
    const WavePlan plan = MakePlan(m_module.Get());
    const FileLabel label = FileLabel::OfDescriptor(number, "the target");
    Descriptor descriptor;
    int error = descriptor.Duplicate(number);
    if (error == 0 && !descriptor.IsWritable()) error = EBADF;
    if (error != 0) throw SystemFailure(error, "Writing to " + label.name, {});
    Start(ToDescriptor(std::move(descriptor), label), plan, label);
}

void Writer::CreateStream(const std::shared_ptr<const CallerStream>& stream, uint32_t flags) {
    Begin(flags);
    if (!stream || !stream->CanWrite())
        throw Failure(VLW_BAD_ARGUMENT, "A target needs a stream with `write`.");
    const WavePlan plan = MakePlan(m_module.Get());
    const auto taker = [stream](const void* bytes, size_t size) { return stream->Write(bytes, size); };
    Start(Opened(Nameless(), std::make_unique<OrderedTarget>(taker, nullptr), TempFolderPath()), plan,
          Nameless());
}

void Writer::CreateInMemory(uint32_t flags) {
    Begin(flags);
    const WavePlan plan = MakePlan(m_module.Get());
    Start(Opened(Nameless(), std::make_unique<MemoryTarget>(), TempFolderPath()), plan, Nameless());
}

void Writer::RequireState(State state) const {
    if (m_state == state) return;
    if (m_state == State::Broken)
        throw Failure(VLW_BAD_STATE, "Writing failed before; the file can only be dropped.", m_label.path);
    throw Failure(VLW_BAD_STATE, state == State::Open ? "No file is being written."
                                                      : "There is no finished file in memory to take.");
}

void Writer::Write(const int16_t* samples, size_t frames) {
    RequireState(State::Open);
    if (!samples && frames != 0) throw Failure(VLW_BAD_ARGUMENT, "There are no samples.");
    m_state = State::Broken;  // unless it ends well
    m_audio->Write(samples, frames);
    m_taken = m_audio->Taken();
    m_state = State::Open;
}

void Writer::Write(const float* samples, size_t frames) {
    RequireState(State::Open);
    if (!samples && frames != 0) throw Failure(VLW_BAD_ARGUMENT, "There are no samples.");
    m_state = State::Broken;
    m_audio->RequireRoom(frames, 0);  // for all of them: after the first block it would be too late
    const size_t channels = m_audio->InputChannels();
    m_steps.resize(std::min(frames, kFloatFrames) * channels);
    for (size_t block = 0; frames > 0; frames -= block, samples += block * channels) {
        block = std::min(frames, kFloatFrames);
        std::transform(samples, samples + block * channels, m_steps.begin(), FromFloat);
        m_audio->Write(m_steps.data(), block);
    }
    m_taken = m_audio->Taken();
    m_state = State::Open;
}

void Writer::Finish() {
    RequireState(State::Open);
    // (4)
    const TagTrial trial(m_module.Get(), m_tags, m_openText, TempFolderPath());
    trial.RequireKept(m_flags, m_label);
    m_losses = trial.Losses();
    m_audio->RequireRoom(0, trial.List().size());
    m_state = State::Broken;                // unless it ends well
    m_audio->Finish(m_tags, trial.Kept());  // (5)
    m_frames = m_audio->Frames();
    m_audio.reset();
    const int error = m_target->Commit();  // (6)
    if (error != 0) throw SystemFailure(error, "Completing " + m_label.name, m_label.path);
    if (dynamic_cast<const MemoryTarget*>(m_target.get())) {
        m_state = State::Finished;
    } else {
        m_target.reset();
        m_state = State::None;
    }
}

void Writer::Drop() noexcept {
    m_audio.reset();
    m_target.reset();
    m_taken = 0;
    m_state = State::None;
}

void Writer::Take(void** bytes, size_t* size) {
    RequireState(State::Finished);
    uint64_t whole = 0;
    size_t done = 0;
    const Descriptor& file = m_target->File().Bytes();
    int error = file.Size(whole);
    if (error != 0) throw SystemFailure(error, "Reading the file in memory", {});
    std::unique_ptr<void, decltype(&std::free)> copy(std::malloc(whole), &std::free);
    if (!copy) throw std::bad_alloc();
    error = file.ReadAt(copy.get(), whole, 0, done);
    if (error == 0 && done != whole) error = EIO;
    if (error != 0) throw SystemFailure(error, "Reading the file in memory", {});
    *size = whole;
    *bytes = copy.release();
    m_target.reset();
    m_state = State::None;
}
