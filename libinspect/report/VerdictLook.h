#pragma once

#include <cstddef>

#include <libcrossplatform/common/ResultVocabulary.h>
#include <libinspect/job/JobLinks.h>
#include <libinspect/records/Verdict.h>

namespace Inspect {

/// How a page shows a verdict: by a word, a shape and a colour, each of which is enough alone.
struct VerdictLook {
  Veltra::Status status;
  const char* word;
  const char* style;   ///< its CSS class, and the name of its mark
  const char* colour;  ///< of the palette of the style sheet
  const char* shape;   ///< SVG path data, within 1 of the origin
  bool isStroked;      ///< the shape is drawn by its lines, not filled
};

constexpr std::size_t VERDICTS = 9;

/// The verdicts, worst first; the worst is any value outside the vocabulary.
/// @param severity  0 to VERDICTS - 1
const VerdictLook& verdictLook(std::size_t severity);
/// The place of a verdict in that order.
std::size_t severityOf(Veltra::Status status);

/// How a page shows the state of a link; its colours and most of its shapes are those of verdicts.
struct StateLook {
  LinkState state;
  const char* word;       ///< "Passed"
  const char* shortWord;  ///< "passed", where there is little room
  const char* style;
  const char* colour;
  const char* shape;
  bool isStroked;
};

constexpr std::size_t LINK_STATES = 6;

/// In the order of LinkState.
/// @param state  as a number, 0 to LINK_STATES - 1
const StateLook& stateLook(std::size_t state);
inline const StateLook& stateLook(LinkState state) {
  return stateLook(static_cast<std::size_t>(state));
}

}  // namespace Inspect
