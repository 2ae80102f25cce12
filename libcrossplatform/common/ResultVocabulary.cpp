#include <libcrossplatform/common/ResultVocabulary.h>

#include <cstddef>
#include <iterator>

#include <libcrossplatform/common/EnumText.h>

namespace Veltra {
namespace {

constexpr EnumText<Status> STATUS_TEXTS[] = {
    {STATUS_NOT_SET, "Not set"},     {STATUS_DONT_SHOW, "Don't show"},
    {STATUS_SHOW, "Show"},           {STATUS_PASS, "Pass"},
    {STATUS_PASS_STAR, "Pass star"}, {STATUS_PASS_ACCEPTABLE, "Pass acceptable"},
    {STATUS_FAIL_STAR, "Fail star"}, {STATUS_FAIL, "Fail"},
};
static_assert(isOneToOne(STATUS_TEXTS));

constexpr EnumText<ResultType> RESULT_TYPE_TEXTS[] = {
    {RESULT_TYPE_NOT_SET, "NOT_SET"},
    {RESULT_TYPE_COPPER, "COPPER"},
    {RESULT_TYPE_FIBER, "FIBER"},
};
static_assert(isOneToOne(RESULT_TYPE_TEXTS));

constexpr EnumText<CableEnd> CABLE_END_TEXTS[] = {{CABLE_END_1, "End 1"}, {CABLE_END_2, "End 2"}};
static_assert(isOneToOne(CABLE_END_TEXTS));

constexpr EnumText<CableEnd> MAIN_REMOTE_TEXTS[] = {
    {CABLE_END_NOT_SET, "notset"},
    {CABLE_END_1, "main"},
    {CABLE_END_2, "remote"},
};
static_assert(isOneToOne(MAIN_REMOTE_TEXTS));

constexpr EnumText<TestType> TEST_TYPE_TEXTS[] = {
    {TEST_TYPE_NOT_SET, "Not Set"},
    {TEST_TYPE_AUTO_OTDR, "Auto OTDR"},
    {TEST_TYPE_MANUAL_OTDR, "Manual OTDR"},
    {TEST_TYPE_DATA_CENTER_OTDR, "DataCenter OTDR"},
    {TEST_TYPE_REAL_TIME_TRACE, "Real Time Trace"},
    {TEST_TYPE_MANUAL_REAL_TIME_TRACE, "Manual Real Time Trace"},
    {TEST_TYPE_GAPFINDER, "Gapfinder"},
    {TEST_TYPE_LAUNCH_COMPENSATION, "Launch Compensation"},
    {TEST_TYPE_PATCH_CORD_TEST, "Patch Cord Test"},
    {TEST_TYPE_PROBE_VIEW, "ProbeView"},
    {TEST_TYPE_OTDR_SELF_TEST, "OTDR Self Test"},
    {TEST_TYPE_VISUAL_FAULT_LOCATOR, "Visual Fault Locator"},
    {TEST_TYPE_POWER_METER, "Power Meter"},
    {TEST_TYPE_LOSS_LENGTH, "Loss Length"},
    {TEST_TYPE_TWISTED_PAIR, "Twisted Pair"},
    {TEST_TYPE_COAX, "Coax"},
    {TEST_TYPE_NVP, "NVP"},
    {TEST_TYPE_COPPER_DIAGNOSTICS_ONLY, "Copper Diagnostics Only"},
    {TEST_TYPE_COPPER_SELF_TEST, "Copper Self Test"},
    {TEST_TYPE_COPPER_SET_REFERENCE, "Copper Set Reference"},
    {TEST_TYPE_OLTS_SELF_TEST, "OLTS Self Test"},
    {TEST_TYPE_OLTS_SET_REFERENCE, "OLTS Set Reference"},
    {TEST_TYPE_OLTS_VERIFY_REFERENCE, "OLTS Verify Reference"},
    {TEST_TYPE_OLTS_SET_REFERENCE_WIZARD, "OLTS Set Reference Wizard",
     TEXT_SHOWN_ONLY},  // never parsed: stored documents depend on it
    {TEST_TYPE_AUTO_LOOPWISE, "Auto Loopwise"},
    {TEST_TYPE_MANUAL_LOOPWISE, "Manual Loopwise"},
    {TEST_TYPE_MANUAL_PON_OTDR, "Manual PON OTDR"},
    {TEST_TYPE_SPLITTER_DETECTION, "Splitter Detection"},
    {TEST_TYPE_AUTO_PON_OTDR, "Auto PON OTDR"},
    {TEST_TYPE_CONNECTOR_QUALITY_OTDR, "Connector Quality OTDR"},
    {TEST_TYPE_DEADZONE_OTDR, "Deadzone OTDR"},
};
static_assert(isOneToOne(TEST_TYPE_TEXTS));

constexpr EnumText<TestMergeFlags> MERGE_FLAG_TEXTS[] = {
    {TEST_MERGE_OK, "ok", TEXT_SHOWN_ONLY},  // not a bit, so it is not parsed
    {TEST_MERGE_GENERAL, "general"},
    {TEST_MERGE_LIMIT, "limit"},
    {TEST_MERGE_CAT, "cat"},
    {TEST_MERGE_MEDIA, "media"},
    {TEST_MERGE_DUPLICATE, "duplicate"},
    {TEST_MERGE_DIFFERENT_MPO_ON_END, "different MPO on end"},
    {TEST_MERGE_MIXED_MPO_WITH_SINGLE, "mixed MPO with single"},
    {TEST_MERGE_IR, "ir"},
    {TEST_MERGE_EXISTS, "exists"},
};
static_assert(isOneToOne(MERGE_FLAG_TEXTS));

/// Position in the order of severity. "Pass acceptable" comes before "Pass star" although its number is larger, and
/// an unknown value comes last: once merged it is never replaced by a known one.
std::size_t severity(Status status) {
  constexpr Status ORDER[] = {STATUS_NOT_SET,         STATUS_DONT_SHOW, STATUS_SHOW,      STATUS_PASS,
                              STATUS_PASS_ACCEPTABLE, STATUS_PASS_STAR, STATUS_FAIL_STAR, STATUS_FAIL};
  for (std::size_t rank = 0; rank < std::size(ORDER); ++rank) {
    if (ORDER[rank] == status) return rank;
  }
  return std::size(ORDER);
}

}  // namespace

const char* toString(Status status) {
  return textOf(STATUS_TEXTS, status);
}

bool fromStatusString(const std::string& text, Status& out) {
  out = STATUS_NOT_SET;
  return valueOf(STATUS_TEXTS, text, out);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers compile against this signature
Status fromStatusString(std::string text) {
  Status status = STATUS_NOT_SET;
  return fromStatusString(text, status) ? status : STATUS_NOT_SET;
}

bool validateStatus(Status status) {
  return severity(status) < std::size(STATUS_TEXTS);
}

void mergeStatus(Status& merged, Status next) {
  if (severity(next) > severity(merged)) merged = next;
}

const char* toString(ResultType type) {
  return textOf(RESULT_TYPE_TEXTS, type);
}

const char* toString(CableEnd end) {
  return textOf(CABLE_END_TEXTS, end);
}

const char* toStringMainRemote(CableEnd end) {
  return textOf(MAIN_REMOTE_TEXTS, end);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers compile against this signature
CableEnd fromCableEndString(std::string text) {
  CableEnd end = CABLE_END_NOT_SET;
  valueOf(CABLE_END_TEXTS, text, end);
  return end;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers compile against this signature
CableEnd fromCableEndMainRemoteString(std::string text) {
  CableEnd end = CABLE_END_NOT_SET;
  valueOf(MAIN_REMOTE_TEXTS, text, end);
  return end;
}

const char* toString(TestType type) {
  return textOf(TEST_TYPE_TEXTS, type);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers compile against this signature
bool fromTestTypeString(std::string text, TestType& out) {
  return valueOf(TEST_TYPE_TEXTS, text, out);
}

const char* toString(TestMergeFlags flag) {
  return textOf(MERGE_FLAG_TEXTS, flag);
}

int32_t fromTestMergeFlagsString(const std::string& text) {
  TestMergeFlags flag = TEST_MERGE_OK;
  return valueOf(MERGE_FLAG_TEXTS, text, flag) ? static_cast<int32_t>(flag) : -1;
}

template <>
gsl::span<const EnumText<Status>> enumTexts<Status>() {
  return STATUS_TEXTS;
}

template <>
gsl::span<const EnumText<ResultType>> enumTexts<ResultType>() {
  return RESULT_TYPE_TEXTS;
}

template <>
gsl::span<const EnumText<CableEnd>> enumTexts<CableEnd>() {
  return CABLE_END_TEXTS;
}

template <>
gsl::span<const EnumText<TestType>> enumTexts<TestType>() {
  return TEST_TYPE_TEXTS;
}

template <>
gsl::span<const EnumText<TestMergeFlags>> enumTexts<TestMergeFlags>() {
  return MERGE_FLAG_TEXTS;
}

}  // namespace Veltra
