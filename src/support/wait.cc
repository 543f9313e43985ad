// Sleeping by select(2).
#include "support/wait.h"

#include <sys/select.h>

int32_t _vn_sleep(uint32_t seconds) {
    timeval timeout{static_cast<time_t>(seconds), 0};
    return select(0, nullptr, nullptr, nullptr, &timeout);
}
