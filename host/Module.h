// The codec module, loaded by path as any host loads it, and the one export that everything else comes from.
// Objects that came from the module must be released before it goes.
#pragma once

#include <memory>
#include <string>

#include "AudioCodec/shell/IPrivateCodecMain3.h"
#include "platform/com/RefPtr.h"

class Module {
public:
    // Where a module is looked for when the user names none.
    enum class Search {
        RegistryFirst,  // the registered one if its file is there, else the one beside the program
        BesideProgram,  // in the folder of the program's own file, else in the library folder next to it
    };

    // Loads the module at `path`, or if that is empty the one that is found. Throws Failure where no module
    // can be loaded.
    explicit Module(const std::string& path, Search search = Search::RegistryFirst);

    // A new codec main object. Throws Failure.
    RefPtr<IPrivateCodecMain3> CreateCodec() const;
    // Enter the module into the registry, and take it out; what came of it the module doesn't tell.
    void Register() const;
    void Unregister() const;
    // The module's file, and how it was found: "by --module".
    const std::string& Path() const { return m_found.path; }
    const char* Origin() const { return m_found.origin; }

private:
    using GetClassObject = Result (*)(const GUID* clsid, const GUID* iid, void** object);
    struct Closer {
        void operator()(void* library) const noexcept;
    };

    struct Found {
        std::string path;
        const char* origin;
    };
    static Found Find(const std::string& path, Search search);
    void CallServerExport(const char* name) const;

    Found m_found;
    std::unique_ptr<void, Closer> m_library;
    GetClassObject m_getClassObject = nullptr;
};
