/**
 * @file
 * Client API of the Velnor Corvane Interface: install the client, let it download, remove it.
 *
 * Plain C (C99 and later, any C++). Link with velnor-capi: `pkg-config --cflags --libs
 * velnor-capi`, or with CMake `find_package(VelnorCapi)` and the target `VelnorCapi::velnor-capi`.
 *
 * The client is a program of its own that runs in the background for one user and does the
 * downloading. This library talks to it on 127.0.0.1, TCP port 9421. A download belongs to the
 * client: it goes on when the application that asked for it has ended.
 *
 * @code
 * ApiHandle* client = NULL;
 * if (vn_initialize("MyApp/1.0", &client) == 0) {
 *     DownloadOptions options = {0};
 *     options.path = "/Users/me/Movies/trailer.mov";
 *     if (vn_downloadFile(client, 42, "https://example.com/trailer.mov", &options) != 0)
 *         fprintf(stderr, "%s\n", vn_errorToString(vn_getLastError()));
 *     vn_uninitialize(client, 0);
 * }
 * @endcode
 *
 * Conventions:
 *   - Functions return 0 for success and -1 for failure unless their comment says otherwise.
 *   - The reason of a failure is the calling thread's last error, one InstallResult code; read it
 *     with vn_getLastError() on the same thread, before the next call.
 *   - Texts are NUL-terminated byte strings, UTF-8 where they are not ASCII. Percent-encoding is
 *     the library's affair.
 *   - No function keeps a pointer that it was given after it returns.
 *   - `cid` is the calling application's number, 0 or more. Arguments and members named `reserved`
 *     are 0 or null.
 *
 * Functions that take an ApiHandle:
 *   - A handle is for one thread at a time; other threads may have handles of their own.
 *   - A call blocks until the client has replied; after 30 seconds of silence it fails with 5.
 *   - A bad argument leaves code 1, and nothing is sent. Every call may also leave 2 (the client
 *     cannot be connected to), 3 (a request that is too long, see vn_initialize(), or a reply that
 *     makes no sense), 4 (no memory, or a reply with an empty body or one over 10 MiB) and 5 (the
 *     connection broke, or the client was silent; the connection is given up). Comments below name
 *     further codes only.
 *   - When the client has closed the connection since the last call (it was restarted, for
 *     example), one call fails with 5 or 3 and the next one connects anew. Nothing is repeated
 *     unasked, because the client may have carried it out.
 */
#ifndef VELNOR_CAPI_H
#define VELNOR_CAPI_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Reason of the last failure. The numbers are fixed: the client and the installer's message table
 *  depend on them. Codes 15 to 21 come with a detail text (InstallContext::errorDetail). */
typedef enum InstallResult {
    INSTALL_ERROR_OK = 0,                    /**< success */
    INSTALL_ERROR_INVALIDARGUMENT = 1,       /**< a bad argument, also in the client's eyes */
    INSTALL_ERROR_NOTINSTALLED = 2,          /**< no client answers */
    INSTALL_ERROR_INTERNAL = 3,              /**< anything that has no code of its own */
    INSTALL_ERROR_INSUFFICIENTMEMORY = 4,    /**< no memory; a reply too large or empty */
    INSTALL_ERROR_NETWORK = 5,               /**< a connection failed, broke, or was silent */
    INSTALL_ERROR_INI = 6,                   /**< client.ini lacks something */
    INSTALL_ERROR_DISK = 7,                  /**< a file could not be read or written */
    INSTALL_ERROR_PLATFORM = 8,              /**< the launch agent could not be written */
    INSTALL_ERROR_START = 9,                 /**< the client could not be started */
    INSTALL_ERROR_STOP = 10,                 /**< the client could not be stopped */
    INSTALL_ERROR_JSON = 11,                 /**< not used in this version */
    INSTALL_ERROR_FILEINUSE = 12,            /**< the client says that the file is in use */
    INSTALL_ERROR_FILE_NOT_FOUND = 13,       /**< the client does not know the download */
    INSTALL_ERROR_CLIENT_NOTRESPONDING = 14, /**< the client was installed and never answered */
    INSTALL_ERROR_DOWNLOAD_FAILURE = 15,     /**< detail: the URL */
    INSTALL_ERROR_DISK_WRITE = 16,           /**< detail: the path */
    INSTALL_ERROR_INI_PATH_NOT_FOUND = 17,   /**< detail: the client.ini key */
    INSTALL_ERROR_INI_PARSE_ERR = 18,        /**< detail: the value that could not be parsed */
    INSTALL_ERROR_DISK_PATH_OPEN = 19,       /**< detail: the path */
    INSTALL_ERROR_FILE_ACCESS = 20,          /**< detail: the path */
    INSTALL_ERROR_VERIFICATION_FAILURE = 21, /**< detail: the URL of the artifact */
    INSTALL_ERROR_ALREADY_DOWNLOADED = 22,   /**< the client says that the download is complete */
    INSTALL_ERROR_THROTTLED = 23,            /**< periodic tasks ran a short while ago */
    INSTALL_ERROR_DOWNLOAD_RESET = 24        /**< the client wants to begin the download anew */
} InstallResult;

