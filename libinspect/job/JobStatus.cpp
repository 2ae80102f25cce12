#include <libinspect/job/JobStatus.h>

#include <fmt/format.h>

namespace Inspect {
namespace {

/// The count that a state adds to.
std::size_t LinkCounts::*countOf(LinkState state) {
  switch (state) {
    case LinkState::PASSED:
      return &LinkCounts::passed;
    case LinkState::PASSED_WITH_STAR:
      return &LinkCounts::passedStar;
    case LinkState::FAILED:
      return &LinkCounts::failed;
    case LinkState::NO_VERDICT:
      return &LinkCounts::noVerdict;
    case LinkState::DAMAGED:
      return &LinkCounts::damaged;
    default:
      return &LinkCounts::missing;
  }
}

void addWork(const JobLink& link, std::vector<WorkItem>& work) {
  if (link.state == LinkState::MISSING) work.push_back({&link, link.state, nullptr, {}});
  if (link.state == LinkState::DAMAGED) {
    for (const std::string& file : link.lostFiles) work.push_back({&link, link.state, nullptr, file});
  }
  for (const LinkResult& result : link.results) {
    if (!result.counts) continue;
    const LinkState state = stateOf(result.row->summary.status);
    if (state == LinkState::FAILED || state == LinkState::NO_VERDICT) {
      work.push_back({&link, state, result.row, result.row->file});
    }
  }
}

void addNotes(const JobLink& link, std::vector<std::string>& notes) {
  for (const LinkResult& result : link.results) {
    if (result.isTied) {
      notes.push_back(fmt::format("{}: {} and {} have the same time: the later name stands for the other", link.id,
                                  result.row->file, result.replacedBy->file));
    }
    if (result.copyOf != nullptr) {
      notes.push_back(fmt::format("{}: {} has the bytes of {} and is no other result", link.id, result.row->file,
                                  result.copyOf->file));
    }
    if (link.results.size() > 1 && !result.row->isDamaged && !hasTime(*result.row)) {
      notes.push_back(fmt::format("{}: {} has no time: it stands for no other result, nor another for it", link.id,
                                  result.row->file));
    }
  }
  if (link.state == LinkState::DAMAGED) return;
  for (const std::string& file : link.lostFiles) {
    notes.push_back(fmt::format("{}: {} is damaged and does not count; an intact result does", link.id, file));
  }
}

}  // namespace

void LinkCounts::add(const JobLink& link) {
  ++expected;
  ++(this->*countOf(link.state));
  if (link.state != LinkState::DAMAGED && link.state != LinkState::MISSING) ++tested;
  if (link.isTestedAgain()) ++testedAgain;
}

const std::vector<LinkCountColumn>& linkCountColumns() {
  static const std::vector<LinkCountColumn> COLUMNS = {
      {"expected", "expected", &LinkCounts::expected},
      {"tested", "tested", &LinkCounts::tested},
      {"passed", "passed", &LinkCounts::passed},
      {"passedStar", "with a star", &LinkCounts::passedStar},
      {"failed", "failed", &LinkCounts::failed},
      {"noVerdict", "no verdict", &LinkCounts::noVerdict},
      {"damaged", "damaged", &LinkCounts::damaged},
      {"missing", "missing", &LinkCounts::missing},
      {"testedAgain", "tested again", &LinkCounts::testedAgain},
  };
  return COLUMNS;
}

JobStatus statusOf(const Job& job) {
  JobStatus status;
  for (const ExpectedIds::Range& range : job.expected.ranges()) {
    RangeStatus& counted = status.ranges.emplace_back();
    counted.text = range.text;
    for (const uint32_t id : range.ids) counted.counts.add(job.links[id]);
  }
  for (const JobLink& link : job.links) {
    addNotes(link, status.notes);
    if (link.isTestedAgain()) status.history.push_back(&link);
    if (link.isExpected) {
      status.all.add(link);
      if (!link.passed()) addWork(link, status.work);
    } else {
      status.foreign.push_back(&link);
    }
  }
  for (const std::string& file : job.strays()) {
    status.notes.push_back(file + " is damaged or could not be read: its ID is not known");
  }
  for (const std::string& file : job.files.leftOut) {
    status.notes.push_back(file + " was not read: it is larger than the limit");
  }
  if (job.description.isGuessed) status.notes.emplace_back(GUESSED_NOTE);
  return status;
}

}  // namespace Inspect
