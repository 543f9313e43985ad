// A value plucked from a reply of 1 KiB against a parse and a look-up by RapidJSON.
#include <rapidjson/document.h>

#include <string>

#include "comparison.h"
#include "groups.h"
#include "support/owned.h"
#include "support/text_extraction.h"

namespace bench {
namespace {

// A reply with many members; the one that is asked for stands in the middle.
const std::string& reply() {
    static const std::string text = [] {
        std::string json = "{";
        for (int i = 0; json.size() < 1000; ++i) {
            const std::string name = i == 12 ? "path" : "member" + std::to_string(i);
            json += "\"" + name + "\" : \"a value \\\"with\\\" escapes\", ";
        }
        return json + "\"last\" : 1}";
    }();
    return text;
}

void pluck(benchmark::State& state) {
    for (auto _ : state) {
        char* value = _vn_easyPluckJSONString(reply().c_str(), "path");
        if (value == nullptr) state.SkipWithError("no value");
        _vn_free(&value);
    }
}

void parse(benchmark::State& state) {
    for (auto _ : state) {
        rapidjson::Document document;
        document.Parse(reply().c_str());
        const std::string value = document["path"].GetString();
        if (value.empty()) state.SkipWithError("no value");
    }
}

}  // namespace

void addJson() { compare("JSON value from 1 KiB", pluck, "RapidJSON", parse, {}); }

}  // namespace bench
