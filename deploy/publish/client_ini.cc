#include "publish/client_ini.h"

#include <stdexcept>

#include "support/owned.h"
#include "support/text_extraction.h"

namespace deploy {
namespace {

std::optional<std::string> pluck(const std::string& text, const char* key) {
    const velnor::OwnedText value(_vn_pluckString(text.c_str(), key));
    if (!value) return std::nullopt;
    return value.get();
}

bool occursAgain(const std::string& text, const char* key) {
    return text.find(key) != text.rfind(key);
}

}  // namespace

std::string compose(const Settings& settings) {
    std::string text;
    for (const Setting& setting : settings) {
        if (setting.value) text += setting.key + *setting.value + '\n';
    }
    return text;
}

void checkSettings(const std::string& text, const Settings& settings) {
    for (const auto& [key, value] : settings) {
        // The launcher script takes the last occurrence where the engine takes the first.
        if (pluck(text, key) == value && !occursAgain(text, key)) continue;
        throw std::runtime_error(std::string("client.ini would be misread: \"") + key +
                                 "\" also stands in one of the URLs; choose URLs without it");
    }
}

}  // namespace deploy
