// The window activation against real GNUstep windows on the X display in DISPLAY
// (scripts/test.sh starts an Xvfb): the list as the X server stacks them, the AppKit key
// window, and the Foundation objects the list is made of.

#include <CoreGraphics/CoreGraphics.h>
#include <desktop_gnustep_control.h>
#include <gtest/gtest.h>
#include <objc_seam.h>
#include <unistd.h>

#include <tuple>
#include <vector>

#include "sketchup_window.h"

namespace {

// NSFloatingWindowLevel and NSDesktopWindowLevel.
constexpr long FLOATING_LEVEL = 2;
constexpr long DESKTOP_LEVEL = -1000;
constexpr CGWindowListOption ON_SCREEN_ONLY =
    kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements;

struct Listed {
  long pid, number, level;
  bool operator==(const Listed& o) const {
    return std::tie(pid, number, level) == std::tie(o.pid, o.number, o.level);
  }
};

void PrintTo(const Listed& w, std::ostream* out) {
  *out << "{pid " << w.pid << ", #" << w.number << ", level " << w.level << "}";
}

long entry(const void* info, CFStringRef key) {
  return ns_integer_value(ns_object_for_keyed_subscript(info, key));
}

// The list as the platform call gives it, read through the same seam the activation uses:
// this process's windows only, or with all, every window.
std::vector<Listed> window_list(CGWindowListOption option, bool all = false) {
  std::vector<Listed> windows;
  CFArrayRef list = CGWindowListCopyWindowInfo(option, kCGNullWindowID);
  EXPECT_NE(list, nullptr);
  if (list == nullptr) return windows;
  for (CFIndex i = 0; i < CFArrayGetCount(list); ++i) {
    const void* info = CFArrayGetValueAtIndex(list, i);
    Listed const w{entry(info, kCGWindowOwnerPID), entry(info, kCGWindowNumber),
                   entry(info, kCGWindowLayer)};
    if (all || w.pid == getpid()) windows.push_back(w);
  }
  CFRelease(list);
  return windows;
}

// Every test starts with none of its windows open and must hand back every window-list
// object.
class GnustepActivationTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(desktop_gnustep_start(), 1)
        << "no X display: run these under Xvfb (scripts/test.sh gnustep)";
    live_at_start_ = desktop_gnustep_live_cf_objects();
  }
  void TearDown() override {
    desktop_gnustep_close_all();
    desktop_gnustep_clear_foreign_windows();
    settle();
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
  long palette() { return open("palette", 0, DESKTOP_GNUSTEP_PANEL); }
  static int foreign(int pid, unsigned number, int flags = DESKTOP_GNUSTEP_ON_SCREEN) {
    return desktop_gnustep_add_foreign_window(pid, number, 0, flags);
  }

  // Long enough for the X server's answers to come back through the event queue.
  static void settle() { desktop_gnustep_turn_run_loop(0.2); }

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

  // Activates as Ruby would, then lets AppKit hear back from the server; checks that the
  // call copied one list and left no list object alive.
  bool activate() {
    stable_key_window();
    long const live = desktop_gnustep_live_cf_objects();
    long const copies = desktop_gnustep_call_count(DESKTOP_GNUSTEP_CALL_COPY_WINDOW_LIST);
    VALUE const answer = Orvex::Sketchup::rbf_activate_main_window(Qnil);
    EXPECT_EQ(desktop_gnustep_live_cf_objects(), live) << "the window list was not released";
    EXPECT_EQ(desktop_gnustep_call_count(DESKTOP_GNUSTEP_CALL_COPY_WINDOW_LIST), copies + 1);
    stable_key_window();
    EXPECT_TRUE(answer == Qtrue || answer == Qfalse);
    return answer == Qtrue;
  }

  long live_at_start_ = 0;
  int opened_ = 0;
};

