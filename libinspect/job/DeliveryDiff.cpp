#include <libinspect/job/DeliveryDiff.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace Inspect {
namespace {

struct ChangeNames {
  const char* text;
  const char* member;
};
constexpr ChangeNames CHANGE_NAMES[DELIVERY_CHANGES] = {{"only in old", "onlyInOld"},
                                                        {"only in new", "onlyInNew"},
                                                        {"verdict changed", "verdictChanged"},
                                                        {"values changed", "valuesChanged"},
                                                        {"same values, other bytes", "otherBytes"},
                                                        {"not compared", "notCompared"},
                                                        {"same", "same"}};

struct ComparedFile {
  std::string file;
  const ResultRow* row = nullptr;
};

std::vector<ComparedFile> comparedFilesOf(const JobLink* link) {
  std::vector<ComparedFile> files;
  if (link == nullptr) return files;
  for (const LinkResult& result : link->results) {
    if (result.counts) files.push_back({result.row->file, result.row});
  }
  if (!files.empty()) return files;
  for (const std::string& file : link->lostFiles) files.push_back({file, nullptr});
  return files;
}

/// What two results must share to be compared: each step asks for less.
enum class PairingStep { VERDICT, TIME, TESTS, MEDIUM };
using PairingKey = std::tuple<Veltra::ResultType, unsigned, long, Veltra::Status>;

PairingKey keyOf(const ComparedFile& file, PairingStep step) {
  if (file.row == nullptr) return {};
  const Veltra::ResultSummary& summary = file.row->summary;
  PairingKey key = {summary.resultType, 0, 0, Veltra::STATUS_NOT_SET};
  if (step <= PairingStep::TESTS) std::get<1>(key) = summary.testFlags;
  if (step <= PairingStep::TIME) std::get<2>(key) = summary.timeStamp;
  if (step == PairingStep::VERDICT) std::get<3>(key) = summary.status;
  return key;
}

std::vector<ResultPair> pairResults(const std::vector<ComparedFile>& before, const std::vector<ComparedFile>& after) {
  constexpr std::size_t NONE = static_cast<std::size_t>(-1);
  std::vector<std::size_t> partners(before.size(), NONE);
  std::vector<bool> isPaired(after.size());
  const auto pair = [&](std::size_t i, std::size_t j) {
    partners[i] = j;
    isPaired[j] = true;
  };
  if (before.size() == 1 && after.size() == 1) pair(0, 0);
  for (const PairingStep step : {PairingStep::VERDICT, PairingStep::TIME, PairingStep::TESTS, PairingStep::MEDIUM}) {
    std::map<PairingKey, std::vector<std::size_t>> open;  // the first one last
    for (std::size_t j = after.size(); j-- > 0;) {
      if (!isPaired[j]) open[keyOf(after[j], step)].push_back(j);
    }
    for (std::size_t i = 0; i < before.size(); ++i) {
      if (partners[i] != NONE) continue;
      std::vector<std::size_t>& candidates = open[keyOf(before[i], step)];
      if (candidates.empty()) continue;
      pair(i, candidates.back());
      candidates.pop_back();
    }
  }
  std::vector<ResultPair> pairs;
  for (std::size_t i = 0; i < before.size(); ++i) {
    const ComparedFile other = partners[i] != NONE ? after[partners[i]] : ComparedFile();
    pairs.push_back({before[i].file, other.file, before[i].row, other.row});
  }
  for (std::size_t j = 0; j < after.size(); ++j) {
    if (!isPaired[j]) pairs.push_back({"", after[j].file, nullptr, after[j].row});
  }
  return pairs;
}

/// The verdict, or "damaged" where no result has one; null without a link.
Json::Value verdictOf(const JobLink* link) {
  if (link == nullptr) return {};
  return link->state == LinkState::DAMAGED ? toString(link->state) : toString(link->verdict);
}

Json::Value verdictOf(const std::string& file, const ResultRow* row) {
  if (file.empty()) return {};
  return row != nullptr ? toString(row->summary.status) : toString(LinkState::DAMAGED);
}

/// @param onOther  called if the files do not have the same bytes
/// @return false, with `error`, if a file cannot be read
bool compareFiles(const ResultPair& pair, const std::function<void(const ByteSource&, const ByteSource&)>& onOther,
                  std::string& error) {
  ByteSource before, after;
  if (!before.openFile(pair.oldFile, error) || !after.openFile(pair.newFile, error)) return false;
  if (!haveSameBytes(before, after)) onOther(before, after);
  for (const ByteSource* const source : {&before, &after}) {
    if (!source->hasFailed()) continue;
    error = source->name() + ": read error";
    return false;
  }
  return true;
}

void addId(const std::string& id, ExpectedIds& ids) {
  std::string error;
  const bool isOneId = !id.empty() && id.find("..") == std::string::npos;
  if (isOneId && !ids.placeOf(id) && ids.ids().size() < ExpectedIds::MOST_IDS) (void)ids.add(id, error);
}

}  // namespace

