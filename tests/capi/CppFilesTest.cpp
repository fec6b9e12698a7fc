// vlwav.hpp over files that are made: writing, editing, converting, and what the program's own functions say
// and throw. Built as C++17 and as C++20.
#include <gtest/gtest.h>

#include "capi/vlwav.hpp"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

std::string StereoFile(const Samples& samples) {
    return WavImage().Fmt(1, 2, 44100, 16).Data(samples).Text();
}

TEST(CppWriter, WhatIsWrittenIntoMemoryAndIntoAStreamIsReadBack) {
    const Samples samples = Noise(2 * 500);
    vlw::Tags tags;
    tags.set("title", "Memory");
    vlw::Writer writer;
    EXPECT_EQ(writer.try_create_memory().error().code, vlw::Code::bad_state);  // no input yet
    writer.input(44100, 2);
    writer.tags(tags);
    writer.create_memory();
    writer.write(vlw::Block<const std::int16_t>(samples.data(), 500, 2));
    EXPECT_EQ(writer.tell(), 500);
    writer.finish();
    const vlw::Bytes bytes = writer.take();
    EXPECT_EQ(writer.try_take().error().code, vlw::Code::bad_state);

    std::string streamed;
    vlw::Stream target;
    target.write = [&](const void* data, std::size_t count) -> std::int64_t {
        streamed.append(static_cast<const char*>(data), count);
        return static_cast<std::int64_t>(count);
    };
    writer.create(std::move(target));
    writer.write(samples.data(), 500);
    writer.finish();
    EXPECT_EQ(streamed, std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));

    vlw::Reader reader;
    reader.open_memory(bytes.data(), bytes.size());
    EXPECT_EQ(reader.tags().get("title"), "Memory");
    Samples read(samples.size());
    EXPECT_TRUE(reader.read(read.data(), 500));
    EXPECT_EQ(read, samples);
    EXPECT_EQ(reader.read(read.data(), 1).ending, vlw::Ending::end);
#if __cplusplus >= 202002L
    reader.seek(0);
    std::vector<float> floats(2 * 250);
    EXPECT_EQ(reader.read(floats).frames, 250U);
    reader.open_memory(std::span(bytes));
#endif
}

TEST(CppEditor, LendsTagsWhileAFileIsOpen) {
    const TempFolder folder;
    const std::filesystem::path path = folder.Path() / "a.wav";
    std::ofstream(path, std::ios::binary) << StereoFile(Noise(20));
    vlw::Editor editor;
    EXPECT_EQ(editor.try_tags().error().code, vlw::Code::bad_state);
    editor.open(path);
    vlw::TagsRef tags = editor.tags();
    tags.set("title", "Edited");
    editor.save();
    vlw::Reader reader;
    reader.open(path.string());
    EXPECT_EQ(reader.tags().get("title"), "Edited");
    EXPECT_EQ(reader.try_open((folder.Path() / "b.wav").c_str()).error().code, vlw::Code::not_found);
    EXPECT_EQ(reader.try_format().error().code, vlw::Code::bad_state);
}

TEST(CppConverter, StopsForTheProgramAndLetsItsExceptionOut) {
    const TempFolder folder;
    const std::filesystem::path source = folder.Path() / "a.wav", target = folder.Path() / "b.wav";
    std::ofstream(source, std::ios::binary) << StereoFile(Noise(std::size_t{2} * 50'000));
    vlw::Converter converter;
    vlw::Conversion conversion;
    conversion.rate = 22050;
    conversion.progress = [](const vlw::Progress&) { return false; };
    EXPECT_EQ(converter.try_run(source, target, conversion).error().code, vlw::Code::cancelled);
    conversion.progress = [](const vlw::Progress&) -> bool { throw std::out_of_range("mine"); };
    EXPECT_THROW((void)converter.try_run(source, target, conversion), std::out_of_range);
    EXPECT_FALSE(std::filesystem::exists(target));
    vlw::Progress last;
    conversion.progress = [&](const vlw::Progress& progress) { return last = progress, true; };
    const vlw::Converted made = converter.run(source, target, conversion);
    EXPECT_EQ(made.format.rate, 22050U);
    EXPECT_EQ(made.ending, vlw::Ending::end);
    EXPECT_EQ(last.done, 50'000);
    EXPECT_EQ(last.total, 50'000);
    EXPECT_EQ(converter.try_run(source, target, conversion).error().code, vlw::Code::exists);
}

}  // namespace
