// A registry key that closes itself.
#pragma once

#include <memory>

#include "platform/registry/Registry.h"

struct KeyCloser {
    void operator()(HKEY key) const noexcept { RegCloseKey(key); }
};

using UniqueKey = std::unique_ptr<struct HKEY_HANDLE, KeyCloser>;
