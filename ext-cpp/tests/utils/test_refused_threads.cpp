// What the pool and the dispatcher do when the system refuses to create their threads
// (every thread created while RefuseNewThreads is alive asks for an impossible stack), and
// what the utilities do with sizes that cannot be allocated.
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <quillmark/utils/bit_buffer.h>
#include <quillmark/utils/parallel_dispatcher.h>
#include <quillmark/utils/thread_hive.h>

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

struct Chain {
  ThreadHive* hive = nullptr;
  long runs = 0;
  long length = 0;
  bool on_waiter = true;
  std::uint64_t outstanding_inside = 0;
};

void link(void* data, ThreadHive* hive) {
  Chain* chain = static_cast<Chain*>(data);
  ++chain->runs;
  chain->on_waiter = chain->on_waiter && hive == chain->hive;
  chain->outstanding_inside = hive->get_num_tasks();
  if (chain->runs < chain->length) hive->enqueue(&link, data);  // each task enqueues the next
}

void enter_and_leave(void* data, ThreadHive* hive) {
  hive->enter_critical_section();
  ++*static_cast<int*>(data);
  hive->leave_critical_section();
}

}  // namespace

// Without workers, tasks wait in the queue for the thread that waits for them: enqueue never
// runs one, so neither a lock its caller holds nor a long chain of tasks that each enqueue
// the next (nested, 200,000 links would overflow the stack) can stop the caller.
TEST(RefusedThreads, PoolRunsTasksOnTheWaitingThreadOneAfterAnother) {
  RefuseNewThreads refuse;
  ThreadHive hive(3);
  ASSERT_EQ(hive.get_num_threads(), 0u);
  Chain chain;
  chain.hive = &hive;
  chain.length = 200000;
  hive.enqueue(&link, &chain);
  EXPECT_EQ(chain.runs, 0);
  EXPECT_EQ(hive.get_num_tasks(), 1u);
  hive.wait_until_finished();
  EXPECT_EQ(chain.runs, chain.length);
  EXPECT_TRUE(chain.on_waiter);
  EXPECT_EQ(chain.outstanding_inside, 1u) << "a running task is still counted";
  EXPECT_EQ(hive.get_num_tasks(), 0u);
}

TEST(RefusedThreadsDeathTest, EnqueueUnderTheCriticalSectionDoesNotDeadlock) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        alarm(20);  // a deadlock ends the child by SIGALRM instead of hanging the suite
        RefuseNewThreads refuse;
        int entered = 0;
        {
          ThreadHive hive(2);
          hive.enter_critical_section();
          hive.enqueue(&enter_and_leave, &entered);
          hive.leave_critical_section();
        }  // the destructor waits, and so runs the task
        std::exit(entered == 1 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(RefusedThreads, DispatcherRunsTheWholeRangeOnTheCaller) {
  RefuseNewThreads refuse;
  ParallelDispatcher dispatcher(4);
  ASSERT_EQ(dispatcher.get_num_workers(), 0u);
  std::vector<unsigned long> calls;  // begin and end of each call
  const auto record = [](unsigned long begin, unsigned long end, void* data) {
    static_cast<std::vector<unsigned long>*>(data)->insert(
        static_cast<std::vector<unsigned long>*>(data)->end(), {begin, end});
  };
  dispatcher.distribute_task(record, 3, 103, &calls);
  dispatcher.distribute_task(record, 9, 10, &calls);
  EXPECT_EQ(calls, (std::vector<unsigned long>{3, 103, 9, 10}));
}

TEST(ImpossibleSizesDeathTest, AreFatalInsteadOfWrapping) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // A count whose byte size wraps around would otherwise allocate a tiny array.
  EXPECT_DEATH({ ThreadHive hive(ULONG_MAX); },
               "Assertion failed: count <= SIZE_MAX / sizeof\\(T\\)");
  EXPECT_DEATH({ ParallelDispatcher dispatcher(ULONG_MAX); },
               "Assertion failed: count <= SIZE_MAX");
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
