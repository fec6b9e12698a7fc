#include "AudioCodec/metadata/CMemoryStream.h"

#include <algorithm>
#include <limits>
#include <new>
#include <string>

#include "platform/base/SystemTime.h"
#include "platform/com/TaskText.h"

namespace {

constexpr uint32_t kCopyBlock = 2048;  // bytes
constexpr uint64_t kMaxSize = std::numeric_limits<uint32_t>::max();

std::unique_ptr<char16_t[]> CopyName(const char16_t* name) {
    if (!name) return nullptr;
    const size_t size = std::char_traits<char16_t>::length(name) + 1;
    std::unique_ptr<char16_t[]> copy(new (std::nothrow) char16_t[size]);
    if (copy) std::copy_n(name, size, copy.get());
    return copy;
}

void SetIfGiven(ULARGE_INTEGER* counter, uint64_t value) {
    if (counter) counter->QuadPart = value;
}

}  // namespace

CMemoryStream::CMemoryStream(const char16_t* name, uint8_t* data, uint32_t size, uint32_t mode,
                             HRESULT* result)
    : m_data(data), m_size(data ? size : 0), m_mode(mode), m_name(CopyName(name)) {
    GetSystemTimeAsFileTime(&m_created);
    *result = S_OK;
}

CMemoryStream::~CMemoryStream() {
    if (m_ownsData) delete[] m_data;
}

HRESULT CMemoryStream::QueryInterface(const GUID& iid, void** object) {
    if (!object) return E_POINTER;
    const bool known = iid == IID_IUnknown || iid == IID_IStream || iid == IID_ISequentialStream;
    *object = known ? static_cast<IStream*>(this) : nullptr;
    if (!known) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

HRESULT CMemoryStream::Read(void* buffer, uint32_t size, uint32_t* done) {
    const uint32_t count = std::min(size, BytesLeft());
    if (count > 0) std::copy_n(m_data + m_position, count, static_cast<uint8_t*>(buffer));
    m_position += count;
    if (done) *done = count;
    return count == size ? S_OK : S_FALSE;
}

HRESULT CMemoryStream::Write(const void* buffer, uint32_t size, uint32_t* done) {
    ULARGE_INTEGER end = {};
    end.QuadPart = uint64_t{m_position} + size;
    if (end.QuadPart > m_size)
        if (const HRESULT result = SetSize(end); FAILED(result)) return result;
    const uint32_t count = std::min(size, BytesLeft());
    if (count > 0) std::copy_n(static_cast<const uint8_t*>(buffer), count, m_data + m_position);
    m_position += count;
    if (done) *done = count;
    return count == size ? S_OK : S_FALSE;
}

HRESULT CMemoryStream::Seek(LARGE_INTEGER move, uint32_t origin, ULARGE_INTEGER* position) {
    const uint32_t origins[] = {0, m_position, m_size};  // STREAM_SEEK_SET, _CUR, _END
    if (origin >= std::size(origins)) return E_INVALIDARG;
    // Unsigned, so that a place before the start is one far past the end.
    const uint64_t target = origins[origin] + static_cast<uint64_t>(move.QuadPart);
    if (target > kMaxSize) return E_INVALIDARG;
    m_position = static_cast<uint32_t>(target);
    SetIfGiven(position, target);
    return S_OK;
}

HRESULT CMemoryStream::SetSize(ULARGE_INTEGER size) {
    if (size.QuadPart > kMaxSize) return E_INVALIDARG;
    const auto newSize = static_cast<uint32_t>(size.QuadPart);
    if (newSize > m_size) {
        auto* block = new (std::nothrow) uint8_t[newSize]();
        if (!block) return E_OUTOFMEMORY;
        if (m_size > 0) std::copy_n(m_data, m_size, block);
        if (m_ownsData) delete[] m_data;
        m_data = block;
        m_ownsData = true;
    }
    m_size = newSize;
    return S_OK;
}

HRESULT CMemoryStream::CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* read,
                              ULARGE_INTEGER* written) {
    SetIfGiven(read, 0);
    SetIfGiven(written, 0);
    if (!target) return E_POINTER;
    uint8_t block[kCopyBlock];
    uint64_t total = 0;
    while (total < size.QuadPart) {
        uint32_t taken = 0;
        const HRESULT got =
            Read(block, static_cast<uint32_t>(std::min<uint64_t>(kCopyBlock, size.QuadPart - total)), &taken);
        if (FAILED(got)) return got;
        if (taken == 0) break;  // the end
        SetIfGiven(read, total + taken);
        uint32_t given = 0;
        const HRESULT put = target->Write(block, taken, &given);
        if (FAILED(put)) return put;
        SetIfGiven(written, total + given);
        if (given < taken) return E_FAIL;
        total += taken;
    }
    return S_OK;
}

HRESULT CMemoryStream::Commit(uint32_t /*flags*/) { return S_OK; }
HRESULT CMemoryStream::Revert() { return E_NOTIMPL; }
HRESULT CMemoryStream::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, uint32_t) { return E_NOTIMPL; }
HRESULT CMemoryStream::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, uint32_t) { return E_NOTIMPL; }
HRESULT CMemoryStream::Clone(IStream** /*copy*/) { return E_NOTIMPL; }

HRESULT CMemoryStream::Stat(STATSTG* status, uint32_t flags) {
    if (!status) return E_POINTER;
    *status = {};
    if (!(flags & STATFLAG_NONAME)) {
        status->pwcsName = SysAllocString(m_name ? m_name.get() : u"");
        if (!status->pwcsName) return E_OUTOFMEMORY;
    }
    status->type = STGTY_STREAM;
    status->cbSize.QuadPart = m_size;
    status->mtime = status->ctime = status->atime = m_created;
    status->grfMode = m_mode;
    return S_OK;
}
