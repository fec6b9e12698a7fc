#include "platform/sync/ForkPass.h"

#include "platform/sync/posix/ForkGate.h"

void VlPassForkGate(int32_t change) {
    if (change > 0) {
        ForkGate::Enter();
    } else {
        ForkGate::Leave();
    }
}
