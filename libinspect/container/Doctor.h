#pragma once

#include <libinspect/container/ContainerWalk.h>

namespace Inspect {

enum class Examination {
  QUICK,     ///< headers alone
  ORDINARY,  ///< and CRCs
};

/// Walks a container and says what is wrong with it. Memory follows the largest section.
/// @param onSection  looks closer at a section, after what its header and CRC tell; examineDeep() hands in what decodes
///                   records
ContainerReport examine(const ByteSource& source, Examination examination, const OnSection& onSection = {});

}  // namespace Inspect
