#ifndef QUILLMARK_EXTENSION_INPUT_HELPERS_H
#define QUILLMARK_EXTENSION_INPUT_HELPERS_H

// The desktop's keyboard and cursor state for native extension code. Plain C names, kept
// out of the bundle's export table; they hold no state and call the platform directly on
// the calling thread.

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Whether the key with this virtual key code (0 to 127) is down right now. Any other code
/// answers false; the key map is not read outside its 128 bits.
bool test_for_key_down(int32_t key_code);

bool is_cursor_visible(void);

/// The most show or hide calls one show_cursor makes. Each hide is normally balanced by a
/// show, so a deeper count means some other code hides the cursor without end; waiting it
/// out would hang the caller's (main) thread.
enum { SHOW_CURSOR_MAX_CALLS = 4096 };

/// Shows or hides the cursor and answers whether it is visible afterwards. Hiding is
/// counted by the platform, so showing may take as many calls as there were hides; after
/// SHOW_CURSOR_MAX_CALLS calls without reaching the requested state it stops and answers
/// the state it got.
bool show_cursor(bool show);

/// The cursor location in global display coordinates, truncated toward zero (and clamped
/// to the int32_t range; NaN gives 0).
void get_cursor_position(int32_t* x, int32_t* y);

/// Moves the cursor without generating mouse events; false when the platform refuses.
bool set_cursor_position(int32_t x, int32_t y);

#ifdef __cplusplus
}
#endif

#endif
