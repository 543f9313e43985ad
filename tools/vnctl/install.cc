// vnctl install: the installer engine with its progress and its outcome on a terminal.
#include <iostream>
#include <memory>
#include <string>

#include "program/progress.h"
#include "velnor/capi.h"
#include "vnctl/commands.h"

namespace vnctl {
namespace {

// The engine drops a longer EULA record silently; with the longest number, this much text fits.
constexpr size_t kLongestEula = 1024 - (sizeof "2147483647_" - 1) - (sizeof "\r\n" - 1);

struct Options : Request {
    std::string name = "Velnor";
    std::string eula;
};

// One for the whole process, because the engine's callback takes no argument of ours.
program::Progress& progress() {
    static program::Progress instance;
    return instance;
}

void showProgress(uint32_t percentage, uint32_t /*reserved*/) { progress().show(percentage); }
void ignoreProgress(uint32_t /*percentage*/, uint32_t /*reserved*/) {}

std::string checkEula(const std::string& text) {
    const bool valid = !text.empty() && text.size() <= kLongestEula &&
                       text.find_first_of("\r\n") == std::string::npos;
    return valid ? ""
                 : "The EULA's name must be one line of 1 to " + std::to_string(kLongestEula) +
                       " bytes.";
}

// Neither makes a record without the other.
void checkRecord(const CLI::App& app, const CLI::App& command) {
    const bool hasCid = command.count("--cid") + app.count("--cid") > 0;
    const bool hasEula = command.count("--eula") > 0;
    if (hasEula && !hasCid) throw CLI::RequiresError("--eula", "--cid");
    if (hasCid && !hasEula) throw CLI::RequiresError("--cid", "--eula");
}

int install(const Options& options) {
    std::string detail(VN_ERROR_DETAIL_SIZE, '\0');
    InstallContext context{};
    context.structSize = sizeof context;
    const bool isSilent = options.isQuiet || options.asJSON;
    context.progress = isSilent ? ignoreProgress : showProgress;
    context.errorDetail = detail.data();

    const char* eula = options.eula.empty() ? nullptr : options.eula.c_str();
    const bool installed = vn_install(options.name.c_str(), options.cid, eula, &context) == 0;
    // A success may leave the last error as it was, so it is not asked for.
    const uint32_t code = installed ? uint32_t{INSTALL_ERROR_OK} : vn_getLastError();
    if (installed && !isSilent) progress().show(100);
    if (!isSilent) progress().end();
    const std::string text = resultText(code, detail.data());
    if (!installed) throw Failure(code, text + whereTheLogIs());
    return sayDone(options, text);
}

}  // namespace

void addInstall(CLI::App& app, program::Body& chosen) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = app.add_subcommand(
        "install", "Install and start the client, and register an application with it");
    addName(*command, options->name, "The application to register");
    CLI::Option* eula =
        command->add_option("--eula", options->eula, "The EULA that the user has accepted");
    addCid(*command, *options, "The application's number in its record");
    eula->type_name("TEXT")->check(checkEula);
    setWork(*command, chosen, options, {kDisk}, [options] { return install(*options); });
    command->parse_complete_callback([&app, command] { checkRecord(app, *command); });
}

}  // namespace vnctl
