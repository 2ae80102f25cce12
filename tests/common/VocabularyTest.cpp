// Texts and tables of enumerations, ids and types.
#include <functional>
#include <limits>

#include <libcrossplatform/common/EnumText.h>
#include <libcrossplatform/common/InstrumentSettingsEnumsToString.h>
#include <libcrossplatform/common/Length.h>
#include <libcrossplatform/common/LinkAdapters.h>
#include <libcrossplatform/common/ModelIds.h>
#include <libcrossplatform/common/ModuleIds.h>
#include <libcrossplatform/common/PFileSectionTypes.h>
#include <libcrossplatform/common/ResultFile.h>
#include <libcrossplatform/common/ResultVocabulary.h>
#include <libcrossplatform/common/ScaledInt.h>
#include <libcrossplatform/common/WifiProfile.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

std::string listed;

/// Writes down every value that has a text of its own, what the others are listed as, which report that makes, and as
/// what a text is read that is not read as its value.
template <class E>
void show(const std::string& name, const char* (*textOf)(E), const std::function<int(const std::string&)>& parse = {}) {
  constexpr int FIRST = -1100, LAST = 21000, OUTSIDE = LAST + 1;
  const CapturedAsserts captured;
  const std::string otherwise = textOf(static_cast<E>(OUTSIDE));
  const std::vector<std::string> reports = captured.reports();
  for (int value = FIRST; value <= LAST; ++value) {
    captured.reports().clear();
    const std::string text = textOf(static_cast<E>(value));
    if (reports.empty() ? text == otherwise : !captured.reports().empty()) {
      EXPECT_EQ(captured.reports(), reports) << name << " " << value;
      continue;
    }
    listed += name + " " + std::to_string(value) + " " + text;
    if (parse && parse(text) != value) listed += ", read as " + std::to_string(parse(text));
    listed += "\n";
    EXPECT_TRUE(!parse || (parse(text + " ") == parse("") && parse(text + '\0') == parse(""))) << text;
    EXPECT_TRUE(captured.reports().empty()) << "parsers report nothing";
  }
  if (!otherwise.empty()) listed += name + " otherwise " + otherwise + "\n";
  for (const std::string& report : reports) listed += name + " otherwise reports " + report + "\n";
  if (parse) listed += name + " of another text " + std::to_string(parse("")) + "\n";
}

/// The same of a list that is looked up by position.
template <std::size_t N>
void show(const char* name, const char* const (&texts)[N]) {
  for (std::size_t value = 0; value < N; ++value) {
    listed += std::string(name) + " " + std::to_string(value) + " " + texts[value] + "\n";
  }
}

}  // namespace

TEST(EnumText, TextsOfAllEnumerationsBothWays) {
  listed.clear();
  show<Status>("Status", toString, [](const std::string& text) {
    Status read = STATUS_FAIL;  // not what an unknown text leaves
    return fromStatusString(text, read) ? fromStatusString(text) : read;
  });
  show<ResultType>("ResultType", toString);
  show<CableEnd>("CableEnd", toString, fromCableEndString);
  show<CableEnd>("MainRemote", toStringMainRemote, fromCableEndMainRemoteString);
  show<TestType>("TestType", toString, [](const std::string& text) {
    TestType read = TEST_TYPE_COAX;  // what an unknown text leaves
    return fromTestTypeString(text, read) == (read != TEST_TYPE_COAX || text == "Coax") ? read : -99;
  });
  show<TestMergeFlags>("TestMergeFlags", toString, fromTestMergeFlagsString);
  show<ResultReaderStatus>("ResultReaderStatus", toString);
  show<ResultWriterStatus>("ResultWriterStatus", toString);
  show<PFile::PFileReaderStatus>("PFileReaderStatus", PFile::toString);
  show<ScaledInt::ScaledTo>("ScaledTo", toString);
  show<LengthRoundedTo>("LengthRoundedTo", toString);
  show<ModelId>("ModelId", toString);
  show<ModuleId>("ModuleId", toString);
  show<ModuleCategory>("ModuleCategory", toString);
  show<Language>("Language", toString, fromLanguageString);
  show<LocaleType>("LocaleType", toString, fromLocaleTypeString);
  show<DateFormat>("DateFormat", toString, fromDateFormatString);
  show<TimeFormat>("TimeFormat", toString, fromTimeFormatString);
  show<PowerDownTimeout>("PowerDownTimeout", toString, fromPowerDownTimeoutString);
  show<BacklightTimeout>("BacklightTimeout", toString, fromBacklightTimeoutString);
  show<LengthUnits>("LengthUnits", toString, fromLengthUnitsString);
  show<PowerLineFrequency>("PowerLineFrequency", toString, fromPowerLineFrequencyString);
  show<ResultStorageLocation>("ResultStorageLocation", toString, fromResultStorageLocationString);
  show<NumericFormat>("NumericFormat", toString, fromNumericFormatString);
  show<IPAddressSource>("IPAddressSource", toString, fromIPAddressSourceString);
  show("Encryption", Encryption::desc);
  show("UsbWifiSecurity", UsbWifiSecurity::desc);
  show("Eap", Eap::desc);
  expectGoldenText(listed, "enumeration_texts");
}

