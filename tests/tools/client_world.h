// A client that runs, a server for it to download from, and vnctl beside them.
#ifndef TESTS_TOOLS_CLIENT_WORLD_H
#define TESTS_TOOLS_CLIENT_WORLD_H

#include <atomic>
#include <string>
#include <vector>

#include "harness/harness.h"
#include "sandbox/servers/raw_server.h"

/// Standard output of vnctl in the folder /tmp/work; `arguments` may end with redirections.
harness::CommandResult vnctl(const std::string& arguments);

/// vnctl with these arguments, and what it is to end with and to say on either output.
struct Outcome {
    std::string arguments;
    int status;
    std::string message;
};
void expectOutcomes(const std::vector<Outcome>& outcomes);

/// How the client misbehaves from now on.
void setClientMode(const std::string& mode);

/// The stand-in client, started and answering.
class RunningClient {
  public:
    RunningClient() { start(); }
    ~RunningClient() { stop(); }

    void start();
    void stop();

  private:
    std::string pid_;
};

/// Where a test's own server is.
inline const std::string kHost = "http://127.0.0.1:8080";
constexpr int kPort = 8080;
inline const std::string kFilm = kHost + "/film.mov";

/// 3 MiB in which no two parts are alike.
const std::string& filmContent();

/// The server of kFilm, which stops in the middle of it until it is told to go on.
class HalfServer {
  public:
    HalfServer();
    ~HalfServer() { goOn(); }

    void goOn() {
        goesOn_ = true;
        goesOn_.notify_all();
    }

  private:
    std::atomic<bool> goesOn_ = false;
    sandbox::RawServer server_;
};

#endif
