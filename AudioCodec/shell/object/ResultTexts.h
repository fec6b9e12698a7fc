// Every result of the module as its name and as a sentence for people: what happened and what to do about it.
// Data only.
#pragma once

#include <iterator>

#include "AudioCodec/shell/object/ResultCodes.h"

namespace vlacwav3 {

// A row of the table.
struct ResultText {
    Result code;       // RESULT_…
    const char* name;  // of the constant
    const char* text;  // English, one sentence
};

// All of them, by ascending code.
// clang-format off
inline constexpr ResultText kResultTexts[] = {
    {RESULT_OK,                "RESULT_OK",                "Done; nothing needs to be done."},
    {RESULT_FAILED,            "RESULT_FAILED",            "This could not be done and the module names no closer reason; check that the file is whole and try again."},
    {RESULT_NO_MEMORY,         "RESULT_NO_MEMORY",         "There is not enough memory; close other programs and try again."},
    {RESULT_NOT_FOUND,         "RESULT_NOT_FOUND",         "The module lacks what was asked for; check that program and module are of one version."},
    {RESULT_BAD_ARGUMENT,      "RESULT_BAD_ARGUMENT",      "The module refused a value it was given; check the rate and the channel count."},
    {RESULT_NOT_SUPPORTED,     "RESULT_NOT_SUPPORTED",     "The module can't do this with such a file; convert it to PCM of 16 bits first."},
    {RESULT_BAD_EXTENSION,     "RESULT_BAD_EXTENSION",     "The module knows no file name extension of that number; ask for a lower one."},
    {RESULT_NOT_OPEN,          "RESULT_NOT_OPEN",          "The file is not open; open it before it is written or moved in."},
    {RESULT_CANNOT_OPEN,       "RESULT_CANNOT_OPEN",       "The file could not be opened; check that it exists and that you may read it, and for audio that isn't plain PCM that a decoder is installed."},
    {RESULT_NOT_PCM,           "RESULT_NOT_PCM",           "The audio is not PCM of 8 or 16 bits; convert the file to such PCM first."},
    {RESULT_NOT_WAVE,          "RESULT_NOT_WAVE",          "This is no usable RIFF WAVE file, or reading it failed; check that it is a WAV file and that it is whole."},
    {RESULT_WRITE_FAILED,      "RESULT_WRITE_FAILED",      "Writing to the file failed; check the room on the disk and the rights on the file."},
    {RESULT_CANNOT_CREATE,     "RESULT_CANNOT_CREATE",     "The file could not be created because there is one already; choose another name or allow overwriting."},
    {RESULT_FILE_IN_USE,       "RESULT_FILE_IN_USE",       "Another program has the file open; close it there and try again."},
    {RESULT_SOURCE_NOT_LOADED, "RESULT_SOURCE_NOT_LOADED", "No decoder could take the file; check that it is whole and that a decoder for its audio is installed."},
    {RESULT_FILTER_MISSING,    "RESULT_FILTER_MISSING",    "A filter for decoding is missing; reinstall the module with its folder Filters."},
    {RESULT_CANNOT_RUN,        "RESULT_CANNOT_RUN",        "The decoder refused to start; check that the file is whole and try again."},
};
// clang-format on

// Whether the table has one row for each result, in order.
constexpr bool AreResultTextsAscending() {
    for (size_t i = 1; i < std::size(kResultTexts); ++i) {
        if (kResultTexts[i - 1].code >= kResultTexts[i].code) return false;
    }
    return true;
}
static_assert(AreResultTextsAscending(), "each result has one row");

// The row of a result; null for one that the module doesn't define, such as a negative one of the platform.
constexpr const ResultText* FindResultText(Result code) {
    for (const ResultText& row : kResultTexts) {
        if (row.code == code) return &row;
    }
    return nullptr;
}

}  // namespace vlacwav3
