#include "input_helpers.h"

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>

#include <cmath>

namespace {

// The display the cursor calls name; the platform applies them to the cursor everywhere.
constexpr CGDirectDisplayID MAIN_DISPLAY = 0;
constexpr int32_t KEY_CODES = 128;

int32_t truncate_coordinate(double value) {
  // Converting a double outside the int32_t range is undefined: pin it to the range first.
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return INT32_MAX;
  if (value <= -2147483648.0) return INT32_MIN;
  return static_cast<int32_t>(value);
}

}  // namespace

extern "C" {

bool test_for_key_down(int32_t key_code) {
  if (key_code < 0 || key_code >= KEY_CODES) return false;
  KeyMap map;
  GetKeys(map);
  const auto* bytes = reinterpret_cast<const unsigned char*>(map);
  return ((bytes[key_code >> 3] >> (key_code & 7)) & 1) != 0;
}

bool is_cursor_visible(void) { return CGCursorIsVisible() != 0; }

bool show_cursor(bool show) {
  bool visible = CGCursorIsVisible() != 0;
  if (visible == show) return visible;
  // Asked again before the first call: another process may have changed the cursor since.
  visible = CGCursorIsVisible() != 0;
  for (int calls = 0; visible != show && calls < SHOW_CURSOR_MAX_CALLS; ++calls) {
    if (show)
      CGDisplayShowCursor(MAIN_DISPLAY);
    else
      CGDisplayHideCursor(MAIN_DISPLAY);
    visible = CGCursorIsVisible() != 0;
  }
  return visible;
}

void get_cursor_position(int32_t* x, int32_t* y) {
  CGEventRef event = CGEventCreate(nullptr);
  CGPoint const location = CGEventGetLocation(event);
  CFRelease(event);
  *x = truncate_coordinate(location.x);
  *y = truncate_coordinate(location.y);
}

bool set_cursor_position(int32_t x, int32_t y) {
  return CGWarpMouseCursorPosition(CGPoint{static_cast<double>(x), static_cast<double>(y)}) ==
         kCGErrorSuccess;
}

}  // extern "C"
