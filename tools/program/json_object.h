// A JSON object as a line on standard output, for scripts.
#ifndef VELNOR_TOOLS_PROGRAM_JSON_OBJECT_H
#define VELNOR_TOOLS_PROGRAM_JSON_OBJECT_H

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstddef>
#include <cstdint>

namespace program {

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

}  // namespace program

#endif
