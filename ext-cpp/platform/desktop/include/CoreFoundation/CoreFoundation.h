#ifndef QUILLMARK_DESKTOP_COREFOUNDATION_H
#define QUILLMARK_DESKTOP_COREFOUNDATION_H

// The CoreFoundation subset the window activation and cursor helpers use, with the
// platform's names and types.

#include "../desktop_api.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef long CFIndex;
typedef const void* CFTypeRef;
typedef const struct __CFArray* CFArrayRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFString* CFStringRef;

DESKTOP_API CFIndex CFArrayGetCount(CFArrayRef array);
/// The element at index (0 <= index < count); the array keeps owning it.
DESKTOP_API const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);
/// Drops one reference; the object is freed when the last one goes. Null is a fatal error,
/// as on the platform.
DESKTOP_API void CFRelease(CFTypeRef object);

#ifdef __cplusplus
}
#endif

#endif
