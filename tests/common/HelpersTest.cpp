#include <cmath>
#include <limits>
#include <locale>
#include <tuple>

#include <libcrossplatform/common/TextUtil.h>
#include <libcrossplatform/common/TimeUtil.h>
#include <libcrossplatform/common/ToleranceMeas.h>
#include <libcrossplatform/common/internal/JsonScan.h>
#include <libcrossplatform/common/jsonutil.h>
#include <libcrossplatform/common/printf-shims.h>
#include <libcrossplatform/serialization/JsonText.h>
#include <libcrossplatform/serialization/NumberText.h>
#include <libcrossplatform/serialization/Utf8Text.h>

#include "RecordTesting.h"

using namespace RecordTesting;
using namespace Veltra;

namespace {

std::string appended(std::string s, const char* format, ...) {
  va_list args;
  va_start(args, format);
  s = vprintfAppend(std::move(s), format, args);
  va_end(args);
  return s;
}

struct DecimalComma : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

/// Numbers in texts and documents, and what becomes of documents that are read, the good and the bad.
std::string numbersShown() {
  ScaledInt value;
  EXPECT_TRUE(value.fromString("1234.50"));
  std::ostringstream out;  // carries the global locale
  Dump::SimpleFormatter formatter(out);
  formatter.field("u32", uint32_t{1234567});
  formatter.field("u16", uint16_t{12345});
  ToleranceMeas(value, DISPLAY_TYPE_VALUE, 0.5f, std::nanf("")).dump(formatter, {});
  std::string shown = out.str() + Dump::fixedToStr(-1.7e308, 1) + '\n';
  Json::Value list;
  for (const float v : {2.5f, 12345.5f, 1e6f, -std::nanf(""), INFINITY, -INFINITY}) {
    shown += Dump::floatToStr(v) + '\n';
    list.append(toJson(v));
  }
  for (const double v : {-1e300, static_cast<double>(-INFINITY)}) list.append(toJson(v));
  list.append(toJson(std::numeric_limits<long long>::min()));
  list.append(toJson(0xFFFFFFFFFFFFFFFFull));  // through the signed conversion
  shown += Dump::compactJson(list) + '\n';
  for (const std::string& text :
       split("[1.5, -1.234, 1.5e+3, 2.5E-1, 1234567, 1e3, -0.0, 7]|{\"1.5\": \"2.5 \\\" 3.5\"}|[1 /* 2.5 \" */, 1.25] "
             "// 3.5 \"\n|[0.333333333333333333333333333333333333333333333333333333]|[7,1.5]|[1.]|[-.5]|[1.2.3]|"
             "[1e5.3]|[1.5e]|[1.5e+]|[1.5e999]|[.5]|[-]|[1.5|[\"1.5|[1.5 /*|1.5|[--1.5]|[1.5E-3e5]|[1.5.1.5]|"
             "[/**//**/ 1.5]")) {
    Json::Value document;
    shown += parseJson(text, document, true) ? Dump::compactJson(document) + '\n' : "refused: " + text + '\n';
  }
  return shown;
}

}  // namespace

TEST(PrintfShims, FormatIntoOwnedText) {
  const std::string longText(5000, 'x');
  EXPECT_EQ(upsprintf("%d-%s", 7, longText.c_str()).get(), "7-" + longText);
  EXPECT_EQ(appended("a", "%d-%s", 7, longText.c_str()), "a7-" + longText);
  CapturedAsserts asserts;
  const wchar_t noCharacter[] = {static_cast<wchar_t>(0x7FFFFFFF), 0};  // the C library cannot convert it
  EXPECT_EQ(upsprintf("%ls", noCharacter), nullptr);
  EXPECT_EQ(appended("a", "%ls", noCharacter), "a");
  EXPECT_EQ(asserts.reports(), (std::vector<std::string>{"ret >= 0|libcrossplatform/common/printf-shims|43",
                                                         "neededLength >= 0|libcrossplatform/common/printf-shims|20"}));
}

TEST(TextUtil, MatchesWithoutCase) {
  EXPECT_TRUE(stringCaseInsMatch("Abc", "aBC") && stringCaseInsMatch("", std::string_view()));
  EXPECT_FALSE(stringCaseInsMatch("abc", "abcd") || stringCaseInsMatch("abc", "abd"));
  EXPECT_FALSE(stringCaseInsMatch("\xe4", "\xc4")) << "bytes beyond ASCII are no letters";
}

