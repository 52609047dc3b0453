#ifndef QUILLMARK_UTILS_FATAL_ASSERT_H
#define QUILLMARK_UTILS_FATAL_ASSERT_H

/// Reports "Assertion failed: EXPR, function F, file PATH, line N." on stderr and aborts.
/// Called only through QM_ASSERT.
[[noreturn]] void qm_assert_fail(const char* expression, const char* function, const char* file,
                                 int line) noexcept;

/// The project's invariant check. Unlike assert() it stays on under NDEBUG: a broken
/// invariant in a pool or a queue must stop the process, not corrupt memory quietly.
#define QM_ASSERT(expression) \
  ((expression) ? static_cast<void>(0) : qm_assert_fail(#expression, __func__, __FILE__, __LINE__))

#endif
