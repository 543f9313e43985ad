// The client's keywords for the state of a download.
#ifndef VELNOR_API_FILE_STATUS_H
#define VELNOR_API_FILE_STATUS_H

#include <cstdint>

/// Maps the "status" string of a client's reply, in any letter case, to a FileStatus. Stores it in
/// `*status` and returns true; an unknown keyword returns false and leaves `*status` as it was.
bool _vn_fileStatusFromKeyword(const char* keyword, int32_t* status);

#endif
