// A program that knows neither the layer nor the module but by name, as hosts do: once the module has gone,
// a fork must not call what has gone with it.
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "tests/support/ScopedFile.h"

int main() {
    for (int turn = 0; turn < 3; ++turn) {
        void* const module = dlopen(VL_MODULE, RTLD_NOW | RTLD_LOCAL);
        if (!module || !IsMapped("libvlplatform")) return std::puts("not loaded"), 1;
        if (dlclose(module) != 0 || IsMapped("libvlplatform")) return std::puts("still loaded"), 2;
        const pid_t child = fork();
        if (child == 0) _exit(7);
        int status = -1;
        waitpid(child, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 7) return std::puts("the child died"), 3;
    }
    return 0;
}
