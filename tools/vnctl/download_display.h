// How a download that is followed looks: a bar with rate and remaining time, or lines now and then
// where the output is no terminal.
#ifndef VELNOR_TOOLS_VNCTL_DOWNLOAD_DISPLAY_H
#define VELNOR_TOOLS_VNCTL_DOWNLOAD_DISPLAY_H

#include <chrono>
#include <string>

#include "velnor/capi.h"
#include "vnctl/progress.h"

namespace vnctl {

/// What percentage of the file is there; 100 only when it is complete.
unsigned percentageOf(const FileAttributes& file);

class DownloadDisplay {
  public:
    /// Shows the state that a download is in now.
    void show(const FileAttributes& file);

    /// What is printed next begins on a line of its own.
    void end() { progress_.end(); }

  private:
    bool isNews(const FileAttributes& file, unsigned percentage) const;
    void noteTrouble(const FileAttributes& file);

    Progress progress_;
    std::string lastTrouble_;
    std::chrono::steady_clock::time_point lastTime_;
    int32_t lastStatus_ = -1;
    unsigned lastPercentage_ = 0;
};

}  // namespace vnctl

#endif
