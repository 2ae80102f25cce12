// workload prepare|run NAME DIRECTORY, workload check NAME DIRECTORY CODE: the steps of one workload, one process each,
// so that a tracer can make the calls of the middle one fail. Exit: 0 done or nothing wrong, 1 wrong, 2 usage; "run"
// ends with the code of the workload.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Workloads.h"

int main(int argc, char** argv) {
  const Workloads::Workload* const workload = argc < 4 ? nullptr : Workloads::find(argv[2]);
  if (workload == nullptr) return 2;
  const std::string step = argv[1], directory = argv[3];
  if (step == "prepare") {
    prepare(*workload, directory);
    return 0;
  }
  if (step == "check" && argc == 5) {
    const int code = std::atoi(argv[4]);
    const std::string complaint = check(*workload, directory, code, Workloads::Fault::CALL);
    std::fputs(complaint.c_str(), stderr);
    return complaint.empty() ? 0 : 1;
  }
  if (step != "run") return 2;
  const std::string path = Workloads::pathIn(directory);
  const int descriptors = Workloads::openDescriptors();
  getppid();  // marks the begin in a trace
  const int code = run(*workload, path);
  getppid();
  // A tracer makes close() fail without closing anything, once or for good.
  if (std::getenv("VELTRA_CLOSE_FAILS") == nullptr && Workloads::openDescriptors() != descriptors) {
    return Workloads::FOREIGN_EXCEPTION;
  }
  _exit(code & 0xFF);
}
