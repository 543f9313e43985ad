// Checking signatures. The low-level RSA and SHA-1 functions are deprecated and still the right
// ones: the signature is a bare private-key encryption of the digest, which the newer interface
// does not offer with type 1 padding and no DigestInfo in one step on every version.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/err.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>
#include <openssl/x509.h>

#include <cstring>
#include <memory>

#include "api/result/last_error.h"
#include "install/verified_download.h"
#include "support/encodings.h"
#include "support/log_file.h"
#include "support/owned.h"
#include "support/text.h"
#include "velnor/capi.h"
#include "velnor_deployment.h"

namespace velnor {
namespace {

using OwnedBytes = Owned<uint8_t>;

constexpr uint32_t kKeySize = (sizeof deployment::kPublicKeyHex - 1) / 2;

struct RsaDeleter {
    void operator()(RSA* key) const { RSA_free(key); }
};
using Key = std::unique_ptr<RSA, RsaDeleter>;

OwnedBytes allocate(uint32_t size) { return OwnedBytes(static_cast<uint8_t*>(_vn_malloc(size))); }

constexpr char kFunction[] = "_vn_checkAgainstSignature";
constexpr char kNoDigest[] = "Unable to calculate hash of binary. URL: ";

SignatureCheck fail(const char* message) { return {false, kFunction, message}; }
SignatureCheck failDecryption(const char* message) {
    return {false, "_vn_mac_cryptPublicKeyDecrypt", message};
}

OwnedText digestHex(const void* data, uint32_t size) {
    const OwnedBytes digest = allocate(SHA_DIGEST_LENGTH);
    SHA_CTX state;
    if (!digest || SHA1_Init(&state) != 1 || SHA1_Update(&state, data, size) != 1 ||
        SHA1_Final(digest.get(), &state) != 1) {
        return {};
    }
    return OwnedText(_vn_toHex(digest.get(), SHA_DIGEST_LENGTH));
}

// Whether the signature decrypts with the built-in key to bytes with this hex text.
SignatureCheck checkDigest(const char* hex, const uint8_t* signature, uint32_t signatureSize) {
    const OwnedBytes der = allocate(kKeySize);
    if (!der) return failDecryption("Couldn't allocate enough memory for keyBuffer");
    uint32_t derSize = kKeySize;
    if (!_vn_fromHex(deployment::kPublicKeyHex, der.get(), &derSize)) {
        return failDecryption("Couldn't get binary public key value");
    }
    const uint8_t* derEnd = der.get();
    const Key key(d2i_RSA_PUBKEY(nullptr, &derEnd, kKeySize));
    if (!key) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return failDecryption("Couldn't load public key");
    }
    const OwnedBytes bytes = allocate(static_cast<uint32_t>(RSA_size(key.get())));
    if (!bytes) return failDecryption("Unable to allocate memory for the decrypted buffer");
    const int count = RSA_public_decrypt(static_cast<int>(signatureSize), signature, bytes.get(),
                                         key.get(), RSA_PKCS1_PADDING);
    ERR_clear_error();  // the next user of OpenSSL on this thread would take them for its own
    if (count == 0) {
        _vn_setLastError(INSTALL_ERROR_INTERNAL);
        return failDecryption("Couldn't decrypt signature.");
    }
    // What cannot be decrypted (-1) is no failure of this machine: another key signed it.
    if (count < 0) return {false};
    const OwnedText decrypted(_vn_toHex(bytes.get(), static_cast<uint32_t>(count)));
    return {decrypted && std::strcmp(hex, decrypted.get()) == 0, "", "", true};
}

}  // namespace

SignatureCheck checkSignature(const char* signatureHex, const void* data, uint32_t size) {
    if (isMissing(signatureHex) || data == nullptr || size == 0) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return fail("Invalid parameters received");
    }
    const OwnedText digest = digestHex(data, size);
    if (!digest) {
        _vn_setLastError(INSTALL_ERROR_INVALIDARGUMENT);
        return fail(kNoDigest);
    }
    auto signatureSize = static_cast<uint32_t>(std::strlen(signatureHex) / 2);
    const OwnedBytes signature = allocate(signatureSize);
    if (!signature) return fail("Couldn't allocate enough memory for hashBuffer");
    if (!_vn_fromHex(signatureHex, signature.get(), &signatureSize)) {
        return fail("Couldn't get binary signature value");
    }
    return checkDigest(digest.get(), signature.get(), signatureSize);
}

}  // namespace velnor

int32_t _vn_checkAgainstSignature(const char* signatureHex, const char* url, const void* data,
                                  uint32_t size) {
    const bool hasUrl = !velnor::isMissing(url);
    const velnor::SignatureCheck check =
        velnor::checkSignature(hasUrl ? signatureHex : nullptr, data, size);
    const uint32_t code = _vn_getLastError();
    const bool namesUrl = check.message == velnor::kNoDigest;
    if (*check.message != '\0') {
        VN_LOG_ERROR(check.function, "%s%s", check.message, namesUrl ? url : "");
    }
    _vn_setLastError(code);
    return check.verified ? 1 : 0;
}
