// Replies as JSON.
#ifndef SANDBOX_CLIENT_JSON_H
#define SANDBOX_CLIENT_JSON_H

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>

namespace standin::json {

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

inline void put(Writer& writer, const std::string& text) {
    writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

/// An object whose members `fill` writes.
template <class Fill>
std::string object(const Fill& fill) {
    rapidjson::StringBuffer text;
    Writer writer(text);
    writer.StartObject();
    fill(writer);
    writer.EndObject();
    return {text.GetString(), text.GetSize()};
}

/// {"KEY":"TEXT"}
inline std::string pair(const std::string& key, const std::string& text) {
    return object([&](Writer& writer) {
        put(writer, key);
        put(writer, text);
    });
}

/// {"KEY":null}, which means success.
inline std::string success(const std::string& key) {
    return object([&](Writer& writer) {
        put(writer, key);
        writer.Null();
    });
}

}  // namespace standin::json

#endif
