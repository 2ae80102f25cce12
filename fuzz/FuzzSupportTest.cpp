// What the fuzzers rest on: assertions end them but for the documented ones, and what the mutator repairs verifies.
#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/logging/Assert.h>

#include <tests/RecordTesting.h>

#include "ContainerImage.h"

using Fuzz::Bytes;

void Fuzz::runTarget(const Input&) {}

TEST(ListedAssertionsDeathTest, AnyButThoseOfThePageEndsTheProgram) {
  Fuzz::watchAssertions();
  EXPECT_THROW(Veltra::assertFatal("size > 0", "libcrossplatform/serialization/ByteStreamReader", 1),
               Fuzz::ListedAssertion);
  Veltra::assertFail("Unexpected ScaledInt exponent", "libcrossplatform/common/ScaledInt", 1);
  EXPECT_DEATH(Veltra::assertFail("size > 0", "libcrossplatform/common/ScaledInt", 1), "no input may reach: size > 0");
  Veltra::setAssertHandler(nullptr);
}

TEST(ContainerImage, RepairMakesADamagedImageReadableAndLeavesAGoodOneAlone) {
  const Bytes good = RecordTesting::fileBytes(RecordTesting::dataPath("good/limit_package.bin"));
  Fuzz::Image image(good.data(), good.size());
  image.repair();
  EXPECT_EQ(image.bytes(), good);
  ASSERT_GE(image.sections.size(), 2u);
  image.sections[1].payload.assign(1000, 7);
  for (const bool isRepaired : {false, true}) {
    if (isRepaired) image.repair();
    const Bytes bytes = image.bytes();
    PFile::MemReader reader;
    PFile::Section section;
    EXPECT_EQ(reader.open(bytes.data(), static_cast<unsigned>(bytes.size())), 0);
    EXPECT_EQ(reader.read(section, false), isRepaired ? 0 : -1);
    EXPECT_TRUE(!isRepaired || section.payload.size() == 1000);
  }
}
