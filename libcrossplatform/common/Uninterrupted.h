#pragma once

// Threads: any number may call these functions at once.

#include <sys/types.h>

#include <cerrno>

namespace Veltra {

/// The result of a call that a signal may interrupt. A call that is interrupted again and again counts as failed.
template <class Call>
ssize_t uninterrupted(Call call) {
  constexpr int MOST_TRIES = 100;
  ssize_t result = call();
  for (int tries = 1; result < 0 && errno == EINTR && tries < MOST_TRIES; ++tries) result = call();
  return result;
}

}  // namespace Veltra
