// The bytes of the private sub-chunk "vltg": any number of named texts in UTF-16, one entry after the other
// without padding, and one byte 00 after the last:
//
//   name (ANSI, no "=")   "="   byte order mark   units of the value   00 00
//
// Knows nothing of which names belong there.
//
// Decisions: an entry that the chunk's end cuts off is dropped; the whole ones before it stay.
#pragma once

#include <string>
#include <string_view>

class TagEntryReader {
public:
    explicit TagEntryReader(std::string_view bytes) : m_bytes(bytes) {}

    // Takes the next entry. False after the last one, and where the bytes are damaged. Never reads past them.
    bool Next();

    // Of the entry taken last.
    std::string_view Name() const { return m_name; }  // as it stands there
    // Its units in the machine's order, in place of what `value` holds; may throw bad_alloc.
    void Value(std::u16string& value) const;

    // The bytes after it.
    std::string_view Rest() const { return m_bytes; }

private:
    std::string_view m_bytes;  // those that follow
    std::string_view m_name;
    std::string_view m_units;
    bool m_bigEndian = false;
};

// Appends one entry to a chunk that is being built; the caller puts the closing zero byte after the last.
void AppendTagEntry(std::string& bytes, std::string_view name, std::u16string_view value);
