#include <quillmark/utils/bit_buffer.h>

#include <cstdlib>
#include <cstring>

#include <quillmark/utils/detail/raw_array.h>

BitBuffer::BitBuffer() : BitBuffer(1) {}

BitBuffer::BitBuffer(unsigned long size) : data(nullptr), size(size != 0 ? size : 1) {
  data = allocate_raw_array<unsigned char>(this->size);
  std::memset(data, 0, this->size);
}

BitBuffer::BitBuffer(const BitBuffer& other)
    : data(allocate_raw_array<unsigned char>(other.size)), size(other.size) {
  std::memcpy(data, other.data, size);
}

BitBuffer& BitBuffer::operator=(const BitBuffer& other) {
  if (this != &other) {
    // Allocate before freeing: a failed copy must not leave this buffer without storage.
    unsigned char* copy = allocate_raw_array<unsigned char>(other.size);
    std::memcpy(copy, other.data, other.size);
    std::free(data);
    data = copy;
    size = other.size;
  }
  return *this;
}

BitBuffer::~BitBuffer() { std::free(data); }

void BitBuffer::grow_to(std::uint64_t new_size) {
  // realloc copies the old bytes at most once (and not at all when it can extend in place);
  // only the new tail needs zeroing.
  unsigned char* grown = static_cast<unsigned char*>(std::realloc(data, new_size));
  QM_ASSERT(grown != nullptr);
  std::memset(grown + size, 0, new_size - size);
  data = grown;
  size = new_size;
}

void BitBuffer::reserve(unsigned long bit) {
  const std::uint64_t byte = bit >> 3;
  if (size > byte) {
    return;
  }
  grow_to(byte + 1);
}

void BitBuffer::reserve_pow2(unsigned long bit) {
  const std::uint64_t byte = bit >> 3;
  if (size > byte) {
    return;
  }
  std::uint64_t bytes = 1;
  while (bytes <= byte) {
    bytes <<= 1;
  }
  grow_to(bytes);
}

void BitBuffer::clear() { std::memset(data, 0, size); }

void BitBuffer::partial_clear(unsigned long count) {
  const std::uint64_t whole = count >> 3;
  const unsigned remainder = static_cast<unsigned>(count & 7u);
  QM_ASSERT(whole < size || (whole == size && remainder == 0));
  std::memset(data, 0, whole);
  if (remainder != 0) {
    data[whole] &= static_cast<unsigned char>(0xFFu << remainder);
  }
}

void BitBuffer::reset() {
  std::free(data);
  data = allocate_raw_array<unsigned char>(1);
  data[0] = 0;
  size = 1;
}

std::uint64_t BitBuffer::count_set_bits() const {
  std::uint64_t count = 0;
  std::uint64_t i = 0;
  // Eight bytes at a time; bit order inside a word does not matter to a count.
  for (; i + 8 <= size; i += 8) {
    std::uint64_t word;
    std::memcpy(&word, data + i, 8);
    count += static_cast<std::uint64_t>(__builtin_popcountll(word));
  }
  for (; i < size; ++i) {
    count += static_cast<std::uint64_t>(__builtin_popcount(data[i]));
  }
  return count;
}
