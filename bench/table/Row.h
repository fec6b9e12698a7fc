// A row of the table that the benchmarks print: one piece of work done by two sides in turn.
#pragma once

#include <functional>
#include <string>

// The two sides of a row. Each does the whole work once and returns the seconds that it took, or 0 where it
// couldn't.
struct Sides {
    std::function<double()> module;
    std::function<double()> peer;
    std::string peerName;
    std::string note;  // more about the row, for the last column
};

// Adds a row. `prepare` is called when its turn has come; sides without a peer, as where it isn't installed,
// leave the row out. The row tells the median over all turns of the peer's time over the module's: above 1
// the module is the faster one. `wanted` is what the ratio should reach.
void AddRow(const std::string& work, double wanted, std::function<Sides()> prepare);

// Seconds of processor time that a call takes on this thread, so that what else the machine does counts
// little.
double Timed(const std::function<void()>& work);
// The same by the clock, for work that several threads share.
double ClockTimed(const std::function<void()>& work);