TEST(ModelId, FamiliesAndGenerations) {
  EXPECT_EQ(modelNameList, (std::vector<std::string>{"Orbel", "Quill", "Orbel2", "Quill2"}));
  for (unsigned id = 2990; id < 3010; ++id) {
    const auto model = static_cast<ModelId>(id);
    EXPECT_TRUE(isQuill(model) == (id == 3001 || id == 3003) && isQuill(toString(model)) == isQuill(model)) << id;
    EXPECT_TRUE(isModelV2(model) == (id == 3002 || id == 3003) && isModelV2(toString(model)) == isModelV2(model)) << id;
  }
  ModelId untouched{};
  for (unsigned i = 0; i < 4; ++i) {
    EXPECT_TRUE(modelIdStrToEnum(modelNameList[i].c_str(), untouched) && untouched == 3000 + i) << i;
  }
  EXPECT_FALSE(modelIdStrToEnum("orbel", untouched) || modelIdStrToEnum(nullptr, untouched));
  EXPECT_EQ(untouched, MODEL_ID_QUILL2);
}

TEST(ModuleId, ValidityCategoryAndFiltersOfAllIds) {
  const auto answersOf = [](int id) {
    const auto module = static_cast<ModuleId>(id);
    std::string filters = "filters ";
    for (int filter = -1; filter <= 8; ++filter) {
      if (isValidModulePerCategory(module, static_cast<ModuleCategory>(filter))) filters += std::to_string(filter);
    }
    const int plain = getModuleCategory(module, DFU_MODULE_IS_OTHER),
              dfu = getModuleCategory(module, DFU_MODULE_IS_VALID);
    EXPECT_TRUE(getModuleCategory(module, false) == plain && getModuleCategory(module, true) == dfu) << id;
    EXPECT_EQ(isValidModule(module), *toString(module) != '\0') << id;
    EXPECT_EQ(moduleIdSansDfu(module), id > 9999 ? id - 10000 : id);
    return " " + filters + (isValidModule(module) ? " valid" : "") + (isCopperModule(module) ? " copper" : "") +
           " category " + std::to_string(plain) + ", with updates " + std::to_string(dfu) + "\n";
  };
  std::string table, last;
  const auto add = [&](int id) {
    const std::string answers = answersOf(id);
    if (answers != last) table += "from " + std::to_string(id) + answers;
    last = answers;
  };
  add(std::numeric_limits<int>::min());
  for (int id = -100; id <= 21000; ++id) add(id);
  add(std::numeric_limits<int>::max());
  expectGoldenText(table, "module_ids");
}

