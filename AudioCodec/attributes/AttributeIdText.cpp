#include "AudioCodec/attributes/AttributeIdText.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <mutex>
#include <type_traits>

#include "AudioCodec/attributes/StoreTypeTable.h"
#include "platform/sync/ForkPass.h"

namespace {

char s_text[512];
std::mutex s_textLock;  // stores have locks of their own, and the buffer is shared by all
static_assert(std::is_trivially_destructible_v<std::mutex>, "nothing to destroy when the module goes");

const char* WordOf(uint32_t id) {
    const auto* row = std::find_if(std::begin(kNibbleWords), std::end(kNibbleWords),
                                   [&](const NibbleWord& word) { return word.nibble == TypeNibble(id); });
    return row == std::end(kNibbleWords) ? "UNKNOWN" : row->word;
}

}  // namespace

const char* AttributeIdText(uint32_t id) {
    const ForkPass pass;
    const std::lock_guard guard(s_textLock);
    std::snprintf(s_text, sizeof(s_text), "0x%08X (type:%s)", id, WordOf(id));
    return s_text;
}
