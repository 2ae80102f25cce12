#include <libcrossplatform/common/PFileSectionTypes.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include <libcrossplatform/common/ResultFile.h>

namespace PFile {
namespace {

constexpr int32_t UNVERSIONED = SectionType::UNVERSIONED;
constexpr uint8_t END_2 = SectionType::CLASS_END_2;
constexpr uint8_t OTDR_RAW = SectionType::CLASS_OTDR_RAW;
constexpr uint8_t OTDR_TEST = SectionType::CLASS_OTDR_TEST;

// The classes are kept as listed, not derived from the names: OTDR_BIDI_RAW is not a raw section and the OTDR_BIDI
// sections are not end-2 sections, while OTDR_BIDI_TEST is a test section.
constexpr SectionType SECTION_TYPES[] = {
    {5, "SYS_MODULEINFO", UNVERSIONED, 0},
    {100, "CMD_JOURNAL", UNVERSIONED, 0},
    {SECTION_LIMIT_MANIFEST, "LIMIT_MANIFEST", UNVERSIONED, 0},
    {SECTION_CABLE_MANIFEST, "CABLE_MANIFEST", UNVERSIONED, 0},
    {103, "DB_VERSION", UNVERSIONED, 0},
    {104, "ORBEL_SETTINGS", UNVERSIONED, 0},
    {105, "SHARED_SETTINGS", UNVERSIONED, 0},
    {106, "OTDR_LAUNCH_COMP", UNVERSIONED, 0},
    {110, "OTDR_SPAN", UNVERSIONED, 0},
    {SECTION_RESULT_SUMMARY, "SECTTYPE_RESULT_SUMMARY", Veltra::RESULT_SUMMARY_SECTION_VERSION, 0},
    {300, "OTDR_END_1_TEST", 12, OTDR_TEST},
    {301, "OTDR_END_1_PLOT", 3, 0},
    {302, "OTDR_END_1_RAW", 1, OTDR_RAW},
    {303, "OTDR_END_2_TEST", 12, END_2 | OTDR_TEST},
    {304, "OTDR_END_2_PLOT", 3, END_2},
    {305, "OTDR_END_2_RAW", 1, END_2 | OTDR_RAW},
    {306, "PATCH_CORD_TEST_END_1_TEST", 12, OTDR_TEST},
    {307, "PATCH_CORD_TEST_END_1_PLOT", 3, 0},
    {308, "PATCH_CORD_TEST_END_1_RAW", 1, OTDR_RAW},
    {309, "PATCH_CORD_TEST_END_2_TEST", 12, END_2 | OTDR_TEST},
    {310, "PATCH_CORD_TEST_END_2_PLOT", 3, END_2},
    {311, "PATCH_CORD_TEST_END_2_RAW", 1, END_2 | OTDR_RAW},
    {312, "CHANNEL_MAP_TEST", 12, OTDR_TEST},
    {313, "CHANNEL_MAP_PLOT", 3, 0},
    {314, "CHANNEL_MAP_RAW", 1, OTDR_RAW},
    {315, "REAL_TIME_TRACE_END_1_TEST", 12, OTDR_TEST},
    {316, "REAL_TIME_TRACE_END_1_PLOT", 3, 0},
    {317, "REAL_TIME_TRACE_END_1_RAW", 1, OTDR_RAW},
    {318, "REAL_TIME_TRACE_END_2_TEST", 12, END_2 | OTDR_TEST},
    {319, "REAL_TIME_TRACE_END_2_PLOT", 3, END_2},
    {320, "REAL_TIME_TRACE_END_2_RAW", 1, END_2 | OTDR_RAW},
    {321, "LOSS_LENGTH_TEST", 7, 0},
    {323, "POWER_METER_END_1_TEST", 2, 0},
    {324, "POWER_METER_END_2_TEST", 2, END_2},
    {325, "IMAGE_END_1_TEST", 7, 0},
    {326, "IMAGE_END_1_IMAGE", 2, 0},
    {327, "IMAGE_END_2_TEST", 7, END_2},
    {328, "IMAGE_END_2_IMAGE", 2, END_2},
    {330, "OTDR_BIDI_TEST", 12, OTDR_TEST},
    {331, "OTDR_BIDI_PLOT", 3, 0},
    {332, "OTDR_BIDI_RAW", 1, 0},
    {700, nullptr, 6, 0},
    {701, nullptr, 0, 0},
    {702, nullptr, 0, 0},
    {900, "SECTTYPE_COPMEAS_DATA", UNVERSIONED, 0},
    {901, "SECTTYPE_COPCAL_DATA", UNVERSIONED, 0},
    {910, "SECTTYPE_COPINFO_JSON", UNVERSIONED, 0},
    {920, "SECTTYPE_COPMEAS_JSON", UNVERSIONED, 0},
    {921, "SECTTYPE_COPMEAS_TRACECFG", UNVERSIONED, 0},
};

constexpr bool isInOrderAndUnique() {
  for (std::size_t i = 0; i < std::size(SECTION_TYPES); ++i) {
    if (i > 0 && SECTION_TYPES[i - 1].id >= SECTION_TYPES[i].id) return false;
    for (std::size_t j = 0; j < i && SECTION_TYPES[i].name != nullptr; ++j) {
      if (SECTION_TYPES[j].name != nullptr && std::string_view(SECTION_TYPES[j].name) == SECTION_TYPES[i].name)
        return false;
    }
  }
  return true;
}
static_assert(isInOrderAndUnique(), "types are looked up by halving the table");

bool isOfClass(unsigned int id, uint8_t sectionClass) {
  const SectionType* const type = findSectionType(id);
  return type != nullptr && (type->classes & sectionClass) != 0;
}

}  // namespace

gsl::span<const SectionType> sectionTypes() {
  return SECTION_TYPES;
}

const SectionType* findSectionType(unsigned int id) {
  const SectionType* const found =
      std::lower_bound(std::begin(SECTION_TYPES), std::end(SECTION_TYPES), id,
                       [](const SectionType& type, unsigned int i) { return type.id < i; });
  return found != std::end(SECTION_TYPES) && found->id == id ? found : nullptr;
}

const SectionType* findSectionType(std::string_view name) {
  for (const SectionType& type : SECTION_TYPES) {
    if (type.name != nullptr && name == type.name) return &type;
  }
  return nullptr;
}

char const* sectionIdToString(unsigned short id) {
  const SectionType* const type = findSectionType(id);
  return type != nullptr ? type->name : nullptr;
}

bool isEnd2Section(unsigned int id) {
  return isOfClass(id, END_2);
}

bool isOtdrRawSection(unsigned int id) {
  return isOfClass(id, OTDR_RAW);
}

bool isOtdrTestSection(unsigned int id) {
  return isOfClass(id, OTDR_TEST);
}

}  // namespace PFile
