// The client's records, field by field.
#include "vnctl/record.h"

#include <algorithm>
#include <iostream>

#include "vnctl/human.h"
#include "vnctl/printable.h"

namespace vnctl {
namespace {

std::string sizeAndBytes(int64_t bytes) {
    return humanSize(bytes) + " (" + std::to_string(bytes) + " bytes)";
}

// 0 stands for nothing to tell.
std::string unlessZero(int64_t value) { return value != 0 ? std::to_string(value) : ""; }

}  // namespace

void Record::truth(const char* key, const char* label, bool value) {
    json_.truth(key, value);
    rows_.emplace_back(label, value ? "yes" : "no");
}

void Record::number(const char* key, const char* label, int64_t value, const std::string& shown) {
    json_.number(key, value);
    if (!shown.empty()) rows_.emplace_back(label, shown);
}

void Record::text(const char* key, const char* label, const char* value) {
    json_.text(key, value);
    if (value != nullptr) rows_.emplace_back(label, printable(value));
}

void Record::print(bool asJSON) {
    if (asJSON) return json_.print();
    size_t widest = 0;
    for (const auto& [label, value] : rows_) widest = std::max(widest, label.size());
    for (const auto& [label, value] : rows_) {
        std::cout << label << std::string(widest + 2 - label.size(), ' ') << value << '\n';
    }
    std::cout.flush();
}

void printRecord(const ClientAttributes& client, bool asJSON) {
    Record record;
    record.truth("isonline", "Online", client.isonline != 0);
    record.number("version", "Version", client.version);
    record.text("executableversion", "Executable", client.executableversion);
    record.text("configurationversion", "Configuration", client.configurationversion);
    record.number("downloadrate", "Download rate", client.downloadrate,
                  humanRate(client.downloadrate));
    record.number("sharerate", "Share rate", client.sharerate, humanRate(client.sharerate));
    record.truth("acceptedeula", "EULA accepted", client.acceptedeula != 0);
    record.text("guid", "GUID", client.guid);
    record.print(asJSON);
}

void printRecord(const FileAttributes& file, bool asJSON) {
    Record record;
    record.text("url", "URL", file.url);
    record.number("cid", "Application", file.cid);
    record.number("status", "State number", file.status, "");
    record.text("state", "State", vn_fileStatusToString(file.status));
    record.text("path", "Path", file.path);
    record.number("size", "Size", file.size, file.size > 0 ? sizeAndBytes(file.size) : "unknown");
    record.number("uniquerecv", "Received", file.uniquerecv, sizeAndBytes(file.uniquerecv));
    record.number("progress", "Progress", file.progress, std::to_string(file.progress) + "%");
    record.number("downloadrate", "Rate", file.downloadrate, humanRate(file.downloadrate));
    record.text("errorstring", "Error", file.errorstring);
    record.number("error", "Error number", file.error, unlessZero(file.error));
    record.number("suberror", "More about it", file.suberror, unlessZero(file.suberror));
    record.text("verifiedcontentmd5", "Verified MD5", file.verifiedcontentmd5);
    record.print(asJSON);
}

}  // namespace vnctl
