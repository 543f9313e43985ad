#include "vnctl/record.h"

#include <algorithm>
#include <iostream>

#include "program/text.h"

namespace vnctl {
namespace {

std::string sizeAndBytes(int64_t bytes) {
    return program::humanSize(bytes) + " (" + std::to_string(bytes) + " bytes)";
}

// 0 stands for nothing to tell.
std::string unlessZero(int64_t value) { return value != 0 ? std::to_string(value) : ""; }

}  // namespace

void Record::boolean(const char* key, const char* label, bool value) {
    if (json_) {
        json_->boolean(key, value);
        return;
    }
    rows_.emplace_back(label, value ? "yes" : "no");
}

void Record::number(const char* key, const char* label, int64_t value, const std::string& shown) {
    if (json_) {
        json_->number(key, value);
        return;
    }
    if (!shown.empty()) rows_.emplace_back(label, shown);
}

void Record::text(const char* key, const char* label, const char* value) {
    if (json_) {
        json_->text(key, value);
        return;
    }
    if (value != nullptr) rows_.emplace_back(label, program::printable(value));
}

void Record::print() {
    if (json_) return json_->print();
    size_t widest = 0;
    for (const auto& [label, value] : rows_) widest = std::max(widest, label.size());
    std::string table;
    for (const auto& [label, value] : rows_) {
        table.append(label).append(widest + 2 - label.size(), ' ').append(value) += '\n';
    }
    std::cout << table;
}

void printRecord(const ClientAttributes& client, bool asJSON) {
    Record record(asJSON);
    record.boolean("isonline", "Online", client.isonline != 0);
    record.number("version", "Version", client.version);
    record.text("executableversion", "Executable", client.executableversion);
    record.text("configurationversion", "Configuration", client.configurationversion);
    record.number("downloadrate", "Download rate", client.downloadrate,
                  program::humanRate(client.downloadrate));
    record.number("sharerate", "Share rate", client.sharerate,
                  program::humanRate(client.sharerate));
    record.boolean("acceptedeula", "EULA accepted", client.acceptedeula != 0);
    record.text("guid", "GUID", client.guid);
    record.print();
}

void printRecord(const FileAttributes& file, bool asJSON) {
    Record record(asJSON);
    record.text("url", "URL", file.url);
    record.number("cid", "Application", file.cid);
    record.number("status", "State number", file.status, "");
    record.text("state", "State", vn_fileStatusToString(file.status));
    record.text("path", "Path", file.path);
    record.number("size", "Size", file.size, file.size > 0 ? sizeAndBytes(file.size) : "unknown");
    record.number("uniquerecv", "Received", file.uniquerecv, sizeAndBytes(file.uniquerecv));
    record.number("progress", "Progress", file.progress, std::to_string(file.progress) + "%");
    record.number("downloadrate", "Rate", file.downloadrate, program::humanRate(file.downloadrate));
    record.text("errorstring", "Error", file.errorstring);
    record.number("error", "Error number", file.error, unlessZero(file.error));
    record.number("suberror", "More about it", file.suberror, unlessZero(file.suberror));
    record.text("verifiedcontentmd5", "Verified MD5", file.verifiedcontentmd5);
    record.print();
}

}  // namespace vnctl
