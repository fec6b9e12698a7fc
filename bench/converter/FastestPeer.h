// Which setting of which library is the one to beat.
#pragma once

#include "bench/converter/Peer.h"

struct FastestPeer {
    PeerSetting setting;  // without a maker where no library is installed
    double noise = 0;     // its signal-to-noise ratio in dB
};

// The fastest one for a job among those with 80 dB or more.
FastestPeer FindFastestPeer(const PeerJob& job);
