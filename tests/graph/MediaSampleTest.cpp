#include <gtest/gtest.h>

#include <cstring>

#include "AudioCodec/graph/filter/CMediaTypeValue.h"
#include "tests/graph/TestAllocator.h"

namespace {

class MediaSample : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(CommitBuffers(*allocator, 1, 100), S_OK);
        sample = TakeSample(*allocator);
        ASSERT_TRUE(sample);
        void* face = nullptr;
        ASSERT_EQ(sample->QueryInterface(IID_IMediaSample2, &face), S_OK);
        sample2 = RefPtr<IMediaSample2>::Adopt(static_cast<IMediaSample2*>(face));
    }
    void TearDown() override {
        sample.Reset();
        sample2.Reset();
        allocator->Decommit();
    }
    HRESULT SetProperties(const AM_SAMPLE2_PROPERTIES& properties, DWORD size) {
        return sample2->SetProperties(size, reinterpret_cast<const BYTE*>(&properties));
    }
    AM_SAMPLE2_PROPERTIES Properties() {
        AM_SAMPLE2_PROPERTIES properties = {};
        EXPECT_EQ(sample2->GetProperties(sizeof(properties), reinterpret_cast<BYTE*>(&properties)), S_OK);
        return properties;
    }

    RefPtr<IMemAllocator> allocator = NewTestAllocator();
    RefPtr<IMediaSample> sample;
    RefPtr<IMediaSample2> sample2;
};

TEST_F(MediaSample, TimesAreToldAsFarAsTheyWereSet) {
    REFERENCE_TIME start = 5, stop = 9, gotStart = 0, gotStop = 0;
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_E_SAMPLE_TIME_NOT_SET);
    EXPECT_EQ(sample->SetTime(&start, &stop), S_OK);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), S_OK);
    EXPECT_EQ(gotStop, 9);
    EXPECT_EQ(sample->SetTime(&start, nullptr), S_OK);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(gotStop, 6);
    EXPECT_EQ(sample->SetTime(nullptr, &stop), S_OK);
    EXPECT_EQ(sample->GetTime(&gotStart, &gotStop), VFW_E_SAMPLE_TIME_NOT_SET);

    EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotStop), VFW_E_MEDIA_TIME_NOT_SET);
    EXPECT_EQ(sample->SetMediaTime(&start, &stop), S_OK);
    EXPECT_EQ(Properties().dwSampleFlags, 0U);  // media times are no business of the flags
    EXPECT_EQ(sample->GetMediaTime(&gotStart, &gotStop), S_OK);
    EXPECT_EQ(gotStart, 5);
    EXPECT_EQ(gotStop, 9);
}

TEST_F(MediaSample, ComesBackWithoutTheMarksOfItsLastUse) {
    AM_MEDIA_TYPE type = CMediaTypeValue().Detach();
    AM_MEDIA_TYPE* got = nullptr;
    EXPECT_EQ(sample->SetMediaType(&type), S_OK);
    EXPECT_EQ(sample->SetDiscontinuity(TRUE), S_OK);
    EXPECT_EQ(sample->GetMediaType(&got), S_OK);
    FreeMediaTypeBlock(got);
    EXPECT_EQ(sample->SetActualDataLength(101), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample->SetActualDataLength(100), S_OK);
    sample.Reset();
    sample2.Reset();
    sample = TakeSample(*allocator, AM_GBF_NOWAIT);
    ASSERT_TRUE(sample);
    EXPECT_EQ(sample->GetMediaType(&got), S_FALSE);
    EXPECT_EQ(got, nullptr);
    EXPECT_EQ(sample->IsDiscontinuity(), S_FALSE);
}

TEST_F(MediaSample, PropertiesAreTakenAsFarAsTheyReachAndWhatIsWrongChangesNothing) {
    constexpr DWORD kAll = sizeof(AM_SAMPLE2_PROPERTIES), kToActual = 16, kToStart = 24, kToStop = 32;
    const AM_SAMPLE2_PROPERTIES before = Properties();
    struct Row {
        void (*spoil)(AM_SAMPLE2_PROPERTIES&);
        DWORD size;
    };
    const Row refused[] = {{[](auto& p) { p.cbData = kAll + 1; }, kAll},
                           {[](auto&) {}, kAll + 1},
                           {[](auto& p) { p.dwSampleFlags = 0x20; }, kAll},
                           {[](auto& p) { p.dwSampleFlags = 0x200; }, kAll},
                           {[](auto& p) { p.dwSampleFlags = AM_SAMPLE_TIMEVALID; }, kToStart},
                           {[](auto& p) { p.lActual = 101; }, kToActual},
                           {[](auto& p) { p.pbBuffer++; }, kAll},
                           {[](auto& p) { p.cbBuffer--; }, kAll}};
    for (const Row& row : refused) {
        AM_SAMPLE2_PROPERTIES spoilt = before;
        spoilt.dwTypeSpecificFlags = 3;
        row.spoil(spoilt);
        EXPECT_EQ(SetProperties(spoilt, row.size), E_INVALIDARG) << &row - refused;
        EXPECT_EQ(Properties().dwTypeSpecificFlags, 0U);
    }
    AM_MEDIA_TYPE type = CMediaTypeValue().Detach();
    AM_SAMPLE2_PROPERTIES wanted = before;
    wanted.dwSampleFlags = AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID | AM_SAMPLE_TYPECHANGED;
    wanted.tStop = 77;
    wanted.dwStreamId = 8;
    wanted.pMediaType = &type;
    wanted.cbData = kToStop;
    EXPECT_EQ(SetProperties(wanted, kAll), S_OK);
    EXPECT_EQ(Properties().tStop, 77);
    EXPECT_EQ(Properties().dwStreamId, 0U);  // behind cbData
    AM_MEDIA_TYPE* got = nullptr;
    EXPECT_EQ(sample->GetMediaType(&got), S_FALSE);  // a flag alone makes no type
    wanted.cbData = kAll;
    EXPECT_EQ(SetProperties(wanted, kAll), S_OK);
    EXPECT_EQ(Properties().dwStreamId, 8U);
    EXPECT_EQ(SetProperties(Properties(), kAll), S_OK);  // with its own type
    EXPECT_EQ(sample->GetMediaType(&got), S_OK);
    FreeMediaTypeBlock(got);

    BYTE few[3] = {9, 9, 9};
    EXPECT_EQ(sample2->SetProperties(3, nullptr), S_OK);
    EXPECT_EQ(sample2->GetProperties(0, nullptr), S_OK);
    EXPECT_EQ(sample2->GetProperties(2, few), S_OK);
    EXPECT_EQ(few[2], 9);
}

}  // namespace
