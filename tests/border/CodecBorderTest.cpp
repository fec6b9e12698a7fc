// The codec main object as a host meets it: by path, by export, by the slots of its table of operations.
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>

#include "AudioCodec/attributes/AttributeIds.h"
#include "AudioCodec/attributes/StoreTypes.h"
#include "AudioCodec/metadata/IAC3Metadata.h"
#include "AudioCodec/metadata/IAC3MetadataEditor.h"
#include "AudioCodec/wave/IAC3StreamReader.h"
#include "platform/base/Types.h"
#include "tests/border/LoadedModule.h"
#include "tests/support/ByteStream.h"
#include "tests/support/ScopedFile.h"
#include "tests/support/WavImage.h"

namespace {

class CodecBorder : public testing::Test {
protected:
    LoadedModule m_module{VL_MODULE};
};

TEST_F(CodecBorder, GetClassObjectGivesItsCodesAndClearsTheReceiver) {
    GUID otherClass = CLSID_VlACWav3;
    otherClass.Data4[7] ^= 1;
    struct Row {
        const GUID* clsid;
        const GUID* iid;
        Result result;
    };
    const Row rows[] = {
        {&otherClass, &IID_IBase, RESULT_NOT_FOUND},
        {nullptr, &IID_IBase, RESULT_NOT_FOUND},
        {&CLSID_VlACWav3, nullptr, E_POINTER},
        {&CLSID_VlACWav3, &CLSID_VlACWav3, E_NOINTERFACE},  // the sanitizers tell if an object stays behind
    };
    for (const Row& row : rows) {
        void* object = this;
        EXPECT_EQ(m_module.Create(row.clsid, row.iid, &object), row.result);
        EXPECT_EQ(object, nullptr);
        EXPECT_EQ(m_module.Create(row.clsid, row.iid, nullptr), RESULT_BAD_ARGUMENT);
    }
    EXPECT_EQ(m_module.CreateCodec()->QueryInterface(&IID_IBase, nullptr), E_POINTER);
}

// A stream that never comes back once it has given all that it has.
struct EndlessStream : ByteStream {
    using ByteStream::ByteStream;
    HRESULT Read(void* buffer, uint32_t size, uint32_t* done) override {
        const HRESULT result = ByteStream::Read(buffer, size, done);
        for (; *done == 0; pause()) isEndless = true;
        return result;
    }
    std::atomic<bool> isEndless = false;
};

// The system ends a cancelled thread by something like an exception, which nobody may swallow.
TEST_F(CodecBorder, AThreadThatIsCancelledInAStreamOfTheHostsEndsAtOnce) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer doesn't follow a thread that is ended";
#endif
    RefPtr<IAC3StreamReader> reader;
    ASSERT_EQ(m_module.CreateCodec()->CreateStreamReader(reader.Put()), RESULT_OK);
    EndlessStream stream(WavImage().Fmt(1, 1, 8000, 16).Header("data", 8).Image());
    int16_t samples[8] = {};
    uint32_t frames = 0;
    std::thread blocked([&] {
        reader->OpenStream(&stream, 0);
        reader->SetOutputFormat(2, 44100, 2);
        reader->Read(samples, 8, &frames, nullptr);
    });
    while (!stream.isEndless) std::this_thread::yield();
    pthread_cancel(blocked.native_handle());
    blocked.join();
    EXPECT_EQ(reader->Close(), RESULT_OK);
}

TEST_F(CodecBorder, AThreadThatIsCancelledElsewhereEndsAfterTheCall) {
    const auto codec = m_module.CreateCodec();
    const ScopedFile file(WavImage().Fmt(1, 1, 8000, 16).Data({1, 2, 3}).Image());
    uint32_t frames = 0;
    bool isDone = false;
    std::thread([&] {
        pthread_cancel(pthread_self());
        RefPtr<IAC3StreamReader> reader;
        codec->CreateStreamReader(reader.Put());
        reader->Open(file.Wide().c_str(), 0);
        int16_t samples[16] = {};
        reader->Read(samples, 8, &frames, nullptr);
        reader.Reset();
        RefPtr<IAC3MetadataEditor> editor;
        codec->CreateMetadataEditor(file.Wide().c_str(), editor.Put());
        editor->Open();
        RefPtr<IAC3Metadata> tags;
        editor->GetMetadata(tags.Put());
        tags->SetString(ATTR_TITLE, u"title");
        editor->SetMetadata(tags.Get());
        editor->Save();
        editor.Reset();
        isDone = true;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    }).join();
    EXPECT_TRUE(isDone);
    EXPECT_EQ(frames, 8u);
}

