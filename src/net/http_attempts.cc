// The course of the attempts.
#include "net/http_attempts.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>

#include "net/proxy_credentials.h"
#include "net/stream_polls.h"
#include "platform/system_proxies.h"

namespace velnor {
namespace {

constexpr uint32_t kReadSize = 1024;
constexpr int32_t kOk = 200;
constexpr int32_t kProxyAuthenticationRequired = 407;
constexpr std::chrono::milliseconds kFirstPause{50};
constexpr std::chrono::milliseconds kLongestPause{1000};

enum class Mode { Proxied, Direct };

enum class Ending {
    Done,
    WithCredentials,  // the same attempt goes on, with credentials
    NoStream,
    NoAnswer,
    BrokenAnswer,
    NoCredentials,
    Refusal,
    NoMemory,
};

class Attempts {
  public:
    Attempts(const platform::HttpRequest& request, const AttemptPolicy& policy,
             AnswerReader* reader)
        : request_(request),
          policy_(policy),
          reader_(reader),
          proxies_(platform::copySystemProxies()) {}

    bool run() {
        for (Mode mode = Mode::Proxied;; mode = Mode::Direct) {
            const Ending ending = attempt(mode);
            if (ending == Ending::Done) return true;
            const Next next = nextAfter(ending);
            const bool wasLast = next == Next::DirectOnce && mode == Mode::Direct;
            if (next == Next::GiveUp || wasLast) return false;
            if (next == Next::DirectAgain) pause();
        }
    }

  private:
    // One attempt, of one or two requests.
    Ending attempt(Mode mode) {
        if (!policy_.asksProxyOnce) authentication_.reset();
        Ending ending = Ending::WithCredentials;
        while (ending == Ending::WithCredentials) ending = exchange(mode);
        return ending;
    }

    Ending exchange(Mode mode) {
        const auto stream = platform::createHttpStream(requestFor(mode));
        if (!stream || !stream->open()) return Ending::NoStream;
        // A failed stream ends the wait for bytes as well: a read of it need not wait.
        if (!waitUntilOpen(*stream) || !waitForBytes(*stream) ||
            stream->status() == platform::StreamStatus::Error) {
            return Ending::NoAnswer;
        }
        ResponseBody body;
        const Ending received = receive(*stream, &body);
        if (received != Ending::Done) return received;
        switch (stream->responseCode()) {
            case kOk:
                return accept(*stream, &body);
            case kProxyAuthenticationRequired:
                return authenticate(*stream);
            default:
                return Ending::Refusal;
        }
    }

    platform::HttpRequest requestFor(Mode mode) const {
        platform::HttpRequest request = request_;
        if (mode == Mode::Direct) return request;
        request.proxies = proxies_.get();
        request.authentication = authentication_.get();
        request.credentials = authentication_ ? &credentials_ : nullptr;
        return request;
    }

    Ending receive(platform::HttpStream& stream, ResponseBody* body) const {
        char chunk[kReadSize];
        if (reader_ != nullptr) body->reserve(stream.announcedLength());
        for (;;) {
            const int32_t count = stream.read(chunk, sizeof chunk);
            if (count == 0) return Ending::Done;
            if (count < 0) {
                if (stream.status() == platform::StreamStatus::Error) return Ending::BrokenAnswer;
                continue;  // no bytes and no error: there is nothing to append
            }
            if (reader_ == nullptr) continue;
            if (!body->append(chunk, static_cast<uint32_t>(count))) return Ending::NoMemory;
        }
    }

    // Prepares the answer to a 407. In direct mode credentials are looked up and never sent, so
    // that a second 407 ends the attempt there too.
    Ending authenticate(const platform::HttpStream& stream) {
        if (authentication_) return Ending::Refusal;
        authentication_ = stream.proxyAuthentication();
        const bool answerable = authentication_ && authentication_->requiresUserNameAndPassword();
        if (!answerable || !_vn_mac_get_keychain_proxy_credentials(request_.url, &credentials_)) {
            return Ending::NoCredentials;
        }
        return Ending::WithCredentials;
    }

    Ending accept(const platform::HttpStream& stream, ResponseBody* body) const {
        switch (reader_ != nullptr ? reader_->accept(stream, body) : Verdict::Accepted) {
            case Verdict::Accepted:
                return Ending::Done;
            case Verdict::NoMemory:
                return Ending::NoMemory;
            default:
                return Ending::Refusal;
        }
    }

    Next nextAfter(Ending ending) const {
        switch (ending) {
            case Ending::NoStream:
                return policy_.noStream;
            case Ending::NoAnswer:
                return policy_.noAnswer;
            case Ending::BrokenAnswer:
                return policy_.brokenAnswer;
            case Ending::NoCredentials:
                return policy_.noCredentials;
            case Ending::Refusal:
                return policy_.refusal;
            default:
                return Next::GiveUp;
        }
    }

    // A refused connection fails at once; without a pause its repetition would fill a core.
    void pause() {
        std::this_thread::sleep_for(pause_);
        pause_ = std::min(2 * pause_, kLongestPause);
    }

    platform::HttpRequest request_;
    const AttemptPolicy& policy_;
    AnswerReader* reader_;
    std::unique_ptr<platform::SystemProxies> proxies_;
    std::unique_ptr<platform::ProxyAuthentication> authentication_;
    platform::Credentials credentials_;
    std::chrono::milliseconds pause_ = kFirstPause;
};

}  // namespace

bool sendInAttempts(const platform::HttpRequest& request, const AttemptPolicy& policy,
                    AnswerReader* reader) {
    return Attempts(request, policy, reader).run();
}

}  // namespace velnor
