#include <quillmark/utils/bit_buffer.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace {

std::vector<unsigned char> bytes_of(const BitBuffer& buffer) {
  return std::vector<unsigned char>(buffer.get_data(), buffer.get_data() + buffer.get_size());
}

}  // namespace

TEST(BitBuffer, NewBuffersAndGrowthSizes) {
  EXPECT_EQ(bytes_of(BitBuffer()), std::vector<unsigned char>{0});
  EXPECT_EQ(bytes_of(BitBuffer(0)), std::vector<unsigned char>{0});
  EXPECT_EQ(bytes_of(BitBuffer(4)), std::vector<unsigned char>(4, 0));
  BitBuffer exact, pow2;
  exact.set_bit(3);
  exact.reserve(100);
  pow2.set_bit(3);
  pow2.reserve_pow2(100);
  std::vector<unsigned char> expected(13, 0);
  expected[0] = 0x08;  // the old byte survives, every new one is zero
  EXPECT_EQ(bytes_of(exact), expected);
  expected.resize(16, 0);
  EXPECT_EQ(bytes_of(pow2), expected);
  // The power of two counts bytes, not the growth; an index in the last byte is already
  // addressable, so nothing moves.
  for (auto c :
       {std::vector<unsigned long>{1, 7, 1}, {1, 8, 2}, {3, 24, 4}, {3, 40, 8}, {5, 39, 5}}) {
    BitBuffer b(c[0]);
    b.reserve_pow2(c[1]);
    EXPECT_EQ(b.get_size(), c[2]) << c[0] << " bytes, bit " << c[1];
  }
  BitBuffer five(5);
  five.reserve(39);
  five.reserve(0);
  EXPECT_EQ(five.get_size(), 5u);
  five.reserve(40);
  EXPECT_EQ(five.get_size(), 6u);
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
        case 0: {  // grow, either way, sometimes within the buffer; bounded to stay small
          const unsigned long target = rng() % 4096;
          if (rng() % 2 == 0)
            buffer.reserve(target);
          else
            buffer.reserve_pow2(target);
          ASSERT_GT(buffer.get_size() * 8, target);
          model.resize(buffer.get_size() * 8, false);
          break;
        }
        case 1: {  // up to the whole buffer, the largest count allowed
          const unsigned long count = rng() % (bits + 1);
          buffer.partial_clear(count);
          std::fill(model.begin(), model.begin() + static_cast<long>(count), false);
          break;
        }
        case 2:
          if (rng() % 8 == 0) {
            buffer.clear();
            model.assign(model.size(), false);
          } else if (rng() % 8 == 0) {
            buffer.reset();
            model.assign(8, false);
          }
          break;
        case 3:
          ASSERT_EQ(buffer.count_set_bits(),
                    static_cast<std::uint64_t>(std::count(model.begin(), model.end(), true)));
          break;
        case 4:
        case 5:
        case 6:
          buffer.clear_bit(bit);
          model[bit] = false;
          break;
        case 7:
        case 8:
        case 9:
          ASSERT_EQ(buffer.test_and_set_bit(bit), model[bit]) << "bit " << bit;
          model[bit] = true;
          break;
        case 10:
        case 11:
        case 12:
        case 13:
          buffer.set_bit(bit);
          model[bit] = true;
          break;
        default:
          ASSERT_EQ(buffer.test_bit(bit), model[bit]) << "bit " << bit;
      }
    }
    // Bit i is bit i % 8 of byte i / 8, least significant first.
    const std::vector<unsigned char> bytes = bytes_of(buffer);
    ASSERT_EQ(bytes.size() * 8, model.size());
    for (std::size_t i = 0; i < model.size(); ++i)
      ASSERT_EQ(((bytes[i / 8] >> (i % 8)) & 1) != 0, model[i]) << i;
  }
}

TEST(BitBufferDeathTest, ReachingPastTheReservedBitsIsFatal) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  BitBuffer buffer(2);
  EXPECT_DEATH(buffer.set_bit(16), "Assertion failed: byte < size");
  EXPECT_DEATH(buffer.partial_clear(17), "Assertion failed");
  buffer.partial_clear(16);  // the whole buffer is fine
}
