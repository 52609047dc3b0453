#ifndef SKETCHUP_API_COMMON_H
#define SKETCHUP_API_COMMON_H

/* Result codes, export marker and the validity helpers shared by every header. */

#include <stddef.h>
#include <stdint.h>

#ifndef __cplusplus
#include <stdbool.h>
#endif

/* Marks what the library exports. Code that only calls it exports nothing by including this. */
#define SU_EXPORT __attribute__((visibility("default")))

#ifdef __cplusplus
#define SU_API_BEGIN extern "C" {
#define SU_API_END }
#else
#define SU_API_BEGIN
#define SU_API_END
#endif

/* Every function that can fail returns one of these. */
typedef enum {
  SU_ERROR_NONE = 0,
  SU_ERROR_NULL_POINTER_INPUT = 1,
  SU_ERROR_INVALID_INPUT = 2,
  SU_ERROR_NULL_POINTER_OUTPUT = 3,
  SU_ERROR_INVALID_OUTPUT = 4,
  SU_ERROR_OVERWRITE_VALID = 5,
  SU_ERROR_GENERIC = 6,
  SU_ERROR_SERIALIZATION = 7,
  SU_ERROR_OUT_OF_RANGE = 8,
  SU_ERROR_NO_DATA = 9,
  SU_ERROR_INSUFFICIENT_SIZE = 10,
  SU_ERROR_UNKNOWN_EXCEPTION = 11
} SUResult;

/* A reference is valid when it points at something; SU_INVALID initialises one that does not. */
#define SU_INVALID \
  { 0 }
#define SUIsValid(VALUE) ((VALUE).ptr != 0)
#define SUIsInvalid(VALUE) ((VALUE).ptr == 0)
#define SUSetInvalid(VALUE) ((VALUE).ptr = 0)

#define DEFINE_SU_TYPE(TYPENAME) \
  typedef struct {               \
    void* ptr;                   \
  } TYPENAME;

#endif