TEST(TextUtil, NumbersAreReadWhole) {
  using Row = std::tuple<const char*, int, bool, int64_t, uint64_t>;
  for (const auto& [text, base, whole, number, unsignedNumber] :
       {Row{"12", 10, true, 12, 12}, Row{"12x", 10, false, 12, 12}, Row{"", 10, false, 0, 0},
        Row{nullptr, 10, false, 0, 0}, Row{" -1", 10, true, -1, UINT64_MAX}, Row{"0x1f", 0, true, 31, 31},
        Row{"99999999999999999999", 10, true, INT64_MAX, UINT64_MAX}}) {
    int64_t read = 77;
    uint64_t readUnsigned = 77;
    EXPECT_EQ(strToInt64(read, text, base), whole);
    EXPECT_EQ(strToUInt64(readUnsigned, text, base), whole);
    EXPECT_EQ(read, number);
    EXPECT_EQ(readUnsigned, unsignedNumber);
  }
}

TEST(TextUtil, EscapesExactlyTheListedCharacters) {
  const std::string special = " \"%*./:;<>?\\|";
  for (int c = 1; c < 256; ++c) {
    const std::string plain(1, static_cast<char>(c)), code = upsprintf("%%%02x", c).get();
    const bool listed = special.find(plain) != std::string::npos, lower = c >= 'a' && c <= 'z';
    EXPECT_EQ(rmSpChar(plain.c_str(), false), listed ? code : plain) << c;
    EXPECT_EQ(rmSpChar(plain.c_str(), true), listed || lower ? code : plain) << c;
    EXPECT_EQ(spChar(code.c_str()), plain) << c;
    EXPECT_EQ(isValidSpChar(plain.c_str()), !listed && !lower) << c;
    EXPECT_EQ(isValidSpChar(code.c_str()), listed || lower) << c;
  }
  EXPECT_EQ(spChar("%2F%zz%4"), "/%zz%4") << "what is no code stays";
  EXPECT_FALSE(isValidSpChar("%2F") || isValidSpChar("A%00") || isValidSpChar(nullptr)) << "lower-case digits only";
}

TEST(TimeUtil, WritesAndReadsUtc) {
  bool ok = true;
  EXPECT_EQ(strToSysTime(ok, "20240131-0915", 0), 1706692500);
  EXPECT_EQ(strToSysTime(ok, "19691231-2359", 1), -60);
  EXPECT_TRUE(ok);
  EXPECT_EQ(sysTimeToStr(1706692500), "20240131-0915");
  EXPECT_EQ(sysTimeToSeconds(1706692537), 37);
  EXPECT_EQ(isoTime(0), "1970-01-01T00:00:00");
  for (const char* text : {"2024013-10915", "20240131-091", "20240131-09150", "xxxx0131-0915", "20240131-09yy",
                           static_cast<const char*>(nullptr)}) {
    ok = true;
    EXPECT_EQ(strToSysTime(ok, text, 0), -1);
    strToSysTime(ok, "20240131-0915", 0);
    EXPECT_FALSE(ok) << "it is never set";
  }
  const bool is64Bit = sizeof(time_t) > 4;
  ok = true;
  EXPECT_EQ(strToSysTime(ok, "20400101-0000", 0), static_cast<time_t>(is64Bit ? 2208988800 : -1));
  EXPECT_EQ(ok, is64Bit);
  if (is64Bit) {
    const auto never = std::numeric_limits<time_t>::max();
    EXPECT_EQ(sysTimeToStr(never) + isoTime(never), "");
    EXPECT_EQ(sysTimeToSeconds(never), 0);
  }
}

