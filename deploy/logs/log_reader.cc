#include "logs/log_reader.h"

#include <algorithm>
#include <utility>

#include "install/client_ini.h"
#include "logs/readable.h"

namespace logs {
namespace {

// As the engine writes them where they happen.
constexpr std::string_view kInstall = "vn_install";
constexpr std::string_view kDownload = "_vn_downloadAndWrite";
constexpr std::string_view kUpload = "_vn_uploadLogs";
constexpr std::string_view kBegins = "Starting Installation";
constexpr std::string_view kStartsClient = "Waiting for a response from client";
constexpr std::string_view kSucceeds = "Successfully installed the client";
constexpr std::string_view kRegisters[] = {"Registered the client",
                                           "Client is already registered."};
constexpr std::string_view kNamesUrl[] = {"Downloaded ", "Error in downloading "};

// Nothing when the clock was put back.
std::optional<uint64_t> secondsBetween(Time from, Time to) {
    if (to < from) return std::nullopt;
    return static_cast<uint64_t>((to - from).count());
}

// Only these two functions end an installation when they report an error; what another reports is
// either why one of these does next, or no reason to end.
bool isEnd(const LogLine& line) {
    return line.isError && (line.function == kInstall || line.function == kDownload);
}

}  // namespace

void LogReader::read(std::string_view bytes) {
    while (!bytes.empty()) {
        const size_t end = bytes.find('\n');
        const std::string_view part = bytes.substr(0, end);
        line_.append(part.substr(0, kLongestLine - std::min(kLongestLine, line_.size())));
        if (end == std::string_view::npos) return;
        readLine();
        line_.clear();
        bytes.remove_prefix(end + 1);
    }
}

Kind LogReader::finish() {
    const bool isCut = !line_.empty();
    if (isCut) readLine();
    if (isOpen_) close(Outcome::Unfinished, "");
    if (!hasLines_) return Kind::NoLog;
    return isCut ? Kind::CutLog : Kind::Log;
}

void LogReader::readLine() {
    // Other lines are of netstat(1), which an installation asks when no client answers.
    const auto line = parseLine(line_);
    if (!line) return;
    hasLines_ = true;
    const bool isInstall = line->function == kInstall;
    const bool begins = isInstall && line->message == kBegins;
    const bool joins =
        isInstall && !isOpen_ &&
        (line->isError || std::ranges::find(kRegisters, line->message) != std::end(kRegisters));
    if (begins || joins) begin(*line, joins);
    if (isOpen_) note(*line);
}

void LogReader::begin(const LogLine& line, bool joins) {
    if (isOpen_) close(Outcome::Unfinished, "");
    const uint64_t number = now_.number + 1;
    now_ = {};
    now_.number = number;
    now_.begin = line.time;
    started_.reset();
    isOpen_ = true;
    isJoining_ = joins;
}

void LogReader::note(const LogLine& line) {
    // The log goes out when an installation has ended, so one that is still open has failed without
    // a word, for lack of memory.
    if (line.function == kUpload) return close(Outcome::Failed, "");
    now_.end = line.time;
    now_.last = line.message;
    noteRelease(line);
    if (isEnd(line)) return close(Outcome::Failed, line.message);
    if (line.isError) now_.cause = line.message;
    if (line.function != kInstall) return;
    if (line.message == kStartsClient) started_ = line.time;
    if (line.message == kSucceeds) close(isJoining_ ? Outcome::Joined : Outcome::Succeeded, "");
}

// The client is the first of the downloads.
void LogReader::noteRelease(const LogLine& line) {
    if (!now_.release.empty() || line.function != kDownload) return;
    for (const std::string_view prefix : kNamesUrl) {
        if (!line.message.starts_with(prefix)) continue;
        const std::string url(line.message.substr(prefix.size()));
        const char* name = velnor::fileNameOf(url.c_str());
        if (name != nullptr) now_.release = name;
    }
}

void LogReader::close(Outcome outcome, std::string_view error) {
    isOpen_ = false;
    now_.outcome = outcome;
    Installation told = now_;
    told.release = readable(now_.release);
    told.error = readable(error);
    told.cause = outcome == Outcome::Failed ? readable(now_.cause) : "";
    told.last = outcome == Outcome::Unfinished ? readable(now_.last) : "";
    if (outcome == Outcome::Succeeded) {
        told.seconds = secondsBetween(now_.begin, now_.end);
        if (started_) told.startSeconds = secondsBetween(*started_, now_.end);
    }
    take_(told);
}

}  // namespace logs
