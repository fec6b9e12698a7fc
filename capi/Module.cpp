#include "capi/Module.h"

#include <filesystem>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/shell/object/HandedOut.h"
#include "AudioCodec/shell/object/ResultTexts.h"
#include "AudioCodec/wave/IAC3Writer.h"
#include "capi/RegisteredModule.h"
#include "capi/RegistryFailure.h"
#include "platform/base/LastError.h"
#include "platform/registry/RegistryTransaction.h"

namespace {

constexpr const char* kModuleName = "VlACWav3.so";

// For operations that fail only where the module is broken or memory is out.
void Require(Result result, const std::string& path) {
    if (result == RESULT_OK) return;
    if (result == RESULT_NO_MEMORY) throw std::bad_alloc();
    const ResultText* const row = FindResultText(result);
    throw Failure(VLW_NO_MODULE, path + " doesn't work as a codec module: " + (row ? row->text : "it fails."),
                  path);
}

// ERROR_SUCCESS where the registry has the file at `wanted`, or nothing where that is empty.
DWORD LookForRegistered(const std::string& wanted) {
    std::string path;
    const auto error = static_cast<DWORD>(ReadRegisteredModule(path));
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) return error;
    std::error_code ignored;
    const bool found = path == wanted || std::filesystem::equivalent(path, wanted, ignored);
    return found ? ERROR_SUCCESS : ERROR_GEN_FAILURE;
}

RefPtr<IAC3Writer> CreateWriter(const Module& module) {
    RefPtr<IAC3Writer> writer;
    Require(module.CreateCodec()->CreateWriter(writer.Put()), module.Path());
    return writer;
}

}  // namespace

// Never a bare name: the loader would look for that in the system's library folders.
Module::Place Module::Find(const char* path) {
    std::error_code ignored;
    if (path) return {std::filesystem::absolute(path, ignored).string(), VLW_FOUND_BY_PATH};
    std::string registered;
    ReadRegisteredModule(registered);  // one that is gone is as good as none
    if (std::filesystem::exists(registered, ignored)) return {registered, VLW_FOUND_BY_REGISTRY};
    return FindBeside();
}

Module::Place Module::FindBeside() { return {ModuleFile::OfOurs(kModuleName), VLW_FOUND_BESIDE}; }

Module::Module(const Place& place) : m_path(place.path), m_found(place.found), m_file(m_path, m_loadFailure) {
    if (!m_file)
        throw Failure(VLW_NO_MODULE, "The codec module can't be loaded: " + m_loadFailure + ".", m_path);
    m_getClassObject = reinterpret_cast<decltype(m_getClassObject)>(m_file.Find("DllVlGetClassObject"));
    if (!m_getClassObject) throw Failure(VLW_NO_MODULE, m_path + " is no codec module.", m_path);
    m_version = m_file.Version();
    const RefPtr<IAC3Writer> writer = CreateWriter(*this);
    uint32_t count = 0;
    Require(writer->GetFormatCount(&count), m_path);
    m_formats.resize(count);
    for (uint32_t index = 0; index < count; ++index)
        Require(writer->GetFormatInfo(index, &m_formats[index], nullptr), m_path);
}

RefPtr<IPrivateCodecMain3> Module::CreateCodec() const {
    void* object = nullptr;
    Require(m_getClassObject(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, &object), m_path);
    return RefPtr<IPrivateCodecMain3>::Adopt(static_cast<IPrivateCodecMain3*>(object));
}

// Of a writer that never opens a file.
RefPtr<IAC3Metadata> Module::NewMetadata() const {
    RefPtr<IAC3Metadata> metadata;
    Require(CreateWriter(*this)->GetMetadata(metadata.Put()), m_path);
    return metadata;
}

std::u16string Module::FormatText(uint32_t index, uint32_t language) const {
    const RefPtr<IAC3Writer> writer = CreateWriter(*this);
    if (language != 0) Require(writer->SetLong(ATTR_TEXT_LANGUAGE, language), m_path);
    AudioFormatInfo format{};
    HandedOutText text(*writer);
    Require(writer->GetFormatInfo(index, &format, text.Put()), m_path);
    if (!text.Get()) throw std::bad_alloc();  // the module has one for each
    return text.Get();
}

// The exports tell nobody what came of it. What failed in the module's own transaction is heard from this one
// around it, and what the registry has at its end shows whether the module did anything.
void Module::ChangeRegistry(const char* name, const char* what, bool system,
                            const std::string& wanted) const {
    const auto call = reinterpret_cast<int32_t (*)()>(m_file.Find(name));
    if (!call) throw Failure(VLW_NO_MODULE, m_path + " can't be registered.", m_path);
    const DWORD which = system ? VL_REGISTRY_SYSTEM : VL_REGISTRY_USER;
    RegistryTransaction transaction(which);
    LONG error = transaction.Begun();
    if (error == 0) {
        call();
        error = transaction.End(static_cast<LONG>(LookForRegistered(wanted)));
    }
    if (error != 0) throw RegistryFailure(error, what, which);
}

void Module::Register(bool system) const {
    ChangeRegistry("DllRegisterServer", "Registering", system, m_path);
}

void Module::Unregister(bool system) const {
    ChangeRegistry("DllUnregisterServer", "Unregistering", system, {});
}
