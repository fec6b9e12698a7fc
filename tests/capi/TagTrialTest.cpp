#include "capi/TagTrial.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;

const Module& TestModule() {
    static const Module s_module(MODULE_PATH);
    return s_module;
}

Tags Some(const char* keyword, const char* value) {
    Tags tags;
    tags.Set(keyword, value);
    return tags;
}

// A chunk "IARL" with a location of an archive, where a track number would stand; one of a copyright.
const std::string kLocation = "IARL\x08\0\0\0Cellar 4ICOP\x06\0\0\0(c) me"s;

TEST(TagTrial, WhatIsKeptAsItIsIsNoLoss) {
    const TagTrial trial(TestModule(), Some("title", "A title"), VLW_TEXT_AUTO, "/tmp/");
    EXPECT_EQ(trial.Losses(), "");
    EXPECT_EQ(*trial.Kept().Find("title"), "A title");
    EXPECT_GT(trial.Bytes(), 8U);
    EXPECT_EQ(TagTrial(TestModule(), Tags(), VLW_TEXT_AUTO, "/tmp/").Bytes(), 0U);
}

TEST(TagTrial, ATextOutsideTheCodePageIsToldWithOldAndNewText) {
    const TagTrial trial(TestModule(), Some("title", "\u65E5"), VLW_TEXT_1252, "/tmp/");
    EXPECT_EQ(trial.Losses(), "title would become \"?\" instead of \"\u65E5\"");
    EXPECT_EQ(*trial.Kept().Find("title"), "?");
}

// The location stays, so the number has no place: the same tags in a new file are kept.
TEST(TagTrial, AnExistingListIsTried) {
    const Tags tags = Some("track", "7");
    EXPECT_EQ(TagTrial(TestModule(), tags, VLW_TEXT_AUTO, "", "/tmp/").Losses(), "");
    const TagTrial trial(TestModule(), tags, VLW_TEXT_AUTO, kLocation, "/tmp/");
    EXPECT_NE(trial.Losses().find("track would become "), std::string::npos) << trial.Losses();
    EXPECT_NE(trial.Losses().find("instead of \"7\""), std::string::npos) << trial.Losses();
}

}  // namespace
