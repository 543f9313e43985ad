#include "agent.h"

#include <plist/plist.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace launchctl {
namespace {

struct PlistDeleter {
    void operator()(void* node) const { plist_free(node); }
};
using Plist = std::unique_ptr<void, PlistDeleter>;

Plist parse(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path + ": " + std::strerror(errno));
    const std::string text(std::istreambuf_iterator<char>(file), {});
    plist_t root = nullptr;
    plist_from_xml(text.data(), static_cast<uint32_t>(text.size()), &root);
    Plist plist(root);
    if (!plist || plist_get_node_type(root) != PLIST_DICT) {
        throw std::runtime_error(path + ": no property list");
    }
    return plist;
}

std::string textOf(plist_t node) {
    char* raw = nullptr;
    if (node != nullptr && plist_get_node_type(node) == PLIST_STRING) {
        plist_get_string_val(node, &raw);
    }
    const std::unique_ptr<char, decltype(&std::free)> text(raw, std::free);
    return raw == nullptr ? "" : raw;
}

bool flagOf(plist_t node, bool otherwise) {
    if (node == nullptr || plist_get_node_type(node) != PLIST_BOOLEAN) return otherwise;
    uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
}

std::vector<std::string> textsOf(plist_t node) {
    std::vector<std::string> texts;
    if (node == nullptr || plist_get_node_type(node) != PLIST_ARRAY) return texts;
    for (uint32_t i = 0; i < plist_array_get_size(node); ++i) {
        texts.push_back(textOf(plist_array_get_item(node, i)));
    }
    return texts;
}

}  // namespace

Agent readAgent(const std::string& path) {
    const Plist plist = parse(path);
    const auto item = [&](const char* key) { return plist_dict_get_item(plist.get(), key); };
    Agent agent{.label = textOf(item("Label")),
                .arguments = textsOf(item("ProgramArguments")),
                .runAtLoad = flagOf(item("RunAtLoad"), false),
                .keepAlive = !flagOf(item("OnDemand"), true)};
    // The label names files of ours, so it must not lead to another folder.
    if (agent.label.empty() || agent.label.find('/') != std::string::npos) {
        throw std::runtime_error(path + ": no Label");
    }
    if (agent.arguments.empty() || agent.arguments.front().empty()) {
        throw std::runtime_error(path + ": no ProgramArguments");
    }
    return agent;
}

}  // namespace launchctl
