#include <rapidjson/writer.h>

#include <iostream>

#include "logs/report.h"

namespace logs {
namespace {

// Grows by exceptions, where RapidJSON's own buffers would write to a null pointer.
struct Buffer {
    using Ch = char;
    void Put(char c) { text += c; }
    void Flush() {}
    std::string text;
};

class Object {
  public:
    Object() { writer_.StartObject(); }
    void print() {
        writer_.EndObject();
        std::cout << buffer_.text << '\n';
    }

    void text(const char* key, const std::string& value) {
        writer_.Key(key);
        writer_.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    }
    void textOrNull(const char* key, const std::string& value) {
        if (!value.empty()) return text(key, value);
        writer_.Key(key);
        writer_.Null();
    }
    void number(const char* key, const std::optional<uint64_t>& value) {
        writer_.Key(key);
        value ? writer_.Uint64(*value) : writer_.Null();
    }

  private:
    Buffer buffer_;
    rapidjson::Writer<Buffer> writer_{buffer_};
};

std::string iso8601(Time time) {
    const auto midnight = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::hh_mm_ss clock(time - midnight);
    std::array<char, 16> text{};
    std::snprintf(
        text.data(), text.size(), "T%02d:%02d:%02dZ", static_cast<int>(clock.hours().count()),
        static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
    return dateOf(time) + text.data();
}

}  // namespace

void printJSON(const Installation& installation, const std::string& machine,
               const std::string& file) {
    Object object;
    object.text("machine", machine);
    object.text("file", file);
    object.number("number", installation.number);
    object.text("begin", iso8601(installation.begin));
    object.text("end", iso8601(installation.end));
    object.text("outcome", nameOf(installation.outcome));
    object.textOrNull("release", installation.release);
    object.textOrNull("error", installation.error);
    object.textOrNull("cause", installation.cause);
    object.textOrNull("last", installation.last);
    object.number("seconds", installation.seconds);
    object.number("startSeconds", installation.startSeconds);
    object.print();
}

}  // namespace logs
