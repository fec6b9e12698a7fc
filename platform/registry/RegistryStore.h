// Where the registry's keys and values are kept, as its functions see it. The class behind it lies in
// libvlregistry.so, with the database under it: a process that never asks the registry loads neither. Knows
// no handles and no rights of keys. Answers the platform's codes. Any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/base/Types.h"

class RegistryStore {
public:
    using Key = int64_t;  // never given to another key again
    static constexpr Key kClassesRoot = 1;
    static constexpr Key kLocalMachine = 2;

    virtual ~RegistryStore() = default;

    // From here to End what is done is one transaction, which others see whole or not at all. All its waits
    // together have the patience of one.
    virtual DWORD Begin() = 0;
    // Not `keep`: takes all back. What can't be kept is taken back too.
    virtual DWORD End(bool keep) = 0;

    // A path is names with "\" between them, none of them empty; an empty path is `from` itself.
    virtual DWORD FindKey(Key from, std::string_view path, Key& key) = 0;
    virtual DWORD CreateKey(Key from, std::string_view path, Key& key, bool& created) = 0;
    virtual DWORD DeleteKey(Key from, std::string_view path) = 0;
    virtual DWORD SetValue(Key key, std::string_view name, DWORD type, std::string_view data) = 0;
    virtual DWORD GetValue(Key key, std::string_view name, DWORD& type, std::string& data) = 0;
};

// What libvlregistry.so exports as "VlOpenRegistryStore": opens the store in the file at `path`, absolute;
// the file is created only for writing. Doesn't look into it. Throws std::bad_alloc.
using OpenRegistryStoreFunction = DWORD (*)(const std::string& path, bool forWriting,
                                            std::unique_ptr<RegistryStore>& store);
