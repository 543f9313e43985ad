// The matching rules of the pluckers, quirks included.
#include "support/text_extraction.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "api/last_error.h"
#include "harness/allocations.h"
#include "support/owned.h"
#include "velnor/capi.h"

namespace {

using velnor::OwnedText;

std::optional<std::string> toOptional(char* owned) {
    const OwnedText text(owned);
    return text ? std::optional<std::string>(text.get()) : std::nullopt;
}

TEST(PluckString, TakesTheRestOfTheFirstMatchingLine) {
    const struct {
        const char* text;
        const char* key;
        std::optional<std::string> value;
    } rows[] = {
        {"A=1\r\nB=2\n", "B=", "2"},
        {"A=1\r\nB=2\n", "A=", "1"},
        {"A=1\nB=2", "B=", std::nullopt},
        {"XEnableQ731=1\n", "EnableQ731=", "1"},
        {"A=\n", "A=", ""},
        {"A= x \n", "A=", " x "},
        {"A=1\nA=2\n", "A=", "1"},
        {"B=1\n", "A=", std::nullopt},
        {"", "A=", std::nullopt},
    };
    for (const auto& row : rows) {
        _vn_setLastError(9);
        EXPECT_EQ(toOptional(_vn_pluckString(row.text, row.key)), row.value) << row.text;
        EXPECT_EQ(_vn_getLastError(), 9U) << "absence is no error";
    }
}

TEST(PluckInt, ConvertsWhateverFollows) {
    const struct {
        const char* text;
        int32_t found;
        int64_t value;
    } rows[] = {
        {"Content-Length: 1234\r\n", 1, 1234},
        {"Content-Length:  -5x", 1, -5},
        {"Content-Length: ", 1, 0},
        {"content-length: 7\r\n", 0, 99},
    };
    for (const auto& row : rows) {
        int64_t value = 99;
        EXPECT_EQ(_vn_pluckInt(row.text, "Content-Length: ", &value), row.found) << row.text;
        EXPECT_EQ(value, row.value) << row.text;
    }
}

TEST(Unescape, TurnsPairsIntoBytes) {
    const std::pair<const char*, const char*> rows[] = {
        {R"(\b\f\n\r\t)", "\b\f\n\r\t"},
        {R"(\"\/\\)", "\"/\\"},
        {R"(\u0041)", "u0041"},
        {R"(ab\)", "ab"},
        {R"(\\n)", "\\n"},
    };
    for (const auto& [text, plain] : rows) {
        EXPECT_EQ(toOptional(_vn_copyStringAndUnescape(text)), plain) << text;
    }
}

TEST(PluckJSON, FindsValuesAsTheClientWritesThem) {
    const struct {
        const char* json;
        const char* key;
        std::optional<std::string> string;
        int64_t integer;
        bool isTrue;
        bool isNull;
    } rows[] = {
        {R"({"path" : "/tmp/x"})", "path", "/tmp/x", 0, false, false},
        {R"({"a":"x\"y"})", "a", "x", 0, false, false},
        {R"({"a":""})", "a", "", 0, false, false},
        {R"({"a":"open)", "a", std::nullopt, 0, false, false},
        {R"({"size":-5})", "size", std::nullopt, 0, false, false},
        {R"({"size":"5"})", "size", "5", 0, false, false},
        {R"({"size":  42,})", "size", std::nullopt, 42, false, false},
        {R"({"size":9223372036854775807})", "size", std::nullopt, INT64_MAX, false, false},
        {R"({"isonline":true})", "isonline", std::nullopt, 0, true, false},
        {R"({"isonline":True})", "isonline", std::nullopt, 0, false, false},
        {R"({"http://a/b":null})", "http://a/b", std::nullopt, 0, false, true},
        {R"("a":"x")", "a", std::nullopt, 0, false, false},
        {R"({"b":1})", "a", std::nullopt, 0, false, false},
        {R"({"a")", "a", std::nullopt, 0, false, false},
        {R"({"b":"a","a":"c"})", "a", std::nullopt, 0, false, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(toOptional(_vn_easyPluckJSONString(row.json, row.key)), row.string) << row.json;
        EXPECT_EQ(_vn_easyPluckJSONInt(row.json, row.key), row.integer) << row.json;
        EXPECT_EQ(_vn_pluckJSONBool(row.json, row.key), row.isTrue ? 1 : 0) << row.json;
        EXPECT_EQ(_vn_pluckJSONNull(row.json, row.key), row.isNull ? 1 : 0) << row.json;
    }
}

TEST(PluckJSON, OnlyBadArgumentsAndMemorySetACode) {
    const char* const json = R"({"a":"b"})";
    for (const auto& [text, key] : {std::pair{"", "a"},
                                    {static_cast<const char*>(nullptr), "a"},
                                    {json, ""},
                                    {json, static_cast<const char*>(nullptr)}}) {
        _vn_setLastError(0);
        EXPECT_EQ(_vn_easyPluckJSONString(text, key), nullptr);
        EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INVALIDARGUMENT + 0U);
    }
    for (size_t number = 1; number <= 3; ++number) {
        _vn_setLastError(0);
        const harness::FailingAllocation fail(number);
        EXPECT_EQ(_vn_easyPluckJSONString(json, "a"), nullptr) << number;
        EXPECT_EQ(_vn_getLastError(), INSTALL_ERROR_INSUFFICIENTMEMORY + 0U) << number;
    }
}

}  // namespace
