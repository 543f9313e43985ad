// The loop that watches.
#include "vnctl/follow.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>

#include "vnctl/download_display.h"
#include "vnctl/failure.h"

namespace vnctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPause{250};
constexpr std::chrono::seconds kPatience{10};

template <size_t kCount>
bool isOneOf(const int32_t (&values)[kCount], int32_t value) {
    return std::find(std::begin(values), std::end(values), value) != std::end(values);
}

bool isAtRest(int32_t status) {
    static constexpr int32_t kFinal[] = {FILE_STATUS_PAUSED, FILE_STATUS_COMPLETE,
                                         FILE_STATUS_INSUFFICIENTDISKSPACE, FILE_STATUS_NOTFOUND,
                                         FILE_STATUS_FORBIDDEN};
    return isOneOf(kFinal, status);
}

// What comes of a client that is being restarted.
bool mayPass(uint32_t code) {
    static constexpr int32_t kPassing[] = {INSTALL_ERROR_NOTINSTALLED, INSTALL_ERROR_INTERNAL,
                                           INSTALL_ERROR_NETWORK};
    return isOneOf(kPassing, static_cast<int32_t>(code));
}

// Asks until there is an answer.
void askPatiently(Download& download) {
    const Clock::time_point end = Clock::now() + kPatience;
    while (const uint32_t code = download.ask()) {
        if (!mayPass(code) || Clock::now() >= end) throw failureOf(code);
        std::this_thread::sleep_for(kPause);
    }
}

// An output that is closed again however the watching ends.
class Screen {
  public:
    explicit Screen(bool isQuiet) {
        if (!isQuiet) display_.emplace();
    }
    ~Screen() {
        if (display_) display_->end();
    }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    void show(const FileAttributes& file) {
        if (display_) display_->show(file);
    }

  private:
    std::optional<DownloadDisplay> display_;
};

}  // namespace

int32_t follow(Download& download, bool isQuiet) {
    Screen screen(isQuiet);
    for (int32_t before = FILE_STATUS_UNKNOWN;; before = download.record().status) {
        askPatiently(download);
        screen.show(download.record());
        if (isAtRest(download.record().status)) return before;
        std::this_thread::sleep_for(kPause);
    }
}

}  // namespace vnctl
