# The README's C++ block must be the example's text.
file(READ ${README} readme)
file(READ ${EXAMPLE} example)
string(FIND "${readme}" "```cpp\n${example}```" at)
if(at EQUAL -1)
  message(FATAL_ERROR "The C++ block of README.md differs from docs/example-host.cpp; copy the latter into it.")
endif()
