#include <cstring>

#include <libcrossplatform/common/ScaledInt.h>

#include "RecordTesting.h"

using namespace Marshal;
using namespace RecordTesting;

namespace {

/// Places of virtual operations in the order of their interface, from 1; the two destructors stand before it.
template <class... Operations>
std::vector<std::size_t> slotsOf(Operations... operations) {
  const auto slotOf = [](auto operation) {
    std::uintptr_t words[2];
    static_assert(sizeof operation == sizeof words);
    std::memcpy(words, &operation, sizeof words);
#if defined(__arm__) || defined(__aarch64__)
    EXPECT_EQ(words[1] & 1, 1u) << "not virtual";
    return words[0] / sizeof(void*) - 1;
#else
    EXPECT_EQ(words[0] & 1, 1u) << "not virtual";
    return (words[0] - 1) / sizeof(void*) - 1;
#endif
  };
  return {slotOf(operations)...};
}

}  // namespace

TEST(Marshal, TheOrderOfTheVirtualOperations) {
  using Slots = std::vector<std::size_t>;
  using W = IObjectWriter;
  EXPECT_EQ(slotsOf(&W::writeBool, &W::writeUInt8, &W::writeInt8, &W::writeUInt16, &W::writeInt16, &W::writeUInt32,
                    &W::writeInt32, &W::writeUInt64, &W::writeInt64, &W::writeFloat, &W::writeDouble, &W::writeBytes,
                    &W::writeString),
            (Slots{1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 14, 25}));
  using R = IObjectReader;
  EXPECT_EQ(
      slotsOf(&R::readUInt8, &R::readInt8, &R::readUInt16, &R::readInt16, &R::readUInt32, &R::readInt32, &R::readUInt64,
              &R::readInt64, &R::readBytes, &R::readBool, &R::readFloat, &R::readDouble, &R::readString, &R::status),
      (Slots{2, 3, 4, 5, 6, 7, 8, 9, 10, 20, 21, 22, 25, 28}));
  using F = Dump::IFormatter;
  EXPECT_EQ(slotsOf(&F::text, static_cast<void (F::*)(const char*, bool)>(&F::field),
                    static_cast<void (F::*)(const char*, uint16_t)>(&F::field),
                    static_cast<void (F::*)(const char*, uint32_t)>(&F::field),
                    static_cast<void (F::*)(const char*, float)>(&F::field),
                    static_cast<void (F::*)(const char*, const char*)>(&F::field), &F::beginObject, &F::endObject),
            (Slots{1, 2, 3, 4, 5, 6, 7, 8}));
  // Here the operations come before the destructors.
  constexpr std::size_t BEFORE = std::size_t{0} - 1, FIRST = 0;
  EXPECT_EQ(slotsOf(&ISerializable::serialize, &ISerializable::deserialize), (Slots{BEFORE, FIRST}));
  EXPECT_EQ(slotsOf(&Dump::IDumpable::dump, &Dump::IJsonable::toJson), (Slots{BEFORE, BEFORE}));
  EXPECT_EQ(slotsOf(&Veltra::ScaledInt::dump), (Slots{3})) << "after serialize, deserialize and the destructors";
}

TEST(Marshal, WhatACallersStreamNeedNotHaveIsBuiltOnTheRest) {
  const Bytes expected = {1, 2, 3, 4, 5, 6, 7, 8, 0xbf, 0xf8, 0, 0, 0, 0, 0, 0};
  ByteStreamBuilder built(1);  // grows
  PlainWriter plainOut;
  for (IObjectWriter* const out : std::initializer_list<IObjectWriter*>{&built, &plainOut}) {
    out->writeUInt64(0x0102030405060708);
    out->writeDouble(-1.5);
  }
  EXPECT_EQ(Bytes(built.data(), built.data() + built.size()), expected);
  EXPECT_EQ(plainOut.bytes, expected);
  ByteStreamReader windowed(expected.data(), 16);
  PlainReader plainIn(expected);
  for (IObjectReader* const in : std::initializer_list<IObjectReader*>{&windowed, &plainIn}) {
    uint64_t wide = 0;
    double real = 0;
    EXPECT_TRUE(in->readUInt64(wide) && in->readDouble(real) && wide == 0x0102030405060708 && real == -1.5);
  }
}

