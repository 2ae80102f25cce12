#pragma once

// Threads: one at a time may use an object, or several that only call its const functions; free functions any number.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <libcrossplatform/common/DisplayMeas.h>
#include <libcrossplatform/common/RecordList.h>
#include <libcrossplatform/common/ResultVocabulary.h>
#include <libcrossplatform/serialization/IJsonable.h>

namespace Veltra {

/// The names of a summary's members, in JSON and where its fields are traced.
namespace SummaryNames {
///@{
/// Named after the member of ResultSummary.
constexpr char RESULT_NAME[] = "resultName";
constexpr char RESULT_TYPE[] = "resultType";
constexpr char TIME_STAMP[] = "timeStamp";
constexpr char STATUS[] = "status";
constexpr char LENGTH[] = "length";
constexpr char HEADROOM[] = "headroom";
constexpr char TEST_FLAGS[] = "testFlags";
constexpr char NUM_PASS_TESTS[] = "numPassTests";
constexpr char NUM_PASS_STAR_TESTS[] = "numPassStarTests";
constexpr char NUM_FAIL_TESTS[] = "numFailTests";
///@}
}  // namespace SummaryNames

/// Seconds since 1970-01-01 UTC: a long, that of a desk also where a module in a browser has a shorter one.
#ifdef __wasm__
using ResultTime = long long;
#else
using ResultTime = long;
#endif

/// The small record that stands for one saved test result in result lists.
/// A plain value: default-constructed cleared, copied freely. On the wire: headed record, docs/format.md#resultsummary.
class VELTRA_EXPORT ResultSummary : public Marshal::IDumpSerializable, public Dump::IJsonable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x510001;
  static constexpr bool IS_FLAT = true;  ///< numbers, texts and measurements, all of them on the wire
  static constexpr const char* JSON_ROOT_NAME = "ResultSummary";

  ResultSummary() = default;
  ResultSummary(const char* name, ResultType type, ResultTime time, Status verdict, const DisplayMeas& len,
                const DisplayMeas& room, unsigned int flags, int passed, int passedStar, int failed);
  ResultSummary(const ResultSummary& other);
  ResultSummary& operator=(const ResultSummary& other);
  /// Copies all of it, as operator= does; from itself it does nothing.
  void copyMembers(const ResultSummary& other);

  /// Every member equal. Measurements compare their values as ScaledInt does: a summary whose length or headroom is not
  /// a number equals nothing, itself included.
  bool operator==(const ResultSummary& other) const;
  bool operator!=(const ResultSummary& other) const { return !(*this == other); }

  /// The member resultName.
  const std::string& getResultName() const { return resultName; }
  /// @param name  null counts as empty
  void setResultName(const char* name);
  void clear();

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the name could not be read; header and measurement codes unchanged. On failure: partly filled,
  /// clear() it.
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// Writes nothing: a single summary does not show itself in dumps, only lists do.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"ResultSummary": {...}}; below and above the full level only the name. The time stamp is local time, as ctime()
  /// writes it, with its newline. Fatal where ScaledInt::toString() is.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

  ResultType resultType = RESULT_TYPE_NOT_SET;  ///< the medium
  ResultTime timeStamp = 0;                     ///< when the result was taken, s since 1970-01-01 UTC
  Status status = STATUS_NOT_SET;               ///< overall verdict
  DisplayMeas length;                           ///< headline length, m
  DisplayMeas headroom;                         ///< headline headroom, dB; negative where the limit is missed
  unsigned int testFlags = 0;                   ///< bit i set: the test with flag value 2^i is contained
  int numPassTests =
      0;  ///< tests that passed; one signed byte on the wire, like the other two counts: 200 comes back as -56
  int numPassStarTests = 0;  ///< tests with the verdict pass star
  int numFailTests = 0;      ///< tests that failed
  std::string resultName;    ///< as the user sees it

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

/// Summaries in the order they were added. On the wire: headed record with a 16-bit count, which is not range-checked:
/// a longer list writes the count modulo 65536 and all its elements.
class VELTRA_EXPORT ResultSummaryList : public Marshal::IDumpSerializable, public RecordList<ResultSummary> {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr uint32_t SERIAL_TYPE_ID = 0x510002;
  static constexpr const char* JSON_ROOT_NAME = "ResultSummaryList";

