// The temporary names that files of this process have now, for a program that ends by a signal. Where the
// file system has nameless files there are none but for moments. Any thread.
#pragma once

#include <string>

namespace TemporaryNames {

void Add(const std::string& path);
void Forget(const std::string& path) noexcept;
void RemoveAll() noexcept;

}  // namespace TemporaryNames
