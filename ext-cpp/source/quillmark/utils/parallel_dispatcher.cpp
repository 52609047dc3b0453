#include <quillmark/utils/parallel_dispatcher.h>

#include <sched.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>

#include <quillmark/utils/detail/raw_array.h>
#include <quillmark/utils/fatal_assert.h>
#include <quillmark/utils/thread_hive.h>

namespace {

// Waking a thread that sleeps on a condition variable costs tens of microseconds on a
// loaded machine, far more than a small dispatch. A thread that has just finished its part
// therefore polls for up to this long before it sleeps: back-to-back dispatches then never
// sleep, while an idle dispatcher costs at most this much CPU per thread before it rests.
// Shorter polls miss the next dispatch of a typical loop; longer ones waste the core.
constexpr std::uint64_t SPIN_BEFORE_SLEEP_NS = 1000000;

inline void cpu_relax() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  __asm__ __volatile__("yield");
#endif
}

// Polls `ready` until it answers true or `limit_ns` has passed.
template <typename Ready>
void poll_until(Ready ready, std::uint64_t limit_ns) {
  if (limit_ns == 0) {
    return;
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::nanoseconds(limit_ns);
  for (;;) {
    // Reading the clock costs more than a pause; look at it only now and then.
    for (int i = 0; i < 64; ++i) {
      if (ready()) {
        return;
      }
      cpu_relax();
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      return;
    }
    // On a machine busier than it has processors, the thread we wait for may be the one
    // queued behind us: hand the processor over now and then. With nothing else runnable
    // this returns at once and the poll goes on.
    sched_yield();
  }
}

// Processors the calling thread may run on (new threads inherit its mask): fewer than are
// online under taskset, cpusets or a container's CPU list. When the mask cannot be read, and
// on systems without affinity masks (macOS has only hints), the processors online.
std::uint64_t usable_processors() {
#ifdef __linux__
  cpu_set_t mask;
  if (sched_getaffinity(0, sizeof mask, &mask) == 0) {
    int const count = CPU_COUNT(&mask);
    if (count > 0) return static_cast<std::uint64_t>(count);
  }
#endif
  return ThreadHive::get_num_processors();
}

}  // namespace

std::uint64_t ParallelDispatcher::get_num_processors() { return ThreadHive::get_num_processors(); }

ParallelDispatcher::ParallelDispatcher(unsigned long num_threads)
    : workers(nullptr),
      num_workers(num_threads < 2 ? 1 : num_threads - 1),
      num_busy(0),
      threads(nullptr),
      spin_ns(0) {
  workers = allocate_raw_array<Worker>(num_workers);
  for (std::uint64_t i = 0; i < num_workers; ++i) {
    new (&workers[i]) Worker{this, nullptr, nullptr, 0, 0, {idle}};
  }
  threads = allocate_raw_array<pthread_t>(num_workers);
  std::memset(static_cast<void*>(threads), 0, num_workers * sizeof(pthread_t));

  pthread_mutex_init(&done_mutex, nullptr);
  pthread_mutex_init(&work_mutex, nullptr);
  pthread_cond_init(&done_cond, nullptr);
  pthread_cond_init(&work_cond, nullptr);

  // Polling only pays when every thread of a dispatch has a processor of its own; on an
  // oversubscribed machine a polling thread steals the time of the one it waits for.
  if (num_workers + 1 <= usable_processors()) {
    spin_ns = SPIN_BEFORE_SLEEP_NS;
  }

  // Started workers are packed at the front: worker records past num_workers never get a
  // slice, so a refused thread can never hold up a dispatch, and their handles are never read.
  std::uint64_t started = 0;
  for (std::uint64_t i = 0; i < num_workers; ++i) {
    if (pthread_create(&threads[started], nullptr, &ParallelDispatcher::thread_task,
                       &workers[started]) == 0) {
      ++started;
    }
  }
  // Workers never read num_workers, so setting it after they started is safe.
  num_workers = started;
}

