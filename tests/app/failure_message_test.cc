// The alert's message, with texts made up here.
#include "app/failure_message.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "api/result_codes.h"
#include "harness/allocations.h"

namespace {

using velnor::OwnedText;

// Texts that are not as they should be; every other key is its own text with a place.
std::map<std::string, const char*> g_texts;

const char* textOf(const char* key) {
    const auto found = g_texts.find(key);
    if (found != g_texts.end()) return found->second;
    return std::string(key) == "FAILED_TO_INSTALL" ? "<%s>" : "100%% %s %n";
}

std::string message(uint32_t code, const char* detail) {
    OwnedText buffer;
    const char* text = velnor::failureMessage(code, detail, textOf, buffer);
    return text != nullptr ? text : "(none)";
}

TEST(FailureMessage, FillsTheDetailIntoTheCodesThatHaveOne) {
    g_texts.clear();
    for (const uint32_t code : {0U, 14U, 22U, 24U, 4294967295U}) {
        EXPECT_EQ(message(code, "detail"), "<100%% %s %n>") << code;
    }
    for (uint32_t code = 15; code <= 21; ++code) {
        EXPECT_EQ(message(code, "d%n%s"), "<100%% d%n%s %n>") << code;
        EXPECT_EQ(message(code, nullptr), "<100%% %s %n>") << code;
        EXPECT_EQ(message(code, ""), "<100%%  %n>") << code;
    }
}

TEST(FailureMessage, TakesTextsAsTheyAre) {
    g_texts = {{"FAILED_TO_INSTALL", "%d %s %s %s"}, {velnor::resultKey(15), "no place"}};
    EXPECT_EQ(message(15, "detail"), "%d no place %s %s");
    g_texts = {{"FAILED_TO_INSTALL", "sorry"}};
    EXPECT_EQ(message(15, "detail"), "sorry");
}

TEST(FailureMessage, IsMissingWithEitherText) {
    for (const char* nothing : {static_cast<const char*>(nullptr), ""}) {
        g_texts = {{"FAILED_TO_INSTALL", nothing}};
        EXPECT_EQ(message(15, "detail"), "(none)");
        g_texts = {{"INSTALL_ERROR_UNKNOWN", nothing}, {"FILE_NOT_FOUND", nothing}};
        EXPECT_EQ(message(22, nullptr), "(none)");
        EXPECT_EQ(message(13, nullptr), "(none)");
        EXPECT_EQ(message(12, nullptr), "<100%% %s %n>");
    }
}

TEST(FailureMessage, SaysWhatItCanWithoutMemory) {
    g_texts.clear();
    // The detail made readable, the error text with it, the message.
    const char* expected[] = {"<100%% %s %n>", "<100%% %s %n>", "<%s>"};
    for (size_t i = 0; i < 3; ++i) {
        OwnedText buffer;
        harness::FailingAllocation failing(i + 1);
        const char* text = velnor::failureMessage(
            15, "detail",
            +[](const char* key) -> const char* { return key[0] == 'F' ? "<%s>" : "100%% %s %n"; },
            buffer);
        EXPECT_TRUE(failing.end());
        EXPECT_STREQ(text, expected[i]);
    }
}

}  // namespace
