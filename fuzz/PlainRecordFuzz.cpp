// The records that stand inside others, or alone, without a header: every input is tried as each of them. Left out are
// the path summaries, which are in ResultSummaryFuzz.cpp.
#include <libcrossplatform/common/Celsius.h>
#include <libcrossplatform/common/DatabaseDescriptor.h>
#include <libcrossplatform/common/DisplayMeas.h>
#include <libcrossplatform/common/FolderMetadata.h>
#include <libcrossplatform/common/PFileHeader.h>
#include <libcrossplatform/common/ScaledInt.h>
#include <libcrossplatform/common/ToleranceMeas.h>
#include <libcrossplatform/common/Tweak.h>

#include "RecordProperties.h"

using namespace Veltra;

namespace {

template <class Record>
void check(const Fuzz::Input& input) {
  Fuzz::guarded([&] { Fuzz::checkRecord<Record>(input); });
}

/// A value is kept through its text, and a text it does not take leaves it alone.
template <class T>
void checkTweak(const Fuzz::Input& input) {
  Tweak<T> tweak("a", T(), "");
  Tweak<T> again("b", T(), "");
  Marshal::ByteStreamReader in(input.data, input.size32());
  if (tweak.deserialize(in) == Marshal::STREAM_OK) {
    FUZZ_CHECK(again.setFromText(tweak.getValueText()) == TWEAK_OK);
    FUZZ_CHECK(again.getValueText() == tweak.getValueText());
  }
  const std::string before = tweak.getValueText();
  if (tweak.setFromText(input.text()) != TWEAK_OK) FUZZ_CHECK(tweak.getValueText() == before);
}

/// Arithmetic and comparison of two values read one after the other, whatever their scales.
void checkMeasurements(const Fuzz::Input& input) {
  Marshal::ByteStreamReader in(input.data, input.size32());
  ToleranceMeas a, b;
  if (a.deserialize(in) != Marshal::STREAM_OK || b.deserialize(in) != Marshal::STREAM_OK) return;
  FUZZ_CHECK(a.isSameAs(a));
  const ScaledInt &x = a.value, &y = b.value;
  FUZZ_CHECK(!(x < y && x > y));
  FUZZ_CHECK(!(x < y) || x <= y);
  max(a, b).calculateDisplayType();
  subtractWithQuadratureTolerance(a, b).calculateDisplayType();
  addLossToleranceMeas(a, b).abs().valueToDisplayMeas();
  minTolerance(a, b).isSameAs(b);
  x.avg(y);
  (x - y).toDouble();
  (x + y).toFloat();
  Fuzz::guarded([&] {
    ScaledInt read;
    FUZZ_CHECK(read.fromString(x.toString()));
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  return Fuzz::runInput(data, size, [](const Fuzz::Input& input) {
    if (input.size == 0) return;
    check<ScaledInt>(input);
    check<DisplayMeas>(input);
    check<ToleranceMeas>(input);
    check<Celsius>(input);
    check<CustomerDatabaseVersion>(input);
    check<DatabaseDescriptor>(input);
    check<FolderMetadata>(input);
    check<PFile::Header>(input);
    checkTweak<int>(input);
    checkTweak<unsigned int>(input);
    checkTweak<float>(input);
    checkTweak<std::string>(input);
    Fuzz::guarded([&] { checkMeasurements(input); });
  });
}
