/*
 * Client API of the Velnor Corvane Interface: install the client, remove it, and talk about the
 * outcome.
 *
 * Plain C (C99 and later, any C++). Link with velnor_capi.
 *
 * Conventions
 *   - Functions return 0 for success and -1 for failure unless their comment says otherwise.
 *   - The reason of a failure is the calling thread's last error, one InstallResult code; read it
 *     with vn_getLastError() on the same thread, before the next call.
 *   - No function keeps a pointer that it was given after it returns.
 */
#ifndef VELNOR_CAPI_H
#define VELNOR_CAPI_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Reason of the last failure. The numbers are fixed: the client and the installer's message table
 * depend on them. Codes 15 to 21 come with a detail text (InstallContext.errorDetail). */
typedef enum InstallResult {
    INSTALL_ERROR_OK = 0,
    INSTALL_ERROR_INVALIDARGUMENT = 1,
    INSTALL_ERROR_NOTINSTALLED = 2,
    INSTALL_ERROR_INTERNAL = 3,
    INSTALL_ERROR_INSUFFICIENTMEMORY = 4,
    INSTALL_ERROR_NETWORK = 5,
    INSTALL_ERROR_INI = 6,
    INSTALL_ERROR_DISK = 7,
    INSTALL_ERROR_PLATFORM = 8,
    INSTALL_ERROR_START = 9,
    INSTALL_ERROR_STOP = 10,
    INSTALL_ERROR_JSON = 11,
    INSTALL_ERROR_FILEINUSE = 12,
    INSTALL_ERROR_FILE_NOT_FOUND = 13,
    INSTALL_ERROR_CLIENT_NOTRESPONDING = 14,
    INSTALL_ERROR_DOWNLOAD_FAILURE = 15,     /* detail: the URL */
    INSTALL_ERROR_DISK_WRITE = 16,           /* detail: the path */
    INSTALL_ERROR_INI_PATH_NOT_FOUND = 17,   /* detail: the client.ini key */
    INSTALL_ERROR_INI_PARSE_ERR = 18,        /* detail: the value that could not be parsed */
    INSTALL_ERROR_DISK_PATH_OPEN = 19,       /* detail: the path */
    INSTALL_ERROR_FILE_ACCESS = 20,          /* detail: the path */
    INSTALL_ERROR_VERIFICATION_FAILURE = 21, /* detail: the URL of the artifact */
    INSTALL_ERROR_ALREADY_DOWNLOADED = 22,
    INSTALL_ERROR_THROTTLED = 23,
    INSTALL_ERROR_DOWNLOAD_RESET = 24
} InstallResult;

/* State of one download, as the client reports it. */
typedef enum FileStatus {
    FILE_STATUS_UNKNOWN = 0,
    FILE_STATUS_SEARCHING = 1,
    FILE_STATUS_WAITING = 2,
    FILE_STATUS_DOWNLOADING = 3,
    FILE_STATUS_PAUSED = 4,
    FILE_STATUS_COMPLETE = 5,
    FILE_STATUS_INSUFFICIENTDISKSPACE = 6,
    FILE_STATUS_DISCONNECTED = 7,
    FILE_STATUS_NOTFOUND = 8,
    FILE_STATUS_MOVING = 9,
    FILE_STATUS_FORBIDDEN = 10
} FileStatus;

/* Receives the progress of an installation in percent (0 to 100); `reserved` is always 0. Called on
 * the thread that runs vn_install; handing the value to a user interface is the receiver's affair.
 */
typedef void (*InstallProgress)(uint32_t percentage, uint32_t reserved);

/* Bytes that vn_install takes InstallContext.errorDetail to hold, terminator included. */
#define VN_ERROR_DETAIL_SIZE 4096

