// Alone in its file: a program that defines TagTable itself doesn't get this one from the library.
#include "riff/TagRows.h"

std::span<const TagRow> TagTable() { return TagRows::kRows; }
