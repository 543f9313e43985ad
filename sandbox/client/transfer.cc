#include "transfer.h"

#include <curl/curl.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <system_error>

namespace standin {
namespace {

namespace fs = std::filesystem;

constexpr long kConnectSeconds = 10;
constexpr long kSilenceSeconds = 15;
constexpr long kBuffer = 256 * 1024;

Status afterHttp(long status) {
    if (status == 404 || status == 410) return Status::NotFound;
    const bool isPassing = status == 408 || status == 416 || status == 429;
    return status / 100 == 4 && !isPassing ? Status::Forbidden : Status::Disconnected;
}

Status afterFileError(int error) {
    const bool isFull = error == ENOSPC || error == EDQUOT || error == EFBIG;
    return isFull ? Status::InsufficientDiskSpace : Status::Paused;
}

std::string withQuery(std::string url, const std::string& query) {
    if (query.empty()) return url;
    const size_t end = std::min(url.find('#'), url.size());
    const bool hasQuery = url.find('?') < end;
    return url.insert(end, (hasQuery ? "&" : "?") + query);
}

class Transfer {
  public:
    Transfer(const Order& order, const Progress& progress, const std::stop_token& stop)
        : order_(order), progress_(progress), stop_(stop) {
        if (!easy_) throw std::bad_alloc();
        std::error_code error;
        fs::create_directories(fs::path(order.path).parent_path(), error);
        file_.reset(std::fopen(order.partPath().c_str(), "wbe"));
        if (!file_) fileError_ = errno;
    }

    Outcome run() {
        if (!file_) return failed(CURLE_OK);
        configure();
        const CURLcode code = curl_easy_perform(easy_.get());
        check(std::fclose(file_.release()) == 0);
        if (code == CURLE_OK) {
            check(std::rename(order_.partPath().c_str(), order_.path.c_str()) == 0);
        }
        if (code != CURLE_OK || fileError_ != 0) return failed(code);
        return {.status = Status::Complete, .size = number(CURLINFO_SIZE_DOWNLOAD_T)};
    }

  private:
    void set(CURLoption option, auto value) { curl_easy_setopt(easy_.get(), option, value); }

    void configure() {
        set(CURLOPT_URL, withQuery(order_.url, order_.queryAuth).c_str());
        set(CURLOPT_USERAGENT, "Velnor stand-in client");
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
        set(CURLOPT_FOLLOWLOCATION, 1L);
        set(CURLOPT_FAILONERROR, 1L);
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_CONNECTTIMEOUT, kConnectSeconds);
        set(CURLOPT_LOW_SPEED_LIMIT, 1L);
        set(CURLOPT_LOW_SPEED_TIME, kSilenceSeconds);
        set(CURLOPT_BUFFERSIZE, kBuffer);
        set(CURLOPT_MAX_RECV_SPEED_LARGE, static_cast<curl_off_t>(order_.speed));
        set(CURLOPT_WRITEFUNCTION, &Transfer::onBody);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_NOPROGRESS, 0L);
        set(CURLOPT_XFERINFOFUNCTION, &Transfer::onProgress);
        set(CURLOPT_XFERINFODATA, this);
        if (!order_.cookies.empty()) set(CURLOPT_COOKIE, order_.cookies.c_str());
        if (order_.basicAuth.empty()) return;
        headers_.reset(
            curl_slist_append(nullptr, ("Authorization: Basic " + order_.basicAuth).c_str()));
        set(CURLOPT_HTTPHEADER, headers_.get());
    }

    static size_t onBody(const char* data, size_t, size_t size, void* self) {
        auto* transfer = static_cast<Transfer*>(self);
        const size_t written = std::fwrite(data, 1, size, transfer->file_.get());
        transfer->check(written == size);
        return written;
    }

    /// Anything but 0 ends the transfer.
    static int onProgress(void* self, curl_off_t size, curl_off_t received, curl_off_t,
                          curl_off_t) {
        auto* transfer = static_cast<Transfer*>(self);
        if (received > 0) transfer->report(size, received);
        return transfer->stop_.stop_requested() || transfer->fileError_ != 0 ? 1 : 0;
    }

    void report(int64_t size, int64_t received) {
        if (!hasBegun_ && size > 0) demandRoom(static_cast<uint64_t>(size));
        hasBegun_ = true;
        progress_(size, received, number(CURLINFO_SPEED_DOWNLOAD_T));
    }

    void demandRoom(uint64_t size) {
        std::error_code error;
        const fs::space_info room = fs::space(order_.partPath(), error);
        if (!error && room.available < size) fileError_ = ENOSPC;
    }

    void check(bool success) {
        if (!success && fileError_ == 0) fileError_ = errno;
    }

    int64_t number(CURLINFO which) const {
        curl_off_t value = 0;
        curl_easy_getinfo(easy_.get(), which, &value);
        return value;
    }

    Outcome failed(CURLcode code) const {
        if (fileError_ != 0) {
            return {.status = afterFileError(fileError_),
                    .failure = {code, fileError_, std::generic_category().message(fileError_)}};
        }
        long http = 0;
        long system = 0;
        curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &http);
        curl_easy_getinfo(easy_.get(), CURLINFO_OS_ERRNO, &system);
        // Not the longer text with the milliseconds in it, which would be another each time.
        return {.status = afterHttp(http),
                .failure = {code, http != 0 ? http : system, curl_easy_strerror(code)}};
    }

    const Order& order_;
    const Progress& progress_;
    const std::stop_token& stop_;
    int fileError_ = 0;  // an errno
    bool hasBegun_ = false;
    std::unique_ptr<FILE, decltype(&std::fclose)> file_{nullptr, std::fclose};
    std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> headers_{nullptr,
                                                                         curl_slist_free_all};
    std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> easy_{curl_easy_init(), curl_easy_cleanup};
};

}  // namespace

bool isFetchable(const std::string& url) {
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parsed(curl_url(), curl_url_cleanup);
    const bool isUrl = curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), 0) == CURLUE_OK;
    return isUrl && (url.starts_with("http://") || url.starts_with("https://"));
}

Outcome transfer(const Order& order, const Progress& progress, const std::stop_token& stop) {
    return Transfer(order, progress, stop).run();
}

}  // namespace standin
