// vnctl uninstall: takes an application off the client, and says what became of the client.
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

#include "detect/euc_utils.h"
#include "support/paths.h"
#include "support/product.h"
#include "velnor/capi.h"
#include "vnctl/commands.h"

namespace vnctl {
namespace {

struct Options {
    std::string name = "Velnor";
    bool keepIdentity = false;
};

std::string installPath() {
    std::array<char, velnor::kPathSize> path{};
    _vn_getInstallPath(path.data(), path.size());
    return path.data();
}

// What vn_uninstall finds and leaves, because it does not tell.
struct Installation {
    bool isLoaded = false;  // the client's launch agent
    bool exists = false;
    size_t applications = 0;  // lines of the registry: a blank one keeps the client too
};

Installation look() {
    std::error_code unreadable;
    std::string whyNot;
    Installation found{.isLoaded = EUCUtils::isClientRunning(whyNot),
                       .exists = std::filesystem::exists(installPath(), unreadable)};
    std::ifstream registry(installPath() + "/" + velnor::kRegistryFile);
    for (std::string line; std::getline(registry, line);) ++found.applications;
    return found;
}

bool clientAnswers() {
    ApiHandle* client = nullptr;
    if (vn_initialize("vnctl/" VNCTL_VERSION, &client) != 0) return false;
    vn_uninitialize(client, 0);
    return true;
}

// One that was told to stop may take a moment.
bool clientStays() {
    constexpr int kLooks = 10;
    for (int look = 1; clientAnswers(); ++look) {
        if (look == kLooks) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

int fail(const std::string& message) {
    std::cerr << "vnctl: " << message << std::endl;
    return kFailed;
}

int sayOutcome(const Options& options, const Installation& before, const Installation& after) {
    if (after.applications > 0) {
        const bool hasLeft = after.applications < before.applications;
        std::cout << options.name << (hasLeft ? " has left." : " was not registered.")
                  << " The client stays for the applications that are registered." << std::endl;
    } else if (after.isLoaded) {
        return fail("The client's launch agent could not be unloaded; the client may still run.");
    } else if (after.exists && !options.keepIdentity) {
        return fail("The client was stopped, but not all of " + installPath() +
                    " could be deleted.");
    } else if (clientStays()) {
        return fail("Something still answers on port " + std::to_string(velnor::kClientPort) +
                    ": a client that was not started by its launch agent.");
    } else if (!before.exists) {
        std::cout << "Nothing was installed in " << installPath() << '.' << std::endl;
    } else if (!after.exists) {
        std::cout << "The client was removed." << std::endl;
    } else {
        std::cout << "The client was stopped and does not start again; its files stay in "
                  << installPath() << '.' << std::endl;
    }
    return kDone;
}

int uninstall(const Options& options) {
    // Keeping the identity deletes the files of a folder "installer.txt" in the current directory.
    std::filesystem::current_path("/");
    const Installation before = look();
    // The client is given time, ten seconds or what its configuration says.
    std::cout << "Uninstalling " << options.name << "..." << std::endl;
    const uint32_t flags = options.keepIdentity ? VN_UNINSTALL_KEEP_IDENTITY : 0;
    if (vn_uninstall(options.name.c_str(), flags) == 0) {
        return sayOutcome(options, before, look());
    }
    return fail(resultText(vn_getLastError(), ""));
}

}  // namespace

void addUninstall(CLI::App& app, program::Body& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand(
        "uninstall", "Take an application off the client, and remove the client after the last");
    addName(*command, options->name, "The application that leaves");
    command->add_flag("--keep-identity", options->keepIdentity,
                      "When the client is removed, leave its files in " + installPath() +
                          ", among them guid.ini, this machine's identity");
    command->callback([options, &chosen] { chosen = [options] { return uninstall(*options); }; });
}

}  // namespace vnctl
