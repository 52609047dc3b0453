#ifndef QUILLMARK_UTILS_BIT_BUFFER_H
#define QUILLMARK_UTILS_BIT_BUFFER_H

#include <cstdint>

#include <quillmark/utils/fatal_assert.h>

/// A growable array of bits stored as bytes: flags indexed by number.
///
/// Bit i is bit (i % 8), counting from the least significant, of byte (i / 8), so a buffer
/// of `size` bytes holds bits 0 ... 8 * size - 1. The buffer grows only through reserve()
/// and reserve_pow2(), every byte that growth adds is zero, and it shrinks only through
/// reset(), back to a single zero byte.
///
/// Contract: bit operations and partial_clear() stay within the reserved bits; reserve
/// first. Going past them is a fatal assertion, not a silent write outside the array, and
/// so is running out of memory while growing.
///
/// Not synchronised. Eight bits share a byte, so threads that write different bits of one
/// buffer still need a lock of their own.
class BitBuffer {
 public:
  /// One zero byte.
  BitBuffer();
  /// `size` zero bytes (a count of bytes, not bits); 0 is taken as 1.
  explicit BitBuffer(unsigned long size);
  /// Deep copies: each buffer owns its own bytes afterwards. Assigning a buffer to itself
  /// changes nothing; otherwise the new bytes are allocated before the old ones are freed.
  BitBuffer(const BitBuffer& other);
  BitBuffer& operator=(const BitBuffer& other);
  /// Frees the bytes.
  virtual ~BitBuffer();

  /// Makes `bit` addressable, growing to exactly the byte that holds it; nothing when it
  /// already is.
  void reserve(unsigned long bit);
  /// Makes `bit` addressable, growing to the smallest power-of-two number of bytes that
  /// holds it (nothing when it already is); callers that grow index by index reallocate
  /// only logarithmically often.
  void reserve_pow2(unsigned long bit);
  /// Zeroes every bit; the size stays.
  void clear();
  /// Zeroes bits 0 ... count - 1 and keeps the others; count 0 changes nothing. Needs
  /// count <= 8 * size.
  void partial_clear(unsigned long count);
  /// Back to one zero byte.
  void reset();

  /// Set, clear or read one bit; `bit` must lie within the reserved bits.
  void set_bit(unsigned long bit) { data[byte_of(bit)] |= mask_of(bit); }
  void clear_bit(unsigned long bit) {
    data[byte_of(bit)] &= static_cast<unsigned char>(~mask_of(bit));
  }
  bool test_bit(unsigned long bit) const { return (data[byte_of(bit)] & mask_of(bit)) != 0; }
  /// Sets `bit` and answers whether it was set before: "first visit?" in one access.
  bool test_and_set_bit(unsigned long bit);
  /// Number of bits set in the whole buffer.
  std::uint64_t count_set_bits() const;

  /// Bytes held, at least 1.
  std::uint64_t get_size() const { return size; }
  /// The get_size() bytes themselves, still owned by the buffer; valid until it grows, is
  /// reset, assigned to or destroyed.
  const unsigned char* get_data() const { return data; }

 private:
  std::uint64_t byte_of(unsigned long bit) const {
    const std::uint64_t byte = bit >> 3;
    QM_ASSERT(byte < size);
    return byte;
  }
  static unsigned char mask_of(unsigned long bit) {
    return static_cast<unsigned char>(1u << (bit & 7u));
  }
  void grow_to(std::uint64_t new_size);

  unsigned char* data;
  std::uint64_t size;
};

inline bool BitBuffer::test_and_set_bit(unsigned long bit) {
  unsigned char& byte = data[byte_of(bit)];
  const unsigned char mask = mask_of(bit);
  const bool was_set = (byte & mask) != 0;
  byte = static_cast<unsigned char>(byte | mask);
  return was_set;
}

#endif
