// How media data moves from filter to filter: samples, the allocators that own them, pins that receive them,
// and sources that are read from. The order of the operations is the platform's.
#pragma once

#include "platform/base/Types.h"
#include "platform/com/Unknown.h"
#include "platform/media/MediaResults.h"
#include "platform/media/MediaTypes.h"

// A buffer on its way, with times and marks. Goes back to its allocator with the last reference.
struct IMediaSample : IUnknown {
    virtual HRESULT GetPointer(BYTE** buffer /*out: valid as long as the sample*/) = 0;
    virtual LONG GetSize() = 0;  // bytes of the buffer
    virtual HRESULT GetTime(REFERENCE_TIME* start /*out*/, REFERENCE_TIME* stop /*out*/) = 0;
    virtual HRESULT SetTime(REFERENCE_TIME* start /*in: null clears*/,
                            REFERENCE_TIME* stop /*in: may be null*/) = 0;
    virtual HRESULT IsSyncPoint() = 0;  // S_OK or S_FALSE, as all of these
    virtual HRESULT SetSyncPoint(BOOL isSyncPoint /*in*/) = 0;
    virtual HRESULT IsPreroll() = 0;
    virtual HRESULT SetPreroll(BOOL isPreroll /*in*/) = 0;
    virtual LONG GetActualDataLength() = 0;  // bytes in use
    virtual HRESULT SetActualDataLength(LONG length /*in*/) = 0;
    virtual HRESULT GetMediaType(AM_MEDIA_TYPE** type /*out: null with S_FALSE where it didn't change*/) = 0;
    virtual HRESULT SetMediaType(AM_MEDIA_TYPE* type /*in: may be null*/) = 0;
    virtual HRESULT IsDiscontinuity() = 0;
    virtual HRESULT SetDiscontinuity(BOOL isDiscontinuity /*in*/) = 0;
    virtual HRESULT GetMediaTime(LONGLONG* start /*out*/, LONGLONG* end /*out*/) = 0;
    virtual HRESULT SetMediaTime(LONGLONG* start /*in: null clears*/, LONGLONG* end /*in*/) = 0;

protected:
    ~IMediaSample() = default;
};
inline constexpr GUID IID_IMediaSample = MakeGuid("56A8689A-0AD4-11CE-B03A-0020AF0BA770");

struct IMediaSample2 : IMediaSample {
    virtual HRESULT GetProperties(DWORD size /*in: bytes*/,
                                  BYTE* properties /*out: AM_SAMPLE2_PROPERTIES*/) = 0;
    virtual HRESULT SetProperties(DWORD size /*in: bytes*/, const BYTE* properties /*in*/) = 0;

protected:
    ~IMediaSample2() = default;
};
inline constexpr GUID IID_IMediaSample2 = MakeGuid("36B73884-C2C8-11CF-8B46-00805F6CEF60");

// A pool of samples that two connected pins have agreed on.
struct IMemAllocator : IUnknown {
    virtual HRESULT SetProperties(ALLOCATOR_PROPERTIES* request /*in*/,
                                  ALLOCATOR_PROPERTIES* actual /*out*/) = 0;
    virtual HRESULT GetProperties(ALLOCATOR_PROPERTIES* properties /*out*/) = 0;
    virtual HRESULT Commit() = 0;
    // Those who wait in GetBuffer fail from here on.
    virtual HRESULT Decommit() = 0;
    // Waits for a free sample unless AM_GBF_NOWAIT is given. Times may be null.
    virtual HRESULT GetBuffer(IMediaSample** sample /*out*/, REFERENCE_TIME* start /*in*/,
                              REFERENCE_TIME* end /*in*/, DWORD flags /*in*/) = 0;
    // For the sample itself.
    virtual HRESULT ReleaseBuffer(IMediaSample* sample /*in*/) = 0;

protected:
    ~IMemAllocator() = default;
};
inline constexpr GUID IID_IMemAllocator = MakeGuid("56A8689C-0AD4-11CE-B03A-0020AF0BA770");

struct IMemAllocatorNotifyCallbackTemp : IUnknown {
    virtual HRESULT NotifyRelease() = 0;

protected:
    ~IMemAllocatorNotifyCallbackTemp() = default;
};
inline constexpr GUID IID_IMemAllocatorNotifyCallbackTemp = MakeGuid("92980B30-C1DE-11D2-ABF5-00A0C905F375");

struct IMemAllocatorCallbackTemp : IMemAllocator {
    virtual HRESULT SetNotify(IMemAllocatorNotifyCallbackTemp* notify /*in: may be null*/) = 0;
    virtual HRESULT GetFreeCount(LONG* free /*out: buffers*/) = 0;

protected:
    ~IMemAllocatorCallbackTemp() = default;
};
inline constexpr GUID IID_IMemAllocatorCallbackTemp = MakeGuid("379A0CF0-C1DE-11D2-ABF5-00A0C905F375");

// An input pin that takes samples.
struct IMemInputPin : IUnknown {
    virtual HRESULT GetAllocator(IMemAllocator** allocator /*out*/) = 0;
    virtual HRESULT NotifyAllocator(IMemAllocator* allocator /*in*/, BOOL readOnly /*in*/) = 0;
    virtual HRESULT GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties /*out*/) = 0;
    // S_OK: go on. S_FALSE: the stream ends here or is being flushed. May block.
    virtual HRESULT Receive(IMediaSample* sample /*in*/) = 0;
    virtual HRESULT ReceiveMultiple(IMediaSample** samples /*in*/, LONG count /*in*/, LONG* done /*out*/) = 0;
    virtual HRESULT ReceiveCanBlock() = 0;  // S_OK or S_FALSE

protected:
    ~IMemInputPin() = default;
};
inline constexpr GUID IID_IMemInputPin = MakeGuid("56A8689D-0AD4-11CE-B03A-0020AF0BA770");

// An output pin that is read from. Times of samples are byte positions times kTimeUnitsPerSecond.
struct IAsyncReader : IUnknown {
    virtual HRESULT RequestAllocator(IMemAllocator* preferred /*in: may be null*/,
                                     ALLOCATOR_PROPERTIES* properties /*in*/,
                                     IMemAllocator** actual /*out*/) = 0;
    virtual HRESULT Request(IMediaSample* sample /*in*/, DWORD_PTR user /*in*/) = 0;
    virtual HRESULT WaitForNext(DWORD milliseconds /*in*/, IMediaSample** sample /*out*/,
                                DWORD_PTR* user /*out*/) = 0;
    virtual HRESULT SyncReadAligned(IMediaSample* sample /*in*/) = 0;
    // S_FALSE: fewer bytes than asked for, and nobody says how many.
    virtual HRESULT SyncRead(LONGLONG position /*in: bytes*/, LONG length /*in: bytes*/,
                             BYTE* buffer /*out*/) = 0;
    virtual HRESULT Length(LONGLONG* total /*out: bytes*/, LONGLONG* available /*out: bytes*/) = 0;
    virtual HRESULT BeginFlush() = 0;
    virtual HRESULT EndFlush() = 0;

protected:
    ~IAsyncReader() = default;
};
inline constexpr GUID IID_IAsyncReader = MakeGuid("56A868AA-0AD4-11CE-B03A-0020AF0BA770");
