#ifndef QUILLMARK_TESTS_UTILS_SYNC_HELPERS_H
#define QUILLMARK_TESTS_UTILS_SYNC_HELPERS_H

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace test_sync {

/// Blocks threads until `expected` of them have arrived. The waits answer false when a
/// generous guard ran out first, which in these tests means a thread never showed up: the
/// guard only turns a hang into a failure, it never paces a test.
class Rendezvous {
 public:
  explicit Rendezvous(int expected) : expected_(expected) {}

  bool arrive_and_wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    ++arrived_;
    cond_.notify_all();
    return cond_.wait_for(lock, std::chrono::seconds(20), [this] { return arrived_ >= expected_; });
  }

  /// Waits until `count` threads have arrived, without arriving.
  bool wait_for_arrivals(int count) {
    std::unique_lock<std::mutex> lock(mutex_);
    return cond_.wait_for(lock, std::chrono::seconds(20), [&] { return arrived_ >= count; });
  }

  void release_all() {
    std::lock_guard<std::mutex> lock(mutex_);
    arrived_ = expected_;
    cond_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable cond_;
  int expected_;
  int arrived_ = 0;
};

}  // namespace test_sync

#endif
