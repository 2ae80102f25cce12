#include "CallFaults.h"

#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace Calls {
namespace {

int failing = -1;
long allowed = -1;  ///< calls until the next that fails; negative: none does
int failure = 0;
bool failsForGood = false;
volatile long failed = 0;
Observer observer = nullptr;

}  // namespace

#if defined(__x86_64__)

const std::vector<Call> ALL = {
    {"openat", SYS_openat},     {"fstat", SYS_newfstatat},    {"fstat", SYS_fstat},   {"read", SYS_read},
    {"pread", SYS_pread64},     {"write", SYS_write},         {"lseek", SYS_lseek},   {"fcntl", SYS_fcntl},
    {"fsync", SYS_fsync},       {"close", SYS_close},         {"fchmod", SYS_fchmod}, {"renameat", SYS_renameat},
    {"unlinkat", SYS_unlinkat}, {"getdents", SYS_getdents64},
};

namespace {

/// Sixth argument of the handler's own calls, by which the filter knows them. None of the trapped calls has six.
constexpr unsigned LET_PASS = 0x5EC0FFEE;

/// Far more than a caller that gives up meets.
constexpr long MOST_FAILED = 100000;

bool isToFail(int number) {
  if (number != failing || allowed < 0) return false;
  if (allowed > 0) {
    --allowed;
    return false;
  }
  if (!failsForGood) allowed = -1;
  failed = failed + 1;
  if (failed > MOST_FAILED) abort();  // the caller tries without end
  return true;
}

void onTrap(int, siginfo_t* info, void* context) {
  greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  const int number = info->si_syscall;
  const long arguments[] = {registers[REG_RDI], registers[REG_RSI], registers[REG_RDX], registers[REG_R10],
                            registers[REG_R8]};
  const int before = errno;
  const bool fails = isToFail(number);
  long result = -failure;
  if (!fails || number == SYS_close) {
    const long done = syscall(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                              static_cast<unsigned long>(LET_PASS));
    if (!fails) result = done == -1 ? -errno : done;
    if (observer != nullptr) observer(number, arguments, result);
  }
  errno = before;
  registers[REG_RAX] = result;
}

}  // namespace

bool trap() {
  struct sigaction action {};
  action.sa_sigaction = onTrap;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  if (sigaction(SIGSYS, &action, nullptr) != 0) return false;
  constexpr auto load = [](std::size_t offset) -> sock_filter {
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned>(offset));
  };
  std::vector<sock_filter> filter = {
      load(offsetof(seccomp_data, args) + 5 * sizeof(uint64_t)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, LET_PASS, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      load(offsetof(seccomp_data, nr)),
  };
  for (const Call& call : ALL) {
    filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call.number), 0, 1));
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP));
  }
  filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog program = {static_cast<unsigned short>(filter.size()), filter.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

#else

const std::vector<Call> ALL;

bool trap() {
  return false;
}

#endif

void failAfter(int number, long before, int error, bool forGood) {
  failed = 0;
  failing = number;
  failure = error;
  failsForGood = forGood;
  allowed = before;
}

long stopFailing() {
  allowed = -1;
  return failed;
}

void observe(Observer wanted) {
  observer = wanted;
}

}  // namespace Calls
