// How client.ini is asked for, and what it says about one artifact or setting.
#ifndef VELNOR_INSTALL_CLIENT_INI_H
#define VELNOR_INSTALL_CLIENT_INI_H

#include "support/owned.h"
#include "support/text_extraction.h"

namespace velnor {

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

/// The request for client.ini: its URL for the machine with this GUID, and the User-Agent of all
/// requests of an installation by `appName`. Null with code 4 when there is no memory.
OwnedText configurationUrl(const char* guid);
OwnedText installerUserAgent(const char* appName);

/// Stores the value of `key` in client.ini, or null, in `*value`.
Found iniValue(const char* iniText, const char* key, OwnedText* value);

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
