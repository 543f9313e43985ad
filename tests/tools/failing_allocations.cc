// Preloaded into a program, runs its main() again and again, each time in a new process: the n-th
// two lack the n-th allocation, alone or with all that follow, until a run lacks none. Behind what
// a run prints comes a line with a record separator and the status as waitpid(2) gives it.
#include <dlfcn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace {

using Main = int (*)(int, char**, char**);

Main g_main = nullptr;
long g_left = 0;  // allocations until one fails; 0 for none
bool g_lasts = false;
bool* g_hasFailed = nullptr;  // seen by the parent

bool fails() {
    if (g_left == 0 || --g_left > 0) return false;
    g_left = g_lasts ? 1 : 0;
    *g_hasFailed = true;
    errno = ENOMEM;
    return true;
}

int runAll(int argc, char** argv, char** environment) {
    g_hasFailed = static_cast<bool*>(
        mmap(nullptr, 1, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    *g_hasFailed = true;
    for (long run = 2; *g_hasFailed; ++run) {
        *g_hasFailed = false;
        const pid_t child = fork();
        if (child == 0) {
            g_left = run / 2;
            g_lasts = run % 2 != 0;
            return g_main(argc, argv, environment);
        }
        int status = 0;
        waitpid(child, &status, 0);
        dprintf(STDOUT_FILENO, "\x1e%d\n", status);
    }
    return 0;
}

}  // namespace

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size) noexcept { return fails() ? nullptr : __libc_malloc(size); }
void* realloc(void* block, size_t size) noexcept {
    return fails() ? nullptr : __libc_realloc(block, size);
}

int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*end)(), void* stack) {
    g_main = main;
    const auto start =
        reinterpret_cast<decltype(&__libc_start_main)>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return start(runAll, argc, argv, init, fini, end, stack);
}
}
