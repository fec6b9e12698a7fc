// A stream over bytes in memory, for whoever reads from streams alone. It borrows the bytes, which must
// outlive it, until it has to grow: then it moves into memory of its own. References may be taken and dropped
// on any thread, for all else one thread at a time.
#pragma once

#include <memory>

#include "platform/base/Types.h"
#include "platform/com/ReferenceCount.h"
#include "platform/com/Stream.h"

// Flag of Stat: without the name.
inline constexpr uint32_t STATFLAG_NONAME = 1;
inline constexpr DWORD STGTY_STREAM = 2;

class CMemoryStream : public IStream {
public:
    // One reference. The name, may be null, is copied (and lost where there is no memory for it); `mode` is
    // only told by Stat. *result becomes 0.
    CMemoryStream(const char16_t* name, uint8_t* data, uint32_t size /*bytes*/, uint32_t mode,
                  HRESULT* result);
    CMemoryStream(const CMemoryStream&) = delete;
    CMemoryStream& operator=(const CMemoryStream&) = delete;

    HRESULT QueryInterface(const GUID& iid, void** object) override;
    uint32_t AddRef() override { return m_references.Add(); }
    uint32_t Release() override {
        return m_references.Drop([this] { delete this; });
    }
    // S_FALSE if fewer bytes came than were asked for.
    HRESULT Read(void* buffer, uint32_t size, uint32_t* done) override;
    // Grows the stream where it must; what lies between its end and the position becomes 0.
    HRESULT Write(const void* buffer, uint32_t size, uint32_t* done) override;
    // Also to places after the end. E_INVALIDARG beyond 32 bits.
    HRESULT Seek(LARGE_INTEGER move, uint32_t origin, ULARGE_INTEGER* position) override;
    // A smaller size only lowers the number; a larger one always takes a new block. E_INVALIDARG beyond 32
    // bits, E_OUTOFMEMORY, and nothing has changed.
    HRESULT SetSize(ULARGE_INTEGER size) override;
    HRESULT CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* read,
                   ULARGE_INTEGER* written) override;
    HRESULT Commit(uint32_t flags) override;
    HRESULT Revert() override;
    HRESULT LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, uint32_t type) override;
    HRESULT UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, uint32_t type) override;
    // The name goes back by SysFreeString.
    HRESULT Stat(STATSTG* status, uint32_t flags) override;
    HRESULT Clone(IStream** copy) override;
    virtual ~CMemoryStream();  // by Release

private:
    uint32_t BytesLeft() const { return m_position < m_size ? m_size - m_position : 0; }

    ReferenceCount m_references{1};
    uint8_t* m_data;
    uint32_t m_size;          // bytes
    uint32_t m_position = 0;  // may lie after the end
    uint32_t m_mode;
    FILETIME m_created = {};
    std::unique_ptr<char16_t[]> m_name;  // or null
    bool m_ownsData = false;             // m_data goes with the object
};
