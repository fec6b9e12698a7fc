// The functions of vlwav.h on the module. Those that any thread may call leave no record: two of them at once
// would write into it.
#include <cstdlib>
#include <cstring>

#include "capi/FormatRecord.h"
#include "capi/Guarded.h"
#include "capi/Languages.h"
#include "capi/Module.h"
#include "platform/base/Utf.h"

namespace {

// Whether there is such a format to tell.
vlw_code StateOf(const vlw_module* module, size_t index) {
    if (!module) return VLW_BAD_ARGUMENT;
    if (!module->slot->loaded) return VLW_BAD_STATE;
    return index < module->slot->loaded->Formats().size() ? VLW_OK : VLW_END;
}

}  // namespace

vlw_code vlw_module_new(vlw_module** module) { return NewHandle(module); }

void vlw_module_free(vlw_module* module) { delete module; }

vlw_code vlw_module_load(vlw_module* module, const char* path) {
    return Guarded(module, [&] {
        if (module->slot->loaded) return VLW_BAD_STATE;
        module->slot->loaded = std::make_shared<const Module>(path);
        return VLW_OK;
    });
}

const vlw_error* vlw_module_error(const vlw_module* module) { return module ? module->error.Get() : nullptr; }

const char* vlw_module_path(const vlw_module* module) {
    if (!module) return nullptr;
    return module->slot->loaded ? module->slot->loaded->Path().c_str() : "";
}

const char* vlw_module_version(const vlw_module* module) {
    if (!module) return nullptr;
    return module->slot->loaded ? module->slot->loaded->Version().c_str() : "";
}

size_t vlw_module_format_count(const vlw_module* module) {
    const Module* const loaded = Loaded(module);
    return loaded ? loaded->Formats().size() : 0;
}

vlw_code vlw_module_format(const vlw_module* module, size_t index, vlw_format* format) {
    const vlw_code state = StateOf(module, index);
    return state == VLW_OK ? PutFormat(RecordOf(module->slot->loaded->Formats()[index]), format) : state;
}

vlw_code vlw_module_format_text(const vlw_module* module, size_t index, const char* language, char** text) {
    if (!text) return VLW_BAD_ARGUMENT;
    const vlw_code state = StateOf(module, index);
    if (state != VLW_OK) return state;
    try {
        const uint32_t id = language ? FindNearestLanguage(language) : 0;
        const std::string utf8 =
            Utf::ToUtf8(module->slot->loaded->FormatText(static_cast<uint32_t>(index), id));
        auto* const copy = static_cast<char*>(std::malloc(utf8.size() + 1));
        if (!copy) return VLW_NO_MEMORY;
        std::memcpy(copy, utf8.c_str(), utf8.size() + 1);
        *text = copy;
        return VLW_OK;
    } catch (const Failure& failure) {
        return failure.Code();
    } catch (...) {
        return VLW_NO_MEMORY;
    }
}
