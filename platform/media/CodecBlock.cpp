#include "platform/media/CodecBlock.h"

#include <cstring>

MediaType CodecType(const AVCodecParameters& codec) {
    const CodecBlock block = {codec.codec_id,
                              codec.codec_tag,
                              codec.bit_rate,
                              codec.bits_per_coded_sample,
                              codec.ch_layout.nb_channels,
                              codec.sample_rate,
                              codec.block_align};
    std::vector<BYTE> bytes(sizeof(block));
    std::memcpy(bytes.data(), &block, sizeof(block));
    bytes.insert(bytes.end(), codec.extradata, codec.extradata + codec.extradata_size);

    GUID subtype = MEDIASUBTYPE_PCM;
    subtype.Data1 = codec.codec_tag;  // the custom for codecs that a number or four characters name
    MediaType type(MEDIATYPE_Audio, subtype);
    type.SetFormat(FORMAT_CodecBlock, bytes);
    return type;
}

std::optional<CodecDescription> DescribedCodec(const AM_MEDIA_TYPE& type) {
    if (!(type.majortype == MEDIATYPE_Audio) || !(type.formattype == FORMAT_CodecBlock)) return std::nullopt;
    if (!type.pbFormat || type.cbFormat < sizeof(CodecBlock)) return std::nullopt;
    CodecDescription description = {};
    std::memcpy(&description.block, type.pbFormat, sizeof(CodecBlock));
    description.extra = std::span<const BYTE>(type.pbFormat, type.cbFormat).subspan(sizeof(CodecBlock));
    return description;
}
