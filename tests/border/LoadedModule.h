// A module, loaded by path for as long as this stands.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include "AudioCodec/shell/ClassIds.h"
#include "AudioCodec/shell/IPrivateCodecMain3.h"
#include "platform/com/RefPtr.h"

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

    // The codec module's main object, or a result that it gives instead of it.
    Result Create(const GUID* classId, const GUID* iid, void** object) const {
        return Find<Result(const GUID*, const GUID*, void**)>("DllVlGetClassObject")(classId, iid, object);
    }
    RefPtr<IPrivateCodecMain3> CreateCodec() const {
        RefPtr<IPrivateCodecMain3> codec;
        EXPECT_EQ(Create(&CLSID_VlACWav3, &IID_IPrivateCodecMain3, reinterpret_cast<void**>(codec.Put())),
                  RESULT_OK);
        return codec;
    }

private:
    void* m_module;
};
