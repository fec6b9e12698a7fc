// The module's version where others find it without a call: a note in its file, which the loader maps with
// it.
#include <cstdint>

namespace {

// As the ELF format has a note: sizes, type, then owner and content, each filled up to 4 bytes.
struct VersionNote {
    uint32_t ownerSize;
    uint32_t contentSize;
    uint32_t type;
    char owner[12];
    char content[16];
};
static_assert(sizeof(VERSION_TEXT) <= sizeof(VersionNote::content));

[[gnu::used, gnu::section(".note.vlacwav3"), gnu::aligned(4)]] const VersionNote s_note = {
    sizeof("VlACWav3"), sizeof(VersionNote::content), 1, "VlACWav3", VERSION_TEXT};

}  // namespace
