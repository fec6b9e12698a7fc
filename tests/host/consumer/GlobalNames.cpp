// A host that was written for global names.
#include "every-header.h"

static_assert(RESULT_OK == 0 && sizeof(GUID) == 16);

int main() {
    RefPtr<IAC3Reader> reader;
    CImage* image = nullptr;
    return reader || image ? 1 : 0;
}
