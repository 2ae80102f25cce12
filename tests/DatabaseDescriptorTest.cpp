#include <libcrossplatform/common/DatabaseDescriptor.h>

#include <gmock/gmock.h>

#include <libcrossplatform/serialization/Header.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

constexpr auto LIMITS = static_cast<DATABASE_TYPE>(7);
constexpr auto CABLES = static_cast<DATABASE_TYPE>(-7);

/// Bytes of a descriptor in front of its path: the version record and the type.
constexpr std::size_t PATH_AT = Marshal::Header::BYTES + 4 * 2 + 4;

DatabaseDescriptor sampleDescriptor(DATABASE_TYPE type = CABLES) {
  return DatabaseDescriptor(DatabaseVersion(1, 2, 3, 4), type, "db/limits.sql", "V2.0");
}

DatabaseDescriptorList listOf(std::size_t count) {
  DatabaseDescriptorList list;
  for (std::size_t i = 0; i < count; ++i) list.add(std::make_unique<DatabaseDescriptor>(sampleDescriptor()));
  return list;
}

}  // namespace

TEST(DatabaseDescriptor, Wire) {
  DatabaseDescriptor d = sampleDescriptor();
  expectRoundTrip(d);
  expectEveryPrefixRefused(d);
  expectGolden(d, "database_descriptor");
  const Bytes bytes = bytesOf(d);
  EXPECT_EQ(Bytes(bytes.begin() + PATH_AT, bytes.begin() + PATH_AT + 4), (Bytes{0, 0, 0, 14}));
  EXPECT_EQ(bytes[PATH_AT + 4 + 13], 0);
}

TEST(DatabaseDescriptor, PathIsReadUpToItsLimitAndWholeButForTheLastZero) {
  struct Row {
    std::size_t characters;
    int status;
  };
  for (const Row& row : {Row{0, 0}, Row{1022, 0}, Row{1023, 0}, Row{1024, -1}, Row{5000, -1}}) {
    SCOPED_TRACE(row.characters);
    DatabaseDescriptor d = sampleDescriptor();
    d.filePath.assign(row.characters, 'p');
    DatabaseDescriptor read;
    EXPECT_EQ(readFrom(read, bytesOf(d)), row.status);
    EXPECT_EQ(read == d, row.status == 0);
  }
  DatabaseDescriptor d = sampleDescriptor();
  d.filePath = std::string("a\0b", 3);
  DatabaseDescriptor read;
  EXPECT_EQ(readFrom(read, bytesOf(d)), 0);
  EXPECT_EQ(read.filePath, d.filePath);
}

TEST(DatabaseDescriptor, RefusedPathLengthsAndCodesOfTheVersion) {
  DatabaseDescriptor d = sampleDescriptor();
  const Bytes good = bytesOf(d);
  Bytes zero = good;
  zero[PATH_AT + 3] = 0;
  Bytes huge = good;
  for (std::size_t i = 0; i < 4; ++i) huge[PATH_AT + i] = 0xFF;
  Bytes newerVersion = good;
  newerVersion[3] = 2;
  Bytes otherRecord = good;
  otherRecord[7] = 9;
  EXPECT_EQ(readFrom(d, zero), -1);
  EXPECT_EQ(readFrom(d, huge), -1);
  EXPECT_EQ(readFrom(d, newerVersion), -5);
  EXPECT_EQ(readFrom(d, otherRecord), -1);
  EXPECT_EQ(readFrom(d, Bytes(good.begin(), good.begin() + PATH_AT + 2)), -3) << "cut in the length";
}

TEST(DatabaseDescriptorDeathTest, PathWithoutTerminatingZeroIsFatal) {
  DatabaseDescriptor d = sampleDescriptor();
  Bytes bytes = bytesOf(d);
  bytes[PATH_AT + 4 + 13] = 'x';
  EXPECT_DEATH(readFrom(d, bytes), testing::HasSubstr("Assertion failed: temp[temp.length() - 1] == '\\0', "
                                                      "libcrossplatform/common/DatabaseDescriptor:"));
}

TEST(DatabaseDescriptor, EqualityAndJsonHaveEveryMember) {
  const DatabaseDescriptor sample = sampleDescriptor();
  const Json::Value json = sample.toJson(level(0))["DatabaseDescriptor"];
  EXPECT_EQ(json["DatabaseVersion"]["object"], 3);
  EXPECT_EQ(json["dbType"], -7);
  EXPECT_EQ(json["filePath"], "db/limits.sql");
  EXPECT_EQ(json["minReqFirmwareVersion"], "V2.0");
  EXPECT_EQ(json.size(), 4u);
  EXPECT_EQ(sampleDescriptor(), sample);
  EXPECT_NE(DatabaseDescriptor({1, 2, 3, 5}, CABLES, "db/limits.sql", "V2.0"), sample);
  EXPECT_NE(DatabaseDescriptor({1, 2, 3, 4}, LIMITS, "db/limits.sql", "V2.0"), sample);
  EXPECT_NE(DatabaseDescriptor({1, 2, 3, 4}, CABLES, "db/limits", "V2.0"), sample);
  EXPECT_NE(DatabaseDescriptor({1, 2, 3, 4}, CABLES, "db/limits.sql", "V2"), sample);
}

