#include "confine.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace keeper {
namespace {

#if defined(__x86_64__)
constexpr uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#elif defined(__aarch64__)
constexpr uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#else
constexpr uint32_t kArchitecture = 0;
#endif

// fchmodat2, setxattrat and its three sisters, open_tree_attr, file_getattr, file_setattr: calls
// that take a path and that the headers may be too old to name. They have these numbers everywhere.
constexpr uint32_t kFchmodat2 = 452;
constexpr uint32_t kFirstOfTheLatest = 463;
constexpr uint32_t kLastOfTheLatest = 469;

// A rule of this landlock names files, and only these rights are any file's.
constexpr uint64_t kTruncate = 1U << 14U;
constexpr uint64_t kOfFiles = LANDLOCK_ACCESS_FS_WRITE_FILE | kTruncate;
constexpr uint64_t kOfFolders = LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
                                LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR |
                                LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK |
                                LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
                                LANDLOCK_ACCESS_FS_MAKE_SYM | LANDLOCK_ACCESS_FS_REFER;

/// What this kernel can withhold, or 0. Its first landlock would forbid to move a file into another
/// folder wherever that is.
uint64_t restrictable() {
    const long version =
        syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 2) return 0;
    return version == 2 ? (kOfFiles | kOfFolders) & ~kTruncate : kOfFiles | kOfFolders;
}

void allow(int rules, const std::string& path, uint64_t rights) {
    const int fd = open(path.c_str(), O_PATH | O_CLOEXEC);
    struct stat about {};
    if (fd >= 0 && fstat(fd, &about) == 0) {
        landlock_path_beneath_attr rule{};
        rule.allowed_access = S_ISDIR(about.st_mode) ? rights : rights & kOfFiles;
        rule.parent_fd = fd;
        syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
    }
    if (fd >= 0) close(fd);
}

}  // namespace

void allowWritingOnlyIn(const std::vector<std::string>& paths) {
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    const uint64_t rights = restrictable();
    if (rights == 0) return;
    // Only this: later versions of the record are longer.
    const uint64_t handled = rights;
    const auto rules =
        static_cast<int>(syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0));
    if (rules < 0) return;
    for (const std::string& path : paths) allow(rules, path, rights);
    syscall(SYS_landlock_restrict_self, rules, 0);
    close(rules);
}

void refuseCallsUnknownToProot() {
    if (kArchitecture == 0) return;
    constexpr uint32_t kRefuse = SECCOMP_RET_ERRNO | ENOSYS;
    std::vector<sock_filter> filter = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
    };
    // io_uring would open files where nobody looks.
    for (const uint32_t call :
         {static_cast<uint32_t>(SYS_statx), static_cast<uint32_t>(SYS_openat2),
          static_cast<uint32_t>(SYS_faccessat2), static_cast<uint32_t>(SYS_execveat),
          static_cast<uint32_t>(SYS_io_uring_setup), kFchmodat2}) {
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K, kRefuse));
    }
    const std::array<sock_filter, 4> end{{
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, kFirstOfTheLatest, 0, 2),
        BPF_JUMP(BPF_JMP | BPF_JGT | BPF_K, kLastOfTheLatest, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, kRefuse),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    filter.insert(filter.end(), end.begin(), end.end());
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program, 0, 0);
}

}  // namespace keeper
