#include <quillmark/utils/thread_hive.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "sync_helpers.h"

namespace {

struct Tally {
  explicit Tally(std::size_t n) : runs(new std::atomic<std::uint32_t>[n]), size(n) {
    for (std::size_t i = 0; i < n; ++i) runs[i].store(0);
  }
  std::unique_ptr<std::atomic<std::uint32_t>[]> runs;
  std::size_t size;

  std::size_t count_not_once() const {
    std::size_t wrong = 0;
    for (std::size_t i = 0; i < size; ++i) wrong += runs[i].load() != 1 ? 1 : 0;
    return wrong;
  }
};

struct IndexedTask {
  Tally* tally;
  std::size_t index;
};

void run_indexed(void* data, ThreadHive*) {
  const IndexedTask* task = static_cast<IndexedTask*>(data);
  task->tally->runs[task->index].fetch_add(1);
}

void meet(void* data, ThreadHive*) {
  static_cast<test_sync::Rendezvous*>(data)->arrive_and_wait();
}

}  // namespace

TEST(ThreadHive, StartsTheRequestedWorkersAndTheyRunConcurrently) {
  {
    ThreadHive hive(0);
    EXPECT_EQ(hive.get_num_threads(), 1u);
  }
  for (unsigned long n : {1ul, 3ul}) {
    ThreadHive hive(n);
    EXPECT_EQ(hive.get_num_threads(), n);
    // Each task blocks until n tasks are inside at once: only n live workers let it pass.
    test_sync::Rendezvous all_in(static_cast<int>(n));
    std::atomic<int> passed{0};
    struct Meeting {
      test_sync::Rendezvous* rendezvous;
      std::atomic<int>* passed;
    } meeting{&all_in, &passed};
    for (unsigned long i = 0; i < n; ++i) {
      hive.enqueue(
          [](void* data, ThreadHive*) {
            Meeting* m = static_cast<Meeting*>(data);
            if (m->rendezvous->arrive_and_wait()) m->passed->fetch_add(1);
          },
          &meeting);
    }
    hive.wait_until_finished();
    EXPECT_EQ(passed.load(), static_cast<int>(n));
  }
}

TEST(ThreadHive, EveryTaskRunsExactlyOnceUnderLoad) {
  constexpr std::size_t kTasks = 200000;
  Tally tally(kTasks);
  std::vector<IndexedTask> tasks(kTasks);
  for (std::size_t i = 0; i < kTasks; ++i) tasks[i] = IndexedTask{&tally, i};
  {
    ThreadHive hive(3);
    for (std::size_t i = 0; i < kTasks / 2; ++i) hive.enqueue(&run_indexed, &tasks[i]);
    hive.wait_until_finished();
    EXPECT_EQ(hive.get_num_tasks(), 0u);
    // The second half is left to the destructor, which must drain the queue.
    for (std::size_t i = kTasks / 2; i < kTasks; ++i) hive.enqueue(&run_indexed, &tasks[i]);
  }
  EXPECT_EQ(tally.count_not_once(), 0u);
}

namespace {

// A tree of tasks: node i enqueues nodes i * fan_out + 1 ... i * fan_out + fan_out.
struct Tree {
  Tally* tally;
  std::vector<IndexedTask>* nodes;
  std::size_t fan_out;
  std::atomic<bool> saw_no_outstanding{false};
};

Tree* tree = nullptr;

void run_tree_node(void* data, ThreadHive* hive) {
  IndexedTask* node = static_cast<IndexedTask*>(data);
  // The running task is itself outstanding: the pool must never report zero here.
  if (hive->get_num_tasks() == 0) tree->saw_no_outstanding.store(true);
  for (std::size_t c = 1; c <= tree->fan_out; ++c) {
    const std::size_t child = node->index * tree->fan_out + c;
    if (child < tree->nodes->size()) hive->enqueue(&run_tree_node, &(*tree->nodes)[child]);
  }
  node->tally->runs[node->index].fetch_add(1);
}

}  // namespace

TEST(ThreadHive, WaitCoversTasksEnqueuedByTasks) {
  constexpr std::size_t kNodes = 30000;
  std::vector<IndexedTask> nodes(kNodes);
  // A chain (fan-out 1) keeps a single task outstanding at a time, so a child counted only
  // after its parent's count dropped would let the wait return early.
  for (std::size_t fan_out : {1, 3}) {
    Tally tally(kNodes);
    for (std::size_t i = 0; i < kNodes; ++i) nodes[i] = IndexedTask{&tally, i};
    Tree shape{&tally, &nodes, fan_out};
    tree = &shape;
    ThreadHive hive(2);
    hive.enqueue(&run_tree_node, &nodes[0]);
    hive.wait_until_finished();
    EXPECT_EQ(tally.count_not_once(), 0u) << "fan-out " << fan_out;
    EXPECT_FALSE(shape.saw_no_outstanding.load());
    tree = nullptr;
  }
}

TEST(ThreadHive, CountIncludesRunningTasksAndQueueIsFirstInFirstOut) {
  ThreadHive hive(1);
  test_sync::Rendezvous gate(1000);
  hive.enqueue(&meet, &gate);
  ASSERT_TRUE(gate.wait_for_arrivals(1));
  std::vector<int> order;
  struct Step {
    std::vector<int>* order;
    int value;
  };
  std::vector<Step> steps;
  for (int i = 0; i < 50; ++i) steps.push_back(Step{&order, i});
  for (Step& step : steps) {
    hive.enqueue([](void* data, ThreadHive*) {
      Step* s = static_cast<Step*>(data);
      s->order->push_back(s->value);
    }, &step);
  }
  // The blocked task has left the queue but is still counted.
  EXPECT_EQ(hive.get_num_tasks(), 51u);
  gate.release_all();
  hive.wait_until_finished();
  EXPECT_EQ(hive.get_num_tasks(), 0u);
  ASSERT_EQ(order.size(), 50u);
  for (int i = 0; i < 50; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

namespace {

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

TEST(ThreadHive, CriticalSectionExcludesOtherTasks) {
  Shared shared;
  {
    ThreadHive hive(4);
    for (int i = 0; i < 2000; ++i) hive.enqueue(&add_in_critical_section, &shared);
  }
  EXPECT_EQ(shared.overlaps.load(), 0);
  EXPECT_EQ(shared.total, 2000 * 20);
}
