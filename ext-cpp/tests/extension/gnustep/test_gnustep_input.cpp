// The input helpers against the X server's real pointer and cursor on the display in
// DISPLAY, and the key map that stays simulated in this configuration.

#include <CoreGraphics/CoreGraphics.h>
#include <desktop_gnustep_control.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "input_helpers.h"

// After gtest: Xlib's macros (None, Bool, Status) must not meet other headers.
#include <X11/Xlib.h>
#include <X11/extensions/Xfixes.h>

namespace {

class GnustepInputTest : public ::testing::Test {
 protected:
  void SetUp() override {
    display_ = XOpenDisplay(nullptr);
    ASSERT_NE(display_, nullptr) << "no X display: run these under Xvfb (scripts/test.sh gnustep)";
  }
  void TearDown() override {
    while (desktop_gnustep_cursor_hide_count() > 0) CGDisplayShowCursor(0);
    if (display_ != nullptr) XCloseDisplay(display_);
  }

  // Where the server has the pointer, asked on a connection of our own.
  void server_pointer(int* x, int* y) const {
    Window root = 0, child = 0;
    int wx = 0, wy = 0;
    unsigned int mask = 0;
    ASSERT_TRUE(
        XQueryPointer(display_, DefaultRootWindow(display_), &root, &child, x, y, &wx, &wy, &mask));
  }

  Display* display_ = nullptr;
};

// The server's own hide count for the library's connection: it accepts exactly that many
// shows before answering BadMatch. The hides are put back afterwards.
int server_hide_count() {
  static int bad_matches;
  auto* display = static_cast<Display*>(desktop_gnustep_cursor_display());
  XSync(display, False);
  bad_matches = 0;
  XErrorHandler const previous = XSetErrorHandler([](Display*, XErrorEvent* error) {
    if (error->error_code == BadMatch) ++bad_matches;
    return 0;
  });
  int shows = 0;
  for (; shows < 16; ++shows) {
    XFixesShowCursor(display, DefaultRootWindow(display));
    XSync(display, False);
    if (bad_matches > 0) break;
  }
  XSetErrorHandler(previous);
  for (int i = 0; i < shows; ++i) XFixesHideCursor(display, DefaultRootWindow(display));
  XSync(display, False);
  return shows;
}

// Through the platform call and through set_cursor_position: both report success, as the
// server takes the move and pins the pointer to the screen itself.
TEST_F(GnustepInputTest, WarpsMoveTheServerPointerWhichTheServerKeepsOnTheScreen) {
  int const right = DisplayWidth(display_, DefaultScreen(display_)) - 1;
  int const bottom = DisplayHeight(display_, DefaultScreen(display_)) - 1;
  const struct {
    bool helper;
    double x, y;
    int32_t expected_x, expected_y;
  } cases[] = {
      {false, 10.9, 3.7, 10, 3},  // whole pixels: the fraction is cut toward zero
      {false, 10.9, -3.7, 10, 0},  // above the screen: pinned to its top row
      {false, 5000.0, 20.0, right, 20},  // past the right edge
      {false, -70000.0, 1e9, 0, bottom},  // past the protocol's 16-bit range
      {false, double(right), double(bottom), right, bottom},
      {true, 40, 50, 40, 50},
      {true, INT32_MAX, -1, right, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "warp to (" << c.x << ", " << c.y << ")");
    if (c.helper)
      EXPECT_TRUE(set_cursor_position(static_cast<int32_t>(c.x), static_cast<int32_t>(c.y)));
    else
      EXPECT_EQ(CGWarpMouseCursorPosition(CGPoint{c.x, c.y}), kCGErrorSuccess);
    int server_x = -1, server_y = -1;
    server_pointer(&server_x, &server_y);
    EXPECT_EQ(server_x, c.expected_x);
    EXPECT_EQ(server_y, c.expected_y);
    int32_t x = -1, y = -1;
    get_cursor_position(&x, &y);
    EXPECT_EQ(x, c.expected_x);
    EXPECT_EQ(y, c.expected_y);
  }
}

// show_cursor returns at once when the cursor already matches, and otherwise shows or hides
// until it does; a platform show with nothing to undo is ignored, not sent (the server
// would refuse it).
TEST_F(GnustepInputTest, ShowCursorFlipsTheServerCursorAsOftenAsNeeded) {
  ASSERT_EQ(server_hide_count(), 0);
  enum Call { SHOW, HIDE, PLATFORM_HIDE, PLATFORM_SHOW };
  const struct {
    Call call;
    bool visible;  // show_cursor's answer, and the visibility afterwards
    long hides, shows;  // platform calls this step makes
    int server_hides;  // the server's count afterwards
  } steps[] = {
      {SHOW, true, 0, 0, 0}, {HIDE, false, 1, 0, 1},          {HIDE, false, 0, 0, 1},
      {SHOW, true, 0, 1, 0}, {PLATFORM_HIDE, false, 1, 0, 1}, {PLATFORM_HIDE, false, 1, 0, 2},
      {SHOW, true, 0, 2, 0}, {PLATFORM_SHOW, true, 0, 1, 0},
  };
  for (const auto& step : steps) {
    SCOPED_TRACE(testing::Message() << "step " << &step - steps);
    long const hides = desktop_gnustep_call_count(DESKTOP_GNUSTEP_CALL_HIDE_CURSOR);
    long const shows = desktop_gnustep_call_count(DESKTOP_GNUSTEP_CALL_SHOW_CURSOR);
    if (step.call == SHOW || step.call == HIDE)
      EXPECT_EQ(show_cursor(step.call == SHOW), step.visible);
    else
      EXPECT_EQ(step.call == PLATFORM_HIDE ? CGDisplayHideCursor(0) : CGDisplayShowCursor(0),
                kCGErrorSuccess);
    EXPECT_EQ(is_cursor_visible(), step.visible);
    EXPECT_EQ(desktop_gnustep_call_count(DESKTOP_GNUSTEP_CALL_HIDE_CURSOR) - hides, step.hides);
    EXPECT_EQ(desktop_gnustep_call_count(DESKTOP_GNUSTEP_CALL_SHOW_CURSOR) - shows, step.shows);
    EXPECT_EQ(server_hide_count(), step.server_hides);
  }
}

TEST_F(GnustepInputTest, KeyMapStaysSimulated) {
  const int codes[] = {0, 7, 8, 63, 127};
  for (int code : codes) {
    SCOPED_TRACE(code);
    ASSERT_EQ(desktop_gnustep_set_key_down(code, 1), 1);
    for (int other : codes) EXPECT_EQ(test_for_key_down(other), other == code) << other;
    ASSERT_EQ(desktop_gnustep_set_key_down(code, 0), 1);
  }
  EXPECT_EQ(desktop_gnustep_set_key_down(128, 1), 0);
  EXPECT_FALSE(test_for_key_down(128));
}

}  // namespace
