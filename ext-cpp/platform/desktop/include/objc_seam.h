#ifndef QUILLMARK_DESKTOP_OBJC_SEAM_H
#define QUILLMARK_DESKTOP_OBJC_SEAM_H

// Objective-C messages cannot be sent from C++, so each message the system sends is one
// C function here; only this seam differs between platforms. Like a message to nil, each
// answers null or 0 for a null receiver.

#include "desktop_api.h"

#ifdef __cplusplus
extern "C" {
#endif

/// [NSApp windowWithWindowNumber:n]: null when the application has no such window.
DESKTOP_API void* ns_app_window_with_window_number(long n);
/// [window toolbar]
DESKTOP_API void* ns_window_toolbar(void* window);
/// [window level]
DESKTOP_API long ns_window_level(void* window);
/// [window makeKeyWindow]
DESKTOP_API void ns_window_make_key_window(void* window);
/// [dictionary objectForKeyedSubscript:key]
DESKTOP_API const void* ns_object_for_keyed_subscript(const void* dictionary, const void* key);
/// [number integerValue]
DESKTOP_API long ns_integer_value(const void* number);

#ifdef __cplusplus
}
#endif

#endif
