#include "AudioCodec/shell/CPrivateCodecMain.h"

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/metadata/CACMetadataEditor.h"
#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/CACStreamReader.h"
#include "AudioCodec/wave/CACWriter.h"

namespace {

constexpr InterfaceTableEntry kInterfaces[] = {
    {&IID_IAttributeContainer64, 0}, {&IID_IPrivateCodecMain3, 0}, {nullptr, 0}};

constexpr uint32_t kCapabilities[] = {ATTR_CODEC_CAPABILITY_1, ATTR_CODEC_CAPABILITY_2,
                                      ATTR_CODEC_CAPABILITY_3, ATTR_CODEC_CAPABILITY_4,
                                      ATTR_CODEC_CAPABILITY_5};

}  // namespace

CPrivateCodecMain::CPrivateCodecMain() { PresetString(ATTR_CODEC_SHORT_NAME, u"WAV"); }

Result CPrivateCodecMain::CreateReader(IAC3Reader** reader) { return CreateObject<CACStreamReader>(reader); }

Result CPrivateCodecMain::CreateStreamReader(IAC3StreamReader** reader) {
    return CreateObject<CACStreamReader>(reader);
}

Result CPrivateCodecMain::CreateWriter(IAC3Writer** writer) { return CreateObject<CACWriter>(writer); }

Result CPrivateCodecMain::CreateMetadataEditor(const char16_t* path, IAC3MetadataEditor** editor) {
    return CreateObject<CACMetadataEditor>(editor, path);
}

Result CPrivateCodecMain::CreateUnsupported() { return RESULT_NOT_SUPPORTED; }

Result CPrivateCodecMain::InitCapabilities() {
    Result result = RESULT_OK;
    for (const uint32_t id : kCapabilities) result = SetBool(id, 1);
    return result;
}

Result CPrivateCodecMain::InternalQueryInterface(const GUID* iid, void** object) {
    return FindInterfaceEntry(this, kInterfaces, iid, object);
}

const char16_t* CPrivateCodecMain::GetClassName() { return u"CPrivateCodecMain"; }
