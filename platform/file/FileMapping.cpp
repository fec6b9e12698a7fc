#include "platform/file/FileMapping.h"

#include <limits>
#include <map>
#include <memory>
#include <new>

#include "platform/base/Border.h"
#include "platform/file/ErrorTable.h"
#include "platform/file/File.h"
#include "platform/file/FileObject.h"
#include "platform/sync/FirstCopysFunction.h"
#include "platform/sync/ForkPass.h"
#include "platform/sync/NamedObjects.h"

namespace {

const FirstCopysFunction<decltype(CreateFileMappingA)> s_createMapping("VlCreateFileMappingA");
const FirstCopysFunction<decltype(OpenFileMappingA)> s_openMapping("VlOpenFileMappingA");

class MappingObject final : public NamedObject {
public:
    static constexpr uint32_t kKind = kMapping;
    MappingObject() : NamedObject(kKind) {}

    SystemFile m_file;
    size_t m_size = 0;  // bytes
};

struct Views {
    Mutex lock;
    std::map<const void*, size_t> sizes VL_GUARDED_BY(lock);  // bytes

    // Built by the first view and gone after the last module that maps.
    static Views& Instance() {
        const ForkPass pass;
        static Views views;
        return views;
    }
};

std::nullptr_t NoneWith(DWORD error) {
    SetLastError(error);
    return nullptr;
}

MappingObject* MakeMapping(const FileObject& file, size_t size) {
    auto mapping = std::make_unique<MappingObject>();
    mapping->m_size = size;
    int error = file.m_file.Reserve(static_cast<int64_t>(size));
    if (error == 0) error = file.m_file.Duplicate(mapping->m_file);
    return error == 0 ? mapping.release() : NoneWith(ErrorFromErrno(error));
}

}  // namespace

HANDLE CreateFileMappingA(HANDLE file, SECURITY_ATTRIBUTES* security, DWORD protection, DWORD sizeHigh,
                          DWORD sizeLow, const char* name) {
    if (s_createMapping.IsFor(name))
        return s_createMapping(file, security, protection, sizeHigh, sizeLow, name);
    if (security || protection != PAGE_READWRITE) return NoneWith(ERROR_NOT_SUPPORTED);
    const auto* object = HandleObject::From<FileObject>(file);
    if (!object) return nullptr;
    constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
    if ((object->m_access & kBoth) != kBoth) return NoneWith(ERROR_ACCESS_DENIED);
    const uint64_t size = uint64_t{sizeHigh} << 32 | sizeLow;
    if (size == 0 || size > std::numeric_limits<int64_t>::max()) return NoneWith(ERROR_INVALID_PARAMETER);
    const auto onThrow = [](bool) { return NoneWith(ERROR_NOT_ENOUGH_MEMORY); };
    return AtBorder(onThrow, [&] {
        return NamedObjects::CreateOrOpen(name, MappingObject::kKind,
                                          [&] { return MakeMapping(*object, size); });
    });
}

HANDLE OpenFileMappingA(DWORD access, BOOL inherit, const char* name) {
    if (s_openMapping.IsFor(name)) return s_openMapping(access, inherit, name);
    if (access != FILE_MAP_ALL_ACCESS || inherit) return NoneWith(ERROR_NOT_SUPPORTED);
    return NamedObjects::Open(name, MappingObject::kKind);
}

void* MapViewOfFile(HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow, size_t size) {
    if (access != FILE_MAP_ALL_ACCESS || offsetHigh != 0 || offsetLow != 0 || size != 0)
        return NoneWith(ERROR_NOT_SUPPORTED);
    const auto* object = HandleObject::From<MappingObject>(mapping);
    if (!object) return nullptr;
    void* view = nullptr;
    if (const int error = object->m_file.Map(object->m_size, view)) return NoneWith(ErrorFromErrno(error));
    try {
        Views& views = Views::Instance();
        const ProcessLock lock(views.lock);
        views.sizes[view] = object->m_size;
        return view;
    } catch (const std::bad_alloc&) {
        SystemFile::Unmap(view, object->m_size);
        return NoneWith(ERROR_NOT_ENOUGH_MEMORY);
    }
}

BOOL UnmapViewOfFile(const void* view) {
    Views& views = Views::Instance();
    const ProcessLock lock(views.lock);
    const auto found = views.sizes.find(view);
    if (found == views.sizes.end()) return FailWith(ERROR_INVALID_PARAMETER);
    SystemFile::Unmap(const_cast<void*>(view), found->second);
    views.sizes.erase(found);
    return TRUE;
}