TEST(LinkAdapters, TableInSearchOrder) {
  std::string table;
  for (const LinkAdapter& adapter : linkAdapters()) {
    SCOPED_TRACE(adapter.id);
    table += std::to_string(adapter.id) + "|" + adapter.key + "|" + adapter.displayName + "|" +
             std::to_string(adapter.ratingMHz) + "|" + std::to_string(adapter.flags) + "\n";
    EXPECT_EQ(findLinkAdapter(adapter.id), &adapter);
    if (adapter.id == 201 || adapter.id == 1) {
      EXPECT_EQ(adapter.partNumber, nullptr);
      continue;
    }
    EXPECT_EQ(adapter.partNumber, "VLA-" + std::to_string(adapter.id));
    EXPECT_EQ(findLinkAdapterByPartNumber(adapter.partNumber), &adapter);
  }
  expectGoldenText(table, "link_adapters");
}

TEST(LinkAdapters, NoTextAndNoIdOutsideTheTableIsFound) {
  for (const char* text : {"", "VLA-", "VLA-201", "VLA-1", "vla-400", "VLA-400 ", "pla2g"}) {
    EXPECT_EQ(findLinkAdapterByPartNumber(text), nullptr) << text;
  }
  for (const int id : {-1, 999}) EXPECT_EQ(findLinkAdapter(id), nullptr) << id;
}

TEST(ResultVocabulary, MergesBySeverityNotByNumber) {
  const int order[] = {0, 1, 2, 4, 16, 8, 32, 64, 128};  // "Pass acceptable" before "Pass star", the unknown last
  for (const int& a : order) {
    EXPECT_EQ(validateStatus(static_cast<Status>(a)), a != 128);
    for (const int& b : order) {
      auto merged = static_cast<Status>(a);
      mergeStatus(merged, static_cast<Status>(b));
      EXPECT_EQ(merged, &b > &a ? b : a) << a << " and " << b;
    }
  }
  auto unknown = static_cast<Status>(128);
  mergeStatus(unknown, static_cast<Status>(-1));
  EXPECT_EQ(unknown, 128) << "equal ranks keep what was merged";
}

TEST(PFileSectionTypes, NamesNewestVersionsAndClassesOfEveryType) {
  std::string table = "type name version [end 2] [OTDR raw] [OTDR test]\n";
  for (unsigned id = 0; id <= 0x20000; ++id) {
    char const* const name = id <= 0xFFFF ? PFile::sectionIdToString(static_cast<unsigned short>(id)) : nullptr;
    const auto version = id <= 0xFFFF ? Veltra::newestKnownVersion(static_cast<uint16_t>(id)) : boost::none;
    const std::string classes = std::string(PFile::isEnd2Section(id) ? " end2" : "") +
                                (PFile::isOtdrRawSection(id) ? " raw" : "") +
                                (PFile::isOtdrTestSection(id) ? " test" : "");
    if (name == nullptr && !version && classes.empty()) continue;
    if (name != nullptr) {
      EXPECT_EQ(PFile::findSectionType(std::string_view(name))->id, id);
    }
    table += std::to_string(id) + " " + (name != nullptr ? name : "-") + " " +
             (version ? std::to_string(*version) : "-") + classes + "\n";
  }
  expectGoldenText(table, "section_types");
  EXPECT_EQ(PFile::findSectionType("SUMMARY"), nullptr);
  for (unsigned id = 0x80000000u; id < 0x80000200u; ++id) {
    EXPECT_FALSE(PFile::isEnd2Section(id) || PFile::isOtdrRawSection(id) || PFile::isOtdrTestSection(id)) << id;
  }
}

TEST(ReaderStatus, OfEachStreamStatus) {
  std::string codes;  // of packages and of results
  for (int i = -8; i < 3; ++i) {
    codes += std::to_string(PFile::streamOpToReaderStatus(i)) + std::to_string(streamOpToReaderStatus(i)) + " ";
  }
  EXPECT_EQ(codes, "34 34 23 22 33 33 33 33 00 34 34 ");
}
