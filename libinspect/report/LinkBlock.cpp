#include <libinspect/report/LinkBlock.h>

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>
#include <libinspect/report/HeldSections.h>

namespace Inspect {
namespace {

std::string timeOf(const ResultRow& row, const TimeZone& zone) {
  return hasTime(row) ? zone.minute(static_cast<time_t>(row.summary.timeStamp)) : "no time";
}

std::string testsOf(const Veltra::ResultSummary& summary) {
  return fmt::format("tests: {} passed, {} with a star, {} failed", summary.numPassTests, summary.numPassStarTests,
                     summary.numFailTests);
}

/// A customer has no use for folders.
std::string fileOf(const std::string& path, const ReportForm& form) {
  return form.edition == Edition::CUSTOMER ? std::filesystem::path(path).filename().string() : path;
}

/// Why a result is not a part of the link's verdict; empty if it is.
std::string roleOf(const LinkResult& result, const ReportForm& form, const TimeZone& zone) {
  if (result.copyOf != nullptr) return "A copy of another file of this link; it counts once.";
  if (result.row->isDamaged) return "Could not be read to its end; it does not count.";
  if (result.replacedBy == nullptr) return {};
  const std::string by = form.edition == Edition::TECHNICIAN ? " (" + result.replacedBy->file + ")" : "";
  return fmt::format("Tested again {}{}: it does not count.", timeOf(*result.replacedBy, zone), by);
}

PageData dataOf(const HeldTable& table) {
  const auto cell = [](const std::string& text) { return pageObject({{"cell", text}}); };
  PageData data = pageObject({{"within", table.name}});
  data["columns"] = pageList(table.columns, cell);
  data["lines"] = pageList(table.lines, [&cell](const std::vector<std::string>& line) {
    PageData row = pageObject({{"head", line.front()}});
    row["cells"] = pageList(std::vector<std::string>(line.begin() + 1, line.end()), cell);
    return row;
  });
  return data;
}

PageData dataOf(const HeldSection& section) {
  PageData data = pageObject({{"name", section.name}, {"section", section.name}, {"words", section.words}});
  data["hasValues"] = PageData(!section.values.empty());
  data["values"] = pageList(section.values, [](const HeldValue& value) {
    return pageObject({{"name", value.name}, {"text", value.text}});
  });
  data["tables"] = pageList(section.tables, [](const HeldTable& table) { return dataOf(table); });
  if (section.picture.uri.empty()) return data;
  data["uri"] = PageData(section.picture.uri);
  data["width"] = PageData(std::to_string(section.picture.width));
  data["height"] = PageData(std::to_string(section.picture.height));
  return data;
}

void addSections(const LinkResult& result, const TimeZone& zone, HeldBudget& left, PageData& data) {
  const HeldSections held = heldSections(result.row->file, zone, left);
  PageData shown(PageData::type::list), named(PageData::type::list);
  for (const HeldSection& section : held.sections) {
    (section.isShown() ? shown : named) << dataOf(section);
  }
  if (held.leftOut > 0) named << pageObject({{"name", fmt::format("and {} more", held.leftOut)}, {"words", "-"}});
  if (!held.isRead) named << pageObject({{"name", "The file"}, {"words", "could not be read again to its end"}});
  data["shown"] = std::move(shown);
  data["named"] = std::move(named);
}

PageData dataOf(const LinkResult& result, const ReportForm& form, const TimeZone& zone, HeldBudget& left) {
  const ResultRow& row = *result.row;
  const VerdictLook& look = verdictLook(severityOf(row.summary.status));
  std::string facts = timeOf(row, zone) + ", " + mediumOf(row) + ", ";
  const std::string measured = measuredWords(row);
  facts += (measured.empty() ? "" : measured + ", ") + testsOf(row.summary);
  const std::string role = roleOf(result, form, zone);
  PageData data = pageObject({{"style", look.style},
                              {"word", look.word},
                              {"facts", facts},
                              {"file", fileOf(row.file, form)},
                              {"role", role},
                              {"kind", result.counts ? "" : "earlier"}});
  if (result.counts) addSections(result, zone, left, data);
  return data;
}

}  // namespace

std::string measuredWords(const ResultRow& row) {
  const std::string length = measurementText(row.summary.length), headroom = measurementText(row.summary.headroom);
  std::string words;
  if (length != "-") words = length + " m";
  if (headroom != "-") words += (words.empty() ? "" : ", ") + std::string("headroom ") + headroom + " dB";
  return words;
}

PageData linkBlock(const JobLink& link, const ReportForm& form, const TimeZone& zone) {
  const StateLook& look = stateLook(link.state);
  PageData data =
      pageObject({{"style", look.style}, {"word", look.word}, {"id", shownId(link)}, {"anchor", anchorOf(link.id)}});
  data["isOpen"] = PageData(form.showsDetails);
  constexpr std::size_t MOST = 1000;  // results, and files
  HeldBudget left;
  PageData results(PageData::type::list), lost(PageData::type::list);
  for (std::size_t i = 0; i < std::min(MOST, link.results.size()); ++i) {
    results << dataOf(link.results[i], form, zone, left);
  }
  const char* const lostWords = link.state == LinkState::DAMAGED ? "Could not be read; test again"
                                                                 : "Another file could not be read, and does not count";
  for (std::size_t i = 0; i < std::min(MOST, link.lostFiles.size()); ++i) {
    lost << pageObject({{"words", lostWords}, {"file", fileOf(link.lostFiles[i], form)}});
  }
  if (link.results.size() + link.lostFiles.size() > MOST) {
    data["more"] = PageData(fmt::format("{} results and {} files in all, of which at most {} each are shown",
                                        link.results.size(), link.lostFiles.size(), MOST));
  }
  data["results"] = std::move(results);
  data["lost"] = std::move(lost);
  if (link.state == LinkState::MISSING) data["isMissing"] = PageData(true);
  return data;
}

}  // namespace Inspect
