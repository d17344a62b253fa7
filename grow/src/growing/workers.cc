#include "growing/workers.h"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

namespace tree::grow {
namespace {

// Often enough for a cancellation to take effect within a tenth of a second, and seldom enough to
// cost nothing.
constexpr std::chrono::milliseconds kReportInterval{40};

}  // namespace

struct Workers::Pool {
  explicit Pool(int numThreads) : threads(static_cast<std::size_t>(numThreads)) {}
  boost::asio::thread_pool threads;
  std::thread::id caller;
};

/// The tasks of one call of `Run`.
struct Workers::Batch {
  std::size_t count;
  std::function<void(std::size_t)> const& task;
  std::atomic<std::size_t> next{0};
  std::mutex mutex;  // guards what follows
  std::condition_variable changed;
  int numWorking = 0;
  std::exception_ptr failure;

  void Fail(std::exception_ptr&& what) {
    std::lock_guard const lock(mutex);
    if (failure == nullptr) failure = what;
    next = count;
  }
};

Workers::Workers(int numThreads)
    : numThreads_(numThreads > 0
                      ? numThreads
                      : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()))) {
  if (numThreads_ > 1) pool_ = std::make_unique<Pool>(numThreads_ - 1);
}

Workers::~Workers() {
  if (pool_ != nullptr) pool_->threads.join();
}

bool Workers::IsCaller() const {
  return pool_ == nullptr || std::this_thread::get_id() == pool_->caller;
}

void Workers::Begin() {
  if (pool_ != nullptr) pool_->caller = std::this_thread::get_id();
  cancelled_ = false;
  fraction_ = 0.0;
  lastReport_ = {};
}

void Workers::BeginStage(char const* activity, double from, double to) {
  // However short a stage is, it is heard of.
  if (std::strcmp(activity, activity_) != 0) lastReport_ = {};
  activity_ = activity;
  stageBegin_ = from;
  stageEnd_ = to;
  Advance(0.0);
}

void Workers::Advance(double share) {
  if (IsCaller()) {
    double const reached = stageBegin_ + (stageEnd_ - stageBegin_) * std::min(1.0, share);
    fraction_ = std::clamp(reached, fraction_, 1.0);
  }
  Poll();
}

void Workers::Poll() {
  if (cancelled_) throw Cancelled();
  if (listener_ == nullptr || !IsCaller()) return;
  auto const now = std::chrono::steady_clock::now();
  if (now - lastReport_ < kReportInterval) return;
  lastReport_ = now;
  if (listener_->Report(fraction_, activity_)) return;
  cancelled_ = true;
  throw Cancelled();
}

void Workers::Poll(std::size_t work) {
  thread_local std::size_t sinceLast = 0;
  sinceLast += work;
  if (sinceLast < kWorkPerPoll) return;
  sinceLast = 0;
  Poll();
}

void Workers::WorkOn(Batch& batch) {
  try {
    for (std::size_t number = batch.next++; number < batch.count; number = batch.next++) {
      Poll();
      batch.task(number);
    }
  } catch (...) {
    batch.Fail(std::current_exception());
  }
}

void Workers::Run(std::size_t count, std::function<void(std::size_t)> const& task) {
  Batch batch{count, task, {}, {}, {}, 0, {}};
  if (pool_ != nullptr && count > 1) {
    auto const numHelpers =
        static_cast<int>(std::min(count, static_cast<std::size_t>(numThreads_)) - 1);
    for (int helper = 0; helper < numHelpers; ++helper) {
      auto const addWorking = [&batch](int change) {
        std::lock_guard const lock(batch.mutex);
        batch.numWorking += change;
        batch.changed.notify_one();
      };
      addWorking(1);
      try {
        boost::asio::post(pool_->threads, [this, &batch, addWorking] {
          WorkOn(batch);
          addWorking(-1);
        });
      } catch (std::bad_alloc const&) {
        // Those who have been called, and this thread, do it all.
        addWorking(-1);
        break;
      }
    }
  }
  WorkOn(batch);
  std::unique_lock lock(batch.mutex);
  while (batch.numWorking > 0) {
    batch.changed.wait_for(lock, kReportInterval);
    lock.unlock();
    try {
      Poll();
    } catch (...) {
      batch.Fail(std::current_exception());
    }
    lock.lock();
  }
  if (batch.failure != nullptr) std::rethrow_exception(batch.failure);
}

}  // namespace tree::grow
