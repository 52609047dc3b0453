#include <quillmark/utils/parallel_dispatcher.h>

#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <random>
#include <vector>

namespace {

struct Slice {
  unsigned long begin;
  unsigned long end;
  pthread_t thread;
};

struct Recorder {
  std::mutex mutex;
  std::vector<Slice> slices;

  static void record(unsigned long begin, unsigned long end, void* data) {
    Recorder* self = static_cast<Recorder*>(data);
    std::lock_guard<std::mutex> lock(self->mutex);
    self->slices.push_back(Slice{begin, end, pthread_self()});
  }
};

struct Work {
  std::atomic<std::uint64_t> indices_done{0};
  std::atomic<std::uint64_t> sum{0};
};

void add_indices(unsigned long begin, unsigned long end, void* data) {
  Work* work = static_cast<Work*>(data);
  std::uint64_t sum = 0;
  for (unsigned long i = begin; i < end; ++i) sum += i;
  work->sum.fetch_add(sum);
  // Reported last: if the dispatch returned before this, the count below would be short.
  work->indices_done.fetch_add(end - begin);
}

}  // namespace

TEST(ParallelDispatcher, CallerCountsAsOneOfTheThreads) {
  for (unsigned long n : {0ul, 1ul, 2ul})
    EXPECT_EQ(ParallelDispatcher(n).get_num_workers(), 1u) << n;
  EXPECT_EQ(ParallelDispatcher(8).get_num_workers(), 7u);
}

// [h, t) is cut into min(t - h, W + 1) contiguous slices whose sizes differ by at most one,
// larger ones first ([0, 10) over four threads: 3, 3, 2, 2); each worker runs one, the
// caller the last.
TEST(ParallelDispatcher, SlicesCoverRandomRangesExactlyOnce) {
  std::mt19937_64 rng(7031);
  std::uniform_int_distribution<unsigned long> start(0, 1ul << 40);
  std::uniform_int_distribution<unsigned long> small_length(0, 40);
  std::uniform_int_distribution<unsigned long> large_length(41, 100000);
  Recorder recorder;
  const pthread_t caller = pthread_self();
  for (unsigned long threads = 0; threads <= 6; ++threads) {
    ParallelDispatcher dispatcher(threads);
    const std::uint64_t w = dispatcher.get_num_workers();
    for (int round = 0; round < 60; ++round) {
      const unsigned long h = start(rng);
      const unsigned long n = round % 3 == 0 ? large_length(rng) : small_length(rng);
      dispatcher.distribute_task(&Recorder::record, h, h + n, &recorder);
      std::vector<Slice> slices;
      slices.swap(recorder.slices);
      std::sort(slices.begin(), slices.end(),
                [](const Slice& a, const Slice& b) { return a.begin < b.begin; });
      ASSERT_EQ(slices.size(), std::min<std::uint64_t>(n, w + 1));
      if (n == 0) continue;
      unsigned long cursor = h;
      const unsigned long smallest = slices.back().end - slices.back().begin;
      for (std::size_t i = 0; i < slices.size(); ++i) {
        ASSERT_EQ(slices[i].begin, cursor);
        ASSERT_GT(slices[i].end, cursor);
        cursor = slices[i].end;
        const unsigned long length = slices[i].end - slices[i].begin;
        EXPECT_LE(length - smallest, 1u) << "slice " << i << " of " << n << " indices";
        if (i > 0) {
          EXPECT_LE(length, slices[i - 1].end - slices[i - 1].begin);
        }
        if (i + 1 == slices.size()) break;
        EXPECT_FALSE(pthread_equal(slices[i].thread, caller))
            << "slice " << i << " belongs to a worker";
        for (std::size_t j = i + 1; j + 1 < slices.size(); ++j) {
          EXPECT_FALSE(pthread_equal(slices[i].thread, slices[j].thread)) << "one slice per worker";
        }
      }
      ASSERT_EQ(cursor, h + n);
      EXPECT_TRUE(pthread_equal(slices.back().thread, caller)) << "the caller runs the last slice";
    }
  }
}

TEST(ParallelDispatcher, ManyDispatchesInARowLoseNoWakeUp) {
  for (unsigned long threads : {2ul, 3ul}) {
    ParallelDispatcher dispatcher(threads);
    Work work;
    std::uint64_t expected_indices = 0, expected_sum = 0;
    const int dispatches = threads == 2 ? 20000 : 3000;
    for (int d = 0; d < dispatches; ++d) {
      const unsigned long h = static_cast<unsigned long>(d);
      const unsigned long n = static_cast<unsigned long>(d % 7);  // includes 0, 1 and W + 1
      dispatcher.distribute_task(&add_indices, h, h + n, &work);
      expected_indices += n;
      for (unsigned long i = h; i < h + n; ++i) expected_sum += i;
      ASSERT_EQ(work.indices_done.load(), expected_indices)
          << "dispatch " << d << " returned early";
    }
    EXPECT_EQ(work.sum.load(), expected_sum);
  }
}

TEST(ParallelDispatcherDeathTest, ReversedRangeIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  ParallelDispatcher dispatcher(2);
  Work work;
  EXPECT_DEATH(
      dispatcher.distribute_task(&add_indices, 5, 4, &work),
      "Assertion failed: t >= h, function distribute_task, file .*parallel_dispatcher\\.cpp, line");
}

// Polling pays only when each thread of a dispatch has a processor of its own among those
// this process may run on, however many the machine has online.
TEST(ParallelDispatcher, PollsOnlyWithAProcessorForEveryThread) {
  cpu_set_t all, one;
  ASSERT_EQ(sched_getaffinity(0, sizeof all, &all), 0);
  EXPECT_EQ(ParallelDispatcher(2).get_poll_ns() != 0, CPU_COUNT(&all) >= 2);
  CPU_ZERO(&one);
  int cpu = 0;
  while (!CPU_ISSET(cpu, &all)) ++cpu;
  CPU_SET(cpu, &one);
  ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);  // like taskset -c N
  EXPECT_EQ(ParallelDispatcher(2).get_poll_ns(), 0u) << "two threads on one processor must sleep";
  ASSERT_EQ(sched_setaffinity(0, sizeof all, &all), 0);
}
