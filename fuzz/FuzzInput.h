#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <libcrossplatform/common/PFileTypes.h>

/// What all fuzz targets share.
namespace Fuzz {

/// What the fuzzers go up to, given as -max_len. A replayed input may be larger: what takes too long often is.
constexpr std::size_t INPUT_LIMIT = 64 * 1024;

using Bytes = std::vector<uint8_t>;

/// One input. The bytes stand alone on the heap, so that a read after them is seen.
struct Input {
  const uint8_t* data;
  std::size_t size;

  uint32_t size32() const { return static_cast<uint32_t>(size); }
  Bytes bytes() const { return Bytes(data, data + size); }
  std::string text() const { return std::string(data, data + size); }
};

/// What each target defines, to be run on every input. Messages of the library are formatted meanwhile, so that their
/// arguments are checked, and dropped.
void runTarget(const Input& input);

/// Runs one piece of the work on an input.
/// @return false when a listed fatal assertion ended it
bool guarded(const std::function<void()>& work);

struct ListedAssertion {};
/// Installs an assertion handler that goes by docs/reader-behaviour.md: what only reports passes, what is fatal is left
/// by throwing a ListedAssertion, every other assertion ends the program.
void watchAssertions();

/// A receiver of the container's messages that formats them and drops the text.
extern const PFile::LogCallback formatAndDrop;

/// Ends the program: a property that every input should have does not hold.
[[noreturn]] void reportFinding(const char* property, const char* function, int line);

}  // namespace Fuzz

#define FUZZ_CHECK(property) ((property) ? (void)0 : Fuzz::reportFinding(#property, __func__, __LINE__))

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);
