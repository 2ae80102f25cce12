#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <libcrossplatform/common/ResultSummary.h>
#include <libinspect/container/ContainerWalk.h>
#include <libinspect/container/Recover.h>
#include <libinspect/records/RecordView.h>

namespace Inspect {

/// How closely a file is looked at. Each finds all that those before it find.
enum class Examination {
  QUICK,     ///< headers only
  ORDINARY,  ///< CRCs, and the result summary is decoded
  DEEP,      ///< every compressed section is inflated and known records are decoded, up to 1 MiB of them
};

enum class FileState {
  INTACT,
  DAMAGED,  ///< there is a finding of damage
  OTHER,    ///< no container, and nothing that a lost result would leave
};
/// "intact", "damaged" or "not a container".
const char* toString(FileState state);

/// What a file is and what is wrong with it. All commands that speak of damage take their word from here.
struct JudgedFile {
  ContainerReport report;  ///< of an OTHER file: why it is no container
  FileState state = FileState::INTACT;
  std::string kind;         ///< judged by its first section: "result file", "limit database package", ...
  bool hasSummary = false;  ///< the result summary below was read
  Veltra::ResultSummary summary;
  bool hasNothingIntact = false;  ///< of a DAMAGED file without a file header: no section can be recovered, either
  uint64_t deepFindings = 0;      ///< how many of the findings DEEP alone has found
};

/// Whether the name of a file speaks for a result: other results of the same run have its extension.
using IsNamedAsResult = std::function<bool(const std::string& path)>;

/// Judges a file. Memory use does not depend on its size or claims.
/// @param isNamedAsResult  asked of a file that is no container and does not look lost; may be empty
JudgedFile judge(const ByteSource& source, Examination examination = Examination::ORDINARY,
                 const IsNamedAsResult& isNamedAsResult = {});

/// What to do after a finding: run a command, or else what it says. Both are empty where nothing helps.
struct NextStep {
  std::string command;
  std::string advice;
};
NextStep nextStep(const JudgedFile& file, const Finding& finding, OutputPlace place, Charset charset = Charset::UTF8);

/// The JSON form of what is wrong with a file, without its findings.
/// @param isDeep  it was looked at that closely
Json::Value diagnosisJson(const JudgedFile& file, bool isDeep);
/// A finding as JSON, with the command to run next.
Json::Value toJson(const JudgedFile& file, const Finding& finding, OutputPlace place);

/// Whether there is nothing that could be saved of an input: no section, and no container that is empty but whole.
bool hasNothingToRecover(const ByteSource& source, const Recovery& recovery);

/// "NAME: not a container: expected ..., found ...", of an OTHER file.
std::string noContainerText(const JudgedFile& file);

/// The JSON form: file, kind, sizes, sections, findings and the summary's members.
Json::Value toJson(const JudgedFile& file);
/// The columns of that object in order, without its findings and its summary.
const std::vector<std::string>& fileColumns();

}  // namespace Inspect
