/* Lets the client download a URL, and shows how far it is until the download has ended. */
#define _POSIX_C_SOURCE 200809L
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>
#include <velnor/capi.h>

enum { APPLICATION = 42 };

static int fail(const char* what) {
    fprintf(stderr, "%s: %s\n", what, vn_errorToString(vn_getLastError()));
    return 1;
}

/* While the client is disconnected it tries again by itself, so that is not an end. */
static int has_ended(int32_t status) {
    return status == FILE_STATUS_COMPLETE || status == FILE_STATUS_INSUFFICIENTDISKSPACE ||
           status == FILE_STATUS_NOTFOUND || status == FILE_STATUS_FORBIDDEN ||
           status == FILE_STATUS_PAUSED;
}

static int follow(ApiHandle* client, const char* url) {
    FileAttributes file = {0};
    while (!has_ended(file.status)) {
        if (vn_getFileAttributes(client, APPLICATION, url, &file, 0) != 0) return fail(url);
        printf("%s, %lld of %lld bytes\n", vn_fileStatusToString(file.status),
               (long long)file.uniquerecv, (long long)file.size);
        if (!has_ended(file.status)) sleep(1);
    }
    if (file.errorstring != NULL) fprintf(stderr, "%s: %s\n", url, file.errorstring);
    const int is_complete = file.status == FILE_STATUS_COMPLETE;
    vn_cleanFileAttributes(client, &file, 0);
    return is_complete ? 0 : 1;
}

static int download(ApiHandle* client, const char* url, const DownloadOptions* options) {
    if (vn_downloadFile(client, APPLICATION, url, options) != 0) return fail(url);
    return follow(client, url);
}

int main(int argc, char** argv) {
    ApiHandle* client = NULL;
    DownloadOptions options = {0};
    if (argc < 3 || argc > 4) {
        fprintf(stderr, "usage: download URL ABSOLUTE-PATH [BYTES-PER-SECOND]\n");
        return 2;
    }
    options.path = argv[2];
    if (argc == 4) {
        options.flags = VN_DOWNLOAD_TARGET_SPEED;
        options.targetSpeed = atoi(argv[3]);
    }
    if (vn_initialize("Example/1.0", &client) != 0) return fail("vn_initialize");
    const int status = download(client, argv[1], &options);
    vn_uninitialize(client, 0);
    return status;
}
