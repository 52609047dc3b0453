// What the pool and the dispatcher do when the system refuses to create their threads
// (every thread created while RefuseNewThreads is alive asks for an impossible stack), and
// what the utilities do with sizes that cannot be allocated.
#include <gtest/gtest.h>
#include <pthread.h>

#include <climits>
#include <cstdint>

#include "bit_buffer.h"
#include "parallel_dispatcher.h"
#include "thread_hive.h"

namespace {

class RefuseNewThreads {
public:
  RefuseNewThreads() {
    pthread_getattr_default_np(&saved_);
    pthread_attr_t impossible;
    pthread_attr_init(&impossible);
    pthread_attr_setstacksize(&impossible, static_cast<std::size_t>(1) << 62);
    pthread_setattr_default_np(&impossible);
    pthread_attr_destroy(&impossible);
  }
  ~RefuseNewThreads() {
    pthread_setattr_default_np(&saved_);
    pthread_attr_destroy(&saved_);
  }
  RefuseNewThreads(const RefuseNewThreads&) = delete;
  RefuseNewThreads& operator=(const RefuseNewThreads&) = delete;

private:
  pthread_attr_t saved_;
};

struct Observed {
  ThreadHive* hive = nullptr;
  int runs = 0;
  bool on_caller = true;
  std::uint64_t outstanding_inside = 0;
};

void observe(void* data, ThreadHive* hive) {
  Observed* observed = static_cast<Observed*>(data);
  ++observed->runs;
  observed->on_caller = observed->on_caller && hive == observed->hive;
  observed->outstanding_inside = hive->get_num_tasks();
  if (observed->runs < 3) hive->enqueue(&observe, data);  // a task that enqueues a task
}

}  // namespace

TEST(RefusedThreads, PoolRunsTasksOnTheCallerInstead) {
  RefuseNewThreads refuse;
  ThreadHive hive(3);
  ASSERT_EQ(hive.get_num_threads(), 0u);
  Observed observed;
  observed.hive = &hive;
  hive.enqueue(&observe, &observed);
  // Nothing is left waiting for a worker that does not exist.
  EXPECT_EQ(observed.runs, 3);
  EXPECT_TRUE(observed.on_caller);
  EXPECT_EQ(observed.outstanding_inside, 3u) << "nested tasks are still counted while they run";
  EXPECT_EQ(hive.get_num_tasks(), 0u);
  hive.wait_until_finished();
}

TEST(RefusedThreads, DispatcherRunsTheWholeRangeOnTheCaller) {
  RefuseNewThreads refuse;
  ParallelDispatcher dispatcher(4);
  ASSERT_EQ(dispatcher.get_num_workers(), 0u);
  struct Calls {
    int count = 0;
    unsigned long begin = 0, end = 0;
  } calls;
  const auto record = [](unsigned long begin, unsigned long end, void* data) {
    Calls* c = static_cast<Calls*>(data);
    ++c->count;
    c->begin = begin;
    c->end = end;
  };
  dispatcher.distribute_task(record, 3, 103, &calls);
  EXPECT_EQ(calls.count, 1);
  EXPECT_EQ(calls.begin, 3u);
  EXPECT_EQ(calls.end, 103u);
  dispatcher.distribute_task(record, 9, 10, &calls);
  EXPECT_EQ(calls.count, 2);
  EXPECT_EQ(calls.begin, 9u);
}

TEST(ImpossibleSizesDeathTest, AreFatalInsteadOfWrapping) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // A count whose byte size wraps around would otherwise allocate a tiny array.
  EXPECT_DEATH({ ThreadHive hive(ULONG_MAX); }, "Assertion failed: count <= SIZE_MAX / sizeof\\(T\\)");
  EXPECT_DEATH({ ParallelDispatcher dispatcher(ULONG_MAX); }, "Assertion failed: count <= SIZE_MAX");
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  // The sanitizers' allocators report an impossible request themselves, in their own words.
  const char* const out_of_memory = "";
  const char* const cannot_grow = "";
#else
  const char* const out_of_memory = "Assertion failed: array != nullptr";
  const char* const cannot_grow = "Assertion failed: grown != nullptr";
#endif
  EXPECT_DEATH({ BitBuffer buffer(1ul << 62); }, out_of_memory);
  BitBuffer buffer;
  EXPECT_DEATH(buffer.reserve(ULONG_MAX), cannot_grow);
}
