#ifndef QUILLMARK_UTILS_PARALLEL_DISPATCHER_H
#define QUILLMARK_UTILS_PARALLEL_DISPATCHER_H

#include <pthread.h>

#include <atomic>
#include <cstdint>

/// A blocking parallel loop with a static partition over a fixed set of worker threads.
///
/// distribute_task(f, h, t, data) splits the half-open range [h, t) once, hands one slice
/// to each worker and runs the last slice on the calling thread, then returns when every
/// slice has returned. With W workers and n = t - h indices:
///   - n > W + 1: every slice has q = n / (W + 1) indices, and the first r = n - (W + 1) * q
///     workers get one more; the calling thread's slice, the last, has exactly q;
///   - 2 <= n <= W + 1: workers 0 ... n - 2 get one index each, in order, and the calling
///     thread the last index;
///   - n == 1: the calling thread alone; n == 0: nothing runs.
/// Slices are contiguous and in worker order. `f` runs concurrently on disjoint slices and
/// must not call into the Ruby interpreter, nor dispatch on the same dispatcher. One thread
/// dispatches at a time.
///
/// A dispatcher built for n threads starts n - 1 workers (at least one), since the caller
/// works too. Threads the system refuses to create are left out; with none at all, every
/// range runs on the calling thread.
///
/// When every thread of a dispatch has a processor of its own among those the process may
/// run on (its affinity mask, not the processors online), each one polls for up to 1 ms
/// after its slice before it sleeps, so that back-to-back dispatches need no wake-up.
class ParallelDispatcher {
 public:
  /// Worker states, guarded by work_mutex.
  static constexpr std::uint64_t idle = 0;
  static constexpr std::uint64_t run = 1;
  static constexpr std::uint64_t quit = 2;

  /// What one worker does in the current dispatch. `state` is atomic only so that an idle
  /// worker may peek at it while it polls; every change still happens under work_mutex.
  struct Worker {
    ParallelDispatcher* owner;
    void (*function)(unsigned long begin, unsigned long end, void* data);
    void* data;
    std::uint64_t begin;
    std::uint64_t end;
    std::atomic<std::uint64_t> state;
  };

  /// Processors currently online; 1 when the platform cannot tell.
  static std::uint64_t get_num_processors();

  /// `num_threads` counts the calling thread: 0, 1 and 2 all start one worker, n > 2 starts
  /// n - 1.
  explicit ParallelDispatcher(unsigned long num_threads);
  ParallelDispatcher(const ParallelDispatcher&) = delete;
  ParallelDispatcher& operator=(const ParallelDispatcher&) = delete;
  /// Waits for a dispatch in progress, then stops and joins the workers. Never from inside
  /// `function`.
  virtual ~ParallelDispatcher();

  /// Runs `function` over [h, t) as described above and returns when every slice has
  /// returned; `data` is passed through unread. t < h is a fatal assertion. A function that
  /// throws ends the process. Nothing here knows Ruby: called from the Ruby thread, it keeps
  /// that thread, and the interpreter's lock, until the whole range is done.
  void distribute_task(void (*function)(unsigned long begin, unsigned long end, void* data),
                       unsigned long h, unsigned long t, void* data) noexcept;

  /// Workers actually running (0 only when the system refused every thread).
  std::uint64_t get_num_workers() const { return num_workers; }
  /// How long a thread polls after its slice before it sleeps, in nanoseconds: 0 unless the
  /// processors the constructing thread may run on (its affinity mask) number at least the
  /// workers plus the caller.
  std::uint64_t get_poll_ns() const { return spin_ns; }

  /// Start routine of every worker; `worker` is its own record. Returns null on quit.
  static void* thread_task(void* worker) noexcept;

 private:
  void wait_for_workers(std::uint64_t poll_ns);
  void finish_slice();

  Worker* workers;
  std::uint64_t num_workers;
  /// Atomic only for the caller's peek while it polls; changed under done_mutex.
  std::atomic<std::uint64_t> num_busy;
  pthread_t* threads;
  pthread_mutex_t done_mutex;
  pthread_mutex_t work_mutex;
  pthread_cond_t done_cond;
  pthread_cond_t work_cond;
  /// How long a thread polls before it sleeps on a condition variable (0: never polls).
  std::uint64_t spin_ns;
};

#endif
