#include "AudioCodec/graph/CACMWAVReader.h"

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/shell/object/Border.h"
#include "AudioCodec/wave/ReadExtensions.h"

namespace {

constexpr InterfaceTableEntry kInterfaces[] = {
    {&IID_IBase, 0}, {&IID_IAttributeContainer64, 0}, {&IID_IAC3Reader, 0}, {nullptr, 0}};

}  // namespace

CACMWAVReader::CACMWAVReader() {
    PresetString(ATTR_CODEC_FORMAT_NAME, u"WAV");
    PresetString(ATTR_READ_EXTENSION, u".wav");
    PresetString(ATTR_CODEC_SHORT_NAME, u"wav");
}

CACMWAVReader::~CACMWAVReader() { CACReader::Close(); }

Result CACMWAVReader::InternalQueryInterface(const GUID* iid, void** object) {
    return FindInterfaceEntry(this, kInterfaces, iid, object);
}

const char16_t* CACMWAVReader::GetClassName() { return u"CACMWAVReader"; }

Result CACMWAVReader::GetExtensionCount(uint32_t* count) { return CountReadExtensions(count); }

Result CACMWAVReader::GetExtension(uint32_t index, char16_t** extension) {
    return GiveReadExtension(*this, index, extension);
}

Result CACMWAVReader::ConnectGraph(IBaseFilter* source, IBaseFilter* streamReader) {
    return AtBorder(RESULT_FAILED, [&] {
        RefPtr<IBaseFilter> decoder;
        Result result = AddToGraph(CLSID_ACMWrapper, decoder.Put(), u"MS ACM Wrapper");
        if (result == RESULT_OK) result = ConnectInGraph(source, decoder.Get());
        if (result == RESULT_OK) result = ConnectInGraph(decoder.Get(), streamReader);
        return result;
    });
}
