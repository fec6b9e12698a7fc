// The functions of vlwav_more.h.
#include "capi/vlwav_more.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "capi/Guarded.h"
#include "capi/Languages.h"
#include "capi/Module.h"
#include "capi/handles/PictureConversion.h"

namespace {

// Runs `work(module)` on a module that is loaded.
template <class Work>
vlw_code WithLoaded(vlw_module* module, Work&& work) {
    return Guarded(module, [&]() -> vlw_code {
        const Module* const loaded = Loaded(module);
        if (!loaded) throw Failure(VLW_BAD_STATE, "The module handle has no module loaded.");
        return work(*loaded);
    });
}

vlw_code Change(vlw_module* module, void (Module::*change)(bool) const, bool system) {
    return WithLoaded(module, [&](const Module& loaded) {
        (loaded.*change)(system);
        return VLW_OK;
    });
}

}  // namespace

vlw_code vlw_module_load_beside(vlw_module* module) {
    return Guarded(module, [&] {
        if (module->slot->loaded) return VLW_BAD_STATE;
        module->slot->loaded = std::make_shared<const Module>(Module::Beside());
        return VLW_OK;
    });
}

vlw_found vlw_module_found(const vlw_module* module) {
    const Module* const loaded = Loaded(module);
    return loaded ? loaded->Found() : VLW_FOUND_NOT;
}

vlw_code vlw_module_register(vlw_module* module) { return Change(module, &Module::Register, false); }
vlw_code vlw_module_unregister(vlw_module* module) { return Change(module, &Module::Unregister, false); }
vlw_code vlw_module_register_system(vlw_module* module) { return Change(module, &Module::Register, true); }
vlw_code vlw_module_unregister_system(vlw_module* module) {
    return Change(module, &Module::Unregister, true);
}

const char* vlw_language(size_t index) {
    return index < Languages().size() ? Languages()[index].tag : nullptr;
}

int vlw_is_language(const char* text) { return text && ParseLanguage(text) != 0 ? 1 : 0; }

vlw_code vlw_picture_convert(vlw_module* module, const void* bytes, size_t size, const char* kind,
                             void** made, size_t* made_size) {
    return WithLoaded(module, [&](const Module& loaded) {
        if (!bytes || !kind || !made || !made_size) return VLW_BAD_ARGUMENT;
        const std::vector<uint8_t> picture = ConvertPicture(loaded, bytes, size, kind);
        void* const copy = std::malloc(std::max<size_t>(picture.size(), 1));
        if (!copy) return VLW_NO_MEMORY;
        std::copy(picture.begin(), picture.end(), static_cast<uint8_t*>(copy));
        *made = copy;
        *made_size = picture.size();
        return VLW_OK;
    });
}
