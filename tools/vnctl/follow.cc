#include "vnctl/follow.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <iostream>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "program/progress.h"
#include "program/text.h"
#include "vnctl/failure.h"

namespace vnctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kAskInterval{250};
constexpr std::chrono::seconds kRestartTimeout{10};
constexpr std::chrono::seconds kLongestSilence{10};
// Of the client, until it is told.
constexpr std::chrono::seconds kUnansweredTimeout{2};
// A longer time is a guess that says nothing.
constexpr int64_t kLongestRemaining = 99 * 3600;

// What percentage of the file is there; 100 only when it is complete.
unsigned percentageOf(const FileAttributes& file) {
    if (file.status == FILE_STATUS_COMPLETE) return 100;
    if (file.size <= 0) return 0;
    // In floating point, because a size times 100 may be more than the type holds.
    const double share = static_cast<double>(file.uniquerecv) / static_cast<double>(file.size);
    return static_cast<unsigned>(std::clamp(share * 100, 0.0, 99.0));
}

std::string received(const FileAttributes& file) {
    if (file.size <= 0) return program::humanSize(file.uniquerecv);
    return program::humanSize(file.uniquerecv) + " of " + program::humanSize(file.size);
}

std::string remaining(const FileAttributes& file) {
    if (file.downloadrate <= 0 || file.size <= file.uniquerecv) return "";
    const int64_t seconds = (file.size - file.uniquerecv) / file.downloadrate;
    return seconds <= kLongestRemaining ? program::humanDuration(seconds) + " left" : "";
}

std::vector<std::string> detailsOf(const FileAttributes& file) {
    const bool isDownloading = file.status == FILE_STATUS_DOWNLOADING;
    std::vector<std::string> details;
    if (!isDownloading) details.emplace_back(vn_fileStatusToString(file.status));
    if (file.uniquerecv > 0) details.push_back(received(file));
    if (isDownloading) {
        details.push_back(program::humanRate(file.downloadrate));
        details.push_back(remaining(file));
    }
    std::erase(details, "");
    return details;
}

// The output, on which a new line is begun however the watching ends.
class Display {
  public:
    Display() = default;
    ~Display() { progress_.end(); }
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    // Shows the state that a download is in now.
    void show(const FileAttributes& file) {
        const std::lock_guard lock(mutex_);
        const unsigned percentage = percentageOf(file);
        sayWhyDisconnected(file);
        if (!progress_.isTerminal() && !isNews(file, percentage)) return;
        progress_.show(percentage, detailsOf(file));
        lastStatus_ = file.status;
        lastPercentage_ = percentage;
        lastTime_ = Clock::now();
    }

    // Says that the client is silent. May be called on another thread.
    void sayWaiting() {
        const std::lock_guard lock(mutex_);
        progress_.end();
        std::cerr << "The client does not answer. Waiting for it...\n";
    }

  private:
    // Lines that nobody wipes out are few: new states, tens of percents, and a sign of life. What a
    // complete download has to tell comes with the outcome.
    bool isNews(const FileAttributes& file, unsigned percentage) const {
        if (file.status == FILE_STATUS_COMPLETE) return false;
        if (file.status == FILE_STATUS_DISCONNECTED) return file.status != lastStatus_;
        return file.status != lastStatus_ || percentage / 10 != lastPercentage_ / 10 ||
               Clock::now() - lastTime_ >= kLongestSilence;
    }

    // Once for as long as the reason is the same.
    void sayWhyDisconnected(const FileAttributes& file) {
        if (file.status != FILE_STATUS_DISCONNECTED || file.errorstring == nullptr) return;
        if (lastError_ == file.errorstring) return;
        lastError_ = file.errorstring;
        progress_.end();
        std::cerr << "Disconnected: " + program::printable(lastError_) +
                         ". The client tries again.\n";
    }

    std::mutex mutex_;
    program::Progress progress_;
    std::string lastError_;
    Clock::time_point lastTime_;
    int32_t lastStatus_ = -1;
    unsigned lastPercentage_ = 0;
};

// Has it said, once until the client answers again, that there is no answer: a question may take
// half a minute until it fails.
class SilenceWatch {
  public:
    explicit SilenceWatch(Display& display) : display_(display), thread_([this] { watch(); }) {}
    ~SilenceWatch() {
        tell([this] { isOver_ = true; });
        thread_.join();
    }
    SilenceWatch(const SilenceWatch&) = delete;
    SilenceWatch& operator=(const SilenceWatch&) = delete;

    void clientHasAnswered() {
        tell([this] { lastAnswer_ = Clock::now(); });
    }

  private:
    template <class Change>
    void tell(Change change) {
        const std::lock_guard lock(mutex_);
        change();
        changed_.notify_all();
    }

    void watch() {
        std::unique_lock lock(mutex_);
        while (!isOver_) {
            const Clock::time_point answer = lastAnswer_;
            const auto isNews = [&] { return isOver_ || lastAnswer_ != answer; };
            if (changed_.wait_until(lock, answer + kUnansweredTimeout, isNews)) continue;
            display_.sayWaiting();
            changed_.wait(lock, isNews);
        }
    }

    Display& display_;
    std::mutex mutex_;
    std::condition_variable changed_;
    Clock::time_point lastAnswer_ = Clock::now();
    bool isOver_ = false;
    std::thread thread_;  // begins last: it uses the others
};

bool isFinal(int32_t status) {
    return status == FILE_STATUS_PAUSED || status == FILE_STATUS_COMPLETE ||
           status == FILE_STATUS_INSUFFICIENTDISKSPACE || status == FILE_STATUS_NOTFOUND ||
           status == FILE_STATUS_FORBIDDEN;
}

// What comes of a client that is being restarted.
bool mayPass(uint32_t code) {
    return code == INSTALL_ERROR_NOTINSTALLED || code == INSTALL_ERROR_INTERNAL ||
           code == INSTALL_ERROR_NETWORK;
}

void askUntilAnswered(Download& download) {
    const Clock::time_point end = Clock::now() + kRestartTimeout;
    while (const uint32_t code = download.ask()) {
        if (!mayPass(code) || Clock::now() >= end) throw failureOf(code);
        std::this_thread::sleep_for(kAskInterval);
    }
}

// Never freed, so that it is there whenever the signal comes.
const std::string* g_interruptMessage = nullptr;

// Ends the program itself: the library goes on waiting after a signal.
void onInterrupt(int /*signal*/) {
    const std::string& message = *g_interruptMessage;
    // Nothing can be done when it cannot be written.
    if (write(STDERR_FILENO, message.data(), message.size()) < 0) _exit(kInterrupted);
    _exit(kInterrupted);
}

}  // namespace

int32_t follow(Download& download, bool isQuiet) {
    std::optional<Display> display;
    std::optional<SilenceWatch> watch;
    if (!isQuiet) watch.emplace(display.emplace());
    for (int32_t before = FILE_STATUS_UNKNOWN;; before = download.record().status) {
        askUntilAnswered(download);
        if (watch) watch->clientHasAnswered();
        if (display) display->show(download.record());
        if (isFinal(download.record().status)) return before;
        std::this_thread::sleep_for(kAskInterval);
    }
}

void explainInterrupt(std::string message) {
    struct sigaction action {};
    sigaction(SIGINT, nullptr, &action);
    if (action.sa_handler == SIG_IGN) return;
    g_interruptMessage = new std::string(std::move(message));
    action = {};
    action.sa_handler = onInterrupt;
    sigaction(SIGINT, &action, nullptr);
}

}  // namespace vnctl