TEST(Marshal, AFailedReadLatchesAndLeavesItsTarget) {
  const Bytes bytes = {2, 0, 0, 0, 9};
  ByteStreamReader in(bytes.data(), 5);
  bool truth = false;
  EXPECT_TRUE(in.readBool(truth) && truth && in.seek(0, STREAM_FROM_BEGIN)) << "every byte but 0 is true";
  uint64_t number = 77;
  std::string text = "kept";
  uint8_t byte = 5;
  EXPECT_FALSE(in.readUInt64(number));
  EXPECT_EQ(in.status(), -3);
  EXPECT_FALSE(in.readUInt8(byte) || in.readString(text) || in.readBytes(&byte, 0) || in.seek(0, STREAM_FROM_BEGIN));
  EXPECT_TRUE(number == 77 && byte == 5 && text == "kept" && in.position() == 0);
  const Bytes cutText = {0, 0, 0, 9, 'a'};
  ByteStreamReader texts(cutText.data(), 5);
  EXPECT_TRUE(!texts.readString(text) && texts.position() == 0 && text == "kept")
      << "its length is not consumed either";
}

TEST(Marshal, SeeksWithinItsBytes) {
  const Bytes bytes(10);
  ByteStreamReader in(bytes.data(), 10);
  EXPECT_TRUE(in.seek(10, STREAM_FROM_BEGIN) && in.seek(-4, STREAM_FROM_CURRENT));
  EXPECT_EQ(in.position(), 6u);
  EXPECT_FALSE(in.seek(11, STREAM_FROM_BEGIN) || in.seek(-1, STREAM_FROM_BEGIN) || in.seek(5, STREAM_FROM_CURRENT) ||
               in.seek(-11, STREAM_FROM_END) || in.seek(0x7FFFFFFF, STREAM_FROM_CURRENT) ||
               in.seek(0, static_cast<StreamPosition>(3)) || in.seek(0, static_cast<StreamPosition>(-1)));
  EXPECT_EQ(in.position(), 6u);
  EXPECT_TRUE(in.seek(-10, STREAM_FROM_END));
  EXPECT_EQ(in.position(), 0u);
}

TEST(Marshal, ABuilderRewritesOnlyWhatItWroteAndCanBeUsedAgain) {
  ByteStreamBuilder out;
  out.writeUInt32(1);
  out.writeUInt8(2);
  EXPECT_FALSE(out.rewriteUInt32(2, 9) || out.rewriteUInt32(0xFFFFFFFF, 9));
  EXPECT_TRUE(out.rewriteUInt32(1, 0x0a0b0c0d));
  EXPECT_EQ(Bytes(out.data(), out.data() + 5), (Bytes{0, 0x0a, 0x0b, 0x0c, 0x0d}));
  // What four gigabytes cannot hold fails and allocates nothing.
  EXPECT_EQ(out.window(0xFFFFFFFF).cursor, nullptr);
  EXPECT_TRUE(out.failed());
  EXPECT_EQ(out.writeBytes(out.data(), 0xFFFFFFFF), 0u) << "not a byte of it is read";
  EXPECT_EQ(out.size(), 5u) << "what was written before stays";
  out.reset();
  EXPECT_EQ(out.writeUInt8(3), 1u);
  const std::unique_ptr<uint8_t[]> released(out.release());
  out.writeUInt8(4);
  EXPECT_TRUE(released[0] == 3 && out.data()[0] == 4 && out.size() == 1);
}

TEST(MarshalDeathTest, AReaderWantsBytes) {
  const uint8_t byte = 0;
  EXPECT_DEATH(ByteStreamReader(nullptr, 1), "p != nullptr, libcrossplatform/serialization/ByteStreamReader:116");
  EXPECT_DEATH(ByteStreamReader(&byte, 0), "size > 0, libcrossplatform/serialization/ByteStreamReader:117");
}

TEST(MarshalHeader, TwelveBytesAndTheirCodes) {
  ByteStreamBuilder out;
  Marshal::Header written(0x510003, 3);
  EXPECT_EQ(written.serialize(out), 12u);
  out.writeUInt8(9);
  EXPECT_EQ(written.serializeLength(out), 13u);
  const Bytes good(out.data(), out.data() + out.size());
  EXPECT_EQ(good, (Bytes{0xab, 0xcd, 1, 3, 0, 0x51, 0, 3, 0, 0, 0, 1, 9}));

  uint32_t id = 7;
  ByteStreamReader whole(good.data(), 13), cut(good.data(), 11);
  PlainReader withoutPosition(good), withoutSeek(good.data(), 13, true);
  for (IObjectReader* const in : std::initializer_list<IObjectReader*>{&cut, &withoutPosition, &withoutSeek}) {
    EXPECT_EQ(peekHeaderSerialTypeID(*in, id), -3);
  }
  EXPECT_TRUE(withoutPosition.consumed() == 0 && id == 7);
  EXPECT_TRUE(peekHeaderSerialTypeID(whole, id) == 0 && id == 0x510003 && whole.position() == 0);
  EXPECT_TRUE(written.deserialize(whole) == 0 && written.check(2, 0x410003) == -1) << "the id before the version";
}
