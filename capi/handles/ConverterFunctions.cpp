// The functions of vlwav.h that convert.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "capi/FormatRecord.h"
#include "capi/handles/Converter.h"
#include "capi/handles/Places.h"
#include "capi/vlwav_more.h"

namespace {

constexpr size_t kFirstSize = offsetof(vlw_conversion, user) + sizeof(void*);  // in version 1.0
constexpr uint32_t kKnownFlags =
    VLW_OVERWRITE | VLW_LOSSY | VLW_PARTIAL | VLW_NO_TAGS | VLW_NO_CHUNKS | VLW_NOT_EMPTY | VLW_DITHER;

// What the program's record, which may be older or newer than the library's, asks for. False where it can't
// be understood.
bool TakeWish(const vlw_conversion* given, vlw_conversion& wish) {
    if (!given) return true;
    if (given->size < kFirstSize) return false;
    std::memcpy(&wish, given, std::min(given->size, sizeof wish));
    uint32_t text = 0;  // as a number: a program in C may put any into it
    std::memcpy(&text, &wish.text, sizeof text);
    return (wish.flags & ~kKnownFlags) == 0 && text <= VLW_TEXT_UTF8;
}

bool IsPlace(const vlw_place* place) { return place && place->size >= sizeof(vlw_place); }

}  // namespace

vlw_code vlw_converter_new(vlw_module* module, vlw_converter** converter) {
    return NewHandle(converter, module);
}

void vlw_converter_free(vlw_converter* converter) { delete converter; }

const vlw_error* vlw_converter_error(const vlw_converter* converter) {
    return converter ? converter->error.Get() : nullptr;
}

vlw_code vlw_converter_run(vlw_converter* converter, const char* source, const char* target,
                           const vlw_conversion* conversion) {
    const vlw_place from = Places::Of(source);
    const vlw_place to = Places::Of(target);
    return vlw_converter_run_places(converter, source ? &from : nullptr, target ? &to : nullptr, conversion);
}

vlw_code vlw_converter_run_places(vlw_converter* converter, const vlw_place* source, const vlw_place* target,
                                  const vlw_conversion* conversion) {
    const vlw_code code = Guarded(converter, [&] {
        converter->work->Forget();
        vlw_conversion wish{};
        if (!IsPlace(source) || !IsPlace(target) || !TakeWish(conversion, wish)) return VLW_BAD_ARGUMENT;
        const vlw_code end = converter->work->Run(*source, *target, wish);
        if (end == VLW_CUT) throw converter->work->CutReason();
        return end;
    });
    if (converter) converter->work->Release();
    return code;
}

vlw_code vlw_converter_format(const vlw_converter* converter, vlw_format* format) {
    if (!converter) return VLW_BAD_ARGUMENT;
    const std::optional<vlw_format>& made = converter->work->Made();
    return made ? PutFormat(*made, format) : VLW_BAD_STATE;
}

vlw_code vlw_converter_source(const vlw_converter* converter, vlw_format* format) {
    if (!converter) return VLW_BAD_ARGUMENT;
    const std::optional<vlw_format>& source = converter->work->SourceFormat();
    return source ? PutFormat(*source, format) : VLW_BAD_STATE;
}

vlw_code vlw_converter_seed(vlw_converter* converter, uint64_t seed) {
    return Guarded(converter, [&] {
        converter->work->SetSeed(seed);
        return VLW_OK;
    });
}

int vlw_converter_refused_cut(const vlw_converter* converter) {
    return converter && converter->work->RefusedCut() ? 1 : 0;
}

const char* vlw_converter_notes(const vlw_converter* converter) {
    return converter ? converter->work->Notes().c_str() : nullptr;
}
