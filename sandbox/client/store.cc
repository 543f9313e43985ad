// Records to JSON and back.
#include "store.h"

#include <fcntl.h>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

#include "json.h"

namespace {

using Writer = rapidjson::PrettyWriter<rapidjson::StringBuffer>;

/// Every member that is kept, under its name; of a record to read or one to fill.
template <class AnyRecord, class Visitor>
void visitMembers(AnyRecord& record, const Visitor& visit) {
    visit("url", record.order.url);
    visit("path", record.order.path);
    visit("cookies", record.order.cookies);
    visit("queryauth", record.order.queryAuth);
    visit("basicauth", record.order.basicAuth);
    visit("speed", record.order.speed);
    visit("delay", record.order.delay);
    visit("background", record.order.background);
    visit("checkmd5", record.order.checksMd5);
    visit("wanted", record.wanted);
    visit("size", record.announced.size);
    visit("etag", record.announced.etag);
    visit("expectedmd5", record.announced.expectedMd5);
    visit("received", record.received);
    visit("md5", record.md5);
    visit("error", record.trouble.error);
    visit("suberror", record.trouble.subError);
    visit("errorstring", record.trouble.text);
}

void put(Writer& json, const std::string& value) { json::put(json, value); }
void put(Writer& json, int64_t value) { json.Int64(value); }
void put(Writer& json, bool value) { json.Bool(value); }

void get(const rapidjson::Value& json, std::string& value) {
    if (json.IsString()) value.assign(json.GetString(), json.GetStringLength());
}
void get(const rapidjson::Value& json, int64_t& value) {
    if (json.IsInt64()) value = json.GetInt64();
}
void get(const rapidjson::Value& json, bool& value) {
    if (json.IsBool()) value = json.GetBool();
}

void putRecord(Writer& json, const Record& record) {
    json.StartObject();
    json.Key("status");
    json.String(wordOf(record.status));
    visitMembers(record, [&json](const char* name, const auto& value) {
        json.Key(name);
        put(json, value);
    });
    json.EndObject();
}

Record recordIn(const rapidjson::Value& json) {
    Record record;
    visitMembers(record, [&json](const char* name, auto& value) {
        const auto found = json.FindMember(name);
        if (found != json.MemberEnd()) get(found->value, value);
    });
    const auto word = json.FindMember("status");
    if (word != json.MemberEnd() && word->value.IsString())
        record.status = statusOf(word->value.GetString()).value_or(Status::paused);
    return record;
}

void complain(const std::string& what) {
    std::fprintf(stderr, "standin_client: %s\n", what.c_str());
}

void putAside(const std::string& file) {
    complain(file + " is no list of downloads; it is now " + file + ".bad");
    std::error_code ignored;
    std::filesystem::rename(file, file + ".bad", ignored);
}

bool writeNew(const std::string& file, const rapidjson::StringBuffer& text) {
    const int fd = open(file.c_str(), O_CREAT | O_TRUNC | O_WRONLY | O_CLOEXEC, 0600);
    if (fd < 0) return false;
    const ssize_t written = write(fd, text.GetString(), text.GetSize());
    return close(fd) == 0 && written == static_cast<ssize_t>(text.GetSize());
}

}  // namespace

std::vector<Record> loadRecords(const std::string& file) {
    std::ifstream stream(file);
    if (!stream) return {};
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    rapidjson::Document document;
    // Not by recursion, so that no nesting is too deep.
    document.Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
    if (document.HasParseError() || !document.IsArray()) {
        putAside(file);
        return {};
    }
    std::vector<Record> records;
    for (const auto& value : document.GetArray())
        if (value.IsObject()) records.push_back(recordIn(value));
    return records;
}

void saveRecords(const std::string& file, const std::vector<const Record*>& records) {
    rapidjson::StringBuffer text;
    Writer json(text);
    json.StartArray();
    for (const Record* record : records) putRecord(json, *record);
    json.EndArray();
    const std::string fresh = file + ".new";
    std::error_code error;
    std::filesystem::create_directories(std::filesystem::path(file).parent_path(), error);
    if (writeNew(fresh, text) && std::rename(fresh.c_str(), file.c_str()) == 0) return;
    complain("cannot write " + file + ": " + std::generic_category().message(errno));
    std::filesystem::remove(fresh, error);
}
