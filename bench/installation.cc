// A whole installation of a 64 MiB release, up to the start of the client, against a script that
// does the same fetch, digest, comparison and write with curl, openssl and tar.
#include <stdlib.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "comparison.h"
#include "groups.h"
#include "harness/harness.h"
#include "sandbox/servers/release.h"
#include "servers.h"
#include "velnor/capi.h"
#include "velnor_deployment.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr uint32_t kBeforeStart = 85;
Clock::time_point g_beforeStart;

std::string contentUrl(const std::string& name) {
    return std::string("https://") + velnor::deployment::kContentHost + "/" + name;
}

std::string archive() {
    harness::writeFile("/tmp/content", bodyOf(kMiB));
    harness::run("tar -C /tmp -czf /tmp/archive.tar.gz content");
    return harness::readFile("/tmp/archive.tar.gz");
}

// A client that is large on the disk and becomes the small stand-in when it is started.
std::string client() {
    const std::string script = "#!/bin/sh\nexec '" STANDIN_CLIENT "'\n";
    return script + bodyOf(62 * kMiB);
}

void put(const std::string& name, const std::string& data) {
    harness::writeFile("/tmp/release/files/" + name, data);
    harness::writeFile("/tmp/release/" + name + ".sig", harness::sign(data));
}

std::string ini() {
    const auto signature = [](const char* name) {
        return harness::readFile(std::string("/tmp/release/") + name + ".sig");
    };
    return "LogfileUploadURL=http://log.velnor.example:8445/logs/\n"
           "MacOSClientURL=" +
           contentUrl("ksmac_1") + "\nMacOSClientSig=" + signature("ksmac_1") +
           "\nMacOSUIToolURL=" + contentUrl("ui.tgz") + "\nMacOSUIToolSig=" + signature("ui.tgz") +
           "\nMacOSUninstallerURL=" + contentUrl("un.tgz") +
           "\nMacOSUninstallerSig=" + signature("un.tgz") + "\n";
}

// The same work by hand; the public key comes from the build as it does for the installer.
std::string byHand() {
    std::string script = "set -e\nmkdir -p /Applications/by-hand\ncd /Applications/by-hand\n";
    script += std::string("curl -sf -o client.ini 'https://") +
              velnor::deployment::kConfigurationHost + "/conf/client_ini.html?guid=0'\n";
    for (const char* name : {"ksmac_1", "ui.tgz", "un.tgz"}) {
        const std::string file = name;
        script += "digest=$(curl -sf --compressed '" + contentUrl(file) + "' | tee " + file +
                  " | openssl sha1 -r | cut -c1-40)\n";
        script += "signed=$(perl -ne 'print pack \"H*\", $_' /tmp/release/" + file +
                  ".sig | openssl pkeyutl -verifyrecover -pubin -inkey /tmp/public.pem "
                  "-pkeyopt rsa_padding_mode:pkcs1 | od -An -v -tx1 | tr -d ' \\n')\n";
        script += "[ \"$digest\" = \"$signed\" ]\n";
    }
    return script + "tar -zxf ui.tgz\ntar -zxf un.tgz\nchmod 755 ksmac_1\n";
}

// Serves the release in a process of its own and prepares the script.
void prepare() {
    std::filesystem::create_directories("/tmp/release/files");
    put("ksmac_1", client());
    put("ui.tgz", archive());
    put("un.tgz", archive());
    harness::writeFile("/tmp/release/client.ini", ini());
    harness::run(WORLD
                 " --release /tmp/release --ready /tmp/ready --log /dev/null"
                 " </dev/null >/dev/null 2>&1 &");
    harness::eventually([] { return harness::exists("/tmp/ready"); });
    harness::run("printf '%s' " + std::string(velnor::deployment::kPublicKeyHex) +
                 " | perl -ne 'print pack \"H*\", $_' | openssl rsa -pubin -inform DER -out "
                 "/tmp/public.pem 2>/dev/null");
    harness::writeFile("/tmp/by-hand.sh", byHand());
}

void installByEngine(benchmark::State& state) {
    InstallContext context{};
    context.progress = [](uint32_t percentage, uint32_t) {
        if (percentage == kBeforeStart) g_beforeStart = Clock::now();
    };
    for (auto _ : state) {
        const auto start = Clock::now();
        if (vn_install("bench", 0, nullptr, &context) != 0) {
            state.SkipWithError(vn_errorToString(vn_getLastError()));
            return;
        }
        state.SetIterationTime(std::chrono::duration<double>(g_beforeStart - start).count());
        harness::run("launchctl unload " + std::string(getenv("HOME")) +
                     "/Library/LaunchAgents/com.velnor.client.plist");
        std::filesystem::remove_all(harness::kInstallPath);
    }
}

void installByHand(benchmark::State& state) {
    for (auto _ : state) {
        const auto start = Clock::now();
        if (harness::run("sh /tmp/by-hand.sh").status != 0) {
            state.SkipWithError("the script failed");
            return;
        }
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        std::filesystem::remove_all("/Applications/by-hand");
    }
}

}  // namespace

void addInstallation() {
    const auto once = [] {
        static const bool done = (prepare(), true);
        return done;
    };
    compare(
        "install 64 MiB, without the start",
        [once](benchmark::State& state) {
            once();
            installByEngine(state);
        },
        "by hand",
        [once](benchmark::State& state) {
            once();
            installByHand(state);
        },
        {Limit::Kind::MaxRatio, 1.1}, true, 1);
}

}  // namespace bench
