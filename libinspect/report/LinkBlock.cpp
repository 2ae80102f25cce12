#include <libinspect/report/LinkBlock.h>

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include <libinspect/container/PrintableText.h>
#include <libinspect/report/HeldSections.h>
#include <libinspect/report/PageText.h>

namespace Inspect {
namespace {

std::string timeOf(const ResultRow& row, const TimeZone& zone) {
  return hasTime(row) ? zone.minute(static_cast<time_t>(row.summary.timeStamp)) : "no time";
}

std::string testsOf(const Veltra::ResultSummary& summary) {
  return fmt::format("tests: {} passed, {} with a star, {} failed", summary.numPassTests, summary.numPassStarTests,
                     summary.numFailTests);
}

/// Why a result is not a part of the link's verdict; empty if it is.
std::string roleOf(const LinkResult& result, const TimeZone& zone) {
  if (result.copyOf != nullptr) return "A copy of another file of this link; it counts once.";
  if (result.row->isDamaged) return "Could not be read to its end; it does not count.";
  if (result.replacedBy == nullptr) return {};
  return fmt::format("Tested again {}: it does not count.", timeOf(*result.replacedBy, zone));
}

/// A name as HTML: a browser may begin a line at its words, "pairs[0].worstCase".
std::string breakableName(const std::string& name) {
  const auto isSmall = [](char c) { return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9'); };
  std::string html;
  std::size_t begin = 0;
  for (std::size_t i = 1; i < name.size(); ++i) {
    const bool isAfterMark = name[i - 1] == '.' || name[i - 1] == '_' || name[i - 1] == '-';
    const bool beginsWord = isSmall(name[i - 1]) && name[i] >= 'A' && name[i] <= 'Z';
    if (!isAfterMark && !beginsWord && name[i] != '[') continue;
    html += htmlText(name.substr(begin, i - begin)) + "<wbr>";
    begin = i;
  }
  return html + htmlText(name.substr(begin));
}

PageData dataOf(const HeldTable& table) {
  PageData data = pageObject({{"within", table.name}});
  data["columns"] = pageList(table.columns, [](const std::string& name) {
    return pageObject({{"cell", breakableName(name)}});
  });
  data["lines"] = pageList(table.lines, [&table](const std::vector<std::string>& line) {
    PageData row = pageObject({{"head", breakableName(line.front())}}), cells(PageData::type::list);
    for (std::size_t i = 1; i < line.size(); ++i) {
      cells << pageObject({{"cell", line[i]}, {"column", table.columns[i - 1]}});
    }
    row["cells"] = std::move(cells);
    return row;
  });
  return data;
}

/// What people call a section who do not know the names of its types, which say of which end it is.
std::string plainName(const HeldSection& section) {
  std::string name = section.kind == HeldKind::PICTURE     ? "Picture"
                     : section.kind == HeldKind::EQUIPMENT ? "Equipment"
                                                           : "Details";
  for (const char* const end : {"1", "2"}) {
    if (section.name.find(std::string("_END_") + end) != std::string::npos) name += std::string(", end ") + end;
  }
  return name;
}

/// What a section holds besides what is shown of it. Of a name that was given twice the last value is shown.
std::string wordsOf(const HeldSection& section, Edition edition) {
  std::string words = section.words;
  const auto add = [&words](const std::string& what) { words += (words.empty() ? "" : "; ") + what; };
  bool isNameTwice = false;
  for (const JsonOversight& oversight : section.oversights) {
    isNameTwice = isNameTwice || oversight.kind == JsonOversight::NAME_TWICE;
    if (edition == Edition::TECHNICIAN) add(toString(oversight));
  }
  if (isNameTwice) add("a name is given twice: its last value is shown");
  if (!section.fault.empty()) {
    add(edition == Edition::CUSTOMER ? "cannot be shown here" : "cannot be shown: " + section.fault);
  }
  return words;
}

PageData dataOf(const HeldSection& section, Edition edition) {
  const bool isPlain = edition == Edition::CUSTOMER || section.kind == HeldKind::EQUIPMENT;
  const std::string name = isPlain ? plainName(section) : section.name;
  PageData data = pageObject({{"name", name}, {"section", name}, {"words", wordsOf(section, edition)}});
  data["hasValues"] = PageData(!section.values.empty());
  data["values"] = pageList(section.values, [](const HeldValue& value) {
    return pageObject({{"label", breakableName(value.name)}, {"text", value.text}});
  });
  data["tables"] = pageList(section.tables, [](const HeldTable& table) { return dataOf(table); });
  if (section.picture.uri.empty()) return data;
  data["uri"] = PageData(section.picture.uri);
  data["width"] = PageData(std::to_string(section.picture.width));
  data["height"] = PageData(std::to_string(section.picture.height));
  return data;
}

void addSections(const LinkResult& result, Edition edition, const TimeZone& zone, HeldBudget& left, PageData& data,
                 std::vector<UnreadAgain>& unread) {
  const HeldSections held = heldSections(result.row->file, zone, left);
  const bool isTechnical = edition == Edition::TECHNICIAN;
  std::size_t others = held.leftOut;  // that a customer is only told the number of
  PageData shown(PageData::type::list), named(PageData::type::list);
  const auto note = [&named](const std::string& words) { named << pageObject({{"words", words}}); };
  for (const HeldSection& section : held.sections) {
    if (section.isShown()) {
      shown << dataOf(section, edition);
    } else if (isTechnical || section.kind == HeldKind::PICTURE || section.kind == HeldKind::EQUIPMENT) {
      named << dataOf(section, edition);
    } else if (section.kind != HeldKind::SETTINGS) {
      ++others;
    }
  }
  if (isTechnical && held.leftOut > 0) note(fmt::format("and {} more", held.leftOut));
  if (!isTechnical && others > 0) {
    note(fmt::format("Not shown here: {} of this result, for the instrument's own programs.",
                     counted(others, "further part")));
  }
  if (!held.error.empty()) {
    note("What this result holds could not be read again when this page was made.");
    unread.push_back({result.row->file, held.error});
  }
  data["shown"] = std::move(shown);
  data["named"] = std::move(named);
}

PageData dataOf(const LinkResult& result, const ReportForm& form, const TimeZone& zone, HeldBudget& left,
                std::vector<UnreadAgain>& unread) {
  const ResultRow& row = *result.row;
  const VerdictLook& look = verdictLook(severityOf(row.summary.status));
  std::string facts = timeOf(row, zone) + ", " + mediumOf(row) + ", ";
  const std::string measured = measuredWords(row);
  facts += (measured.empty() ? "" : measured + ", ") + testsOf(row.summary);
  PageData data = pageObject({{"style", look.style},
                              {"word", look.word},
                              {"facts", facts},
                              {"file", shownFile(row.file, form.edition)},
                              {"role", roleOf(result, zone)},
                              {"kind", result.counts ? "" : "earlier"}});
  if (result.replacedBy != nullptr && form.edition == Edition::TECHNICIAN) {
    data["replacedBy"] = PageData(result.replacedBy->file);
  }
  if (result.counts) addSections(result, form.edition, zone, left, data, unread);
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

std::string shownFile(const std::string& path, Edition edition) {
  return edition == Edition::CUSTOMER ? std::filesystem::path(path).filename().string() : path;
}

PageData linkBlock(const JobLink& link, const ReportForm& form, const TimeZone& zone,
                   std::vector<UnreadAgain>& unread) {
  const StateLook& look = stateLook(link.state);
  PageData data =
      pageObject({{"style", look.style}, {"word", look.word}, {"id", shownId(link.id)}, {"anchor", anchorOf(link.id)}});
  data["isOpen"] = PageData(form.showsDetails);
  constexpr std::size_t MOST = 1000;  // results, and files
  HeldBudget left;
  PageData results(PageData::type::list), lost(PageData::type::list);
  for (std::size_t i = 0; i < std::min(MOST, link.results.size()); ++i) {
    results << dataOf(link.results[i], form, zone, left, unread);
  }
  const char* const lostWords = link.state == LinkState::DAMAGED ? "Could not be read; test again"
                                                                 : "Another file could not be read, and does not count";
  for (std::size_t i = 0; i < std::min(MOST, link.lostFiles.size()); ++i) {
    lost << pageObject({{"words", lostWords}, {"file", shownFile(link.lostFiles[i], form.edition)}});
  }
  if (link.results.size() + link.lostFiles.size() > MOST) {
    data["more"] = PageData(fmt::format("{} results and {} files in all, of which at most {} each are shown",
                                        link.results.size(), link.lostFiles.size(), MOST));
  }
  data["results"] = std::move(results);
  data["lost"] = std::move(lost);
  return data;
}

}  // namespace Inspect
