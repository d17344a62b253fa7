#ifndef TREE_CLI_SRC_OUTPUT_WHOLE_FILE_H_
#define TREE_CLI_SRC_OUTPUT_WHOLE_FILE_H_

#include <memory>
#include <ostream>
#include <string>

#include "output/file_buffer.h"

namespace tree::cli {

/// A file that is written whole or not at all: everything goes to a temporary file beside it, which
/// takes its place at the end. So nobody ever sees half of it, and a file of that name stays as it
/// was unless all went well. A symbolic link stays one; the file that it leads to is replaced. What
/// is no file on a disk, a pipe or a device, is written directly.
class WholeFile {
 public:
  /// Throws `OutputError` when nothing can be written there.
  explicit WholeFile(std::string const& file);
  /// Leaves nothing behind, unless it was committed.
  ~WholeFile();
  WholeFile(WholeFile const&) = delete;
  WholeFile& operator=(WholeFile const&) = delete;

  /// Where to write. What goes wrong there is told by `Finish`.
  std::ostream& GetStream() { return stream_; }
  /// To be called when all is written: makes sure that it is on the disk. Throws `OutputError`
  /// when it is not.
  void Finish();
  /// Puts what was finished in its place. Throws `OutputError` when that is not possible.
  void Commit();

 private:
  std::string file_;       // as messages name it
  std::string target_;     // what symbolic links lead to
  std::string temporary_;  // empty where there is none (any more)
  FileBuffer buffer_;
  std::ostream stream_;
};

/// Throws `OutputError` when it is clear beforehand that a file cannot be written.
void RequireWritable(std::string const& file);

}  // namespace tree::cli

#endif  // TREE_CLI_SRC_OUTPUT_WHOLE_FILE_H_
