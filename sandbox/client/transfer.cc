// Transfers on a multi handle each, because that can be woken up to stop at once.
#include "transfer.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <memory>
#include <new>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "url.h"

namespace {

constexpr long kConnectPatience = 10;
constexpr long kSilencePatience = 15;
constexpr long kSmallestBuffer = 1024;
constexpr long kBuffer = 256 * 1024;
constexpr double kShortestSeconds = 0.05;
constexpr int kTick = 200;  // milliseconds
constexpr std::chrono::milliseconds kStep{10};

using Clock = std::chrono::steady_clock;
using Easy = std::unique_ptr<CURL, decltype(&curl_easy_cleanup)>;
using Multi = std::unique_ptr<CURLM, decltype(&curl_multi_cleanup)>;
using List = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

int64_t numberAt(std::string_view text, size_t position) {
    int64_t number = -1;
    if (position < text.size())
        std::from_chars(text.data() + position, text.data() + text.size(), number);
    return number;
}

class Transfer {
  public:
    Transfer(const Order& order, const Announcement& known, PartFile& part,
             TransferObserver& observer, const std::stop_token& stop)
        : order_(order), known_(known), part_(part), observer_(observer), stop_(stop) {
        if (!easy_ || !multi_) throw std::bad_alloc();
    }

    Outcome run() {
        configure();
        curl_multi_add_handle(multi_.get(), easy_.get());
        const bool ended = loop();
        Outcome outcome = ended ? judge() : Outcome{.end = Outcome::End::interrupted};
        curl_multi_remove_handle(multi_.get(), easy_.get());
        return outcome;
    }

  private:
    template <class Value>
    void set(CURLoption option, Value value) {
        const CURLcode code = curl_easy_setopt(easy_.get(), option, value);
        if (code != CURLE_OK) throw std::runtime_error(curl_easy_strerror(code));
    }

