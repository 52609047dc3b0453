#ifndef QUILLMARK_DESKTOP_GNUSTEP_X11_H
#define QUILLMARK_DESKTOP_GNUSTEP_X11_H

// The X server calls of the GNUstep desktop, kept in C: Xlib's macros (None, Bool, Status)
// must not meet AppKit's headers in one translation unit.

#ifdef __cplusplus
extern "C" {
#endif

/// Orders `windows` (X window ids) front to back as the X server stacks them and answers
/// how many of them are viewable (mapped, with every ancestor mapped); those come first in
/// `windows`, the others follow in their former order. The display is the connection the
/// windows were made on. Answers -1 when the server cannot be asked.
int x11_order_front_to_back(void* display, unsigned long* windows, int count);

/// The pointer's position on the default screen's root window; 0 without a display.
int x11_query_pointer(int* x, int* y);
/// Moves the pointer; the server keeps it on the screen. 0 without a display.
int x11_warp_pointer(int x, int y);
/// XFixes hide or show of the cursor over the root window, counted per connection by the
/// server: each hide needs one show. 0 without a display or without XFixes.
int x11_hide_cursor(void);
int x11_show_cursor(void);

/// Writes the whole screen as a binary PPM file. 0 without a display or when the file
/// cannot be written.
int x11_write_screenshot(const char* path);

/// The connection the cursor calls use, opened on first use and kept for the process.
void* x11_cursor_display(void);

#ifdef __cplusplus
}
#endif

#endif
