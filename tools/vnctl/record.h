// Answers on standard output: what the client said, field by field, as a table for a person or as
// JSON for scripts.
#ifndef VELNOR_TOOLS_VNCTL_RECORD_H
#define VELNOR_TOOLS_VNCTL_RECORD_H

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "program/json_object.h"
#include "velnor/capi.h"

namespace vnctl {

class Record {
  public:
    explicit Record(bool asJSON) {
        if (asJSON) json_ = std::make_unique<program::JSONObject>();
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
    std::unique_ptr<program::JSONObject> json_;  // or else the rows
    std::vector<std::pair<std::string, std::string>> rows_;
};

void printRecord(const ClientAttributes& client, bool asJSON);
void printRecord(const FileAttributes& file, bool asJSON);

}  // namespace vnctl

#endif