// Identifiers are found by value: these lie in another module.
void ExpectTheOneObject(IBase& object, std::initializer_list<const GUID*> interfaces) {
    for (const GUID* iid : interfaces) {
        void* same = nullptr;
        EXPECT_EQ(object.QueryInterface(iid, &same), RESULT_OK);
        EXPECT_EQ(same, &object);
        EXPECT_EQ(object.Release(), 1u);
    }
}

TEST_F(CodecBorder, EveryInterfaceIsTheOneObjectWithOneReference) {
    for (const GUID* iid : {&IID_IBase, &IID_IAttributeContainer64, &IID_IPrivateCodecMain3}) {
        RefPtr<IBase> object;
        ASSERT_EQ(m_module.Create(&CLSID_VlACWav3, iid, reinterpret_cast<void**>(object.Put())), RESULT_OK);
        ExpectTheOneObject(*object, {&IID_IBase, &IID_IAttributeContainer64, &IID_IPrivateCodecMain3});
    }
}

TEST_F(CodecBorder, ReadersAreNewObjectsThatOutliveTheMainObject) {
    RefPtr<IAC3Reader> first;
    RefPtr<IAC3StreamReader> second;
    {
        const auto codec = m_module.CreateCodec();
        ASSERT_EQ(codec->CreateReader(first.Put()), RESULT_OK);
        ASSERT_EQ(codec->CreateStreamReader(second.Put()), RESULT_OK);
    }
    for (IBase* const reader : {static_cast<IBase*>(first.Get()), static_cast<IBase*>(second.Get())}) {
        ExpectTheOneObject(*reader,
                           {&IID_IBase, &IID_IAttributeContainer64, &IID_IAC3Reader, &IID_IAC3StreamReader});
        void* none = this;
        EXPECT_EQ(reader->QueryInterface(&IID_IPrivateCodecMain3, &none), E_NOINTERFACE);
        EXPECT_EQ(none, nullptr);
    }
    first->SetLong(ATTR_YEAR, 7);
    EXPECT_EQ(second->GetLong(ATTR_YEAR), 0u);
}

TEST_F(CodecBorder, EachCallMakesAnObjectWithAStoreOfItsOwn) {
    const auto first = m_module.CreateCodec();
    const auto second = m_module.CreateCodec();
    EXPECT_EQ(first->GetAttributeCount(), 1u);
    char16_t* name = nullptr;
    ASSERT_EQ(first->GetString(ATTR_CODEC_SHORT_NAME, &name), RESULT_OK);
    EXPECT_EQ(std::u16string(name), u"WAV");
    second->Free(name);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(first->InitCapabilities(), RESULT_OK);
        for (uint32_t id = ATTR_CODEC_CAPABILITY_1; id <= ATTR_CODEC_CAPABILITY_5; ++id)
            EXPECT_TRUE(first->GetBool(id)) << id;
        EXPECT_EQ(first->GetAttributeCount(), 6u);
    }
    EXPECT_FALSE(second->GetBool(ATTR_CODEC_CAPABILITY_5));
}

TEST_F(CodecBorder, CodecGuidIsTheClass) {
    auto* const getGuid = m_module.Find<Result(GUID*)>("GetCodecGUID");
    GUID guid{};
    EXPECT_EQ(getGuid(&guid), RESULT_OK);
    EXPECT_EQ(std::memcmp(&guid, "\x7D\x81\xB5\x16\xBF\x48\x98\x44\x8D\x32\x5E\xC4\xF7\x5B\x0A\x3A", 16), 0);
}

// A host compiled long ago calls by number: an operation that moved shows here, though every header agrees.
class CodecSlots : public CodecBorder {
protected:
    template <class R, class... Arguments>
    R Call(size_t slot, Arguments... arguments) {
        using Operation = R (*)(IBase*, Arguments...);
        void* const* const table = *reinterpret_cast<void* const* const*>(m_codec.Get());
        return reinterpret_cast<Operation>(table[slot])(m_codec.Get(), arguments...);
    }

    const RefPtr<IPrivateCodecMain3> m_codec = m_module.CreateCodec();
};

