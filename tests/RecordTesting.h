#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <libcrossplatform/logging/Assert.h>
#include <libcrossplatform/logging/Logger.h>
#include <libcrossplatform/serialization/ByteStreamBuilder.h>
#include <libcrossplatform/serialization/ByteStreamReader.h>
#include <libcrossplatform/serialization/DumpFlags.h>
#include <libcrossplatform/serialization/Header.h>
#include <libcrossplatform/serialization/IJsonable.h>
#include <libcrossplatform/serialization/SimpleFormatter.h>

#include "PlainStreams.h"

/// What the tests of all records share: bytes in and out, golden files, captured reports.
namespace RecordTesting {

template <class Record>
Bytes bytesOf(Record& record) {
  Marshal::ByteStreamBuilder out(0);
  record.serialize(out);
  return Bytes(out.data(), out.data() + out.size());
}

inline Bytes withByte(Bytes bytes, std::size_t at, int value) {
  bytes[at] = static_cast<uint8_t>(value);
  return bytes;
}

/// The parts of "a|b|c".
inline std::vector<std::string> split(const std::string& text) {
  std::vector<std::string> parts;
  std::istringstream in(text + '|');
  for (std::string part; std::getline(in, part, '|');) parts.push_back(part);
  return parts;
}

/// An array in an array and so on, so many levels deep, with so many values within.
inline std::string nestedJson(std::size_t levels, std::size_t values) {
  std::string inside;
  for (; values > 0; --values) inside += values > 1 ? "1," : "1";
  return std::string(levels, '[') + inside + std::string(levels, ']');
}

/// Reads a record from bytes; the code of deserialize(). No bytes at all read as -3, as an ended stream does.
template <class Record>
Marshal::StreamOpStatus readFrom(Record& record, const Bytes& bytes) {
  const uint8_t nothing = 0;
  Marshal::ByteStreamReader in(bytes.empty() ? &nothing : bytes.data(),
                               bytes.empty() ? 1 : static_cast<uint32_t>(bytes.size()));
  if (bytes.empty()) in.seek(0, Marshal::STREAM_FROM_END);
  return record.deserialize(in);
}

/// A record is a value: a copy is the same, and clear() leaves the default, or `cleared`.
template <class Record>
void expectValue(const Record& record, Record cleared) {
  Record copy = record, assigned;
  assigned = record;
  assigned = *&assigned;
  EXPECT_EQ(bytesOf(copy), bytesOf(assigned));
  EXPECT_EQ(copy == assigned, record == record) << "only what is not a number differs from itself";
  EXPECT_EQ(copy != assigned, record != record);
  copy.clear();
  EXPECT_EQ(bytesOf(copy), bytesOf(cleared));
  EXPECT_NE(bytesOf(copy), bytesOf(assigned)) << "a copy is one of its own";
}

/// Write, read, write: the same bytes, by streams with a window and without.
template <class Record>
void expectRoundTrip(Record& record) {
  const Bytes bytes = bytesOf(record);
  PlainWriter plain;
  record.serialize(plain);
  EXPECT_EQ(plain.bytes, bytes) << "a stream without a window";
  Record again, third;
  PlainReader plainIn(bytes);
  EXPECT_TRUE(readFrom(again, bytes) == 0 && third.deserialize(plainIn) == 0);
  EXPECT_EQ(plainIn.consumed(), bytes.size());
  EXPECT_TRUE(bytesOf(again) == bytes && bytesOf(third) == bytes);
}

/// A record that shows other bytes is another one: every member counts in the comparison that is not zero. Bytes of
/// zero are left alone: some must be there.
template <class Record>
void expectEveryByteCounts(Record& record) {
  const Bytes whole = bytesOf(record);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    Record other;
    const Bytes changed = withByte(whole, at, whole[at] ^ 1);
    if (whole[at] == 0 || readFrom(other, changed) != 0 || bytesOf(other) == whole) continue;
    EXPECT_TRUE(other != record && !(other == record)) << "byte " << at;
  }
}

