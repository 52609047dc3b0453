// The window activation against real GNUstep windows: the list as the X server stacks them,
// the AppKit key window, and the Foundation objects the list is made of.

#include <objc_seam.h>
#include <unistd.h>

#include <vector>

#include "gnustep_fixture.h"
#include "sketchup_window.h"

namespace {

struct Listed {
  long pid;
  long number;
  long level;
  bool operator==(const Listed& other) const {
    return pid == other.pid && number == other.number && level == other.level;
  }
};

void PrintTo(const Listed& w, std::ostream* out) {
  *out << "{pid " << w.pid << ", #" << w.number << ", level " << w.level << "}";
}

long entry(const void* info, CFStringRef key) {
  return ns_integer_value(ns_object_for_keyed_subscript(info, key));
}

// The list as the platform call gives it, read through the same seam the activation uses.
std::vector<Listed> window_list(CGWindowListOption option) {
  std::vector<Listed> windows;
  CFArrayRef list = CGWindowListCopyWindowInfo(option, kCGNullWindowID);
  EXPECT_NE(list, nullptr);
  if (list == nullptr) return windows;
  for (CFIndex i = 0; i < CFArrayGetCount(list); ++i) {
    const void* info = CFArrayGetValueAtIndex(list, i);
    windows.push_back({entry(info, kCGWindowOwnerPID), entry(info, kCGWindowNumber),
                       entry(info, kCGWindowLayer)});
  }
  CFRelease(list);
  return windows;
}

std::vector<Listed> own_windows(CGWindowListOption option) {
  std::vector<Listed> own;
  for (const Listed& w : window_list(option))
    if (w.pid == getpid()) own.push_back(w);
  return own;
}

constexpr CGWindowListOption ON_SCREEN_ONLY =
    kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements;

class GnustepActivationTest : public GnustepTest {
 protected:
  // Activates as Ruby would, then lets AppKit hear back from the server; checks that the
  // call left no list object alive.
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
};

// Each window is opened in front of the ones before it.
TEST_F(GnustepActivationTest, ListsOwnWindowsFrontToBackAsTheServerStacksThem) {
  long const second = document("second document");
  long const main = document("main document");
  long const floating =
      open("floating panel", FLOATING_LEVEL, DESKTOP_GNUSTEP_PANEL | DESKTOP_GNUSTEP_TOOLBAR);
  long const palette = open("palette", 0, DESKTOP_GNUSTEP_PANEL);
  settle();
  long const pid = getpid();
  EXPECT_EQ(
      own_windows(ON_SCREEN_ONLY),
      (std::vector<Listed>{
          {pid, palette, 0}, {pid, floating, FLOATING_LEVEL}, {pid, main, 0}, {pid, second, 0}}));
  // Restacking on the server reorders the list. Without a window manager nothing keeps the
  // floating panel above a normal window: the list follows the server, not the levels.
  desktop_gnustep_order_front(second);
  settle();
  EXPECT_EQ(
      own_windows(ON_SCREEN_ONLY),
      (std::vector<Listed>{
          {pid, second, 0}, {pid, palette, 0}, {pid, floating, FLOATING_LEVEL}, {pid, main, 0}}));
}

TEST_F(GnustepActivationTest, PassesOverPaletteAndFloatingPanelToTheMainWindow) {
  long const second = document("second document");
  long const main = document("main document");
  open("floating panel", FLOATING_LEVEL, DESKTOP_GNUSTEP_PANEL | DESKTOP_GNUSTEP_TOOLBAR);
  open("palette", 0, DESKTOP_GNUSTEP_PANEL);
  desktop_gnustep_make_key(second);
  ASSERT_EQ(stable_key_window(), second);

  EXPECT_TRUE(activate());
  EXPECT_EQ(desktop_gnustep_key_window_number(), main);
  // Made key only: nothing was ordered front.
  EXPECT_EQ(own_windows(ON_SCREEN_ONLY).at(2).number, main);
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

TEST_F(GnustepActivationTest, WindowsOfOtherProcessesNeverQualify) {
  long const palette = open("palette", 0, DESKTOP_GNUSTEP_PANEL);
  desktop_gnustep_make_key(palette);
  // Another application's document window in front, at the normal level, with the number
  // its window server gave it: the application knows no window by that number.
  ASSERT_EQ(desktop_gnustep_add_foreign_window(
                getpid() + 1, 90001, 0, DESKTOP_GNUSTEP_ON_SCREEN | DESKTOP_GNUSTEP_IN_FRONT),
            1);
  ASSERT_EQ(desktop_gnustep_add_foreign_window(getpid() + 2, 90002, 0, DESKTOP_GNUSTEP_ON_SCREEN),
            1);
  settle();
  std::vector<Listed> const listed = window_list(ON_SCREEN_ONLY);
  ASSERT_EQ(listed.size(), 3u);
  EXPECT_EQ(listed.front().number, 90001);
  EXPECT_EQ(listed.back().number, 90002);
  EXPECT_FALSE(activate());
  EXPECT_EQ(desktop_gnustep_key_window_number(), palette);

  long const main = document("main document");
  EXPECT_TRUE(activate());
  EXPECT_EQ(desktop_gnustep_key_window_number(), main);
}

TEST_F(GnustepActivationTest, ForeignWindowsCannotTakeAnOwnNumberOrPid) {
  long const main = document("main document");
  EXPECT_EQ(desktop_gnustep_add_foreign_window(getpid() + 1, static_cast<unsigned>(main), 0,
                                               DESKTOP_GNUSTEP_ON_SCREEN),
            0);
  EXPECT_EQ(desktop_gnustep_add_foreign_window(getpid(), 90003, 0, DESKTOP_GNUSTEP_ON_SCREEN), 0);
  EXPECT_EQ(desktop_gnustep_add_foreign_window(getpid() + 1, kCGNullWindowID, 0,
                                               DESKTOP_GNUSTEP_ON_SCREEN),
            0);
  EXPECT_EQ(desktop_gnustep_add_foreign_window(getpid() + 1, 90003, 0, DESKTOP_GNUSTEP_ON_SCREEN),
            1);
  EXPECT_EQ(desktop_gnustep_add_foreign_window(getpid() + 3, 90003, 0, DESKTOP_GNUSTEP_ON_SCREEN),
            0);
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
    long const palette = open("palette", 0, DESKTOP_GNUSTEP_PANEL);
    desktop_gnustep_make_key(palette);
    stable_key_window();
    const std::pair<long, Away> windows[] = {
        {main, c.main}, {second, c.second}, {palette, c.palette}};
    for (const auto& w : windows) {
      if (w.second == Away::ORDERED_OUT)
        desktop_gnustep_order_out(w.first);
      else if (w.second == Away::MINIATURIZED)
        desktop_gnustep_miniaturize(w.first);
    }
    long const key_before = stable_key_window();
    for (const Listed& listed : own_windows(ON_SCREEN_ONLY))
      for (const auto& w : windows)
        if (w.second != Away::NOT) {
          EXPECT_NE(listed.number, w.first);
        }
    EXPECT_FALSE(activate());
    EXPECT_EQ(desktop_gnustep_key_window_number(), key_before);
    if (c.palette == Away::NOT) {
      EXPECT_EQ(key_before, palette);
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
  long const pid = getpid();
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
    SCOPED_TRACE(testing::Message() << "option " << c.option);
    // Other windows of the application (closed ones it still holds, its own hidden
    // windows) are real windows too; only the ones opened here are compared.
    std::vector<long> numbers;
    for (const Listed& w : own_windows(c.option)) {
      EXPECT_EQ(w.pid, pid);
      if (w.number == hidden || w.number == desktop || w.number == shown)
        numbers.push_back(w.number);
    }
    EXPECT_EQ(numbers, c.numbers);
  }
}

// The count the other tests rely on sees every object of a list while it lives: the array,
// and per window a dictionary and its three numbers.
TEST_F(GnustepActivationTest, ListObjectsAreCountedWhileAliveAndFreedByOneRelease) {
  document("main document");
  open("palette", 0, DESKTOP_GNUSTEP_PANEL);
  ASSERT_EQ(desktop_gnustep_add_foreign_window(getpid() + 1, 90004, 0, DESKTOP_GNUSTEP_ON_SCREEN),
            1);
  settle();
  long const before = desktop_gnustep_live_cf_objects();
  CFArrayRef list = CGWindowListCopyWindowInfo(ON_SCREEN_ONLY, kCGNullWindowID);
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(CFArrayGetCount(list), 3);
  EXPECT_EQ(desktop_gnustep_live_cf_objects(), before + 1 + 3 * 4);
  // The seam answers from the real objects: the listed number finds the AppKit window.
  void* window =
      ns_app_window_with_window_number(entry(CFArrayGetValueAtIndex(list, 1), kCGWindowNumber));
  EXPECT_NE(window, nullptr);
  EXPECT_NE(ns_window_toolbar(window), nullptr);
  EXPECT_EQ(ns_window_level(window), 0);
  EXPECT_EQ(ns_object_for_keyed_subscript(CFArrayGetValueAtIndex(list, 1), kCGWindowName), nullptr);
  CFRelease(list);
  EXPECT_EQ(desktop_gnustep_live_cf_objects(), before);
}

}  // namespace
