// The growing formatter and its memory.
#include "support/format.h"

#include <gtest/gtest.h>

#include <string>

#include "api/last_error.h"
#include "harness/allocations.h"
#include "support/owned.h"
#include "velnor/capi.h"

namespace {

TEST(Snprintf, GrowsToFitInAsManyAllocationsAsItNeeds) {
    const struct {
        int32_t size;
        int32_t length;
        size_t allocations;
        size_t largest;
    } rows[] = {
        {0, 0, 1, 256},     {0, 255, 1, 256}, {0, 256, 2, 257},
        {1024, 3, 1, 1024}, {1, 5, 2, 6},     {-7, 3, 1, 256},
    };
    for (const auto& row : rows) {
        const std::string text(static_cast<size_t>(row.length), 'x');
        velnor::OwnedText out;
        const harness::FailingAllocation watch(0);
        EXPECT_EQ(_vn_snprintf(out.out(), row.size, "%s", text.c_str()), row.length);
        EXPECT_EQ(watch.count(), row.allocations) << row.length;
        EXPECT_EQ(watch.largest(), row.largest) << row.length;
        EXPECT_EQ(out.get(), text);
    }
}

TEST(Snprintf, AFailedAllocationStoresNull) {
    const std::string text(300, 'x');
    for (const size_t number : {1U, 2U}) {
        char start = 'x';
        char* out = &start;
        _vn_setLastError(0);
        const harness::FailingAllocation fail(number);
        EXPECT_EQ(_vn_snprintf(&out, 0, "%s", text.c_str()), 0);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INSUFFICIENTMEMORY + 0U);
    }
}

TEST(Snprintf, ATextThatCanNeverBeFormattedEndsAsAFailedAllocation) {
    const wchar_t unencodable[] = {static_cast<wchar_t>(0x7fffffff), 0};
    char* out = nullptr;
    EXPECT_EQ(_vn_snprintf(&out, 0, "%ls", unencodable), 0);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INSUFFICIENTMEMORY + 0U);
}

}  // namespace
