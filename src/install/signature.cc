// Signature verification with OpenSSL's libcrypto.
#include "install/signature.h"

// The low-level RSA and SHA-1 functions are deprecated and still the right ones: the signature is a
// bare private-key encryption of the digest, which the newer interface does not offer with type 1
// padding and no DigestInfo in one step on every version.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/err.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>
#include <openssl/x509.h>

#include <array>
#include <cstring>
#include <memory>

#include "api/last_error.h"
#include "support/encodings.h"
#include "support/log_file.h"
#include "support/memory.h"
#include "support/owned.h"
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

SignatureCheck failWith(InstallResult code, SignatureCheck check) {
    _vn_setLastError(code);
    return check;
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

SignatureCheck decodeKey(OwnedBytes* der) {
    *der = allocate(kKeySize);
    if (!*der) return SignatureCheck::NoKeyMemory;
    uint32_t size = kKeySize;
    return _vn_fromHex(deployment::kPublicKeyHex, der->get(), &size) ? SignatureCheck::Verified
                                                                     : SignatureCheck::NoKeyValue;
}

// Decrypts the signature with the built-in key and stores the result as hex text; an undecryptable
// signature is a Mismatch.
SignatureCheck _vn_mac_cryptPublicKeyDecrypt(const uint8_t* signature, uint32_t signatureSize,
                                             OwnedText* decryptedHex) {
    OwnedBytes der;
    const SignatureCheck decoded = decodeKey(&der);
    if (decoded != SignatureCheck::Verified) return decoded;
    const uint8_t* derEnd = der.get();
    const Key key(d2i_RSA_PUBKEY(nullptr, &derEnd, kKeySize));
    if (!key) return failWith(INSTALL_ERROR_INVALIDARGUMENT, SignatureCheck::NoKey);
    const OwnedBytes decrypted = allocate(static_cast<uint32_t>(RSA_size(key.get())));
    if (!decrypted) return SignatureCheck::NoOutputMemory;
    const int count = RSA_public_decrypt(static_cast<int>(signatureSize), signature,
                                         decrypted.get(), key.get(), RSA_PKCS1_PADDING);
    ERR_clear_error();  // the next user of OpenSSL on this thread would take them for its own
    if (count == 0) return failWith(INSTALL_ERROR_INTERNAL, SignatureCheck::EmptySignature);
    // Only an empty result is reported by a line of its own, deliberately; a signature that cannot
    // be decrypted is one that does not match.
    if (count < 0) return SignatureCheck::Mismatch;
    *decryptedHex->out() = _vn_toHex(decrypted.get(), static_cast<uint32_t>(count));
    return SignatureCheck::Verified;
}

struct FailureText {
    SignatureCheck check;
    const char* function;
    const char* text;
};

constexpr char kCheckFunction[] = "_vn_checkAgainstSignature";
constexpr char kDecryptFunction[] = "_vn_mac_cryptPublicKeyDecrypt";

constexpr std::array<FailureText, 8> kFailureTexts{{
    {SignatureCheck::InvalidParameters, kCheckFunction, "Invalid parameters received"},
    {SignatureCheck::NoSignatureMemory, kCheckFunction,
     "Couldn't allocate enough memory for hashBuffer"},
    {SignatureCheck::NoSignatureValue, kCheckFunction, "Couldn't get binary signature value"},
    {SignatureCheck::NoKeyMemory, kDecryptFunction,
     "Couldn't allocate enough memory for keyBuffer"},
    {SignatureCheck::NoKeyValue, kDecryptFunction, "Couldn't get binary public key value"},
    {SignatureCheck::NoKey, kDecryptFunction, "Couldn't load public key"},
    {SignatureCheck::NoOutputMemory, kDecryptFunction,
     "Unable to allocate memory for the decrypted buffer"},
    {SignatureCheck::EmptySignature, kDecryptFunction, "Couldn't decrypt signature."},
}};

void logFailure(SignatureCheck check, const char* url) {
    if (check == SignatureCheck::NoDigest) {
        VN_LOG_ERROR(kCheckFunction, "Unable to calculate hash of binary. URL: %s", url);
    }
    for (const FailureText& failure : kFailureTexts) {
        if (failure.check == check) VN_LOG_ERROR(failure.function, "%s", failure.text);
    }
}

}  // namespace

SignatureCheck checkSignature(const char* signatureHex, const void* data, uint32_t size) {
    if (signatureHex == nullptr || *signatureHex == '\0' || data == nullptr || size == 0) {
        return failWith(INSTALL_ERROR_INVALIDARGUMENT, SignatureCheck::InvalidParameters);
    }
    const OwnedText digest = digestHex(data, size);
    if (!digest) return failWith(INSTALL_ERROR_INVALIDARGUMENT, SignatureCheck::NoDigest);

    auto signatureSize = static_cast<uint32_t>(std::strlen(signatureHex) / 2);
    const OwnedBytes signature = allocate(signatureSize);
    if (!signature) return SignatureCheck::NoSignatureMemory;
    if (!_vn_fromHex(signatureHex, signature.get(), &signatureSize)) {
        return SignatureCheck::NoSignatureValue;
    }
    OwnedText decrypted;
    const SignatureCheck check =
        _vn_mac_cryptPublicKeyDecrypt(signature.get(), signatureSize, &decrypted);
    if (check != SignatureCheck::Verified) return check;
    const bool equal = decrypted && std::strcmp(digest.get(), decrypted.get()) == 0;
    return equal ? SignatureCheck::Verified : SignatureCheck::Mismatch;
}

}  // namespace velnor

int32_t _vn_checkAgainstSignature(const char* signatureHex, const char* url, const void* data,
                                  uint32_t size) {
    using velnor::SignatureCheck;
    const bool hasUrl = url != nullptr && *url != '\0';
    const SignatureCheck check =
        velnor::checkSignature(hasUrl ? signatureHex : nullptr, data, size);
    const uint32_t code = _vn_getLastError();
    velnor::logFailure(check, hasUrl ? url : "");
    _vn_setLastError(code);
    return check == SignatureCheck::Verified ? 1 : 0;
}
