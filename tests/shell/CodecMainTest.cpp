#include <gtest/gtest.h>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/shell/CPrivateCodecMain.h"
#include "platform/base/RefPtr.h"

namespace {

TEST(CodecMain, FactoriesRefuseANullReceiver) {
    auto codec = RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain);
    EXPECT_EQ(codec->CreateReader(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(codec->CreateStreamReader(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(codec->CreateWriter(nullptr), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(codec->CreateMetadataEditor(u"a.wav", nullptr), RESULT_BAD_ARGUMENT);
}

TEST(CodecMain, CapabilitiesAppearWhenTheyAreInitialisedAndOnlyOnce) {
    auto codec = RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain);
    EXPECT_FALSE(codec->GetBool(ATTR_CODEC_CAPABILITY_1));
    EXPECT_EQ(codec->GetAttributeCount(), 1u);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(codec->InitCapabilities(), RESULT_OK);
        for (uint32_t id = ATTR_CODEC_CAPABILITY_1; id <= ATTR_CODEC_CAPABILITY_5; ++id)
            EXPECT_TRUE(codec->GetBool(id)) << id;
        EXPECT_EQ(codec->GetAttributeCount(), 6u);
    }
    EXPECT_EQ(std::u16string(codec->GetClassName()), u"CPrivateCodecMain");
}

}  // namespace
