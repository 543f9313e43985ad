// The words for the states of a download.
#include "record.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr const char* kWords[] = {
    "SEARCHING",    "WAITING",  "DOWNLOADING", "PAUSED", "COMPLETE", "INSUFFICIENTDISKSPACE",
    "DISCONNECTED", "NOTFOUND", "FORBIDDEN",   "MOVING",
};
static_assert(std::size(kWords) == static_cast<size_t>(Status::moving) + 1);

}  // namespace

const char* wordOf(Status status) { return kWords[static_cast<size_t>(status)]; }

std::optional<Status> statusOf(std::string_view word) {
    const auto* const found = std::ranges::find(kWords, word);
    if (found == std::end(kWords)) return std::nullopt;
    return static_cast<Status>(found - kWords);
}

int64_t Record::percent() const {
    if (status == Status::complete) return 100;
    // A hundredth of the size, not a hundred times what came: that could overflow.
    if (announced.size < 100) return announced.size == 0 ? 0 : received * 100 / announced.size;
    return std::min<int64_t>(received / (announced.size / 100), 100);
}
