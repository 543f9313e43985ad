// A JSON object for standard output, put together member by member.
#ifndef VELNOR_TOOLS_VNCTL_JSON_OBJECT_H
#define VELNOR_TOOLS_VNCTL_JSON_OBJECT_H

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <string>

namespace vnctl {

class JSONObject {
  public:
    JSONObject() { writer_.StartObject(); }

    // Each adds a member and returns the object.

    JSONObject& number(const char* key, int64_t value);
    JSONObject& truth(const char* key, bool value);

    /// A null pointer becomes null. U+FFFD stands for every byte that is no part of a character.
    JSONObject& text(const char* key, const char* value);

    /// Writes the object and ends the line. To be called once, after the last member.
    void print();

  private:
    rapidjson::StringBuffer buffer_;
    rapidjson::Writer<rapidjson::StringBuffer> writer_{buffer_};
};

}  // namespace vnctl

#endif
