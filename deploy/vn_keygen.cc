// vn-keygen: makes a deployment's key pair, the private half into a file, the public half as the
// text that the build takes.
#include <cerrno>
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
    "Makes the RSA key pair of a deployment. The private key goes into a new file that only\n"
    "its owner can read; the public key is printed, as the 324 hex characters that the build\n"
    "takes as VELNOR_PUBLIC_KEY.\n";

int makeKeyPair(const std::string& path) try {
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
           "Give the line above to the build as -DVELNOR_PUBLIC_KEY=...\n";
    return 0;
} catch (const std::system_error& error) {
    if (error.code() != std::errc::file_exists) throw;
    throw std::runtime_error(path +
                             " exists and may be the key of an installer in use, so it is not "
                             "replaced; give another name, or move the file away");
}

program::Body setUp(CLI::App& app) {
    const auto path = std::make_shared<std::string>();
    app.add_option("PRIVATE.pem", *path, "The file to make")->required()->type_name("");
    return [path] { return makeKeyPair(*path); };
}

}  // namespace

int main(int argc, char** argv) {
    return program::run("vn-keygen", kDescription, setUp, argc, argv);
}
