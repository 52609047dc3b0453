#include <quillmark/utils/bit_buffer.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

std::vector<unsigned char> bytes_of(const BitBuffer& buffer) {
  return std::vector<unsigned char>(buffer.get_data(), buffer.get_data() + buffer.get_size());
}

// Bit i is bit i % 8 of byte i / 8, least significant first.
std::vector<bool> bits_of(const BitBuffer& buffer) {
  std::vector<bool> bits;
  for (unsigned char byte : bytes_of(buffer)) {
    for (int b = 0; b < 8; ++b) bits.push_back(((byte >> b) & 1) != 0);
  }
  return bits;
}

}  // namespace

TEST(BitBuffer, NewBuffersAreZero) {
  EXPECT_EQ(bytes_of(BitBuffer()), std::vector<unsigned char>{0});
  EXPECT_EQ(bytes_of(BitBuffer(0)), std::vector<unsigned char>{0});
  EXPECT_EQ(bytes_of(BitBuffer(4)), std::vector<unsigned char>(4, 0));
}

TEST(BitBuffer, GrowthSizesAndZeroTail) {
  BitBuffer exact;
  exact.set_bit(3);
  exact.reserve(100);
  EXPECT_EQ(exact.get_size(), 13u);
  BitBuffer pow2;
  pow2.set_bit(3);
  pow2.reserve_pow2(100);
  EXPECT_EQ(pow2.get_size(), 16u);
  for (const BitBuffer* grown : {&exact, &pow2}) {
    std::vector<unsigned char> expected(grown->get_size(), 0);
    expected[0] = 0x08;  // the old byte survives, every new one is zero
    EXPECT_EQ(bytes_of(*grown), expected);
  }

  BitBuffer one;
  one.reserve_pow2(7);
  EXPECT_EQ(one.get_size(), 1u);
  one.reserve_pow2(8);
  EXPECT_EQ(one.get_size(), 2u);
  BitBuffer three(3);
  three.reserve_pow2(24);
  EXPECT_EQ(three.get_size(), 4u) << "the power of two counts bytes, not the growth";
  three.reserve_pow2(40);
  EXPECT_EQ(three.get_size(), 8u);

  // An index in the last byte is already addressable: nothing moves.
  BitBuffer five(5);
  five.reserve(39);
  five.reserve_pow2(39);
  five.reserve(0);
  EXPECT_EQ(five.get_size(), 5u);
  five.reserve(40);
  EXPECT_EQ(five.get_size(), 6u);
}

TEST(BitBuffer, ClearingWholeAndPartial) {
  BitBuffer buffer(3);
  for (unsigned long bit = 0; bit < 24; ++bit) buffer.set_bit(bit);
  buffer.partial_clear(0);
  EXPECT_EQ(bytes_of(buffer), (std::vector<unsigned char>{0xFF, 0xFF, 0xFF}));
  buffer.partial_clear(12);  // byte 0 and the low half of byte 1
  EXPECT_EQ(bytes_of(buffer), (std::vector<unsigned char>{0x00, 0xF0, 0xFF}));
  buffer.partial_clear(24);  // the whole buffer, the largest count allowed
  EXPECT_EQ(bytes_of(buffer), std::vector<unsigned char>(3, 0));

  buffer.set_bit(5);
  buffer.set_bit(20);
  buffer.clear();
  EXPECT_EQ(bytes_of(buffer), std::vector<unsigned char>(3, 0));

  buffer.reserve_pow2(1000);
  buffer.set_bit(999);
  buffer.reset();
  EXPECT_EQ(bytes_of(buffer), std::vector<unsigned char>{0});
}

TEST(BitBuffer, CopiesAreIndependent) {
  BitBuffer original(2);
  original.set_bit(1);
  original.set_bit(14);
  BitBuffer copy(original);
  EXPECT_EQ(bytes_of(copy), bytes_of(original));
  copy.set_bit(2);
  copy.reserve(64);
  original.clear_bit(1);
  EXPECT_EQ(bytes_of(original), (std::vector<unsigned char>{0x00, 0x40}));
  EXPECT_EQ(copy.get_size(), 9u);
  EXPECT_TRUE(copy.test_bit(1));

  BitBuffer assigned(20);
  assigned = original;
  EXPECT_EQ(bytes_of(assigned), bytes_of(original));
  original.set_bit(0);
  EXPECT_FALSE(assigned.test_bit(0));

  BitBuffer& same = assigned;
  assigned = same;
  EXPECT_EQ(bytes_of(assigned), (std::vector<unsigned char>{0x00, 0x40}));
}

TEST(BitBuffer, MatchesVectorOfBoolOverRandomOperations) {
  std::mt19937_64 rng(99173);
  for (int round = 0; round < 10; ++round) {
    BitBuffer buffer(1 + rng() % 4);
    std::vector<bool> model(buffer.get_size() * 8, false);
    for (int step = 0; step < 4000; ++step) {
      const unsigned long bits = model.size();
      const unsigned long bit = rng() % bits;
      switch (rng() % 20) {
        case 0: {  // grow, either way, sometimes within the buffer
          // Bounded so that the buffer stays small across thousands of steps.
          const unsigned long target = rng() % 4096;
          if (rng() % 2 == 0) buffer.reserve(target); else buffer.reserve_pow2(target);
          ASSERT_GT(buffer.get_size() * 8, target);
          model.resize(buffer.get_size() * 8, false);
          break;
        }
        case 1: {
          const unsigned long count = rng() % (bits + 1);
          buffer.partial_clear(count);
          std::fill(model.begin(), model.begin() + static_cast<long>(count), false);
          break;
        }
        case 2:
          if (rng() % 8 == 0) {
            buffer.clear();
            model.assign(model.size(), false);
          }
          break;
        case 3:
          ASSERT_EQ(buffer.count_set_bits(),
                    static_cast<std::uint64_t>(std::count(model.begin(), model.end(), true)));
          break;
        case 4: case 5: case 6:
          buffer.clear_bit(bit);
          model[bit] = false;
          break;
        case 7: case 8: case 9:
          ASSERT_EQ(buffer.test_and_set_bit(bit), model[bit]) << "bit " << bit;
          model[bit] = true;
          break;
        case 10: case 11: case 12: case 13:
          buffer.set_bit(bit);
          model[bit] = true;
          break;
        default:
          ASSERT_EQ(buffer.test_bit(bit), model[bit]) << "bit " << bit;
      }
    }
    ASSERT_EQ(bits_of(buffer), model);
  }
}

TEST(BitBufferDeathTest, ReachingPastTheReservedBitsIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  BitBuffer buffer(2);
  EXPECT_DEATH(buffer.set_bit(16), "Assertion failed: byte < size");
  EXPECT_DEATH(buffer.partial_clear(17), "Assertion failed");
  buffer.partial_clear(16);  // the whole buffer is fine
}
