// The desktop stand-in's own bookkeeping, which the other tests lean on to see a leak, a
// double release or a wrong cursor count. What it lists and which windows the application
// knows are checked through the window activation's property test.

#include <Carbon/Carbon.h>
#include <CoreGraphics/CoreGraphics.h>
#include <objc_seam.h>

#include <thread>
#include <vector>

#include "desktop_fixture.h"

namespace {

using DesktopDeathTest = DesktopTest;

TEST_F(DesktopTest, ReleasingTheLastReferenceFreesAnObjectAndEverythingItHolds) {
  add_own(1, 0, MAIN_WINDOW);
  add_own(2, 0, MAIN_WINDOW);
  long const before = desktop_live_cf_objects();
  CFArrayRef list = CGWindowListCopyWindowInfo(kCGWindowListOptionAll, kCGNullWindowID);
  EXPECT_GE(desktop_live_cf_objects(), before + 3);  // the list, its two dictionaries, their numbers
  CFRelease(list);
  EXPECT_EQ(desktop_live_cf_objects(), before);
  CGEventRef event = CGEventCreate(nullptr);
  EXPECT_EQ(desktop_live_cf_objects(), before + 1);
  CFRelease(event);
  EXPECT_EQ(desktop_live_cf_objects(), before);
}

TEST_F(DesktopDeathTest, MisusingACFObjectAbortsWithAReport) {
  add_own(1, 0, MAIN_WINDOW);
  EXPECT_DEATH(
      {
        CFArrayRef list = CGWindowListCopyWindowInfo(kCGWindowListOptionAll, kCGNullWindowID);
        CFRelease(list);
        CFRelease(list);
      },
      "not alive");
  EXPECT_DEATH(
      {
        CFArrayRef list = CGWindowListCopyWindowInfo(kCGWindowListOptionAll, kCGNullWindowID);
        const void* info = CFArrayGetValueAtIndex(list, 0);
        CFRelease(list);
        ns_object_for_keyed_subscript(info, kCGWindowNumber);
      },
      "not a live CF object");
}

TEST_F(DesktopTest, CursorHidesAreCountedAndShowsStopAtZero) {
  CGDisplayHideCursor(0);
  CGDisplayHideCursor(0);
  CGDisplayShowCursor(0);
  EXPECT_FALSE(CGCursorIsVisible());
  CGDisplayShowCursor(0);
  EXPECT_TRUE(CGCursorIsVisible());
  // A surplus show is not banked: one hide still hides.
  CGDisplayShowCursor(0);
  CGDisplayHideCursor(0);
  EXPECT_FALSE(CGCursorIsVisible());
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_SHOW_CURSOR), 3);
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_HIDE_CURSOR), 3);
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_CURSOR_IS_VISIBLE), 3);
  desktop_set_cursor_hide_count(-3);
  EXPECT_EQ(desktop_cursor_hide_count(), 0);
}

TEST_F(DesktopTest, ConcurrentCallersLeaveTheStateConsistent) {
  add_own(1, 0, MAIN_WINDOW);
  add_foreign(2, 0, MAIN_WINDOW);
  constexpr int THREADS = 4, ROUNDS = 200;
  std::vector<std::thread> threads;
  for (int t = 0; t < THREADS; ++t)
    threads.emplace_back([] {
      for (int i = 0; i < ROUNDS; ++i) {
        CGDisplayHideCursor(0);
        CFArrayRef list = CGWindowListCopyWindowInfo(kCGWindowListOptionOnScreenOnly, kCGNullWindowID);
        for (CFIndex k = 0; k < CFArrayGetCount(list); ++k)
          ns_integer_value(ns_object_for_keyed_subscript(CFArrayGetValueAtIndex(list, k), kCGWindowOwnerPID));
        CFRelease(list);
        CGDisplayShowCursor(0);
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(desktop_cursor_hide_count(), 0);
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_COPY_WINDOW_LIST), THREADS * ROUNDS);
}

}  // namespace
