// The functions of the control interface: which request gets which reply.
#ifndef SANDBOX_CLIENT_API_H
#define SANDBOX_CLIENT_API_H

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>

#include "../servers/http.h"
#include "downloads.h"
#include "faults.h"
#include "query.h"

namespace standin {

struct Answer {
    std::string bytes;  // empty for none: the connection is closed
    bool keepsOpen = false;
};

class Api {
  public:
    explicit Api(Downloads& downloads) : downloads_(downloads) {}

    /// The whole reply to a request. Notes every request but a ping on standard output: a line with
    /// the user agent ("-" for none), the target and the reply's body, separated by tabs.
    Answer answer(const sandbox::Request& request);

  private:
    using Clock = std::chrono::steady_clock;
    using Function = std::string (Api::*)(const Query&);
    struct Reply {
        const char* status;
        std::string body;
    };

    static Function functionNamed(const std::string& name);
    Reply replyTo(const sandbox::Request& request, const std::string& target, const Query& query,
                  const Mode& mode);
    std::string perform(Function function, const Query& query);

    std::string ping(const Query& query);
    std::string uninstall(const Query& query);
    std::string clientAttributes(const Query& query);
    std::string downloadFile(const Query& query);
    std::string fileAttributes(const Query& query);
    std::string pauseFile(const Query& query);
    std::string deleteFile(const Query& query);
    std::string periodicTasks(const Query& query);

    Downloads& downloads_;
    FaultInjection faults_;
    /// When the client's servers will know that an application has left.
    std::atomic<Clock::time_point> serversKnow_ = Clock::time_point::max();
    std::mutex periodic_;
    Clock::time_point nextPeriodic_;
};

}  // namespace standin

#endif
