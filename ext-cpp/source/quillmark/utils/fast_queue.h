#ifndef QUILLMARK_UTILS_FAST_QUEUE_H
#define QUILLMARK_UTILS_FAST_QUEUE_H

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include <quillmark/utils/detail/raw_array.h>
#include <quillmark/utils/fatal_assert.h>

/// Growable first-in, first-out ring buffer of plain-data elements. Not synchronised:
/// the owner guards it (ThreadHive keeps its pending tasks here under its queue mutex).
///
/// One slot always stays free, so that an empty queue (head == tail) and a full one differ:
/// a queue of capacity c holds at most c - 1 elements. The capacity starts at 2, doubles
/// when an insertion finds the queue full, and never shrinks.
///
/// Elements are moved as raw bytes; nothing is constructed or destroyed per slot. If the
/// buffer cannot be allocated the process stops with a fatal assertion (see raw_array.h).
template <typename T>
class FastQueue {
  static_assert(std::is_trivially_copyable<T>::value, "FastQueue copies its elements as raw bytes");

 public:
  /// Empty, with capacity 2.
  FastQueue();
  FastQueue(const FastQueue&) = delete;
  FastQueue& operator=(const FastQueue&) = delete;
  /// Frees the buffer; elements still held are dropped unread.
  virtual ~FastQueue();

  /// True when no element is held.
  bool empty() const { return head == tail; }
  /// Appends a copy of `item`, growing first when the queue is full.
  void enqueue(const T& item);
  /// Copies the oldest element into `item` and removes it. Fatal on an empty queue.
  void dequeue(T& item);
  /// Doubles the capacity when, and only when, the queue is full.
  void grow();

  /// Slots allocated: a power of two, at least 2, one more than the elements it can hold.
  std::uint64_t get_capacity() const { return capacity; }
  /// Number of elements held.
  std::uint64_t get_size() const { return (tail + capacity - head) & (capacity - 1); }

 private:
  T* buffer;
  std::uint64_t head;
  std::uint64_t tail;
  std::uint64_t capacity;
};

template <typename T>
FastQueue<T>::FastQueue() : buffer(allocate_raw_array<T>(2)), head(0), tail(0), capacity(2) {}

template <typename T>
FastQueue<T>::~FastQueue() {
  std::free(buffer);
}

template <typename T>
void FastQueue<T>::grow() {
  const bool full = tail + 1 == head || (head == 0 && tail + 1 == capacity);
  if (!full) {
    return;
  }
  T* grown = allocate_raw_array<T>(capacity * 2);
  // Unwrap into queue order at the start of the new buffer, so that head becomes 0.
  if (tail >= head) {
    std::memcpy(static_cast<void*>(grown), buffer + head, (tail - head) * sizeof(T));
  } else {
    const std::uint64_t upper = capacity - head;
    std::memcpy(static_cast<void*>(grown), buffer + head, upper * sizeof(T));
    std::memcpy(static_cast<void*>(grown + upper), buffer, tail * sizeof(T));
  }
  std::free(buffer);
  buffer = grown;
  tail = capacity - 1;
  head = 0;
  capacity *= 2;
}

template <typename T>
void FastQueue<T>::enqueue(const T& item) {
  grow();
  std::memcpy(static_cast<void*>(buffer + tail), &item, sizeof(T));
  tail = tail + 1 == capacity ? 0 : tail + 1;
}

template <typename T>
void FastQueue<T>::dequeue(T& item) {
  QM_ASSERT(!empty());
  std::memcpy(static_cast<void*>(&item), buffer + head, sizeof(T));
  head = head + 1 == capacity ? 0 : head + 1;
}

#endif
