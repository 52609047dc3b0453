// Making the host's main document window key, against scripted desktops. The function needs
// no running interpreter: it only answers Qtrue or Qfalse.

#include <random>
#include <vector>

#include "desktop_fixture.h"
#include "sketchup_window.h"

namespace {

class WindowActivationTest : public DesktopTest {
 protected:
  // Activates, and checks what must hold after any call: the copied list was released and
  // at most one window was touched.
  static bool activate() {
    long const live = desktop_live_cf_objects();
    VALUE const answer = Orvex::Sketchup::rbf_activate_main_window(Qnil);
    EXPECT_TRUE(answer == Qtrue || answer == Qfalse);
    EXPECT_EQ(desktop_live_cf_objects(), live) << "the window list was not released";
    EXPECT_EQ(desktop_call_count(DESKTOP_CALL_MAKE_KEY_WINDOW), answer == Qtrue ? 1 : 0);
    return answer == Qtrue;
  }
};

// Random desktops against the rule written out independently: the first window in
// front-to-back order that is this process's, on screen, not a desktop element, known to
// the application, with a toolbar, at level 0. Without a window list nothing qualifies.
TEST_F(WindowActivationTest, RandomDesktopsMakeTheFirstQualifyingWindowKey) {
  std::mt19937 random(20240611);
  const long levels[] = {-1, 0, 0, 0, 3, 24};
  int activated = 0;
  for (int round = 0; round < 300; ++round) {
    desktop_reset();
    unsigned int expected = 0;
    int const windows = static_cast<int>(random() % 7);
    for (int w = 0; w < windows; ++w) {
      unsigned int const number = 100u - static_cast<unsigned int>(w);
      bool const own = random() % 3 != 0;
      int const flags = static_cast<int>(random() % 16);
      long const level = levels[random() % 6];
      ASSERT_EQ(desktop_add_window(own ? getpid() : getpid() + 1, number, level, flags), 1);
      bool const qualifies =
          own && (flags & DESKTOP_WINDOW_ON_SCREEN) && !(flags & DESKTOP_WINDOW_DESKTOP_ELEMENT) &&
          (flags & DESKTOP_WINDOW_KNOWN_TO_APP) && (flags & DESKTOP_WINDOW_TOOLBAR) && level == 0;
      if (qualifies && expected == 0) expected = number;
    }
    SCOPED_TRACE(round);
    EXPECT_EQ(activate(), expected != 0);
    EXPECT_EQ(desktop_key_window_number(), expected);
    activated += expected != 0;
  }
  // The draw must exercise both answers, or the property says little.
  EXPECT_GT(activated, 20);
  EXPECT_LT(activated, 280);
  desktop_reset();
  add_own(1, 0, MAIN_WINDOW);
  desktop_set_no_window_list(1);
  EXPECT_FALSE(activate());
  EXPECT_EQ(desktop_call_count(DESKTOP_CALL_COPY_WINDOW_LIST), 1);
}

}  // namespace
