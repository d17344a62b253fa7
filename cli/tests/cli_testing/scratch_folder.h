#ifndef TREE_CLI_TESTS_CLI_TESTING_SCRATCH_FOLDER_H_
#define TREE_CLI_TESTS_CLI_TESTING_SCRATCH_FOLDER_H_

#include <stdlib.h>  // NOLINT(modernize-deprecated-headers): mkdtemp is of POSIX

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

namespace tree::cli::testing {

/// A folder of its own, which goes away with its object.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "growtree-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for a test");
    path_ = name;
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(ScratchFolder const&) = delete;
  ScratchFolder& operator=(ScratchFolder const&) = delete;

  std::string Path(std::string const& name) const { return (path_ / name).string(); }

  /// Writes a file, and gives its path.
  std::string Write(std::string const& name, std::string const& content) const {
    std::ofstream(Path(name), std::ios::binary) << content;
    return Path(name);
  }
  std::string Read(std::string const& name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// The names of all that is in it, hidden files included, sorted.
  std::vector<std::string> GetNames() const {
    std::vector<std::string> names;
    for (auto const& entry : std::filesystem::directory_iterator(path_)) {
      names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace tree::cli::testing

#endif  // TREE_CLI_TESTS_CLI_TESTING_SCRATCH_FOLDER_H_
