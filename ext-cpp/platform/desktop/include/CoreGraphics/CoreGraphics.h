#ifndef QUILLMARK_DESKTOP_COREGRAPHICS_H
#define QUILLMARK_DESKTOP_COREGRAPHICS_H

// The CoreGraphics subset for the window list, the cursor and mouse events, with the
// platform's names, types and values.

#include <stdint.h>

#include "../CoreFoundation/CoreFoundation.h"
#include "../desktop_api.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t CGWindowID;
typedef uint32_t CGWindowListOption;
typedef uint32_t CGDirectDisplayID;
typedef int32_t CGError;
typedef int32_t boolean_t;
typedef double CGFloat;

typedef struct CGPoint {
  CGFloat x;
  CGFloat y;
} CGPoint;

typedef struct __CGEvent* CGEventRef;
typedef struct __CGEventSource* CGEventSourceRef;

enum {
  kCGWindowListOptionAll = 0,
  kCGWindowListOptionOnScreenOnly = 1,
  kCGWindowListOptionOnScreenAboveWindow = 2,
  kCGWindowListOptionOnScreenBelowWindow = 4,
  kCGWindowListOptionIncludingWindow = 8,
  kCGWindowListExcludeDesktopElements = 16
};

enum { kCGNullWindowID = 0 };

enum { kCGErrorSuccess = 0, kCGErrorFailure = 1000, kCGErrorIllegalArgument = 1001 };

/// Keys of the dictionaries in a window list; their values answer ns_integer_value.
DESKTOP_API extern const CFStringRef kCGWindowOwnerPID;
DESKTOP_API extern const CFStringRef kCGWindowNumber;
DESKTOP_API extern const CFStringRef kCGWindowLayer;
/// Never present here, as on a system that does not let this process read window titles.
DESKTOP_API extern const CFStringRef kCGWindowName;

/// A new list (release it with CFRelease) of one dictionary per window, front to back,
/// filtered by option; relativeToWindow must be kCGNullWindowID, the only mode simulated.
/// Null when the window server gives no list. Only kCGWindowListOptionOnScreenOnly and
/// kCGWindowListExcludeDesktopElements are simulated: any other option bit, or a window to
/// list relative to, aborts rather than answer with a list the platform would not give.
DESKTOP_API CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option,
                                                  CGWindowID relativeToWindow);

DESKTOP_API boolean_t CGCursorIsVisible(void);
/// Hide and show are counted: each hide must be balanced by a show before the cursor
/// reappears.
DESKTOP_API CGError CGDisplayShowCursor(CGDirectDisplayID display);
DESKTOP_API CGError CGDisplayHideCursor(CGDirectDisplayID display);

/// A new event (release it with CFRelease) carrying the cursor location at creation.
DESKTOP_API CGEventRef CGEventCreate(CGEventSourceRef source);
DESKTOP_API CGPoint CGEventGetLocation(CGEventRef event);
DESKTOP_API CGError CGWarpMouseCursorPosition(CGPoint newCursorPosition);

#ifdef __cplusplus
}
#endif

#endif
