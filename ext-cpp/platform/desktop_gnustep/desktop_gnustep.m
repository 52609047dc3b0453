/* The desktop over GNUstep: the window list, the CF containers and the cursor event are
   Foundation objects, as toll-free bridging makes them on the host's platform, so the CF
   functions here are thin functions over NSArray, NSDictionary and NSNumber. The windows
   listed are this process's real AppKit windows, in the X server's stacking order, plus
   windows of other processes that a test adds: GNUstep has no way to see the windows of
   other applications. The cursor is the X server's pointer. The key map stays simulated. */

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <desktop_gnustep_control.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "desktop_x11.h"

/* The platform crashes on a misuse of these calls (a null release, an option it does not
   have); we stop at once with a report, so a test sees the fault where it happens. */
#define DESKTOP_ASSERT(expression) \
  ((expression) ? (void)0 : desktop_fail(#expression, __func__, __FILE__, __LINE__))

static void desktop_fail(const char* expression, const char* function, const char* file, int line)
    __attribute__((noreturn));
static void desktop_fail(const char* expression, const char* function, const char* file, int line) {
  fprintf(stderr, "Assertion failed: %s, function %s, file %s, line %d.\n", expression, function,
          file, line);
  fflush(stderr);
  abort();
}

/* Constant strings are static data: nothing runs to make them. */
const CFStringRef kCGWindowOwnerPID = (CFStringRef) @"kCGWindowOwnerPID";
const CFStringRef kCGWindowNumber = (CFStringRef) @"kCGWindowNumber";
const CFStringRef kCGWindowLayer = (CFStringRef) @"kCGWindowLayer";
const CFStringRef kCGWindowName = (CFStringRef) @"kCGWindowName";

/* ---- Counted Foundation objects ------------------------------------------------------ */

/* Every object a window list or a cursor event is made of counts itself from its
   initialisation to its deallocation, so tests can prove each copy is released whole.
   They are ordinary subclasses of the Foundation classes: whatever Foundation offers on
   an NSArray, an NSDictionary or an NSNumber works on them. */
static long live_objects = 0;

static void counted_born(void) { __atomic_add_fetch(&live_objects, 1, __ATOMIC_SEQ_CST); }
static void counted_died(void) { __atomic_sub_fetch(&live_objects, 1, __ATOMIC_SEQ_CST); }

@interface QMWindowList : NSArray {
  id* items;
  NSUInteger item_count;
}
@end

@implementation QMWindowList
- (id)initWithObjects:(const id[])objects count:(NSUInteger)count {
  items = (id*)calloc(count > 0 ? count : 1, sizeof(id));
  if (items == NULL) {
    [self release];
    return nil;
  }
  for (NSUInteger i = 0; i < count; ++i) items[i] = [objects[i] retain];
  item_count = count;
  counted_born();
  return self;
}
- (NSUInteger)count {
  return item_count;
}
- (id)objectAtIndex:(NSUInteger)index {
  if (index >= item_count)
    [NSException raise:NSRangeException
                format:@"index %lu of %lu", (unsigned long)index, (unsigned long)item_count];
  return items[index];
}
- (void)dealloc {
  if (items != NULL) {
    for (NSUInteger i = 0; i < item_count; ++i) [items[i] release];
    free(items);
    counted_died();
  }
  [super dealloc];
}
@end

/* One window's entries: a handful of keys, so a linear search by isEqual: is the lookup. */
@interface QMWindowInfo : NSDictionary {
  id keys[4];
  id values[4];
  NSUInteger entry_count;
}
@end

@implementation QMWindowInfo
- (id)initWithObjects:(const id[])objects forKeys:(const id[])keyObjects count:(NSUInteger)count {
  DESKTOP_ASSERT(count <= 4);
  for (NSUInteger i = 0; i < count; ++i) {
    keys[i] = [keyObjects[i] copy];
    values[i] = [objects[i] retain];
  }
  entry_count = count;
  counted_born();
  return self;
}
- (NSUInteger)count {
  return entry_count;
}
- (id)objectForKey:(id)key {
  for (NSUInteger i = 0; i < entry_count; ++i)
    if ([keys[i] isEqual:key]) return values[i];
  return nil;
}
- (NSEnumerator*)keyEnumerator {
  return [[NSArray arrayWithObjects:keys count:entry_count] objectEnumerator];
}
- (void)dealloc {
  for (NSUInteger i = 0; i < entry_count; ++i) {
    [keys[i] release];
    [values[i] release];
  }
  counted_died();
  [super dealloc];
}
@end

/* A number of the window list. GNUstep shares one instance of each small NSNumber between
   all its users, which would hide a leak from the count; this one is never shared. */
@interface QMWindowNumber : NSNumber {
  long value;
}
@end

@implementation QMWindowNumber
- (id)initWithLong:(long)number {
  value = number;
  counted_born();
  return self;
}
- (const char*)objCType {
  return @encode(long);
}
- (void)getValue:(void*)buffer {
  memcpy(buffer, &value, sizeof value);
}
- (long)longValue {
  return value;
}
- (NSInteger)integerValue {
  return (NSInteger)value;
}
- (long long)longLongValue {
  return value;
}
- (int)intValue {
  return (int)value;
}
- (double)doubleValue {
  return (double)value;
}
- (void)dealloc {
  counted_died();
  [super dealloc];
}
@end

/* A mouse event: only its location is read. */
@interface QMCursorEvent : NSObject {
 @public
  CGPoint location;
}
@end

@implementation QMCursorEvent
- (id)initAt:(CGPoint)where {
  self = [super init];
  if (self != nil) {
    location = where;
    counted_born();
  }
  return self;
}
- (void)dealloc {
  counted_died();
  [super dealloc];
}
@end

/* ---- State: windows of other processes, the key map, call counts ---------------------- */

typedef struct ForeignWindow {
  int owner_pid;
  unsigned int number;
  long level;
  int flags;
} ForeignWindow;

enum { KEY_CODES = 128, MAX_FOREIGN_WINDOWS = 64 };

static pthread_mutex_t state_lock = PTHREAD_MUTEX_INITIALIZER;
static ForeignWindow foreign_windows[MAX_FOREIGN_WINDOWS];
static int foreign_count = 0;
static unsigned char key_map[KEY_CODES / 8];
static long calls[DESKTOP_GNUSTEP_CALL_KINDS];
/* Hides made through CGDisplayHideCursor and not yet shown again: the server keeps the same
   count for our connection, and the cursor is visible exactly when it is 0. */
static int cursor_hide_count = 0;

static void count_call(int call) {
  pthread_mutex_lock(&state_lock);
  ++calls[call];
  pthread_mutex_unlock(&state_lock);
}

/* ---- CoreFoundation ------------------------------------------------------------------- */

CFIndex CFArrayGetCount(CFArrayRef array) {
  DESKTOP_ASSERT(array != NULL);
  return (CFIndex)[(NSArray*)array count];
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  DESKTOP_ASSERT(array != NULL);
  DESKTOP_ASSERT(index >= 0 && (NSUInteger)index < [(NSArray*)array count]);
  return (const void*)[(NSArray*)array objectAtIndex:(NSUInteger)index];
}

void CFRelease(CFTypeRef object) {
  DESKTOP_ASSERT(object != NULL);
  [(id)object release];
}

/* ---- CoreGraphics: the window list ---------------------------------------------------- */

static id window_info(int owner_pid, long number, long level) {
  id keys[3] = {(id)kCGWindowOwnerPID, (id)kCGWindowNumber, (id)kCGWindowLayer};
  id values[3] = {[[QMWindowNumber alloc] initWithLong:owner_pid],
                  [[QMWindowNumber alloc] initWithLong:number],
                  [[QMWindowNumber alloc] initWithLong:level]};
  id info = [[QMWindowInfo alloc] initWithObjects:values forKeys:keys count:3];
  for (int i = 0; i < 3; ++i) [values[i] release];
  return info;
}

static int listed(int on_screen, int desktop_element, CGWindowListOption option) {
  if ((option & kCGWindowListOptionOnScreenOnly) && !on_screen) return 0;
  if ((option & kCGWindowListExcludeDesktopElements) && desktop_element) return 0;
  return 1;
}

/* Appends the foreign windows in front of (or behind) this process's windows. Expects
   state_lock held. */
static void add_foreign(id* items, NSUInteger* count, int in_front, CGWindowListOption option) {
  for (int i = 0; i < foreign_count; ++i) {
    const ForeignWindow* w = &foreign_windows[i];
    if (((w->flags & DESKTOP_GNUSTEP_IN_FRONT) != 0) != in_front) continue;
    if (!listed(w->flags & DESKTOP_GNUSTEP_ON_SCREEN, w->flags & DESKTOP_GNUSTEP_DESKTOP_ELEMENT,
                option))
      continue;
    items[(*count)++] = window_info(w->owner_pid, (long)w->number, w->level);
  }
}

CFArrayRef CGWindowListCopyWindowInfo(CGWindowListOption option, CGWindowID relativeToWindow) {
  /* Only the options the system uses are honoured; anything else stops rather than answer
     with a list the platform would not give. */
  DESKTOP_ASSERT((option & ~(CGWindowListOption)(kCGWindowListOptionOnScreenOnly |
                                                 kCGWindowListExcludeDesktopElements)) == 0);
  DESKTOP_ASSERT(relativeToWindow == kCGNullWindowID);
  count_call(DESKTOP_GNUSTEP_CALL_COPY_WINDOW_LIST);

  NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
  NSArray* windows = NSApp != nil ? [NSApp windows] : nil;
  NSUInteger const app_windows = [windows count];
  unsigned long* devices = calloc(app_windows + 1, sizeof(unsigned long));
  NSWindow** owners = calloc(app_windows + 1, sizeof(NSWindow*));
  DESKTOP_ASSERT(devices != NULL && owners != NULL);
  int own = 0;
  GSDisplayServer* server = GSCurrentServer();
  for (NSUInteger i = 0; i < app_windows; ++i) {
    NSWindow* window = [windows objectAtIndex:i];
    NSInteger const number = [window windowNumber];
    if (number <= 0) continue; /* not made on the server yet */
    void* device = [server windowDevice:(int)number];
    if (device == NULL) continue;
    devices[own] = (unsigned long)device;
    owners[own] = window;
    ++own;
  }
  int const on_screen = own > 0 ? x11_order_front_to_back([server serverDevice], devices, own) : 0;
  if (on_screen < 0) {
    /* The server could not be asked: as without access to the window server. */
    free(devices);
    free(owners);
    [pool release];
    return NULL;
  }

  pthread_mutex_lock(&state_lock);
  id* items = calloc((size_t)(own + foreign_count + 1), sizeof(id));
  DESKTOP_ASSERT(items != NULL);
  NSUInteger count = 0;
  add_foreign(items, &count, 1, option);
  for (int i = 0; i < own; ++i) {
    NSWindow* window = nil;
    for (int k = 0; k < own && window == nil; ++k)
      if ((unsigned long)[server windowDevice:(int)[owners[k] windowNumber]] == devices[i])
        window = owners[k];
    long const level = (long)[window level];
    /* GNUstep's desktop level is where the desktop picture and icons would live. */
    if (!listed(i < on_screen, level <= NSDesktopWindowLevel, option)) continue;
    items[count++] = window_info((int)getpid(), (long)[window windowNumber], level);
  }
  add_foreign(items, &count, 0, option);
  pthread_mutex_unlock(&state_lock);

  QMWindowList* list = [[QMWindowList alloc] initWithObjects:items count:count];
  for (NSUInteger i = 0; i < count; ++i) [items[i] release];
  free(items);
  free(devices);
  free(owners);
  [pool release];
  return (CFArrayRef)list;
}

/* ---- CoreGraphics: the cursor --------------------------------------------------------- */

boolean_t CGCursorIsVisible(void) {
  pthread_mutex_lock(&state_lock);
  int const hidden = cursor_hide_count;
  pthread_mutex_unlock(&state_lock);
  return hidden == 0;
}

CGError CGDisplayHideCursor(CGDirectDisplayID display) {
  (void)display;
  count_call(DESKTOP_GNUSTEP_CALL_HIDE_CURSOR);
  if (!x11_hide_cursor()) return kCGErrorFailure;
  pthread_mutex_lock(&state_lock);
  ++cursor_hide_count;
  pthread_mutex_unlock(&state_lock);
  return kCGErrorSuccess;
}

CGError CGDisplayShowCursor(CGDirectDisplayID display) {
  (void)display;
  count_call(DESKTOP_GNUSTEP_CALL_SHOW_CURSOR);
  pthread_mutex_lock(&state_lock);
  /* A show without a hide to undo is ignored, as on the platform; the X server would
     answer it with an error. */
  int const undo = cursor_hide_count > 0;
  pthread_mutex_unlock(&state_lock);
  if (!undo) return kCGErrorSuccess;
  if (!x11_show_cursor()) return kCGErrorFailure;
  pthread_mutex_lock(&state_lock);
  --cursor_hide_count;
  pthread_mutex_unlock(&state_lock);
  return kCGErrorSuccess;
}

CGEventRef CGEventCreate(CGEventSourceRef source) {
  (void)source;
  int x = 0, y = 0;
  /* Without a display the event carries the origin, as a location nobody can read. */
  if (!x11_query_pointer(&x, &y)) x = y = 0;
  CGPoint const where = {(double)x, (double)y};
  return (CGEventRef)[[QMCursorEvent alloc] initAt:where];
}

CGPoint CGEventGetLocation(CGEventRef event) {
  DESKTOP_ASSERT(event != NULL);
  return ((QMCursorEvent*)(id)event)->location;
}

/* X takes whole pixels in 16-bit signed coordinates: fractions are cut toward zero like the
   platform's integer cursor positions, and a coordinate past the protocol's range is pinned
   to it before the server pins the pointer to the screen. */
static int x_coordinate(double value) {
  if (value != value) return 0;
  if (value > 32767.0) return 32767;
  if (value < -32768.0) return -32768;
  return (int)value;
}

CGError CGWarpMouseCursorPosition(CGPoint newCursorPosition) {
  count_call(DESKTOP_GNUSTEP_CALL_WARP_CURSOR);
  return x11_warp_pointer(x_coordinate(newCursorPosition.x), x_coordinate(newCursorPosition.y))
             ? kCGErrorSuccess
             : kCGErrorFailure;
}

/* ---- Carbon --------------------------------------------------------------------------- */

/* The key map stays simulated: the platform's virtual key codes name physical key positions
   of its own keyboard layout, and X key codes are another numbering whose mapping depends
   on the server's keyboard description; reading XQueryKeymap into this map would put the
   wrong keys at every code. Tests set it through desktop_gnustep_set_key_down. */
void GetKeys(KeyMap theKeys) {
  pthread_mutex_lock(&state_lock);
  ++calls[DESKTOP_GNUSTEP_CALL_GET_KEYS];
  memcpy(theKeys, key_map, sizeof key_map);
  pthread_mutex_unlock(&state_lock);
}

/* ---- Control -------------------------------------------------------------------------- */

static NSMutableArray* opened_windows = nil;
/* The pool everything autoreleased between two turns of the run loop goes to, as the
   application's event loop would provide one; each turn drains it. */
static NSAutoreleasePool* turn_pool = nil;

int desktop_gnustep_start(void) {
  if (NSApp != nil) return 1;
  if (x11_cursor_display() == NULL) return 0;
  if (turn_pool == nil) turn_pool = [[NSAutoreleasePool alloc] init];
  /* GNUstep draws its own title bars when no window manager runs (as on Xvfb), and shows
     no application icon window: the list then holds the windows the caller opens. */
  NSDictionary* defaults =
      [NSDictionary dictionaryWithObjectsAndKeys:@"NO", @"GSX11HandlesWindowDecorations", @"YES",
                                                 @"GSSuppressAppIcon", nil];
  [[NSUserDefaults standardUserDefaults] registerDefaults:defaults];
  int started = 0;
  NS_DURING
  [NSApplication sharedApplication];
  [NSApp finishLaunching];
  opened_windows = [[NSMutableArray alloc] init];
  started = 1;
  NS_HANDLER
  fprintf(stderr, "desktop: no application: %s\n", [[localException reason] UTF8String]);
  NS_ENDHANDLER
  return started;
}

static NSWindow* window_numbered(long number) {
  return number > 0 ? [NSApp windowWithWindowNumber:(NSInteger)number] : nil;
}

long desktop_gnustep_open_window(const char* title, double x, double y, double width, double height,
                                 long level, int flags) {
  if (NSApp == nil || title == NULL) return 0;
  Class const kind = (flags & DESKTOP_GNUSTEP_PANEL) ? [NSPanel class] : [NSWindow class];
  NSUInteger const style = NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask |
                           ((flags & DESKTOP_GNUSTEP_PANEL) ? 0 : NSResizableWindowMask);
  NSWindow* window = [[kind alloc] initWithContentRect:NSMakeRect(x, y, width, height)
                                             styleMask:style
                                               backing:NSBackingStoreBuffered
                                                 defer:NO];
  [window setReleasedWhenClosed:NO];
  [window setTitle:[NSString stringWithUTF8String:title]];
  if (flags & DESKTOP_GNUSTEP_PANEL) [(NSPanel*)window setHidesOnDeactivate:NO];
  if (flags & DESKTOP_GNUSTEP_TOOLBAR) {
    /* Toolbars with one identifier share their configuration: one identifier per window. */
    NSString* identifier = [NSString stringWithFormat:@"toolbar-%ld", (long)[window windowNumber]];
    NSToolbar* toolbar = [[NSToolbar alloc] initWithIdentifier:identifier];
    [window setToolbar:toolbar];
    [toolbar release];
  }
  [window setLevel:(NSInteger)level];
  [NSApp activateIgnoringOtherApps:YES]; /* see desktop_gnustep_order_front */
  [window orderFront:nil];
  [opened_windows addObject:window];
  [window release];
  return (long)[window windowNumber];
}

void desktop_gnustep_order_front(long window_number) {
  /* GNUstep keeps a window of an inactive application behind the others: a user bringing
     a window to the front activates its application on the way. */
  [NSApp activateIgnoringOtherApps:YES];
  [window_numbered(window_number) orderFront:nil];
}

void desktop_gnustep_order_out(long window_number) {
  [window_numbered(window_number) orderOut:nil];
}

void desktop_gnustep_miniaturize(long window_number) {
  [window_numbered(window_number) miniaturize:nil];
}

void desktop_gnustep_make_key(long window_number) {
  [window_numbered(window_number) makeKeyWindow];
}

void desktop_gnustep_close_all(void) {
  NSUInteger const count = [opened_windows count];
  for (NSUInteger i = 0; i < count; ++i) [[opened_windows objectAtIndex:i] close];
  [opened_windows removeAllObjects];
}

void desktop_gnustep_turn_run_loop(double seconds) {
  if (NSApp == nil) return;
  NSDate* until = [NSDate dateWithTimeIntervalSinceNow:seconds];
  for (;;) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    NSEvent* event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                        untilDate:until
                                           inMode:NSDefaultRunLoopMode
                                          dequeue:YES];
    if (event != nil) [NSApp sendEvent:event];
    [pool release];
    /* Events that keep coming must not keep the caller past its time. */
    if (event == nil || [until timeIntervalSinceNow] <= 0) break;
  }
  /* `until` belongs to the pool drained here. */
  [turn_pool release];
  turn_pool = [[NSAutoreleasePool alloc] init];
}

