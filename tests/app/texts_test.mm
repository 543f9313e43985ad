// What the application says: its string tables in every language, complete and fit to be filled,
// and the alert's message, with texts made up here and texts from outside as it shows them.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "api/result/result_codes.h"
#include "app/failure_message.h"
#include "harness/harness.h"

namespace {

// Every key's conversions, which are the places where something is filled in.
using Places = std::map<std::string, std::string>;

Places placesOf(NSDictionary* table) {
    Places places;
    NSEnumerator* keys = [table keyEnumerator];
    while (NSString* key = [keys nextObject]) {
        const char* name = [key UTF8String];
        const std::string text = [[table objectForKey:key] UTF8String];
        EXPECT_FALSE(text.empty()) << name;
        places[name];
        for (size_t at = text.find('%'); at != std::string::npos; at = text.find('%', at + 1))
            places[name] += text.substr(at, 2);
    }
    return places;
}

TEST(StringTables, HaveTheKeysOfTheProgramAndAPlaceForEachDetail) {
    Places expected{{"INSTALL_TITLE", ""}, {"INSTALL_ERROR_TITLE", ""}, {"OK", ""}};
    expected["FAILED_TO_INSTALL"] = "%s";
    for (uint32_t code = 0; code <= velnor::kResultKeyCount; ++code) {
        const bool detailed = code >= velnor::kFirstDetailCode && code <= velnor::kLastDetailCode;
        expected[velnor::resultKey(code)] = detailed ? "%s" : "";
    }
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    for (const char* language : {"English", "German", "French", "Spanish", "Japanese"}) {
        NSString* path = [NSString
            stringWithFormat:@"%s/Resources/%s.lproj/Localizable.strings", BUNDLE, language];
        NSString* file = [NSString stringWithContentsOfFile:path];
        EXPECT_EQ(placesOf([file propertyListFromStringsFileFormat]), expected) << language;
    }
    [pool release];
}

constexpr std::string_view kFrame = "FAILED_TO_INSTALL";

using Texts = std::map<std::string_view, const char*>;
Texts g_texts;  // that are not as they should be; every other key has one with a place

const char* textOf(const char* name) {
    const std::string_view key = name;
    const auto found = g_texts.find(key);
    if (found != g_texts.end()) return found->second;
    return key == kFrame ? "<%s>" : "100%% %s %n";
}

TEST(FailureMessage, FillsTheDetailInAsFarAsItCan) {
    const struct {
        Texts texts;
        uint32_t code;
        const char* detail;
        const char* message;
        size_t failing = 0;  // allocation
    } rows[] = {
        {{}, 14, "detail", "<100%% %s %n>"},
        {{}, 15, "d%n%s", "<100%% d%n%s %n>"},
        {{}, 21, "", "<100%%  %n>"},
        {{}, 21, nullptr, "<100%% %s %n>"},
        {{}, 22, "detail", "<100%% %s %n>"},
        {{{kFrame, "%d %s %s"}, {"INSTALL_ERROR_DISK_WRITE", "no"}}, 16, "d", "%d no %s"},
        {{{kFrame, "sorry"}}, 15, "detail", "sorry"},
        {{{kFrame, nullptr}}, 15, "detail", nullptr},
        {{{"INSTALL_ERROR_UNKNOWN", ""}}, 22, nullptr, nullptr},
        {{{"FILE_NOT_FOUND", ""}}, 13, nullptr, nullptr},
        {{}, 15, "detail", "<100%% %s %n>", 1},  // the detail made readable
        {{}, 15, "detail", "<100%% %s %n>", 2},  // the error text with it
        {{}, 15, "detail", "<%s>", 3},
    };
    for (const auto& row : rows) {
        g_texts = row.texts;
        velnor::OwnedText buffer;
        harness::failAllocation(row.failing);
        const char* message = velnor::failureMessage(row.code, row.detail, textOf, buffer);
        EXPECT_EQ(harness::hasFailedAllocation(), row.failing != 0);
        EXPECT_STREQ(message, row.message);
    }
}

TEST(ReadableText, ReplacesWhatCannotBeReadAndShortensTheRest) {
    const std::string r = "\xef\xbf\xbd";
    const std::string a(160, 'a');
    const std::string b(80, 'b');
    const std::pair<std::string, std::string> rows[] = {
        {"\xc3\xa4\xe3\x81\x82\xf0\x9f\x98\x80", "\xc3\xa4\xe3\x81\x82\xf0\x9f\x98\x80"},
        {"\xed\x9f\xbf\xee\x80\x80\xf4\x8f\xbf\xbf", "\xed\x9f\xbf\xee\x80\x80\xf4\x8f\xbf\xbf"},
        {"a\nb\x1b\x7f", "a" + r + "b" + r + r},
        {"\xff\xc3", r + r},                              // no character, and half of one
        {"\xe3\x81z", r + r + "z"},                       // two thirds of one
        {"\xc0\xaf\xe0\x80\xaf", r + r + r + r + r},      // longer than need be
        {"\xed\xa0\x80", r + r + r},                      // half of a pair
        {"\xf8\x88\x80\x80\x80", r + r + r + r + r},      // five bytes
        {"\xf4\x90\x80\x80", r + r + r + r},              // beyond the last one
        {"\xc2\x85\xe2\x80\xa8\xe2\x80\xae", r + r + r},  // next line, next line, right to left
        {a + b, a + b},
        {a + std::string(3855, '\n') + b, a + "\xe2\x80\xa6" + b},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_STREQ(velnor::readableText(text.c_str()).get(), expected.c_str());
    }
}

}  // namespace
