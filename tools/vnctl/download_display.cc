// What to show of a download, and when.
#include "vnctl/download_display.h"

#include <algorithm>
#include <iostream>
#include <vector>

#include "vnctl/human.h"
#include "vnctl/printable.h"

namespace vnctl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLongestSilence{10};
// A longer time is a guess that says nothing.
constexpr int64_t kLongestRemaining = 99 * 3600;

std::string received(const FileAttributes& file) {
    if (file.size <= 0) return humanSize(file.uniquerecv);
    return humanSize(file.uniquerecv) + " of " + humanSize(file.size);
}

std::string remaining(const FileAttributes& file) {
    if (file.downloadrate <= 0 || file.size <= file.uniquerecv) return "";
    const int64_t seconds = (file.size - file.uniquerecv) / file.downloadrate;
    return seconds <= kLongestRemaining ? humanDuration(seconds) + " left" : "";
}

std::vector<std::string> detailsOf(const FileAttributes& file) {
    const bool isDownloading = file.status == FILE_STATUS_DOWNLOADING;
    std::vector<std::string> details;
    if (!isDownloading) details.emplace_back(vn_fileStatusToString(file.status));
    if (file.uniquerecv > 0) details.push_back(received(file));
    if (isDownloading) {
        details.push_back(humanRate(file.downloadrate));
        details.push_back(remaining(file));
    }
    std::erase(details, "");
    return details;
}

}  // namespace

unsigned percentageOf(const FileAttributes& file) {
    if (file.status == FILE_STATUS_COMPLETE) return 100;
    if (file.size <= 0) return 0;
    // In floating point, because a size times 100 may be more than the type holds.
    const double share = static_cast<double>(file.uniquerecv) / static_cast<double>(file.size);
    return static_cast<unsigned>(std::clamp(share * 100, 0.0, 99.0));
}

void DownloadDisplay::show(const FileAttributes& file) {
    const unsigned percentage = percentageOf(file);
    noteTrouble(file);
    if (!progress_.isTerminal() && !isNews(file, percentage)) return;
    progress_.show(percentage, detailsOf(file));
    lastStatus_ = file.status;
    lastPercentage_ = percentage;
    lastTime_ = Clock::now();
}

// Lines that nobody wipes out are few: new states, tens of percents, and a sign of life. What a
// complete download has to tell comes with the outcome.
bool DownloadDisplay::isNews(const FileAttributes& file, unsigned percentage) const {
    if (file.status == FILE_STATUS_COMPLETE) return false;
    if (file.status == FILE_STATUS_DISCONNECTED) return file.status != lastStatus_;
    return file.status != lastStatus_ || percentage / 10 != lastPercentage_ / 10 ||
           Clock::now() - lastTime_ >= kLongestSilence;
}

// What keeps the client from going on, once for as long as it is the same.
void DownloadDisplay::noteTrouble(const FileAttributes& file) {
    if (file.status != FILE_STATUS_DISCONNECTED || file.errorstring == nullptr) return;
    if (lastTrouble_ == file.errorstring) return;
    lastTrouble_ = file.errorstring;
    end();
    std::cout << "Disconnected: " << printable(lastTrouble_) << ". The client tries again."
              << std::endl;
}

}  // namespace vnctl
