#include <quillmark/utils/fatal_assert.h>

#include <cstdio>
#include <cstdlib>

void qm_assert_fail(const char* expression, const char* function, const char* file,
                    int line) noexcept {
  std::fprintf(stderr, "Assertion failed: %s, function %s, file %s, line %d.\n", expression,
               function, file, line);
  std::fflush(stderr);
  std::abort();
}