inline std::string dataPath(const std::string& name) {
  return std::string(VELTRA_SOURCE_DIR "/tests/data/") + name;
}

/// The bytes of a file, or its text.
template <class Content = Bytes>
Content fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  EXPECT_TRUE(in.good()) << "cannot read " << path;
  return Content(std::istreambuf_iterator<char>(in), {});
}
constexpr auto fileText = fileBytes<std::string>;

template <class Content>
void writeFile(const std::string& path, const Content& content) {
  std::ofstream out(path, std::ios::binary);
  std::copy(content.begin(), content.end(), std::ostreambuf_iterator<char>(out));
  ASSERT_TRUE(out.good()) << "cannot write " << path;
}

/// A directory of its own, gone at the end.
struct TempDir {
  std::string path = ::testing::TempDir() + "veltra.XXXXXX";

  TempDir() { EXPECT_NE(mkdtemp(&path[0]), nullptr); }
  ~TempDir() { std::filesystem::remove_all(path); }
  std::string file(const std::string& name) const { return path + "/" + name; }
};

/// Runs it in a process of its own, with which the changes end that it makes to the process.
/// @param body  returns whether this machine allows what it tests; the test is skipped otherwise
template <class Body>
void inChild(const Body& body) {
  constexpr int FAILED = 1, SKIPPED = 2;
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    const bool isAllowed = body();
    std::fflush(nullptr);
    _exit(::testing::Test::HasFailure() ? FAILED : isAllowed ? 0 : SKIPPED);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
  if (WEXITSTATUS(status) == SKIPPED) GTEST_SKIP() << "this machine does not allow it";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

/// The bytes are those of tests/data/good/<name>.bin. UPDATE_GOLDEN=1 in the environment rewrites the file instead: a
/// change of a golden file is a change of the format.
inline void expectGoldenBytes(const Bytes& bytes, const std::string& name) {
  const std::string path = dataPath("good/" + name + ".bin");
  if (std::getenv("UPDATE_GOLDEN") != nullptr) writeFile(path, bytes);
  EXPECT_EQ(bytes, fileBytes(path)) << path;
}

/// The same for a text, which is easier to read where they differ.
inline void expectGoldenText(const std::string& text, const std::string& name) {
  const std::string path = dataPath("good/" + name + ".txt");
  if (std::getenv("UPDATE_GOLDEN") != nullptr) writeFile(path, text);
  EXPECT_EQ(text, fileText(path)) << path;
}

inline Dump::DumpFlags level(int n) {
  Dump::DumpFlags flags;
  flags.level = n;
  return flags;
}

/// The text a record dumps.
template <class Record>
std::string dumpOf(const Record& record, int n = 2) {
  std::ostringstream out;
  Dump::SimpleFormatter formatter(out);
  record.dump(formatter, level(n));
  return out.str();
}

/// Collects failed assertions as "expression|file|line" while it lives.
class CapturedAsserts {
 public:
  CapturedAsserts() : _previous(Veltra::setAssertHandler(collect)) { reports().clear(); }
  ~CapturedAsserts() { Veltra::setAssertHandler(_previous); }
  static std::vector<std::string>& reports() { return _reports; }

 private:
  static void collect(const char* expression, const char* file, int line) {
    reports().push_back(std::string(expression) + "|" + file + "|" + std::to_string(line));
  }
  static inline std::vector<std::string> _reports;
  Veltra::AssertHandler _previous;
};

/// Collects log lines as "facility|severity|text" while it lives.
class CapturedLog {
 public:
  CapturedLog() : _previous(Veltra::Logger::setSink(collect)) { lines().clear(); }
  ~CapturedLog() { Veltra::Logger::setSink(_previous); }
  static std::vector<std::string>& lines() { return _lines; }

 private:
  static void collect(Veltra::Logger::Facility facility, Veltra::Logger::Severity severity, const char* format,
                      va_list args) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, args);
    lines().push_back(std::to_string(facility) + "|" + std::to_string(severity) + "|" + text);
  }
  static inline std::vector<std::string> _lines;
  Veltra::Logger::Sink _previous;
};

