#include "capi/input/Input.h"

size_t Input::ReadWholeAt(uint64_t place, void* buffer, size_t count) {
    size_t done = 0;
    while (done < count) {
        const size_t got = ReadAt(place + done, static_cast<char*>(buffer) + done, count - done);
        if (got == 0) break;
        done += got;
    }
    return done;
}
