#include "system/sandbox.h"

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <algorithm>
#include <cerrno>

namespace quorvane {
namespace {

// By name, since some exist on some processors only; libseccomp knows their numbers.
constexpr const char* kAllowed[] = {
    // Memory.
    "brk", "madvise", "membarrier", "mmap", "mprotect", "mremap", "munmap", "memfd_create", "ftruncate",
    "get_mempolicy", "mincore",
    // Descriptors that are there.
    "read", "pread64", "readv", "write", "pwrite64", "writev", "lseek", "close", "dup", "fstat", "fcntl",
    "poll", "ppoll", "sendmsg", "recvmsg", "sendto", "recvfrom", "shutdown",
    // Threads.
    "futex", "set_robust_list", "rseq", "gettid", "getpid", "sched_yield", "sched_getaffinity",
    "sched_setaffinity", "sched_getparam", "sched_getscheduler", "sched_setscheduler",
    "sched_get_priority_max", "sched_get_priority_min", "arch_prctl", "set_tid_address", "exit", "exit_group",
    "tgkill", "restart_syscall",
    // Signals, clocks, limits.
    "rt_sigaction", "rt_sigprocmask", "rt_sigreturn", "sigaltstack", "clock_gettime", "clock_getres",
    "clock_nanosleep", "nanosleep", "gettimeofday", "times", "getrusage", "prlimit64", "getrlimit",
    "setrlimit", "getrandom", "sysinfo", "uname", "getcpu"};

bool allow(scmp_filter_ctx filter) {
    for (const char* name : kAllowed) {
        const int number = seccomp_syscall_resolve_name(name);
        // One that this processor lacks has a number below 0 and no rule.
        if (number >= 0 && seccomp_rule_add(filter, SCMP_ACT_ALLOW, number, 0) != 0) return false;
    }
    const auto masked = [](unsigned argument, scmp_datum_t mask) {
        return scmp_arg_cmp{argument, SCMP_CMP_MASKED_EQ, mask, mask};
    };
    // New threads, but no process. The flags of clone3 lie in memory, which a filter cannot see: the C
    // library takes clone where clone3 is said to be missing.
    // How the C library asks for an open file's size: it could learn that other files exist, but nothing in
    // them.
    const scmp_arg_cmp of_descriptor = masked(3, AT_EMPTY_PATH);
    const scmp_arg_cmp is_thread = masked(0, CLONE_THREAD);
    const scmp_arg_cmp names_a_thread = {0, SCMP_CMP_EQ, PR_SET_NAME, 0};
    const scmp_arg_cmp names_memory = {0, SCMP_CMP_EQ, PR_SET_VMA, 0};
    return seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, SCMP_SYS(newfstatat), 1, &of_descriptor) == 0 &&
           seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, SCMP_SYS(clone), 1, &is_thread) == 0 &&
           seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0 &&
           seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, SCMP_SYS(prctl), 1, &names_a_thread) == 0 &&
           seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, SCMP_SYS(prctl), 1, &names_memory) == 0;
}

}  // namespace

bool enterSandbox() noexcept {
    scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ERRNO(EPERM));
    if (filter == nullptr) return false;
    // The threads that decoders have started already are held to it too.
    const bool entered =
        seccomp_attr_set(filter, SCMP_FLTATR_CTL_TSYNC, 1) == 0 && allow(filter) && seccomp_load(filter) == 0;
    seccomp_release(filter);
    return entered;
}

void limitMemory(uint64_t bytes) noexcept {
    rlimit limit = {};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur = std::min<rlim_t>(bytes, limit.rlim_max);
    setrlimit(RLIMIT_AS, &limit);
}

void limitCpuTime(unsigned seconds) noexcept {
    rusage used = {};
    getrusage(RUSAGE_SELF, &used);
    rlimit limit = {};
    getrlimit(RLIMIT_CPU, &limit);
    // Whole seconds are counted: one more, so that none of what was granted is lost.
    const rlim_t so_far = static_cast<rlim_t>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) + 1;
    limit.rlim_cur = std::min<rlim_t>(so_far + seconds, limit.rlim_max);
    setrlimit(RLIMIT_CPU, &limit);
}

}  // namespace quorvane
