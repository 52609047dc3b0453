#include "sketchup_window.h"

#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <objc_seam.h>
#include <unistd.h>

namespace Orvex {
namespace Sketchup {

namespace {

// NSNormalWindowLevel: palettes and floating panels sit above it.
constexpr long NORMAL_WINDOW_LEVEL = 0;

long integer_for_key(const void* window_info, CFStringRef key) {
  return ns_integer_value(ns_object_for_keyed_subscript(window_info, key));
}

}  // namespace

VALUE rbf_activate_main_window(VALUE /*self*/) {
  long const pid = getpid();
  CFArrayRef windows = CGWindowListCopyWindowInfo(
      kCGWindowListOptionOnScreenOnly | kCGWindowListExcludeDesktopElements, kCGNullWindowID);
  // Without access to the window server there is no list at all: nothing can qualify.
  if (windows == nullptr) return Qfalse;

  // Nothing below can raise, so the release at the end is reached on every path.
  bool activated = false;
  CFIndex const count = CFArrayGetCount(windows);
  for (CFIndex i = 0; i < count; ++i) {
    const void* info = CFArrayGetValueAtIndex(windows, i);
    if (integer_for_key(info, kCGWindowOwnerPID) != pid) continue;
    // Null when the application has no window object for the number: it has no toolbar.
    void* window = ns_app_window_with_window_number(integer_for_key(info, kCGWindowNumber));
    if (ns_window_toolbar(window) == nullptr) continue;
    if (ns_window_level(window) != NORMAL_WINDOW_LEVEL) continue;
    ns_window_make_key_window(window);
    activated = true;
    break;
  }
  CFRelease(windows);
  return activated ? Qtrue : Qfalse;
}

void init_ruby(VALUE module) {
  rb_define_module_function(module, "focus_on_sketchup_window",
                            QM_METHOD_FUNC(rbf_activate_main_window), 0);
}

}  // namespace Sketchup
}  // namespace Orvex
