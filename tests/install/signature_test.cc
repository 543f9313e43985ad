// Which signatures verify, and what is logged about the others.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "harness/files.h"
#include "harness/shell.h"
#include "harness/signing.h"
#include "install/verified_download.h"

namespace {

const std::string kData = "an artifact";
constexpr char kNoParameters[] = "[eror] _vn_checkAgainstSignature: Invalid parameters received";
constexpr char kOverNothing[] = "[eror] _vn_mac_cryptPublicKeyDecrypt: Couldn't decrypt signature.";

// "verified", or what the log says about it.
std::string check(const std::string& signature, const char* url = "url") {
    harness::makeInstallDirectory();
    harness::writeFile(harness::installed("installer.txt"), "");
    if (_vn_checkAgainstSignature(signature.c_str(), url, kData.data(),
                                  static_cast<uint32_t>(kData.size())) == 1) {
        return "verified";
    }
    const std::vector<std::string> messages = harness::logMessages();
    return messages.empty() ? "" : messages.back();
}

// What openssl makes with the maker's key.
std::string openssl(const std::string& arguments) {
    return harness::run("printf '" + kData + "' | openssl " + arguments +
                        " '" SIGNING_KEY "' | od -An -v -tx1 | tr -d ' \\n'")
        .output;
}

// The maker's signature over the digest as a shell command changes it.
std::string signDigest(const std::string& filter) {
    return openssl("dgst -sha1 -binary | { " + filter + "; } | openssl pkeyutl -sign -inkey");
}

TEST(Signature, OnlyTheMakersBareDigestVerifies) {
    const std::string good = harness::sign(kData);
    const std::pair<std::string, std::string> rows[] = {
        {good, "verified"},
        {good + "0", "verified"},  // the odd digit is dropped
        {"", kNoParameters},
        {"a", ""},
        {good.substr(2), ""},
        {good + "00", ""},
        {std::string(256, 'z'), ""},
        {std::string(1'000'000, 'a'), ""},
        {harness::sign(kData + "x"), ""},
        {openssl("dgst -sha1 -sign"), ""},  // a wrapped digest
        {signDigest("cat"), "verified"},
        {signDigest("head -c 19"), ""},
        {signDigest("head -c 19; printf x"), ""},
        {signDigest("cat; printf x"), ""},
        {openssl("pkeyutl -in /dev/null -sign -inkey"), kOverNothing},
    };
    for (const auto& [signature, result] : rows) EXPECT_EQ(check(signature), result) << signature;
    EXPECT_EQ(check(good, nullptr), kNoParameters);
    for (size_t i = 0; i < good.size(); ++i) {
        std::string flipped = good;
        flipped[i] = good[i] == '0' ? '1' : '0';
        EXPECT_EQ(check(flipped), "") << i;
    }
}

}  // namespace
