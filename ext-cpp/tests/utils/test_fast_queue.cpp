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

}  // namespace

// Against std::deque: order, size, and a capacity that starts at 2 and doubles exactly when
// an insertion (or grow()) finds the queue full, wrapped or not, and never shrinks.
TEST(FastQueue, MatchesDequeOverRandomSequences) {
  std::mt19937_64 rng(20240611);
  int wrapped_growths = 0;  // full with the oldest element not in slot 0: split in two runs
  for (int round = 0; round < 20; ++round) {
    FastQueue<Item> queue;
    std::deque<Item> expected;
    std::uint64_t capacity = 2, head = 0;
    const auto grows = [&] {
      if (expected.size() + 1 != capacity) return;
      wrapped_growths += head != 0;
      capacity *= 2;
      head = 0;
    };
    // Biased towards enqueue in some rounds so that the queue grows through many sizes,
    // balanced in others so that it wraps around repeatedly at a fixed size.
    std::bernoulli_distribution push_next(round % 2 == 0 ? 0.6 : 0.5);
    std::uint64_t next_key = 0;
    for (int step = 0; step < 5000; ++step) {
      if (step % 7 == 0) {
        grows();
        queue.grow();
      } else if (expected.empty() || push_next(rng)) {
        const Item item{next_key++, static_cast<std::uint32_t>(rng())};
        grows();
        queue.enqueue(item);
        expected.push_back(item);
      } else {
        Item item{};
        queue.dequeue(item);
        ASSERT_EQ(item.key, expected.front().key);
        ASSERT_EQ(item.tag, expected.front().tag);
        expected.pop_front();
        head = (head + 1) % capacity;
      }
      ASSERT_EQ(queue.get_size(), expected.size());
      ASSERT_EQ(queue.empty(), expected.empty());
      ASSERT_EQ(queue.get_capacity(), capacity) << "step " << step;
    }
    for (; !expected.empty(); expected.pop_front()) {
      Item item{};
      queue.dequeue(item);
      ASSERT_EQ(item.key, expected.front().key);
    }
    EXPECT_TRUE(queue.empty());
  }
  EXPECT_GT(wrapped_growths, 20);
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
