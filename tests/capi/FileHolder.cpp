// Opens a file for itself alone as programs over the layer do, says "held" and its process, and waits to be
// ended; or says that it was refused.
#include <unistd.h>

#include <cstdio>

#include "platform/base/UniqueHandle.h"
#include "platform/file/File.h"

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const UniqueHandle file = TakeFile(CreateFileA(argv[1], GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                                   OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        std::puts("refused");
        return 0;
    }
    std::printf("held\n%d\n", static_cast<int>(getpid()));
    std::fflush(stdout);
    alarm(30);
    for (;;) pause();
}
