// One connection to the control interface, and all that are open.
#ifndef SANDBOX_CLIENT_CONNECTION_H
#define SANDBOX_CLIENT_CONNECTION_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <string>

#include "api.h"

using Responder = std::function<Answer(const std::string& head)>;

/// Answers each connection on a thread of its own, so that one that stays silent holds up nobody
/// else.
class Connections {
  public:
    explicit Connections(const Responder& responder) : responder_(responder) {}

    /// Ends all that are open and waits for their threads.
    ~Connections();
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    /// Takes the descriptor over.
    void add(int connection);

  private:
    void talk(int connection);

    const Responder& responder_;
    std::mutex mutex_;
    std::condition_variable ended_;
    std::set<int> open_;
};

#endif
