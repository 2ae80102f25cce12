#pragma once

#include <vector>

/// System calls that fail on demand, within this process and without a tracer: a seccomp filter traps the calls below,
/// and the handler either carries them out or answers with an error. Calls from within stdio are trapped like any
/// other.
namespace Calls {

struct Call {
  const char* name;
  int number;
};
/// The calls that can be made to fail.
extern const std::vector<Call> ALL;

/// Installs the filter, for the life of this process and its children.
/// @return false where the machine has no such filters, or the handler does not know the processor
bool trap();

/// Answers `error` to the call of this number that follows `before` others of it. A close() is carried out all the
/// same, as by the kernel.
/// @param forGood  also to all that follow it; a program that goes on calling without end is aborted
void failAfter(int number, long before, int error, bool forGood);
/// Fails no more. @return how many calls failed since
long stopFailing();

/// Called after each trapped call that was carried out; may be null.
using Observer = void (*)(int number, const long* arguments, long result);
void observe(Observer observer);

}  // namespace Calls
