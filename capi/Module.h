// The codec module as the library uses it: loaded once, for any number of handles and threads, which keep it.
// What it can write is asked for at once, so that telling it later needs no memory and can't fail.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/shell/Exports.h"
#include "AudioCodec/shell/IPrivateCodecMain3.h"
#include "AudioCodec/wave/riff/AudioFormatInfo.h"
#include "capi/ErrorRecord.h"
#include "capi/posix/ModuleFile.h"
#include "capi/vlwav_more.h"
#include "platform/com/RefPtr.h"

class Module {
public:
    // Null: the registered module, else the one beside this library. Throws Failure with VLW_NO_MODULE, and
    // std::bad_alloc.
    explicit Module(const char* path) : Module(Find(path)) {}
    // The one beside this library, whatever is registered.
    struct Beside {};
    explicit Module(Beside) : Module(FindBeside()) {}

    // A new codec main object. Throws Failure.
    RefPtr<IPrivateCodecMain3> CreateCodec() const;

    // A new metadata object without tags. Throws Failure.
    RefPtr<IAC3Metadata> NewMetadata() const;

    const std::string& Path() const { return m_path; }
    const std::string& Version() const { return m_version; }  // empty for a module that tells none
    const std::vector<AudioFormatInfo>& Formats() const { return m_formats; }
    // The text of a format that there is, in a platform language id; 0 is English. Throws Failure.
    std::u16string FormatText(uint32_t index, uint32_t language) const;

    vlw_found Found() const { return m_found; }

    // Enter the module into the user's registry or the system's, and take out the one that is there. All or
    // nothing. Throw Failure.
    void Register(bool system) const;
    void Unregister(bool system) const;

private:
    struct Place {
        std::string path;
        vlw_found found;
    };
    static Place Find(const char* path);
    static Place FindBeside();
    explicit Module(const Place& place);
    // Calls an export, after which `wanted` is to be the registered path; empty: none.
    void ChangeRegistry(const char* name, const char* what, bool system, const std::string& wanted) const;

    std::string m_path;
    vlw_found m_found;
    std::string m_loadFailure;
    ModuleFile m_file;
    decltype(&DllVlGetClassObject) m_getClassObject = nullptr;
    std::string m_version;
    std::vector<AudioFormatInfo> m_formats;
};

// What a module handle shares with the handles that were made with it.
struct ModuleSlot {
    std::shared_ptr<const Module> loaded;  // set once
};

struct vlw_module {
    const std::shared_ptr<ModuleSlot> slot = std::make_shared<ModuleSlot>();
    ErrorRecord error;
};

// Null without a handle, and before its module is loaded.
inline const Module* Loaded(const vlw_module* module) {
    return module ? module->slot->loaded.get() : nullptr;
}
