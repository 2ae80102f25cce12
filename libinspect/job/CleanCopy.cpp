#include <libinspect/job/CleanCopy.h>

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <unordered_set>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include <libcrossplatform/common/FileReplacement.h>
#include <libinspect/job/JobDescription.h>
#include <libinspect/records/FileJudge.h>

namespace Inspect {
namespace {

namespace fs = std::filesystem;

constexpr const char* ACTION_NAMES[] = {"copied", "recovered", "lost", "other", "failed"};

std::string reasonText(const std::string& path, int reason) {
  return fmt::format("{}: {}", path, std::strerror(reason));
}

std::string withSlash(const std::string& folder) {
  return folder.back() == '/' ? folder : folder + "/";
}

std::string withoutSlashes(const std::string& folder) {
  const std::size_t last = folder.find_last_not_of('/');
  return last == std::string::npos ? folder.substr(0, 1) : folder.substr(0, last + 1);
}

/// Whether a folder is another or lies in it, by the folders that are really above it.
bool isWithin(const fs::path& canonical, const std::string& folder) {
  for (fs::path at = canonical;; at = at.parent_path()) {
    if (isSameFile(folder, at.string())) return true;
    if (at == at.parent_path()) return false;
  }
}

bool isFolder(const std::string& path, bool followsLinks) {
  struct stat info {};
  return (followsLinks ? stat(path.c_str(), &info) : lstat(path.c_str(), &info)) == 0 && S_ISDIR(info.st_mode);
}

std::string needsOtherName(const std::string& path) {
  return path + ": expected another name, since the copy has a list of this name";
}

std::string notRegular(const std::string& path) {
  return path + ": not a regular file, not replaced";
}

/// What a file of the copy is made of.
struct Content {
  const ByteSource& source;
  const Recovery* recovery;  ///< null: all of it

  bool isIn(const ByteSource& file) const {
    return recovery != nullptr ? isRecovered(source, *recovery, file) : haveSameBytes(source, file);
  }
};

class Copier {
 public:
  Copier(const CopyOrder& order, const FileRun& run, const ReadingOptions& options)
      : _order(order),
        _run(run),
        _options(options),
        _copy(withoutSlashes(order.copy)),
        _prefix(withSlash(order.folder).size()) {
    const std::unordered_set<std::string> files(run.files().begin(), run.files().end());
    for (const std::string& file : run.files()) {
      if (isDescription(file)) findLogo(file, files);
    }
  }

  /// From any thread.
  FileCopy copy(const ByteSource& source) {
    FileCopy copy;
    if (_isStopped) return copy;
    copy.size = source.size();
    uint64_t told = 0;
    take(source, copy, told);
    if (_options.onRead && copy.size > told) _options.onRead(copy.size - told);
    return copy;
  }

  std::string nameOf(const std::string& file) const { return file.substr(_prefix); }
  std::string pathOf(const std::string& name) const { return withSlash(_copy) + name; }
  const std::vector<std::string>& lostLogos() const { return _lostLogos; }

  bool writeList(const std::string& list, std::string& error) const {
    const std::string path = pathOf(CopyOrder::LIST_NAME);
    struct stat info {};
    const bool isThere = lstat(path.c_str(), &info) == 0;
    std::string old;
    const uint64_t limit = std::max<uint64_t>(MOST_TEXT, list.size());
    if (isThere && S_ISREG(info.st_mode) && readText(path, limit, old, error)) {
      if (old == list) return true;
      if (_order.replaces || hasAllLines(list, old)) return replaceList(path, list, error);
    }
    if (!isThere || _order.replaces) return replaceList(path, list, error);
    error = path + ": exists with sums that differ; use --force to replace it";
    return false;
  }

 private:
  static bool isDescription(const std::string& file) { return fs::path(file).filename() == JobDescription::FILE_NAME; }

