/* How a process of a build that counts its coverage ends: what has been counted is written, also by
 * _exit(2), and whatever size of a file a test allows. */
#include <sys/resource.h>

extern void __gcov_dump(void);
extern void __real__exit(int status) __attribute__((noreturn));
void __wrap__exit(int status) __attribute__((noreturn));

static void __attribute__((destructor)) allowFiles(void) {
    struct rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
}

void __wrap__exit(int status) {
    allowFiles();
    __gcov_dump();
    __real__exit(status);
}