/** State of one download, as the client reports it. A download that is COMPLETE, PAUSED, NOTFOUND,
 *  FORBIDDEN or INSUFFICIENTDISKSPACE stays so until somebody does something about it; all other
 *  states pass. */
typedef enum FileStatus {
    FILE_STATUS_UNKNOWN = 0,     /**< one that this version of the library has no name for */
    FILE_STATUS_SEARCHING = 1,   /**< looking for the file; the first state of most */
    FILE_STATUS_WAITING = 2,     /**< on the list, not begun */
    FILE_STATUS_DOWNLOADING = 3, /**< on its way */
    FILE_STATUS_PAUSED = 4,      /**< stopped; vn_downloadFile() takes it up again */
    FILE_STATUS_COMPLETE = 5,    /**< at its path */
    FILE_STATUS_INSUFFICIENTDISKSPACE = 6, /**< no room for it */
    FILE_STATUS_DISCONNECTED = 7,          /**< nobody to get it from; the client tries again */
    FILE_STATUS_NOTFOUND = 8,              /**< the server does not have it */
    FILE_STATUS_MOVING = 9,                /**< complete, on its way to its path */
    FILE_STATUS_FORBIDDEN = 10             /**< the server does not give it */
} FileStatus;

/** @name The last error
 *  @{ */

/** The calling thread's last error.
 *  @return an InstallResult; 0 when no call on this thread has set one. */
uint32_t vn_getLastError(void);

/** English text of a result code. The texts of codes 15 to 21 hold one "%s" that stands for the
 *  detail. Sets no code.
 *  @param code  an InstallResult.
 *  @return a text in static storage, never null; "Unknown Error" for any other number. */
const char* vn_errorToString(uint32_t code);

/** English text of a download's state. Sets no code.
 *  @param status  a FileStatus.
 *  @return a text in static storage, never null; "Unknown State" for any other number. */
const char* vn_fileStatusToString(int32_t status);

/** @} */

/** @name Talking to the client
 *  @{ */

/** An application's connection to the client: its user agent, and one socket that is kept open. */
typedef struct ApiHandle ApiHandle;

/** Opens a handle on the client that runs.
 *
 *  Seeds rand(3) with the time. A connection is not opened before the first request.
 *
 *  @param userAgent  names the application to the client ("MyApp/1.0"); one line, copied. It goes
 *                    with every request, and shares 950 bytes with the request's path. 54 of these
 *                    is the least that a path takes, and 58 with a cid of one digit is what an
 *                    order to download takes besides the URL and the options, which go there
 *                    percent-encoded. The ping that is made here has a path of 17, so that a user
 *                    agent of 897 to 933 bytes passes it, and every request after it fails with 3.
 *  @param handle     receives the handle, the caller's until vn_uninitialize(); untouched on
 *                    failure.
 *  @return 0, or -1 with code 1 (a null argument), 2 (no client answered, or it was silent for 30
 *          seconds, or the user agent cannot be sent) or 4. */
int32_t vn_initialize(const char* userAgent, ApiHandle** handle);

/** Closes a handle. Downloads go on. Leaves the last error alone on success.
 *  @param handle    from vn_initialize(); gone after a success, still the caller's after a failure.
 *  @param reserved  0.
 *  @return 0, or -1 with code 1. */
int32_t vn_uninitialize(ApiHandle* handle, uint32_t reserved);

/** What the client says about itself. 64 bytes on a 64-bit system. Clear it before the first use
 *  (`ClientAttributes client = {0}`): vn_getAttributes() releases what it finds in it. */
typedef struct ClientAttributes {
    uint64_t reserved;          /**< neither read nor written */
    int32_t isonline;           /**< 1 or 0 */
    int64_t sharerate;          /**< in the client's unit (the rehearsal's: bytes a second) */
    int64_t downloadrate;       /**< the same */
    int32_t version;            /**< as a number */
    int32_t acceptedeula;       /**< 1 or 0 */
    char* executableversion;    /**< null when the client does not say */
    char* configurationversion; /**< null when the client does not say */
    char* guid; /**< the machine's, 32 characters of guid.ini; null without that file */
} ClientAttributes;

