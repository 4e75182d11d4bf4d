// Large inputs of the command, each with the slacks that a run must report.
#pragma once

#include "Files.h"

#include <map>
#include <string>

namespace Scale {

// Key: the clock's name. Value: in the units of the files.
using PeriodsByClock = std::map<std::string, long>;

// Ten thousand exceptions, one per path.
SlacksByEnd writeExceptions(Files& files);
// A thousand clocks, ten pairs of which meet.
SlacksByEnd writeClocks(Files& files);
// `clocks` clocks, each with some registers of its own, and one clock with as many registers as all of them.
SlacksByEnd writeSeparateClocks(Files& files, std::size_t clocks);
// `clocks` registers, each with its own clock port, whose data all meets on one net. Returns the periods that
// they achieve.
PeriodsByClock writeFoundClocks(Files& files, std::size_t clocks);
// `clocks` clock ports that one gate joins, and registers behind the gate.
void writeJoinedClocks(Files& files, std::size_t clocks, std::size_t registers);
// An end point with a hundred thousand launch points.
SlacksByEnd writeWideEnd(Files& files);
// A clock tree of a hundred thousand leaves, a shift register along them.
SlacksByEnd writeClockTree(Files& files);
// One path through `gates` gates, of which the first ten have two inputs each: 1024 paths of equal length.
SlacksByEnd writeLongPath(Files& files, std::size_t gates);
// A chain of `gates` gates, each of which also drives a register of its own: each end point is worse than the
// one before.
SlacksByEnd writeTappedChain(Files& files, std::size_t gates);
// Gates that all drive each other.
void writeLoop(Files& files, std::size_t gates);

} // namespace Scale
