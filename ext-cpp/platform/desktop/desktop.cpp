// The desktop simulation: window list, AppKit window objects, cursor, keyboard, and the CF
// objects that carry the window list and mouse events.

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <desktop_control.h>
#include <objc_seam.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

static_assert(sizeof(KeyMap) == 16, "the key map is 128 bits");

// The platform crashes on a CF object used after its last release; we stop at once with a
// report instead, so a test sees the fault where it happens.
#define DESKTOP_ASSERT(expression) \
  ((expression) ? static_cast<void>(0) : desktop::fail(#expression, __func__, __FILE__, __LINE__))

// CF strings are immortal constants here: only the window-list keys exist.
struct __CFString {
  const char* text;
};

namespace desktop {

[[noreturn]] void fail(const char* expression, const char* function, const char* file, int line) {
  std::fprintf(stderr, "Assertion failed: %s, function %s, file %s, line %d.\n", expression,
               function, file, line);
  std::fflush(stderr);
  std::abort();
}

// Every CF object handed out. Nothing here retains, so each has exactly one reference, its
// creator's, and the first release frees it. An object owns the objects in `retained` (the
// elements of an array, the values of a dictionary) and releases them when it is freed.
struct CFObject {
  enum class Kind { ARRAY, DICTIONARY, NUMBER, EVENT };

  explicit CFObject(Kind object_kind) : kind(object_kind) {}
  virtual ~CFObject() = default;

  Kind kind;
  std::vector<CFTypeRef> retained;
};

}  // namespace desktop

struct __CFArray : desktop::CFObject {
  __CFArray() : CFObject(Kind::ARRAY) {}
};

struct __CFDictionary : desktop::CFObject {
  __CFDictionary() : CFObject(Kind::DICTIONARY) {}
  std::vector<CFStringRef> keys;  // keys[i] maps to retained[i]
};

struct __CFNumber : desktop::CFObject {
  explicit __CFNumber(long number) : CFObject(Kind::NUMBER), value(number) {}
  long value;
};

struct __CGEvent : desktop::CFObject {
  explicit __CGEvent(CGPoint where) : CFObject(Kind::EVENT), location(where) {}
  CGPoint location;
};

namespace desktop {
namespace {

constexpr int KEY_CODES = 128;

struct Window {
  int owner_pid;
  unsigned int number;
  long level;
  int flags;
  // Its address stands for the toolbar object of a window that has one.
  char toolbar;
};

// Everything desktop_reset puts back; live CF objects are not part of it.
struct Scene {
  std::vector<std::unique_ptr<Window>> windows;  // front to back
  unsigned int key_window = 0;
  int cursor_hide_count = 0;
  CGPoint cursor{0.0, 0.0};
  std::array<unsigned char, KEY_CODES / 8> keys{};
  std::array<long, DESKTOP_CALL_KINDS> calls{};
  bool no_window_list = false;
  bool warp_fails = false;
};

struct State : Scene {
  std::mutex mutex;
  // Keyed by the pointer handed out, which may differ from the CFObject base's address.
  std::unordered_map<const void*, std::unique_ptr<CFObject>> live;
};

// Built on first use and never destroyed: no code runs when the library is loaded, and
// objects still alive at exit stay valid for whoever releases them last.
State& state() {
  static State* const instance = new State();
  return *instance;
}

using Lock = std::lock_guard<std::mutex>;

// The functions below expect the caller to hold the state's lock.

template <class T>
T* adopt(State& s, std::unique_ptr<T> object) {
  T* handle = object.get();
  s.live.emplace(handle, std::move(object));
  return handle;
}

CFObject& live_object(State& s, const void* handle, CFObject::Kind kind) {
  auto found = s.live.find(handle);
  DESKTOP_ASSERT(found != s.live.end() && "not a live CF object");
  DESKTOP_ASSERT(found->second->kind == kind && "CF object of another type");
  return *found->second;
}

void release(State& s, CFTypeRef handle) {
  DESKTOP_ASSERT(handle != nullptr);
  auto found = s.live.find(handle);
  DESKTOP_ASSERT(found != s.live.end() && "released a CF object that is not alive");
  std::unique_ptr<CFObject> dead = std::move(found->second);
  s.live.erase(found);
  for (CFTypeRef child : dead->retained) release(s, child);
}

Window* window_object(State& s, const void* handle) {
  for (auto& window : s.windows)
    if (window.get() == handle) return window.get();
  DESKTOP_ASSERT(!"message to a window the application no longer has");
  return nullptr;
}

Window* window_numbered(State& s, unsigned int number) {
  for (auto& window : s.windows)
    if (window->number == number) return window.get();
  return nullptr;
}

CFDictionaryRef window_info(State& s, const Window& window) {
  auto info = std::make_unique<__CFDictionary>();
  const std::pair<CFStringRef, long> entries[] = {
      {kCGWindowOwnerPID, window.owner_pid},
      {kCGWindowNumber, static_cast<long>(window.number)},
      {kCGWindowLayer, window.level}};
  for (const auto& entry : entries) {
    info->keys.push_back(entry.first);
    info->retained.push_back(adopt(s, std::make_unique<__CFNumber>(entry.second)));
  }
  return adopt(s, std::move(info));
}

bool listed(const Window& window, CGWindowListOption option) {
  if ((option & kCGWindowListOptionOnScreenOnly) && !(window.flags & DESKTOP_WINDOW_ON_SCREEN))
    return false;
  if ((option & kCGWindowListExcludeDesktopElements) &&
      (window.flags & DESKTOP_WINDOW_DESKTOP_ELEMENT))
    return false;
  return true;
}

}  // namespace
}  // namespace desktop

using desktop::CFObject;
using desktop::Lock;
using desktop::state;

namespace {
const __CFString owner_pid_key{"kCGWindowOwnerPID"};
const __CFString window_number_key{"kCGWindowNumber"};
const __CFString window_layer_key{"kCGWindowLayer"};
const __CFString window_name_key{"kCGWindowName"};
}  // namespace

extern "C" {

const CFStringRef kCGWindowOwnerPID = &owner_pid_key;
const CFStringRef kCGWindowNumber = &window_number_key;
const CFStringRef kCGWindowLayer = &window_layer_key;
const CFStringRef kCGWindowName = &window_name_key;

// CoreFoundation

CFIndex CFArrayGetCount(CFArrayRef array) {
  auto& s = state();
  Lock lock(s.mutex);
  return static_cast<CFIndex>(
      desktop::live_object(s, array, CFObject::Kind::ARRAY).retained.size());
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  auto& s = state();
  Lock lock(s.mutex);
  auto& items = desktop::live_object(s, array, CFObject::Kind::ARRAY).retained;
  DESKTOP_ASSERT(index >= 0 && static_cast<size_t>(index) < items.size());
  return items[static_cast<size_t>(index)];
}

void CFRelease(CFTypeRef object) {
  auto& s = state();
  Lock lock(s.mutex);
  desktop::release(s, object);
}

// CoreGraphics: window list

CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow) {
  DESKTOP_ASSERT((option & ~CGWindowListOption{kCGWindowListOptionOnScreenOnly |
                                               kCGWindowListExcludeDesktopElements}) == 0);
  DESKTOP_ASSERT(relativeToWindow == kCGNullWindowID);
  auto& s = state();
  Lock lock(s.mutex);
  ++s.calls[DESKTOP_CALL_COPY_WINDOW_LIST];
  if (s.no_window_list) return nullptr;
  auto list = std::make_unique<__CFArray>();
  for (const auto& window : s.windows)
    if (desktop::listed(*window, option))
      list->retained.push_back(desktop::window_info(s, *window));
  return desktop::adopt(s, std::move(list));
}

// CoreGraphics: cursor and events

boolean_t CGCursorIsVisible(void) {
  auto& s = state();
  Lock lock(s.mutex);
  ++s.calls[DESKTOP_CALL_CURSOR_IS_VISIBLE];
  return s.cursor_hide_count == 0;
}

CGError CGDisplayShowCursor(CGDirectDisplayID /*display*/) {
  auto& s = state();
  Lock lock(s.mutex);
  ++s.calls[DESKTOP_CALL_SHOW_CURSOR];
  if (s.cursor_hide_count > 0) --s.cursor_hide_count;
  return kCGErrorSuccess;
}

CGError CGDisplayHideCursor(CGDirectDisplayID /*display*/) {
  auto& s = state();
  Lock lock(s.mutex);
  ++s.calls[DESKTOP_CALL_HIDE_CURSOR];
  ++s.cursor_hide_count;
  return kCGErrorSuccess;
}

CGEventRef CGEventCreate(CGEventSourceRef /*source*/) {
  auto& s = state();
  Lock lock(s.mutex);
  return desktop::adopt(s, std::make_unique<__CGEvent>(s.cursor));
}

CGPoint CGEventGetLocation(CGEventRef event) {
  auto& s = state();
  Lock lock(s.mutex);
  return static_cast<__CGEvent&>(desktop::live_object(s, event, CFObject::Kind::EVENT)).location;
}

CGError CGWarpMouseCursorPosition(CGPoint newCursorPosition) {
  auto& s = state();
  Lock lock(s.mutex);
  ++s.calls[DESKTOP_CALL_WARP_CURSOR];
  if (s.warp_fails) return kCGErrorFailure;
  s.cursor = newCursorPosition;
  return kCGErrorSuccess;
}

// Carbon

void GetKeys(KeyMap theKeys) {
  auto& s = state();
  Lock lock(s.mutex);
  ++s.calls[DESKTOP_CALL_GET_KEYS];
  std::memcpy(theKeys, s.keys.data(), s.keys.size());
}

// AppKit and Foundation messages

void* ns_app_window_with_window_number(long n) {
  auto& s = state();
  Lock lock(s.mutex);
  if (n <= 0 || n > static_cast<long>(UINT32_MAX)) return nullptr;
  desktop::Window* window = desktop::window_numbered(s, static_cast<unsigned int>(n));
  // The application has window objects only for its own windows, and not for all of them.
  if (window == nullptr || window->owner_pid != getpid() ||
      !(window->flags & DESKTOP_WINDOW_KNOWN_TO_APP))
    return nullptr;
  return window;
}

void* ns_window_toolbar(void* window) {
  if (window == nullptr) return nullptr;
  auto& s = state();
  Lock lock(s.mutex);
  desktop::Window* found = desktop::window_object(s, window);
  return (found->flags & DESKTOP_WINDOW_TOOLBAR) ? &found->toolbar : nullptr;
}

long ns_window_level(void* window) {
  if (window == nullptr) return 0;
  auto& s = state();
  Lock lock(s.mutex);
  return desktop::window_object(s, window)->level;
}

void ns_window_make_key_window(void* window) {
  if (window == nullptr) return;
  auto& s = state();
  Lock lock(s.mutex);
  s.key_window = desktop::window_object(s, window)->number;
  ++s.calls[DESKTOP_CALL_MAKE_KEY_WINDOW];
}

const void* ns_object_for_keyed_subscript(const void* dictionary, const void* key) {
  if (dictionary == nullptr || key == nullptr) return nullptr;
  auto& s = state();
  Lock lock(s.mutex);
  auto& info =
      static_cast<__CFDictionary&>(desktop::live_object(s, dictionary, CFObject::Kind::DICTIONARY));
  // Keys compare by content, as CF strings do, not by address.
  const char* wanted = static_cast<const __CFString*>(key)->text;
  for (size_t i = 0; i < info.keys.size(); ++i)
    if (std::strcmp(info.keys[i]->text, wanted) == 0) return info.retained[i];
  return nullptr;
}

long ns_integer_value(const void* number) {
  if (number == nullptr) return 0;
  auto& s = state();
  Lock lock(s.mutex);
  return static_cast<__CFNumber&>(desktop::live_object(s, number, CFObject::Kind::NUMBER)).value;
}

// Control

void desktop_reset(void) {
  auto& s = state();
  Lock lock(s.mutex);
  static_cast<desktop::Scene&>(s) = desktop::Scene();
}

int desktop_add_window(int owner_pid, unsigned int window_number, long level, int flags) {
  auto& s = state();
  Lock lock(s.mutex);
  if (window_number == kCGNullWindowID || desktop::window_numbered(s, window_number) != nullptr)
    return 0;
  s.windows.push_back(std::make_unique<desktop::Window>(
      desktop::Window{owner_pid, window_number, level, flags, 0}));
  return 1;
}

int desktop_window_count(void) {
  auto& s = state();
  Lock lock(s.mutex);
  return static_cast<int>(s.windows.size());
}

unsigned int desktop_key_window_number(void) {
  auto& s = state();
  Lock lock(s.mutex);
  return s.key_window;
}

int desktop_set_key_down(int key_code, int down) {
  if (key_code < 0 || key_code >= desktop::KEY_CODES) return 0;
  auto& s = state();
  Lock lock(s.mutex);
  auto const bit = static_cast<unsigned char>(1u << (key_code % 8));
  unsigned char& byte = s.keys[static_cast<size_t>(key_code / 8)];
  byte = down ? static_cast<unsigned char>(byte | bit) : static_cast<unsigned char>(byte & ~bit);
  return 1;
}

void desktop_set_key_map(const unsigned char* bytes) {
  auto& s = state();
  Lock lock(s.mutex);
  std::memcpy(s.keys.data(), bytes, s.keys.size());
}

void desktop_set_cursor_location(double x, double y) {
  auto& s = state();
  Lock lock(s.mutex);
  s.cursor = CGPoint{x, y};
}

double desktop_cursor_x(void) {
  auto& s = state();
  Lock lock(s.mutex);
  return s.cursor.x;
}

double desktop_cursor_y(void) {
  auto& s = state();
  Lock lock(s.mutex);
  return s.cursor.y;
}

int desktop_cursor_hide_count(void) {
  auto& s = state();
  Lock lock(s.mutex);
  return s.cursor_hide_count;
}

void desktop_set_cursor_hide_count(int count) {
  auto& s = state();
  Lock lock(s.mutex);
  s.cursor_hide_count = std::max(count, 0);
}

long desktop_call_count(int call) {
  if (call < 0 || call >= DESKTOP_CALL_KINDS) return -1;
  auto& s = state();
  Lock lock(s.mutex);
  return s.calls[static_cast<size_t>(call)];
}

long desktop_live_cf_objects(void) {
  auto& s = state();
  Lock lock(s.mutex);
  return static_cast<long>(s.live.size());
}

void desktop_set_no_window_list(int on) {
  auto& s = state();
  Lock lock(s.mutex);
  s.no_window_list = on != 0;
}

void desktop_set_warp_fails(int on) {
  auto& s = state();
  Lock lock(s.mutex);
  s.warp_fails = on != 0;
}

}  // extern "C"
