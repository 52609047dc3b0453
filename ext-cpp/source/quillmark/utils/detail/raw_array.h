#ifndef QUILLMARK_UTILS_RAW_ARRAY_H
#define QUILLMARK_UTILS_RAW_ARRAY_H

#include <cstdint>
#include <cstdlib>

#include <quillmark/utils/fatal_assert.h>

/// malloc for `count` elements of T, released with free. A size that overflows and memory
/// that runs out are both fatal: the pools and containers built on it have no way to hand a
/// failure back (a pool that quietly lost its queue would leave its owner waiting forever),
/// and a wrapped size would give a tiny array that every later write overruns. Callers ask
/// for at least one element: malloc(0) may answer null, which would read as out of memory.
template <typename T>
T* allocate_raw_array(std::uint64_t count) {
  QM_ASSERT(count <= SIZE_MAX / sizeof(T));
  T* array = static_cast<T*>(std::malloc(static_cast<std::size_t>(count) * sizeof(T)));
  QM_ASSERT(array != nullptr);
  return array;
}

#endif
