// vn-publish: artifacts and their URLs in, signatures and a complete client.ini out.
#include <csignal>
#include <iostream>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "program/command_line.h"
#include "publish/live.h"
#include "publish/release.h"

namespace {

constexpr char kDescription[] =
    "Signs the artifacts of a release and writes the client.ini that offers them to\n"
    "installers. All of it is checked with the installer's own code first. When\n"
    "anything is wrong, a message says what to do, and no file is written.\n"
    "With --check-live it fetches what is on the servers, as an installation does,\n"
    "and says of each file whether installers accept it. Nothing else is required\n"
    "then, and no key.\n";

constexpr char kNobodysGuid[] = "00000000000000000000000000000000";

struct Options {
    deploy::Release release;
    std::string key;
    std::string output;
    bool isLiveCheck = false;
    std::string guid = kNobodysGuid;
};

// `artifact` is an Artifact, or may be left out.
template <class MaybeArtifact>
CLI::Option* addArtifact(CLI::App& app, const char* name, MaybeArtifact& artifact,
                         const char* description) {
    using Words = std::pair<std::string, std::string>;
    return app
        .add_option_function<Words>(
            name,
            [&artifact](const Words& words) {
                artifact = deploy::Artifact{words.first, words.second};
            },
            description)
        ->type_name("FILE URL");
}

void addArtifacts(CLI::App& app, deploy::Release& release) {
    addArtifact(app, "--client", release.client, "The client; its URL ends with its file name")
        ->required();
    addArtifact(app, "--ui-tool", release.uiTool,
                "The archive of the user-interface tool (.tar.gz)")
        ->required();
    addArtifact(app, "--uninstaller", release.uninstaller,
                "The archive of the uninstaller (.tar.gz)");
}

void addSettings(CLI::App& app, Options& options) {
    app.add_option("--key", options.key, "The private key that vn-keygen made")
        ->required()
        ->type_name("PRIVATE.pem");
    app.add_option("--log-url", options.release.logUrl,
                   "The http:// URL that installers put their logs under")
        ->required()
        ->type_name("URL");
    app.add_flag("--content-host-rewrite", options.release.isRewritten,
                 "Fetch the artifacts through the content host that the installer was built for");
    app.add_option("--uninstall-timeout", options.release.uninstallTimeout,
                   "How long an uninstallation waits for the client (10 when not given)")
        ->type_name("SECONDS")
        ->check(CLI::Range(1, std::numeric_limits<int32_t>::max()).description(""));
    app.add_option("--output", options.output, "The client.ini to write or replace")
        ->required()
        ->type_name("client.ini");
}

std::string checkGuid(const std::string& text) {
    const bool isGuid = text.size() == sizeof kNobodysGuid - 1 &&
                        text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    return isGuid ? "" : "'" + text + "' is no GUID, which has 32 hexadecimal digits";
}

// Beside it nothing that publishes is required, or possible.
void addLiveCheck(CLI::App& app, Options& options) {
    const std::vector<CLI::Option*> others = app.get_options([](const CLI::Option* option) {
        return option->get_name() != "--help" && option->get_name() != "--version";
    });
    CLI::Option* check = app.add_flag(
        "--check-live",
        [&options, others](int64_t) {
            options.isLiveCheck = true;
            for (CLI::Option* other : others) {
                other->required(false);
                if (other->count() > 0) throw CLI::ExcludesError("--check-live", other->get_name());
            }
        },
        "Fetch client.ini and the artifacts from the servers, and verify them");
    app.add_option("--guid", options.guid,
                   "The machine in whose name client.ini is fetched (32 zeros when not given)")
        ->type_name("GUID")
        ->check(checkGuid)
        ->needs(check);
}

int checkLive(const Options& options) {
    // As an installer does: a peer that hangs up is an error and no reason to die.
    std::signal(SIGPIPE, SIG_IGN);
    const bool isAccepted = deploy::checkLive(options.guid);
    std::cout << (isAccepted ? "Installers accept what is on the servers.\n"
                             : "Installations fail until this is put right.\n");
    return isAccepted ? 0 : 1;
}

int publish(const Options& options) {
    deploy::publish(options.release, options.key, options.output);
    std::cout << "Wrote " << options.output << "; installers will accept what it offers.\n";
    return 0;
}

program::Body setUp(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addArtifacts(app, options->release);
    addSettings(app, *options);
    addLiveCheck(app, *options);
    return [options] { return options->isLiveCheck ? checkLive(*options) : publish(*options); };
}

}  // namespace

int main(int argc, char** argv) {
    return program::run("vn-publish", kDescription, setUp, argc, argv);
}
