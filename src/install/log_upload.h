// Sending the installer's log to the maker.
#ifndef VELNOR_INSTALL_LOG_UPLOAD_H
#define VELNOR_INSTALL_LOG_UPLOAD_H

/// Stores the log as "<guid>.log" under `uploadUrl`, "http://" with a path, by one PUT; only status
/// 200 counts as success. What goes wrong is logged and has no other effect; codes 1 and 4 may be
/// left. The upload URL and the object's name together count up to 255 characters.
///
/// Goes through the system's proxies and then directly. While the server does not answer it tries
/// again, without end.
void _vn_uploadLogs(const char* uploadUrl, const char* guid);

#endif