// Each window is opened in front of the ones before it.
TEST_F(GnustepActivationTest, ListsOwnWindowsFrontToBackAsTheServerStacksThem) {
  long const second = document("second document");
  long const main = document("main document");
  long const floating =
      open("floating panel", FLOATING_LEVEL, DESKTOP_GNUSTEP_PANEL | DESKTOP_GNUSTEP_TOOLBAR);
  long const panel = palette();
  settle();
  long const pid = getpid();
  EXPECT_EQ(
      window_list(ON_SCREEN_ONLY),
      (std::vector<Listed>{
          {pid, panel, 0}, {pid, floating, FLOATING_LEVEL}, {pid, main, 0}, {pid, second, 0}}));
  // Restacking on the server reorders the list. Without a window manager nothing keeps the
  // floating panel above a normal window: the list follows the server, not the levels.
  desktop_gnustep_order_front(second);
  settle();
  EXPECT_EQ(
      window_list(ON_SCREEN_ONLY),
      (std::vector<Listed>{
          {pid, second, 0}, {pid, panel, 0}, {pid, floating, FLOATING_LEVEL}, {pid, main, 0}}));
}

TEST_F(GnustepActivationTest, PassesOverPaletteAndFloatingPanelToTheMainWindow) {
  long const second = document("second document");
  long const main = document("main document");
  open("floating panel", FLOATING_LEVEL, DESKTOP_GNUSTEP_PANEL | DESKTOP_GNUSTEP_TOOLBAR);
  palette();
  desktop_gnustep_make_key(second);
  ASSERT_EQ(stable_key_window(), second);

  EXPECT_TRUE(activate());
  EXPECT_EQ(desktop_gnustep_key_window_number(), main);
  // Made key only: nothing was ordered front.
  EXPECT_EQ(window_list(ON_SCREEN_ONLY).at(2).number, main);
}

TEST_F(GnustepActivationTest, OfTwoQualifyingWindowsOnlyTheFrontOneBecomesKey) {
  long const first = document("first document");
  long const second = document("second document");
  // Either one in front: the front one wins, whichever was made key before.
  const struct {
    long front;
    long key_before;
  } cases[] = {{second, first}, {first, second}, {second, second}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "front #" << c.front << ", key before #" << c.key_before);
    desktop_gnustep_order_front(c.front);
    desktop_gnustep_make_key(c.key_before);
    ASSERT_EQ(stable_key_window(), c.key_before);
    EXPECT_TRUE(activate());
    EXPECT_EQ(desktop_gnustep_key_window_number(), c.front);
  }
}

// Another application's windows are listed, but even its document window in front at the
// normal level never qualifies: the application knows no window by that number. The list's
// objects are counted while they live (the array, and per window a dictionary and its three
// numbers) and freed by one release.
TEST_F(GnustepActivationTest, WindowsOfOtherProcessesNeverQualify) {
  long const panel = palette();
  desktop_gnustep_make_key(panel);
  ASSERT_EQ(foreign(getpid() + 1, 90001, DESKTOP_GNUSTEP_ON_SCREEN | DESKTOP_GNUSTEP_IN_FRONT), 1);
  ASSERT_EQ(foreign(getpid() + 2, 90002), 1);
  settle();
  std::vector<Listed> const listed = window_list(ON_SCREEN_ONLY, true);
  ASSERT_EQ(listed.size(), 3u);
  EXPECT_EQ(listed.front().number, 90001);
  EXPECT_EQ(listed.back().number, 90002);
  EXPECT_FALSE(activate());
  EXPECT_EQ(desktop_gnustep_key_window_number(), panel);

  long const main = document("main document");
  EXPECT_TRUE(activate());
  EXPECT_EQ(desktop_gnustep_key_window_number(), main);

  long const before = desktop_gnustep_live_cf_objects();
  CFArrayRef list = CGWindowListCopyWindowInfo(ON_SCREEN_ONLY, kCGNullWindowID);
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(CFArrayGetCount(list), 4);
  EXPECT_EQ(desktop_gnustep_live_cf_objects(), before + 1 + 4 * 4);
  // The seam answers from the real objects: the listed number finds the AppKit window.
  const void* info = CFArrayGetValueAtIndex(list, 1);
  void* window = ns_app_window_with_window_number(entry(info, kCGWindowNumber));
  EXPECT_NE(ns_window_toolbar(window), nullptr);
  EXPECT_EQ(ns_window_level(window), 0);
  EXPECT_EQ(ns_object_for_keyed_subscript(info, kCGWindowName), nullptr);
  CFRelease(list);
  EXPECT_EQ(desktop_gnustep_live_cf_objects(), before);
}

