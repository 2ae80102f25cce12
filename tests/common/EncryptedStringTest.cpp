#include <libcrossplatform/common/EncryptedString.h>

#include <algorithm>
#include <iostream>
#include <numeric>
#include <set>
#include <thread>

#include <openssl/err.h>

#include <libcrossplatform/common/internal/CredentialText.h>

#include "RecordTesting.h"

using namespace Veltra;
using RecordTesting::Bytes;

namespace {

constexpr CredentialKey TEST_KEY = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}};

Bytes bytesIn(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

// A fixed source. Its first word is one that the draw of the offset must not take.
RandomWords fixedWords() {
  return [first = true, word = uint32_t{0}]() mutable {
    if (first) {
      first = false;
      return uint32_t{4294967292U};
    }
    word = word * 1664525U + 1013904223U;
    return word;
  };
}

std::string seal(const Bytes& payload, const CredentialKey& key = TEST_KEY) {
  return sealCredential(payload, key, fixedWords(), {});
}

struct Opened {
  bool ok;
  Bytes payload;
  std::string debug;
};

Opened open(const std::string& text) {
  std::ostringstream debug;
  SecretBytes payload(3);
  const bool ok = openCredential(text, TEST_KEY, {&debug, &debug}, payload);
  return {ok, Bytes(payload.begin(), payload.end()), debug.str()};
}

// Text of bytes that were encrypted properly but need not be an envelope.
std::string sealRaw(const Bytes& plain) {
  return encodeBase64(encryptCbc(plain, TEST_KEY));
}

// Zeros with the given offset and length in the header, and a check value that fits.
Bytes envelopeWith(std::size_t size, uint8_t offset, uint8_t lengthLow, uint8_t lengthHigh) {
  Bytes envelope(size, 0);
  envelope[1] = offset;
  envelope[3] = lengthLow;
  envelope[4] = lengthHigh;
  const uint32_t check = EncryptedString::crc32(0xFFFFFFFF, envelope.data(), static_cast<uint32_t>(size - 4));
  for (std::size_t i = 0; i < 4; ++i) envelope[size - 4 + i] = static_cast<uint8_t>(check >> (24 - 8 * i));
  return envelope;
}

}  // namespace

// Made by another implementation of envelope, AES and base64 from the same random words.
TEST(CredentialText, MatchesTheKnownText) {
  const std::string known =
      "RhBdae9y8NCHX+Y09OSd7pJdOGMcrtzkaPwnU2Fafaf8nuCQd+kvI9uyQ5XCIfJm\nPYmDBiYlzfFeBUUyc0ULhQ==";
  EXPECT_EQ(seal(bytesIn("secret pass")), known);
  EXPECT_EQ(open(known).payload, bytesIn("secret pass"));
}

TEST(CredentialText, LengthsUpToTheLimitComeBack) {
  const std::pair<std::size_t, std::size_t> envelopeByPayload[] = {
      {0, 32}, {1, 48}, {16, 48}, {17, 64}, {65535, 65568}};
  for (const auto& [size, envelope] : envelopeByPayload) {
    SCOPED_TRACE(size);
    Bytes payload(size);
    std::iota(payload.begin(), payload.end(), uint8_t{1});
    EXPECT_EQ(buildEnvelope(payload, fixedWords()).size(), envelope);
    EXPECT_EQ(open(seal(payload)).payload, payload);
  }
  EXPECT_EQ(seal(Bytes(0)).size(), 64U);
  EXPECT_EQ(seal(Bytes(65536)), "");
}

// What is refused and why, and which line breaks are let pass: the answers are in the golden file.
TEST(CredentialText, IsOpenedOrRefusedAsTheTableSays) {
  Bytes wrongCheck = envelopeWith(32, 5, 0, 0);
  wrongCheck[7] ^= 1;
  const std::string text = seal(Bytes(63, 'x'));
  std::string bare = text;
  bare.erase(std::remove(bare.begin(), bare.end(), '\n'), bare.end());
  const auto with = [&](std::size_t at, const std::string& inserted) { return std::string(bare).insert(at, inserted); };
  const std::string texts[] = {
      encodeBase64(Bytes(17, 1)), sealRaw({}), sealRaw(Bytes(15)), sealRaw(wrongCheck),
      sealRaw(envelopeWith(32, 4, 0, 0)), sealRaw(envelopeWith(32, 27, 0, 0)), sealRaw(envelopeWith(32, 5, 28, 0)),
      // The length is compared with the room after the offset, check value included: kept for
      // stored texts.
      sealRaw(envelopeWith(32, 5, 27, 0)), sealRaw(envelopeWith(32, 5, 255, 255)), sealRaw(envelopeWith(20, 26, 0, 0)),
      bare, text + "\n", with(1, "\n\n"), with(7, "\r\n"), with(64, " "), with(64, "\r"),
      with(64, std::string(1, '\0')), text + "\r", with(4, "===="), "AAAA\n" + bare, "junk!\n" + text, text + "AAAA",
      text.substr(0, 152), "-----\n" + bare + "\n-----"};
  std::string table;
  for (const std::string& each : texts) {
    const Opened opened = open(each);
    table += testing::PrintToString(each) + (opened.ok ? ": opened" : ": refused") + ", " +
             std::to_string(opened.payload.size()) + " bytes\n" + opened.debug;
  }
  RecordTesting::expectGoldenText(table, "credential_texts");
  EXPECT_EQ(ERR_peek_error(), 0U);  // nothing is left for the next reader of OpenSSL's queue
  EXPECT_EQ(decodeBase64("QQ=="), bytesIn("A"));
  EXPECT_TRUE(decodeBase64("QR==").empty() && decodeBase64("QUE").empty());  // spare bits set, no padding
}

