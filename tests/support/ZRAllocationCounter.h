#pragma once

#include <cstddef>

// Counts the allocations through operator new that this thread makes while the counter lives. The test program
// replaces the global operator new for this (ZRAllocationCounter.cpp); counters do not nest.
class ZRAllocationCounter {
public:
    ZRAllocationCounter() noexcept;
    ~ZRAllocationCounter();
    ZRAllocationCounter(const ZRAllocationCounter&) = delete;
    ZRAllocationCounter& operator=(const ZRAllocationCounter&) = delete;

    size_t count() const noexcept { return _count; }

private:
    size_t _count = 0;
};