// Which readers take a value, by its name or alone: b i u I U f s t, upper case for 64 bits, t for times.
TEST(JsonUtil, ReadersTakeTheirOwnKindOnly) {
  const auto taken = [](const Json::Value& v, const char* key) {
    EXPECT_EQ(!!doubleFromJson(v, key), !!floatFromJson(v, key));
    return std::string(boolFromJson(v, key) ? "b" : "") + (intFromJson(v, key) ? "i" : "") +
           (uintFromJson(v, key) ? "u" : "") + (int64FromJson(v, key) ? "I" : "") +
           (uint64FromJson(v, key) ? "U" : "") + (floatFromJson(v, key) ? "f" : "") +
           (stringFromJson(v, key) ? "s" : "") + (timeFromJson(v, key) ? "t" : "");
  };
  std::string table;
  for (const std::string& json :
       split(R"(true|{"other": 1}|7.0|-7|7.5|3000000000|5000000000|10000000000000000000|"-9223372036854775808"|)"
             R"("-9223372036854775809"|"-0"|"9223372036854775808"|"18446744073709551616"|" 7"|"7x"|""|"NaN"|"+inf"|)"
             R"("nan"|"20240131-0915")")) {
    Json::Value object;
    ASSERT_TRUE(parseJson("{\"key\": " + json + "}", object, false)) << json;
    const std::string readers = taken(object, "key");
    EXPECT_EQ(taken(object["key"], object["key"].isObject() ? nullptr : "any"), readers) << json;
    EXPECT_EQ(taken(object, "missing"), "");
    table += json + ": " + readers + "\n";
  }
  expectGoldenText(table, "json_readers");
  EXPECT_EQ(*int64FromJson("-9223372036854775808", nullptr), std::numeric_limits<int64_t>::min());
  for (const unsigned long long v : {1ull << 63, ~0ull}) EXPECT_EQ(*uint64FromJson(toJson(v), nullptr), v);
  EXPECT_EQ(*timeFromJson("20240131-0915", nullptr), 1706692500);
  EXPECT_EQ(*floatFromJson("-inf", nullptr), -INFINITY);
}

// A character that is cut short is one U+FFFD, what cannot begin one is one a byte; there is none for what is right.
TEST(Utf8Text, ReplacesEachIllFormedSequence) {
  std::string table;
  for (const std::string text :
       {"caf\xE9 au", "\xE9 ", "\xC3", "\xE2\x82", "\xE2\x82\xC3\xA9", "\xF0\x9F\x98x", "\x80\xBF", "\xC0\xAF\xC1\xBF",
        "\xE0\x9F\xBF\xF0\x8F\xBF\xBF", "\xED\xA0\x80\xF4\x90\x80\x80\xF5", "\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF",
        "\xEE\x80\x80\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", "", "\x7F"}) {
    const std::string whole = Dump::withoutIllFormedUtf8(text);
    EXPECT_EQ(Dump::isUtf8(text), whole == text) << text;
    table += whole + '\n';
  }
  RecordTesting::expectGoldenText(table, "utf8_texts");
  EXPECT_TRUE(Dump::isUtf8(std::string_view("\0\x7F", 2)));
}

TEST(JsonScan, CountsAsJsonCppReads) {
  const auto extent = [](const std::string& text) {
    const JsonExtent found = extentOf(text);
    return std::to_string(found.values) + " " + std::to_string(found.levels);
  };
  const std::vector<std::string> rows =
      split("1|1 1|[]|2 1|{\"a\" : [ 1 ] }|3 3|[\"[[,\", /* [[, */ 1 // [[,\n]|3 2|[] [[[|2 1|[/\"[,[,]|6 3|]|1 0");
  for (std::size_t i = 0; i < rows.size(); i += 2) EXPECT_EQ(extent(rows[i]), rows[i + 1]) << rows[i];

  std::string comments;
  for (int i = 0; i < 4000; ++i) comments += "//\n";
  EXPECT_TRUE(canAffordComments("[1, \"" + comments + "\"]"));
  EXPECT_FALSE(canAffordComments("[1, /\"" + comments)) << "a lone slash takes the quote with it";
}

TEST(JsonUtil, LogsNothingWithoutAPlace) {
  const CapturedLog log;
  const CapturedAsserts asserts;
  logJsonFailure(nullptr, 9, "name");
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(asserts.reports(), std::vector<std::string>{"file != nullptr|libcrossplatform/common/jsonutil|416"});
}

TEST(NumberText, DoesNotDependOnTheLocale) {
  const std::string shown = numbersShown();
  expectGoldenText(shown, "numbers");
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new DecimalComma));
  EXPECT_EQ(numbersShown(), shown);
  std::locale::global(before);
}
