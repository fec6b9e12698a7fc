// Copies of names into what the media interfaces hand out.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "platform/base/Types.h"
#include "platform/com/TaskMemory.h"

// Into a fixed field: cut where it is too long, always with a terminator.
template <size_t Units>
void CopyCut(WCHAR (&field)[Units], std::u16string_view name) {
    const size_t length = std::min(name.size(), Units - 1);
    field[name.copy(field, length)] = u'\0';
}

// Into a block of the task heap, for the caller to free; null where there is no memory.
inline WCHAR* NewTaskCopy(std::u16string_view name) {
    auto* copy = static_cast<WCHAR*>(CoTaskMemAlloc((name.size() + 1) * sizeof(WCHAR)));
    if (copy) copy[name.copy(copy, name.size())] = u'\0';
    return copy;
}
