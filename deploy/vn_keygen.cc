// vn-keygen: makes a deployment's key pair, the private half into a file, the public half as the
// text that the build takes.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>

#include "common/new_file.h"
#include "common/signing_key.h"
#include "program/command_line.h"

namespace {

constexpr mode_t kOwnerOnly = 0600;

constexpr char kDescription[] =
    "Makes the RSA key pair of a deployment. The private key goes into a new file\n"
    "that only its owner can read; the public key is printed, as the 324 hex\n"
    "characters that the build takes as VELNOR_PUBLIC_KEY.\n";

struct Options {
    std::string path;
    bool isForced = false;
};

// What "git add" would take could soon be public. A work tree has a folder ".git", or a file when
// it is a further one of its repository or a submodule.
void refuseWorkTree(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(fs::absolute(path, error).parent_path(), error);
    for (fs::path up = folder; !error; up = up.parent_path()) {
        if (fs::exists(up / ".git", error)) {
            throw std::runtime_error(path + " would be in the git work tree " + up.string() +
                                     ", from where a key is easily published with the sources; "
                                     "name a file outside it, or say --force");
        }
        if (up == up.parent_path()) return;
    }
}

// Where the public key went: the file that standard output is, by its name where the system tells
// it, or the terminal or pipe above this line.
std::string publicKeyPlace() {
    struct stat status {};
    if (fstat(STDOUT_FILENO, &status) != 0 || !S_ISREG(status.st_mode)) {
        return "Give the line above to the build as -DVELNOR_PUBLIC_KEY=...\n";
    }
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path name = fs::read_symlink("/proc/self/fd/1", error);
    if (!error) name = fs::proximate(name, error);
    return "The public key is in " + (error ? "the standard output's file" : name.string()) +
           ". Give its line to the build as -DVELNOR_PUBLIC_KEY=...\n";
}

int makeKeyPair(const Options& options) try {
    const std::string& path = options.path;
    if (!options.isForced) refuseWorkTree(path);
    const deploy::SigningKey key = deploy::SigningKey::generate();
    deploy::NewFile file(path, kOwnerOnly);
    key.writePrivate([&file](std::string_view pem) { file.write(pem); });
    std::cout << deploy::toHex(key.publicDer()) << '\n';
    // A pair whose public half got lost on the way is not left behind.
    program::finishOutput();
    file.keep();
    std::cerr
        << "The private key is in " << path
        << ". Keep it secret and keep a copy: whoever has it can publish releases, and without "
           "it nobody can.\n"
        << publicKeyPlace();
    return 0;
} catch (const std::system_error& error) {
    if (error.code() != std::errc::file_exists) throw;
    throw std::runtime_error(options.path +
                             " exists and may be the key of an installer in use, so it is not "
                             "replaced; give another name, or move the file away");
}

program::Body setUp(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    app.add_option("PRIVATE.pem", options->path, "The file to make")->required()->type_name("");
    app.add_flag("--force", options->isForced, "Make it in a git work tree, too");
    return [options] { return makeKeyPair(*options); };
}

}  // namespace

int main(int argc, char** argv) {
    return program::run("vn-keygen", kDescription, setUp, argc, argv);
}
