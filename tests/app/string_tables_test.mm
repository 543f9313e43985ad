// The string tables of the bundle, in every language: complete, and fit to be filled.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "api/result_codes.h"
#include "app/failure_message.h"

namespace {

constexpr char kDetail[] = "/Applications/Velnor/a%n%s b";
constexpr uint32_t kCodes = 25;

NSDictionary* g_table = nil;

// Null for a key that the table does not have.
const char* textOf(const char* key) {
    return [[g_table objectForKey:[NSString stringWithUTF8String:key]] UTF8String];
}

size_t placesIn(const std::string& text, const char* what) {
    size_t count = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

std::set<std::string> keysOfTheProgram() {
    std::set<std::string> keys{"INSTALL_TITLE", "INSTALL_ERROR_TITLE", "FAILED_TO_INSTALL", "OK"};
    for (uint32_t code = 0; code < kCodes; ++code) keys.insert(velnor::resultKey(code));
    return keys;
}

class StringTable : public testing::TestWithParam<const char*> {
  protected:
    StringTable() : pool_([[NSAutoreleasePool alloc] init]) {
        NSString* path = [NSString
            stringWithFormat:@"%s/Resources/%s.lproj/Localizable.strings", BUNDLE, GetParam()];
        NSString* file = [NSString stringWithContentsOfFile:path];
        g_table = [file propertyListFromStringsFileFormat];
    }
    ~StringTable() override { [pool_ release]; }

  private:
    NSAutoreleasePool* pool_;
};

TEST_P(StringTable, HasTheKeysOfTheProgramAndNoOthers) {
    std::set<std::string> keys;
    NSEnumerator* all = [g_table keyEnumerator];
    while (NSString* key = [all nextObject]) keys.insert([key UTF8String]);
    EXPECT_EQ(keys, keysOfTheProgram());
    EXPECT_EQ(keys.size(), 27U);
}

TEST_P(StringTable, LeavesOnePlaceWhereSomethingIsFilledIn) {
    for (const std::string& key : keysOfTheProgram()) {
        const std::string text = textOf(key.c_str());
        bool isFilled = key == "FAILED_TO_INSTALL";
        for (uint32_t code = velnor::kFirstDetailCode; code <= velnor::kLastDetailCode; ++code) {
            isFilled |= key == velnor::resultKey(code);
        }
        EXPECT_FALSE(text.empty()) << key;
        EXPECT_EQ(placesIn(text, "%s"), isFilled ? 1U : 0U) << key;
        EXPECT_EQ(placesIn(text, "%"), isFilled ? 1U : 0U) << key;
    }
}

TEST_P(StringTable, HasAMessageForEveryCode) {
    const std::string frame = textOf("FAILED_TO_INSTALL");
    for (uint32_t code = 0; code < kCodes; ++code) {
        velnor::OwnedText buffer;
        const char* message = velnor::failureMessage(code, kDetail, textOf, buffer);
        ASSERT_NE(message, nullptr) << code;
        std::string expected = textOf(velnor::resultKey(code));
        const size_t place = expected.find("%s");
        if (place != std::string::npos) expected.replace(place, 2, kDetail);
        EXPECT_EQ(message, std::string(frame).replace(frame.find("%s"), 2, expected)) << code;
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, StringTable,
                         testing::Values("English", "German", "French", "Spanish", "Japanese"),
                         [](const auto& language) { return language.param; });

}  // namespace
