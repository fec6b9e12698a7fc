#include "capi/handles/Id3Tags.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <iterator>

#include "capi/Keywords.h"
#include "capi/OptionalLibrary.h"
#include "capi/handles/Id3Frames.h"
#include "capi/id3/Id3Functions.h"
#include "capi/posix/ModuleFile.h"

namespace {

constexpr uint64_t kReadMost = uint64_t{64} << 20;

struct FrameRow {
    std::string_view frame;
    const char* keyword;
};
constexpr FrameRow kFrames[] = {
    {"TIT2", "title"},    {"TPE1", "artist"},  {"TALB", "album"},     {"TEXT", "writer"},
    {"TCOM", "composer"}, {"COMM", "comment"}, {"TCON", "genre"},     {"TCOP", "copyright"},
    {"TPOS", "disc"},     {"TPE2", "band"},    {"TPE3", "conductor"}, {"TIT1", "grouping"},
    {"TIT3", "subtitle"}, {"TBPM", "bpm"},     {"TRCK", "track"},
};
constexpr std::string_view kDate = "TDRC";  // 2004-05-06T…, or less
constexpr const char* kDateParts[] = {"year", "month", "day"};

// What comes, kept until the library is left: nothing may be thrown through it.
struct Taken {
    Tags tags;
    std::exception_ptr failure;

    void Text(std::string_view frame, const char* value) {
        if (!IsUtf8(value)) return;
        if (frame == kDate) return Date(value);
        const auto* const row = std::find_if(std::begin(kFrames), std::end(kFrames),
                                             [&](const FrameRow& each) { return each.frame == frame; });
        if (row != std::end(kFrames)) tags.Put(*Keywords::Find(row->keyword), value);
    }

    void Date(std::string_view value) {
        for (const char* const keyword : kDateParts) {
            int number = 0;
            const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
            if (error != std::errc() || number <= 0) return;
            tags.Put(*Keywords::Find(keyword), std::to_string(number));
            value.remove_prefix(static_cast<size_t>(end - value.data()));
            if (value.empty() || value.front() != '-') return;
            value.remove_prefix(1);
        }
    }

    void Picture(int32_t type, const void* bytes, size_t size) {
        if (tags.AllPictures().contains(type)) return;  // the first of a kind counts
        try {
            tags.SetPicture(type, bytes, size);
        } catch (const Failure&) {  // a link, or an image of another kind
        }
    }
};

template <class Work>
void Keep(void* user, Work&& work) {
    auto& taken = *static_cast<Taken*>(user);
    try {
        work(taken);
    } catch (...) {
        taken.failure = std::current_exception();
    }
}

void TakeText(void* user, const char* frame, const char* value) {
    Keep(user, [&](Taken& taken) { taken.Text(frame, value); });
}
void TakePicture(void* user, int32_t type, const void* bytes, size_t size) {
    Keep(user, [&](Taken& taken) { taken.Picture(type, bytes, size); });
}

}  // namespace

Tags ReadId3Tags(Input& input, const SourceFacts& facts) {
    if (!facts.id3 || facts.id3->size == 0 || facts.id3->size > kReadMost) return {};
    std::string reason;
    const ModuleFile library(ModuleFile::OfOurs(kId3Library.file), reason);
    const auto read = library ? reinterpret_cast<ReadId3Function>(library.Find(kReadId3Name)) : nullptr;
    // No tags would be the wrong answer.
    if (!read)
        throw Failure(VLW_NO_DECODER,
                      "Its ID3 tags can't be read here: " + WhatIsMissing(kId3Library, reason));
    InputBlocks blocks(input);
    const std::vector<uint8_t> frames = FramesOfUse(blocks, *facts.id3);
    if (frames.empty()) return {};
    Taken taken;
    const Id3Receiver receiver = {&taken, TakeText, TakePicture};
    if (!read(frames.data(), frames.size(), &receiver)) throw std::bad_alloc();
    if (taken.failure) std::rethrow_exception(taken.failure);
    return std::move(taken.tags);
}

void FillTags(Tags& tags, const Tags& more) {
    const bool hasYear = tags.Find("year") != nullptr;
    for (size_t index = 0; const TagRow* const row = Keywords::At(index); ++index) {
        const bool isOfDate = row->keyword == "month" || row->keyword == "day";
        if (!(hasYear && isOfDate) && tags.TextOf(*row).empty()) tags.Put(*row, more.TextOf(*row));
    }
    for (const auto& [number, bytes] : more.AllPictures())
        if (!tags.AllPictures().contains(number)) tags.SetPicture(number, bytes.data(), bytes.size());
}
