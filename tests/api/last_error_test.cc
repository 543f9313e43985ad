// The last error belongs to its thread, from the first call on.
#include "api/last_error.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <thread>
#include <vector>

#include "velnor/capi.h"

namespace {

TEST(LastError, IsZeroBeforeAnyCallAndOnThreadsThatSetNone) {
    EXPECT_EQ(vn_getLastError(), 0U);
    EXPECT_EQ(_vn_setLastError(21), 0);
    EXPECT_EQ(vn_getLastError(), 21U);
    std::thread([] { EXPECT_EQ(vn_getLastError(), 0U); }).join();
    EXPECT_EQ(_vn_setLastError(4294967295U), 0);
    EXPECT_EQ(vn_getLastError(), 4294967295U);
}

TEST(LastError, FirstCallsOfManyThreadsAtOnceKeepTheirOwnCodes) {
    std::vector<std::thread> threads;
    for (uint32_t i = 1; i <= 16; ++i) {
        threads.emplace_back([i] {
            for (int round = 0; round < 1000; ++round) {
                _vn_setLastError(i);
                ASSERT_EQ(_vn_getLastError(), i);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

TEST(LastError, ReportsWhenTheProcessHasNoKeyLeftAndRecovers) {
    std::vector<pthread_key_t> keys;
    for (pthread_key_t key = 0; pthread_key_create(&key, nullptr) == 0;) keys.push_back(key);
    EXPECT_EQ(_vn_setLastError(5), EAGAIN);
    EXPECT_EQ(_vn_getLastError(), 0U);
    for (const pthread_key_t key : keys) pthread_key_delete(key);
    EXPECT_EQ(_vn_setLastError(5), 0);
    EXPECT_EQ(_vn_getLastError(), 5U);
}

}  // namespace
