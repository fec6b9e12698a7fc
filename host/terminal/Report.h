// How the commands tell what they found: lines for people, one JSON array for programs, and reasons of
// failures on standard error.
#pragma once

#include <cstdint>
#include <exception>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace Report {

// Of the fields that scripts rely on; another number means that one of them means something else.
inline constexpr int kSchema = 1;

std::string Json(const nlohmann::ordered_json& value);
// What an entry of a file begins with: "schema", "file", its name, in which bytes that are no UTF-8 become
// U+FFFD, and then "fileBytes", the name as it is in base64.
nlohmann::ordered_json JsonEntry(const std::string& file);
// The entry of a file that failed: "error", a sentence, and "reason", a word.
nlohmann::ordered_json JsonFailure(const std::string& file, const std::exception& failure);

// The line "vlwav: FILE: reason", without the file where it is empty. Both parts are made printable.
std::string Complaint(const std::string& file, const std::string& reason);
std::string Complaint(const std::string& file, const std::exception& failure);
// The same on standard error.
void Complain(const std::string& file, const std::string& reason);
void Complain(const std::string& file, const std::exception& failure);
// From now on nothing but failures is told on standard error. Before the first thread starts.
void OnlyFailures();
bool TellsFailuresAlone();
// What is worth knowing, and no failure; one line on standard error, like a complaint.
void Note(const std::string& file, const std::string& text);
// The text of one from a sentence of the library about the file.
std::string NoteOf(const std::string& file, const std::string& sentence);
// What a file that ends early is refused with, after the library's sentence.
inline constexpr const char* kPartialHint = " With --partial what is there is taken.";
// Of a file whose head doesn't tell its length.
inline constexpr const char* kNoLengthNote =
    "Note: its head tells no length; it was read to the end of the file.";
// Why an output isn't made where there is a file.
std::string Exists(const std::string& output);

// h:mm:ss.mmm, hours only where there are any.
std::string Duration(int64_t frames, uint32_t rate /*frames per second, not 0*/);
}  // namespace Report
