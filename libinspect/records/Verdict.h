#pragma once

#include <libcrossplatform/common/ResultVocabulary.h>

namespace Inspect {

inline bool isFail(Veltra::Status status) {
  return status == Veltra::STATUS_FAIL || status == Veltra::STATUS_FAIL_STAR;
}
inline bool isPass(Veltra::Status status) {
  return status == Veltra::STATUS_PASS || status == Veltra::STATUS_PASS_STAR ||
         status == Veltra::STATUS_PASS_ACCEPTABLE;
}

}  // namespace Inspect