TEST(EncryptedString, ShortTextsAreNoCiphertext) {
  const std::string text = EncryptedString::Encrypt("secret");
  EXPECT_EQ(EncryptedString::Decrypt(text.substr(0, 60)), text.substr(0, 60));
  EXPECT_EQ(EncryptedString::Decrypt(text.substr(0, 61)), "");
}

TEST(EncryptedString, Crc32InvertsOnEntryAndExit) {
  const char digits[] = "123456789";
  EXPECT_EQ(EncryptedString::crc32(0, digits, 9), 0xCBF43926U);           // the common CRC-32
  EXPECT_EQ(EncryptedString::crc32(0xFFFFFFFF, digits, 9), 0xD202D277U);  // the register starts at zero
  EXPECT_EQ(EncryptedString::crc32(EncryptedString::crc32(0, digits, 4), digits + 4, 5), 0xCBF43926U);
  EXPECT_EQ(EncryptedString::crc32(7, nullptr, 0), 7U);
}

TEST(EncryptedString, ConcurrentDrawsNeverRepeat) {
  std::vector<std::string> texts(2002);
  const auto draw = [&texts](std::size_t from, std::size_t to) {
    while (from < to) texts[from++] = EncryptedString::Encrypt("same");
  };
  draw(0, 1);  // the generator of this thread is there before
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  RecordTesting::inChild([&] {
    draw(0, 1);
    EXPECT_EQ(write(ends[1], texts[0].data(), texts[0].size()), static_cast<ssize_t>(texts[0].size()));
    return true;
  });
  draw(1, 2);
  std::thread first(draw, 2, 1000), second(draw, 1000, 2001);
  first.join();
  second.join();
  texts.back().resize(texts[0].size());
  EXPECT_EQ(read(ends[0], &texts.back()[0], texts[0].size()), static_cast<ssize_t>(texts[0].size()));
  EXPECT_TRUE(close(ends[0]) == 0 && close(ends[1]) == 0);
  EXPECT_EQ(std::set<std::string>(texts.begin(), texts.end()).size(), texts.size());
  for (const std::string& text : texts) ASSERT_EQ(EncryptedString::Decrypt(text), "same");
}

// The flags cannot be switched off again, so they are switched on in a child.
TEST(EncryptedStringDeathTest, PrintsNothingUntilAFlagIsOn) {
  const auto child = [] {
    std::cout.rdbuf(std::cerr.rdbuf());
    const auto use = [](const char* flag) {
      std::cout << flag;
      EncryptedString::Decrypt(seal({}, CredentialKey{{9}}));  // under another key
      EncryptedString::Decrypt(std::string(64, '?'));
      EncryptedString::Encrypt("secret");
    };
    use("none:");
    EncryptedString::debug();
    use("debug:");
    EncryptedString::verbose();
    use("verbose:");
    std::cout << "end";
    std::exit(0);
  };
  const std::string reason = "[^\n]+\n";
  const std::string dump = "0000  [^\n]+\n(00[1-9]0  [^\n]+\n)+";
  EXPECT_EXIT(child(), testing::ExitedWithCode(0),
              "none:debug:" + reason + "verbose:" + dump + reason + "base64 decoded length=0\ncrc=[0-9a-f]+\n(" + dump +
                  "){3}end");
}

// OpenSSL counts in int. The spans are only said to be this long: not a byte of them is there to be read.
TEST(CredentialCipher, SizesThatOpenSslCannotCountAreRefusedUntouched) {
  const uint8_t byte = 0;
  const gsl::span<const uint8_t> tooLong(&byte, std::size_t{1} << 30);
  EXPECT_TRUE(encryptCbc(tooLong, TEST_KEY).empty());
  EXPECT_EQ(decryptCbc(tooLong, TEST_KEY).status, CbcPlain::STATUS_UPDATE_FAILED);
  EXPECT_TRUE(encodeBase64(tooLong).empty());
}

TEST(SecretBytes, ATextIsWipedUpToItsCapacity) {
  std::string text(64, 's');
  text.resize(3);
  const char* const memory = text.data();
  wipe(text);
  EXPECT_TRUE(text.empty() && text.capacity() >= 64);
  EXPECT_EQ(std::count(memory, memory + 64, '\0'), 64);
}
