#ifndef QUILLMARK_DESKTOP_CONTROL_H
#define QUILLMARK_DESKTOP_CONTROL_H

// Scripting the simulated desktop from tests and the demo. Plain C types only, so Ruby can
// drive the very library instance the bundle calls through Fiddle.
//
// The desktop holds:
// - a window list in front-to-back order (each window: owner process, window number, level
//   and the DESKTOP_WINDOW_* flags); new windows go behind the ones already there;
// - which window is key (by number, 0 for none);
// - a cursor hidden by a count: each CGDisplayHideCursor adds one, each CGDisplayShowCursor
//   takes one away (never below 0), and the cursor is visible exactly when the count is 0;
// - the cursor location in doubles, and the 128-bit key map GetKeys copies;
// - every CF object handed out (lists, dictionaries, numbers, events) until it is released.
//   Releasing null, an object never handed out or one already freed aborts the process.
//
// Every function here and in the platform headers takes one lock, so any thread may call.

#include "desktop_api.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
  /// Listed by CGWindowListCopyWindowInfo with kCGWindowListOptionOnScreenOnly.
  DESKTOP_WINDOW_ON_SCREEN = 1,
  /// A desktop element (the desktop picture, icons): dropped by
  /// kCGWindowListExcludeDesktopElements.
  DESKTOP_WINDOW_DESKTOP_ELEMENT = 2,
  /// The application has a window object for it: ns_app_window_with_window_number finds it,
  /// provided the window also belongs to this process.
  DESKTOP_WINDOW_KNOWN_TO_APP = 4,
  /// The window object has a toolbar.
  DESKTOP_WINDOW_TOOLBAR = 8
};

/// Which call desktop_call_count counts.
enum {
  DESKTOP_CALL_COPY_WINDOW_LIST = 0,
  DESKTOP_CALL_MAKE_KEY_WINDOW = 1,
  DESKTOP_CALL_SHOW_CURSOR = 2,
  DESKTOP_CALL_HIDE_CURSOR = 3,
  DESKTOP_CALL_WARP_CURSOR = 4,
  DESKTOP_CALL_GET_KEYS = 5,
  DESKTOP_CALL_CURSOR_IS_VISIBLE = 6,
  DESKTOP_CALL_KINDS = 7
};

/// Back to an empty desktop: no windows, no key window, visible cursor at (0, 0), no key
/// down, counters at 0, both failure modes off. CF objects still alive stay alive (and
/// counted); window objects handed out before become unknown.
DESKTOP_API void desktop_reset(void);

/// Adds a window behind all others. Answers 1, or 0 (and adds nothing) when the number is 0
/// (kCGNullWindowID) or already taken.
DESKTOP_API int desktop_add_window(int owner_pid, unsigned int window_number, long level,
                                   int flags);
DESKTOP_API int desktop_window_count(void);

/// Number of the key window, 0 when none has been made key since the reset.
DESKTOP_API unsigned int desktop_key_window_number(void);

/// Sets or clears one key in the map. Answers 0 (and changes nothing) outside 0 to 127.
DESKTOP_API int desktop_set_key_down(int key_code, int down);
/// Replaces the whole map with 16 bytes, in memory order.
DESKTOP_API void desktop_set_key_map(const unsigned char* bytes);

DESKTOP_API void desktop_set_cursor_location(double x, double y);
DESKTOP_API double desktop_cursor_x(void);
DESKTOP_API double desktop_cursor_y(void);

DESKTOP_API int desktop_cursor_hide_count(void);
/// Sets the hide count directly (negative counts as 0); no show or hide call is counted.
DESKTOP_API void desktop_set_cursor_hide_count(int count);

/// How many times the given DESKTOP_CALL_* was made since the reset; -1 for an unknown kind.
DESKTOP_API long desktop_call_count(int call);

/// CF objects created and not yet freed.
DESKTOP_API long desktop_live_cf_objects(void);

/// While on, CGWindowListCopyWindowInfo answers null, as without access to the window server.
DESKTOP_API void desktop_set_no_window_list(int on);
/// While on, CGWarpMouseCursorPosition refuses (kCGErrorFailure) and the cursor stays put.
DESKTOP_API void desktop_set_warp_fails(int on);

#ifdef __cplusplus
}
#endif

#endif
