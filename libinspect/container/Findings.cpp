#include <libinspect/container/Findings.h>

#include <filesystem>
#include <iterator>
#include <string_view>

#include <fmt/format.h>

namespace Inspect {
namespace {

enum class FindingKind { DAMAGE, WARNING };
/// What to do next: save what is intact to another file, or look at the section.
enum class FindingHelp { RECOVER, LOOK };

// What people do who have no shell.
constexpr char COPY_AGAIN[] =
    "Copy the file from the instrument again. If that copy is damaged as well, save a recovered copy, or test again.";
constexpr char SAVE_COPY[] = "Save a recovered copy, or copy the file from the instrument again.";
constexpr char TEST_AGAIN[] = "Copy the file from the instrument again, or test again.";
constexpr char ASK_SUPPORT[] = "Send the file to support.";
constexpr char NOTHING[] = "Nothing needs to be done.";

struct FindingRow {
  FindingCode code;
  const char* name;
  const char* meaning;
  FindingKind kind;
  FindingHelp help;
  const char* words;
  const char* advice;
};
constexpr FindingRow FINDINGS[] = {
    {E01_NEVER_CLOSED, "E01", "never closed", FindingKind::DAMAGE, FindingHelp::RECOVER,
     "The file was not finished: the power was lost, or the storage was full or taken out.", SAVE_COPY},
    {E02_NO_FILE_HEADER, "E02", "no file header", FindingKind::DAMAGE, FindingHelp::RECOVER,
     "The beginning of the file is lost.", COPY_AGAIN},
    {E03_HEADER_CRC, "E03", "header CRC differs", FindingKind::DAMAGE, FindingHelp::RECOVER,
     "A part of the file has changed since it was saved; how long that part is cannot be told.", COPY_AGAIN},
    {E04_DATA_CRC, "E04", "data CRC differs", FindingKind::DAMAGE, FindingHelp::RECOVER,
     "A part of the file has changed since it was saved.", COPY_AGAIN},
    {E05_TRUNCATED, "E05", "truncated", FindingKind::DAMAGE, FindingHelp::RECOVER,
     "The end of the file is missing, as after a copy that was interrupted.", COPY_AGAIN},
    {E06_LENGTH_DIFFERS, "E06", "recorded length differs", FindingKind::DAMAGE, FindingHelp::RECOVER,
     "The file is shorter than when it was saved, as after a copy that was interrupted.", COPY_AGAIN},
    {E07_INFLATE_FAILED, "E07", "cannot be uncompressed", FindingKind::DAMAGE, FindingHelp::LOOK,
     "A part of the file was saved wrongly and cannot be unpacked.", ASK_SUPPORT},
    {E08_TOO_BIG, "E08", "over 8 MiB uncompressed", FindingKind::DAMAGE, FindingHelp::LOOK,
     "A part of the file unpacks to more than any program accepts.", ASK_SUPPORT},
    {E09_RECORD, "E09", "record does not decode", FindingKind::DAMAGE, FindingHelp::LOOK,
     "A part of the file was saved wrongly, or by an instrument that is newer than this program.", ASK_SUPPORT},
    {E10_SCALE_WITHOUT_TEXT, "E10", "measurement scale without a text", FindingKind::DAMAGE, FindingHelp::LOOK,
     "A measured value was saved in a way that cannot be shown.", ASK_SUPPORT},
    {E11_NO_RESULT_SUMMARY, "E11", "no result summary", FindingKind::DAMAGE, FindingHelp::LOOK,
     "The file has measurements, but neither the ID nor the verdict that belong to them.", TEST_AGAIN},
    {W01_NEWER_VERSION, "W01", "newer version", FindingKind::WARNING, FindingHelp::LOOK,
     "A part of the file is from an instrument that is newer than this program.", NOTHING},
    {W02_UNKNOWN_TYPE, "W02", "unknown section type", FindingKind::WARNING, FindingHelp::LOOK,
     "A part of the file is of a kind that this program does not know.", NOTHING},
    {W03_BYTES_AFTER_END, "W03", "bytes after the end", FindingKind::WARNING, FindingHelp::LOOK,
     "Something was added after the end of the file.", NOTHING},
    {W04_NEGATIVE_COUNT, "W04", "negative count", FindingKind::WARNING, FindingHelp::LOOK,
     "The number of passed or failed tests is not plausible: there may have been more than can be counted.", NOTHING},
    {W05_WRONG_MAGIC, "W05", "wrong magic", FindingKind::WARNING, FindingHelp::LOOK,
     "A mark in the file is not the usual one.", NOTHING},
    {W06_RECORDS_NOT_DECODED, "W06", "records not decoded", FindingKind::WARNING, FindingHelp::LOOK,
     "The file has more in it than was looked at.", NOTHING},
};

/// For static_assert: no code and no name occurs twice, and names match codes: 104 is E04, 201 is W01.
constexpr bool areNamedByCode() {
  constexpr int WARNINGS = 200;
  for (const FindingRow& row : FINDINGS) {
    const std::string_view name = row.name;
    const int number = (name[1] - '0') * 10 + (name[2] - '0');
    const bool isWarning = row.code > WARNINGS;
    if (name.size() != 3 || name[0] != (isWarning ? 'W' : 'E') || row.code % 100 != number) return false;
    if (isWarning != (row.kind == FindingKind::WARNING)) return false;
    for (const FindingRow* other = FINDINGS; other != &row; ++other) {
      if (other->code == row.code) return false;
    }
  }
  return true;
}
static_assert(areNamedByCode());
static_assert(std::size(FINDINGS) == (END_OF_DAMAGE - E01_NEVER_CLOSED) + (END_OF_WARNINGS - W01_NEWER_VERSION),
              "every finding has a row");

constexpr bool areSentences() {
  for (const FindingRow& row : FINDINGS) {
    for (const std::string_view text : {row.words, row.advice}) {
      if (text.empty() || text.back() != '.') return false;
    }
  }
  return true;
}
static_assert(areSentences());

const FindingRow& rowOf(FindingCode code) {
  for (const FindingRow& row : FINDINGS) {
    if (row.code == code) return row;
  }
  static constexpr FindingRow UNKNOWN = {{}, "", "", FindingKind::DAMAGE, FindingHelp::LOOK, "", ""};
  return UNKNOWN;
}

/// "A-05.recovered.vres" for "stick/A-05.vres"; beside it "stick/A-05.recovered.vres". If there is such a file,
/// "A-05.recovered-2.vres" and so on.
std::string recoveredName(const std::string& path, OutputPlace place) {
  namespace fs = std::filesystem;
  constexpr std::size_t MOST_BYTES = 255;  // of a name
  constexpr int MOST_TRIES = 1000;
  const fs::path file = path;
  const std::string stem = file.stem().string();
  std::string extension = file.extension().string();
  extension.resize(cutAt(extension, MOST_BYTES / 2));
  const fs::path folder = place == OutputPlace::BESIDE_INPUT ? file.parent_path() : fs::path();
  std::string found;
  for (int i = 1; i <= MOST_TRIES; ++i) {
    const std::string ending = (i == 1 ? ".recovered" : fmt::format(".recovered-{}", i)) + extension;
    found = (folder / (stem.substr(0, cutAt(stem, MOST_BYTES - ending.size())) + ending)).string();
    std::error_code unknown;
    if (fs::symlink_status(found, unknown).type() == fs::file_type::not_found) break;
  }
  return found;
}

}  // namespace

const char* toString(FindingCode code) {
  return rowOf(code).name;
}

const char* meaningOf(FindingCode code) {
  return rowOf(code).meaning;
}

const char* plainWordsOf(FindingCode code) {
  return rowOf(code).words;
}

bool isDamage(FindingCode code) {
  return rowOf(code).kind == FindingKind::DAMAGE;
}

std::vector<FindingCode> findingCodes() {
  std::vector<FindingCode> codes;
  for (const FindingRow& row : FINDINGS) codes.push_back(row.code);
  return codes;
}

Json::Value toJson(const Finding& finding) {
  Json::Value json(Json::objectValue);
  json["code"] = toString(finding.code);
  json["meaning"] = meaningOf(finding.code);
  json["offset"] = static_cast<Json::UInt64>(finding.offset);
  json["section"] = finding.section ? Json::Value(*finding.section) : Json::Value();
  json["wanted"] = finding.wanted;
  json["found"] = finding.found;
  return json;
}

const std::vector<std::string>& findingColumns() {
  static const std::vector<std::string> COLUMNS = {"offset", "section", "code", "meaning", "wanted", "found"};
  return COLUMNS;
}

std::string nameOf(const Finding& finding) {
  return fmt::format("{} {}", toString(finding.code), meaningOf(finding.code));
}

std::string placeOf(const Finding& finding) {
  const std::string section = finding.section ? fmt::format(", section {}", *finding.section) : "";
  return fmt::format("offset {}{}", finding.offset, section);
}

std::string detailsOf(const Finding& finding) {
  return fmt::format("expected {}, found {}", finding.wanted, finding.found);
}

std::string describe(const Finding& finding) {
  return fmt::format("{}: {}: {}", placeOf(finding), nameOf(finding), detailsOf(finding));
}

std::string describe(const std::string& file, const Finding& finding) {
  return file + ": " + describe(finding);
}

bool asksForRecovery(const Finding& finding) {
  // A new file header is written in place of an unusable one.
  return rowOf(finding.code).help == FindingHelp::RECOVER || (finding.section == 0 && isDamage(finding.code));
}

const char* adviceFor(const Finding& finding, bool hasNothingIntact) {
  if (!asksForRecovery(finding)) return rowOf(finding.code).advice;
  if (hasNothingIntact) return TEST_AGAIN;
  return rowOf(finding.code).help == FindingHelp::RECOVER ? rowOf(finding.code).advice : COPY_AGAIN;
}

std::string nextCommand(const std::string& path, const Finding& finding, OutputPlace place, Charset charset) {
  std::error_code unreadable;
  if (path == "-" || !std::filesystem::is_regular_file(path, unreadable)) return {};
  const std::string file = shellWord(path, charset);
  if (asksForRecovery(finding)) {
    return fmt::format("veltra recover {} -o {}", file, shellWord(recoveredName(path, place), charset));
  }
  if (finding.section) return fmt::format("veltra annotate {} -s {}", file, *finding.section);
  return fmt::format("veltra list {}", file);
}

void Findings::add(Finding finding) {
  _hasDamage = _hasDamage || isDamage(finding.code);
  if (_kept.size() < MOST_KEPT) {
    _kept.push_back(std::move(finding));
  } else {
    ++_leftOut;
  }
}

}  // namespace Inspect
