// Hexadecimal text and percent-encoding, lenient as callers rely on.
#include "support/encodings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "api/last_error.h"
#include "harness/allocations.h"
#include "support/owned.h"
#include "velnor/capi.h"

namespace {

using Bytes = std::vector<uint8_t>;

TEST(FromHex, DecodesWithoutAnyJudgement) {
    const struct {
        const char* hex;
        uint32_t capacity;
        Bytes bytes;
    } rows[] = {
        {"0aFF", 4, {0x0a, 0xff}},     {"abc", 4, {0xab}}, {"a", 4, {}}, {"zz", 4, {0x1a}},
        {"\xff\xff", 4, {0xef}},  // a signed character: -1 * 16 + -1
        {"00112233", 2, {0x00, 0x11}}, {"00", 0, {}},
    };
    for (const auto& row : rows) {
        Bytes out(row.capacity + 1, 0xee);
        uint32_t count = row.capacity;
        EXPECT_EQ(_vn_fromHex(row.hex, out.data(), &count), 1) << row.hex;
        EXPECT_EQ(count, row.bytes.size()) << row.hex;
        EXPECT_EQ(Bytes(out.begin(), out.begin() + count), row.bytes) << row.hex;
        EXPECT_EQ(out[count], 0xee) << row.hex;
    }
}

TEST(FromHex, RefusesMissingArguments) {
    uint8_t out[4];
    uint32_t count = sizeof out;
    EXPECT_EQ(_vn_fromHex("", out, &count), 0);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    EXPECT_EQ(_vn_fromHex(nullptr, out, &count), 0);
    EXPECT_EQ(_vn_fromHex("00", nullptr, &count), 0);
    EXPECT_EQ(_vn_fromHex("00", out, nullptr), 0);
}

TEST(ToHex, WritesLowerCasePairs) {
    const uint8_t bytes[] = {0x00, 0xab, 0xff};
    EXPECT_STREQ(velnor::OwnedText(_vn_toHex(bytes, 3)).get(), "00abff");
    EXPECT_EQ(_vn_toHex(bytes, 0), nullptr);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    EXPECT_EQ(_vn_toHex(nullptr, 3), nullptr);
    // More digits than a 32-bit size can count, as a negative count would ask for.
    EXPECT_EQ(_vn_toHex(bytes, 0xffffffffU), nullptr);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INSUFFICIENTMEMORY + 0U);
}

TEST(UrlEncode, EncodesAllButLettersDigitsAndThreeSigns) {
    const std::pair<const char*, const char*> rows[] = {
        {"a b/c~d.e_f-g", "a%20b%2fc%7ed.e_f-g"},
        {"\xc3\xa9", "%c3%a9"},
        {"", ""},
        {"AZaz09@[`{/:", "AZaz09%40%5b%60%7b%2f%3a"},
    };
    for (const auto& [text, encoded] : rows) {
        EXPECT_STREQ(velnor::OwnedText(_vn_urlEncode(text)).get(), encoded);
    }
    EXPECT_EQ(_vn_urlEncode(nullptr), nullptr);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    const harness::FailingAllocation fail(1);
    EXPECT_EQ(_vn_urlEncode("x"), nullptr);
    EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INSUFFICIENTMEMORY + 0U);
}

}  // namespace
