// The installations that a log tells about.
#ifndef VELNOR_DEPLOY_LOGS_LOG_READER_H
#define VELNOR_DEPLOY_LOGS_LOG_READER_H

#include <functional>
#include <string>
#include <string_view>

#include "logs/installation.h"
#include "logs/log_line.h"

namespace logs {

/// What the bytes of a file turned out to be. Cut: a log that does not end with a line's end.
enum class Kind : uint8_t { Log, CutLog, NoLog };

/// Reads one log as its bytes come, in memory that does not grow with them: of a line that is
/// longer than any that an installer has reason to write, the rest is passed over.
class LogReader {
  public:
    static constexpr size_t kLongestLine = 4096;

    using Take = std::function<void(const Installation&)>;

    /// `take` gets each installation as soon as it has ended.
    explicit LogReader(Take take) : take_(std::move(take)) {}

    /// Reads the next bytes.
    void read(std::string_view bytes);

    /// Ends what is left open, after the last byte.
    Kind finish();

  private:
    void readLine();
    void begin(const LogLine& line, bool joins);
    void note(const LogLine& line);
    void noteRelease(const LogLine& line);
    void close(Outcome outcome, std::string_view error);

    Take take_;
    std::string line_;
    bool hasLines_ = false;
    bool isOpen_ = false;
    bool isJoining_ = false;
    Installation now_;  // with texts as they stand in the log
    std::optional<Time> started_;
};

}  // namespace logs

#endif
