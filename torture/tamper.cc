// tamper WAY N REPORT COMMAND...: counts the system calls by which a command and its children
// change the product's folders. Kills all of them before the N-th, or lets it fail. For x86-64.
#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>

namespace {

// What a call changes is named by its argument `path`, relative to the one `folder` or, without
// one, to the current folder; without `path` it is the descriptor `folder`.
constexpr struct Call {
    uint64_t number;
    int path, folder;
} kCalls[] = {
    {SYS_open, 0, -1},     {SYS_openat, 1, 0},  {SYS_rename, 1, -1},    {SYS_renameat2, 3, 2},
    {SYS_symlinkat, 2, 1}, {SYS_unlink, 0, -1}, {SYS_unlinkat, 1, 0},   {SYS_mkdir, 0, -1},
    {SYS_mkdirat, 1, 0},   {SYS_link, 1, -1},   {SYS_chmod, 0, -1},     {SYS_fchmodat, 1, 0},
    {SYS_fchmod, -1, 0},   {SYS_write, -1, 0},  {SYS_ftruncate, -1, 0}, {SYS_fsync, -1, 0}};

std::string g_way;        // kill; ENOSPC or EIO, -once or, from the N-th call, -on
int g_at = 0, g_met = 0;  // the N, 0 to count only; how many there were
std::ofstream g_report;
std::set<pid_t> g_failing;

std::string targetOf(const Call& call, const uint64_t* arguments, const std::string& process) {
    const int folder = call.folder == -1 ? AT_FDCWD : static_cast<int>(arguments[call.folder]);
    const std::string base = folder == AT_FDCWD ? "cwd" : "fd/" + std::to_string(folder);
    std::error_code none;
    const auto start = std::filesystem::read_symlink(process + base, none);
    if (call.path == -1) return start;
    std::string path;
    std::ifstream memory(process + "mem", std::ios::binary);
    memory.seekg(static_cast<std::streamoff>(arguments[call.path]));
    std::getline(memory, path, '\0');
    return (start / path).lexically_normal();
}

void meet(const Call& call, const uint64_t* arguments, pid_t pid) {
    const bool opens = call.number == SYS_open || call.number == SYS_openat;
    if (opens && !(arguments[call.path + 1] & (O_ACCMODE | O_CREAT | O_TRUNC))) return;
    const std::string target = targetOf(call, arguments, "/proc/" + std::to_string(pid) + '/');
    if (!target.starts_with("/Applications/") && !target.starts_with("/home/")) return;
    ++g_met;
    if (g_at == 0) g_report << "call " << call.number << " on " << target << '\n';
    if (g_at == 0 || g_met < g_at || (g_met > g_at && g_way.ends_with("-once"))) return;
    if (g_way == "kill") _exit(128 + SIGKILL);  // the end of a tracer is that of all it traces
    ptrace(PTRACE_POKEUSER, pid, offsetof(user, regs.orig_rax), -1L);
    g_failing.insert(pid);
}

// True for what makes a session of its own: a daemon, and not part of the command.
bool look(pid_t pid) {
    __ptrace_syscall_info stop{};
    ptrace(PTRACE_GET_SYSCALL_INFO, pid, sizeof stop, &stop);
    if (stop.op == PTRACE_SYSCALL_INFO_EXIT && g_failing.erase(pid) != 0)
        ptrace(PTRACE_POKEUSER, pid, offsetof(user, regs.rax),
               g_way.starts_with("EIO") ? -long{EIO} : -long{ENOSPC});
    if (stop.op != PTRACE_SYSCALL_INFO_ENTRY) return false;
    const auto* call = std::ranges::find(kCalls, stop.entry.nr, &Call::number);
    if (call != std::end(kCalls)) meet(*call, stop.entry.args, pid);
    // The product waits a second, or two minutes of them, by a select on nothing: here a twentieth.
    if (stop.entry.nr == SYS_pselect6 && stop.entry.args[0] == 0) {
        ptrace(PTRACE_POKEDATA, pid, stop.entry.args[4], 0L);
        ptrace(PTRACE_POKEDATA, pid, stop.entry.args[4] + sizeof(time_t), 50'000'000L);
    }
    return stop.entry.nr == SYS_setsid;
}

}  // namespace

int main(int /*argc*/, char** argv) {
    g_way = argv[1], g_at = std::stoi(argv[2]), g_report.open(argv[3]);
    const pid_t command = fork();
    if (command == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        execvp(argv[4], argv + 4);
    }
    int status = 0;
    pid_t pid = waitpid(command, &status, 0);
    ptrace(PTRACE_SETOPTIONS, command, nullptr,
           PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK | PTRACE_O_TRACECLONE |
               PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL);
    for (int signal = SIGTRAP; pid != command || WIFSTOPPED(status); signal = status >> 8) {
        const bool leaves = WIFSTOPPED(status) && signal == (SIGTRAP | 0x80) && look(pid);
        const bool isOwn = signal >= 0x80 || signal == SIGSTOP || signal == SIGTRAP;  // tracing's
        ptrace(leaves ? PTRACE_DETACH : PTRACE_SYSCALL, pid, nullptr, isOwn ? 0 : signal);
        pid = waitpid(-1, &status, __WALL);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
