// The client API against the same requests by libcurl, with RapidJSON for the replies: a download's
// state over a kept connection, and what the library costs to load.
#include <rapidjson/document.h>

#include <stdexcept>
#include <string>

#include "api_reply.h"
#include "comparison.h"
#include "curl_peer.h"
#include "groups.h"
#include "harness/harness.h"
#include "processor.h"
#include "sandbox/servers/loopback.h"
#include "servers.h"
#include "velnor/capi.h"

namespace bench {
namespace {

using harness::run;

bool isListening() { return run("curl -s -o /dev/null http://127.0.0.1:9421/").status != 7; }

// A client on port 9421 while it lives, and only then: installations must not find one.
class Client {
  public:
    Client() : pid_(run("'" API_PEER "' serve </dev/null >/dev/null 2>&1 & echo $!").output) {
        if (!harness::eventually(isListening)) throw std::runtime_error("no client");
    }
    ~Client() {
        run("kill -9 " + pid_);
        harness::eventually([] { return !isListening(); });
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

  private:
    std::string pid_;
};

class Ours {
  public:
    Ours() { vn_initialize("bench", &handle_); }
    ~Ours() {
        vn_cleanFileAttributes(handle_, &file_, 0);
        vn_uninitialize(handle_, 0);
    }
    Ours(const Ours&) = delete;
    Ours& operator=(const Ours&) = delete;

    bool ask() {
        return vn_getFileAttributes(handle_, 0, kApiUrl, &file_, 0) == 0 && file_.size == kApiSize;
    }

  private:
    ApiHandle* handle_ = nullptr;
    FileAttributes file_{};
};

// Fills the same record, as a program would that had no library for it.
class Theirs {
  public:
    bool ask() {
        if (!peer_.fetch()) return false;
        rapidjson::Document json;
        json.Parse(peer_.body(), peer_.size());
        if (json.HasParseError() || !json.IsObject()) return false;
        status_ = text(json, "status");
        path_ = text(json, "path");
        errorString_ = text(json, "errorstring");
        md5_ = text(json, "verifiedcontentmd5");
        const char* const names[] = {"size",         "uniquerecv", "progress",
                                     "downloadrate", "error",      "suberror"};
        for (size_t i = 0; i < std::size(names); ++i) numbers_[i] = number(json, names[i]);
        return numbers_[0] == kApiSize && status_ == "DOWNLOADING";
    }

  private:
    static std::string text(const rapidjson::Document& json, const char* name) {
        const auto member = json.FindMember(name);
        return member != json.MemberEnd() && member->value.IsString() ? member->value.GetString()
                                                                      : "";
    }
    static int64_t number(const rapidjson::Document& json, const char* name) {
        const auto member = json.FindMember(name);
        return member != json.MemberEnd() && member->value.IsInt64() ? member->value.GetInt64() : 0;
    }

    CurlPeer peer_{(std::string("http://127.0.0.1:9421/api?function=getFileAttributes&cid=0"
                                "&apiversion=capi_1.6.5&url=") +
                    kApiUrlEncoded + "&complete")
                       .c_str()};
    std::string status_, path_, errorString_, md5_;
    int64_t numbers_[6] = {};
};

template <class Side>
Body repeat(Processor processor) {
    return [processor](benchmark::State& state) {
        const Client client;
        const OnProcessor here(processor);
        Side side;
        bool isRight = side.ask();
        for (auto _ : state) isRight = isRight && side.ask();
        if (!isRight) state.SkipWithError("a reply was not right");
    };
}

double numberFrom(const std::string& command) {
    const harness::CommandResult result = run(command);
    if (result.status != 0) throw std::runtime_error(command + " failed");
    return std::stod(result.output);
}

Body load(const std::string& library) {
    return [library](benchmark::State& state) {
        const Client client;
        for (auto _ : state) state.SetIterationTime(numberFrom("'" API_START "' " + library));
    };
}

// What is loaded of it: code and data, without symbols for the debugger.
Body size(const std::string& library) {
    return [library](benchmark::State& state) {
        for (auto _ : state) {
            const std::string path = "$(readlink -f " + library + ")";
            state.counters["value"] =
                numberFrom("size -B \"" + path + "\" | awk 'NR == 2 { print $4 }'") / double(kKiB);
        }
    };
}

void addRequests(const std::string& name, Processor processor, double maxRatio) {
    compare(name, repeat<Ours>(processor), "libcurl+", repeat<Theirs>(processor),
            {Limit::Kind::MaxRatio, maxRatio});
}

}  // namespace

void addApiRequests() {
    // Across two processors most of the time goes into waking the client, the same for both.
    addRequests("vn_getFileAttributes, one processor", Processor::Servers, 1 / 1.2);
    addRequests("vn_getFileAttributes, two processors", Processor::Other, 0.9);
    compare("library, load and first reply", load("velnor '" CAPI_LIBRARY "'"), "libcurl",
            load("libcurl libcurl.so.4"), {}, true, 5);
    compareKiB("library alone, loaded size", size("'" CAPI_LIBRARY "'"), "libcurl",
               size("/usr/lib/*/libcurl.so.4"));
    measure(
        "vn_getFileAttributes, allocated", "KiB",
        [](benchmark::State& state) {
            const Client client;
            for (auto _ : state) {
                state.counters["value"] = numberFrom("'" API_PEER "' allocated") / double(kKiB);
            }
        },
        8.0);
}

}  // namespace bench