/* What the caller of vn_install supplies. 48 bytes on a 64-bit system; clear it before filling. */
typedef struct InstallContext {
    uint32_t structSize;      /* sizeof(InstallContext); not examined in this version */
    InstallProgress progress; /* mandatory */
    char* errorDetail; /* null, or VN_ERROR_DETAIL_SIZE bytes owned by the caller; receives the
                          detail text of codes 15 to 21, cut to fit and NUL-terminated */
    void* reserved[3]; /* null */
} InstallContext;

/*
 * Installs the client for the current user, starts it, waits until it answers and registers an
 * application with it. Blocks for the whole installation: minutes on a slow network.
 *
 *   appName  the installing application's name; mandatory. It is registered, and sent as part of
 *            the user agent: one line of printable ASCII, of at most 800 characters.
 *   cid      application number for the EULA record; used only with `eula`.
 *   eula     name of the EULA that the user accepted, or null for no record.
 *   context  progress and detail, or null for neither.
 *
 * Returns 0, or -1 with one of these codes: 1 appName null, or context without progress; 3
 * internal; 4 memory; 8 the launch agent could not be written; 9 the client could not be started;
 * 14 it never answered; 6 client.ini names no log server. Other failures have the codes 15 to 18,
 * 20 and 21 with errorDetail, and without it the plain codes 5 (network, verification), 6
 * (client.ini) and 7 (disk). What earlier steps wrote stays on the disk.
 *
 * Once client.ini has named a log server, the installer's log goes there at the end, whatever the
 * result; a refusal has no effect. While that server does not answer, vn_install does not return.
 * A client that runs already needs no more than the registration, and no log is sent.
 */
int32_t vn_install(const char* appName, int32_t cid, const char* eula, InstallContext* context);

/* Flag of vn_uninstall: leaves the install directory, and with it the machine's identity
 * (guid.ini), where it is. */
#define VN_UNINSTALL_KEEP_IDENTITY 1u

/*
 * Takes one application off the client: removes its name from the registry and tells the client.
 * While other applications are registered, the client keeps running for them. After the last one
 * the client is stopped, and its launch agent, the install directory and the preference pane are
 * deleted; what cannot be stopped or deleted stays, and is no failure. A name that is not
 * registered counts as one that has left already: when nobody else is registered, the client goes.
 *
 *   appName  the name that was given to vn_install; mandatory.
 *   flags    0, or any other value for VN_UNINSTALL_KEEP_IDENTITY. With it, what is in a folder
 *            "installer.txt" of the current directory is deleted; do not call it where there is
 *            one.
 *
 * Blocks until the client has acknowledged. It is asked once a second, at most as many times as
 * client.ini says under "UninstallTimeOutSec=" (10 when it does not), and given up after 30 seconds
 * of silence. A client that does not answer a ping is not told anything.
 *
 * Returns 0, or -1 with code 1 (appName null), 3 (internal), 7 (the registry could not be rewritten
 * and is as it was; the client keeps running) or 10 (the client could not be stopped).
 */
int32_t vn_uninstall(const char* appName, uint32_t flags);

/*
 * Appends "<cid>_<eulaText>" CR LF to accepteula.txt in the install directory.
 *
 *   cid       0 or more.
 *   eulaText  not empty, no line feed, no carriage return; the record (number, text, line end) has
 *             at most 1024 characters.
 *   reserved  0.
 *
 * Returns 0, or -1 with code 1 (argument), 3 (record too long), 4 (memory) or 7 (disk).
 */
int32_t vn_acceptEULA(int32_t cid, const char* eulaText, uint32_t reserved);

/* English text of an InstallResult code; "Unknown Error" for any other number. The texts of codes
 * 15 to 21 hold one "%s" that stands for the detail. Static storage, never null. Sets no code. */
const char* vn_errorToString(uint32_t code);

/* English text of a FileStatus; "Unknown State" for any other number. Static storage, never null.
 * Sets no code. */
const char* vn_fileStatusToString(int32_t status);

/* The calling thread's last error; 0 when no call on this thread has set one. */
uint32_t vn_getLastError(void);

#ifdef __cplusplus
}
#endif

#endif