ParallelDispatcher::~ParallelDispatcher() {
  wait_for_workers(0);

  pthread_mutex_lock(&work_mutex);
  for (std::uint64_t i = 0; i < num_workers; ++i) {
    workers[i].state.store(quit, std::memory_order_release);
  }
  pthread_cond_broadcast(&work_cond);
  pthread_mutex_unlock(&work_mutex);

  for (std::uint64_t i = 0; i < num_workers; ++i) {
    pthread_join(threads[i], nullptr);
  }

  pthread_mutex_destroy(&done_mutex);
  pthread_mutex_destroy(&work_mutex);
  pthread_cond_destroy(&done_cond);
  pthread_cond_destroy(&work_cond);
  std::free(threads);
  std::free(workers);
}

void ParallelDispatcher::distribute_task(void (*function)(unsigned long, unsigned long, void*),
                                         unsigned long h, unsigned long t, void* data) noexcept {
  QM_ASSERT(t >= h);
  const std::uint64_t n = t - h;
  if (n == 0) {
    return;
  }
  const std::uint64_t w = num_workers;

  // Set before any slice is posted, so that an early finisher cannot reach zero first.
  pthread_mutex_lock(&done_mutex);
  num_busy.store(n > w + 1 ? w : n - 1, std::memory_order_relaxed);
  pthread_mutex_unlock(&done_mutex);

  pthread_mutex_lock(&work_mutex);
  std::uint64_t cursor = h;
  const auto post = [&](std::uint64_t i, std::uint64_t length) {
    Worker& worker = workers[i];
    worker.function = function;
    worker.data = data;
    worker.begin = cursor;
    cursor += length;
    worker.end = cursor;
    worker.state.store(run, std::memory_order_release);
  };
  if (n > w + 1) {
    const std::uint64_t q = n / (w + 1);
    const std::uint64_t r = n - (w + 1) * q;
    for (std::uint64_t i = 0; i < w; ++i) {
      post(i, i < r ? q + 1 : q);
    }
  } else {
    // One index per worker for the first n - 1 indices; none at all when n is 1.
    for (std::uint64_t i = 0; i + 1 < n; ++i) {
      post(i, 1);
    }
  }
  pthread_cond_broadcast(&work_cond);
  pthread_mutex_unlock(&work_mutex);

  function(cursor, t, data);
  wait_for_workers(spin_ns);
}

void ParallelDispatcher::wait_for_workers(std::uint64_t poll_ns) {
  poll_until([this] { return num_busy.load(std::memory_order_acquire) == 0; }, poll_ns);
  pthread_mutex_lock(&done_mutex);
  while (num_busy.load(std::memory_order_relaxed) != 0) {
    pthread_cond_wait(&done_cond, &done_mutex);
  }
  pthread_mutex_unlock(&done_mutex);
}

void ParallelDispatcher::finish_slice() {
  pthread_mutex_lock(&done_mutex);
  const std::uint64_t busy = num_busy.load(std::memory_order_relaxed);
  if (busy != 0) {
    num_busy.store(busy - 1, std::memory_order_release);
    if (busy == 1) {
      pthread_cond_signal(&done_cond);
    }
  }
  pthread_mutex_unlock(&done_mutex);
}

void* ParallelDispatcher::thread_task(void* worker) noexcept {
  Worker* self = static_cast<Worker*>(worker);
  ParallelDispatcher* owner = self->owner;
  for (;;) {
    poll_until([self] { return self->state.load(std::memory_order_acquire) != idle; },
               owner->spin_ns);
    pthread_mutex_lock(&owner->work_mutex);
    while (self->state.load(std::memory_order_relaxed) == idle) {
      pthread_cond_wait(&owner->work_cond, &owner->work_mutex);
    }
    if (self->state.load(std::memory_order_relaxed) == quit) {
      pthread_mutex_unlock(&owner->work_mutex);
      return nullptr;
    }
    self->state.store(idle, std::memory_order_relaxed);
    pthread_mutex_unlock(&owner->work_mutex);

    // The record is rewritten only by the next dispatch, which cannot start before this
    // slice is reported done, so reading it outside the lock is sound.
    self->function(self->begin, self->end, self->data);
    owner->finish_slice();
  }
}
