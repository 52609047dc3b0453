#include <quillmark/utils/thread_hive.h>

#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include <quillmark/utils/detail/raw_array.h>

std::uint64_t ThreadHive::get_num_processors() {
  const long online = sysconf(_SC_NPROCESSORS_ONLN);
  // sysconf answers -1 when it cannot tell; one thread is always a safe answer.
  return online > 0 ? static_cast<std::uint64_t>(online) : 1;
}

ThreadHive::ThreadHive(unsigned long num_threads)
    : threads(nullptr), num_threads(num_threads != 0 ? num_threads : 1), num_tasks(0), stop(false) {
  threads = allocate_raw_array<pthread_t>(this->num_threads);
  std::memset(static_cast<void*>(threads), 0, this->num_threads * sizeof(pthread_t));

  pthread_mutex_init(&queue_mutex, nullptr);
  pthread_mutex_init(&critical_mutex, nullptr);
  pthread_mutex_init(&count_mutex, nullptr);
  pthread_cond_init(&task_cond, nullptr);
  pthread_cond_init(&finished_cond, nullptr);

  // Started workers are packed at the front and num_threads ends up counting them: the
  // handles past it belong to threads the system refused and are never read.
  std::uint64_t started = 0;
  for (std::uint64_t i = 0; i < this->num_threads; ++i) {
    if (pthread_create(&threads[started], nullptr, &ThreadHive::thread_task, this) == 0) {
      ++started;
    }
  }
  // No worker has seen a task yet, and tasks (the only worker code that reads num_threads,
  // through enqueue) are queued after this constructor returns, so the late write is safe.
  this->num_threads = started;
}

ThreadHive::~ThreadHive() {
  wait_until_finished();

  pthread_mutex_lock(&queue_mutex);
  stop = true;
  pthread_cond_broadcast(&task_cond);
  pthread_mutex_unlock(&queue_mutex);

  // The live handles are the first num_threads; refused ones were never counted.
  for (std::uint64_t i = 0; i < num_threads; ++i) {
    pthread_join(threads[i], nullptr);
  }

  pthread_mutex_destroy(&queue_mutex);
  pthread_mutex_destroy(&critical_mutex);
  pthread_mutex_destroy(&count_mutex);
  pthread_cond_destroy(&task_cond);
  pthread_cond_destroy(&finished_cond);
  std::free(threads);
}

void ThreadHive::enqueue(void (*function)(void*, ThreadHive*), void* data) noexcept {
  // Counted before it is visible in the queue: a worker could otherwise run it and bring
  // the count to zero under a waiter while this task is still outstanding.
  pthread_mutex_lock(&count_mutex);
  ++num_tasks;
  pthread_mutex_unlock(&count_mutex);

  pthread_mutex_lock(&queue_mutex);
  queue.enqueue(Task{function, data});
  pthread_cond_signal(&task_cond);
  pthread_mutex_unlock(&queue_mutex);
}

std::uint64_t ThreadHive::get_num_tasks() {
  pthread_mutex_lock(&count_mutex);
  const std::uint64_t outstanding = num_tasks;
  pthread_mutex_unlock(&count_mutex);
  return outstanding;
}

void ThreadHive::wait_until_finished() {
  if (num_threads == 0) run_queued_tasks();
  pthread_mutex_lock(&count_mutex);
  while (num_tasks != 0) {
    pthread_cond_wait(&finished_cond, &count_mutex);
  }
  pthread_mutex_unlock(&count_mutex);
}

void ThreadHive::enter_critical_section() { pthread_mutex_lock(&critical_mutex); }

void ThreadHive::leave_critical_section() { pthread_mutex_unlock(&critical_mutex); }

void ThreadHive::finish_task() {
  pthread_mutex_lock(&count_mutex);
  if (num_tasks != 0) {
    --num_tasks;
    if (num_tasks == 0) {
      pthread_cond_signal(&finished_cond);
    }
  }
  pthread_mutex_unlock(&count_mutex);
}

void ThreadHive::run_queued_tasks() {
  // One task after another, each taken from the queue only when the last has returned: a
  // task that enqueues the next adds to the queue rather than to this thread's stack.
  for (;;) {
    pthread_mutex_lock(&queue_mutex);
    if (queue.empty()) {
      pthread_mutex_unlock(&queue_mutex);
      return;
    }
    Task task;
    queue.dequeue(task);
    pthread_mutex_unlock(&queue_mutex);
    task.function(task.data, this);
    finish_task();
  }
}

void* ThreadHive::thread_task(void* hive) noexcept {
  ThreadHive* self = static_cast<ThreadHive*>(hive);
  for (;;) {
    pthread_mutex_lock(&self->queue_mutex);
    while (!self->stop && self->queue.empty()) {
      pthread_cond_wait(&self->task_cond, &self->queue_mutex);
    }
    // With stop set the queue is still drained: no worker leaves while tasks remain.
    if (self->stop && self->queue.empty()) {
      pthread_mutex_unlock(&self->queue_mutex);
      return nullptr;
    }
    Task task;
    self->queue.dequeue(task);
    pthread_mutex_unlock(&self->queue_mutex);

    task.function(task.data, self);
    self->finish_task();
  }
}
