// The codec module, loaded by path as any host loads it, and the one export that everything else comes from.
// Objects that came from the module must be released before it goes.
#pragma once

#include <memory>
#include <string>

#include "AudioCodec/shell/IPrivateCodecMain3.h"
#include "platform/base/RefPtr.h"

class Module {
public:
    // Loads the module at `path`; an empty path means the one beside the program's own file: in the same
    // folder, else in the library folder next to it. Throws Failure where no module can be loaded.
    explicit Module(const std::string& path);

    // A new codec main object. Throws Failure.
    RefPtr<IPrivateCodecMain3> CreateCodec() const;
    // Where the module was taken from.
    const std::string& Path() const { return m_path; }

private:
    using GetClassObject = Result (*)(const GUID* clsid, const GUID* iid, void** object);
    struct Closer {
        void operator()(void* library) const noexcept;
    };

    std::string m_path;
    std::unique_ptr<void, Closer> m_library;
    GetClassObject m_getClassObject = nullptr;
};
