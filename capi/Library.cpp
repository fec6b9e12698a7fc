// What belongs to no handle: codes as sentences, the version, memory that is given back.
#include <algorithm>
#include <cstdlib>
#include <iterator>

#include "capi/vlwav.h"

namespace {

struct CodeRow {
    vlw_code code;
    const char* text;
};

// clang-format off
constexpr CodeRow kCodes[] = {
    {VLW_CUT,             "The audio ends before the end that the file promises."},
    {VLW_END,             "The end is reached."},
    {VLW_OK,              "Done."},
    {VLW_FAILED,          "This could not be done, and no closer reason is known."},
    {VLW_NO_MEMORY,       "There is not enough memory."},
    {VLW_BAD_ARGUMENT,    "A value that was passed in can't be used: nothing where something is needed, or a number out of range."},
    {VLW_BAD_STATE,       "This can't be done now: no file is open, or one is that mustn't be."},
    {VLW_SYSTEM,          "The system refused, or failed."},
    {VLW_NOT_FOUND,       "There is no such file or folder."},
    {VLW_NO_PERMISSION,   "The rights on the file or its folder don't allow this."},
    {VLW_EXISTS,          "There is a file of this name already, and overwriting wasn't allowed."},
    {VLW_IN_USE,          "Another program has the file open and doesn't share it."},
    {VLW_NO_SPACE,        "The disk or the quota is full."},
    {VLW_NOT_AUDIO,       "This is no audio file of a kind that is read."},
    {VLW_DAMAGED,         "The audio file is damaged."},
    {VLW_NO_DECODER,      "No decoder for the file's audio is installed."},
    {VLW_UNSUPPORTED,     "This rate, channel count or sample width can't be had."},
    {VLW_NOT_SEEKABLE,    "The source gives its bytes in order only."},
    {VLW_UNKNOWN_KEYWORD, "There is no tag of this keyword."},
    {VLW_BAD_VALUE,       "The value is no UTF-8, or no number where one is needed, or no picture."},
    {VLW_WOULD_LOSE,      "The file can't keep a tag or picture as it is; nothing was changed."},
    {VLW_TOO_LARGE,       "A WAV file can't hold more than 4 GiB."},
    {VLW_CANCELLED,       "The program stopped this itself."},
    {VLW_NO_MODULE,       "The codec module wasn't found, or the file is none."},
};
// clang-format on
static_assert(std::size(kCodes) == VLW_CUT - VLW_NO_MODULE + 1);
static_assert(std::adjacent_find(std::begin(kCodes), std::end(kCodes),
                                 [](const CodeRow& a, const CodeRow& b) { return a.code != b.code + 1; }) ==
              std::end(kCodes));

#define VLW_TEXT_OF(number) #number
#define VLW_DOTTED(major, minor, patch) VLW_TEXT_OF(major) "." VLW_TEXT_OF(minor) "." VLW_TEXT_OF(patch)

}  // namespace

const char* vlw_error_text(vlw_code code) {
    const int place = VLW_CUT - static_cast<int>(code);
    const bool known = place >= 0 && place < static_cast<int>(std::size(kCodes));
    // What a program treats an unknown code as.
    return kCodes[known ? place : VLW_CUT - (code < VLW_OK ? VLW_FAILED : VLW_END)].text;
}

uint32_t vlw_version(void) { return VLW_VERSION; }

const char* vlw_version_text(void) {
    return VLW_DOTTED(VLW_VERSION_MAJOR, VLW_VERSION_MINOR, VLW_VERSION_PATCH);
}

void vlw_free(void* block) { std::free(block); }
