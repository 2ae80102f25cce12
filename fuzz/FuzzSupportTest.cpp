// What the fuzzers rest on: the list of assertions is the documented one, and what the mutator repairs verifies.
#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/logging/Assert.h>

#include <fstream>
#include <regex>
#include <set>

#include <gtest/gtest.h>

#include "ContainerImage.h"
#include "ListedAssertions.h"

namespace {

using Fuzz::Bytes;

Bytes fileBytes(const char* name) {
  std::ifstream in(std::string(VELTRA_SOURCE_DIR "/") + name, std::ios::binary);
  EXPECT_TRUE(in.good()) << name;
  return Bytes(std::istreambuf_iterator<char>(in), {});
}

/// The quoted expressions and the units in the first columns of the rows behind a heading of the page.
std::set<std::string> onPage(const std::string& heading) {
  const Bytes bytes = fileBytes("docs/reader-behaviour.md");
  std::istringstream page(std::string(bytes.begin(), bytes.end()));
  std::set<std::string> entries;
  std::string line;
  while (std::getline(page, line) && line != heading) {
  }
  const std::regex row(R"(^\| ((?:"[^"]+"(?:, )?)+): `([A-Za-z]+)` .*)"), quoted(R"("([^"]+)\")");
  while (std::getline(page, line) && line.rfind("##", 0) != 0) {
    std::smatch cells;
    if (!std::regex_match(line, cells, row)) continue;
    const std::string expressions = cells[1];
    for (std::sregex_iterator at(expressions.begin(), expressions.end(), quoted), end; at != end; ++at) {
      entries.insert((*at)[1].str() + " in " + cells[2].str());
    }
  }
  return entries;
}

std::set<std::string> listed(bool fatal) {
  std::set<std::string> entries;
  for (const Fuzz::ListedAssertion& entry : Fuzz::LISTED_ASSERTIONS) {
    const std::string unit = entry.unit;
    if (entry.fatal == fatal) entries.insert(entry.expression + (" in " + unit.substr(unit.rfind('/') + 1)));
  }
  return entries;
}

}  // namespace

TEST(ListedAssertions, AreTheOnesOnThePage) {
  EXPECT_EQ(listed(true), onPage("## What file bytes can stop a program with"));
  EXPECT_EQ(listed(false), onPage("## What file bytes make a program complain of"));
}

TEST(ListedAssertionsDeathTest, AnyOtherAssertionEndsTheProgram) {
  Fuzz::watchAssertions();
  EXPECT_THROW(Veltra::assertFatal("size > 0", "libcrossplatform/serialization/ByteStreamReader", 1),
               const Fuzz::ListedAssertion*);
  Veltra::assertFail("Unexpected ScaledInt exponent", "libcrossplatform/common/ScaledInt", 1);
  EXPECT_DEATH(Veltra::assertFail("size > 0", "libcrossplatform/common/ScaledInt", 1), "no input may reach: size > 0");
  Veltra::setAssertHandler(nullptr);
}

TEST(ContainerImage, RepairMakesADamagedImageReadableAndLeavesAGoodOneAlone) {
  const Bytes good = fileBytes("tests/data/good/limit_package.bin");
  Fuzz::Image image = Fuzz::parseImage(good.data(), good.size());
  ASSERT_GE(image.sections.size(), 2u);
  EXPECT_EQ(Fuzz::joinImage(image), good);
  Fuzz::repairImage(image);
  EXPECT_EQ(Fuzz::joinImage(image), good);

  image.sections[1].payload.assign(1000, 7);
  image.sections[1].header.type = 700;
  Bytes changed = Fuzz::joinImage(image);
  PFile::MemReader refused, read;
  EXPECT_NE(refused.open(changed.data(), static_cast<unsigned>(changed.size())), 0)
      << "the total length is the old one";
  Fuzz::repairImage(image);
  changed = Fuzz::joinImage(image);
  PFile::Section section;
  ASSERT_EQ(read.open(changed.data(), static_cast<unsigned>(changed.size())), 0);
  ASSERT_EQ(read.read(section, false), 0);
  EXPECT_EQ(section.payload.size(), 1000u);
}

TEST(DeclaredSizes, StopAtTheBudgetAndLeaveWhatIsRefusedAnyway) {
  PFile::Header header;
  header.flags = PFile::SECTION_FLAG_COMPRESS;
  const uint8_t full[] = {0, 0, 0x80, 0}, more[] = {1, 0, 0x80, 0};
  Fuzz::DeclaredSizes declared;
  EXPECT_TRUE(declared.allow(header, more, sizeof more)) << "over 8 MiB: nothing is allocated";
  EXPECT_TRUE(declared.allow(header, full, sizeof full));
  EXPECT_FALSE(declared.allow(header, full, sizeof full));
}
