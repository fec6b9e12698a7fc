// vlwav.hpp over what lies in no file: both forms of a failure, owners, tags and pictures as ranges, the
// module. Built as C++17 and as C++20.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "capi/vlwav.hpp"

namespace {

using namespace std::string_literals;

// What a call throws; Code::ok and no text where it throws nothing.
template <class Work>
vlw::Failure Thrown(Work&& work) {
    try {
        work();
        return {};
    } catch (const vlw::Error& error) {
        EXPECT_EQ(error.what(), error.text());
        return error.failure();
    }
}

std::vector<std::pair<std::string, std::string>> All(const vlw::AnyTags& tags) {
    return {tags.begin(), tags.end()};
}

constexpr char kPng[] = "\x89PNG\r\n\x1A\n";

TEST(CppResult, BothFormsTellTheSameFailure) {
    vlw::Tags tags;
    const vlw::Result<> refused = tags.try_set("tempo", "90");
    EXPECT_FALSE(refused);
    EXPECT_EQ(refused.error().code, vlw::Code::unknown_keyword);
    EXPECT_NE(refused.error().text.find("tempo"), std::string::npos);
    const vlw::Failure thrown = Thrown([&] { tags.set("tempo", "90"); });
    EXPECT_EQ(thrown.code, refused.error().code);
    EXPECT_EQ(thrown.text, refused.error().text);
    // A success has no failure, and what failed no value, without anything undefined.
    EXPECT_EQ(tags.try_set("title", "x").error().code, vlw::Code::ok);
    const vlw::Result<int> none(vlw::Failure{vlw::Code::no_space, 28, "full", "a.wav", 7});
    EXPECT_EQ(none.value_or(4), 4);
    const vlw::Failure dereferenced = Thrown([&] { (void)*none; });
    EXPECT_EQ(dereferenced.code, vlw::Code::no_space);
    EXPECT_EQ(dereferenced.system, 28);
    EXPECT_EQ(dereferenced.path, "a.wav");
    EXPECT_EQ(dereferenced.frames, 7U);
}

TEST(CppTags, ATextWithAZeroByteInsideIsRefusedInsteadOfShortened) {
    vlw::Tags tags;
    tags.set("title", "whole");
    EXPECT_EQ(tags.try_set("title", "half\0lost"s).error().code, vlw::Code::bad_value);
    EXPECT_EQ(tags.try_set("title\0s"s, "x").error().code, vlw::Code::bad_argument);
    EXPECT_EQ(tags.try_set("title", static_cast<const char*>(nullptr)).error().code, vlw::Code::bad_value);
    EXPECT_EQ(tags.get("title"), "whole");
    EXPECT_EQ(tags.get("title\0s"s), std::nullopt);
    // Half a longer text is a text of its own.
    tags.set(std::string_view("artistic", 6), std::string_view("whole", 2));
    EXPECT_EQ(tags.get("artist"), "wh");
}

TEST(CppTags, AreWalkedAsPairsInTheOrderOfTheirKeywords) {
    vlw::Tags tags;
    EXPECT_TRUE(tags.empty() && All(tags).empty());
    tags.set("year", 1999);
    tags.set("TITLE", "North Wind");
    tags.set("performer", "Zo\u00eb");
    using Pairs = std::vector<std::pair<std::string, std::string>>;
    EXPECT_EQ(All(tags), (Pairs{{"title", "North Wind"}, {"artist", "Zo\u00eb"}, {"year", "1999"}}));
    std::string keywords;
    for (const auto& [keyword, value] : tags) keywords += std::string(keyword) + ' ';
    EXPECT_EQ(keywords, "title artist year ");

    vlw::Tags copy;
    copy.set("comment", "goes");
    copy.assign(tags);
    tags.remove("artist");
    tags.set("year", 0);
    EXPECT_EQ(All(tags), (Pairs{{"title", "North Wind"}}));
    EXPECT_EQ(copy.size(), 3U);
    EXPECT_EQ(vlw::TagsRef(copy.get()).get("year"), "1999");
    copy.clear();
    EXPECT_TRUE(copy.empty());
}

TEST(CppTags, PicturesAreWalkedByNumberAndTheBestIsFound) {
    vlw::Tags tags;
    EXPECT_FALSE(tags.best_picture());
    tags.set_picture(8, kPng, sizeof kPng);
    tags.set_picture(3, "GIF89a", 6);
    EXPECT_EQ(tags.try_set_picture(4, "MP3", 3).error().code, vlw::Code::bad_value);
    EXPECT_EQ(tags.try_set_picture(8, nullptr, 0).error().code, vlw::Code::bad_value);
    std::vector<std::pair<int, std::size_t>> seen;
    for (const vlw::Picture picture : tags.pictures()) seen.emplace_back(picture.number, picture.size);
    EXPECT_EQ(seen, (std::vector<std::pair<int, std::size_t>>{{3, 6}, {8, sizeof kPng}}));
    ASSERT_TRUE(tags.best_picture());
    EXPECT_EQ(std::string(static_cast<const char*>(tags.best_picture()->data), tags.best_picture()->size),
              "GIF89a");
    tags.remove_picture(3);
    EXPECT_EQ(tags.best_picture()->number, 8);
    EXPECT_TRUE(tags.empty());
}

TEST(CppHandles, WhatWasMovedFromFailsAndTheOtherOneHasAll) {
    vlw::Tags first;
    first.set("title", "x");
    vlw::Tags second = std::move(first);
    EXPECT_EQ(second.get("title"), "x");
    EXPECT_EQ(first.try_set("title", "y").error().code,
              vlw::Code::bad_argument);  // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(first.empty() && first.pictures().empty() && !first.best_picture());
    first = std::move(second);
    EXPECT_EQ(first.get("title"), "x");
    vlw::Module module;
    const vlw::Module moved = std::move(module);
    EXPECT_EQ(module.try_load().error().code, vlw::Code::bad_argument);  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(module.path(), "");
}

TEST(CppModule, IsLoadedOnceAndTellsItsFormatsInALanguage) {
    vlw::Module module;
    EXPECT_EQ(module.try_formats().error().code, vlw::Code::bad_state);
    EXPECT_EQ(module.try_load("/nowhere/VlACWav3.so").error().path, "/nowhere/VlACWav3.so");
    // Neither a null pointer nor a name that the library would see half of stands for the default module.
    EXPECT_EQ(module.try_load(static_cast<const char*>(nullptr)).error().code, vlw::Code::bad_argument);
    EXPECT_EQ(module.try_load(MODULE_PATH "\0.so"s).error().code, vlw::Code::bad_argument);
    module.load(std::filesystem::path(MODULE_PATH));
    EXPECT_EQ(module.path(), MODULE_PATH);
    EXPECT_EQ(Thrown([&] { module.load(); }).code, vlw::Code::bad_state);

    const std::vector<vlw::StockFormat> formats = module.formats("ja");
    ASSERT_GE(formats.size(), 28U);
    EXPECT_EQ(formats[23].text, "44.100 kHz\u300116 \u30d3\u30c3\u30c8\u3001\u30b9\u30c6\u30ec\u30aa");
    EXPECT_EQ(formats[23].format.rate, 44100U);
    EXPECT_EQ(formats[23].format.container, "WAV");
    EXPECT_FALSE(formats[23].format.frames || formats[23].format.duration());
    EXPECT_EQ(module.formats()[23].text, "44.100 kHz, 16 Bits, Stereo");
}

TEST(CppLibrary, TellsKeywordsCodesAndItsVersion) {
    const std::vector<vlw::Keyword> keywords = vlw::keywords();
    EXPECT_EQ(keywords.at(0).name, "title");
    EXPECT_TRUE(keywords[0].is_kept && !keywords[0].is_number);
    EXPECT_EQ(std::count_if(
                  keywords.begin(), keywords.end(),
                  [](const vlw::Keyword& keyword) { return keyword.name == "year" && keyword.is_number; }),
              1);
    EXPECT_EQ(vlw::version(), vlw_version());
    EXPECT_EQ(vlw::error_text(vlw::Code::no_space), vlw_error_text(VLW_NO_SPACE));
    // The failure of a program's own: as many as its sentence says, and shared by the copies of an exception.
    const vlw::Error error(vlw::Failure{vlw::Code::damaged, 0, "broken", "", 0});
    EXPECT_EQ(&vlw::Error(error).failure(), &error.failure());
}

}  // namespace
