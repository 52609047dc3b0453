// The desktop stand-in itself: what the window server lists, how CF objects live and die,
// the counted cursor, the key map. The window activation and the input helpers are only
// as well tested as this simulation is faithful.

#include <Carbon/Carbon.h>
#include <CoreGraphics/CoreGraphics.h>
#include <objc_seam.h>

#include <cstring>
#include <thread>
#include <vector>

#include "desktop_fixture.h"

namespace {

long integer_for(const void* info, CFStringRef key) {
  return ns_integer_value(ns_object_for_keyed_subscript(info, key));
}

// The window numbers a copied list holds, in its order; the list is released.
std::vector<long> listed_numbers(CGWindowListOption option) {
  CFArrayRef list = CGWindowListCopyWindowInfo(option, kCGNullWindowID);
  std::vector<long> numbers;
  for (CFIndex i = 0; i < CFArrayGetCount(list); ++i)
    numbers.push_back(integer_for(CFArrayGetValueAtIndex(list, i), kCGWindowNumber));
  CFRelease(list);
  return numbers;
}

using DesktopDeathTest = DesktopTest;

TEST_F(DesktopTest, WindowListHonoursOnScreenAndDesktopElementOptions) {
  // Numbers fall from front to back so that a list sorted by number would show.
  add_own(9, 0, MAIN_WINDOW);
  add_foreign(8, 0, DESKTOP_WINDOW_ON_SCREEN | DESKTOP_WINDOW_DESKTOP_ELEMENT);
  add_own(7, 0, MAIN_WINDOW & ~DESKTOP_WINDOW_ON_SCREEN);
  add_foreign(6, 0, DESKTOP_WINDOW_DESKTOP_ELEMENT);
  add_foreign(5, 2, DESKTOP_WINDOW_ON_SCREEN);

  EXPECT_EQ(listed_numbers(kCGWindowListOptionAll), (std::vector<long>{9, 8, 7, 6, 5}));
  EXPECT_EQ(listed_numbers(kCGWindowListOptionOnScreenOnly), (std::vector<long>{9, 8, 5}));
  EXPECT_EQ(listed_numbers(kCGWindowListExcludeDesktopElements), (std::vector<long>{9, 7, 5}));
  EXPECT_EQ(listed_numbers(kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements),
            (std::vector<long>{9, 5}));
}

TEST_F(DesktopTest, ReleasingTheLastReferenceFreesAnObjectAndEverythingItHolds) {
  add_own(1, 0, MAIN_WINDOW);
  add_own(2, 0, MAIN_WINDOW);
  long const before = desktop_live_cf_objects();
  CFArrayRef list = CGWindowListCopyWindowInfo(kCGWindowListOptionAll, kCGNullWindowID);
  // The list, its two dictionaries and their numbers.
  EXPECT_GE(desktop_live_cf_objects(), before + 3);
  CFRelease(list);
  EXPECT_EQ(desktop_live_cf_objects(), before);

  CGEventRef event = CGEventCreate(nullptr);
  EXPECT_EQ(desktop_live_cf_objects(), before + 1);
  CFRelease(event);
  EXPECT_EQ(desktop_live_cf_objects(), before);
}

// The library's tests trust the stand-in to catch a double release and a read after one.
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

TEST_F(DesktopTest, TheApplicationHasWindowObjectsOnlyForItsOwnKnownWindows) {
  add_own(1, 0, MAIN_WINDOW);
  add_own(2, 3, DESKTOP_WINDOW_ON_SCREEN | DESKTOP_WINDOW_KNOWN_TO_APP);
  add_own(3, 0, MAIN_WINDOW & ~DESKTOP_WINDOW_KNOWN_TO_APP);
  add_foreign(4, 0, MAIN_WINDOW);

  void* main_window = ns_app_window_with_window_number(1);
  void* panel = ns_app_window_with_window_number(2);
  ASSERT_NE(main_window, nullptr);
  ASSERT_NE(panel, nullptr);
  EXPECT_NE(ns_window_toolbar(main_window), nullptr);
  EXPECT_EQ(ns_window_toolbar(panel), nullptr);
  EXPECT_EQ(ns_window_level(main_window), 0);
  EXPECT_EQ(ns_window_level(panel), 3);
  for (long number : {3L, 4L, 5L, 0L, -1L, 0x100000001L})
    EXPECT_EQ(ns_app_window_with_window_number(number), nullptr) << number;

  ns_window_make_key_window(panel);
  EXPECT_EQ(desktop_key_window_number(), 2u);
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_MAKE_KEY_WINDOW), 1);
}

TEST_F(DesktopTest, CursorHidesAreCountedAndShowsStopAtZero) {
  EXPECT_TRUE(CGCursorIsVisible());
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
  EXPECT_EQ(desktop_cursor_hide_count(), 1);
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_SHOW_CURSOR), 3);
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_HIDE_CURSOR), 3);
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_KINDS), -1);
  desktop_set_cursor_hide_count(-3);
  EXPECT_EQ(desktop_cursor_hide_count(), 0);
  EXPECT_TRUE(CGCursorIsVisible());
}

TEST_F(DesktopTest, ConcurrentCallersLeaveTheStateConsistent) {
  add_own(1, 0, MAIN_WINDOW);
  add_foreign(2, 0, MAIN_WINDOW);
  constexpr int THREADS = 4;
  constexpr int ROUNDS = 200;
  std::vector<std::thread> threads;
  for (int t = 0; t < THREADS; ++t)
    threads.emplace_back([] {
      for (int i = 0; i < ROUNDS; ++i) {
        CGDisplayHideCursor(0);
        CFArrayRef list = CGWindowListCopyWindowInfo(kCGWindowListOptionOnScreenOnly,
                                                     kCGNullWindowID);
        for (CFIndex k = 0; k < CFArrayGetCount(list); ++k)
          integer_for(CFArrayGetValueAtIndex(list, k), kCGWindowOwnerPID);
        CFRelease(list);
        CGDisplayShowCursor(0);
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(desktop_cursor_hide_count(), 0);
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_COPY_WINDOW_LIST), THREADS * ROUNDS);
}

}  // namespace