/// Throws the expression of a failed assertion while it lives.
struct ThrownAsserts {
  ThrownAsserts() : previous(Veltra::setAssertHandler([](const char* text, const char*, int) { throw text; })) {}
  ~ThrownAsserts() { Veltra::setAssertHandler(previous); }
  Veltra::AssertHandler previous;
};

/// What a record shows of itself, and at which levels.
template <class Record>
std::string textsOf(const Record& record) {
  std::map<std::string, std::string> levels;
  for (int n = 0; n < 4; ++n) {
    if constexpr (std::is_base_of_v<Dump::IDumpable, Record>) {
      levels["dump:\n" + dumpOf(record, n)] += " " + std::to_string(n);
    }
    if constexpr (std::is_base_of_v<Dump::IJsonable, Record>) {
      levels["JSON:\n" + Dump::toJsonString(record, level(n), false)] += " " + std::to_string(n);
    }
  }
  std::string texts;
  for (const auto& [text, shownAt] : levels) texts += "levels" + shownAt + ", " + text + "\n";
  return texts;
}

/// How bytes are read by every kind of stream: the code, or the assertion that ends it, and what becomes of the record.
template <class Record>
std::string readingOf(const Record& full, const Bytes& bytes) {
  const Record fresh;
  Record intoFull = full, intoFresh, plainTarget;
  Marshal::StreamOpStatus code = 0;
  try {
    code = readFrom(intoFull, bytes);
    EXPECT_EQ(readFrom(intoFresh, bytes), code);
    if (!bytes.empty()) {
      PlainReader plain(bytes.data(), static_cast<uint32_t>(bytes.size()), true);
      EXPECT_EQ(plainTarget.deserialize(plain), code);
    }
  } catch (const char* expression) {
    return expression;
  }
  const auto isSame = [](Record a, Record b) { return bytesOf(a) == bytesOf(b); };
  const bool isIndependent = isSame(intoFull, intoFresh);
  if (code == 0) return isIndependent ? "0" : "0, not all of it set";
  return std::to_string(code) + (isSame(intoFull, full) && isSame(intoFresh, fresh) ? ", unchanged"
                                 : isIndependent && isSame(intoFresh, fresh)        ? ", cleared"
                                 : isIndependent                                    ? ", filled in part"
                                                                                    : ", changed in part");
}

/// How a record is read that is cut after each of its bytes, and with each of them changed.
template <class Record>
std::string readingsOf(Record& record) {
  const CapturedLog log;
  const ThrownAsserts asserts;
  const Bytes good = bytesOf(record);
  std::string readings;
  const auto sweep = [&](const std::string& what, auto change) {
    std::string last;
    for (std::size_t at = 0; at < good.size(); ++at) {
      const std::string reading = readingOf(record, change(at));
      if (reading != last) readings += what + " " + std::to_string(at) + ": " + reading + "\n";
      last = reading;
    }
  };
  sweep("cut at", [&](std::size_t at) { return Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(at)); });
  sweep("a zero at", [&](std::size_t at) { return withByte(good, at, 0); });
  for (const int bits : {1, 0x80, 0xFF}) {
    sweep("bits " + std::to_string(bits) + " flipped at",
          [&](std::size_t at) { return withByte(good, at, good[at] ^ bits); });
  }
  return readings;
}

/// All that holds of any record: it is a value, its bytes come back, all count when records are compared and stay those
/// of the golden file, and another tells what it shows and how it is read from damaged bytes.
template <class Record>
void expectWire(Record&& record, const std::string& golden,
                const std::decay_t<Record>& cleared = std::decay_t<Record>()) {
  expectValue(record, cleared);
  expectRoundTrip(record);
  expectEveryByteCounts(record);
  expectGoldenBytes(bytesOf(record), golden);
  setenv("TZ", "UTC0", 1);
  expectGoldenText(textsOf(record) + readingsOf(record), golden);
}

/// Bytes, and the code a record reads them with.
struct CodedBytes {
  const char* name;
  Bytes bytes;
  Marshal::StreamOpStatus code;
};

}  // namespace RecordTesting
