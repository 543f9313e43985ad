// Verifying an artifact against the maker's RSA key that is built into the installer.
#ifndef VELNOR_INSTALL_SIGNATURE_H
#define VELNOR_INSTALL_SIGNATURE_H

#include <cstdint>

namespace velnor {

enum class SignatureCheck {
    Verified,
    Mismatch,  // of another key, over other data, over a DigestInfo, or no signature at all
    InvalidParameters,
    NoDigest,
    NoSignatureMemory,
    NoSignatureValue,
    NoKeyMemory,
    NoKeyValue,
    NoKey,
    NoOutputMemory,
    EmptySignature,  // the signature is over no bytes
};

/// Compares the SHA-1 digest of `size` bytes at `data` with what `signatureHex` decrypts to: hex
/// text of the RSA PKCS #1 v1.5 type 1 padded (RFC 8017, section 8.2), raw 20-byte digest, without
/// the DigestInfo wrapper. Leaves code 1, 3 or 4 for some of the failures; writes nothing anywhere.
SignatureCheck checkSignature(const char* signatureHex, const void* data, uint32_t size);

}  // namespace velnor

/// checkSignature for the artifact that came from `url`: 1 when it is verified, else 0, with a log
/// line for every failure but a mismatch.
int32_t _vn_checkAgainstSignature(const char* signatureHex, const char* url, const void* data,
                                  uint32_t size);

#endif
