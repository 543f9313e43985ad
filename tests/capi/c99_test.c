/* A plain C program that includes the public header alone, and calls what refuses at once. */
#include <stdio.h>
#include <string.h>

#include "velnor/capi.h"

static int failures = 0;

static void expect(int holds, const char* what) {
    if (holds) return;
    fprintf(stderr, "failed: %s\n", what);
    ++failures;
}

int main(void) {
    InstallContext context;
    memset(&context, 0, sizeof context);
    context.structSize = (uint32_t)sizeof context;

    expect(sizeof(void*) != 8 || context.structSize == 48, "context has 48 bytes");
    expect(vn_getLastError() == 0, "no error before the first call");
    expect(vn_install(NULL, 0, NULL, NULL) == -1, "no name is refused");
    expect(vn_getLastError() == INSTALL_ERROR_INVALIDARGUMENT, "with code 1");
    expect(vn_install("Velnor", 0, NULL, &context) == -1, "a context without progress is refused");
    expect(vn_acceptEULA(-1, "x", 0) == -1, "a negative number is refused");
    expect(strcmp(vn_errorToString(vn_getLastError()), "Invalid Argument") == 0, "with its text");
    return failures;
}
