// One buffer of an allocator, with times and marks. The allocator makes it and deletes it; in between the
// last reference gives it back to its allocator, cleared of its marks. One thread at a time, but references
// from any.
#pragma once

#include "platform/com/ReferenceCount.h"
#include "platform/media/SampleProperties.h"
#include "platform/media/TransportInterfaces.h"

class CBaseAllocator;

class CMediaSample final : public IMediaSample2 {
public:
    // Without a reference; the allocator outlives its samples. `size` in bytes.
    CMediaSample(CBaseAllocator* allocator, BYTE* buffer, LONG size);
    CMediaSample(const CMediaSample&) = delete;
    CMediaSample& operator=(const CMediaSample&) = delete;

    HRESULT QueryInterface(const GUID& iid, void** object) override;
    uint32_t AddRef() override { return m_references.Add(); }
    uint32_t Release() override;

    HRESULT GetPointer(BYTE** buffer) override;
    LONG GetSize() override { return m_size; }
    HRESULT GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
        return m_said.GetTime(start, stop);
    }
    HRESULT SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
        return m_said.SetTime(start, stop);
    }
    HRESULT IsSyncPoint() override { return m_said.IsSet(AM_SAMPLE_SPLICEPOINT); }
    HRESULT SetSyncPoint(BOOL isSyncPoint) override {
        return m_said.Mark(AM_SAMPLE_SPLICEPOINT, isSyncPoint);
    }
    HRESULT IsPreroll() override { return m_said.IsSet(AM_SAMPLE_PREROLL); }
    HRESULT SetPreroll(BOOL isPreroll) override { return m_said.Mark(AM_SAMPLE_PREROLL, isPreroll); }
    LONG GetActualDataLength() override { return m_actual; }
    HRESULT SetActualDataLength(LONG length) override;
    HRESULT GetMediaType(AM_MEDIA_TYPE** type) override;
    HRESULT SetMediaType(AM_MEDIA_TYPE* type) override;
    HRESULT IsDiscontinuity() override { return m_said.IsSet(AM_SAMPLE_DATADISCONTINUITY); }
    HRESULT SetDiscontinuity(BOOL is) override { return m_said.Mark(AM_SAMPLE_DATADISCONTINUITY, is); }
    HRESULT GetMediaTime(LONGLONG* start, LONGLONG* end) override;
    HRESULT SetMediaTime(LONGLONG* start, LONGLONG* end) override;
    HRESULT GetProperties(DWORD size, BYTE* properties) override;
    // Changes nothing if it refuses something, or if there is no memory for the type.
    HRESULT SetProperties(DWORD size, const BYTE* properties) override;

    virtual ~CMediaSample();

private:
    friend class CBaseAllocator;  // chains free samples, gives a sample its first reference

    // Not among AM_SAMPLE_PROPERTY_FLAGS: it is known to the sample alone.
    static constexpr DWORD kMediaTimeValid = 0x20;

    HRESULT CheckProperties(DWORD size, const AM_SAMPLE2_PROPERTIES& properties) const;

    SampleProperties m_said;  // AM_SAMPLE_TYPECHANGED exactly while there is a type
    DWORD m_typeSpecificFlags = 0;
    BYTE* const m_buffer;
    LONG m_actual;  // bytes in use
    const LONG m_size;
    CBaseAllocator* const m_allocator;
    CMediaSample* m_next = nullptr;  // in the allocator's free list
    LONGLONG m_mediaStart = 0;
    LONG m_mediaLength = 0;
    AM_MEDIA_TYPE* m_type = nullptr;  // owned
    DWORD m_streamId = 0;
    ReferenceCount m_references{0};
};
