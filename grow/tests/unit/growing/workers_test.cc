#include "growing/workers.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testing/failing_allocator.h"

namespace tree::grow {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Pair;

constexpr std::chrono::milliseconds kMoreThanAnInterval{45};

/// Remembers what it hears, and asks to stop at a report by number, from 1.
class Listener : public ProgressListener {
 public:
  explicit Listener(int stopAt = 0) : stopAt_(stopAt) {}

  bool Report(double fraction, char const* activity) noexcept override {
    std::lock_guard const lock(mutex_);
    fractions.push_back(fraction);
    activities.emplace_back(activity);
    threads.push_back(std::this_thread::get_id());
    return static_cast<int>(fractions.size()) != stopAt_;
  }

  std::vector<double> fractions;
  std::vector<std::string> activities;
  std::vector<std::thread::id> threads;

 private:
  int stopAt_;
  std::mutex mutex_;
};

TEST(Workers, HaveAsManyThreadsAsTheyAreGiven) {
  EXPECT_EQ(Workers(1).GetNumThreads(), 1);
  EXPECT_EQ(Workers(5).GetNumThreads(), 5);
}

TEST(Workers, HaveAtLeastOneThreadWhereTheMachineDecides) {
  EXPECT_GE(Workers(0).GetNumThreads(), 1);
}

TEST(Workers, DoEveryTaskOnce) {
  for (int numThreads = 1; numThreads <= 8; ++numThreads) {
    for (std::size_t const count : {0U, 1U, 2U, 7U, 1000U}) {
      SCOPED_TRACE(std::to_string(numThreads) + " threads, " + std::to_string(count) + " tasks");
      Workers workers(numThreads);
      workers.Begin();
      std::vector<std::atomic<int>> timesDone(count);

      workers.Run(count, [&](std::size_t task) { ++timesDone[task]; });

      for (std::atomic<int> const& times : timesDone) EXPECT_EQ(times, 1);
    }
  }
}

TEST(Workers, DoOneBatchAfterTheOther) {
  Workers workers(3);
  workers.Begin();
  std::atomic<int> sum{0};

  for (int batch = 0; batch < 200; ++batch) {
    workers.Run(5, [&](std::size_t task) { sum += static_cast<int>(task); });
    ASSERT_EQ(sum, (batch + 1) * 10) << "all tasks are done when Run returns";
  }
}

TEST(Workers, WorkSideBySide) {
  Workers workers(2);
  workers.Begin();
  std::atomic<int> numInside{0};

  // Each task waits for the other one: a single thread would never get on.
  workers.Run(2, [&](std::size_t) {
    ++numInside;
    while (numInside < 2) std::this_thread::yield();
  });

  EXPECT_EQ(numInside, 2);
}

TEST(Workers, ThrowWhatATaskHasThrown) {
  for (int numThreads = 1; numThreads <= 8; ++numThreads) {
    SCOPED_TRACE(numThreads);
    Workers workers(numThreads);
    workers.Begin();

    EXPECT_THROW(workers.Run(100,
                             [](std::size_t task) {
                               if (task == 17) throw std::runtime_error("17");
                             }),
                 std::runtime_error);
  }
}

TEST(Workers, BeginNoTaskAfterAFailure) {
  Workers workers(1);
  workers.Begin();
  std::size_t numBegun = 0;

  EXPECT_THROW(workers.Run(100,
                           [&](std::size_t) {
                             if (++numBegun == 3) throw std::runtime_error("3");
                           }),
               std::runtime_error);

  EXPECT_EQ(numBegun, 3U);
}

TEST(Workers, GoOnAfterAFailure) {
  Workers workers(4);
  workers.Begin();
  std::atomic<int> numDone{0};
  EXPECT_THROW(workers.Run(10, [](std::size_t) { throw std::runtime_error("all"); }),
               std::runtime_error);

  workers.Run(10, [&](std::size_t) { ++numDone; });

  EXPECT_EQ(numDone, 10);
}

TEST(Workers, ReportWhatIsDoneAtTheBeginningOfAnOperation) {
  Workers workers(1);
  Listener listener;
  workers.SetListener(&listener);
  workers.Begin();

  workers.BeginStage("sorting", 0.25, 0.5);

  EXPECT_THAT(listener.fractions, ElementsAre(0.25));
  EXPECT_THAT(listener.activities, ElementsAre("sorting"));
}

TEST(Workers, ReportEveryNewActivityAtOnce) {
  Workers workers(1);
  Listener listener;
  workers.SetListener(&listener);
  workers.Begin();

  for (int fold = 0; fold < 100; ++fold) {
    double const done = fold / 100.0;
    workers.BeginStage(fold < 50 ? "growing" : "testing", done, done + 0.01);
  }

  EXPECT_THAT(listener.activities, Contains("growing"));
  EXPECT_THAT(listener.activities, Contains("testing"));
  EXPECT_LT(listener.activities.size(), 100U);
}

TEST(Workers, ReportTheSharesOfTheStage) {
  Workers workers(1);
  Listener listener;
  workers.SetListener(&listener);
  workers.Begin();
  workers.BeginStage("growing", 0.5, 1.0);

  std::this_thread::sleep_for(kMoreThanAnInterval);
  workers.Advance(0.5);

  EXPECT_THAT(listener.fractions, ElementsAre(0.5, 0.75));
}

TEST(Workers, NeverGoBackAndNeverBeyondTheEnd) {
  struct {
    char const* name;
    double share;
    double reached;
  } const kRows[] = {{"back", 0.1, 0.6}, {"forth", 0.75, 0.75}, {"beyond the stage", 7.0, 1.0}};
  Workers workers(1);
  Listener listener;
  workers.SetListener(&listener);
  workers.Begin();
  workers.BeginStage("growing", 0.0, 1.0);
  workers.Advance(0.6);

  for (auto const& row : kRows) {
    SCOPED_TRACE(row.name);
    std::this_thread::sleep_for(kMoreThanAnInterval);
    workers.Advance(row.share);
    EXPECT_EQ(listener.fractions.back(), row.reached);
  }
}

TEST(Workers, StartAgainFromTheBeginningWithAnotherOperation) {
  Workers workers(1);
  Listener listener;
  workers.SetListener(&listener);
  workers.Begin();
  workers.BeginStage("growing", 0.9, 1.0);

  workers.Begin();
  workers.BeginStage("growing", 0.0, 1.0);

  EXPECT_THAT(listener.fractions, ElementsAre(0.9, 0.0));
}

TEST(Workers, ReportInTheCallingThreadOnlyAndNeverBack) {
  Workers workers(4);
  Listener listener;
  workers.SetListener(&listener);
  workers.Begin();
  workers.BeginStage("growing", 0.0, 1.0);
  std::atomic<int> numDone{0};

  workers.Run(40, [&](std::size_t) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    workers.Advance(++numDone / 40.0);
  });

