#include "capi/Module.h"

#include <filesystem>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/shell/object/HandedOut.h"
#include "AudioCodec/shell/object/ResultTexts.h"
#include "AudioCodec/wave/IAC3Writer.h"
#include "capi/RegisteredModule.h"
#include "platform/base/LastError.h"

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

Module::Place Module::FindBeside() { return {ModuleFile::OwnFolder() + '/' + kModuleName, VLW_FOUND_BESIDE}; }

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

void Module::CallServerExport(const char* name) const {
    const auto call = reinterpret_cast<int32_t (*)()>(m_file.Find(name));
    if (!call) throw Failure(VLW_NO_MODULE, m_path + " can't be registered.", m_path);
    call();
}

// The exports tell nobody what came of it, so the registry is asked.

void Module::Register() const {
    CallServerExport("DllRegisterServer");
    std::string path;
    ReadRegisteredModule(path);
    std::error_code ignored;
    if (!std::filesystem::equivalent(path, m_path, ignored))
        throw Failure(VLW_SYSTEM, "The registry could not be written.");
}

void Module::Unregister() const {
    CallServerExport("DllUnregisterServer");
    std::string path;
    const auto found = static_cast<DWORD>(ReadRegisteredModule(path));
    if (found != ERROR_FILE_NOT_FOUND && found != ERROR_PATH_NOT_FOUND)
        throw Failure(VLW_SYSTEM, "The registry could not be written.");
}
