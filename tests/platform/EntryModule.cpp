// A module that writes down what happens to it, for LoaderTest: to the file that VL_ENTRY_LOG names.
#include "tests/platform/EntryModule.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

void Record(const std::string& event) {
    const char* log = std::getenv("VL_ENTRY_LOG");
    const int file = log ? open(log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600) : -1;
    if (file < 0) return;
    const std::string line = event + "\n";
    if (write(file, line.data(), line.size()) < 0) std::abort();
    close(file);
}

namespace {

struct Recorder {
    explicit Recorder(const char* own) : name(own) { Record("constructed " + name); }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder() { Record("destroyed " + name); }

    std::string name;
};

const Recorder s_recorder("first");

}  // namespace