  EXPECT_THAT(listener.threads, Each(std::this_thread::get_id()));
  EXPECT_GE(listener.fractions.size(), 2U);
  EXPECT_TRUE(std::is_sorted(listener.fractions.begin(), listener.fractions.end()));
}

TEST(Workers, ReportWhileOtherThreadsHaveTheLastTasks) {
  Workers workers(2);
  Listener listener;
  workers.SetListener(&listener);
  workers.Begin();
  std::thread::id const caller = std::this_thread::get_id();
  std::atomic<bool> callerIsIn{false};
  std::atomic<bool> otherIsIn{false};

  // The task of the calling thread is done at once; the other one takes several intervals.
  workers.Run(2, [&](std::size_t) {
    bool const isCaller = std::this_thread::get_id() == caller;
    (isCaller ? callerIsIn : otherIsIn) = true;
    while (!callerIsIn || !otherIsIn) std::this_thread::yield();
    if (!isCaller) std::this_thread::sleep_for(5 * kMoreThanAnInterval);
  });

  EXPECT_GE(listener.fractions.size(), 3U);
}

TEST(Workers, EndWhenTheListenerAsksToStop) {
  for (int numThreads = 1; numThreads <= 8; numThreads += 3) {
    SCOPED_TRACE(numThreads);
    Workers workers(numThreads);
    Listener listener(1);
    workers.SetListener(&listener);
    workers.Begin();
    std::atomic<int> numDone{0};

    EXPECT_THROW(workers.Run(1000000,
                             [&](std::size_t) {
                               ++numDone;
                               std::this_thread::sleep_for(std::chrono::milliseconds(1));
                             }),
                 Cancelled);

    EXPECT_LT(numDone, 1000000);
  }
}

TEST(Workers, EndWithinTasksThatPoll) {
  for (int numThreads = 1; numThreads <= 4; ++numThreads) {
    SCOPED_TRACE(numThreads);
    Workers workers(numThreads);
    Listener listener(2);
    workers.SetListener(&listener);
    workers.Begin();

    EXPECT_THROW(workers.Run(static_cast<std::size_t>(numThreads),
                             [&](std::size_t) {
                               for (;;) workers.Poll();
                             }),
                 Cancelled);
  }
}

TEST(Workers, EndWhereTheListenerStopsWhileOthersWork) {
  Workers workers(2);
  Listener listener(3);
  workers.SetListener(&listener);
  workers.Begin();
  std::thread::id const caller = std::this_thread::get_id();
  std::atomic<bool> callerIsIn{false};
  std::atomic<bool> otherIsIn{false};

  // The task of the calling thread is done at once; the other one would never be.
  auto const task = [&](std::size_t) {
    bool const isCaller = std::this_thread::get_id() == caller;
    (isCaller ? callerIsIn : otherIsIn) = true;
    while (!callerIsIn || !otherIsIn) std::this_thread::yield();
    while (!isCaller) workers.Poll();
  };

  EXPECT_THROW(workers.Run(2, task), Cancelled);
}

