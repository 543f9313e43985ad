// Adding and checking --name.
#include "vnctl/name_option.h"

#include <algorithm>

namespace vnctl {
namespace {

// The client cannot be told of a name that fills its whole request.
constexpr size_t kLongestName = 800;

std::string checkName(const std::string& name) {
    const bool plain =
        std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= '~'; });
    // The name is a line of the registry and a part of the user agent.
    return plain && !name.empty() && name.size() <= kLongestName
               ? ""
               : "The name must be 1 to " + std::to_string(kLongestName) +
                     " printable ASCII characters.";
}

}  // namespace

void addNameOption(CLI::App& command, std::string& name, const std::string& description) {
    command.add_option("--name", name, description)
        ->type_name("NAME")
        ->capture_default_str()
        ->check(checkName);
}

}  // namespace vnctl
