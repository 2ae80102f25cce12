#pragma once

#include <iosfwd>

#include "RecordTesting.h"

/// What the library is used for, as it is done while calls and allocations fail.
namespace Workloads {

using RecordTesting::Bytes;

struct Workload {
  const char* name;
  /// Works on the file at `path`. @return 0, or the code of what failed
  int (*run)(const std::string& path);
  Bytes before;  ///< of the file when it begins
  Bytes after;   ///< of the file when it ends well
  enum Kind {
    READS,      ///< the file is never touched
    REPLACES,   ///< the file is at any time the old one or the new one
    OVERWRITES  ///< the file is truncated first
  } kind;
  bool isContainer;
  bool isFlat;  ///< the flat interface: no exception leaves, and a reader answers lost memory by 4
};

/// Its name, for the messages of a test.
void PrintTo(const Workload& workload, std::ostream* out);

/// All of them.
const std::vector<Workload>& all();
/// Null when there is none of this name.
const Workload* find(const std::string& name);

constexpr int OUT_OF_MEMORY = 100;
constexpr int FOREIGN_EXCEPTION = 101;
/// The file a workload works on in a directory.
std::string pathIn(const std::string& directory);
/// Runs it. @return its code; OUT_OF_MEMORY when a std::bad_alloc left it, FOREIGN_EXCEPTION when anything else did
int run(const Workload& workload, const std::string& path);

/// Makes a directory hold what the workload begins with, and a file beside it that is none of its business.
void prepare(const Workload& workload, const std::string& directory);
/// What was made to fail meanwhile.
enum class Fault {
  CALL,
  REMOVING,  ///< a call that removes a file: a temporary one may be left
  ALLOCATION,
};
/// What is wrong with the directory after the workload ended with this code; empty when nothing is.
std::string check(const Workload& workload, const std::string& directory, int code, Fault fault);

/// Descriptors open in this process, counted without opening one.
int openDescriptors();

/// Whether the command finds nothing wrong with a container; only where it is built.
bool isClean(const std::string& path);

}  // namespace Workloads
