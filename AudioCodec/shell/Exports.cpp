#include "AudioCodec/shell/Exports.h"

#include <memory>

#include "AudioCodec/shell/CPrivateCodecMain.h"
#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/shell/OwnPath.h"
#include "AudioCodec/shell/Registration.h"
#include "AudioCodec/shell/UnloadCleanUp.h"
#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/shell/object/ModuleInstance.h"

Result vlacwav3::DllVlGetClassObject(const GUID* clsid, const GUID* iid, void** object) {
    if (!object) return RESULT_BAD_ARGUMENT;
    *object = nullptr;
    if (!clsid || !(*clsid == CLSID_VlACWav3)) return RESULT_NOT_FOUND;
    if (!GetModuleInstance()) return RESULT_FAILED;
    return AtBorder(RESULT_NO_MEMORY, [&] {
        FollowProcess();
        auto codec = std::make_unique<CPrivateCodecMain>();
        const Result result = codec->QueryInterface(iid, object);
        if (result == RESULT_OK) static_cast<void>(codec.release());  // now the host's, by its reference
        return result;
    });
}

namespace {

constexpr int32_t kServerDone = 1;  // of both server exports, whatever came of it

}  // namespace

int32_t vlacwav3::DllRegisterServer() {
    return AtBorder(kServerDone, [] {
        Registration::RegisterCodec(CLSID_VlACWav3, OwnPath());
        return kServerDone;
    });
}

int32_t vlacwav3::DllUnregisterServer() {
    return AtBorder(kServerDone, [] {
        Registration::UnregisterCodec(CLSID_VlACWav3);
        return kServerDone;
    });
}

Result vlacwav3::GetCodecGUID(GUID* clsid) {
    if (!clsid) return RESULT_BAD_ARGUMENT;
    *clsid = CLSID_VlACWav3;
    return RESULT_OK;
}
