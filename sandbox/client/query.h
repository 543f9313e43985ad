// The parameters of a request.
#ifndef SANDBOX_CLIENT_QUERY_H
#define SANDBOX_CLIENT_QUERY_H

#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace standin {

/// A parameter that is missing or is not what it should be; says so.
class BadRequest : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class Query {
  public:
    /// The parameters behind the "?" of `target`. Of several with one name the first counts. A "%"
    /// that no two hexadecimal digits follow stands for itself.
    explicit Query(std::string_view target);

    bool has(const std::string& name) const { return values_.contains(name); }

    /// Empty when there is none.
    std::string text(const std::string& name) const;

    /// Throws BadRequest when there is none.
    std::string required(const std::string& name) const;

    /// Throws BadRequest when it is something else than a whole number of 0 or more; 0 when there
    /// is none.
    int64_t number(const std::string& name) const;

    /// Whether it is there and neither "0" nor "false".
    bool flag(const std::string& name) const;

  private:
    std::map<std::string, std::string> values_;
};

}  // namespace standin

#endif
