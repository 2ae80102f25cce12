// What the fuzzers rest on: the list of assertions is the documented one, and what the mutator repairs verifies.
#include <libcrossplatform/common/PFile.h>
#include <libcrossplatform/logging/Assert.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include <gtest/gtest.h>

#include "ContainerImage.h"
#include "ListedAssertions.h"

using Fuzz::Bytes;

void Fuzz::runTarget(const Input&) {}

namespace {

std::string textOf(const char* name) {
  std::ifstream in(std::string(VELTRA_SOURCE_DIR "/") + name, std::ios::binary);
  EXPECT_TRUE(in.good()) << name;
  return std::string(std::istreambuf_iterator<char>(in), {});
}

/// The rows after a heading of the page that begin with: "expression", "expression": `Unit`.
std::set<std::string> onPage(const std::string& heading) {
  const std::string page = textOf("docs/reader-behaviour.md");
  const std::size_t begin = page.find(heading) + heading.size();
  const std::string rows = page.substr(begin, page.find("\n##", begin) - begin);
  const std::regex row("\n\\| ((?:\"[^\"]+\"(?:, )?)+): `(\\w+)"), expression("\"([^\"]+)\"");
  std::set<std::string> entries;
  for (std::sregex_iterator i(rows.begin(), rows.end(), row), end; i != end; ++i) {
    const std::string expressions = (*i)[1];
    for (std::sregex_iterator k(expressions.begin(), expressions.end(), expression); k != end; ++k) {
      entries.insert((*k)[1].str() + " in " + (*i)[2].str());
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
  const std::string text = textOf("tests/data/good/limit_package.bin");
  const Bytes good(text.begin(), text.end());
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

TEST(DeclaredSizes, StopAtTheBudgetAndLeaveWhatIsRefusedAnyway) {
  PFile::Header header;
  header.flags = PFile::SECTION_FLAG_COMPRESS;
  const uint8_t full[] = {0, 0, 0x80, 0}, more[] = {1, 0, 0x80, 0};
  Fuzz::DeclaredSizes declared;
  EXPECT_TRUE(declared.allow(header, more, sizeof more)) << "over 8 MiB: nothing is allocated";
  EXPECT_TRUE(declared.allow(header, full, sizeof full));
  EXPECT_FALSE(declared.allow(header, full, sizeof full));
}
