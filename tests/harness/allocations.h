// Makes allocations of the code under test fail, one at a time. Works for what is linked statically
// into the test, so the libraries beneath keep theirs.
#ifndef TESTS_HARNESS_ALLOCATIONS_H
#define TESTS_HARNESS_ALLOCATIONS_H

#include <cstddef>

namespace harness {

/// From here on the `number`-th allocation (from 1) of this thread fails; 0 only watches.
void failAllocation(size_t number);

/// Ends the watch; true when the chosen allocation was reached.
bool hasFailedAllocation();

/// The bytes of all allocations under the watch together.
size_t allocatedBytes();

}  // namespace harness

#endif
