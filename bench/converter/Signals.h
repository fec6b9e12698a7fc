// What the converters of the comparison are given, and how good the result is.
#pragma once

#include "bench/converter/Peer.h"

enum class SignalKind { Sine, EightBit, Quiet, Clipped };

// A sine of 997 Hz in each channel, `seconds` long: 16-bit, in steps of 256, of 8 steps, or beyond full
// scale.
Samples MakeSignal(SignalKind kind, uint32_t channels, int rate, int seconds);

// Signal-to-noise ratio in dB of a mono sine of 997 Hz: all but the sine that fits best is noise.
double SignalToNoise(const int16_t* samples, size_t count, int rate);
