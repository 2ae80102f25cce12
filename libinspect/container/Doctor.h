#pragma once

#include <libinspect/container/ContainerWalk.h>

namespace Inspect {

/// Walks a container and reports what is wrong with it, and what its headers say of unknown contents.
/// @param onSection  examines a section further, after its header and CRC
ContainerReport examine(const ByteSource& source, WalkDepth depth, const OnSection& onSection = {});

/// Whether a section of this type holds test data, which stands in result files after their summary.
bool isResultData(uint16_t type);

/// Whether a file that is no container may be what is left of one: it is empty, all zeros, begins with "PF" or has a
/// section header that verifies anywhere. Reads the file to its end where it is none of these.
bool looksLost(const ByteSource& source);

}  // namespace Inspect
