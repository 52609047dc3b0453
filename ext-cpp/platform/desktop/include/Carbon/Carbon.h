#ifndef QUILLMARK_DESKTOP_CARBON_H
#define QUILLMARK_DESKTOP_CARBON_H

// Carbon's keyboard state: a 128-bit map, one bit per virtual key code. Key code k is bit
// k mod 8 (from the least significant) of byte k div 8, in memory order.

#include <stdint.h>

#include "../desktop_api.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct BigEndianUInt32 {
  uint32_t bigEndianValue;
} BigEndianUInt32;

typedef BigEndianUInt32 KeyMap[4];

DESKTOP_API void GetKeys(KeyMap theKeys);

#ifdef __cplusplus
}
#endif

#endif