  /// A description that cannot be read names no picture; it is copied all the same.
  void findLogo(const std::string& file, const std::unordered_set<std::string>& files) {
    JobDescription description;
    ExpectedIds expected;
    std::string text, error;
    const uint64_t limit = _options.maxSize > 0 ? std::min(_options.maxSize, MOST_TEXT) : MOST_TEXT;
    if (!readText(file, limit, text, error) || !parseJobDescription(text, description, expected, error)) return;
    if (description.logo.empty()) return;
    // As the description in the copy leads to it there.
    const std::string logo = (fs::path(nameOf(file)).parent_path() / description.logo).lexically_normal().string();
    if (files.count(withSlash(_order.folder) + logo) > 0) {
      _logos.insert(logo);
    } else {
      _lostLogos.push_back(
          fmt::format("{}: logo: expected the relative path of a file in {}, found {}; it is not in the copy", file,
                      _order.folder, description.logo));
    }
  }

  void take(const ByteSource& source, FileCopy& copy, uint64_t& told) {
    const std::string file = source.path();
    const Veltra::FileStamp before = Veltra::FileStamp::of(file);
    const std::string name = nameOf(file);
    copy.output = pathOf(name);
    std::optional<Recovery> recovery;
    copy.action = CopyAction::COPIED;
    if (!isDescription(file)) {
      const FileState state = stateOf(source);
      const bool isWanted = state != FileState::OTHER || _logos.count(name) > 0;
      if (isWanted && name == CopyOrder::LIST_NAME) return fail(copy, needsOtherName(file));
      if (!isWanted) copy.action = CopyAction::OTHER;
      if (state == FileState::DAMAGED) {
        recovery = findSections(source);
        note(*recovery, copy);
      }
    }
    if (source.hasFailed()) return failRead(copy, file + ": read error");
    if (copy.isInCopy()) put({source, recovery ? &*recovery : nullptr}, before, copy, told);
  }

  FileState stateOf(const ByteSource& source) const {
    return judge(source, Examination::ORDINARY, [this](const std::string& path) { return _run.isNamedAsResult(path); })
        .state;
  }

  static void note(Recovery& recovery, FileCopy& copy) {
    copy.kept = recovery.kept.size();
    for (const LostRange& lost : recovery.lost) copy.lostBytes += lost.bytes;
    copy.missing = recovery.missing;
    copy.lostSections = std::move(recovery.lostSections);
    copy.lostSectionsLeftOut = recovery.lostSectionsLeftOut;
    copy.isSummaryLost = recovery.isSummaryLost;
    const bool isNothing = copy.kept == 0 && (!recovery.isContainer || copy.lostBytes > 0 || copy.missing > 0);
    copy.action = isNothing ? CopyAction::LOST : CopyAction::RECOVERED;
  }

  void put(const Content& content, const Veltra::FileStamp& before, FileCopy& copy, uint64_t& told) {
    struct stat info {};
    const bool isThere = lstat(copy.output.c_str(), &info) == 0;
    if (isThere && isPresent(content, copy)) return;
    if (isThere && !S_ISREG(info.st_mode) && !S_ISLNK(info.st_mode)) return fail(copy, notRegular(copy.output));
    if (isThere && !_order.replaces) {
      return fail(copy, copy.output + ": exists and differs; use --force to replace it");
    }
    write(content, before, copy, told);
  }