    void configure() {
        set(CURLOPT_URL, withQuery(order_.url, order_.queryAuth).c_str());
        set(CURLOPT_USERAGENT, "Velnor stand-in client");
        set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_FAILONERROR, 1L);
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_ERRORBUFFER, text_);
        set(CURLOPT_WRITEFUNCTION, &Transfer::onBody);
        set(CURLOPT_WRITEDATA, this);
        if (!order_.cookies.empty()) set(CURLOPT_COOKIE, order_.cookies.c_str());
        configureSpeed();
        configureHeaders();
    }

    void configureSpeed() {
        // A slow transfer by order is silent for as long as its buffer takes.
        const int64_t speed = order_.speed;
        const long buffer = speed > 0 ? std::clamp(speed / 8, kSmallestBuffer, kBuffer) : kBuffer;
        set(CURLOPT_BUFFERSIZE, buffer);
        set(CURLOPT_MAX_RECV_SPEED_LARGE, static_cast<curl_off_t>(speed));
        set(CURLOPT_CONNECTTIMEOUT, kConnectPatience);
        set(CURLOPT_LOW_SPEED_LIMIT, 1L);
        set(CURLOPT_LOW_SPEED_TIME, kSilencePatience + (speed > 0 ? 4 * buffer / speed : 0L));
    }

    void configureHeaders() {
        if (!order_.basicAuth.empty()) addHeader("Authorization: Basic " + order_.basicAuth);
        if (part_.size() > 0) {
            set(CURLOPT_RANGE, (std::to_string(part_.size()) + "-").c_str());
            if (!known_.etag.empty()) addHeader("If-Range: " + known_.etag);
        }
        set(CURLOPT_HTTPHEADER, headers_.get());
    }

    void addHeader(const std::string& line) {
        curl_slist* longer = curl_slist_append(headers_.get(), line.c_str());
        if (longer == nullptr) throw std::bad_alloc();
        static_cast<void>(headers_.release());
        headers_.reset(longer);
    }

    /// False when it was interrupted.
    bool loop() {
        const std::stop_callback wake(stop_, [this] { curl_multi_wakeup(multi_.get()); });
        for (int running = 1; running != 0;) {
            if (stop_.stop_requested() || observer_.isInterrupted()) return false;
            if (curl_multi_perform(multi_.get(), &running) != CURLM_OK) throw std::bad_alloc();
            if (hasBegun_) observer_.went(part_.size(), rate());  // falls when nothing comes
            if (running != 0) curl_multi_poll(multi_.get(), nullptr, 0, kTick, nullptr);
        }
        return true;
    }

    int64_t rate() const {
        const std::chrono::duration<double> spent = Clock::now() - start_;
        return static_cast<int64_t>(static_cast<double>(taken_) /
                                    std::max(spent.count(), kShortestSeconds));
    }

    long status() const {
        long status = 0;
        curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
        return status;
    }

    std::string header(const char* name) const {
        curl_header* found = nullptr;
        const auto result = curl_easy_header(easy_.get(), name, 0, CURLH_HEADER, -1, &found);
        return result == CURLHE_OK ? found->value : "";
    }

    static size_t onBody(const char* data, size_t, size_t size, void* self) {
        return static_cast<Transfer*>(self)->takeBody(data, size) ? size : 0;
    }

    bool takeBody(const char* data, size_t size) {
        if (!hasBegun_ && !begin()) return false;
        part_.append(data, size);
        taken_ += static_cast<int64_t>(size);
        observer_.went(part_.size(), rate());
        if (order_.speed > 0) awaitPace();
        return part_.error() == 0;
    }

    /// libcurl's own limit lets a second's worth through at once, which is all of a short transfer.
    void awaitPace() {
        const double seconds = static_cast<double>(taken_) / static_cast<double>(order_.speed);
        const auto due = start_ + std::chrono::duration<double>(seconds);
        while (!stop_.stop_requested() && Clock::now() < due) std::this_thread::sleep_for(kStep);
    }

    /// With the reply's head, before its first byte: false when the reply is of no use.
    bool begin() {
        const std::string range = header("Content-Range");
        const bool fits = status() == 206 && numberAt(range, 6) == part_.size();
        const bool isWhole = status() == 200 && range.empty();
        if (!fits) part_.clear();
        if (!fits && !isWhole) return false;
        curl_off_t rest = -1;
        curl_easy_getinfo(easy_.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &rest);
        if (rest > 0) part_.demandRoom(rest);
        const std::string etag = header("ETag");
        observer_.begun({.size = rest >= 0 ? part_.size() + rest : 0,
                         .etag = etag.starts_with('"') ? etag : "",
                         .expectedMd5 = header("Content-MD5")});
        hasBegun_ = true;
        start_ = Clock::now();
        return part_.error() == 0;
    }

    /// "bytes */SIZE" says that nothing is behind the part, which is whole when it has this size.
    bool wasWholeBefore() const {
        const std::string range = header("Content-Range");
        return status() == 416 && numberAt(range, range.find('/') + 1) == part_.size();
    }

    CURLcode result() const {
        int left = 0;
        const CURLMsg* message = curl_multi_info_read(multi_.get(), &left);
        return message != nullptr ? message->data.result : CURLE_FAILED_INIT;
    }

    Outcome judge() {
        const CURLcode code = result();
        const bool whole = code == CURLE_OK ? hasBegun_ || begin() : wasWholeBefore();
        Outcome outcome{.fileError = part_.error(), .httpStatus = status()};
        if (whole && outcome.fileError == 0) {
            outcome.end = Outcome::End::whole;
            return outcome;
        }
        if (outcome.httpStatus == 416) part_.clear();
        outcome.trouble = troubleOf(code, outcome);
        return outcome;
    }

    Trouble troubleOf(CURLcode code, const Outcome& outcome) const {
        if (outcome.fileError != 0)
            return {code, outcome.fileError, std::generic_category().message(outcome.fileError)};
        long systemError = 0;
        curl_easy_getinfo(easy_.get(), CURLINFO_OS_ERRNO, &systemError);
        return {code, outcome.httpStatus != 0 ? outcome.httpStatus : systemError,
                *text_ != '\0' ? text_ : curl_easy_strerror(code)};
    }

    const Order& order_;
    const Announcement& known_;
    PartFile& part_;
    TransferObserver& observer_;
    const std::stop_token& stop_;
    int64_t taken_ = 0;
    Clock::time_point start_;
    bool hasBegun_ = false;
    char text_[CURL_ERROR_SIZE] = {};
    List headers_{nullptr, curl_slist_free_all};
    Easy easy_{curl_easy_init(), curl_easy_cleanup};
    Multi multi_{curl_multi_init(), curl_multi_cleanup};
};

}  // namespace

Outcome transfer(const Order& order, const Announcement& known, PartFile& part,
                 TransferObserver& observer, const std::stop_token& stop) {
    return Transfer(order, known, part, observer, stop).run();
}
