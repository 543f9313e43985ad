// The machine's identity: the GUID in guid.ini.
#ifndef VELNOR_INSTALL_IDENTITY_H
#define VELNOR_INSTALL_IDENTITY_H

namespace velnor {

/// Digits of a GUID.
inline constexpr unsigned kGuidLength = 32;

}  // namespace velnor

/// The GUID from guid.ini, or a new one that is appended to it: 32 lower-case hexadecimal digits
/// (an existing one is taken as it is), owned by the caller; 32 zeros, not saved, without
/// /dev/urandom. Null with code 4 when there is no memory. What happened is logged.
char* _vn_generateGuid();

#endif
