// The tags of a file as a flat list of name and value texts, the meeting point of chunks and attributes. The
// texts lie in one block, in little more room than a file has for them, so that a file of a million tags is
// no burden.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

struct TagEntry {
    std::string_view name;      // in lower case, in the ANSI code page
    std::u16string_view value;  // without blanks at its ends; a zero unit follows it
};

// In order of insertion; a name may occur several times. Entries are views into the list, valid
// until it changes.
class TagList {
public:
    class Iterator {
    public:
        explicit Iterator(const char16_t* at) : m_at(at) {}
        TagEntry operator*() const;
        Iterator& operator++();
        bool operator!=(const Iterator& other) const { return m_at != other.m_at; }

    private:
        const char16_t* m_at;
    };

    Iterator begin() const { return Iterator(m_units.data()); }
    Iterator end() const { return Iterator(m_units.data() + m_units.size()); }
    bool empty() const { return m_units.empty(); }
    void clear();  // gives the memory back too

    // Makes room for entries that take so many bytes in a "vltg" chunk. May throw bad_alloc.
    void Reserve(size_t bytes);
    // Appends an entry as it is given, up to 4 GiB in each text. Throws std::bad_alloc, and the list then
    // stays as it was.
    void Append(std::string_view name, std::u16string_view value);

private:
    // For each entry: the lengths of name and value, the name two bytes to a unit, the value, a zero unit.
    std::u16string m_units;
};

// A name as lists have it: each letter of the ANSI code page in lower case, whatever the host's locale: a
// title is to be found in Turkish too, where "I" has another small letter. Throws std::bad_alloc.
std::string LoweredTagName(std::string_view name);

// Appends a tag: the name, in the ANSI code page, in lower case, the value without the blanks (0x20) at its
// ends. Every entry of a list comes through here. Throws std::bad_alloc, and the list then stays as it was.
void AddTag(TagList& tags, std::string_view name, std::u16string_view value);
