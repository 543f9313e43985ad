// Makes allocations of the code under test fail, one at a time. Works for what is linked statically
// into the test, so the libraries beneath keep theirs.
#ifndef TESTS_HARNESS_ALLOCATIONS_H
#define TESTS_HARNESS_ALLOCATIONS_H

#include <cstddef>

namespace harness {

/// While it lives, the `number`-th allocation (from 1) of this thread fails; 0 only counts.
class FailingAllocation {
  public:
    explicit FailingAllocation(size_t number);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// Of all allocations so far together.
    size_t bytes() const;

    /// Ends the watch; true when the chosen allocation was reached.
    bool end();
};

}  // namespace harness

#endif
