// The first and the last of the processors that the process may use.
#include "processor.h"

#include <stdexcept>

namespace bench {

OnProcessor::OnProcessor(Processor which) {
    if (sched_getaffinity(0, sizeof before_, &before_) != 0) throw std::runtime_error("no mask");
    int first = 0;
    while (!CPU_ISSET(first, &before_)) ++first;
    int last = CPU_SETSIZE - 1;
    while (!CPU_ISSET(last, &before_)) --last;
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(which == Processor::Servers ? first : last, &one);
    if (sched_setaffinity(0, sizeof one, &one) != 0) throw std::runtime_error("no processor");
}

OnProcessor::~OnProcessor() { sched_setaffinity(0, sizeof before_, &before_); }

}  // namespace bench