TEST(DatabaseDescriptorList, Wire) {
  DatabaseDescriptorList list = listOf(1);
  list.add(std::make_unique<DatabaseDescriptor>(DatabaseVersion(), LIMITS, "", ""));
  expectRoundTrip(list);
  expectEveryPrefixRefused(list);
  expectGolden(list, "database_descriptor_list_v1");
}

TEST(DatabaseDescriptorList, EmptyAndOverlongListsAreWrittenButNotRead) {
  struct Row {
    std::size_t count;
    int status;
  };
  for (const Row& row : {Row{0, -1}, Row{1, 0}, Row{50, 0}, Row{51, -1}}) {
    SCOPED_TRACE(row.count);
    DatabaseDescriptorList list = listOf(row.count);
    DatabaseDescriptorList read = listOf(3);
    EXPECT_EQ(readFrom(read, bytesOf(list)), row.status);
    EXPECT_EQ(read.size(), row.status == 0 ? row.count : 0);
  }
}

TEST(DatabaseDescriptorList, FailedDescriptorGivesItsOwnCodeAndClearsTheList) {
  DatabaseDescriptorList list = listOf(3);
  const Bytes good = bytesOf(list);
  const std::size_t second = Marshal::Header::BYTES + 4 + (good.size() - Marshal::Header::BYTES - 4) / 3;
  struct Row {
    const char* name;
    std::size_t at;
    uint8_t byte;
    int status;
  };
  const Row rows[] = {{"count", 15, 51, -1},
                      {"count of what is not there", 15, 4, -3},
                      {"other class", second + 7, 9, -1},
                      {"no header", second, 0, -2},
                      {"newer version record", second + 3, 2, -5},
                      {"length of the version record", second + 11, 7, -4},
                      {"path length", second + PATH_AT + 2, 0xFF, -1},
                      {"length of the list", 11, 0, -4}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Bytes bad = good;
    bad[row.at] = row.byte;
    DatabaseDescriptorList read = listOf(1);
    EXPECT_EQ(readFrom(read, bad), row.status);
    EXPECT_TRUE(read.empty());
  }
  DatabaseDescriptorList read;
  EXPECT_EQ(readFrom(read, Bytes(good.begin(), good.begin() + 14)), -3) << "cut in the count";
}

TEST(DatabaseDescriptorList, CopiesAreDeep) {
  const DatabaseDescriptorList list = listOf(2);
  DatabaseDescriptorList copy = list;
  EXPECT_EQ(copy, list);
  copy[1].filePath = "elsewhere";
  EXPECT_NE(copy, list);
  EXPECT_EQ(list[1].filePath, "db/limits.sql");
  copy = list;
  EXPECT_EQ(copy, list);
  DatabaseDescriptorList& same = copy;
  copy = same;
  EXPECT_EQ(copy, list);
  EXPECT_NE(copy, listOf(3));
}

TEST(DatabaseDescriptorList, FindsTheFirstOfAType) {
  DatabaseDescriptorList list;
  for (const char* path : {"first", "second"}) {
    list.add(std::make_unique<DatabaseDescriptor>(DatabaseVersion(), LIMITS, path, ""));
  }
  ASSERT_NE(list.getDatabaseDescriptor(LIMITS), nullptr);
  EXPECT_EQ(list.getDatabaseDescriptor(LIMITS)->filePath, "first");
  EXPECT_EQ(std::as_const(list).getDatabaseDescriptor(CABLES), nullptr);
  CapturedAsserts captured;
  list.add(nullptr);
  EXPECT_EQ(list.size(), 2u);
  EXPECT_EQ(captured.reports().size(), 1u);
}

TEST(DatabaseDescriptorList, JsonKeepsTheOrder) {
  DatabaseDescriptorList list = listOf(1);
  list.add(std::make_unique<DatabaseDescriptor>(sampleDescriptor(LIMITS)));
  const Json::Value items = list.toJson(level(2))["DatabaseDescriptorList"];
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items[0]["DatabaseDescriptor"]["dbType"], -7);
  EXPECT_EQ(items[1]["DatabaseDescriptor"]["dbType"], 7);
  EXPECT_EQ(dumpOf(list), Dump::toJsonString(list));
  EXPECT_TRUE(listOf(0).toJson(level(2))["DatabaseDescriptorList"].isArray());
}
