// Allocations that fail: a program that links allocations.cpp has its operator new replaced.
#pragma once

#include <cstddef>

namespace tavolin {

// The nth allocation from now on (from 1) fails; with `for_good` all later ones fail as well.
void FailAllocation(std::size_t nth, bool for_good = false);
// From now on none fails. Whether one did since FailAllocation.
bool FailNoMore();
// How many allocations have not been given back.
std::size_t LivingAllocations();

}  // namespace tavolin
