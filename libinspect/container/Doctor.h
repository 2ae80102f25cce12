#pragma once

#include <libinspect/container/ContainerWalk.h>
#include <libinspect/records/RecordView.h>

namespace Inspect {

enum class Examination {
  QUICK,     ///< headers alone
  ORDINARY,  ///< and CRCs
  DEEP,      ///< and every compressed section inflated, every known record decoded, until there was 1 MiB of them
};

/// Walks a container and says what is wrong with it. Memory follows the largest section.
ContainerReport examine(const ByteSource& source, Examination examination);

/// Loads an intact section and decodes its record.
/// @param bytes     receives the payload, uncompressed
/// @param findings  what is wrong with either is added
DecodedRecord examineRecord(const ByteSource& source, const SectionInfo& section, std::vector<uint8_t>& bytes,
                            Findings& findings);

/// The command line that helps next with a finding, as it can be given to a shell.
/// @param path  of the file, "-" for standard input
std::string nextCommand(const std::string& path, const Finding& finding);

}  // namespace Inspect
