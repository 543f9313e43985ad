// Failures with a detail: the code that carries it, and the caller's buffer that receives it.
#ifndef VELNOR_INSTALL_DETAIL_H
#define VELNOR_INSTALL_DETAIL_H

#include "velnor/capi.h"

namespace velnor {

/// Sets the last error to `code` (15 to 21) and copies `detail` into the context's buffer, cut to
/// VN_ERROR_DETAIL_SIZE bytes. Without a context or a buffer it sets the plain code instead: 5 for
/// downloads and verification, 6 for client.ini, 7 for the disk.
void setDetailError(InstallContext* context, InstallResult code, const char* detail);

}  // namespace velnor

#endif
