#ifndef QUILLMARK_UTILS_THREAD_HIVE_H
#define QUILLMARK_UTILS_THREAD_HIVE_H

#include <pthread.h>

#include <cstdint>

#include <quillmark/utils/fast_queue.h>

/// A fixed pool of worker threads that runs queued tasks in first-in, first-out order.
///
/// A task is a plain function pointer and one opaque data pointer; the pool never reads
/// or frees the data. Tasks run on worker threads and must not call into the Ruby
/// interpreter or the host SDK. A task may enqueue further tasks and use the critical
/// section, but must not call wait_until_finished() or destroy its own pool: it is itself
/// still counted as outstanding, so either call would wait for itself forever.
///
/// The pool never holds two of its own mutexes at once, so no lock order exists to break.
class ThreadHive {
 public:
  /// One queued task: `function(data, hive)` runs on a worker (on the thread that waits for
  /// it when the pool has none).
  struct Task {
    void (*function)(void* data, ThreadHive* hive);
    void* data;
  };

  /// Processors currently online; 1 when the platform cannot tell, so that the usual
  /// `ThreadHive(ThreadHive::get_num_processors())` always asks for a working pool.
  static std::uint64_t get_num_processors();

  /// Starts `num_threads` workers (0 is taken as 1). Workers that the system refuses to
  /// create are left out. If none can be created at all, tasks stay queued until a thread
  /// waits for them: wait_until_finished() (and so the destructor) runs them one after
  /// another on the waiting thread, never inside enqueue(), where the caller may hold a
  /// lock the task needs or be a task itself.
  explicit ThreadHive(unsigned long num_threads);
  ThreadHive(const ThreadHive&) = delete;
  ThreadHive& operator=(const ThreadHive&) = delete;
  /// Waits, like wait_until_finished(), for every task outstanding (queued ones and those
  /// they enqueue), then stops and joins the workers.
  virtual ~ThreadHive();

  /// Counts the task, queues it and wakes one worker. Any thread may call it, a task of this
  /// pool included; `data` is passed through unread. A task that throws ends the process.
  void enqueue(void (*function)(void* data, ThreadHive* hive), void* data) noexcept;
  /// Tasks enqueued and not yet returned: the queued ones plus the running ones. Any thread.
  std::uint64_t get_num_tasks();
  /// Blocks until every task enqueued so far, and every task those enqueued, has returned;
  /// at once when none is outstanding. One thread waits at a time: the count reaching zero
  /// wakes a single waiter.
  void wait_until_finished();
  /// A plain mutex the pool lends to its users (tasks and owner) for shared results; the
  /// pool itself never takes it. Not recursive: a thread must not enter twice.
  void enter_critical_section();
  void leave_critical_section();

  /// Workers actually running (0 only when the system refused every thread).
  std::uint64_t get_num_threads() const { return num_threads; }

  /// Start routine of every worker; `hive` is the pool. Returns null when the pool stops.
  static void* thread_task(void* hive) noexcept;

 private:
  void finish_task();
  /// Runs queued tasks on the calling thread until the queue is empty (the pool without
  /// workers).
  void run_queued_tasks();

  FastQueue<Task> queue;
  pthread_t* threads;
  pthread_mutex_t queue_mutex;
  pthread_mutex_t critical_mutex;
  pthread_mutex_t count_mutex;
  pthread_cond_t task_cond;
  pthread_cond_t finished_cond;
  std::uint64_t num_threads;
  std::uint64_t num_tasks;
  bool stop;
};

#endif
