#include "faults.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace standin {
namespace {

bool holdsExactly(const std::string& path, const std::string& text) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    // One byte more than expected is enough to see that it is too long.
    std::string start(text.size() + 1, '\0');
    file.read(start.data(), static_cast<std::streamsize>(start.size()));
    return start.substr(0, static_cast<size_t>(file.gcount())) == text;
}

}  // namespace

Mode currentMode() {
    Mode mode;
    std::ifstream file("/tmp/standin_client.mode");
    std::getline(file, mode.word);
    const size_t space = mode.word.find(' ');
    if (space != std::string::npos) {
        mode.argument = mode.word.substr(space + 1);
        mode.word.resize(space);
    }
    return mode;
}

void FaultInjection::enter(const Mode& mode) {
    if (mode == mode_) return;
    mode_ = mode;
    challenged_.clear();
    refusals_.clear();
    reset_.clear();
}

std::optional<std::string> FaultInjection::objection(const Mode& mode, const std::string& function,
                                                     const std::string& url,
                                                     const std::string& path) {
    const std::lock_guard lock(mutex_);
    enter(mode);
    if (mode.word == "challenge" && !isMet(mode.argument, function + ' ' + url, path)) {
        return "Challenge:" + mode.argument;
    }
    if (mode.word == "inuse" && function == "deleteFile" && isInUse(mode.argument, url)) {
        return "File is in use.";
    }
    return std::nullopt;
}

bool FaultInjection::isMet(const std::string& challenge, const std::string& key,
                           const std::string& path) {
    if (challenged_.insert(key).second || !holdsExactly(path, challenge)) return false;
    challenged_.erase(key);
    unlink(path.c_str());
    return true;
}

bool FaultInjection::isInUse(const std::string& times, const std::string& url) {
    if (times.empty() || refusals_[url]++ < std::strtol(times.c_str(), nullptr, 10)) return true;
    refusals_.erase(url);
    return false;
}

void FaultInjection::noteReset(const Mode& mode, const std::string& url) {
    const std::lock_guard lock(mutex_);
    enter(mode);
    reset_.insert(url);
}

bool FaultInjection::demandsReset(const Mode& mode, const std::string& url) {
    const std::lock_guard lock(mutex_);
    enter(mode);
    return mode.word == "reset-always" || (mode.word == "reset" && !reset_.contains(url));
}

}  // namespace standin
