// The plain HTTP client on sockets against libcurl's easy interface: small replies over a
// connection that is kept, and large ones over connections of their own.
#include "net/socket_http.h"

#include <cstring>
#include <string>

#include "comparison.h"
#include "curl_peer.h"
#include "groups.h"
#include "net/socket.h"
#include "processor.h"
#include "servers.h"
#include "support/owned.h"

namespace bench {
namespace {

constexpr char kHost[] = "127.0.0.1";
constexpr size_t kLarge = 10 * kMiB;

// The length, and some bytes at both ends and in the middle: what has been mixed up shows there, at
// no cost beside the transfer's.
bool isRight(const char* body, size_t size, const std::string& expected) {
    constexpr size_t kSample = 64;
    if (body == nullptr || size != expected.size()) return false;
    for (const size_t at : {size_t{0}, size / 2, size - kSample}) {
        if (std::memcmp(body + at, expected.data() + at, kSample) != 0) return false;
    }
    return true;
}

class KeptSocket {
  public:
    KeptSocket() : socket_(_vn_openSocket(kHost, leanPort())) {}

    bool fetch() const {
        uint32_t size = 0;
        const velnor::OwnedText body(
            _vn_downloadPathFromSocket("bench", kJsonPath, kHost, socket_.get(), nullptr, &size));
        return isRight(body.get(), size, jsonReply());
    }

  private:
    velnor::Socket socket_;
};

class KeptHandle {
  public:
    bool fetch() { return peer_.fetch() && isRight(peer_.body(), peer_.size(), jsonReply()); }

  private:
    CurlPeer peer_{leanUrl(kJsonPath).c_str()};
};

// The connection is made before the clock runs, and has to be the only one. Where both sides run is
// said, because left alone they share a processor at one time and not at another, and waking across
// two takes several times as long as the exchange.
template <class Kept>
void repeatKept(benchmark::State& state, Processor processor) {
    const OnProcessor here(processor);
    const int before = leanConnections();
    Kept kept;
    bool isWhole = kept.fetch();
    for (auto _ : state) isWhole = isWhole && kept.fetch();
    if (!isWhole) state.SkipWithError("a reply was not right");
    if (leanConnections() != before + 1) state.SkipWithError("the connection was not kept");
}

bool fetchLarge(const std::string& url, const std::string& expected) {
    uint32_t size = 0;
    const velnor::OwnedText body(_vn_downloadURL("bench", url.c_str(), nullptr, &size, nullptr));
    return isRight(body.get(), size, expected);
}

bool fetchLargeWithCurl(const std::string& url, const std::string& expected) {
    CurlPeer peer(url.c_str());
    return peer.fetch() && isRight(peer.body(), peer.size(), expected);
}

template <class Fetch>
Body repeat(Fetch fetch, End end) {
    return [fetch, end](benchmark::State& state) {
        const OnProcessor here(Processor::Other);
        const std::string url = leanUrl(leanPath(kLarge, end));
        static const std::string expected = bodyOf(kLarge);
        for (auto _ : state) {
            if (!fetch(url, expected)) {
                state.SkipWithError("the body did not come whole");
                return;
            }
        }
    };
}

void addKept(const std::string& name, Processor processor, double maxRatio) {
    compare(
        name, [processor](benchmark::State& state) { repeatKept<KeptSocket>(state, processor); },
        "libcurl",
        [processor](benchmark::State& state) { repeatKept<KeptHandle>(state, processor); },
        {Limit::Kind::MaxRatio, maxRatio});
}

void addLarge(const std::string& name, End end) {
    compare(name, repeat(fetchLarge, end), "libcurl", repeat(fetchLargeWithCurl, end),
            {Limit::Kind::MaxRatio, 1.0});
}

}  // namespace

void addSocketHttp() {
    // Across two processors most of the time goes into waking the other side, which is the same for
    // both.
    addKept("plain HTTP client, JSON, one processor", Processor::Servers, 1 / 1.5);
    addKept("plain HTTP client, JSON, two processors", Processor::Other, 0.9);
    addLarge("plain HTTP client, 10 MiB, with length", End::Length);
    addLarge("plain HTTP client, 10 MiB, until closed", End::Close);
}

}  // namespace bench