TEST(Workers, StayCancelledUntilTheNextOperation) {
  Workers workers(1);
  Listener listener(1);
  workers.SetListener(&listener);
  workers.Begin();
  EXPECT_THROW(workers.Poll(), Cancelled);
  EXPECT_THROW(workers.Poll(), Cancelled);
  EXPECT_THROW(workers.Run(1, [](std::size_t) {}), Cancelled);

  workers.Begin();

  EXPECT_NO_THROW(workers.Poll());
}

TEST(Workers, NeedNoListener) {
  Workers workers(2);
  workers.Begin();
  workers.BeginStage("growing", 0.0, 1.0);

  EXPECT_NO_THROW(workers.Advance(0.5));
  EXPECT_NO_THROW(workers.Poll());
}

TEST(Cancelled, SaysSo) { EXPECT_STREQ(Cancelled().what(), "cancelled"); }

TEST(ForSlices, VisitsEverythingOnceAndInOrder) {
  Workers workers(1);
  workers.Begin();
  std::vector<std::pair<std::size_t, std::size_t>> slices;
  auto const visit = [&](std::size_t begin, std::size_t end) { slices.emplace_back(begin, end); };

  ForSlices(0, workers, visit);
  EXPECT_TRUE(slices.empty());
  ForSlices(3, workers, visit);
  EXPECT_THAT(slices, ElementsAre(Pair(0, 3)));
  slices.clear();
  ForSlices(2 * kWorkPerPoll + 1, workers, visit);
  EXPECT_THAT(slices, ElementsAre(Pair(0, kWorkPerPoll), Pair(kWorkPerPoll, 2 * kWorkPerPoll),
                                  Pair(2 * kWorkPerPoll, 2 * kWorkPerPoll + 1)));
}

TEST(ForSlices, PollsBetweenSlices) {
  Workers workers(1);
  Listener listener(1);
  workers.SetListener(&listener);
  workers.Begin();
  int numVisited = 0;

  EXPECT_THROW(ForSlices(3000000, workers, [&](std::size_t, std::size_t) { ++numVisited; }),
               Cancelled);

  EXPECT_EQ(numVisited, 1);
}

TEST(Workers, PollOnceEnoughHasBeenDoneInSmallPieces) {
  constexpr std::size_t kPiece = 1000;
  Workers workers(1);
  Listener listener(1);
  workers.SetListener(&listener);
  workers.Begin();
  std::size_t numPieces = 0;

  EXPECT_THROW(
      {
        while (numPieces * kPiece <= 2 * kWorkPerPoll) {
          ++numPieces;
          workers.Poll(kPiece);
        }
      },
      Cancelled);

  EXPECT_LE(numPieces * kPiece, kWorkPerPoll + kPiece);
  EXPECT_EQ(listener.fractions.size(), 1U);
}

TEST(FindPolling, GivesTheFirstMatch) {
  Workers workers(1);
  workers.Begin();
  constexpr std::size_t kSize = kWorkPerPoll + 10;
  for (std::size_t const match : {std::size_t{0}, std::size_t{5}, kWorkPerPoll, kSize - 1}) {
    std::size_t const found =
        FindPolling(kSize, workers, [&](std::size_t number) { return number >= match; });

    EXPECT_EQ(found, match);
  }
  EXPECT_EQ(FindPolling(kSize, workers, [](std::size_t) { return false; }), kSize);
  EXPECT_EQ(FindPolling(0, workers, [](std::size_t) { return true; }), 0U);
}

TEST(FindPolling, AsksNoMoreOnceItHasAMatch) {
  Workers workers(1);
  workers.Begin();
  std::size_t numAsked = 0;

  FindPolling(2 * kWorkPerPoll, workers, [&](std::size_t number) {
    ++numAsked;
    return number == 3;
  });

  EXPECT_EQ(numAsked, 4U);
}

TEST(FindPolling, PollsOnTheWay) {
  Workers workers(1);
  Listener listener(1);
  workers.SetListener(&listener);
  workers.Begin();

  EXPECT_THROW(FindPolling(2 * kWorkPerPoll, workers, [](std::size_t) { return false; }),
               Cancelled);
}

TEST(Workers, DoAllTasksWithTheThreadsThatMemoryAllows) {
  for (long nth = 1; nth <= 8; ++nth) {
    SCOPED_TRACE(nth);
    Workers workers(4);
    workers.Begin();
    std::atomic<int> numDone{0};
    std::function<void(std::size_t)> const task = [&numDone](std::size_t) { ++numDone; };
    {
      tree::testing::FailingAllocator const allocator(nth, /*persistent=*/true);
      workers.Run(100, task);
    }
    EXPECT_EQ(numDone, 100);
  }
}

}  // namespace
}  // namespace tree::grow
