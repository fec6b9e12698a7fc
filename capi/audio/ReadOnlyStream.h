// A stream for the module to read: what all of ours have in common. The object belongs to its maker; counts
// of references are answered and not kept.
#pragma once

#include "platform/base/PlatformResults.h"
#include "platform/com/Stream.h"

class ReadOnlyStream : public vlacwav3::IStream {
public:
    ReadOnlyStream() = default;
    ReadOnlyStream(const ReadOnlyStream&) = delete;
    ReadOnlyStream& operator=(const ReadOnlyStream&) = delete;
    virtual ~ReadOnlyStream() = default;

    int32_t QueryInterface(const vlacwav3::GUID& iid, void** object) override;
    uint32_t AddRef() override { return 1; }
    uint32_t Release() override { return 1; }
    int32_t Seek(vlacwav3::LARGE_INTEGER move, uint32_t origin, vlacwav3::ULARGE_INTEGER* position) override;

    // What a stream for reading alone doesn't do.
    int32_t Write(const void*, uint32_t, uint32_t*) override { return kNotHere; }
    int32_t SetSize(vlacwav3::ULARGE_INTEGER) override { return kNotHere; }
    int32_t CopyTo(IStream*, vlacwav3::ULARGE_INTEGER, vlacwav3::ULARGE_INTEGER*,
                   vlacwav3::ULARGE_INTEGER*) override {
        return kNotHere;
    }
    int32_t Commit(uint32_t) override { return kNotHere; }
    int32_t Revert() override { return kNotHere; }
    int32_t LockRegion(vlacwav3::ULARGE_INTEGER, vlacwav3::ULARGE_INTEGER, uint32_t) override {
        return kNotHere;
    }
    int32_t UnlockRegion(vlacwav3::ULARGE_INTEGER, vlacwav3::ULARGE_INTEGER, uint32_t) override {
        return kNotHere;
    }
    int32_t Stat(vlacwav3::STATSTG*, uint32_t) override { return kNotHere; }
    int32_t Clone(IStream**) override { return kNotHere; }

protected:
    static constexpr uint64_t kEndless = uint64_t{1} << 60;  // the size of what ends nobody knows where

    uint64_t m_place = 0;  // where the next read begins

private:
    static constexpr int32_t kNotHere = vlacwav3::PLATFORM_NOT_IMPLEMENTED;

    virtual uint64_t SizeOfStream() const = 0;  // bytes
};
