// What the client said, field by field, as a table for a person or as JSON for a script.
#ifndef VELNOR_TOOLS_VNCTL_RECORD_H
#define VELNOR_TOOLS_VNCTL_RECORD_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "velnor/capi.h"
#include "vnctl/json_object.h"

namespace vnctl {

class Record {
  public:
    // Each adds a field: its key in JSON, its name in the table, its value.

    void truth(const char* key, const char* label, bool value);

    /// The table has `shown` in place of the number; no row when that is empty.
    void number(const char* key, const char* label, int64_t value, const std::string& shown);
    void number(const char* key, const char* label, int64_t value) {
        number(key, label, value, std::to_string(value));
    }

    /// A null text is null in JSON and no row of the table.
    void text(const char* key, const char* label, const char* value);

    /// Writes it to standard output. To be called once, after the last field.
    void print(bool asJSON);

  private:
    JSONObject json_;
    std::vector<std::pair<std::string, std::string>> rows_;
};

void printRecord(const ClientAttributes& client, bool asJSON);
void printRecord(const FileAttributes& file, bool asJSON);

}  // namespace vnctl

#endif