/** Asks the client about itself. What the client does not say becomes 0 or null.
 *  @param handle      from vn_initialize().
 *  @param cid         the application's number.
 *  @param attributes  filled; its texts are released by vn_cleanAttributes() or the next call.
 *  @param reserved    0.
 *  @return 0, or -1. */
int32_t vn_getAttributes(ApiHandle* handle, int32_t cid, ClientAttributes* attributes,
                         uint32_t reserved);

/** Releases the texts of a record and sets them to null; the other members stay. Leaves the last
 *  error alone on success.
 *  @param handle      from vn_initialize(), any.
 *  @param attributes  a record that was cleared or filled.
 *  @param reserved    0.
 *  @return 0, or -1 with code 1. */
int32_t vn_cleanAttributes(ApiHandle* handle, ClientAttributes* attributes, uint32_t reserved);

/** Lets the client do its periodic tasks now.
 *  @param handle    from vn_initialize().
 *  @param cid       the application's number.
 *  @param reserved  0.
 *  @return 0, or -1 with code 23 when it did them a short while ago. */
int32_t vn_runPeriodicTasks(ApiHandle* handle, int32_t cid, uint32_t reserved);

/** @} */

/** @name Downloads
 *  A download is known by its URL.
 *  @{ */

#define VN_DOWNLOAD_TARGET_SPEED 1u       /**< DownloadOptions::targetSpeed is set */
#define VN_DOWNLOAD_BACKGROUND 2u         /**< give way to other downloads */
#define VN_DOWNLOAD_WAIT 4u               /**< put it on the list, do not begin yet */
#define VN_DOWNLOAD_HTTP_DELAY 8u         /**< DownloadOptions::httpDelay is set */
#define VN_DOWNLOAD_ORIGIN_ONLY 16u       /**< from the URL's own server only */
#define VN_DOWNLOAD_CHECK_CONTENT_MD5 64u /**< compute and compare the content's MD5 */

/** How to download. 80 bytes on a 64-bit system. Clear it before filling; every member is optional.
 *  What the client makes of a value is the client's affair. */
typedef struct DownloadOptions {
    uint32_t reserved0;            /**< not read */
    uint32_t flags;                /**< VN_DOWNLOAD_... or-ed together */
    int32_t targetSpeed;           /**< in the client's unit (the rehearsal's: bytes a second); with
                                        VN_DOWNLOAD_TARGET_SPEED */
    const char* path;              /**< where the file is to be, an absolute path; null: the
                                        client chooses. A challenge is written there, see
                                        vn_downloadFile() */
    uint32_t reserved1;            /**< not read */
    const char* cookieString;      /**< value of a Cookie header */
    const char* queryAuth;         /**< appended to the URL's query for the transfer only */
    const char* basicAuthUser;     /**< with basicAuthPassword; alone it has no effect */
    const char* basicAuthPassword; /**< user, ":" and password have at most 189 bytes */
    int32_t httpDelay;             /**< in the client's unit (the rehearsal's: seconds); with
                                        VN_DOWNLOAD_HTTP_DELAY */
    uint32_t reserved2;            /**< not read */
    int32_t keepPhysicalFileOnDelete; /**< for vn_deleteFile(): not 0 leaves the file on the disk */
} DownloadOptions;

/** Starts a download, or takes one up again. Returns when the client has accepted it; follow it
 *  with vn_getFileAttributes().
 *
 *  The client may first answer with a challenge: a text that the library writes into the file at
 *  DownloadOptions::path, truncating it. Then the request is repeated once. Without a path no
 *  challenge is answered. When the client says that the download was reset, the request is made
 *  once more with the order to begin anew, and what the client answers then counts.
 *
 *  What becomes of a download that the client has already (taken up again, left alone, given other
 *  options), is the client's affair.
 *
 *  @param handle   from vn_initialize().
 *  @param cid      the application's number.
 *  @param url      what to download. With every option percent-encoded it has to fit into a request
 *                  beside the user agent, see vn_initialize(): some 870 bytes for both and the
 *                  options. Without options the URL has to stay 14 below that: so much longer is
 *                  the question about its state, which follows each order, and when it does not
 *                  fit, the call fails with 3 although the client has the order. (A deletion has a
 *                  request that is 29 bytes longer.)
 *  @param options  null for none.
 *  @return 0, or -1 with code 1 (also: the client does not take the URL, or reported an error; user
 *          and password too long), 13 (the client has no such download, also after the request: it
 *          was not accepted) or 22 (it is complete). */