TEST_F(GnustepActivationTest, ForeignWindowsCannotTakeAnOwnNumberOrPid) {
  int const pid = getpid();
  auto const main = static_cast<unsigned>(document("main document"));
  // An own window's number, the own pid, no number, a free one, the same number again.
  const struct {
    int pid;
    unsigned number;
    int added;
  } cases[] = {{pid + 1, main, 0},
               {pid, 90003, 0},
               {pid + 1, kCGNullWindowID, 0},
               {pid + 1, 90003, 1},
               {pid + 3, 90003, 0}};
  for (const auto& c : cases) EXPECT_EQ(foreign(c.pid, c.number), c.added) << c.number;
}

TEST_F(GnustepActivationTest, NoOnScreenWindowGivesFalseAndLeavesTheKeyWindow) {
  enum class Away { NOT, ORDERED_OUT, MINIATURIZED };
  const struct {
    const char* name;
    Away main, second, palette;
  } cases[] = {
      {"all ordered out", Away::ORDERED_OUT, Away::ORDERED_OUT, Away::ORDERED_OUT},
      {"all minimised", Away::MINIATURIZED, Away::MINIATURIZED, Away::MINIATURIZED},
      {"one of each", Away::MINIATURIZED, Away::ORDERED_OUT, Away::ORDERED_OUT},
      // The key palette stays on screen, but it has no toolbar.
      {"only the palette on screen", Away::ORDERED_OUT, Away::MINIATURIZED, Away::NOT},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    long const main = document("main document");
    long const second = document("second document");
    long const panel = palette();
    desktop_gnustep_make_key(panel);
    stable_key_window();
    const std::pair<long, Away> windows[] = {
        {main, c.main}, {second, c.second}, {panel, c.palette}};
    for (const auto& w : windows) {
      if (w.second == Away::ORDERED_OUT)
        desktop_gnustep_order_out(w.first);
      else if (w.second == Away::MINIATURIZED)
        desktop_gnustep_miniaturize(w.first);
    }
    long const key_before = stable_key_window();
    for (const Listed& listed : window_list(ON_SCREEN_ONLY))
      for (const auto& w : windows)
        if (w.second != Away::NOT) {
          EXPECT_NE(listed.number, w.first);
        }
    EXPECT_FALSE(activate());
    EXPECT_EQ(desktop_gnustep_key_window_number(), key_before);
    if (c.palette == Away::NOT) {
      EXPECT_EQ(key_before, panel);
    }
    desktop_gnustep_close_all();
    settle();
  }
}

// The options the activation does not use still mean what they say: without "on screen
// only" the ordered-out window is listed (after the on-screen ones), and only "exclude
// desktop elements" drops a window at the desktop level.
TEST_F(GnustepActivationTest, OptionsFilterOffScreenWindowsAndDesktopElements) {
  long const hidden = document("ordered out");
  long const desktop = open("desktop picture", DESKTOP_LEVEL, 0);
  long const shown = document("shown");
  desktop_gnustep_order_out(hidden);
  settle();
  const struct {
    CGWindowListOption option;
    std::vector<long> numbers;
  } cases[] = {
      {kCGWindowListOptionAll, {shown, desktop, hidden}},
      {kCGWindowListOptionOnScreenOnly, {shown, desktop}},
      {kCGWindowListExcludeDesktopElements, {shown, hidden}},
      {ON_SCREEN_ONLY, {shown}},
  };
  for (const auto& c : cases) {
    // Other windows of the application (closed ones it still holds, its own hidden
    // windows) are real windows too; only the ones opened here are compared.
    std::vector<long> numbers;
    for (const Listed& w : window_list(c.option))
      if (w.number == hidden || w.number == desktop || w.number == shown)
        numbers.push_back(w.number);
    EXPECT_EQ(numbers, c.numbers) << "option " << c.option;
  }
}

}  // namespace
