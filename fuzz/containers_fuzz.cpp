// FastQueue and BitBuffer driven by a byte stream, step by step against std::deque and
// std::vector<bool>: after every operation the two must agree, and the sanitizers watch
// the wrap-around copies and the byte arithmetic of the bit indexing.

#include <cstdint>
#include <deque>
#include <vector>

#include <quillmark/utils/bit_buffer.h>
#include <quillmark/utils/fast_queue.h>
#include "fuzz_input.h"

namespace {

// Small enough that a few hundred operations wrap and grow the ring many times.
struct Item {
  std::uint32_t value;
  std::uint8_t tag;
};

void queue_against_deque(qmfuzz::Input& in) {
  FastQueue<Item> queue;
  std::deque<Item> model;
  std::uint32_t next = 0;
  while (!in.empty()) {
    std::uint8_t const op = in.byte();
    std::uint64_t const before = queue.get_capacity();
    bool const full = queue.get_size() + 1 == before;
    // Runs of pushes or pops, so that the fuzzer reaches large and wrapped queues.
    unsigned const run = (op & 0x80) ? (op & 0x3f) + 1 : 1;
    for (unsigned i = 0; i < run; ++i) {
      if ((op & 0xc0) == 0x40) {
        queue.grow();  // doubles exactly when full, else leaves the capacity alone
        QM_FUZZ_CHECK(queue.get_capacity() == (full ? 2 * before : before));
      } else if ((op & 0x40) != 0 || model.empty()) {
        Item const item{(op & 0x80) ? next++ : in.u32(), op};
        queue.enqueue(item);
        model.push_back(item);
      } else {
        Item got{};
        queue.dequeue(got);
        QM_FUZZ_CHECK(got.value == model.front().value && got.tag == model.front().tag);
        model.pop_front();
      }
    }
    std::uint64_t const capacity = queue.get_capacity();
    QM_FUZZ_CHECK(queue.get_size() == model.size() && queue.empty() == model.empty());
    QM_FUZZ_CHECK(model.size() < capacity && (capacity & (capacity - 1)) == 0 &&
                  capacity >= before);
  }
  for (Item const& expected : model) {  // whatever is left drains in order
    Item got{};
    queue.dequeue(got);
    QM_FUZZ_CHECK(got.value == expected.value && got.tag == expected.tag);
  }
  QM_FUZZ_CHECK(queue.empty());
}

// Size and count after every step (cheap); every byte after copies and at the end.
void check_bytes(BitBuffer const& buffer, std::vector<bool> const& model, bool bytes = true) {
  QM_FUZZ_CHECK(buffer.get_size() * 8 == model.size());
  unsigned long set = 0;
  for (std::size_t i = 0; i < model.size(); ++i) {
    if (bytes) QM_FUZZ_CHECK(((buffer.get_data()[i / 8] >> (i % 8)) & 1u) == model[i]);
    set += model[i];
  }
  QM_FUZZ_CHECK(buffer.count_set_bits() == set);
}

void bits_against_vector(qmfuzz::Input& in) {
  // Bit indices stay under 1 << 11: 256 bytes, enough for every growth path, and the
  // byte-by-byte comparison stays cheap enough for many executions a second.
  unsigned long const initial = in.byte() % 5;
  BitBuffer buffer(initial);
  std::vector<bool> model(8 * (initial == 0 ? 1 : initial), false);
  while (!in.empty()) {
    std::uint8_t const op = in.byte() % 11;
    unsigned long bit = (static_cast<unsigned long>(in.byte()) << 8 | in.byte()) % (1ul << 11);
    // Mostly indices that are already reserved, so the bit operations get exercised.
    if (op < 6) bit %= model.size() + (op == 5);
    std::size_t bytes = bit / 8 + 1;
    switch (op) {
      case 0:
        buffer.set_bit(bit);
        model[bit] = true;
        break;
      case 1:
        buffer.clear_bit(bit);
        model[bit] = false;
        break;
      case 2:
        QM_FUZZ_CHECK(buffer.test_bit(bit) == model[bit]);
        break;
      case 3:
      case 4:
        QM_FUZZ_CHECK(buffer.test_and_set_bit(bit) == model[bit]);
        model[bit] = true;
        break;
      case 5:
        buffer.partial_clear(bit);
        for (unsigned long i = 0; i < bit; ++i) model[i] = false;
        break;
      case 6:
      case 7:
        // reserve_pow2 grows to a power of two bytes, and only when the bit is not there yet.
        op == 6 ? buffer.reserve(bit) : buffer.reserve_pow2(bit);
        if (op == 7 && bytes * 8 > model.size()) {
          std::size_t const needed = bytes;
          for (bytes = 1; bytes < needed;) bytes *= 2;
        }
        if (bytes * 8 > model.size()) model.resize(bytes * 8, false);
        break;
      case 8:
        buffer.clear();
        model.assign(model.size(), false);
        break;
      case 9:
        buffer.reset();
        model.assign(8, false);
        break;
      default: {
        // Copies are deep: the copy keeps its bits when the original changes.
        BitBuffer copy(buffer);
        buffer.set_bit(0);
        BitBuffer assigned;
        assigned = copy;
        check_bytes(copy, model);
        check_bytes(assigned, model);
        buffer = assigned;
        break;
      }
    }
    check_bytes(buffer, model, false);
  }
  check_bytes(buffer, model);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  qmfuzz::Input in(data, size);
  if (in.byte() & 1)
    queue_against_deque(in);
  else
    bits_against_vector(in);
  return 0;
}
