#include "platform/file/Paths.h"

namespace {
constexpr WCHAR Folded(WCHAR unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<WCHAR>(unit - u'A' + u'a') : unit;
}
}  // namespace

WCHAR* PathFindExtensionW(const WCHAR* path) {
    if (!path) return nullptr;
    const WCHAR* dot = nullptr;
    for (; *path; ++path) {
        if (*path == u'.') dot = path;
        if (*path == u'/' || *path == u' ') dot = nullptr;
    }
    return const_cast<WCHAR*>(dot ? dot : path);
}

int lstrcmpiW(const WCHAR* a, const WCHAR* b) {
    if (!a || !b) return (a != nullptr) - (b != nullptr);  // null is less than any text
    while (*a && Folded(*a) == Folded(*b)) ++a, ++b;
    return Folded(*a) - Folded(*b);
}
