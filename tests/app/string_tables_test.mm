// The string tables of the bundle, in every language: complete, and fit to be filled.
#import <Foundation/Foundation.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include "api/result/result_codes.h"

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

}  // namespace
