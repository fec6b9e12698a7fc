// Names as the interfaces hand them out.
#pragma once

#include <cstring>
#include <string_view>

#include "platform/com/TaskMemory.h"
#include "platform/media/MediaResults.h"

// Into a field of fixed size, cut where it is too long.
template <size_t Units>
void CopyName(std::u16string_view name, WCHAR (&field)[Units]) {
    const size_t length = name.copy(field, Units - 1);
    field[length] = u'\0';
}

// Into a block that the caller frees by CoTaskMemFree.
inline HRESULT GiveText(std::u16string_view text, WCHAR** given) {
    *given = static_cast<WCHAR*>(CoTaskMemAlloc((text.size() + 1) * sizeof(WCHAR)));
    if (!*given) return E_OUTOFMEMORY;
    (*given)[text.copy(*given, text.size())] = u'\0';
    return S_OK;
}
