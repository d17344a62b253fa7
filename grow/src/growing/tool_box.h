#ifndef TREE_GROW_SRC_GROWING_TOOL_BOX_H_
#define TREE_GROW_SRC_GROWING_TOOL_BOX_H_

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tree::grow {

/// Tools for tasks that run side by side: each is used by one task at a time, so that no more are
/// made than there are threads, and a task finds the memory of the one before it in its tool rather
/// than asking the system for pages of its own.
template <class Tool>
class ToolBox {
 public:
  /// `make`: makes a tool, in any thread.
  explicit ToolBox(std::function<std::unique_ptr<Tool>()> make) : make_(std::move(make)) {}
  /// Tools that need nothing to be made.
  ToolBox() : ToolBox([] { return std::make_unique<Tool>(); }) {}

  /// Calls `use` with a tool. The tool is lost when that throws.
  template <class Use>
  void With(Use const& use) {
    std::unique_ptr<Tool> tool = Take();
    use(*tool);
    std::lock_guard const lock(mutex_);
    free_.push_back(std::move(tool));
  }

 private:
  std::unique_ptr<Tool> Take() {
    {
      std::lock_guard const lock(mutex_);
      if (!free_.empty()) {
        std::unique_ptr<Tool> tool = std::move(free_.back());
        free_.pop_back();
        return tool;
      }
    }
    return make_();
  }

  std::function<std::unique_ptr<Tool>()> make_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Tool>> free_;
};

}  // namespace tree::grow

#endif  // TREE_GROW_SRC_GROWING_TOOL_BOX_H_
