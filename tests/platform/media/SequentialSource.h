// A source of a test's own: bytes in memory that come in order, from the start whenever that is asked for and
// otherwise from where the last read ended, whatever place is asked for. It can be told to misbehave.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>
#include <thread>

#include "platform/media/PinBase.h"
#include "platform/media/TransportInterfaces.h"

class SequentialSource final : public FilterBase {
public:
    explicit SequentialSource(std::vector<uint8_t> bytes)
        : FilterBase(GUID_NULL), m_bytes(std::move(bytes)), m_output(*this) {}

    static constexpr size_t kNever = std::numeric_limits<size_t>::max();
    std::atomic<size_t> failFrom{kNever};   // reads at this byte or after it fail
    std::atomic<size_t> blockFrom{kNever};  // reads at this byte or after it wait until this changes
    size_t atMost = kNever;                 // bytes in one read
    bool isThere = true;                    // or still on its way into the state that it was told
    FILTER_STATE nextRan = State_Stopped;   // state of the filter after it when it was told to run

    HRESULT Run(REFERENCE_TIME start) override {
        OwnerOf(*PeerOf(m_output))->GetState(0, &nextRan);
        const HRESULT result = FilterBase::Run(start);
        return isThere ? result : S_FALSE;
    }
    HRESULT GetState(DWORD milliseconds, FILTER_STATE* state) override {
        const HRESULT result = FilterBase::GetState(milliseconds, state);
        return isThere ? result : VFW_S_STATE_INTERMEDIATE;
    }

private:
    class Output final : public PinBase, public IAsyncReader {
    public:
        explicit Output(SequentialSource& source)
            : PinBase(source, PINDIR_OUTPUT, u"Out"), m_source(source) {}

        HRESULT QueryInterface(const GUID& iid, void** object) override {
            return GiveFace(
                {{IID_IPin, static_cast<IPin*>(this)}, {IID_IAsyncReader, static_cast<IAsyncReader*>(this)}},
                iid, object);
        }
        uint32_t AddRef() override { return PinBase::AddRef(); }
        uint32_t Release() override { return PinBase::Release(); }
        HRESULT RequestAllocator(IMemAllocator*, ALLOCATOR_PROPERTIES*, IMemAllocator**) override {
            return E_NOTIMPL;
        }
        HRESULT Request(IMediaSample*, DWORD_PTR) override { return E_NOTIMPL; }
        HRESULT WaitForNext(DWORD, IMediaSample**, DWORD_PTR*) override { return E_NOTIMPL; }
        HRESULT SyncReadAligned(IMediaSample* sample) override { return m_source.Read(*sample); }
        HRESULT SyncRead(LONGLONG, LONG, BYTE*) override { return E_NOTIMPL; }
        HRESULT Length(LONGLONG* total, LONGLONG* available) override {
            *total = *available = static_cast<LONGLONG>(m_source.m_bytes.size());
            return S_OK;
        }
        HRESULT BeginFlush() override { return S_OK; }
        HRESULT EndFlush() override { return S_OK; }

    private:
        std::vector<MediaType> OfferedTypes() override { return {MediaType(MEDIATYPE_Stream, GUID_NULL)}; }
        HRESULT Connected(IPin&, const AM_MEDIA_TYPE&) override { return S_OK; }
        SequentialSource& m_source;
    };

    std::vector<PinBase*> Pins() override { return {&m_output}; }

    HRESULT Read(IMediaSample& sample) {
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = 0;
        BYTE* buffer = nullptr;
        sample.GetTime(&start, &stop);
        sample.GetPointer(&buffer);
        if (start == 0) m_place = 0;
        while (m_place >= blockFrom) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (m_place >= failFrom) return E_FAIL;
        const auto asked = static_cast<size_t>((stop - start) / kTimeUnitsPerSecond);
        const size_t count = std::min({asked, atMost, m_bytes.size() - m_place});
        std::memcpy(buffer, m_bytes.data() + m_place, count);
        m_place += count;
        sample.SetActualDataLength(static_cast<LONG>(count));
        return count == asked ? S_OK : S_FALSE;
    }

    const std::vector<uint8_t> m_bytes;
    size_t m_place = 0;
    Output m_output;
};
