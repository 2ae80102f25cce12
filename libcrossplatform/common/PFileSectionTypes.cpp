#include <libcrossplatform/common/PFileSectionTypes.h>

#include <libcrossplatform/common/EnumText.h>

namespace PFile {
namespace {

constexpr Veltra::EnumText<uint16_t> SECTION_NAMES[] = {
    {5, "SYS_MODULEINFO"},
    {100, "CMD_JOURNAL"},
    {101, "LIMIT_MANIFEST"},
    {102, "CABLE_MANIFEST"},
    {103, "DB_VERSION"},
    {104, "ORBEL_SETTINGS"},
    {105, "SHARED_SETTINGS"},
    {106, "OTDR_LAUNCH_COMP"},
    {110, "OTDR_SPAN"},
    {200, "SECTTYPE_RESULT_SUMMARY"},
    {300, "OTDR_END_1_TEST"},
    {301, "OTDR_END_1_PLOT"},
    {302, "OTDR_END_1_RAW"},
    {303, "OTDR_END_2_TEST"},
    {304, "OTDR_END_2_PLOT"},
    {305, "OTDR_END_2_RAW"},
    {306, "PATCH_CORD_TEST_END_1_TEST"},
    {307, "PATCH_CORD_TEST_END_1_PLOT"},
    {308, "PATCH_CORD_TEST_END_1_RAW"},
    {309, "PATCH_CORD_TEST_END_2_TEST"},
    {310, "PATCH_CORD_TEST_END_2_PLOT"},
    {311, "PATCH_CORD_TEST_END_2_RAW"},
    {312, "CHANNEL_MAP_TEST"},
    {313, "CHANNEL_MAP_PLOT"},
    {314, "CHANNEL_MAP_RAW"},
    {315, "REAL_TIME_TRACE_END_1_TEST"},
    {316, "REAL_TIME_TRACE_END_1_PLOT"},
    {317, "REAL_TIME_TRACE_END_1_RAW"},
    {318, "REAL_TIME_TRACE_END_2_TEST"},
    {319, "REAL_TIME_TRACE_END_2_PLOT"},
    {320, "REAL_TIME_TRACE_END_2_RAW"},
    {321, "LOSS_LENGTH_TEST"},
    {323, "POWER_METER_END_1_TEST"},
    {324, "POWER_METER_END_2_TEST"},
    {325, "IMAGE_END_1_TEST"},
    {326, "IMAGE_END_1_IMAGE"},
    {327, "IMAGE_END_2_TEST"},
    {328, "IMAGE_END_2_IMAGE"},
    {330, "OTDR_BIDI_TEST"},
    {331, "OTDR_BIDI_PLOT"},
    {332, "OTDR_BIDI_RAW"},
    {900, "SECTTYPE_COPMEAS_DATA"},
    {901, "SECTTYPE_COPCAL_DATA"},
    {910, "SECTTYPE_COPINFO_JSON"},
    {920, "SECTTYPE_COPMEAS_JSON"},
    {921, "SECTTYPE_COPMEAS_TRACECFG"},
};
static_assert(Veltra::isOneToOne(SECTION_NAMES));

/// Bit i of `mask` stands for id `base` + i. Ids below the base wrap to large numbers.
bool isInSet(unsigned int id, unsigned int base, unsigned int bound, uint32_t mask) {
  const unsigned int bit = id - base;
  return bit <= bound && (mask >> bit & 1u) != 0;
}

}  // namespace

char const* sectionIdToString(unsigned short id) {
  return Veltra::textOf<uint16_t>(SECTION_NAMES, id, nullptr);
}

bool isEnd2Section(unsigned int id) {
  return isInSet(id, 303, 25, 0x032381C7);
}

bool isOtdrRawSection(unsigned int id) {
  return isInSet(id, 302, 18, 0x00049249);
}

bool isOtdrTestSection(unsigned int id) {
  return isInSet(id, 300, 30, 0x40049249);
}

}  // namespace PFile
