// A module, loaded by path for as long as this stands.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

class LoadedModule {
public:
    explicit LoadedModule(const char* path) : m_module(dlopen(path, RTLD_NOW | RTLD_LOCAL)) {
        EXPECT_TRUE(m_module) << dlerror();
    }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;
    ~LoadedModule() {
        if (m_module) dlclose(m_module);
    }

    void* Get() const { return m_module; }
    // An exported function of the given type; null with a failure if there is none.
    template <class Function>
    Function* Find(const char* name) const {
        void* address = dlsym(m_module, name);
        EXPECT_TRUE(address) << name;
        return reinterpret_cast<Function*>(address);
    }

private:
    void* m_module;
};
