// Compiles every installed header, as C++17, in a program that has foreign names of its own.
#include "ForeignNames.h"
#include "every-header.h"

namespace {

// What a host implements, and the names that it meets, are ours in spite of the foreign ones.
static_assert(vlacwav3::FindResultText(vlacwav3::RESULT_NOT_WAVE)->code == 1003);
static_assert(vlacwav3::IID_IBase.Data1 == 0x88486D15);
static_assert(sizeof(vlacwav3::LARGE_INTEGER) == 8);

}  // namespace

int main() { return vlacwav3::IID_IAC3Reader == vlacwav3::IID_IAC3Writer ? 1 : 0; }
