// One artifact: downloaded, verified, saved, unpacked. Nothing unverified is ever written.
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

#endif
