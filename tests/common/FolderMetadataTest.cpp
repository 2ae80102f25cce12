#include <libcrossplatform/common/FolderMetadata.h>

#include <type_traits>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

FolderMetadataList sampleList() {
  FolderMetadataList list;
  list.add({"Site 4", "/results/Site 4", true});
  list.add({"", "", false});
  return list;
}

}  // namespace

TEST(FolderMetadata, Wire) {
  static_assert(std::is_nothrow_move_constructible_v<FolderMetadata>);
  expectWire(sampleList(), "folder_metadata_list_v1");
  expectWire(FolderMetadata("name", "path", true), "folder_metadata");
}

TEST(FolderMetadata, ATextEndsAtItsFirstZeroByte) {
  FolderMetadata read;
  EXPECT_EQ(readFrom(read, {0, 0, 0, 3, 'a', 0, 'b', 0, 0, 0, 2, 'c', 'd', 7}), 0);
  EXPECT_EQ(read._name, "a");
  EXPECT_EQ(read._dirPath, "cd") << "a terminator that is missing is not asked for";
  EXPECT_TRUE(read._hasSubdir);
}

TEST(FolderMetadataList, ItsCountIsCutTo16Bits) {
  FolderMetadataList list;
  for (int i = 0; i < 65537; ++i) list.add({});
  const Bytes bytes = bytesOf(list);
  EXPECT_EQ(bytes.size(), 12u + 2u + 65537u * 11u);
  EXPECT_EQ(readFrom(list, bytes), -4);
  EXPECT_EQ(list.size(), 1u);
}

TEST(FolderMetadata, CustomObjectsAreNamesBetweenAsterisks) {
  for (const char* name : {"*", "**", "*a*", "* *"}) EXPECT_TRUE(isCustomObject(name)) << name;
  for (const char* name : {"", "a", "*a", "a*", "a*a"}) EXPECT_FALSE(isCustomObject(name)) << name;
  EXPECT_FALSE(isCustomObject(nullptr));
}
