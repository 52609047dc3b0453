#ifndef QUILLMARK_TESTS_EXTENSION_DESKTOP_FIXTURE_H
#define QUILLMARK_TESTS_EXTENSION_DESKTOP_FIXTURE_H

#include <desktop_control.h>
#include <gtest/gtest.h>
#include <unistd.h>

// Every test starts from an empty desktop and must hand back every CF object it was given.
class DesktopTest : public ::testing::Test {
 protected:
  // What the host's main document window looks like to the window server and to AppKit.
  static constexpr int MAIN_WINDOW =
      DESKTOP_WINDOW_ON_SCREEN | DESKTOP_WINDOW_KNOWN_TO_APP | DESKTOP_WINDOW_TOOLBAR;

  void SetUp() override {
    desktop_reset();
    live_at_start_ = desktop_live_cf_objects();
  }
  void TearDown() override { EXPECT_EQ(desktop_live_cf_objects(), live_at_start_); }

  static void add_own(unsigned int number, long level, int flags) {
    ASSERT_EQ(desktop_add_window(getpid(), number, level, flags), 1);
  }
  static void add_foreign(unsigned int number, long level, int flags) {
    ASSERT_EQ(desktop_add_window(getpid() + 1, number, level, flags), 1);
  }

  long live_at_start_ = 0;
};

#endif
