#pragma once
// While it lives, no allocation of the framework succeeds.

#include "framework/base/MemCheck.h"

namespace kelvo {

class AllocationRefusal {
public:
    AllocationRefusal() : previous_(SetAllocationGate([](std::size_t) { return false; })) {}
    ~AllocationRefusal() { SetAllocationGate(previous_); }
    AllocationRefusal(const AllocationRefusal&) = delete;
    AllocationRefusal& operator=(const AllocationRefusal&) = delete;

private:
    AllocationGate previous_;
};

} // namespace kelvo
