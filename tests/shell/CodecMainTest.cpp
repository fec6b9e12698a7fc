#include <gtest/gtest.h>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/shell/CPrivateCodecMain.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "platform/com/RefPtr.h"

namespace {

TEST(CodecMain, ReadersAreNewObjectsThatOutliveTheMainObject) {
    auto codec = RefPtr<CPrivateCodecMain>::Retain(new CPrivateCodecMain);
    RefPtr<IAC3Reader> first;
    RefPtr<IAC3StreamReader> second;
    ASSERT_EQ(codec->CreateReader(first.Put()), RESULT_OK);
    ASSERT_EQ(codec->CreateStreamReader(second.Put()), RESULT_OK);
    codec.Reset();
    EXPECT_NE(first.Get(), second.Get());
    for (const GUID* iid : {&IID_IBase, &IID_IAttributeContainer64, &IID_IAC3Reader, &IID_IAC3StreamReader}) {
        void* same = nullptr;
        EXPECT_EQ(first->QueryInterface(iid, &same), RESULT_OK);
        EXPECT_EQ(same, first.Get());
        EXPECT_EQ(first->Release(), 1u);
    }
    void* none = &codec;
    EXPECT_EQ(first->QueryInterface(&IID_IPrivateCodecMain3, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    first->SetLong(0x02000019, 7);
    EXPECT_EQ(second->GetLong(0x02000019), 0u);
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
