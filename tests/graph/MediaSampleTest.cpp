#include <gtest/gtest.h>

#include "tests/graph/TestFilter.h"

namespace {

class MediaSample : public testing::Test {
protected:
    static constexpr DWORD kAll = sizeof(AM_SAMPLE2_PROPERTIES);

    MediaSample() {
        CommitBuffers(*allocator, 1, 100);
        Take();
    }
    ~MediaSample() override {
        sample.Reset();
        allocator->Decommit();
    }
    void Take() {
        sample = Ask<IMediaSample2>(TakeSample(*allocator, AM_GBF_NOWAIT).Get(), IID_IMediaSample2);
    }
    HRESULT SetProperties(const AM_SAMPLE2_PROPERTIES& properties, DWORD size = kAll) {
        return sample->SetProperties(size, reinterpret_cast<const BYTE*>(&properties));
    }
    AM_SAMPLE2_PROPERTIES Properties() {
        AM_SAMPLE2_PROPERTIES properties = {};
        EXPECT_EQ(sample->GetProperties(kAll, reinterpret_cast<BYTE*>(&properties)), S_OK);
        return properties;
    }

    AM_MEDIA_TYPE type = {};
    RefPtr<IMemAllocator> allocator = NewTestAllocator();
    RefPtr<IMediaSample2> sample;
};

TEST_F(MediaSample, TimesAreToldAsFarAsTheyWereSet) {
    REFERENCE_TIME start = 5, stop = 9, gotStart = 0, gotStop = 0;
    sample->SetTime(&start, &stop);
    sample->SetTime(&start, nullptr);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(gotStop, 6);
    sample->SetTime(nullptr, &stop);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_E_SAMPLE_TIME_NOT_SET);
}

TEST_F(MediaSample, ComesBackWithoutTheMarksOfItsLastUse) {
    AM_MEDIA_TYPE* copy = nullptr;
    EXPECT_EQ(sample->SetMediaType(&type), S_OK);
    EXPECT_EQ(sample->GetMediaType(&copy), S_OK);
    FreeMediaTypeBlock(copy);
    EXPECT_EQ(sample->SetDiscontinuity(TRUE), S_OK);
    EXPECT_EQ(sample->SetActualDataLength(101), VFW_E_BUFFER_OVERFLOW);
    sample.Reset();
    Take();
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->GetMediaType(&copy), S_FALSE);
    EXPECT_EQ(Properties().dwSampleFlags, 0U);
}

TEST_F(MediaSample, PropertiesAreTakenAsFarAsTheyReachAndWhatIsWrongChangesNothing) {
    constexpr DWORD kToStart = 24, kToStop = 32;
    struct Row {
        void (*spoil)(AM_SAMPLE2_PROPERTIES&);
        DWORD size;
    };
    const Row refused[] = {{[](auto& p) { p.cbData++; }, kAll},
                           {[](auto& p) { p.dwSampleFlags = 0x20; }, kAll},
                           {[](auto& p) { p.dwSampleFlags = AM_SAMPLE_TIMEVALID; }, kToStart},
                           {[](auto& p) { p.lActual = 101; }, kToStart},
                           {[](auto& p) { p.pbBuffer++; }, kAll},
                           {[](auto& p) { p.cbBuffer--; }, kAll}};
    AM_SAMPLE2_PROPERTIES wanted = Properties();
    wanted.dwTypeSpecificFlags = 3;
    for (const Row& row : refused) {
        AM_SAMPLE2_PROPERTIES spoilt = wanted;
        row.spoil(spoilt);
        EXPECT_EQ(SetProperties(spoilt, row.size), E_INVALIDARG) << &row - refused;
        EXPECT_EQ(Properties().dwTypeSpecificFlags, 0U);
    }
    wanted.dwSampleFlags = AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID | AM_SAMPLE_TYPECHANGED;
    wanted.tStop = 77;
    wanted.dwStreamId = 8;
    wanted.pMediaType = &type;
    wanted.cbData = kToStop;
    EXPECT_EQ(SetProperties(wanted), S_OK);
    EXPECT_EQ(Properties().tStop, 77);
    EXPECT_EQ(Properties().dwStreamId, 0U);                             // after cbData
    EXPECT_EQ(Properties().dwSampleFlags & AM_SAMPLE_TYPECHANGED, 0U);  // a flag alone makes no type
    wanted.cbData = kAll;
    EXPECT_EQ(SetProperties(wanted), S_OK);
    EXPECT_EQ(SetProperties(Properties()), S_OK);  // with its own type
    EXPECT_EQ(Properties().dwSampleFlags, wanted.dwSampleFlags);
}

}  // namespace
