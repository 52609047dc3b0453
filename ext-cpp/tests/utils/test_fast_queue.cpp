#include <quillmark/utils/fast_queue.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <random>

namespace {

struct Item {
  std::uint64_t key;
  std::uint32_t tag;
};

std::uint64_t drain_checking(FastQueue<Item>& queue, std::deque<Item>& expected) {
  std::uint64_t drained = 0;
  while (!queue.empty()) {
    Item item{};
    queue.dequeue(item);
    EXPECT_EQ(item.key, expected.front().key);
    EXPECT_EQ(item.tag, expected.front().tag);
    expected.pop_front();
    ++drained;
  }
  return drained;
}

}  // namespace

TEST(FastQueue, CapacityDoublesOnlyWhenFull) {
  FastQueue<Item> queue;
  EXPECT_EQ(queue.get_capacity(), 2u);
  const std::uint64_t expected_capacity[] = {2, 4, 4, 8, 8, 8, 8, 16};
  for (std::uint64_t i = 0; i < 8; ++i) {
    queue.enqueue(Item{i, 0});
    EXPECT_EQ(queue.get_capacity(), expected_capacity[i]) << "after " << i + 1 << " items";
    EXPECT_EQ(queue.get_size(), i + 1);
  }
  // Emptying never shrinks, and a refill up to capacity - 1 needs no growth.
  std::deque<Item> expected;
  for (std::uint64_t i = 0; i < 8; ++i) expected.push_back(Item{i, 0});
  EXPECT_EQ(drain_checking(queue, expected), 8u);
  for (std::uint64_t i = 0; i < 15; ++i) queue.enqueue(Item{i, 1});
  EXPECT_EQ(queue.get_capacity(), 16u);
}

TEST(FastQueue, GrowthInWrappedStateKeepsOrder) {
  FastQueue<Item> queue;
  std::deque<Item> expected;
  const auto push = [&](std::uint64_t key) {
    queue.enqueue(Item{key, static_cast<std::uint32_t>(key * 7)});
    expected.push_back(Item{key, static_cast<std::uint32_t>(key * 7)});
  };
  for (std::uint64_t key = 0; key < 3; ++key) push(key);  // capacity 4, full
  Item item{};
  queue.dequeue(item);
  queue.dequeue(item);
  expected.pop_front();
  expected.pop_front();
  push(3);
  push(4);  // tail has wrapped behind head: the queue is full again, split in two runs
  ASSERT_EQ(queue.get_capacity(), 4u);
  push(5);  // grows while wrapped
  EXPECT_EQ(queue.get_capacity(), 8u);
  EXPECT_EQ(queue.get_size(), 4u);
  EXPECT_EQ(drain_checking(queue, expected), 4u);
}

TEST(FastQueue, MatchesDequeOverRandomSequences) {
  std::mt19937_64 rng(20240611);
  for (int round = 0; round < 20; ++round) {
    FastQueue<Item> queue;
    std::deque<Item> expected;
    // Bias towards enqueue in some rounds and dequeue in others so that the queue both
    // grows through many sizes and wraps around repeatedly at a fixed size.
    std::bernoulli_distribution push_next(round % 2 == 0 ? 0.6 : 0.5);
    std::uint64_t next_key = 0;
    for (int step = 0; step < 5000; ++step) {
      if (expected.empty() || push_next(rng)) {
        const Item item{next_key++, static_cast<std::uint32_t>(rng())};
        queue.enqueue(item);
        expected.push_back(item);
      } else {
        Item item{};
        queue.dequeue(item);
        ASSERT_EQ(item.key, expected.front().key);
        ASSERT_EQ(item.tag, expected.front().tag);
        expected.pop_front();
      }
      ASSERT_EQ(queue.get_size(), expected.size());
      ASSERT_EQ(queue.empty(), expected.empty());
      const std::uint64_t capacity = queue.get_capacity();
      ASSERT_EQ(capacity & (capacity - 1), 0u) << "capacity must stay a power of two";
      ASSERT_LT(queue.get_size(), capacity) << "one slot always stays free";
    }
    drain_checking(queue, expected);
    EXPECT_TRUE(expected.empty());
  }
}

TEST(FastQueueDeathTest, DequeueFromEmptyQueueIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  FastQueue<Item> queue;
  queue.enqueue(Item{1, 1});
  Item item{};
  queue.dequeue(item);
  EXPECT_DEATH(queue.dequeue(item),
               "Assertion failed: !empty\\(\\), function dequeue, file .*fast_queue\\.h, line");
}
