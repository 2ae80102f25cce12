#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <json/value.h>

#include <libinspect/container/PrintableText.h>

namespace Inspect {

/// What can be wrong with a container. Codes are stable: people search for them. docs/findings.md explains each.
enum FindingCode : int {
  E01_NEVER_CLOSED = 101,
  E02_NO_FILE_HEADER = 102,
  E03_HEADER_CRC = 103,
  E04_DATA_CRC = 104,
  E05_TRUNCATED = 105,
  E06_LENGTH_DIFFERS = 106,
  E07_INFLATE_FAILED = 107,
  E08_TOO_BIG = 108,
  E09_RECORD = 109,
  E10_SCALE_WITHOUT_TEXT = 110,
  E11_NO_RESULT_SUMMARY = 111,
  END_OF_DAMAGE,  ///< no finding: the number after the last
  W01_NEWER_VERSION = 201,
  W02_UNKNOWN_TYPE = 202,
  W03_BYTES_AFTER_END = 203,
  W04_NEGATIVE_COUNT = 204,
  W05_WRONG_MAGIC = 205,
  W06_RECORDS_NOT_DECODED = 206,
  END_OF_WARNINGS,
};

/// "E01" and so on.
const char* toString(FindingCode code);
/// What the code means in a few words, for example "data CRC differs".
const char* meaningOf(FindingCode code);
/// The same as a sentence for people who know results, and nothing of files.
const char* plainWordsOf(FindingCode code);
bool isDamage(FindingCode code);
/// All codes: damage, then warnings.
std::vector<FindingCode> findingCodes();

struct Finding {
  FindingCode code;
  uint64_t offset;             ///< in the file
  std::optional<int> section;  ///< its number, if the finding is about a section
  std::string wanted;
  std::string found;
};

Json::Value toJson(const Finding& finding);
/// The columns of that object in order.
const std::vector<std::string>& findingColumns();
/// One line for people: "offset 24, section 1: E04 data CRC differs: expected ..., found ..."
std::string describe(const Finding& finding);
/// The same after "FILE: ".
std::string describe(const std::string& file, const Finding& finding);
/// Its three parts: "offset 24, section 1", "E04 data CRC differs" and "expected ..., found ..."
std::string placeOf(const Finding& finding);
std::string nameOf(const Finding& finding);
std::string detailsOf(const Finding& finding);
/// Where a file that a next command writes goes: into the current folder, or, where another input has the same name,
/// beside its input, so that the commands for both can be run.
enum class OutputPlace { CURRENT_FOLDER, BESIDE_INPUT };

/// Whether what is intact of a file should be saved to another after this.
bool asksForRecovery(const Finding& finding);

/// What people do after a finding who have no shell: a sentence or two.
/// @param hasNothingIntact  of its file: there is nothing to recover
const char* adviceFor(const Finding& finding, bool hasNothingIntact);

/// The command line to run next for a finding, ready for a shell. It writes to a file that does not exist yet.
/// @param path     of the file, "-" for standard input
/// @param charset  of where it is shown
/// @return empty for what a command cannot read once more: standard input, a pipe, a device
std::string nextCommand(const std::string& path, const Finding& finding,
                        OutputPlace place = OutputPlace::CURRENT_FOLDER, Charset charset = Charset::UTF8);

/// What was found wrong, in the order it was found. A hostile file has a finding every few bytes: the first MOST_KEPT
/// are kept; of the others only their number and whether one was damage.
class Findings {
 public:
  static constexpr std::size_t MOST_KEPT = 1000;

  void add(Finding finding);
  std::vector<Finding>::const_iterator begin() const { return _kept.begin(); }
  std::vector<Finding>::const_iterator end() const { return _kept.end(); }
  bool empty() const { return _kept.empty(); }
  uint64_t leftOut() const { return _leftOut; }
  uint64_t count() const { return _kept.size() + _leftOut; }
  bool hasDamage() const { return _hasDamage; }

 private:
  std::vector<Finding> _kept;
  uint64_t _leftOut = 0;
  bool _hasDamage = false;
};

}  // namespace Inspect
