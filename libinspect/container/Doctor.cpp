#include <libinspect/container/Doctor.h>

#include <fmt/format.h>

#include <libcrossplatform/common/ResultFile.h>

namespace Inspect {
namespace {

/// What a section's header says about its content, before its data is examined.
void examineHeader(const SectionInfo& section, Findings& findings) {
  const PFile::Header& header = section.header;
  if (section.number == 0) return;
  const boost::optional<uint16_t> newest = Veltra::newestKnownVersion(header.type);
  if (newest && header.version > *newest) {
    findings.add({W01_NEWER_VERSION, section.offset, section.number, fmt::format("version {} at most", *newest),
                  fmt::format("version {}", header.version)});
  }
  if (!newest && PFile::sectionIdToString(header.type) == nullptr) {
    findings.add({W02_UNKNOWN_TYPE, section.offset, section.number, "a known section type",
                  fmt::format("type {}", header.type)});
  }
}

}  // namespace

ContainerReport examine(const ByteSource& source, Examination examination, const OnSection& onSection) {
  const WalkDepth depth = examination == Examination::QUICK ? WalkDepth::HEADERS : WalkDepth::HEADERS_AND_CRCS;
  return walk(source, depth, [&onSection](const SectionInfo& section, Findings& findings) {
    examineHeader(section, findings);
    if (onSection) onSection(section, findings);
  });
}

}  // namespace Inspect
