// Which values an axis names, and how.
#pragma once

#include <string>
#include <vector>

struct Tick {
    double part;  // of the axis, 0 to 1
    std::string label;
};

struct Ticks {
    std::string unit;
    std::vector<Tick> ticks;
};

// Of an axis from 0 to `end`, by steps of 1, 2 or 5 and a power of ten, `most` of them at most.
Ticks LinearTicks(double end, int most, const std::string& unit);
// Of an axis of time that is `seconds` long: ms, s, or m:ss and h:mm:ss by steps that a clock has.
Ticks TimeTicks(double seconds, int most);
