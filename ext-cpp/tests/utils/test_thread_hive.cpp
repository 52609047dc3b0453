#include <quillmark/utils/thread_hive.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <vector>

#include "sync_helpers.h"

namespace {

// One run counter per task index; every task must run exactly once.
struct Tally {
  explicit Tally(std::size_t n) : runs(n) {}
  std::vector<std::atomic<std::uint32_t>> runs;
  std::size_t count_not_once() const {
    std::size_t wrong = 0;
    for (const auto& r : runs) wrong += r.load() != 1;
    return wrong;
  }
};

struct IndexedTask {
  Tally* tally;
  std::size_t index;
  std::size_t fan_out;  // a task enqueues tasks index * fan_out + 1 ... + fan_out
  std::vector<IndexedTask>* tree;
  std::atomic<bool>* saw_no_outstanding;
};

void run_indexed(void* data, ThreadHive* hive) {
  IndexedTask* node = static_cast<IndexedTask*>(data);
  // The running task is itself outstanding: the pool must never report zero here, however
  // often the count is read while other workers change it.
  for (int k = 0; k < 64; ++k) {
    if (hive->get_num_tasks() == 0) node->saw_no_outstanding->store(true);
  }
  for (std::size_t c = 1; c <= node->fan_out; ++c) {
    const std::size_t child = node->index * node->fan_out + c;
    if (child < node->tree->size()) hive->enqueue(&run_indexed, &(*node->tree)[child]);
  }
  node->tally->runs[node->index].fetch_add(1);
}

struct Shared {
  std::atomic<bool> inside{false};
  std::atomic<int> overlaps{0};
  long total = 0;  // deliberately plain: only the critical section guards it
};

void add_in_critical_section(void* data, ThreadHive* hive) {
  Shared* shared = static_cast<Shared*>(data);
  for (int i = 0; i < 20; ++i) {
    hive->enter_critical_section();
    if (shared->inside.exchange(true)) shared->overlaps.fetch_add(1);
    const long seen = shared->total;
    shared->total = seen + 1;
    shared->inside.store(false);
    hive->leave_critical_section();
  }
}

}  // namespace

TEST(ThreadHive, StartsTheRequestedWorkersAndTheyRunConcurrently) {
  EXPECT_EQ(ThreadHive(0).get_num_threads(), 1u);
  for (unsigned long n : {1ul, 3ul}) {
    ThreadHive hive(n);
    EXPECT_EQ(hive.get_num_threads(), n);
    // Each task blocks until n tasks are inside at once: only n live workers let it pass.
    test_sync::Rendezvous all_in(static_cast<int>(n));
    for (unsigned long i = 0; i < n; ++i) {
      hive.enqueue(
          [](void* data, ThreadHive*) {
            EXPECT_TRUE(static_cast<test_sync::Rendezvous*>(data)->arrive_and_wait());
          },
          &all_in);
    }
    hive.wait_until_finished();
  }
}

TEST(ThreadHive, EveryTaskRunsExactlyOnceAndWaitCoversTasksEnqueuedByTasks) {
  constexpr std::size_t kTasks = 200000;
  std::atomic<bool> saw_no_outstanding{false};
  // Fan-out 0: independent tasks, the second half left to the destructor to drain. A chain
  // (fan-out 1) keeps a single task outstanding at a time, so a child counted only after its
  // parent's count dropped would let the wait return early.
  for (std::size_t fan_out : {0, 1, 3}) {
    const std::size_t n = fan_out == 0 ? kTasks : 30000;
    Tally tally(n);
    std::vector<IndexedTask> tasks(n);
    for (std::size_t i = 0; i < n; ++i)
      tasks[i] = IndexedTask{&tally, i, fan_out, &tasks, &saw_no_outstanding};
    {
      ThreadHive hive(fan_out == 0 ? 3 : 2);
      hive.enqueue(&run_indexed, &tasks[0]);
      for (std::size_t i = 1; fan_out == 0 && i < n / 2; ++i) hive.enqueue(&run_indexed, &tasks[i]);
      hive.wait_until_finished();
      EXPECT_EQ(hive.get_num_tasks(), 0u);
      if (fan_out == 0) {
        EXPECT_EQ(tally.count_not_once(), n - n / 2);
        for (std::size_t i = n / 2; i < n; ++i) hive.enqueue(&run_indexed, &tasks[i]);
      } else {
        EXPECT_EQ(tally.count_not_once(), 0u) << "fan-out " << fan_out;
      }
    }
    EXPECT_EQ(tally.count_not_once(), 0u) << "fan-out " << fan_out;
  }
  EXPECT_FALSE(saw_no_outstanding.load());
}

TEST(ThreadHive, CountIncludesRunningTasksAndQueueIsFirstInFirstOut) {
  ThreadHive hive(1);
  test_sync::Rendezvous gate(1000);
  hive.enqueue(
      [](void* data, ThreadHive*) { static_cast<test_sync::Rendezvous*>(data)->arrive_and_wait(); },
      &gate);
  ASSERT_TRUE(gate.wait_for_arrivals(1));
  struct Step {
    std::vector<int>* order;
    int value;
  };
  std::vector<int> order;
  std::vector<Step> steps;
  for (int i = 0; i < 50; ++i) steps.push_back(Step{&order, i});
  for (Step& step : steps) {
    hive.enqueue(
        [](void* data, ThreadHive*) {
          static_cast<Step*>(data)->order->push_back(static_cast<Step*>(data)->value);
        },
        &step);
  }
  EXPECT_EQ(hive.get_num_tasks(), 51u)
      << "the blocked task has left the queue but is still counted";
  gate.release_all();
  hive.wait_until_finished();
  EXPECT_EQ(hive.get_num_tasks(), 0u);
  ASSERT_EQ(order.size(), 50u);
  for (int i = 0; i < 50; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(ThreadHive, CriticalSectionExcludesOtherTasks) {
  Shared shared;
  {
    ThreadHive hive(4);
    for (int i = 0; i < 2000; ++i) hive.enqueue(&add_in_critical_section, &shared);
  }
  EXPECT_EQ(shared.overlaps.load(), 0);
  EXPECT_EQ(shared.total, 2000 * 20);
}
