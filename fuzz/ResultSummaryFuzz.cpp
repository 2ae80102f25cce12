// The result summary, its list, and the path summaries and their list, which no header tells apart: every input is
// tried as each of the four.
#include <libcrossplatform/common/ResultSummary.h>

#include "RecordProperties.h"

using namespace Veltra;

namespace {

void checkSummary(const Fuzz::Input& input) {
  if (Fuzz::checkRecord<ResultSummary>(input) != Marshal::STREAM_OK) return;
  ResultSummary summary;
  Marshal::ByteStreamReader in(input.data, input.size32());
  FUZZ_CHECK(summary.deserialize(in) == Marshal::STREAM_OK);
  const ResultSummary copy = summary;
  // Where a measurement is not a number the summary equals nothing, its copy included.
  const bool comparable = !summary.length.value.isNotANumber() && !summary.headroom.value.isNotANumber();
  FUZZ_CHECK((copy == summary) == comparable);
  summary.clear();
  FUZZ_CHECK(Fuzz::bytesOf(summary) != Fuzz::Bytes());
}

void checkPaths(const Fuzz::Input& input) {
  Fuzz::checkRecord<ResultPathSummary>(input);
  if (Fuzz::checkRecord<ResultPathSummaryList>(input) != Marshal::STREAM_OK) return;
  ResultPathSummaryList list;
  Marshal::ByteStreamReader in(input.data, input.size32());
  list.deserialize(in);
  for (const auto& element : list) {
    element->getDateTimeString();
    const ResultPathSummary* const found = list.find(element->resultName);
    FUZZ_CHECK(found != nullptr && found->resultName == element->resultName);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  return Fuzz::runInput(data, size, [](const Fuzz::Input& input) {
    if (input.size == 0) return;
    Fuzz::guarded([&] { checkSummary(input); });
    Fuzz::guarded([&] { Fuzz::checkRecord<ResultSummaryList>(input); });
    Fuzz::guarded([&] { checkPaths(input); });
  });
}
