// Large inputs of the command, each with the slacks that must come of it.
#pragma once

#include "Files.h"

#include <map>
#include <string>

namespace Scale {

// In units, by the clock's name.
using PeriodsByClock = std::map<std::string, long>;

// Ten thousand exceptions, one a path.
SlacksByEnd writeExceptions(Files& files);
// A thousand clocks, ten pairs of which meet.
SlacksByEnd writeClocks(Files& files);
// So many clocks, each with some registers of its own, and one clock with as many as all of them.
SlacksByEnd writeSeparateClocks(Files& files, std::size_t clocks);
// So many registers with a clock port each, whose data all meets on one net. The periods that they achieve.
PeriodsByClock writeFoundClocks(Files& files, std::size_t clocks);
// So many clock ports that one gate joins, and registers behind it.
void writeJoinedClocks(Files& files, std::size_t clocks, std::size_t registers);
// An end point of a hundred thousand launch points.
SlacksByEnd writeWideEnd(Files& files);
// A clock tree of a hundred thousand leaves, a shift register along them.
SlacksByEnd writeClockTree(Files& files);
// One path through that many gates, of which the first ten have two inputs each: 1024 paths of one length.
SlacksByEnd writeLongPath(Files& files, std::size_t gates);
// A chain of that many gates, each of which leads to a register of its own as well: each end point is worse
// than the one before.
SlacksByEnd writeTappedChain(Files& files, std::size_t gates);
// Gates that all lead to all others.
void writeLoop(Files& files, std::size_t gates);

} // namespace Scale
