#include "capi/ModuleFailure.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>

#include "AudioCodec/shell/object/ResultTexts.h"
#include "capi/PlatformErrors.h"
#include "capi/SystemFailure.h"
#include "platform/base/PlatformResults.h"

namespace {

struct ResultRow {
    Result result;
    vlw_code code;
};
// What a graph answers that could decode nothing of audio that is there.
constexpr auto kNothingDecoded = static_cast<Result>(0x8004022F);
constexpr ResultRow kResults[] = {
    {kNothingDecoded, VLW_DAMAGED},
    {RESULT_NOT_SUPPORTED, VLW_UNSUPPORTED},
    {RESULT_CANNOT_OPEN, VLW_SYSTEM},
    {RESULT_NOT_PCM, VLW_UNSUPPORTED},
    {RESULT_NOT_WAVE, VLW_DAMAGED},
    {RESULT_WRITE_FAILED, VLW_SYSTEM},
    {RESULT_CANNOT_CREATE, VLW_EXISTS},
    {RESULT_FILE_IN_USE, VLW_IN_USE},
    {RESULT_SOURCE_NOT_LOADED, VLW_NO_DECODER},
    {RESULT_FILTER_MISSING, VLW_NO_DECODER},
    {RESULT_CANNOT_RUN, VLW_NO_DECODER},
};

vlw_code CodeOf(Result result) {
    for (const ResultRow& row : kResults)
        if (row.result == result) return row.code;
    return VLW_FAILED;
}

// Of what the system refuses, that which nobody goes on from: others may be left from before.
constexpr int kHard[] = {EIO, ENOSPC, EFBIG, EMFILE, ENOMEM, EACCES};

int HardError() {
    const int error = LastSystemError();
    return std::find(std::begin(kHard), std::end(kHard), error) != std::end(kHard) ? error : 0;
}

}  // namespace

Failure ModuleFailure(Result result, const std::string& what, const std::string& path) {
    if (result == RESULT_NO_MEMORY || result == PLATFORM_NO_MEMORY) throw std::bad_alloc();
    if (const int error = HardError()) return SystemFailure(error, what, path);
    const ResultText* const row = FindResultText(result);
    std::string reason = row ? row->text : "The module answered " + std::to_string(result) + '.';
    if (result == kNothingDecoded)
        reason =
            "Nothing of its audio can be decoded; it is damaged, or of a kind that the decoder doesn't know.";
    return {CodeOf(result), what + " failed: " + reason, path};
}
