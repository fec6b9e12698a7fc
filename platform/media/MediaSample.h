// A buffer on its way from filter to filter, made by whoever sends it. It owns its memory, or keeps the owner
// of it, or stands over memory of its maker that outlives it. Holds no marks but the discontinuity and no
// media type: those of the layer's filters don't change. One thread at a time, as the sample is passed on.
#pragma once

#include <memory>
#include <vector>

#include "platform/media/ComObject.h"
#include "platform/media/SampleProperties.h"
#include "platform/media/TransportInterfaces.h"

class MediaSample final : public ComObject<IMediaSample> {
public:
    // Zero bytes that stand after the data, for decoders that read ahead.
    static constexpr size_t kPadding = 64;

    MediaSample() = default;
    MediaSample(BYTE* memory, LONG size /*bytes*/) : m_memory(memory), m_size(size), m_length(size) {}

    // Makes room for `size` bytes of its own, all of them in use, without times or marks.
    BYTE* Resize(size_t size);
    // Stands over memory that `owner` keeps, with its padding, all of it in use, without times or marks.
    void Show(std::shared_ptr<const void> owner, BYTE* memory, size_t size);

    HRESULT QueryInterface(const GUID& iid, void** object) override;
    HRESULT GetPointer(BYTE** buffer) override;
    LONG GetSize() override { return m_size; }
    HRESULT GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
        return m_said.GetTime(start, stop);
    }
    HRESULT SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
        return m_said.SetTime(start, stop);
    }
    HRESULT IsSyncPoint() override { return S_OK; }
    HRESULT SetSyncPoint(BOOL) override { return S_OK; }
    HRESULT IsPreroll() override { return S_FALSE; }
    HRESULT SetPreroll(BOOL) override { return S_OK; }
    LONG GetActualDataLength() override { return m_length; }
    HRESULT SetActualDataLength(LONG length) override;
    HRESULT GetMediaType(AM_MEDIA_TYPE** type) override;
    HRESULT SetMediaType(AM_MEDIA_TYPE* type) override { return type ? E_NOTIMPL : S_OK; }
    HRESULT IsDiscontinuity() override { return m_said.IsSet(AM_SAMPLE_DATADISCONTINUITY); }
    HRESULT SetDiscontinuity(BOOL is) override { return m_said.Mark(AM_SAMPLE_DATADISCONTINUITY, is); }
    HRESULT GetMediaTime(LONGLONG*, LONGLONG*) override { return VFW_E_MEDIA_TIME_NOT_SET; }
    HRESULT SetMediaTime(LONGLONG* start, LONGLONG*) override { return start ? E_NOTIMPL : S_OK; }

private:
    void Use(BYTE* memory, size_t size);

    std::vector<BYTE> m_own;
    std::shared_ptr<const void> m_owner;  // of memory that isn't its own; may be null
    BYTE* m_memory = nullptr;
    LONG m_size = 0;
    LONG m_length = 0;
    SampleProperties m_said;
};
