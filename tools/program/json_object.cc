#include "program/json_object.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>
#include <string>

namespace program {
namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

// Length in bytes of the character at the beginning of `text`, 0 when there is none.
size_t characterLength(const char* text, size_t size) {
    rapidjson::MemoryStream stream(text, size);
    unsigned code = 0;
    return rapidjson::UTF8<>::Decode(stream, &code) ? stream.Tell() : 0;
}

std::string validUtf8(const char* text) {
    std::string result;
    for (size_t size = std::strlen(text); size > 0;) {
        const size_t length = characterLength(text, size);
        result += length > 0 ? std::string(text, length) : kReplacement;
        text += length > 0 ? length : 1;
        size -= length > 0 ? length : 1;
    }
    return result;
}

}  // namespace

void* JSONObject::Allocator::Realloc(void* block, size_t /*oldSize*/, size_t size) {
    if (size == 0) {
        std::free(block);
        return nullptr;
    }
    void* grown = std::realloc(block, size);
    if (grown == nullptr) throw std::bad_alloc();
    return grown;
}

void JSONObject::Allocator::Free(void* block) { std::free(block); }

JSONObject::~JSONObject() = default;

JSONObject& JSONObject::number(const char* key, int64_t value) {
    writer_.Key(key);
    writer_.Int64(value);
    return *this;
}

JSONObject& JSONObject::boolean(const char* key, bool value) {
    writer_.Key(key);
    writer_.Bool(value);
    return *this;
}

JSONObject& JSONObject::text(const char* key, const char* value) {
    writer_.Key(key);
    if (value == nullptr) {
        writer_.Null();
    } else {
        writer_.String(validUtf8(value).c_str());
    }
    return *this;
}

void JSONObject::print() {
    writer_.EndObject();
    std::cout << buffer_.GetString() << '\n';
}

}  // namespace program
