#ifndef QUILLMARK_DESKTOP_GNUSTEP_CONTROL_H
#define QUILLMARK_DESKTOP_GNUSTEP_CONTROL_H

// Scripting the GNUstep desktop from tests and the demo: real AppKit windows on the X
// display named by DISPLAY, windows of other processes (which GNUstep cannot see, so they
// are made up here), the simulated key map, and counts of what the platform calls did.
// Plain C types only, so Ruby can drive it through Fiddle.
//
// Everything that touches AppKit must be called on the thread that called
// desktop_gnustep_start, as AppKit wants.

#include "desktop_api.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
  /// desktop_open_window: an NSPanel instead of an NSWindow.
  DESKTOP_GNUSTEP_PANEL = 1,
  /// desktop_open_window: with an NSToolbar.
  DESKTOP_GNUSTEP_TOOLBAR = 2
};

enum {
  /// desktop_add_foreign_window: listed with kCGWindowListOptionOnScreenOnly.
  DESKTOP_GNUSTEP_ON_SCREEN = 1,
  /// desktop_add_foreign_window: dropped by kCGWindowListExcludeDesktopElements.
  DESKTOP_GNUSTEP_DESKTOP_ELEMENT = 2,
  /// desktop_add_foreign_window: listed in front of this process's windows, not behind.
  DESKTOP_GNUSTEP_IN_FRONT = 4
};

/// Which call desktop_gnustep_call_count counts.
enum {
  DESKTOP_GNUSTEP_CALL_COPY_WINDOW_LIST = 0,
  DESKTOP_GNUSTEP_CALL_SHOW_CURSOR = 1,
  DESKTOP_GNUSTEP_CALL_HIDE_CURSOR = 2,
  DESKTOP_GNUSTEP_CALL_WARP_CURSOR = 3,
  DESKTOP_GNUSTEP_CALL_GET_KEYS = 4,
  DESKTOP_GNUSTEP_CALL_KINDS = 5
};

/// Makes the shared application and finishes its launch, so that AppKit tracks the key
/// window. Answers 1, or 0 when no X display can be opened (nothing is made then). Safe to
/// call again.
DESKTOP_API int desktop_gnustep_start(void);

/// Opens a titled window at (x, y) (AppKit's screen coordinates: from the bottom left) of
/// the given content size, sets its level, activates the application and orders the window
/// front (with no window manager running, in front of every other window, whatever their
/// levels). Answers its window number, 0 when it could not be made.
DESKTOP_API long desktop_gnustep_open_window(const char* title, double x, double y, double width,
                                             double height, long level, int flags);
/// Activates the application and orders the window front, as a user's click would.
DESKTOP_API void desktop_gnustep_order_front(long window_number);
DESKTOP_API void desktop_gnustep_order_out(long window_number);
DESKTOP_API void desktop_gnustep_miniaturize(long window_number);
/// Makes the window key directly, as a user's click would.
DESKTOP_API void desktop_gnustep_make_key(long window_number);
/// Closes every window opened by desktop_gnustep_open_window.
DESKTOP_API void desktop_gnustep_close_all(void);

/// Turns the run loop for this long, handing every event that arrives to the application.
DESKTOP_API void desktop_gnustep_turn_run_loop(double seconds);

/// The number of [NSApp keyWindow], 0 when there is none.
DESKTOP_API long desktop_gnustep_key_window_number(void);

/// Adds a window of another process to every later window list. Answers 1, or 0 (and adds
/// nothing) when the pid is this process's, the number is 0 (kCGNullWindowID) or already
/// listed, or belongs to one of the application's windows: window numbers are unique
/// across the window server.
DESKTOP_API int desktop_gnustep_add_foreign_window(int owner_pid, unsigned int window_number,
                                                   long level, int flags);
DESKTOP_API void desktop_gnustep_clear_foreign_windows(void);

/// Window-list objects (arrays, dictionaries, numbers) and cursor events alive right now.
DESKTOP_API long desktop_gnustep_live_cf_objects(void);

/// How many times the given DESKTOP_GNUSTEP_CALL_* was made; -1 for an unknown kind.
DESKTOP_API long desktop_gnustep_call_count(int call);

/// Sets or clears one key in the simulated key map. Answers 0 outside 0 to 127.
DESKTOP_API int desktop_gnustep_set_key_down(int key_code, int down);

/// Hides counted by the cursor calls and not yet shown again.
DESKTOP_API int desktop_gnustep_cursor_hide_count(void);

/// Writes the whole X screen to a binary PPM file (netpbm's pnmtopng makes a PNG of it).
/// Answers 1, or 0 when it could not. Taken here rather than by a child process: GNUstep
/// reaps child processes itself, which leaves an interpreter waiting for one forever.
DESKTOP_API int desktop_gnustep_write_screenshot(const char* path);

/// The X connection (a Display*) the cursor calls use, null without a display.
DESKTOP_API void* desktop_gnustep_cursor_display(void);

#ifdef __cplusplus
}
#endif

#endif
