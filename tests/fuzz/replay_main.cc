// Runs a fuzz target once on each file of the folders named on the command line, without libFuzzer.

#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz_target.h"

int main(int argc, char** argv) {
  int numInputs = 0;
  int numFailures = 0;
  for (int argument = 1; argument < argc; ++argument) {
    for (auto const& entry : std::filesystem::directory_iterator(argv[argument])) {
      std::ifstream file(entry.path(), std::ios::binary);
      std::vector<char> const content{std::istreambuf_iterator<char>(file), {}};
      std::vector<std::uint8_t> const bytes(content.begin(), content.end());
      ++numInputs;
      try {
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
      } catch (std::exception const& failure) {
        std::cerr << entry.path().string() << ": " << failure.what() << '\n';
        ++numFailures;
      }
    }
  }
  std::cout << numInputs << " inputs, " << numFailures << " failures\n";
  return numInputs > 0 && numFailures == 0 ? 0 : 1;
}
