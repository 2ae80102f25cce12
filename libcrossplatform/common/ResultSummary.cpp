#include <libcrossplatform/common/ResultSummary.h>

#include <ctime>
#include <tuple>

#include <libcrossplatform/common/TimeUtil.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/serialization/FieldCodec.h>
#include <libcrossplatform/serialization/JsonText.h>

namespace Veltra {
namespace {

/// Local time as ctime() writes it, with its newline; empty for a year of more than four digits.
std::string localTimeText(ResultTime timeStamp) {
  constexpr std::size_t CTIME_BYTES = 26;
  char text[CTIME_BYTES];
  const auto time = static_cast<time_t>(timeStamp);
  tzset();  // ctime() looks at the zone each time, ctime_r() only once
  return ctime_r(&time, text) != nullptr ? text : "";
}

/// All members of a summary, const or not, in the order they are compared.
template <class Summary>
auto membersOf(Summary& s) {
  return std::tie(s.resultName, s.resultType, s.timeStamp, s.status, s.length, s.headroom, s.testFlags, s.numPassTests,
                  s.numPassStarTests, s.numFailTests);
}

template <class List>
Json::Value itemsOf(const List& list, const Dump::DumpFlags& flags) {
  Json::Value items(Json::arrayValue);
  for (const auto& element : list) items.append(element->toJson(flags));
  return items;
}

}  // namespace

ResultSummary::ResultSummary(const char* name, ResultType type, ResultTime time, Status verdict, const DisplayMeas& len,
                             const DisplayMeas& room, unsigned int flags, int passed, int passedStar, int failed)
    : resultType(type),
      timeStamp(time),
      status(verdict),
      length(len),
      headroom(room),
      testFlags(flags),
      numPassTests(passed),
      numPassStarTests(passedStar),
      numFailTests(failed) {
  setResultName(name);
}

ResultSummary::ResultSummary(const ResultSummary& other) : IDumpSerializable(other), IJsonable(other) {
  copyMembers(other);
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment,cert-oop54-cpp): members of a value, each safe to assign to itself
ResultSummary& ResultSummary::operator=(const ResultSummary& other) {
  copyMembers(other);
  return *this;
}

void ResultSummary::copyMembers(const ResultSummary& other) {
  membersOf(*this) = membersOf(other);
}

bool ResultSummary::operator==(const ResultSummary& other) const {
  return membersOf(*this) == membersOf(other);
}

void ResultSummary::clear() {
  static_assert(ResultType() == RESULT_TYPE_NOT_SET && Status() == STATUS_NOT_SET);
  std::apply([](auto&... member) { ((member = std::decay_t<decltype(member)>()), ...); }, membersOf(*this));
}

void ResultSummary::setResultName(const char* name) {
  resultName = name != nullptr ? name : "";
}

// Inlined, because result lists read thousands of these: as a separate call, reading takes a sixth longer.
template <class Fields>
VELTRA_ALWAYS_INLINE void ResultSummary::fields(Fields& f) {
  f.text(SummaryNames::RESULT_NAME, resultName);
  f.i8(SummaryNames::RESULT_TYPE, resultType);
  f.i64(SummaryNames::TIME_STAMP, timeStamp);
  f.i8(SummaryNames::STATUS, status);
  f.record(SummaryNames::LENGTH, length);
  f.record(SummaryNames::HEADROOM, headroom);
  f.u32(SummaryNames::TEST_FLAGS, testFlags);
  // One byte on the wire, though held as int: 200 comes back as -56. Result files of other instruments rely on it.
  f.i8(SummaryNames::NUM_PASS_TESTS, numPassTests);
  f.i8(SummaryNames::NUM_PASS_STAR_TESTS, numPassStarTests);
  f.i8(SummaryNames::NUM_FAIL_TESTS, numFailTests);
}

unsigned ResultSummary::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus ResultSummary::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readHeaded(*this, in);
}

void ResultSummary::dump(Dump::IFormatter&, const Dump::DumpFlags&) const {
  // Deliberately nothing: only the lists are dumped.
}

