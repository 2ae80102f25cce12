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
  FolderMetadata folder("name", "path", true);
  expectValue(folder, FolderMetadata());
  expectEveryPrefixRefused(folder);
  expectEveryByteCounts(folder);
}

TEST(FolderMetadata, LengthZeroIsRefusedAndATextEndsAtItsFirstZeroByte) {
  FolderMetadata read;
  EXPECT_EQ(readFrom(read, {0, 0, 0, 3, 'a', 0, 'b', 0, 0, 0, 2, 'c', 'd', 7}), 0);
  EXPECT_EQ(read._name, "a");
  EXPECT_EQ(read._dirPath, "cd") << "a terminator that is missing is not asked for";
  EXPECT_TRUE(read._hasSubdir);
  EXPECT_EQ(readFrom(read, {0, 0, 0, 0, 1}), -1);
  EXPECT_EQ(readFrom(read, {0, 0, 0, 2, 'x', 0, 0, 0, 0, 0, 1}), -1);
  EXPECT_EQ(readFrom(read, {0xFF, 0xFF, 0xFF, 0xFF, 'a', 'b'}), -3) << "a length from outside is not believed";
}

TEST(FolderMetadataList, ElementCodeIsNotLookedAtOnlyAFailedStreamEndsTheList) {
  // The first element ends at a name of length 0; the next four bytes are then the second one's name length.
  const Bytes bytes = {0xab, 0xcd, 1, 1, 0, 0x51, 0,   6, 0, 0, 0, 20, 0,   2,   0, 0,
                       0,    0,    0, 0, 0, 2,    'b', 0, 0, 0, 0, 3,  '/', 'b', 0, 1};
  FolderMetadataList list;
  EXPECT_EQ(readFrom(list, bytes), 0);
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[0]._name, "");
  EXPECT_EQ(list[1]._name, "b");
  EXPECT_EQ(readFrom(list, Bytes(bytes.begin(), bytes.end() - 1)), -1) << "not the -3 of other records";
  EXPECT_EQ(list.size(), 1u) << "those before it stay";
  EXPECT_EQ(readFrom(list, withByte(bytes, 13, 1)), -4) << "one element alone";
}

TEST(FolderMetadataList, IsEmptiedBeforeItsHeaderIsReadAndItsCountCutTo16Bits) {
  FolderMetadataList list = sampleList();
  EXPECT_EQ(readFrom(list, {0xab}), -3);
  EXPECT_TRUE(list.empty());
  for (int i = 0; i < 65537; ++i) list.add({});
  const Bytes bytes = bytesOf(list);
  EXPECT_EQ(bytes.size(), 12u + 2u + 65537u * 11u);
  EXPECT_EQ(readFrom(list, bytes), -4);
  EXPECT_EQ(list.size(), 1u);
}

TEST(FolderMetadataList, Dumps) {
  const FolderMetadataList list = sampleList();
  EXPECT_EQ(dumpOf(list),
            "FolderMetadataList {\n"
            "  _name: Site 4\n  _dirPath: /results/Site 4\n  _hasSubdir: true\n"
            "  _name: NULL\n  _dirPath: NULL\n  _hasSubdir: false\n"
            "}\n");
  for (const int other : {0, 1, 3}) EXPECT_EQ(dumpOf(list[0], other) + dumpOf(list[1], other), "Site 4") << other;
}

TEST(FolderMetadata, CustomObjectsAreNamesBetweenAsterisks) {
  for (const char* name : {"*", "**", "*a*", "* *"}) EXPECT_TRUE(isCustomObject(name)) << name;
  for (const char* name : {"", "a", "*a", "a*", "a*a"}) EXPECT_FALSE(isCustomObject(name)) << name;
  EXPECT_FALSE(isCustomObject(nullptr));
}