const char* toString(DeliveryChange change) {
  return CHANGE_NAMES[static_cast<std::size_t>(change)].text;
}

const char* memberName(DeliveryChange change) {
  return CHANGE_NAMES[static_cast<std::size_t>(change)].member;
}

void settleDeliveries(Job& before, Job& after) {
  ExpectedIds ids;
  for (const Job* const job : {&before, &after}) {
    for (const std::string& id : job->expected.ids()) addId(id, ids);
  }
  for (const Job* const job : {&before, &after}) {
    for (const ResultRow& row : job->files.rows) addId(row.summary.resultName, ids);
  }
  for (Job* const job : {&before, &after}) job->links = linksOf(job->files, ids, CountPolicy::LATEST);
}

std::vector<LinkPair> pairLinks(const std::vector<JobLink>& before, const std::vector<JobLink>& after) {
  std::vector<LinkPair> pairs;
  std::unordered_map<std::string, std::size_t> places;
  const auto pairOf = [&](const std::string& id) -> LinkPair& {
    const auto [place, isNew] = places.emplace(id, pairs.size());
    if (isNew) pairs.emplace_back().id = id;
    return pairs[place->second];
  };
  const auto isThere = [](const JobLink& link) { return !link.results.empty() || !link.lostFiles.empty(); };
  for (const JobLink& link : before) {
    if (isThere(link)) pairOf(link.id).before = &link;
  }
  for (const JobLink& link : after) {
    if (isThere(link)) pairOf(link.id).after = &link;
  }
  for (LinkPair& pair : pairs) pair.results = pairResults(comparedFilesOf(pair.before), comparedFilesOf(pair.after));
  std::sort(pairs.begin(), pairs.end(), [](const LinkPair& a, const LinkPair& b) {
    return comesBefore(a.id, b.id) || (!comesBefore(b.id, a.id) && a.id < b.id);
  });
  return pairs;
}

std::vector<ResultPair> filesWithoutId(const Job& before, const std::string& oldPath, const Job& after,
                                       const std::string& newPath) {
  const auto nameIn = [](const std::string& path, const std::string& file) {
    return std::filesystem::path(file).lexically_relative(path).string();
  };
  std::map<std::string, ResultPair> pairs;
  for (const std::string& file : before.strays()) pairs[nameIn(oldPath, file)].oldFile = file;
  for (const std::string& file : after.strays()) pairs[nameIn(newPath, file)].newFile = file;
  std::vector<ResultPair> files;
  files.reserve(pairs.size());
  for (auto& pair : pairs) files.push_back(std::move(pair.second));
  return files;
}

DeliveryChange compareBytes(const ResultPair& files, std::string& error) {
  if (files.newFile.empty()) return DeliveryChange::ONLY_OLD;
  if (files.oldFile.empty()) return DeliveryChange::ONLY_NEW;
  DeliveryChange change = DeliveryChange::SAME;
  const auto onOther = [&change](const ByteSource&, const ByteSource&) { change = DeliveryChange::BYTES; };
  return compareFiles(files, onOther, error) ? change : DeliveryChange::UNKNOWN;
}

DeliveryChange compareLinks(const LinkPair& link, const FieldsOf& fieldsOf, bool reveal,
                            const OnLinkDifference& onDifference, std::string& error) {
  const Json::Value before = verdictOf(link.before), after = verdictOf(link.after);
  bool areValues = false, areBytes = false, isUnknown = false;
  if (before != after) {
    onDifference(link.results.empty() ? ResultPair() : link.results.front(), {LINK_VERDICT, before, after, true});
  }
  if (link.after == nullptr) return DeliveryChange::ONLY_OLD;
  if (link.before == nullptr) return DeliveryChange::ONLY_NEW;
  for (const ResultPair& pair : link.results) {
    if (pair.oldFile.empty() || pair.newFile.empty()) {
      areValues = true;
      onDifference(pair, {"result", verdictOf(pair.oldFile, pair.oldRow), verdictOf(pair.newFile, pair.newRow), true});
      continue;
    }
    if ((pair.oldRow == nullptr) != (pair.newRow == nullptr))
      continue;  // a lost result has no values; its verdict tells
    const auto tell = [&](const Difference& difference) {
      (difference.isValue ? areValues : areBytes) = true;
      onDifference(pair, difference);
    };
    const auto onOther = [&](const ByteSource& oldFile, const ByteSource& newFile) {
      differencesOf(oldFile, newFile, fieldsOf, reveal, tell);
    };
    if (!compareFiles(pair, onOther, error)) isUnknown = true;
  }
  return before != after ? DeliveryChange::VERDICT
         : isUnknown     ? DeliveryChange::UNKNOWN
         : areValues     ? DeliveryChange::VALUES
         : areBytes      ? DeliveryChange::BYTES
                         : DeliveryChange::SAME;
}

}  // namespace Inspect