Json::Value ResultSummary::toJson(const Dump::DumpFlags& flags) const {
  Json::Value object(Json::objectValue);
  object[SummaryNames::RESULT_NAME] = resultName;
  if (flags.level == Dump::DumpFlags::FULL_LEVEL) {
    object[SummaryNames::RESULT_TYPE] = toString(resultType);
    object[SummaryNames::TIME_STAMP] = localTimeText(timeStamp);
    object[SummaryNames::STATUS] = toString(status);
    object[SummaryNames::LENGTH] = length.toString();
    object[SummaryNames::HEADROOM] = headroom.toString();
    object[SummaryNames::TEST_FLAGS] = bitsToJson(testFlags);
    object[SummaryNames::NUM_PASS_TESTS] = numPassTests;
    object[SummaryNames::NUM_PASS_STAR_TESTS] = numPassStarTests;
    object[SummaryNames::NUM_FAIL_TESTS] = numFailTests;
  }
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

template <class Fields>
void ResultSummaryList::fields(Fields& f) {
  fields16(f);
}

unsigned ResultSummaryList::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeHeaded(*this, out);
}

Marshal::StreamOpStatus ResultSummaryList::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readHeaded(*this, in);
}

void ResultSummaryList::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  formatter.text(Dump::styledJson(toJson(flags)).c_str(), flags.level);
}

Json::Value ResultSummaryList::toJson(const Dump::DumpFlags& flags) const {
  Json::Value object(Json::objectValue);
  object["size"] = static_cast<unsigned>(size());
  if (flags.level == Dump::DumpFlags::FULL_LEVEL) object["items"] = itemsOf(*this, flags);
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

ResultPathSummary::ResultPathSummary(std::string name, ResultType type, ResultTime time, std::string path,
                                     unsigned int bytes)
    : resultName(std::move(name)), resultType(type), timeStamp(time), pathName(std::move(path)), filesize(bytes) {}

std::string ResultPathSummary::getDateTimeString() const {
  return isoTime(static_cast<time_t>(timeStamp));
}

bool ResultPathSummary::operator==(const ResultPathSummary& other) const {
  const auto members = [](const ResultPathSummary& s) {
    return std::tie(s.resultName, s.resultType, s.timeStamp, s.pathName, s.filesize);
  };
  return members(*this) == members(other);
}

template <class Fields>
void ResultPathSummary::fields(Fields& f) {
  f.text("resultName", resultName);
  f.i8("resultType", resultType);
  f.i64("timeStamp", timeStamp);
  f.text("pathName", pathName);
  f.u32("filesize", filesize);
}

unsigned ResultPathSummary::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeInline(*this, out);
}

Marshal::StreamOpStatus ResultPathSummary::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readInline(*this, in);
}

void ResultPathSummary::dump(Dump::IFormatter&, const Dump::DumpFlags&) const {
  // Deliberately nothing, as for ResultSummary.
}

Json::Value ResultPathSummary::toJson(const Dump::DumpFlags&) const {
  Json::Value object(Json::objectValue);
  object["resultName"] = resultName;
  object["resultType"] = toString(resultType);
  object["timeStamp"] = localTimeText(timeStamp);
  object["pathName"] = pathName;
  object["filesize"] = filesize;
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

const ResultPathSummary* ResultPathSummaryList::find(std::string_view name) const {
  const ResultPathSummary* found = nullptr;
  // The whole list is searched: of several with one name the last is the current one.
  for (const std::unique_ptr<ResultPathSummary>& element : *this) {
    if (element->resultName == name) found = element.get();
  }
  return found;
}

template <class Fields>
void ResultPathSummaryList::fields(Fields& f) {
  fields16(f);
}

unsigned ResultPathSummaryList::serialize(Marshal::IObjectWriter& out) {
  return Marshal::writeInline(*this, out);
}

Marshal::StreamOpStatus ResultPathSummaryList::deserialize(Marshal::IObjectReader& in) {
  return Marshal::readInline(*this, in);
}

void ResultPathSummaryList::dump(Dump::IFormatter& formatter, const Dump::DumpFlags& flags) const {
  formatter.text(Dump::styledJson(toJson(flags)).c_str(), flags.level);
}

Json::Value ResultPathSummaryList::toJson(const Dump::DumpFlags& flags) const {
  Json::Value object(Json::objectValue);
  object["size"] = static_cast<unsigned>(size());
  object["items"] = itemsOf(*this, flags);
  return rootedJson(JSON_ROOT_NAME, std::move(object));
}

}  // namespace Veltra
