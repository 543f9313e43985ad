// Single values out of key=value files, HTTP headers and JSON replies, by substring search and not
// by a parser. The matching rules are a contract with the client and with the makers' client.ini
// files. Absence is no error: it sets no code.
#ifndef VELNOR_SUPPORT_TEXT_EXTRACTION_H
#define VELNOR_SUPPORT_TEXT_EXTRACTION_H

#include <cstdint>
#include <optional>
#include <string_view>

#include "support/owned.h"

/// The rest of the line after the first occurrence of `key` (which includes its separator: "A=",
/// "Location: ") anywhere in `text`, untrimmed, possibly empty. Owned by the caller. Null when the
/// key is missing or its line has no line end, and with code 4 when there is no memory.
char* _vn_pluckString(const char* text, const char* key);

/// Converts what follows the first occurrence of `key` with atoll(3), stores it in `*result` and
/// returns 1; 0 when the key is missing. Arguments are not checked.
int32_t _vn_pluckInt(const char* text, const char* key, int64_t* result);

/// A copy of `text` with each backslash pair replaced by the byte that it stands for; Unicode
/// escapes are not decoded. Owned by the caller. Null with code 1 for a null or empty text, 4
/// without memory.
char* _vn_copyStringAndUnescape(const char* text);

/// Start of the value after the first `key` in double quotes, within `json`. Null when there is
/// none; with code 1 when an argument is null or empty, 4 without memory.
const char* _vn_findJSONValue(const char* json, const char* key);

// The pluckers below search an unescaped copy of the whole reply. Codes as for the two functions
// above.

/// 1 when the value begins with "true" ("null"), else 0.
int32_t _vn_pluckJSONBool(const char* json, const char* key);
int32_t _vn_pluckJSONNull(const char* json, const char* key);

/// The value between its double quotes, owned by the caller; null when it is missing or unquoted.
char* _vn_easyPluckJSONString(const char* json, const char* key);

/// The value when it begins with a decimal digit, else 0: a quoted or negative number gives 0.
int64_t _vn_easyPluckJSONInt(const char* json, const char* key);

namespace velnor {

/// What became of the search for a text.
enum class Found { Here, Absent, NoMemory };

/// The value that _vn_pluckString copies, within `text`.
std::optional<std::string_view> lineValue(const char* text, const char* key);

/// One unescaped copy of a reply, for taking several values out of it. Each gives what the plucker
/// of the same kind gives.
class JSONReply {
  public:
    explicit JSONReply(const char* json);

    /// Whether there was no memory for the copy, or for a look at it since: what seemed to be
    /// missing or false may be there then.
    bool outOfMemory() const { return outOfMemory_; }

    bool isTrue(const char* key) const { return valueBegins(key, "true"); }
    bool isNull(const char* key) const { return valueBegins(key, "null"); }
    int64_t number(const char* key) const;

    /// Stores the value between its double quotes, or null, in `*value`.
    Found text(const char* key, OwnedText* value) const;

  private:
    const char* find(const char* key) const;
    bool valueBegins(const char* key, const char* prefix) const;

    OwnedText copy_;
    mutable bool outOfMemory_;
};

}  // namespace velnor

#endif
