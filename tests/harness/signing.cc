// Signing by OpenSSL.
#include "harness/signing.h"

#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace harness {
namespace {

using Key = std::unique_ptr<RSA, decltype(&RSA_free)>;

Key signingKey() {
    const std::unique_ptr<FILE, decltype(&fclose)> file(fopen(SIGNING_KEY, "r"), &fclose);
    if (!file) throw std::runtime_error("no signing key");
    return {PEM_read_RSAPrivateKey(file.get(), nullptr, nullptr, nullptr), &RSA_free};
}

Key newKey() {
    Key key(RSA_new(), &RSA_free);
    const std::unique_ptr<BIGNUM, decltype(&BN_free)> exponent(BN_new(), &BN_free);
    BN_set_word(exponent.get(), RSA_F4);
    if (RSA_generate_key_ex(key.get(), 1024, exponent.get(), nullptr) != 1) {
        throw std::runtime_error("no new key");
    }
    return key;
}

std::string digestOf(const std::string& data) {
    std::string digest(SHA_DIGEST_LENGTH, '\0');
    SHA1(reinterpret_cast<const unsigned char*>(data.data()), data.size(),
         reinterpret_cast<unsigned char*>(digest.data()));
    return digest;
}

std::string payload(const std::string& data, Content content) {
    // DER of DigestInfo for SHA-1, up to the digest (RFC 8017, section 9.2, note 1).
    static constexpr char kDigestInfo[] =
        "\x30\x21\x30\x09\x06\x05\x2b\x0e\x03\x02\x1a\x05\x00\x04\x14";
    switch (content) {
        case Content::Digest:
            return digestOf(data);
        case Content::DigestInfo:
            return std::string(kDigestInfo, sizeof kDigestInfo - 1) + digestOf(data);
        default:
            return "";
    }
}

std::string encrypt(RSA* key, const std::string& bytes) {
    std::string signature(static_cast<size_t>(RSA_size(key)), '\0');
    const int size = RSA_private_encrypt(
        static_cast<int>(bytes.size()), reinterpret_cast<const unsigned char*>(bytes.data()),
        reinterpret_cast<unsigned char*>(signature.data()), key, RSA_PKCS1_PADDING);
    if (size < 0) throw std::runtime_error("cannot sign");
    std::string hex;
    for (const char c : signature) {
        static constexpr char kDigits[] = "0123456789abcdef";
        const auto byte = static_cast<unsigned char>(c);
        hex += {kDigits[byte >> 4], kDigits[byte & 15]};
    }
    return hex;
}

}  // namespace

std::string sign(const std::string& data, Content content) {
    return encrypt(signingKey().get(), payload(data, content));
}

std::string signWithForeignKey(const std::string& data) {
    return encrypt(newKey().get(), payload(data, Content::Digest));
}

}  // namespace harness
