// Calls into libraries that may never return.
#ifndef VELNOR_PLATFORM_LINUX_BOUNDED_CALL_H
#define VELNOR_PLATFORM_LINUX_BOUNDED_CALL_H

#include <chrono>
#include <exception>
#include <functional>
#include <utility>

namespace velnor::platform {

enum class Call { Done, TimedOut, NotStarted };

/// Runs `work` on a thread of its own and waits for its end. One that has not ended within `limit`
/// goes on unobserved, so it owns all that it uses, and it throws nothing. One that has ended is
/// gone. Throws what the library throws without memory or a thread.
Call runOnThread(std::chrono::seconds limit, std::function<void()> work);

/// The same without exceptions.
template <class Work>
Call runWithin(std::chrono::seconds limit, Work work) {
    try {
        return runOnThread(limit, std::function<void()>(std::move(work)));
    } catch (const std::exception&) {
        return Call::NotStarted;
    }
}

}  // namespace velnor::platform

#endif
