#include <libcrossplatform/common/DatabaseDescriptor.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

constexpr auto LIMITS = static_cast<DATABASE_TYPE>(7);
constexpr auto CABLES = static_cast<DATABASE_TYPE>(-7);

DatabaseDescriptor sampleDescriptor() {
  return DatabaseDescriptor(DatabaseVersion(1, 2, 3, 4), CABLES, "db/limits.sql", "V2.0");
}

DatabaseDescriptorList listOf(std::size_t count) {
  DatabaseDescriptorList list;
  for (std::size_t i = 0; i < count; ++i) list.add(std::make_unique<DatabaseDescriptor>(sampleDescriptor()));
  return list;
}

}  // namespace

TEST(DatabaseDescriptor, Wire) {
  expectWire(sampleDescriptor(), "database_descriptor");
}

TEST(DatabaseDescriptor, PathIsReadUpToItsLimitAndWholeButForTheLastZero) {
  for (const std::size_t size : {0u, 1022u, 1023u, 1024u, 5000u}) {
    DatabaseDescriptor d = sampleDescriptor(), read;
    d.filePath.assign(size, '\0');
    EXPECT_EQ(readFrom(read, bytesOf(d)), size > 1023 ? -1 : 0) << size;
    EXPECT_EQ(read == d, size <= 1023) << size;
  }
}

TEST(DatabaseDescriptorList, Wire) {
  DatabaseDescriptorList list = listOf(1);
  list.add(std::make_unique<DatabaseDescriptor>(DatabaseVersion(), LIMITS, "", ""));
  expectWire(list, "database_descriptor_list_v1");
}

TEST(DatabaseDescriptorList, EmptyAndOverlongListsAreWrittenButNotRead) {
  for (const std::size_t count : {0u, 1u, 50u, 51u}) {
    DatabaseDescriptorList list = listOf(count), read = listOf(3);
    const bool readable = count >= 1 && count <= 50;
    EXPECT_EQ(readFrom(read, bytesOf(list)), readable ? 0 : -1) << count;
    EXPECT_EQ(read.size(), readable ? count : 0);
  }
}

TEST(DatabaseDescriptorList, CopiesAreDeep) {
  const DatabaseDescriptorList list = listOf(2);
  DatabaseDescriptorList copy = list;
  copy[1].filePath = "elsewhere";
  EXPECT_NE(copy, list);
  copy = list;
  copy = *&copy;
  EXPECT_TRUE(copy == list && list != listOf(3));
}

TEST(DatabaseDescriptorList, FindsTheFirstOfATypeAndTakesNoNull) {
  DatabaseDescriptorList list = listOf(2);
  list[1].filePath = "second";
  ASSERT_NE(list.getDatabaseDescriptor(CABLES), nullptr);
  EXPECT_EQ(list.getDatabaseDescriptor(CABLES)->filePath, "db/limits.sql");
  EXPECT_EQ(std::as_const(list).getDatabaseDescriptor(LIMITS), nullptr);
  const CapturedAsserts captured;
  list.add(nullptr);
  EXPECT_TRUE(list.size() == 2 && captured.reports().size() == 1);
}
