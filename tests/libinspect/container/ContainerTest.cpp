#include <libcrossplatform/serialization/Utf8Text.h>
#include <libinspect/container/ContainerWalk.h>
#include <libinspect/container/FileDiff.h>
#include <libinspect/container/PrintableText.h>

#include "PFileTesting.h"

namespace Inspect {
namespace {

using namespace PFileTesting;

/// A file of these bytes, opened.
struct OpenFile {
  TempDir directory;
  std::string path = directory.file("file");
  ByteSource source;

  explicit OpenFile(const Bytes& bytes) {
    RecordTesting::writeFile(path, bytes);
    std::string error;
    EXPECT_TRUE(source.open(path, error)) << error;
  }
};

std::string codesOf(const Findings& findings) {
  std::string codes;
  for (const Finding& finding : findings) codes += std::string(codes.empty() ? "" : " ") + toString(finding.code);
  return codes;
}

TEST(PrintableText, OnlyWholeHarmlessCharactersAreShownAsTheyStand) {
  // The last control character; around the surrogates; too long for what they say, beside the shortest that are not;
  // above the last character; around the characters that separate lines or turn the direction of text; cut short.
  std::string table;
  for (const char* text :
       {"A\u00e9 \u20ac\U0001F600\U0010FFFF", "\x1f\x7f~", "\xC2\x9F\xC2\xA0", "\xED\x9F\xBF\xEE\x80\x80",
        "\xED\xA0\x80", "\xED\xBF\xBF", "\xC1\xBF", "\xE0\x9F\xBF\xE0\xA0\x80", "\xF0\x8F\xBF\xBF\xF0\x90\x80\x80",
        "\xF4\x90\x80\x80", "\u2027\u2028\u2029\u202A\u202E\u202F", "\u2065\u2066\u2069\u206A",
        "\u200D\u200E\u200F\u2010", "\u061B\u061C\u061D", "\xE2\x82", "\xE2\x82~"}) {
    table += printable(text) + '\n';
  }
  RecordTesting::expectGoldenText(table, "printable_texts");
}

TEST(FileDiff, ALongNameIsNotRepeatedForEachValue) {
  const OpenFile a(imageOf({{110, 1, 0, Bytes(30, 'a')}})), b(imageOf({{110, 1, 0, Bytes(30, 'b')}}));
  const auto fieldsOf = [](uint16_t, const Bytes& payload) {
    std::optional<Json::Value> fields = Json::Value();
    for (int i = 0; i < 1000; ++i) (*fields)["\u00e9" + std::string(100000, 'x')].append(payload[0] + i);
    return fields;
  };
  std::size_t bytes = 0;
  const Comparison comparison = differencesOf(a.source, b.source, fieldsOf, false, [&bytes](const Difference& d) {
    EXPECT_TRUE(Dump::isUtf8(d.field));
    bytes += d.field.size();
  });
  EXPECT_EQ(comparison.differences, 1000u) << "the length of the file is the same";
  EXPECT_LT(bytes, 1100000u);
}

TEST(ByteSource, AFileThatIsCutWhileItIsOpenEnds) {
  const Bytes whole = imageOf({{110, 1, 0, Bytes(30, 'a')}});
  const OpenFile file(whole);
  RecordTesting::writeFile(file.path, Bytes(whole.begin(), whole.end() - 10));
  EXPECT_EQ(codesOf(walk(file.source, WalkDepth::HEADERS_AND_CRCS).findings), "E04");
  uint8_t bytes[20];
  EXPECT_EQ(file.source.readAt(whole.size() - 15, bytes, sizeof bytes), 5u);
  EXPECT_FALSE(file.source.hasFailed());
}

}  // namespace
}  // namespace Inspect
