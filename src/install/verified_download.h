// One artifact: downloaded, verified against the maker's RSA key that is built into the installer,
// saved, unpacked. Nothing unverified is ever written.
#ifndef VELNOR_INSTALL_VERIFIED_DOWNLOAD_H
#define VELNOR_INSTALL_VERIFIED_DOWNLOAD_H

#include <cstdint>

#include "velnor/capi.h"

/// Fetches the artifact that `urlKey` names in `iniText`, verifies it against the signature under
/// `sigKey`, saves it as `fileName` in the install directory and unpacks it there when it is one of
/// the two archives. Keys include their "=". `rewrite` sends the request to the content host.
/// `context` may be null; `progressFrom` and `progressTo` (percent) go on to the downloader.
///
/// Returns the last error: 0 on success, also when the optional uninstaller is not named; 1 for a
/// null argument; 15, 16, 17 or 21 with the URL, path or key as detail, or 5, 6, 7 without a
/// buffer; 4 without memory (for the verification itself it counts as a failed one). What
/// happened is logged.
int32_t _vn_downloadAndWrite(const char* iniText, const char* userAgent, InstallContext* context,
                             bool rewrite, const char* urlKey, const char* fileName,
                             const char* sigKey, uint32_t progressFrom, uint32_t progressTo);

namespace velnor {

/// Whether an artifact is the maker's, and the log line for the reason why that is not known: the
/// function that failed and its message, empty for a signature of another key or over other data.
struct SignatureCheck {
    bool verified;
    const char* function = "";
    const char* message = "";
    bool isOfOurKey = verified;  // over these data or others
};

/// Compares the SHA-1 digest of `size` bytes at `data` with what `signatureHex` decrypts to: hex
/// text of the RSA PKCS #1 v1.5 type 1 padded (RFC 8017, section 8.2), raw 20-byte digest, without
/// the DigestInfo wrapper. Leaves code 1, 3 or 4 for some of the failures; writes nothing anywhere.
SignatureCheck checkSignature(const char* signatureHex, const void* data, uint32_t size);

}  // namespace velnor

/// checkSignature for the artifact that came from `url`: 1 when it is verified, else 0. A message
/// is logged.
int32_t _vn_checkAgainstSignature(const char* signatureHex, const char* url, const void* data,
                                  uint32_t size);

#endif
