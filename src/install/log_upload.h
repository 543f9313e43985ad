// Sending the installer's log to the maker.
#ifndef VELNOR_INSTALL_LOG_UPLOAD_H
#define VELNOR_INSTALL_LOG_UPLOAD_H

/// Stores the log as "<guid>.log" under `uploadUrl`, "http://" with a path, by one PUT; only status
/// 200 counts as success. What goes wrong is logged and has no other effect; codes 1, 4 and 7 may
/// be left. The upload URL and the object's name together count up to 255 characters.
///
/// Goes through the system's proxies, and then directly when the answer is another status. A proxy
/// that wants a password which the keychain does not have ends it, and so does an answer that will
/// not get better: one that is no HTTP or breaks off, and redirects in a circle or to where they
/// may not lead. As long as no answer begins, within about 15 seconds of the connection, it goes on
/// directly, without end and with pauses that double up to 30 seconds: while nobody is there, the
/// server hangs up, or takes too long for it.
void _vn_uploadLogs(const char* uploadUrl, const char* guid);

#endif
