// Texts from outside, as a panel shows them.
#include "app/readable_text.h"

#include <gtest/gtest.h>

#include <string>

#include "harness/allocations.h"

namespace {

std::string readable(const std::string& text) { return velnor::readableText(text.c_str()).get(); }

TEST(ReadableText, KeepsWhatCanBeRead) {
    for (const char* text :
         {"", "https://host/a%20b?c=%n%s", "\xc3\xa4\xe3\x81\x82\xf0\x9f\x98\x80",
          "\xed\x9f\xbf\xee\x80\x80\xf4\x8f\xbf\xbf"}) {
        EXPECT_EQ(readable(text), text);
    }
}

TEST(ReadableText, ReplacesEveryByteAndCharacterThatCannot) {
    const std::string r = "\xef\xbf\xbd";
    const std::pair<const char*, std::string> rows[] = {
        {"a\nb\rc\td\x1b\x7f", "a" + r + "b" + r + "c" + r + "d" + r + r},
        {"\xff\xc3", r + r},                          // no character, and half of one at the end
        {"\xe3\x81z", r + r + "z"},                   // two thirds of one
        {"\xc0\xaf\xe0\x80\xaf", r + r + r + r + r},  // longer than need be
        {"\xed\xa0\x80", r + r + r},                  // half of a pair
        {"\xf4\x90\x80\x80", r + r + r + r},          // beyond the last one
        {"\xc2\x85\xe2\x80\xa8\xe2\x80\xae",
         r + r + r},  // next line, line separator, right to left
    };
    for (const auto& [text, expected] : rows) EXPECT_EQ(readable(text), expected);
}

TEST(ReadableText, LeavesOutTheMiddleOfALongOne) {
    const std::string a(160, 'a');
    const std::string b(80, 'b');
    EXPECT_EQ(readable(a + b), a + b);
    EXPECT_EQ(readable(a + std::string(3855, '\n') + b), a + "\xe2\x80\xa6" + b);
    std::string wide;
    for (int i = 0; i < 241; ++i) wide += "\xe3\x81\x82";
    EXPECT_EQ(readable(wide), wide.substr(0, 480) + "\xe2\x80\xa6" + wide.substr(0, 240));
}

TEST(ReadableText, IsNullWithoutMemory) {
    harness::FailingAllocation failing(1);
    const velnor::OwnedText text = velnor::readableText("text");
    EXPECT_TRUE(failing.end());
    EXPECT_FALSE(text);
}

}  // namespace
