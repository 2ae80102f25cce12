#include <libinspect/job/JobLinks.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <tuple>
#include <utility>

#include <libinspect/container/ContainerWalk.h>
#include <libinspect/records/Verdict.h>

namespace Inspect {
namespace {

constexpr const char* STATE_NAMES[] = {"passed", "passed with a star", "failed", "no verdict", "damaged", "missing"};

using Results = std::vector<LinkResult>;

/// Marks the copies among results that may be the same; a file that cannot be read again is none.
void markCopies(std::vector<LinkResult*> results) {
  if (results.size() < 2) return;
  // Of equal files that with the shortest name is the first one: "Copy of A-1" and "A-1 (2)" are copies of "A-1".
  const auto lengthOf = [](const LinkResult* result) {
    return std::filesystem::path(result->row->file).filename().string().size();
  };
  std::stable_sort(results.begin(), results.end(),
                   [&](const LinkResult* a, const LinkResult* b) { return lengthOf(a) < lengthOf(b); });
  std::map<std::pair<uint64_t, uint32_t>, const ResultRow*> known;  // by size and CRC: each is compared with one other
  ByteSource source, other;
  std::string error;
  if (results.size() == 2) {
    const bool isCopy = source.openFile(results[1]->row->file, error) && other.openFile(results[0]->row->file, error) &&
                        haveSameBytes(source, other);
    if (isCopy) results[1]->copyOf = results[0]->row;
    return;
  }
  for (LinkResult* const result : results) {
    if (!source.openFile(result->row->file, error)) continue;
    const uint32_t crc = crcOf(source, 0, source.size());
    if (source.hasFailed()) continue;
    const auto [first, isNew] = known.emplace(std::make_pair(source.size(), crc), result->row);
    if (!isNew && other.openFile(first->second->file, error) && haveSameBytes(source, other)) {
      result->copyOf = first->second;
    }
  }
}

void markCopies(Results& results) {
  // Their operator== says of no summary with an infinite measurement that it is equal to another.
  std::map<std::tuple<long, unsigned, Veltra::ResultType, Veltra::Status>, std::vector<LinkResult*>> groups;
  for (LinkResult& result : results) {
    const Veltra::ResultSummary& summary = result.row->summary;
    groups[{summary.timeStamp, summary.testFlags, summary.resultType, summary.status}].push_back(&result);
  }
  for (const auto& group : groups) markCopies(group.second);
}

/// Marks the results that a later one stands for.
void markReplaced(Results& results) {
  std::map<Veltra::ResultType, std::vector<const ResultRow*>> standing;  // the latest first
  for (auto result = results.rbegin(); result != results.rend(); ++result) {
    const ResultRow& row = *result->row;
    if (result->copyOf != nullptr || !hasTime(row)) continue;
    std::vector<const ResultRow*>& ofMedium = standing[row.summary.resultType];
    const auto later = std::find_if(ofMedium.begin(), ofMedium.end(), [&row](const ResultRow* other) {
      return (row.summary.testFlags & ~other->summary.testFlags) == 0;
    });
    if (later == ofMedium.end()) {
      ofMedium.push_back(&row);
    } else {
      result->replacedBy = *later;
      result->isTied = (*later)->summary.timeStamp == row.summary.timeStamp;
    }
  }
}

void addVerdict(JobLink& link) {
  bool hasFailed = false, hasNoVerdict = false, hasStar = false, hasCounted = false;
  for (LinkResult& result : link.results) {
    if (result.row->isDamaged || result.copyOf != nullptr) continue;
    result.counts = result.replacedBy == nullptr;
    if (!result.counts) continue;
    hasCounted = true;
    mergeStatus(link.verdict, result.row->summary.status);
    const LinkState state = stateOf(result.row->summary.status);
    hasFailed = hasFailed || state == LinkState::FAILED;
    hasNoVerdict = hasNoVerdict || state == LinkState::NO_VERDICT;
    hasStar = hasStar || state == LinkState::PASSED_WITH_STAR;
  }
  if (hasCounted) {
    link.state = hasFailed      ? LinkState::FAILED
                 : hasNoVerdict ? LinkState::NO_VERDICT
                 : hasStar      ? LinkState::PASSED_WITH_STAR
                                : LinkState::PASSED;
  } else if (!link.lostFiles.empty()) {
    link.state = LinkState::DAMAGED;
  }
}

/// Intact results first, which may replace each other; then the damaged ones.
void settle(JobLink& link, CountPolicy policy) {
  Results damaged;
  for (const LinkResult& result : link.results) {
    if (result.row->isDamaged) damaged.push_back(result);
  }
  link.results.erase(std::remove_if(link.results.begin(), link.results.end(),
                                    [](const LinkResult& result) { return result.row->isDamaged; }),
                     link.results.end());
  if (link.results.size() > 1) {
    markCopies(link.results);
    if (policy == CountPolicy::LATEST) markReplaced(link.results);
  }
  link.results.insert(link.results.end(), damaged.begin(), damaged.end());
  addVerdict(link);
}

void addLostFiles(const JobFiles& files, const ExpectedIds& expected, std::vector<JobLink>& links) {
  for (const std::string& file : files.lost) {
    const auto place = expected.placeOf(std::filesystem::path(file).stem().string());
    if (place) links[*place].lostFiles.push_back(file);
  }
}

}  // namespace

const char* toString(LinkState state) {
  return STATE_NAMES[static_cast<std::size_t>(state)];
}

LinkState stateOf(Veltra::Status status) {
  if (status == Veltra::STATUS_PASS_STAR) return LinkState::PASSED_WITH_STAR;
  return isPass(status) ? LinkState::PASSED : isFail(status) ? LinkState::FAILED : LinkState::NO_VERDICT;
}

bool JobLink::isTestedAgain() const {
  return std::any_of(results.begin(), results.end(), [](const LinkResult& r) { return r.replacedBy != nullptr; });
}

std::vector<JobLink> linksOf(const JobFiles& files, const ExpectedIds& expected, CountPolicy policy) {
  std::vector<JobLink> links(expected.ids().size());
  for (std::size_t i = 0; i < links.size(); ++i) {
    links[i].id = expected.ids()[i];
    links[i].isExpected = true;
  }
  JobLink* link = nullptr;
  for (const ResultRow& row : files.rows) {
    const std::string& id = row.summary.resultName;
    if (link == nullptr || link->id != id) {  // rows of one ID stand together
      const auto place = expected.placeOf(id);
      if (!place) links.emplace_back().id = id;
      link = place ? &links[*place] : &links.back();
    }
    link->results.push_back({&row});
    if (row.isDamaged) link->lostFiles.push_back(row.file);
  }
  addLostFiles(files, expected, links);
  for (JobLink& each : links) settle(each, policy);
  return links;
}

std::vector<std::string> countedFiles(const std::vector<JobLink>& links) {
  std::vector<std::string> files;
  for (const JobLink& link : links) {
    for (const LinkResult& result : link.results) {
      if (result.counts) files.push_back(result.row->file);
    }
  }
  return files;
}

Coverage coverageOf(const std::vector<JobLink>& links) {
  Coverage coverage;
  for (const JobLink& link : links) {
    if (!link.isExpected) {
      coverage.foreign.insert(coverage.foreign.end(), link.results.size(), link.id);
      continue;
    }
    const auto intact = std::count_if(link.results.begin(), link.results.end(),
                                      [](const LinkResult& result) { return !result.row->isDamaged; });
    if (intact > 1) coverage.twice.push_back(link.id);
    if (link.state == LinkState::DAMAGED) coverage.damaged.push_back(link.id);
    if (link.state == LinkState::MISSING) coverage.missing.push_back(link.id);
  }
  return coverage;
}

}  // namespace Inspect
