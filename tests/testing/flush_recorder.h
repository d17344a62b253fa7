#ifndef TREE_TESTS_TESTING_FLUSH_RECORDER_H_
#define TREE_TESTS_TESTING_FLUSH_RECORDER_H_

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace tree::testing {

/// A stream that remembers what had been written at each of its flushes.
class FlushRecorder : private std::stringbuf, public std::ostream {
 public:
  FlushRecorder() : std::stringbuf(std::ios_base::out), std::ostream(this) {}

  std::string GetText() const { return std::stringbuf::str(); }
  /// The whole text so far, once per flush.
  std::vector<std::string> const& GetTextsAtFlushes() const { return textsAtFlushes_; }

 private:
  int sync() override {
    textsAtFlushes_.push_back(GetText());
    return 0;
  }

  std::vector<std::string> textsAtFlushes_;
};

}  // namespace tree::testing

#endif  // TREE_TESTS_TESTING_FLUSH_RECORDER_H_
