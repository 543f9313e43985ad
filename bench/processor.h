// Keeping both sides of an exchange where a benchmark says that they run.
#ifndef BENCH_PROCESSOR_H
#define BENCH_PROCESSOR_H

#include <sched.h>

namespace bench {

enum class Processor { Servers, Other };

/// Keeps the calling thread on one processor while it lives. On a machine with a single one, both
/// are that.
class OnProcessor {
  public:
    explicit OnProcessor(Processor which);
    ~OnProcessor();
    OnProcessor(const OnProcessor&) = delete;
    OnProcessor& operator=(const OnProcessor&) = delete;

  private:
    cpu_set_t before_;
};

}  // namespace bench

#endif