long desktop_gnustep_key_window_number(void) {
  return NSApp != nil ? (long)[[NSApp keyWindow] windowNumber] : 0;
}

int desktop_gnustep_add_foreign_window(int owner_pid, unsigned int window_number, long level,
                                       int flags) {
  if (owner_pid == (int)getpid() || window_number == kCGNullWindowID) return 0;
  if (window_numbered((long)window_number) != nil) return 0;
  pthread_mutex_lock(&state_lock);
  int added = foreign_count < MAX_FOREIGN_WINDOWS;
  for (int i = 0; i < foreign_count && added; ++i)
    if (foreign_windows[i].number == window_number) added = 0;
  if (added) {
    ForeignWindow const window = {owner_pid, window_number, level, flags};
    foreign_windows[foreign_count++] = window;
  }
  pthread_mutex_unlock(&state_lock);
  return added;
}

void desktop_gnustep_clear_foreign_windows(void) {
  pthread_mutex_lock(&state_lock);
  foreign_count = 0;
  pthread_mutex_unlock(&state_lock);
}

long desktop_gnustep_live_cf_objects(void) {
  return __atomic_load_n(&live_objects, __ATOMIC_SEQ_CST);
}

long desktop_gnustep_call_count(int call) {
  if (call < 0 || call >= DESKTOP_GNUSTEP_CALL_KINDS) return -1;
  pthread_mutex_lock(&state_lock);
  long const count = calls[call];
  pthread_mutex_unlock(&state_lock);
  return count;
}

int desktop_gnustep_set_key_down(int key_code, int down) {
  if (key_code < 0 || key_code >= KEY_CODES) return 0;
  unsigned char const bit = (unsigned char)(1u << (key_code % 8));
  pthread_mutex_lock(&state_lock);
  if (down)
    key_map[key_code / 8] |= bit;
  else
    key_map[key_code / 8] &= (unsigned char)~bit;
  pthread_mutex_unlock(&state_lock);
  return 1;
}

int desktop_gnustep_cursor_hide_count(void) {
  pthread_mutex_lock(&state_lock);
  int const count = cursor_hide_count;
  pthread_mutex_unlock(&state_lock);
  return count;
}

void* desktop_gnustep_cursor_display(void) { return x11_cursor_display(); }

int desktop_gnustep_write_screenshot(const char* path) {
  return path != NULL && x11_write_screenshot(path);
}
