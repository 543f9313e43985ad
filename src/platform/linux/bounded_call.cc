#include "platform/linux/bounded_call.h"

#include <pthread.h>
#include <signal.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace velnor::platform {
namespace {

struct Completion {
    std::mutex mutex;
    std::condition_variable changed;
    bool done = false;
};

// A thread that is started meanwhile gets none of the application's signals, but the two that a
// program which it starts can be ended with: that one inherits what is blocked.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        sigdelset(&all, SIGTERM);
        sigdelset(&all, SIGHUP);
        pthread_sigmask(SIG_SETMASK, &all, &previous_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t previous_;
};

void start(std::shared_ptr<Completion> completion, std::function<void()> work) {
    const SignalsBlocked blocked;
    std::thread([completion = std::move(completion), work = std::move(work)]() mutable {
        work();
        work = nullptr;
        const std::lock_guard lock(completion->mutex);
        completion->done = true;
        completion->changed.notify_all();
    }).detach();
}

}  // namespace

Call runOnThread(std::chrono::seconds limit, std::function<void()> work) {
    const auto completion = std::make_shared<Completion>();
    start(completion, std::move(work));
    std::unique_lock lock(completion->mutex);
    const bool done = completion->changed.wait_for(lock, limit, [&] { return completion->done; });
    return done ? Call::Done : Call::TimedOut;
}

}  // namespace velnor::platform
