#pragma once

#include <libinspect/container/ContainerWalk.h>

namespace Inspect {

enum class Examination {
  QUICK,     ///< headers only
  ORDINARY,  ///< and CRCs
};

/// Walks a container and reports what is wrong with it. Memory use follows the largest section.
/// @param onSection  examines a section further, after its header and CRC; examineDeep() passes one that decodes
///                   records
ContainerReport examine(const ByteSource& source, Examination examination, const OnSection& onSection = {});

}  // namespace Inspect
