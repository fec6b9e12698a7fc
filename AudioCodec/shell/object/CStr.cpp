#include "AudioCodec/shell/object/CStr.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/base/CodePage1252.h"

namespace {

constexpr uint32_t kWideSlack = 32;  // characters allocated after a wide text and its terminator

template <class T>
T* AllocateText(size_t count) {
    return static_cast<T*>(std::malloc(count * sizeof(T)));
}

template <class T>
int CompareTexts(const T* a, const T* b) {
    for (; *a == *b; ++a, ++b) {
        if (*a == T{}) return 0;
    }
    using Unsigned = std::make_unsigned_t<std::conditional_t<sizeof(T) == 1, char, uint16_t>>;
    return static_cast<Unsigned>(*a) < static_cast<Unsigned>(*b) ? -1 : 1;
}

}  // namespace

CStr::CStr(const char16_t* wide) : m_wide(wide) {
    if (wide) m_wideLength = static_cast<uint32_t>(std::char_traits<char16_t>::length(wide));
}

CStr::CStr(const char* narrow, uint32_t length) { CopyNarrow(narrow, length); }

CStr::CStr(const char16_t* wide, uint32_t length) { CopyWide(wide, length); }

CStr::CStr(CStr& source, CopyMode mode) {
    if (mode == CopyMode::DeepOrTake)
        mode = source.m_ownedWide || source.m_ownedNarrow ? CopyMode::TakeOver : CopyMode::Deep;
    if (mode == CopyMode::Deep) {
        if (source.m_wide)
            CopyWide(source.m_wide, source.WideLength());
        else if (source.m_narrow)
            CopyNarrow(source.m_narrow, source.NarrowLength());
        return;
    }
    m_wide = source.m_wide;
    m_narrow = source.m_narrow;
    m_wideLength = source.m_wideLength;
    m_narrowLength = source.m_narrowLength;
    m_wideCapacity = source.m_wideCapacity;
    if (mode == CopyMode::TakeOver) {
        m_ownedWide = std::move(source.m_ownedWide);
        m_ownedNarrow = std::move(source.m_ownedNarrow);
    }
}

CStr& CStr::operator=(CStr&& source) noexcept {
    if (this == &source) return *this;
    m_wide = source.m_wide;
    m_narrow = source.m_narrow;
    m_ownedWide = std::move(source.m_ownedWide);
    m_ownedNarrow = std::move(source.m_ownedNarrow);
    m_wideLength = source.m_wideLength;
    m_narrowLength = source.m_narrowLength;
    m_wideCapacity = source.m_wideCapacity;
    return *this;
}

void CStr::CopyWide(const char16_t* wide, uint32_t length) {
    const uint32_t capacity = length + 1 + kWideSlack;
    m_ownedWide.reset(AllocateText<char16_t>(capacity));
    if (!m_ownedWide) return;
    *std::copy_n(wide, length, m_ownedWide.get()) = u'\0';
    m_wide = m_ownedWide.get();
    m_wideLength = length;
    m_wideCapacity = capacity;
}

void CStr::CopyNarrow(const char* narrow, uint32_t length) {
    m_ownedNarrow.reset(AllocateText<char>(size_t{length} + 1));
    if (!m_ownedNarrow) return;
    *std::copy_n(narrow, length, m_ownedNarrow.get()) = '\0';
    m_narrow = m_ownedNarrow.get();
    m_narrowLength = length;
}

const char16_t* CStr::Wide() {
    if (m_wide || !m_narrow) return m_wide;
    const uint32_t units = NarrowLength() + 1;
    m_ownedWide.reset(AllocateText<char16_t>(size_t{units} + kWideSlack));
    if (!m_ownedWide) return nullptr;
    m_wideCapacity = units + kWideSlack;
    *m_ownedWide = u'\0';
    MultiByteToWideChar(CP_ACP, 0, m_narrow, -1, m_ownedWide.get(), static_cast<int>(units));
    return m_wide = m_ownedWide.get();
}

const char* CStr::Narrow() {
    if (m_narrow || !m_wide) return m_narrow;
    const size_t bytes = (size_t{WideLength()} + 1) * 2;
    m_ownedNarrow.reset(AllocateText<char>(bytes));
    if (!m_ownedNarrow) return nullptr;
    *m_ownedNarrow = '\0';
    WideCharToMultiByte(CP_ACP, 0, m_wide, -1, m_ownedNarrow.get(), static_cast<int>(bytes), nullptr,
                        nullptr);
    return m_narrow = m_ownedNarrow.get();
}

uint32_t CStr::WideLength() {
    if (m_wideLength == 0 && m_wide)
        m_wideLength = static_cast<uint32_t>(std::char_traits<char16_t>::length(m_wide));
    return m_wideLength;
}

uint32_t CStr::NarrowLength() {
    if (m_narrowLength == 0 && m_narrow) m_narrowLength = static_cast<uint32_t>(std::strlen(m_narrow));
    return m_narrowLength;
}

int CStr::Compare(CStr& other) {
    if (!(m_wide && other.m_wide) && m_narrow && other.m_narrow)
        return CompareTexts(m_narrow, other.m_narrow);
    const char16_t* const mine = Wide();
    const char16_t* const theirs = other.Wide();
    if (mine && theirs) return CompareTexts(mine, theirs);
    return mine ? 1 : theirs ? -1 : 0;
}
