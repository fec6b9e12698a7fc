// An option of a command, as data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// What a shell offers for a value.
enum class Words { None, Files, Formats, TagNames, TagValues, Commands, Languages };

// Where what the user gives goes: a flag, a text, a number, or texts.
using OptionTarget = std::variant<bool*, std::string*, std::optional<uint32_t>*, std::optional<uint64_t>*,
                                  std::vector<std::string>*>;

struct Option {
    std::string names;    // "-o,--output"; "FILE" for what is known by its place
    std::string value;    // what its value is called; empty for flags and what is known by its place
    std::string help;     // without a full stop at its end
    OptionTarget target;  // of the command that has the option
    Words words = Words::None;
    std::vector<std::string> choices = {};  // the only values; any where it is empty
    uint32_t least = 0;                     // of a number
    uint32_t most = UINT32_MAX;
    bool required = false;
    std::vector<std::string> excludes = {};  // names of options that don't go together with it
    std::vector<std::string> needs = {};     // names of options without which it says nothing

    // For tables: the same option, with more of it said.
    Option Required() const;
    Option OneOf(std::vector<std::string> values) const;
    Option Within(uint32_t from, uint32_t to) const;
    Option Without(std::vector<std::string> others) const;
    Option With(std::vector<std::string> others) const;

    bool IsPlace() const { return names.front() != '-'; }
    bool IsFlag() const { return std::holds_alternative<bool*>(target); }
    bool IsList() const { return std::holds_alternative<std::vector<std::string>*>(target); }
    // Each by itself: "-o", "--output".
    std::vector<std::string> Spellings() const;
    // The last, which is the longest: "--output".
    std::string Name() const { return Spellings().back(); }
};
