#ifndef QUILLMARK_TESTS_EXTENSION_GNUSTEP_FIXTURE_H
#define QUILLMARK_TESTS_EXTENSION_GNUSTEP_FIXTURE_H

#include <CoreGraphics/CoreGraphics.h>
#include <desktop_gnustep_control.h>
#include <gtest/gtest.h>

// Real GNUstep windows on the X display in DISPLAY (scripts/test.sh starts an Xvfb). Every
// test starts with none of its windows open and must hand back every window-list object.
class GnustepTest : public ::testing::Test {
 protected:
  // NSFloatingWindowLevel and NSDesktopWindowLevel.
  static constexpr long FLOATING_LEVEL = 2;
  static constexpr long DESKTOP_LEVEL = -1000;
  // Long enough for the X server's answers to come back through the event queue.
  static constexpr double SETTLE_SECONDS = 0.2;

  void SetUp() override {
    ASSERT_EQ(desktop_gnustep_start(), 1)
        << "no X display: run these under Xvfb (scripts/test.sh gnustep)";
    live_at_start_ = desktop_gnustep_live_cf_objects();
  }
  void TearDown() override {
    desktop_gnustep_close_all();
    desktop_gnustep_clear_foreign_windows();
    desktop_gnustep_turn_run_loop(SETTLE_SECONDS);
    EXPECT_EQ(desktop_gnustep_live_cf_objects(), live_at_start_);
  }

  // Opens a window a little below and to the right of the previous one, in front of the
  // others of its level.
  long open(const char* title, long level, int flags) {
    double const offset = 40.0 * static_cast<double>(opened_++);
    long const number = desktop_gnustep_open_window(title, 60.0 + offset, 400.0 - offset, 320.0,
                                                    200.0, level, flags);
    EXPECT_GT(number, 0) << title;
    return number;
  }
  long document(const char* title) { return open(title, 0, DESKTOP_GNUSTEP_TOOLBAR); }

  static void settle() { desktop_gnustep_turn_run_loop(SETTLE_SECONDS); }

  // The key window once AppKit has heard every focus change the X server had queued: a
  // focus event still on its way can make an earlier window key again.
  static long stable_key_window() {
    long key = desktop_gnustep_key_window_number();
    for (int turns = 0, unchanged = 0; turns < 100 && unchanged < 6; ++turns) {
      desktop_gnustep_turn_run_loop(0.05);
      long const now = desktop_gnustep_key_window_number();
      unchanged = now == key ? unchanged + 1 : 0;
      key = now;
    }
    return key;
  }

  long live_at_start_ = 0;
  int opened_ = 0;
};

#endif