  /// Appends a summary. Null is reported as an assertion, and nothing is added.
  void add(std::unique_ptr<ResultSummary> p) { addChecked(std::move(p), "libcrossplatform/common/ResultSummary", 104); }

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -1 an element failed: those before it stay; header codes unchanged
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// The styled text of toJson() with the same flags.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"ResultSummaryList": {"size": n}}, at the full level with "items".
  Json::Value toJson(const Dump::DumpFlags& flags) const;

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

/// The lighter record for a result held as a file. On the wire: versioned inline record,
/// docs/format.md#resultpathsummary.
class VELTRA_EXPORT ResultPathSummary : public Marshal::IDumpSerializable, public Dump::IJsonable {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr Marshal::StreamOpStatus TOO_NEW_STATUS = Marshal::STREAM_INLINE_TOO_NEW;
  static constexpr const char* JSON_ROOT_NAME = "ResultPathSummary";

  ResultPathSummary() = default;
  ResultPathSummary(std::string name, ResultType type, ResultTime time, std::string path, unsigned int bytes);

  /// The time stamp as UTC in the form 2019-03-04T05:06:07; empty when it cannot be broken down.
  std::string getDateTimeString() const;
  bool operator==(const ResultPathSummary& other) const;
  bool operator!=(const ResultPathSummary& other) const { return !(*this == other); }
  void clear() { *this = ResultPathSummary(); }

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -3 the stream ran out; -6 version byte above 1: nothing more is read
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  /// Writes nothing, as for ResultSummary.
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"ResultPathSummary": {...}}, all members at every level; the time stamp as in ResultSummary.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

  std::string resultName;                       ///< as the user sees it
  ResultType resultType = RESULT_TYPE_NOT_SET;  ///< the medium
  ResultTime timeStamp = 0;                     ///< s since 1970-01-01 UTC
  std::string pathName;                         ///< of the file, as it was opened
  unsigned int filesize = 0;                    ///< bytes

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

/// Path summaries in the order they were added. On the wire: versioned inline record with a 16-bit count.
class VELTRA_EXPORT ResultPathSummaryList : public Marshal::IDumpSerializable,
                                            public Dump::IJsonable,
                                            public RecordList<ResultPathSummary> {
 public:
  static constexpr uint8_t CLASS_VERSION = 1;
  static constexpr Marshal::StreamOpStatus TOO_NEW_STATUS = Marshal::STREAM_INLINE_TOO_NEW;
  static constexpr const char* JSON_ROOT_NAME = "ResultPathSummaryList";

  /// Appends a path summary. Null is reported as an assertion, and nothing is added.
  void add(std::unique_ptr<ResultPathSummary> p) {
    addChecked(std::move(p), "libcrossplatform/common/ResultSummary", __LINE__);
  }
  /// The last element of that name, null when there is none. Owned by the list.
  const ResultPathSummary* find(std::string_view name) const;

  unsigned serialize(Marshal::IObjectWriter& out) override;
  /// @return 0; -1 an element failed: those before it stay; -3 the stream ran out; -6 version byte above 1
  [[nodiscard]] Marshal::StreamOpStatus deserialize(Marshal::IObjectReader& in) override;
  void dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const override;
  /// {"ResultPathSummaryList": {"size": n, "items": [...]}} at every level.
  Json::Value toJson(const Dump::DumpFlags& flags) const override;

 private:
  friend class Marshal::FieldAccess;
  template <class Fields>
  VELTRA_HIDDEN void fields(Fields& f);
};

}  // namespace Veltra
