#pragma once

// Threads: any number may call these functions at once.

#include <cstdint>
#include <string>

#include <libcrossplatform/common/EnumText.h>
#include <libcrossplatform/logging/Export.h>

/// The enumerations that every stored test result uses. Their texts are part of the file formats: documents and dumps
/// contain them. A toString() gives the empty text for a value outside its table; parsers compare exactly.
namespace Veltra {

/// The verdict on a result or on a part of it.
enum Status : int32_t {
  STATUS_NOT_SET = 0,
  STATUS_DONT_SHOW = 1,
  STATUS_SHOW = 2,
  STATUS_PASS = 4,
  STATUS_PASS_STAR = 8,
  STATUS_PASS_ACCEPTABLE = 16,
  STATUS_FAIL_STAR = 32,
  STATUS_FAIL = 64,
};

VELTRA_EXPORT const char* toString(Status status);
template <>
VELTRA_EXPORT gsl::span<const EnumText<Status>> enumTexts<Status>();
/// @return false, with `out` "Not set", for an unknown text
[[nodiscard]] VELTRA_EXPORT bool fromStatusString(const std::string& text, Status& out);
/// "Not set" for an unknown text.
[[nodiscard]] VELTRA_EXPORT Status fromStatusString(std::string text);
/// True for the values of the list, not for combinations of them.
VELTRA_EXPORT bool validateStatus(Status status);
/// Keeps the more severe verdict. From the least to the most severe: Not set, Don't show, Show, Pass, Pass acceptable,
/// Pass star, Fail star, Fail, any unknown value.
VELTRA_EXPORT void mergeStatus(Status& merged, Status next);

/// The medium of a result.
enum ResultType : int32_t {
  RESULT_TYPE_NOT_SET = 0,
  RESULT_TYPE_COPPER = 1,
  RESULT_TYPE_FIBER = 2,
};

VELTRA_EXPORT const char* toString(ResultType type);
template <>
VELTRA_EXPORT gsl::span<const EnumText<ResultType>> enumTexts<ResultType>();

/// Which end of the link a result belongs to.
enum CableEnd : int32_t {
  CABLE_END_NOT_SET = 0,
  CABLE_END_1 = 1,  ///< the main unit's end
  CABLE_END_2 = 2,  ///< the remote unit's end
};

VELTRA_EXPORT const char* toString(CableEnd end);  ///< "End 1", "End 2"; empty when not set
template <>
VELTRA_EXPORT gsl::span<const EnumText<CableEnd>> enumTexts<CableEnd>();
VELTRA_EXPORT const char* toStringMainRemote(CableEnd end);             ///< "notset", "main", "remote"
VELTRA_EXPORT CableEnd fromCableEndString(std::string text);            ///< not set for an unknown text
VELTRA_EXPORT CableEnd fromCableEndMainRemoteString(std::string text);  ///< not set for an unknown text

/// The kind of a test. Gaps in the numbers are unused.
enum TestType : int32_t {
  TEST_TYPE_NOT_SET = 0,
  TEST_TYPE_AUTO_OTDR = 1,
  TEST_TYPE_MANUAL_OTDR = 2,
  TEST_TYPE_DATA_CENTER_OTDR = 3,
  TEST_TYPE_REAL_TIME_TRACE = 4,
  TEST_TYPE_MANUAL_REAL_TIME_TRACE = 5,
  TEST_TYPE_GAPFINDER = 6,
  TEST_TYPE_LAUNCH_COMPENSATION = 7,
  TEST_TYPE_PATCH_CORD_TEST = 8,
  TEST_TYPE_PROBE_VIEW = 9,
  TEST_TYPE_OTDR_SELF_TEST = 10,
  TEST_TYPE_VISUAL_FAULT_LOCATOR = 11,
  TEST_TYPE_POWER_METER = 12,
  TEST_TYPE_LOSS_LENGTH = 13,
  TEST_TYPE_TWISTED_PAIR = 14,
  TEST_TYPE_COAX = 15,
  TEST_TYPE_NVP = 16,
  TEST_TYPE_COPPER_DIAGNOSTICS_ONLY = 17,
  TEST_TYPE_COPPER_SELF_TEST = 18,
  TEST_TYPE_COPPER_SET_REFERENCE = 19,
  TEST_TYPE_OLTS_SELF_TEST = 22,
  TEST_TYPE_OLTS_SET_REFERENCE = 23,
  TEST_TYPE_OLTS_VERIFY_REFERENCE = 24,
  TEST_TYPE_OLTS_SET_REFERENCE_WIZARD = 25,
  TEST_TYPE_AUTO_LOOPWISE = 26,
  TEST_TYPE_MANUAL_LOOPWISE = 27,
  TEST_TYPE_MANUAL_PON_OTDR = 32,
  TEST_TYPE_SPLITTER_DETECTION = 33,
  TEST_TYPE_AUTO_PON_OTDR = 34,
  TEST_TYPE_CONNECTOR_QUALITY_OTDR = 64,
  TEST_TYPE_DEADZONE_OTDR = 65,
};

VELTRA_EXPORT const char* toString(TestType type);
template <>
VELTRA_EXPORT gsl::span<const EnumText<TestType>> enumTexts<TestType>();
/// @return false, with `out` unchanged, for an unknown text and for "OLTS Set Reference Wizard", which is never parsed
[[nodiscard]] VELTRA_EXPORT bool fromTestTypeString(std::string text, TestType& out);

/// Why a result could not be merged into a set: a set of bits, 0 for none. The bit 2 has no name.
enum TestMergeFlags : int32_t {
  TEST_MERGE_OK = 0,
  TEST_MERGE_GENERAL = 1,
  TEST_MERGE_LIMIT = 4,
  TEST_MERGE_CAT = 8,
  TEST_MERGE_MEDIA = 16,
  TEST_MERGE_DUPLICATE = 32,
  TEST_MERGE_DIFFERENT_MPO_ON_END = 64,
  TEST_MERGE_MIXED_MPO_WITH_SINGLE = 128,
  TEST_MERGE_IR = 256,
  TEST_MERGE_EXISTS = 512,
};

VELTRA_EXPORT const char* toString(TestMergeFlags flag);  ///< of a single value; a combination has no text
template <>
VELTRA_EXPORT gsl::span<const EnumText<TestMergeFlags>> enumTexts<TestMergeFlags>();
/// The bit that has this text; -1 for an unknown text and for "ok", which is not a bit.
VELTRA_EXPORT int32_t fromTestMergeFlagsString(const std::string& text);

}  // namespace Veltra
