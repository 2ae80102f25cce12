// replay PATH...: runs a fuzz target on files, and on all files in directories, without libFuzzer: with any compiler
// and on any machine. Ends as the target does on a finding, with 1 when there was nothing to run at one of the paths.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>

#include "FuzzInput.h"

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::set<std::filesystem::path> files;
    if (!std::filesystem::is_directory(argv[i])) {
      files.insert(argv[i]);
    } else {
      for (const auto& entry : std::filesystem::directory_iterator(argv[i])) files.insert(entry.path());
    }
    for (const std::filesystem::path& file : files) {
      std::ifstream in(file, std::ios::binary);
      const Fuzz::Bytes bytes(std::istreambuf_iterator<char>(in), {});
      if (!in.is_open() || in.bad()) return 1;
      // A finding ends the program at once: the input must have been named by then.
      std::printf("%s\n", file.c_str());
      std::fflush(stdout);
      const std::unique_ptr<uint8_t[]> exact(new uint8_t[bytes.size()]);
      std::copy(bytes.begin(), bytes.end(), exact.get());
      LLVMFuzzerTestOneInput(exact.get(), bytes.size());
    }
    std::printf("%zu inputs in %s\n", files.size(), argv[i]);
    if (files.empty()) return 1;
  }
}
