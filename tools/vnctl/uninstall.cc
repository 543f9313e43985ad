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
#include "vnctl/client.h"
#include "vnctl/commands.h"

namespace vnctl {
namespace {

struct Options : Request {
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

// One that was told to stop may take a moment.
bool clientStays() {
    constexpr int kLooks = 10;
    for (int look = 1; clientAnswers(); ++look) {
        if (look == kLooks) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return false;
}

// What there is to say of it. Throws Failure when the client is not gone as it should be.
std::string outcome(const Options& options, const Installation& before, const Installation& after) {
    if (after.applications > 0) {
        const bool hasLeft = after.applications < before.applications;
        return options.name + (hasLeft ? " has left." : " was not registered.") +
               " The client stays for the applications that are registered.";
    }
    if (after.isLoaded) {
        throw Failure(INSTALL_ERROR_STOP,
                      "The client's launch agent could not be unloaded; the "
                      "client may still run" +
                          whereTheLogIs());
    }
    if (after.exists && !options.keepIdentity) {
        throw Failure(INSTALL_ERROR_DISK, "The client was stopped, but not all of " +
                                              installPath() + " could be deleted" +
                                              whereTheLogIs());
    }
    if (clientStays()) {
        throw Failure(INSTALL_ERROR_STOP,
                      "Something still answers on port " + std::to_string(velnor::kClientPort) +
                          ": a client that was not started by its launch agent.");
    }
    if (!before.exists) return "Nothing was installed in " + installPath() + ".";
    if (!after.exists) return "The client was removed.";
    return "The client was stopped and does not start again; its files stay in " + installPath() +
           ".";
}

int uninstall(const Options& options) {
    // Keeping the identity deletes the files of a folder "installer.txt" in the current directory.
    std::filesystem::current_path("/");
    const Installation before = look();
    // The client is given time, ten seconds or what its configuration says.
    if (!options.isQuiet && !options.asJSON) {
        std::cerr << "Uninstalling " + options.name + "...\n";
    }
    const uint32_t flags = options.keepIdentity ? VN_UNINSTALL_KEEP_IDENTITY : 0;
    if (vn_uninstall(options.name.c_str(), flags) != 0) {
        const uint32_t code = vn_getLastError();
        throw Failure(code, resultText(code, "") + whereTheLogIs());
    }
    return sayDone(options, outcome(options, before, look()));
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
    setWork(*command, chosen, options, {kDisk}, [options] { return uninstall(*options); });
}

}  // namespace vnctl
