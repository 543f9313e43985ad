// What client.ini says about one artifact or setting.
#ifndef VELNOR_INSTALL_CLIENT_INI_H
#define VELNOR_INSTALL_CLIENT_INI_H

#include "support/owned.h"

// Keys of client.ini, with the separator that belongs to the search.
inline constexpr char kLogUploadUrlKey[] = "LogfileUploadURL=";
inline constexpr char kRewriteKey[] = "EnableQ731=";
inline constexpr char kClientUrlKey[] = "MacOSClientURL=";
inline constexpr char kClientSignatureKey[] = "MacOSClientSig=";
inline constexpr char kUiToolUrlKey[] = "MacOSUIToolURL=";
inline constexpr char kUiToolSignatureKey[] = "MacOSUIToolSig=";
inline constexpr char kUninstallerUrlKey[] = "MacOSUninstallerURL=";
inline constexpr char kUninstallerSignatureKey[] = "MacOSUninstallerSig=";
inline constexpr char kUninstallTimeoutKey[] = "UninstallTimeOutSec=";

namespace velnor {

/// The value of `key` in client.ini, or empty. An empty one leaves the last error at 4 when it is
/// for want of memory, and at 3 when the key is not there.
OwnedText iniValue(const char* iniText, const char* key);

/// True when the last error is 4, which tells an empty iniValue from a missing one.
bool isOutOfMemory();

/// True when the content-host rewrite is switched on: by "true" exactly.
bool isRewriteOn(const char* iniText);

/// The file name at the end of an artifact's URL, after its last "/" or "=", within `url`. Null
/// when no file can have it: it is empty, "." or "..".
const char* fileNameOf(const char* url);

/// `url` on the content host: behind "://" comes the host's name and "/", then the old rest. A URL
/// without "://" is copied as it is. Null with code 4 when there is no memory.
OwnedText rewriteToContentHost(const char* url);

}  // namespace velnor

#endif
