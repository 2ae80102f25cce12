#pragma once

#include <cstddef>

#include <libcrossplatform/common/ResultVocabulary.h>
#include <libinspect/records/Verdict.h>

namespace Inspect {

/// How a page shows a verdict: by a word, a shape and a colour, each of which is enough alone.
struct VerdictLook {
  Veltra::Status status;
  const char* word;
  const char* style;     ///< its CSS class, and the name of its mark
  const char* shape;     ///< SVG path data, within 1 of the origin
  bool isStroked;        ///< the shape is drawn by its lines, not filled
  bool isAlwaysCounted;  ///< counted on a page even where no result has it
};

constexpr std::size_t VERDICTS = 9;

/// The verdicts, worst first; the worst is any value outside the vocabulary.
/// @param severity  0 to VERDICTS - 1
const VerdictLook& verdictLook(std::size_t severity);
/// The place of a verdict in that order.
std::size_t severityOf(Veltra::Status status);

}  // namespace Inspect
