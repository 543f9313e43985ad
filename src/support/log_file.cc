#include "support/log_file.h"

#include <array>
#include <cstdarg>
#include <ctime>

#include "api/result/last_error.h"
#include "support/files.h"
#include "support/owned.h"
#include "support/paths.h"
#include "support/text.h"
#include "velnor/capi.h"

namespace velnor {
namespace {

constexpr char kFormatVersion[] = "1001";

// "eror" has four letters like the others, so that the tags stand in a column.
constexpr std::array<const char*, 3> kLevelTags{"info", "warn", "eror"};

const char* levelTag(uint32_t level) {
    return level < kLevelTags.size() ? kLevelTags[level] : kLevelTags[1];
}

// "YYMMDD_hhmmss" in UTC. Empty with code 4 when there is no memory, and without a code when the
// clock shows a year that the calendar does not reach.
OwnedText timestampNow() {
    const time_t now = time(nullptr);
    tm utc{};
    OwnedText text;
    if (gmtime_r(&now, &utc) == nullptr) return text;
    _vn_snprintf(text.out(), 0, "%02d%02d%02d_%02d%02d%02d", utc.tm_year % 100, utc.tm_mon + 1,
                 utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
    return text;
}

}  // namespace
}  // namespace velnor

void _vn_writeToLogFile(const char* logName, const char* sourceFile, const char* functionName,
                        int32_t line, uint32_t level, const char* format, ...) {
    using velnor::isMissing, velnor::OwnedText;
    if (isMissing(logName) || isMissing(sourceFile) || isMissing(functionName) ||
        isMissing(format)) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return;
    }
    const OwnedText path(_vn_getInstallPathForFile(logName));
    if (!path) return;
    const OwnedText timestamp = velnor::timestampNow();
    if (!timestamp) return;

    OwnedText message;
    va_list arguments;
    va_start(arguments, format);
    _vn_vsnprintf(message.out(), 512, format, arguments);
    va_end(arguments);
    if (!message) return;

    OwnedText text;
    const int32_t length = _vn_snprintf(
        text.out(), 1024, "V%s:%s: [%s] %s:%s(%d): %s\n", velnor::kFormatVersion, timestamp.get(),
        velnor::levelTag(level), sourceFile, functionName, line, message.get());
    if (length == 0) return;
    // A single write in append mode keeps lines of different threads whole.
    _vn_writeFile(path.get(), text.get(), static_cast<uint32_t>(length), "ab");
}
