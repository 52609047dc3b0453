// The desktop stand-in's own bookkeeping, which the other tests lean on to see a leak, and its
// lock. What it lists, which windows the application knows and how it counts cursor hides are
// pinned by the activation and input helper tests, whose expectations are written out
// independently.

#include <CoreGraphics/CoreGraphics.h>
#include <objc_seam.h>

#include <thread>
#include <vector>

#include "desktop_fixture.h"

namespace {

TEST_F(DesktopTest, ReleasingTheLastReferenceFreesAnObjectAndEverythingItHolds) {
  add_own(1, 0, MAIN_WINDOW);
  add_own(2, 0, MAIN_WINDOW);
  long const before = desktop_live_cf_objects();
  CFArrayRef list = CGWindowListCopyWindowInfo(kCGWindowListOptionAll, kCGNullWindowID);
  EXPECT_GE(desktop_live_cf_objects(),
            before + 3);  // the list, its two dictionaries, their numbers
  CFRelease(list);
  EXPECT_EQ(desktop_live_cf_objects(), before);
  CGEventRef event = CGEventCreate(nullptr);
  EXPECT_EQ(desktop_live_cf_objects(), before + 1);
  CFRelease(event);
  EXPECT_EQ(desktop_live_cf_objects(), before);
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
        CFArrayRef list =
            CGWindowListCopyWindowInfo(kCGWindowListOptionOnScreenOnly, kCGNullWindowID);
        for (CFIndex k = 0; k < CFArrayGetCount(list); ++k)
          ns_integer_value(
              ns_object_for_keyed_subscript(CFArrayGetValueAtIndex(list, k), kCGWindowOwnerPID));
        CFRelease(list);
        CGDisplayShowCursor(0);
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(desktop_cursor_hide_count(), 0);
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_COPY_WINDOW_LIST), THREADS * ROUNDS);
}

}  // namespace
