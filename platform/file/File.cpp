#include "platform/file/File.h"

#include <iterator>
#include <limits>
#include <memory>

#include "platform/base/Border.h"
#include "platform/base/LastError.h"
#include "platform/base/Utf.h"
#include "platform/file/ErrorTable.h"
#include "platform/file/FileObject.h"
#include "platform/file/ShareMarkers.h"

namespace {

constexpr DWORD kKnownAccess = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kKnownShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
constexpr DWORD kKnownFileFlags =
    FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE;

struct Disposition {
    DWORD id;
    Creation creation;
    bool empties;
};
constexpr Disposition kDispositions[] = {
    {CREATE_NEW, Creation::MustBeNew, false},
    {CREATE_ALWAYS, Creation::IfMissing, true},
    {OPEN_EXISTING, Creation::Never, false},
    {OPEN_ALWAYS, Creation::IfMissing, false},
};

HANDLE NoFileOnThrow(bool /*noMemory*/) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
}

BOOL FailWithErrno(int error) { return FailWith(ErrorFromErrno(error)); }

// The file behind a handle that has all rights of `access`; null with a last error.
FileObject* FileWith(HANDLE handle, DWORD access) {
    auto* file = HandleObject::From<FileObject>(handle);
    if (file && (file->m_access & access) != access) {
        SetLastError(ERROR_ACCESS_DENIED);
        return nullptr;
    }
    return file;
}

const Disposition* FindDisposition(DWORD id) {
    for (const Disposition& row : kDispositions)
        if (row.id == id) return &row;
    return nullptr;
}

// A device has no contents to empty and is shared by nature.
int ShareAndEmpty(FileObject& object, DWORD access, DWORD share, bool empties) {
    const SystemFile& file = object.m_file;
    if (!file.IsRegular()) return 0;
    const ShareMode mode = {(access & GENERIC_READ) != 0, (access & GENERIC_WRITE) != 0,
                            (share & FILE_SHARE_READ) == 0, (share & FILE_SHARE_WRITE) == 0};
    bool isHeld = false;
    if (const int error = TakeShareMode(file, mode, isHeld)) return error;
    object.m_isSteady = isHeld && mode.denyWrite && !mode.write;
    if (object.m_isSteady) object.m_ahead.TakeMemory();
    int64_t size = 0;
    if (const int error = empties ? file.Size(size) : 0) return error;
    return size != 0 ? file.Resize(0) : 0;
}

std::unique_ptr<FileObject> OpenFile(const WCHAR* path, DWORD access, DWORD share, const Disposition& how,
                                     bool nameless) {
    auto object = std::make_unique<FileObject>();
    object->m_access = access;
    const OpenMode mode = {(access & GENERIC_READ) != 0, (access & GENERIC_WRITE) != 0,
                           nameless ? Creation::Nameless : how.creation};
    int error = object->m_file.Open(Utf::ToUtf8(path), mode);
    if (error == 0) error = ShareAndEmpty(*object, access, share, how.empties);
    if (error == 0) return object;
    object.reset();
    FailWithErrno(error);
    return nullptr;
}

// Where a move leads: false with a last error if to no place.
bool FindPlace(const FileObject& file, int64_t distance, DWORD method, int64_t& place) {
    int64_t origin = 0;
    if (method == FILE_CURRENT) {
        origin = file.m_place;
    } else if (method == FILE_END) {
        if (const int error = file.m_file.Size(origin)) return FailWithErrno(error);
    } else if (method != FILE_BEGIN) {
        return FailWith(ERROR_INVALID_PARAMETER);
    }
    if (distance > std::numeric_limits<int64_t>::max() - origin) return FailWith(ERROR_INVALID_PARAMETER);
    place = origin + distance;
    return place >= 0 || FailWith(ERROR_NEGATIVE_SEEK);
}

int64_t JoinDistance(LONG low, const LONG* high) {
    if (!high) return low;
    return static_cast<int64_t>(uint64_t{static_cast<uint32_t>(*high)} << 32 | static_cast<uint32_t>(low));
}

