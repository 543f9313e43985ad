// Codes, keys, states and keywords: numbers and texts that callers and the client depend on.
#include "api/result_codes.h"

#include <gtest/gtest.h>

#include <string>

#include "api/file_status.h"
#include "velnor/capi.h"

namespace {

TEST(ResultCodes, TextsOfDetailCodesHoldOnePlaceForTheDetailAndOthersNone) {
    for (uint32_t code = 0; code < 30; ++code) {
        const std::string text = vn_errorToString(code);
        const bool detailed = code >= velnor::kFirstDetailCode && code <= velnor::kLastDetailCode;
        const size_t place = text.find('%');
        EXPECT_EQ(place != std::string::npos, detailed) << text;
        if (detailed) {
            EXPECT_EQ(text.substr(place, 2), "%s");
            EXPECT_EQ(text.find('%', place + 1), std::string::npos);
        }
    }
}

TEST(ResultCodes, OnlyTheLastThreeHaveNoKeyOfTheirOwn) {
    EXPECT_STREQ(velnor::resultKey(0), "INSTALL_ERROR_OK");
    EXPECT_STREQ(velnor::resultKey(INSTALL_ERROR_FILE_NOT_FOUND), "FILE_NOT_FOUND");
    EXPECT_STREQ(velnor::resultKey(21), "INSTALL_ERROR_VERIFICATION_FAILURE");
    for (const uint32_t code : {22U, 24U, 25U, 4294967295U}) {
        EXPECT_STREQ(velnor::resultKey(code), "INSTALL_ERROR_UNKNOWN") << code;
    }
}

TEST(ResultCodes, NumbersAreFixed) {
    EXPECT_STREQ(vn_errorToString(4), "Insufficient Memory");
    EXPECT_STREQ(vn_errorToString(5), "Network Failure");
    EXPECT_STREQ(vn_errorToString(13), "File Not Found");
    EXPECT_STREQ(vn_errorToString(21), "%s failed verification");
    EXPECT_STREQ(vn_errorToString(22), "File already downloaded");
    EXPECT_STREQ(vn_errorToString(23), "Running of periodic tasks is throttled");
    EXPECT_STREQ(vn_errorToString(24), "File download was reset");
    EXPECT_STREQ(vn_errorToString(25), "Unknown Error");
    EXPECT_STREQ(vn_errorToString(4294967295U), "Unknown Error");
}

TEST(FileStatus, KeywordsLeadToTheirValuesInAnyLetterCase) {
    const std::pair<const char*, int32_t> rows[] = {
        {"SEARCHING", 1},    {"waiting", 2},  {"DOWNLOADING", 3},
        {"PAUSED", 4},       {"COMPLETE", 5}, {"InsufficientDiskSpace", 6},
        {"DISCONNECTED", 7}, {"NOTFOUND", 8}, {"moving", 9},
        {"FORBIDDEN", 10}};
    for (const auto& [keyword, value] : rows) {
        int32_t status = 0;
        EXPECT_TRUE(_vn_fileStatusFromKeyword(keyword, &status)) << keyword;
        EXPECT_EQ(status, value) << keyword;
    }
}

TEST(FileStatus, NumbersAreFixed) {
    std::string texts;
    for (int32_t status = 0; status <= 11; ++status) {
        texts += vn_fileStatusToString(status) + std::string(".");
    }
    EXPECT_EQ(texts,
              "Unknown State.Searching.Waiting.Downloading.Paused.Complete.Insufficient Disk Space."
              "Disconnected.Not Found.Moving.Forbidden.Unknown State.");
}

TEST(FileStatus, UnknownKeywordLeavesTheStatus) {
    for (const char* keyword : {"", "COMPLETED", "COMPLET"}) {
        int32_t status = 7;
        EXPECT_FALSE(_vn_fileStatusFromKeyword(keyword, &status)) << keyword;
        EXPECT_EQ(status, 7);
    }
}

}  // namespace
