#ifndef TREE_CLI_SRC_OUTPUT_FILE_BUFFER_H_
#define TREE_CLI_SRC_OUTPUT_FILE_BUFFER_H_

#include <array>
#include <streambuf>

namespace tree::cli {

/// Writes to a file descriptor, and knows why it could not.
class FileBuffer : public std::streambuf {
 public:
  /// `descriptor`: open for writing, **taken**.
  explicit FileBuffer(int descriptor) noexcept;
  ~FileBuffer() override;
  FileBuffer(FileBuffer const&) = delete;
  FileBuffer& operator=(FileBuffer const&) = delete;

  /// Writes what is buffered and, where the file lies on a disk, waits until it is there; then
  /// closes. Returns false when that, or any writing before, failed.
  bool Close();
  /// Why it failed, as in `errno`; 0 if it did not.
  int GetError() const { return error_; }

 protected:
  int_type overflow(int_type character) override;
  int sync() override;

 private:
  bool Keep(int error);

  std::array<char, 1 << 16> memory_;  // not allocated, for nobody would close the file then
  int descriptor_;
  int error_ = 0;  // the first one
};

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_FILE_BUFFER_H_
