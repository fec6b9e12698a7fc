// A module that writes down what happens to it, for LoaderTest: to the file that VL_EVENT_LOG names.
#include "tests/support/ModuleLog.h"

namespace {

struct Recorder {
    Recorder() { RecordEvent("constructed"); }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder() { RecordEvent("destroyed"); }
};

const Recorder s_recorder;

}  // namespace
