// How the commands tell what they found: lines for people, one JSON array for programs, and reasons of
// failures on standard error.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "host/Failure.h"
#include "host/Source.h"

// What `info` found in one file, or why it found nothing.
struct FileReport {
    std::string file;     // as it was given, any bytes
    SourceFormat format;  // valid where there is no failure
    int64_t frames = 0;   // at the format's own rate
    bool failed = false;
    Result code = RESULT_OK;
    std::string reason;
};

namespace Report {

// A few lines for a good file.
std::string Text(const FileReport& report);
// One array with an object for each file, good or not; bytes that are no UTF-8 become U+FFFD.
std::string Json(const std::vector<FileReport>& reports);
std::string Json(const nlohmann::ordered_json& value);
// What stands in JSON for a file that failed.
nlohmann::ordered_json JsonFailure(const std::string& file, const Failure& failure);
// A line on standard error: "vlwav: FILE: reason", without the file where it is empty.
void Complain(const std::string& file, const std::string& reason);
// h:mm:ss.mmm, hours only where there are any.
std::string Duration(int64_t frames, uint32_t rate /*frames per second, not 0*/);
// The name for a terminal: control characters become \xNN.
std::string Printable(const std::string& name);

}  // namespace Report
