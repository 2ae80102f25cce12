#pragma once

#include <libinspect/container/Doctor.h>
#include <libinspect/records/RecordView.h>

namespace Inspect {

/// An ordinary examination that also inflates every compressed section and decodes known records, up to 1 MiB of them.
ContainerReport examineDeep(const ByteSource& source);

/// Loads an intact section and decodes its record.
/// @param bytes     receives the payload, uncompressed
/// @param findings  receives what is wrong with either
DecodedRecord examineRecord(const ByteSource& source, const SectionInfo& section, std::vector<uint8_t>& bytes,
                            Findings& findings);

}  // namespace Inspect
