// A library that the layer itself loads, held for as long as the object. Unlike the functions of Library.h it
// leaves the last error as it is. One thread at a time.
#pragma once

#include <memory>
#include <string>

#include "platform/base/Types.h"

class UniqueLibrary {
public:
    // Holds none.
    UniqueLibrary() = default;
    // Loads the library at a path in the system's bytes; holds none if it can't be loaded.
    static UniqueLibrary Load(const std::string& path);
    // The same for one that lies beside libvlplatform, wherever that file is, links followed; `file` may have
    // folders in front. Throws std::bad_alloc.
    static UniqueLibrary LoadSibling(const char* file);

    explicit operator bool() const { return m_module != nullptr; }
    // The library's own function of that name; null where it has none, or where there is no library.
    template <class Function>
    Function Find(const char* name) const {
        return reinterpret_cast<Function>(FindSymbol(name));
    }
    // Lets the library go.
    void Reset() { m_module.reset(); }
    // For static places, which are to outlive all destructors: hands the library over, and takes it back.
    HMODULE Detach() { return m_module.release(); }
    static UniqueLibrary Adopt(HMODULE module) { return UniqueLibrary(module); }
    // Leaves it loaded to the end of the process.
    void Keep() { static_cast<void>(m_module.release()); }

private:
    struct Unload {
        using pointer = HMODULE;
        void operator()(HMODULE module) const noexcept;
    };
    explicit UniqueLibrary(HMODULE module) : m_module(module) {}
    void* FindSymbol(const char* name) const;

    std::unique_ptr<void, Unload> m_module;
};
