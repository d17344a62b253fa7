#include "growing/tool_box.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "growing/workers.h"

namespace tree::grow {
namespace {

TEST(ToolBox, GivesATaskTheToolOfTheOneBefore) {
  ToolBox<std::vector<int>> box;
  int const* memory = nullptr;
  box.With([&](std::vector<int>& tool) {
    tool.assign(10, 7);
    memory = tool.data();
  });

  box.With([&](std::vector<int> const& tool) {
    EXPECT_EQ(tool.size(), 10U);
    EXPECT_EQ(tool.data(), memory);
  });
}

TEST(ToolBox, MakesToolsAsItIsTold) {
  ToolBox<int> box([] { return std::make_unique<int>(42); });

  box.With([](int const& tool) { EXPECT_EQ(tool, 42); });
}

TEST(ToolBox, GivesTasksOneWithinTheOtherToolsOfTheirOwn) {
  ToolBox<int> box;

  box.With(
      [&](int const& outer) { box.With([&](int const& inner) { EXPECT_NE(&inner, &outer); }); });
}

TEST(ToolBox, LosesTheToolOfATaskThatFails) {
  ToolBox<int> box;

  EXPECT_THROW(box.With([](int& tool) {
    tool = 7;
    throw std::runtime_error("spoiled");
  }),
               std::runtime_error);

  box.With([](int const& tool) { EXPECT_EQ(tool, 0); });
}

TEST(ToolBox, MakesNoMoreToolsThanThereAreThreads) {
  constexpr int kNumThreads = 3;
  constexpr std::size_t kNumTasks = 2000;
  std::atomic<int> numMade{0};
  ToolBox<std::vector<std::size_t>> box([&] {
    ++numMade;
    return std::make_unique<std::vector<std::size_t>>();
  });
  std::vector<std::atomic<int>> numDone(kNumTasks);
  Workers workers(kNumThreads);
  workers.Begin();

  workers.Run(kNumTasks, [&](std::size_t task) {
    box.With([&](std::vector<std::size_t>& tool) {
      tool.push_back(task);
      ++numDone[tool.back()];
    });
  });

  EXPECT_LE(numMade, kNumThreads);
  EXPECT_TRUE(std::all_of(numDone.begin(), numDone.end(), [](int number) { return number == 1; }));
}

}  // namespace
}  // namespace tree::grow
