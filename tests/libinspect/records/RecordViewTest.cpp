#include <libinspect/records/RecordView.h>

#include <set>

#include <libcrossplatform/common/RecordTypes.h>
#include <libcrossplatform/common/Settings.h>

#include "RecordTesting.h"

namespace Inspect {
namespace {

// Adding a row to the records makes this fail until all that goes by the rows knows it.
TEST(RecordView, EveryRecordIsDecodedAndSettingsAreMade) {
  for (const Veltra::RecordType& type : Veltra::recordTypes()) {
    SCOPED_TRACE(type.name);
    Marshal::Header header(type.id, 1);
    const DecodedRecord record = decodeRecord(RecordTesting::bytesOf(header));
    EXPECT_NE(record.outcome, DecodedRecord::NO_RECORD) << "no decoder";
    EXPECT_EQ(record.name, type.name);
    const std::string name = type.name, settings = "Settings";
    const bool isSettings = name.size() > settings.size() && name.rfind(settings) == name.size() - settings.size();
    const std::unique_ptr<Veltra::Settings> made = Veltra::Settings::create(type.id);
    ASSERT_EQ(made != nullptr, isSettings) << "what the factory makes";
    if (made == nullptr) continue;
    EXPECT_EQ(decodeRecord(RecordTesting::bytesOf(*made)).id, type.id);
  }
}

/// The names of all members of a document.
std::set<std::string> keysOf(const Json::Value& json) {
  std::set<std::string> keys;
  if (json.isObject()) {
    for (const std::string& key : json.getMemberNames()) keys.insert(key);
  }
  if (json.isObject() || json.isArray()) {
    for (const Json::Value& value : json) keys.merge(keysOf(value));
  }
  return keys;
}

TEST(RecordView, EveryFieldHasANameAndIsInTheJson) {
  // What the JSON does not show, or under the name of another field.
  const std::set<std::string> others = {"header", "count", "json", "customerVersion"};
  std::set<std::string> records;
  for (const auto& entry : std::filesystem::directory_iterator(RecordTesting::dataPath("good"))) {
    std::vector<std::string> paths;
    const DecodedRecord record = decodeRecord(RecordTesting::fileBytes(entry.path()),
                                              [&paths](const TracedField& field) { paths.push_back(field.path); });
    if (record.outcome != DecodedRecord::DECODED) continue;
    SCOPED_TRACE(entry.path());
    records.insert(record.name);
    const std::set<std::string> keys = keysOf(record.toJson(true));
    for (const std::string& path : paths) {
      bool isThere = false;
      std::istringstream names(path.substr(record.name.size()));
      for (std::string name; std::getline(names, name, '.');) {
        isThere = isThere || others.count(name) > 0 || (keys.count(name) > 0 && name.find('[') == std::string::npos);
      }
      EXPECT_TRUE(isThere) << path;
    }
  }
  EXPECT_EQ(records.size(), Veltra::recordTypes().size()) << "a record without a golden file";
}

}  // namespace
}  // namespace Inspect
