// A text in wide form, in narrow form of the ANSI code page, or in both, that converts on demand and at most
// once in each direction. Wraps a literal without a copy. Not for two threads at once: reading converts.
//
// Decisions: where the heap gives no memory, the text that was to be made stays absent, so that Wide() or
// Narrow() returns null and a copy is empty.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>

class CStr {
public:
    enum class CopyMode {
        Deep = 0,        // a copy of the wide text alone if there is one, otherwise of the narrow text
        DeepOrTake = 1,  // Deep from a source that owns nothing, otherwise TakeOver
        TakeOver = 2,    // pointers, lengths and ownership; the source then only borrows
        Alias = 3,       // pointers and lengths; the source stays the owner
    };

    CStr() = default;
    explicit CStr(const char16_t* wide);          // borrowed: it outlives this object
    CStr(const char* narrow, uint32_t length);    // a copy of so many bytes
    CStr(const char16_t* wide, uint32_t length);  // a copy of so many characters
    CStr(CStr& source, CopyMode mode);
    CStr(CStr&& source) noexcept : CStr(source, CopyMode::TakeOver) {}
    CStr& operator=(CStr&& source) noexcept;
    CStr(const CStr&) = delete;
    CStr& operator=(const CStr&) = delete;
    virtual ~CStr() = default;

    const char16_t* Wide();  // terminated, the object's; null if there is no text
    const char* Narrow();    // terminated, the object's; null if there is no text
    uint32_t WideLength();   // in characters; 0 without a text

    // Exact comparison: wide texts if both have one, else narrow if both have one, else wide by conversion. A
    // text is above none. Returns -1, 0 or 1.
    int Compare(CStr& other);

private:
    struct HeapFree {
        void operator()(void* block) const { std::free(block); }
    };
    void CopyWide(const char16_t* wide, uint32_t length);
    void CopyNarrow(const char* narrow, uint32_t length);
    uint32_t NarrowLength();

    const char16_t* m_wide = nullptr;
    const char* m_narrow = nullptr;
    std::unique_ptr<char16_t, HeapFree> m_ownedWide;  // holds m_wide, or nothing if that is borrowed
    std::unique_ptr<char, HeapFree> m_ownedNarrow;    // likewise for m_narrow
    uint32_t m_wideLength = 0;                        // 0: not known
    uint32_t m_narrowLength = 0;                      // 0: not known
    uint32_t m_wideCapacity = 0;                      // characters after m_ownedWide
};
