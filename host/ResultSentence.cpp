#include "host/ResultSentence.h"

#include <fmt/format.h>

#include "AudioCodec/shell/object/ResultTexts.h"

std::string SentenceOf(Result code) {
    if (const ResultText* row = FindResultText(code)) return row->text;
    if (code < 0)
        return fmt::format(
            "The platform layer failed with 0x{:08X}; check that the module is whole and try again.",
            static_cast<uint32_t>(code));
    return fmt::format(
        "The module gave the unknown result {}; check that it belongs to this version of vlwav.", code);
}
