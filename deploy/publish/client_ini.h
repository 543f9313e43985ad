// client.ini as text, and as an installation reads it back.
#ifndef VELNOR_DEPLOY_PUBLISH_CLIENT_INI_H
#define VELNOR_DEPLOY_PUBLISH_CLIENT_INI_H

#include <optional>
#include <string>
#include <vector>

namespace deploy {

/// A key with its "=", and its value; none when the key is not to be found in the file.
struct Setting {
    const char* key;
    std::optional<std::string> value;
};
using Settings = std::vector<Setting>;

/// The lines of client.ini, in order.
std::string compose(const Settings& settings);

/// Reads every setting back from `text` as the engine does. Throws std::runtime_error when one is
/// not what was meant: keys are found anywhere in the text, so a value can hide or fake one.
void checkSettings(const std::string& text, const Settings& settings);

}  // namespace deploy

#endif