TEST_F(CodecSlots, OperationsStandInTheOrderOfTheBorder) {
    void* const self = m_codec.Get();
    const auto other = m_module.CreateCodec();
    const uint32_t longs[] = {1, 2, 3};
    const uint64_t wides[] = {4, 5};
    const uint8_t bytes[] = {6};
    void* const pointers[] = {self, nullptr, self, self};
    EXPECT_EQ(Call<uint32_t>(1), 2u);  // AddRef
    EXPECT_EQ(Call<uint32_t>(2), 1u);  // Release
    void* block = Call<void*>(3, uint32_t{8});
    EXPECT_TRUE(block);
    Call<void>(4, block);
    EXPECT_EQ(Call<Result>(9, 10u, 5u), RESULT_OK);                             // SetLong
    EXPECT_EQ(Call<Result>(11, 11u, uint8_t{1}), RESULT_OK);                    // SetBool
    EXPECT_EQ((Call<Result>(13, 12u, &longs[0], 3u)), RESULT_OK);               // SetLongArray
    EXPECT_EQ(Call<Result>(15, 13u, u"text"), RESULT_OK);                       // SetString
    EXPECT_EQ((Call<Result>(17, 14u, &bytes[0], 1u)), RESULT_OK);               // SetData
    EXPECT_EQ(Call<Result>(22, 15u, uint64_t{1} << 40), RESULT_OK);             // SetLong64
    EXPECT_EQ((Call<Result>(24, 16u, &wides[0], 2u)), RESULT_OK);               // SetLong64Array
    EXPECT_EQ(Call<Result>(26, 17u, self), RESULT_OK);                          // SetPointer
    EXPECT_EQ((Call<Result>(28, 18u, &pointers[0], 4u)), RESULT_OK);            // SetPointerArray
    EXPECT_EQ(Call<uint32_t>(5), 10u);                                          // GetAttributeCount
    EXPECT_STREQ(Call<const char*>(7, 0x02000001u), "0x02000001 (type:LONG)");  // GetAttributeIdText
    uint32_t id = 0, type = 0;
    EXPECT_EQ((Call<Result>(6, 3u, &id, &type)), RESULT_OK);  // GetAttributeByIndex
    EXPECT_EQ(std::pair(id, type), std::pair(13u, STORE_STRING));
    EXPECT_EQ(Call<uint32_t>(8, 10u), 5u);                  // GetLong
    EXPECT_TRUE(Call<bool>(10, 11u));                       // GetBool
    EXPECT_EQ(Call<uint64_t>(23, 15u), uint64_t{1} << 40);  // GetLong64
    void* given = nullptr;
    EXPECT_EQ(Call<Result>(27, 17u, &given), RESULT_OK);  // GetPointer
    EXPECT_EQ(given, self);
    EXPECT_EQ(Call<Result>(14, 13u, &given), RESULT_OK);  // GetString
    EXPECT_EQ(std::u16string(static_cast<char16_t*>(given)), u"text");
    Call<void>(4, given);
    struct {
        size_t slot;
        uint32_t id, count;
    } const arrays[] = {
        {12, 12, 3}, {16, 14, 1}, {25, 16, 2}, {29, 18, 4}};  // Get: Long, Data, Long64, Pointer
    for (const auto& row : arrays) {
        uint32_t count = 0;
        EXPECT_EQ((Call<Result>(row.slot, row.id, &given, &count)), RESULT_OK);
        EXPECT_EQ(count, row.count);
        Call<void>(4, given);
    }
    EXPECT_EQ((Call<Result>(21, &IID_IBase, other.Get(), uint8_t{1})), RESULT_OK);  // AddInterface
    EXPECT_EQ(Call<uint32_t>(18), 1u);                                              // GetInterfaceCount
    EXPECT_EQ(Call<uint32_t>(19, &IID_IBase), 1u);                                  // GetInterfaceCountById
    EXPECT_EQ((Call<Result>(20, &IID_IBase, 0u, &given)), RESULT_OK);               // GetInterface
    EXPECT_EQ(given, other.Get());
    EXPECT_EQ(other->Release(), 2u);
    EXPECT_EQ((Call<Result>(31, &IID_IBase, other.Get())), RESULT_OK);  // RemoveInterface
    other->SetString(0x04000001, u"copied");
    EXPECT_EQ(Call<uint32_t>(32, 0x04000001u, other.Get()), 12u);  // CopyAttribute
    for (const size_t factory : {size_t{33}, size_t{34}, size_t{37}})
        EXPECT_EQ(Call<Result>(factory, static_cast<void**>(nullptr)), RESULT_BAD_ARGUMENT);
    EXPECT_EQ((Call<Result>(35, u"a.wav", static_cast<void**>(nullptr))), RESULT_BAD_ARGUMENT);
    EXPECT_EQ(Call<Result>(36), RESULT_NOT_SUPPORTED);
    EXPECT_EQ(Call<Result>(38), RESULT_OK);  // InitCapabilities
    EXPECT_TRUE(Call<bool>(10, ATTR_CODEC_CAPABILITY_1));
    // 39 and 40 are the two forms of the destructor.
    EXPECT_EQ((Call<Result>(41, &IID_IBase, &given)), RESULT_OK);  // InternalQueryInterface
    EXPECT_EQ(given, self);
    m_codec->Release();
    EXPECT_EQ(std::u16string(Call<const char16_t*>(42)), u"CPrivateCodecMain");
    Call<void>(30);  // Clear
    EXPECT_EQ(m_codec->GetAttributeCount(), 0u);
}

}  // namespace
