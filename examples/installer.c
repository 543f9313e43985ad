/* Installs the client with a progress line, and tells what went wrong in a sentence. */
#include <stdio.h>
#include <string.h>
#include <velnor/capi.h>

/* Called on the thread that installs. */
static void show_progress(uint32_t percentage, uint32_t reserved) {
    (void)reserved;
    fprintf(stderr, "\rInstalling %3u%%", (unsigned)percentage);
}

/* The texts of some codes hold a "%s" in the place of the detail. */
static void tell(const char* text, const char* detail) {
    const char* place = strstr(text, "%s");
    if (place == NULL) {
        fprintf(stderr, "%s\n", text);
    } else {
        fprintf(stderr, "%.*s%s%s\n", (int)(place - text), text, detail, place + 2);
    }
}

int main(int argc, char** argv) {
    char detail[VN_ERROR_DETAIL_SIZE] = "";
    InstallContext context = {0};
    if (argc != 2) {
        fprintf(stderr, "usage: installer APPLICATION\n");
        return 2;
    }
    context.structSize = sizeof context;
    context.progress = show_progress;
    context.errorDetail = detail;
    const int installed = vn_install(argv[1], 0, NULL, &context) == 0;
    fputc('\n', stderr);
    if (installed) {
        printf("%s is registered with the client.\n", argv[1]);
        return 0;
    }
    tell(vn_errorToString(vn_getLastError()), detail);
    return 1;
}
