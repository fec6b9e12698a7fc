#include "platform/sync/posix/FirstCopy.h"

#include <dlfcn.h>
#include <link.h>

#include <string_view>

namespace {

bool IsCopy(const link_map& library) {
    constexpr std::string_view kFile = "libvlplatform.so";
    const std::string_view path = library.l_name ? library.l_name : "";
    return path.substr(path.rfind('/') + 1).starts_with(kFile);
}

class Holder {
public:
    // Libraries stand in the order in which they were loaded. One that is held stays the first.
    Holder() {
        static const char s_here = 0;
        Dl_info info = {};
        link_map* self = nullptr;
        if (dladdr1(&s_here, &info, reinterpret_cast<void**>(&self), RTLD_DL_LINKMAP) == 0 || !self) return;
        const link_map* library = self;
        while (library->l_prev) library = library->l_prev;
        for (; library != self && !m_library && m_isKnown; library = library->l_next)
            if (IsCopy(*library)) Hold(library->l_name);
    }
    ~Holder() {
        if (m_library) dlclose(m_library);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    void* Find(const char* function) const {
        return m_library ? dlvsym(m_library, function, VL_LAYER_NODE) : nullptr;
    }
    bool IsKnown() const { return m_isKnown; }

private:
    void Hold(const char* path) {
        m_library = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
        if (!m_library) {
            m_isKnown = false;
            dlerror();  // as LoadModule does
            return;
        }
        if (Find("VlCreateMutexA")) return;
        dlclose(m_library);  // of another version
        m_library = nullptr;
    }

    void* m_library = nullptr;
    bool m_isKnown = true;
};

const Holder& First() {
    static const Holder s_first;
    return s_first;
}

}  // namespace

void* FirstCopy::Find(const char* function) { return First().Find(function); }

bool FirstCopy::IsKnown() { return First().IsKnown(); }
