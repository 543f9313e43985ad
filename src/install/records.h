// What an installation keeps on record in the install directory: the machine's identity in
// guid.ini, and the applications that use the client in appregistry.dat, one name a line.
#ifndef VELNOR_INSTALL_RECORDS_H
#define VELNOR_INSTALL_RECORDS_H

#include "velnor/capi.h"

/// The GUID from guid.ini, or a new one that is appended to it: 32 lower-case hexadecimal digits
/// (an existing one is taken as it is), owned by the caller; 32 zeros, not saved, without
/// /dev/urandom. Null with code 4 when there is no memory. What happened is logged.
char* _vn_generateGuid();

namespace velnor {

enum class Registration { Failed, AlreadyRegistered, Registered };

/// Adds `appName` to the registry in `installPath` unless a line equals it: as a whole, byte by
/// byte, and never one of more than 1023 bytes. A name whose line is torn off at the end of the
/// file still counts, and the new one begins a line of its own. A failure is logged and leaves code
/// 16 or 20 with the path as detail, or 7 without a buffer; the registry is then as it was.
Registration registerApplication(const char* installPath, const char* appName,
                                 InstallContext* context);

/// Takes every line that equals `appName` out of the registry in `installPath`. Returns how many
/// lines are left, 0 also without a registry; -1 when it could not be rewritten, and then it is as
/// it was. Killed at any moment, it is as it was or as it was to be (on a file system without
/// links, from the next call of either function on). Leaves codes of its helpers only.
int32_t unregisterApplication(const char* installPath, const char* appName);

}  // namespace velnor

#endif