int32_t vn_downloadFile(ApiHandle* handle, int32_t cid, const char* url,
                        const DownloadOptions* options);

/** State of one download, in the client's words and figures. 104 bytes on a 64-bit system. Clear it
 *  before the first use (`FileAttributes file = {0}`), because vn_getFileAttributes() releases what
 *  it finds in it. */
typedef struct FileAttributes {
    uint64_t reserved;    /**< cleared */
    int32_t cid;          /**< as given */
    char* url;            /**< a copy of the URL as given */
    int32_t status;       /**< a FileStatus */
    char* path;           /**< where the file is or will be; null when the client does not say */
    int64_t size;         /**< bytes of the whole file; 0 while it is not known */
    int64_t uniquerecv;   /**< bytes received, each counted once */
    int64_t progress;     /**< percent, 0 to 100 */
    int64_t downloadrate; /**< bytes a second */
    char* errorstring;    /**< what went wrong, for a person; null when nothing did */
    int64_t error;        /**< the client's error number, or 0 */
    int64_t suberror;     /**< more about it */
    char* verifiedcontentmd5; /**< the content's MD5 once it was checked, else null */
} FileAttributes;

/** Asks for the state of a download.
 *
 *  @code
 *  FileAttributes file = {0};
 *  while (vn_getFileAttributes(client, 42, url, &file, 0) == 0 &&
 *         file.status != FILE_STATUS_COMPLETE && file.status != FILE_STATUS_PAUSED &&
 *         file.status != FILE_STATUS_NOTFOUND && file.status != FILE_STATUS_FORBIDDEN &&
 *         file.status != FILE_STATUS_INSUFFICIENTDISKSPACE) {
 *      printf("%lld of %lld bytes\n", (long long)file.uniquerecv, (long long)file.size);
 *      sleep(1);
 *  }
 *  vn_cleanFileAttributes(client, &file, 0);
 *  @endcode
 *
 *  @param handle      from vn_initialize().
 *  @param cid         the application's number.
 *  @param url         as given to vn_downloadFile().
 *  @param attributes  filled; its texts are released by vn_cleanFileAttributes() or the next call.
 *                     Empty after a failure other than a bad argument.
 *  @param reserved    0.
 *  @return 0, or -1 with code 1 (also: the client does not take the URL), 13 (the client does not
 *          know this download) or 24 (the download was reset: ask for it again). */
int32_t vn_getFileAttributes(ApiHandle* handle, int32_t cid, const char* url,
                             FileAttributes* attributes, uint32_t reserved);

/** Releases the texts of a record and clears all of it. Leaves the last error alone on success.
 *  @param handle      from vn_initialize(), any.
 *  @param attributes  a record that was cleared or filled.
 *  @param reserved    0.
 *  @return 0, or -1 with code 1. */
int32_t vn_cleanFileAttributes(ApiHandle* handle, FileAttributes* attributes, uint32_t reserved);

/** Pauses a download; vn_downloadFile() takes it up again.
 *  @param handle    from vn_initialize().
 *  @param cid       the application's number.
 *  @param url       as given to vn_downloadFile().
 *  @param reserved  0.
 *  @return 0, or -1 with code 1 (also: the client does not take the URL, or reported an error), 13
 *          or 22 (it is complete). A client that does not know the download says so in words that
 *          have no code here, so that is 3. */
int32_t vn_pauseFile(ApiHandle* handle, int32_t cid, const char* url, uint32_t reserved);

/** Ends a download and takes it off the client's list, and its file off the disk unless the options
 *  say otherwise. While the file is in use the client is asked again, five times in all, a second
 *  apart. A challenge is answered as in vn_downloadFile(), with the path that the client gives for
 *  the download.
 *
 *  @param handle   from vn_initialize().
 *  @param cid      the application's number.
 *  @param url      as given to vn_downloadFile().
 *  @param options  null, or a record of which keepPhysicalFileOnDelete is read.
 *  @return 0, or -1 with code 1 (also: the client does not take the URL), 12 (the file is still in
 *          use) or 13 (the client does not know this download). */
int32_t vn_deleteFile(ApiHandle* handle, int32_t cid, const char* url,
                      const DownloadOptions* options);

/** @} */

/** @name Installing the client
 *  @{ */

