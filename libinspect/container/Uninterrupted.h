#pragma once

#include <sys/types.h>

#include <cerrno>

namespace Inspect {

/// The result of a read or write that a signal may interrupt. One that is interrupted without end has failed like any
/// other.
template <class Call>
ssize_t uninterrupted(Call call) {
  constexpr int MOST_TRIES = 100;
  ssize_t got = call();
  for (int tries = 1; got < 0 && errno == EINTR && tries < MOST_TRIES; ++tries) got = call();
  return got;
}

}  // namespace Inspect
