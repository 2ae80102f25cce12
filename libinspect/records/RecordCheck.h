#pragma once

#include <libinspect/container/ContainerWalk.h>
#include <libinspect/records/RecordView.h>

namespace Inspect {

/// Loads an intact section and decodes its record. Of a section that begins with no known record, nothing more than its
/// beginning is read, unless it is compressed. At most 8 MiB are loaded.
/// @param bytes     receives the payload, uncompressed; empty if there was no reason to load it
/// @param findings  receives what is wrong with either
DecodedRecord examineRecord(const ByteSource& source, const SectionInfo& section, std::vector<uint8_t>& bytes,
                            Findings& findings);

}  // namespace Inspect