/** Receives the progress of an installation. Called on the thread that runs vn_install(); handing
 *  the value to a user interface is the receiver's affair.
 *  @param percentage  0 to 100.
 *  @param reserved    always 0. */
typedef void (*InstallProgress)(uint32_t percentage, uint32_t reserved);

/** Bytes that vn_install() takes InstallContext::errorDetail to hold, terminator included. */
#define VN_ERROR_DETAIL_SIZE 4096

/** What the caller of vn_install() supplies. 48 bytes on a 64-bit system; clear it before filling.
 */
typedef struct InstallContext {
    uint32_t structSize;      /**< sizeof(InstallContext); not examined in this version */
    InstallProgress progress; /**< mandatory */
    char* errorDetail; /**< null, or VN_ERROR_DETAIL_SIZE bytes owned by the caller; receives the
                            detail text of codes 15 to 21, cut to fit and NUL-terminated */
    void* reserved[3]; /**< null */
} InstallContext;

/** Installs the client for the current user, starts it, waits until it answers and registers an
 *  application with it. Blocks for the whole installation: minutes on a slow network.
 *
 *  Once client.ini has named a log server, the installer's log goes there at the end, whatever the
 *  result; a refusal has no effect. While that server does not answer, vn_install() does not
 *  return. A client that runs already needs no more than the registration, and no log is sent.
 *
 *  While an archive is unpacked, the current directory of the whole process is the install
 *  directory, and commands are run through system(3): until this returns, no other thread should
 *  use relative paths, change the current directory or the environment, or wait for children that
 *  are not its own. While a command runs, the process ignores SIGINT and SIGQUIT. SIGCHLD should
 *  not be ignored: what became of a command could not be told then, and counts as a success.
 *
 *  @param appName  the installing application's name; mandatory. It is registered, and sent as part
 *                  of the user agent: one line of printable ASCII, of at most 800 characters.
 *  @param cid      application number for the EULA record; used only with `eula`.
 *  @param eula     name of the EULA that the user accepted, or null for no record.
 *  @param context  progress and detail, or null for neither.
 *  @return 0, or -1 with one of these codes: 1 appName null, or context without progress; 3
 *          internal; 4 memory, or no process for a command; 8 the launch agent could not be
 *          written; 9 the client could not be started; 14 it never answered; 6 client.ini names no
 *          log server. Other failures have the codes 15 to 18, 20 and 21 with errorDetail, and
 *          without it the plain codes 5 (network, verification), 6 (client.ini) and 7 (disk). What
 *          earlier steps wrote stays on the disk.
 */
int32_t vn_install(const char* appName, int32_t cid, const char* eula, InstallContext* context);

/** Flag of vn_uninstall(): leaves the install directory, and with it the machine's identity
 *  (guid.ini), where it is. */
#define VN_UNINSTALL_KEEP_IDENTITY 1u

/** Takes one application off the client: removes its name from the registry and tells the client.
 *  While other applications are registered, the client keeps running for them. After the last one
 *  the client is stopped, and its launch agent, the install directory and the preference pane are
 *  deleted; what cannot be deleted stays, and is no failure. A name that is not
 *  registered counts as one that has left already: when nobody else is registered, the client goes.
 *
 *  Blocks until the client has acknowledged. It is asked once a second, at most as many times as
 *  client.ini says under "UninstallTimeOutSec=" (10 when it does not), and given up after 30
 *  seconds of silence. A client that does not answer a ping is not told anything.
 *
 *  @param appName  the name that was given to vn_install(); mandatory.
 *  @param flags    0 or VN_UNINSTALL_KEEP_IDENTITY, which any other value stands for as well. That
 *                  one also deletes what is in a folder "installer.txt" of the current directory:
 *                  do not give it where there is such a folder.
 *  @return 0, or -1 with code 1 (appName null), 3 (internal), 4 (no memory, or no process, for a
 *          deletion: the application has left, and what the client left behind stays; call it once
 *          more), 7 (the registry could not be rewritten and is as it was; the client keeps
 *          running) or 10 (the client could not be stopped). */
int32_t vn_uninstall(const char* appName, uint32_t flags);

/** Appends "<cid>_<eulaText>" CR LF to accepteula.txt in the install directory.
 *  @param cid       0 or more.
 *  @param eulaText  not empty, no line feed, no carriage return; the record (number, text, line
 *                   end) has at most 1024 characters.
 *  @param reserved  0.
 *  @return 0, or -1 with code 1 (argument), 3 (record too long), 4 (memory) or 7 (disk). */
int32_t vn_acceptEULA(int32_t cid, const char* eulaText, uint32_t reserved);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
