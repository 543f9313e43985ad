// Answers on standard output: JSON objects for scripts, and what the client said, field by field,
// as a table for a person or as JSON.
#ifndef VELNOR_TOOLS_VNCTL_RECORD_H
#define VELNOR_TOOLS_VNCTL_RECORD_H

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "velnor/capi.h"

namespace vnctl {

/// A JSON object, put together member by member. Throws std::bad_alloc when there is no memory for
/// it.
class JSONObject {
  public:
    JSONObject() { writer_.StartObject(); }
    ~JSONObject();
    JSONObject(const JSONObject&) = delete;
    JSONObject& operator=(const JSONObject&) = delete;

    // Each adds a member and returns the object.

    JSONObject& number(const char* key, int64_t value);
    JSONObject& boolean(const char* key, bool value);

    /// A null pointer becomes null. U+FFFD stands for every byte that is no part of a character.
    JSONObject& text(const char* key, const char* value);

    /// Writes the object and ends the line. To be called once, after the last member.
    void print();

  private:
    // RapidJSON writes to whatever it is given, a null pointer too.
    struct Allocator {
        static constexpr bool kNeedFree = true;
        void* Malloc(size_t size) { return Realloc(nullptr, 0, size); }
        void* Realloc(void* block, size_t oldSize, size_t size);
        static void Free(void* block);
    };
    using Buffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, Allocator>;

    Buffer buffer_;
    rapidjson::Writer<Buffer, rapidjson::UTF8<>, rapidjson::UTF8<>, Allocator> writer_{buffer_};
};

class Record {
  public:
    explicit Record(bool asJSON) {
        if (asJSON) json_ = std::make_unique<JSONObject>();
    }

    // Each adds a field: its key in JSON, its name in the table, its value.

    void boolean(const char* key, const char* label, bool value);

    /// The table has `shown` in place of the number; no row when that is empty.
    void number(const char* key, const char* label, int64_t value, const std::string& shown);
    void number(const char* key, const char* label, int64_t value) {
        number(key, label, value, std::to_string(value));
    }

    /// A null text is null in JSON and no row of the table.
    void text(const char* key, const char* label, const char* value);

    /// Writes it to standard output. To be called once, after the last field.
    void print();

  private:
    std::unique_ptr<JSONObject> json_;  // or else the rows
    std::vector<std::pair<std::string, std::string>> rows_;
};

void printRecord(const ClientAttributes& client, bool asJSON);
void printRecord(const FileAttributes& file, bool asJSON);

}  // namespace vnctl

#endif
