// The keyboard and cursor helpers against the simulated desktop.

#include "input_helpers.h"

#include <cmath>
#include <cstdint>
#include <cstring>

#include "desktop_fixture.h"

namespace {

using InputHelpersTest = DesktopTest;

TEST_F(InputHelpersTest, EachKeyCodeReadsItsOwnBitOfTheMap) {
  const struct {
    int32_t code;
    int byte;
    unsigned char bit;
  } cases[] = {{0, 0, 0x01}, {127, 15, 0x80}, {60, 7, 0x10}};
  unsigned char bytes[16];
  for (const auto& c : cases) {
    SCOPED_TRACE(c.code);
    // That bit alone down, then every bit but that one: only the code itself follows it.
    for (bool alone : {true, false}) {
      std::memset(bytes, alone ? 0x00 : 0xFF, sizeof bytes);
      bytes[c.byte] = static_cast<unsigned char>(bytes[c.byte] ^ c.bit);
      desktop_set_key_map(bytes);
      for (int32_t code = 0; code < 128; ++code)
        EXPECT_EQ(test_for_key_down(code), (code == c.code) == alone) << code;
    }
  }
  // Codes outside the map are never down, even with every key down.
  std::memset(bytes, 0xFF, sizeof bytes);
  desktop_set_key_map(bytes);
  for (int32_t code : {-1, -8, 128, 135, INT32_MIN, INT32_MAX})
    EXPECT_FALSE(test_for_key_down(code)) << code;
}

TEST_F(InputHelpersTest, ShowCursorCallsUntilTheCountedStateFlips) {
  // queries: CGCursorIsVisible calls. A change asks once more before the first show or hide,
  // then once after each.
  const struct {
    int hides_before;
    bool show, answer;
    long show_calls, hide_calls, queries;
  } cases[] = {
      {0, true, true, 0, 0, 1},  // already visible: nothing to do
      {3, false, false, 0, 0, 1},  // already hidden
      {0, false, false, 0, 1, 3},  // one hide hides
      {2, true, true, 2, 0, 4},  // two hides take two shows
      {SHOW_CURSOR_MAX_CALLS, true, true, SHOW_CURSOR_MAX_CALLS, 0, SHOW_CURSOR_MAX_CALLS + 2},
      // Deeper than the bound: give up and say it is still hidden.
      {SHOW_CURSOR_MAX_CALLS + 5, true, false, SHOW_CURSOR_MAX_CALLS, 0, SHOW_CURSOR_MAX_CALLS + 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.hides_before << (c.show ? " show" : " hide"));
    desktop_reset();
    desktop_set_cursor_hide_count(c.hides_before);
    EXPECT_EQ(show_cursor(c.show), c.answer);
    EXPECT_EQ(desktop_call_count(DESKTOP_CALL_CURSOR_IS_VISIBLE), c.queries);
    EXPECT_EQ(is_cursor_visible(), c.answer);
    EXPECT_EQ(desktop_call_count(DESKTOP_CALL_SHOW_CURSOR), c.show_calls);
    EXPECT_EQ(desktop_call_count(DESKTOP_CALL_HIDE_CURSOR), c.hide_calls);
  }
}

TEST_F(InputHelpersTest, CursorPositionIsTruncatedTowardZero) {
  const struct {
    double x, y;
    int32_t expected_x, expected_y;
  } cases[] = {
      {10.9, -3.7, 10, -3},
      {-0.5, 0.999, 0, 0},
      {-7.999, 2147483646.9, -7, 2147483646},
      // Out of the int32_t range or not a number: pinned rather than undefined.
      {1e12, -1e12, INT32_MAX, INT32_MIN},
      {std::nan(""), 2147483647.5, 0, INT32_MAX},
      {-2147483648.5, -2147483647.5, INT32_MIN, -2147483647},
  };
  for (const auto& c : cases) {
    desktop_set_cursor_location(c.x, c.y);
    int32_t x = 1, y = 1;
    get_cursor_position(&x, &y);
    EXPECT_EQ(x, c.expected_x) << c.x;
    EXPECT_EQ(y, c.expected_y) << c.y;
    EXPECT_EQ(desktop_live_cf_objects(), live_at_start_) << "the event was not released";
  }
}

TEST_F(InputHelpersTest, SetCursorPositionMovesExactlyOrReportsTheRefusal) {
  for (int32_t const v : {INT32_MIN, -40, 0, 12, INT32_MAX}) {
    EXPECT_TRUE(set_cursor_position(v, -(v / 2)));
    EXPECT_EQ(desktop_cursor_x(), static_cast<double>(v));
    EXPECT_EQ(desktop_cursor_y(), static_cast<double>(-(v / 2)));
  }
  desktop_set_cursor_location(3.5, 4.5);
  desktop_set_warp_fails(1);
  EXPECT_FALSE(set_cursor_position(100, 200));
  EXPECT_EQ(desktop_cursor_x(), 3.5);
  EXPECT_EQ(desktop_cursor_y(), 4.5);
}

}  // namespace
