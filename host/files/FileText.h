// All bytes of a file that a command is told by.
#pragma once

#include <string>

namespace FileText {

// "-" is standard input. Throws Failure with the system's reason, without the file's name.
std::string Read(const std::string& path);
// The same, with the name.
std::string ReadList(const std::string& path);

}  // namespace FileText
