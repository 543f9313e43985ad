// Keeps SIGPIPE from the calling thread while it writes to sockets through a library that may raise
// it, without touching the process's signal handlers.
#ifndef VELNOR_PLATFORM_LINUX_SIGPIPE_GUARD_H
#define VELNOR_PLATFORM_LINUX_SIGPIPE_GUARD_H

#include <pthread.h>
#include <signal.h>

namespace velnor::platform {

class SigpipeGuard {
  public:
    SigpipeGuard() {
        sigemptyset(&sigpipe_);
        sigaddset(&sigpipe_, SIGPIPE);
        wasPending_ = isPending();
        pthread_sigmask(SIG_BLOCK, &sigpipe_, &previous_);
    }
    ~SigpipeGuard() {
        constexpr timespec kAtOnce{0, 0};
        if (!wasPending_ && isPending()) sigtimedwait(&sigpipe_, nullptr, &kAtOnce);
        pthread_sigmask(SIG_SETMASK, &previous_, nullptr);
    }
    SigpipeGuard(const SigpipeGuard&) = delete;
    SigpipeGuard& operator=(const SigpipeGuard&) = delete;

  private:
    static bool isPending() {
        sigset_t pending;
        return sigpending(&pending) == 0 && sigismember(&pending, SIGPIPE) == 1;
    }

    sigset_t sigpipe_;
    sigset_t previous_;
    bool wasPending_;
};

}  // namespace velnor::platform

#endif
