#include "platform/media/FileSource.h"

#include <algorithm>

#include "platform/file/FilePointer.h"
#include "platform/media/MediaText.h"

namespace {

HRESULT FailWithLastError() {
    constexpr uint32_t kWin32Failure = 0x80070000;
    return static_cast<HRESULT>(kWin32Failure | (GetLastError() & 0xFFFF));
}

}  // namespace

HRESULT FileSource::QueryInterface(const GUID& iid, void** object) {
    const HRESULT result = FilterBase::QueryInterface(iid, object);
    if (result != E_NOINTERFACE) return result;
    return GiveFace({{IID_IFileSourceFilter, static_cast<IFileSourceFilter*>(this)}}, iid, object);
}

HRESULT FileSource::Load(const WCHAR* path, const AM_MEDIA_TYPE*) {
    if (!path) return E_POINTER;
    return AtBorder(ResultOfThrow, [&] {
        const std::lock_guard lock(Lock());
        if (m_file) return E_UNEXPECTED;
        UniqueHandle file = TakeFile(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                                 nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file) return FailWithLastError();
        DWORD high = 0;
        SetLastError(ERROR_SUCCESS);
        const DWORD low = GetFileSize(file.get(), &high);
        if (low == INVALID_FILE_SIZE && GetLastError() != ERROR_SUCCESS) return FailWithLastError();
        m_path = path;
        m_size = static_cast<LONGLONG>(uint64_t{high} << 32 | low);
        m_file = std::move(file);
        return S_OK;
    });
}

HRESULT FileSource::GetCurFile(WCHAR** path, AM_MEDIA_TYPE* type) {
    if (!path) return E_POINTER;
    const std::lock_guard lock(Lock());
    *path = nullptr;
    if (type) *type = MediaType(MEDIATYPE_Stream, GUID_NULL).Detach();
    return m_file ? GiveText(m_path, path) : E_FAIL;
}

HRESULT FileSource::ReadAt(LONGLONG position, LONG length, BYTE* buffer, DWORD& done) {
    done = 0;
    if (position < 0 || length < 0) return E_INVALIDARG;
    const std::lock_guard lock(m_fileLock);
    if (!MoveFilePointer(m_file.get(), position, FILE_BEGIN) ||
        !ReadFile(m_file.get(), buffer, static_cast<DWORD>(length), &done, nullptr))
        return FailWithLastError();
    return done == static_cast<DWORD>(length) ? S_OK : S_FALSE;
}

HRESULT FileSource::Output::QueryInterface(const GUID& iid, void** object) {
    return GiveFace(
        {{IID_IPin, static_cast<IPin*>(this)}, {IID_IAsyncReader, static_cast<IAsyncReader*>(this)}}, iid,
        object);
}

std::vector<MediaType> FileSource::Output::OfferedTypes() {
    if (!m_source.m_file) return {};
    return {MediaType(MEDIATYPE_Stream, GUID_NULL)};
}

HRESULT FileSource::Output::RequestAllocator(IMemAllocator*, ALLOCATOR_PROPERTIES*, IMemAllocator**) {
    return E_NOTIMPL;
}

HRESULT FileSource::Output::SyncReadAligned(IMediaSample* sample) {
    if (!sample) return E_POINTER;
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    BYTE* buffer = nullptr;
    HRESULT result = sample->GetTime(&start, &stop);
    if (SUCCEEDED(result)) result = sample->GetPointer(&buffer);
    if (FAILED(result)) return result;
    const LONGLONG length = (stop - start) / kTimeUnitsPerSecond;
    if (length < 0 || length > sample->GetSize()) return E_INVALIDARG;
    DWORD done = 0;
    result = m_source.ReadAt(start / kTimeUnitsPerSecond, static_cast<LONG>(length), buffer, done);
    sample->SetActualDataLength(static_cast<LONG>(done));
    return result;
}

HRESULT FileSource::Output::SyncRead(LONGLONG position, LONG length, BYTE* buffer) {
    DWORD done = 0;
    return buffer ? m_source.ReadAt(position, length, buffer, done) : E_POINTER;
}

HRESULT FileSource::Output::Length(LONGLONG* total, LONGLONG* available) {
    if (!total) return E_POINTER;
    *total = m_source.m_size;
    if (available) *available = m_source.m_size;
    return S_OK;
}
