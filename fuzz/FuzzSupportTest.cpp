// What the fuzzers rest on: the list of assertions is the documented one, and what the mutator repairs verifies.
#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/logging/Assert.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

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

/// The rows after a heading of the page that begin with: "expression", "expression": `Unit`.
std::set<std::string> onPage(const std::string& heading) {
  const Bytes bytes = fileBytes("docs/reader-behaviour.md");
  std::istringstream page(std::string(bytes.begin(), bytes.end()));
  std::set<std::string> entries;
  std::string line;
  while (std::getline(page, line) && line != heading) {
  }
  const std::string first = "| \"", between = "\", \"", last = "\": `";
  while (std::getline(page, line) && line.rfind("##", 0) != 0) {
    const std::size_t end = line.find(last);
    if (line.rfind(first, 0) != 0 || end == std::string::npos) continue;
    const std::size_t name = end + last.size();
    const std::string unit = line.substr(name, line.find('`', name) - name);
    for (std::size_t at = first.size(), next; at < end; at = next + between.size()) {
      next = std::min(line.find(between, at), end);
      entries.insert(line.substr(at, next - at) + " in " + unit);
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
  PFile::Section section;
  EXPECT_EQ(refused.open(changed.data(), static_cast<unsigned>(changed.size())), 0);
  EXPECT_EQ(refused.read(section, false), -1);
  Fuzz::repairImage(image);
  changed = Fuzz::joinImage(image);
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