constexpr DWORD LowHalf(int64_t value) { return static_cast<DWORD>(value); }
constexpr DWORD HighHalf(int64_t value) { return static_cast<DWORD>(static_cast<uint64_t>(value) >> 32); }

}  // namespace

HANDLE CreateFileW(const WCHAR* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                   DWORD disposition, DWORD flagsAndAttributes, HANDLE templateFile) {
    const Disposition* how = FindDisposition(disposition);
    const bool unknown =
        !how || (access & ~kKnownAccess) || (share & ~kKnownShare) || (flagsAndAttributes & ~kKnownFileFlags);
    const bool nameless = (flagsAndAttributes & FILE_FLAG_DELETE_ON_CLOSE) != 0;
    const bool nothingToDo = access == 0 || (how && how->empties && !(access & GENERIC_WRITE)) ||
                             (nameless && disposition == OPEN_EXISTING);
    if (unknown || nothingToDo || security || templateFile) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    if (!path || !*path) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    return AtBorder(NoFileOnThrow, [&] {
        auto file = OpenFile(path, access, share, *how, nameless);
        return file ? file.release()->AsHandle() : INVALID_HANDLE_VALUE;
    });
}

HANDLE CreateFileA(const char* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                   DWORD disposition, DWORD flagsAndAttributes, HANDLE templateFile) {
    return AtBorder(NoFileOnThrow, [&] {
        return CreateFileW(path ? Utf::FromUtf8(path).c_str() : nullptr, access, share, security, disposition,
                           flagsAndAttributes, templateFile);
    });
}

BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* done, OVERLAPPED* overlapped) {
    if (done) *done = 0;
    FileObject* object = FileWith(file, GENERIC_READ);
    if (!object) return FALSE;
    if (overlapped || (!buffer && size != 0)) return FailWith(ERROR_INVALID_PARAMETER);
    size_t count = 0;
    const int error = object->m_isSteady
                          ? object->m_ahead.ReadAt(object->m_file, buffer, size, object->m_place, count)
                          : object->m_file.ReadAt(buffer, size, object->m_place, count);
    if (error != 0) return FailWithErrno(error);
    object->m_place += static_cast<int64_t>(count);
    if (done) *done = static_cast<DWORD>(count);
    return TRUE;
}

BOOL WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* done, OVERLAPPED* overlapped) {
    if (done) *done = 0;
    FileObject* object = FileWith(file, GENERIC_WRITE);
    if (!object) return FALSE;
    if (overlapped || (!buffer && size != 0)) return FailWith(ERROR_INVALID_PARAMETER);
    size_t count = 0;
    const int error = object->m_file.WriteAt(buffer, size, object->m_place, count);
    object->m_place += static_cast<int64_t>(count);
    if (done) *done = static_cast<DWORD>(count);
    return error == 0 || FailWithErrno(error);
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method) {
    FileObject* object = FileWith(file, 0);
    int64_t place = 0;
    if (!object || !FindPlace(*object, JoinDistance(distance, distanceHigh), method, place))
        return INVALID_SET_FILE_POINTER;
    if (!distanceHigh && HighHalf(place) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_SET_FILE_POINTER;
    }
    object->m_place = place;
    if (distanceHigh) *distanceHigh = static_cast<LONG>(HighHalf(place));
    return LowHalf(place);
}

DWORD GetFileSize(HANDLE file, DWORD* high) {
    const FileObject* object = FileWith(file, 0);
    if (!object) return INVALID_FILE_SIZE;
    int64_t size = 0;
    if (const int error = object->m_file.Size(size)) {
        FailWithErrno(error);
        return INVALID_FILE_SIZE;
    }
    if (high) *high = HighHalf(size);
    return LowHalf(size);
}

BOOL SetEndOfFile(HANDLE file) {
    const FileObject* object = FileWith(file, GENERIC_WRITE);
    if (!object) return FALSE;
    const int error = object->m_file.Resize(object->m_place);
    return error == 0 || FailWithErrno(error);
}

BOOL FlushFileBuffers(HANDLE file) {
    const FileObject* object = FileWith(file, GENERIC_WRITE);
    if (!object) return FALSE;
    const int error = object->m_file.Flush();
    return error == 0 || FailWithErrno(error);
}
