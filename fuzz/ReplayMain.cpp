// replay PATH...: runs a fuzz target on files, and on all files in directories, without libFuzzer: with any compiler
// and on any machine. Ends as the target does on a finding, with 1 when there was nothing to run.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "FuzzInput.h"
#include "ListedAssertions.h"

namespace {

std::vector<std::string> filesOf(const std::vector<std::string>& paths) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    if (!std::filesystem::is_directory(path)) files.push_back(path);
    if (!std::filesystem::is_directory(path)) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
      if (entry.is_regular_file()) files.push_back(entry.path().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool run(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const std::string bytes(std::istreambuf_iterator<char>(in), {});
  if (in.bad() || !in.is_open()) return false;
  // A finding ends the program at once: the input must have been named by then.
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);
  const std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), exact.get());
  LLVMFuzzerTestOneInput(exact.get(), bytes.size());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> files = filesOf(std::vector<std::string>(argv + 1, argv + argc));
  for (const std::string& file : files) {
    if (run(file)) continue;
    std::fprintf(stderr, "%s cannot be read\n", file.c_str());
    return 1;
  }
  std::printf("%zu inputs\n", files.size());
  for (std::size_t i = 0; i < std::size(Fuzz::LISTED_ASSERTIONS); ++i) {
    if (Fuzz::timesMet(i) > 0) std::printf("%zu x %s\n", Fuzz::timesMet(i), Fuzz::LISTED_ASSERTIONS[i].expression);
  }
  return files.empty() ? 1 : 0;
}