  /// Whether a file of the copy has the bytes it should have; it is described then.
  bool isPresent(const Content& content, FileCopy& copy) {
    ByteSource present;
    std::string error;
    struct stat info {};
    if (lstat(copy.output.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
    if (!present.openFile(copy.output, error) || !content.isIn(present)) return false;
    describe(content, present, copy);
    return true;
  }

  void write(const Content& content, const Veltra::FileStamp& before, FileCopy& copy, uint64_t& told) {
    const std::string file = content.source.path();
    Veltra::FileReplacement output;
    struct stat info {};
    if (stat(file.c_str(), &info) != 0) return failRead(copy, reasonText(file, errno));
    if (!makeFolders(copy)) return;
    if (!output.open(copy.output)) return failWrite(copy);
    output.useMode(info.st_mode);
    if (!_order.replaces) output.expect({});
    if (content.recovery != nullptr) {
      const WriteOutcome outcome = writeRecovered(content.source, *content.recovery, output, copy.output, copy.error);
      if (outcome == WriteOutcome::NOT_READ) return failRead(copy, copy.error);
      if (outcome == WriteOutcome::NOT_WRITTEN) return stop(copy, copy.error);
    } else if (!copyBytes(content.source, output, copy, told)) {
      return;
    } else {
      const timespec times[] = {{0, UTIME_OMIT}, info.st_mtim};
      (void)futimens(output.descriptor(), times);  // no failure, as with a mode that a file system does not have
    }
    if (Veltra::FileStamp::of(file) != before) return failRead(copy, file + ": was changed while it was copied");
    ByteSource written;
    if (!written.openFile(output.temporaryPath(), copy.error)) return stop(copy, copy.error);
    describe(content, written, copy);
    if (copy.action == CopyAction::FAILED || output.commit()) return;
    if (errno != ESTALE) return failWrite(copy);
    if (isPresent(content, copy)) return;  // another run has made it meanwhile
    fail(copy, copy.output + ": exists; use --force to replace it");
  }

  bool copyBytes(const ByteSource& source, Veltra::FileReplacement& output, FileCopy& copy, uint64_t& told) {
    while (told < source.size()) {
      const uint8_t* at = nullptr;
      const std::size_t got = source.view(told, at);
      if (got == 0) {
        failRead(copy, source.name() + ": was changed while it was copied");
        return false;
      }
      if (!output.write(at, got)) {
        failWrite(copy);
        return false;
      }
      told += got;
      if (_options.onRead) _options.onRead(got);
    }
    return true;
  }

  /// What is to be said of the bytes that are in the copy, or will be.
  void describe(const Content& content, const ByteSource& written, FileCopy& copy) {
    copy.sum = _order.sumOf(written);
    if (content.recovery != nullptr) {
      for (const Finding& finding : judge(written).report.findings) {
        if (isDamage(finding.code) && !copy.damage) copy.damage = finding;
      }
    }
    if (copy.sum.empty() || written.hasFailed()) fail(copy, copy.output + ": could not be read back");
  }

  /// The folders of the copy down to that of a file. A link is none: it may lead anywhere.
  bool makeFolders(FileCopy& copy) {
    for (std::size_t end = _copy.size(); end != std::string::npos; end = copy.output.find('/', end + 1)) {
      const std::string folder = copy.output.substr(0, end);
      if (mkdir(folder.c_str(), 0777) == 0 || (errno == EEXIST && isFolder(folder, end == _copy.size()))) continue;
      stop(copy, errno == EEXIST ? folder + ": expected a folder" : reasonText(folder, errno));
      return false;
    }
    return true;
  }

  static void failRead(FileCopy& copy, std::string error) {
    copy.action = CopyAction::FAILED;
    copy.error = std::move(error);
  }
  void fail(FileCopy& copy, std::string error) { failRead(copy, std::move(error)); }
  void stop(FileCopy& copy, std::string error) {
    fail(copy, std::move(error));
    _isStopped = true;
  }
  void failWrite(FileCopy& copy) { stop(copy, reasonText(copy.output, errno)); }

  static bool hasAllLines(const std::string& list, const std::string& lines) {
    std::unordered_set<std::string> known;
    std::istringstream in(list), wanted(lines);
    for (std::string line; std::getline(in, line);) known.insert(line);
    for (std::string line; std::getline(wanted, line);) {
      if (known.count(line) == 0) return false;
    }
    return true;
  }

  static bool replaceList(const std::string& path, const std::string& list, std::string& error) {
    if (Veltra::replaceFile(path, list.data(), list.size())) return true;
    error = reasonText(path, errno);
    return false;
  }

  const CopyOrder& _order;
  const FileRun& _run;
  const ReadingOptions& _options;
  const std::string _copy;
  const std::size_t _prefix;
  std::unordered_set<std::string> _logos;  // their names in the copy
  std::vector<std::string> _lostLogos;
  std::atomic<bool> _isStopped{false};
};

/// @param known  what is in the copy, or should be, by name
void findForeign(const Copier& copier, const std::unordered_set<std::string>& known, CopyEnd& end) {
  const std::string copy = copier.pathOf("");
  PassedOver passedOver;
  if (!isFolder(copy, true)) return;
  for (std::string& file : filesOf({copy}, true, end.faults, passedOver)) {
    const std::string name = file.substr(copy.size());
    if (name != CopyOrder::LIST_NAME && known.count(name) == 0) end.foreign.push_back(std::move(file));
  }
}

}  // namespace

const char* toString(CopyAction action) {
  return ACTION_NAMES[static_cast<std::size_t>(action)];
}

bool canCopy(const CopyOrder& order, std::string& error) {
  const std::string copy = withoutSlashes(order.copy);
  error.clear();
  std::error_code reason;
  const fs::path folder = fs::canonical(order.folder, reason);
  if (reason || copy.empty()) {
    error = reasonText(copy.empty() ? copy : order.folder, copy.empty() ? ENOENT : reason.value());
    return false;
  }
  const bool isThere = fs::exists(copy, reason);
  const fs::path parent = fs::path(copy).parent_path();
  const fs::path known = fs::canonical(isThere ? fs::path(copy) : parent.empty() ? fs::path(".") : parent, reason);
  if (reason) {
    error = reasonText(isThere ? copy : parent.string(), reason.value());
    return false;
  }
  if (isThere && !fs::is_directory(known, reason)) {
    error = copy + ": expected a folder";
  } else if (isWithin(known, folder.string())) {
    error = fmt::format("{}: lies in {}, into which nothing is written", copy, order.folder);
  } else if (isThere && isWithin(folder, known.string())) {
    error = fmt::format("{}: lies in {}, which is to be its copy", order.folder, copy);
  } else {
    const std::string named = withSlash(order.folder) + CopyOrder::LIST_NAME;
    const std::string list = withSlash(copy) + CopyOrder::LIST_NAME;
    struct stat info {};
    if (isFolder(named, false)) {
      error = needsOtherName(named);
    } else if (stat(list.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) {
      error = notRegular(list);
    }
  }
  return error.empty();
}

CopyEnd copyJob(const CopyOrder& order, const FileRun& run, const ReadingOptions& options, const OnCopy& onCopy) {
  Copier copier(order, run, options);
  CopyEnd end;
  end.isComplete = !order.isPartial;
  std::string list;
  std::unordered_set<std::string> known;
  ReadingOptions reading = options;
  reading.onRead = {};  // what was copied is progress
  askEach<FileCopy>(
      run.files(), reading, [&copier](const ByteSource& source) { return copier.copy(source); },
      [&](const std::string& file, const ReadOutcome& outcome, const std::optional<FileCopy>& copy) {
        const bool isRead = outcome.state == ReadOutcome::WAS_READ && copy;
        const std::string name = copier.nameOf(file);
        if (isRead && copy->isInCopy()) list += sumLine(copy->sum, name);
        if (!isRead || copy->action == CopyAction::FAILED) end.isComplete = false;
        if (!isRead || copy->isInCopy() || copy->action == CopyAction::FAILED) known.insert(name);
        onCopy(file, outcome, copy ? &*copy : nullptr);
      });
  end.lostLogos = copier.lostLogos();
  if (end.isComplete && !list.empty() && copier.writeList(list, end.error)) {
    end.list = copier.pathOf(CopyOrder::LIST_NAME);
  }
  findForeign(copier, known, end);
  return end;
}

std::string sumLine(const std::string& sum, const std::string& name) {
  constexpr std::pair<char, char> ESCAPES[] = {{'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}};
  std::string written;
  bool isEscaped = false;
  for (const char c : name) {
    const auto* const escape =
        std::find_if(std::begin(ESCAPES), std::end(ESCAPES), [c](const auto& row) { return row.first == c; });
    if (escape != std::end(ESCAPES)) {
      isEscaped = true;
      written += '\\';
    }
    written += escape != std::end(ESCAPES) ? escape->second : c;
  }
  // "-" would be standard input.
  return fmt::format("{}{}  {}{}\n", isEscaped ? "\\" : "", sum, name == "-" ? "./" : "", written);
}

}  // namespace Inspect
