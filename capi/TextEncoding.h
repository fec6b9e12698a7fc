// How the module's objects are told the encoding of a file's texts.
#pragma once

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/attributes/IAttributeContainer64.h"
#include "capi/ModuleFailure.h"

// For the files that the object opens afterwards. Throws Failure, and std::bad_alloc.
inline void SetEncoding(vlacwav3::IAttributeContainer64& object, vlw_text text) {
    struct Row {
        vlw_text text;
        uint32_t encoding;
    };
    constexpr Row kRows[] = {{VLW_TEXT_1252, vlacwav3::INFO_ENCODING_ANSI},
                             {VLW_TEXT_UTF8, vlacwav3::INFO_ENCODING_UTF8},
                             {VLW_TEXT_AUTO, vlacwav3::INFO_ENCODING_EITHER}};
    for (const Row& row : kRows)
        if (row.text == text)
            RequireModule(object.SetLong(vlacwav3::ATTR_INFO_ENCODING, row.encoding),
                          "Setting the encoding of", "the texts");
}
