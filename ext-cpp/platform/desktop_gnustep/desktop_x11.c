#include "desktop_x11.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xfixes.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// Levels below a top-level window searched for one of ours: a reparenting window manager
// puts each client one or two levels down inside its frame. Without one, as on Xvfb, the
// windows are the root's own children.
enum { FRAME_DEPTH = 2 };

static int find_window(Display* display, Window candidate, const unsigned long* windows, int count,
                       const char* taken, int depth) {
  for (int k = 0; k < count; ++k)
    if (!taken[k] && windows[k] == candidate) return k;
  if (depth == 0) return -1;
  Window root = 0, parent = 0, *children = NULL;
  unsigned int n = 0;
  if (!XQueryTree(display, candidate, &root, &parent, &children, &n)) return -1;
  int found = -1;
  for (unsigned int i = n; i-- > 0 && found < 0;)
    found = find_window(display, children[i], windows, count, taken, depth - 1);
  if (children != NULL) XFree(children);
  return found;
}

static int is_viewable(Display* display, Window window) {
  XWindowAttributes attributes;
  return XGetWindowAttributes(display, window, &attributes) && attributes.map_state == IsViewable;
}

int x11_order_front_to_back(void* display_handle, unsigned long* windows, int count) {
  Display* display = (Display*)display_handle;
  if (display == NULL || count < 0) return -1;
  if (count == 0) return 0;
  Window root = 0, parent = 0, *children = NULL;
  unsigned int n = 0;
  if (!XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &n)) return -1;
  unsigned long* ordered = malloc((size_t)count * sizeof *ordered);
  char* taken = calloc((size_t)count, 1);
  if (ordered == NULL || taken == NULL) {
    free(ordered);
    free(taken);
    if (children != NULL) XFree(children);
    return -1;
  }
  // XQueryTree lists the children bottom to top.
  int placed = 0;
  for (unsigned int i = n; i-- > 0;) {
    int const k = find_window(display, children[i], windows, count, taken, FRAME_DEPTH);
    if (k < 0 || !is_viewable(display, windows[k])) continue;
    taken[k] = 1;
    ordered[placed++] = windows[k];
  }
  int const viewable = placed;
  for (int k = 0; k < count; ++k)
    if (!taken[k]) ordered[placed++] = windows[k];
  memcpy(windows, ordered, (size_t)count * sizeof *ordered);
  free(ordered);
  free(taken);
  if (children != NULL) XFree(children);
  return viewable;
}

// The cursor calls may come from any thread; Xlib is not initialised for threads here, so
// one lock serialises every use of the connection.
static pthread_mutex_t cursor_lock = PTHREAD_MUTEX_INITIALIZER;
static Display* cursor_display = NULL;
static int cursor_display_tried = 0;
static int has_xfixes = 0;

// Expects cursor_lock held.
static Display* cursor_connection(void) {
  if (!cursor_display_tried) {
    cursor_display_tried = 1;
    cursor_display = XOpenDisplay(NULL);
    int event_base = 0, error_base = 0;
    has_xfixes =
        cursor_display != NULL && XFixesQueryExtension(cursor_display, &event_base, &error_base);
  }
  return cursor_display;
}

void* x11_cursor_display(void) {
  pthread_mutex_lock(&cursor_lock);
  Display* display = cursor_connection();
  pthread_mutex_unlock(&cursor_lock);
  return display;
}

int x11_query_pointer(int* x, int* y) {
  pthread_mutex_lock(&cursor_lock);
  Display* display = cursor_connection();
  int ok = 0;
  if (display != NULL) {
    Window root = 0, child = 0;
    int window_x = 0, window_y = 0;
    unsigned int mask = 0;
    ok = XQueryPointer(display, DefaultRootWindow(display), &root, &child, x, y, &window_x,
                       &window_y, &mask) != 0;
  }
  pthread_mutex_unlock(&cursor_lock);
  return ok;
}

int x11_warp_pointer(int x, int y) {
  pthread_mutex_lock(&cursor_lock);
  Display* display = cursor_connection();
  if (display != NULL) {
    XWarpPointer(display, None, DefaultRootWindow(display), 0, 0, 0, 0, x, y);
    // Wait for the server, so that whoever asks next sees the pointer where it went.
    XSync(display, False);
  }
  pthread_mutex_unlock(&cursor_lock);
  return display != NULL;
}

static int change_cursor(int hide) {
  pthread_mutex_lock(&cursor_lock);
  Display* display = cursor_connection();
  int const ok = display != NULL && has_xfixes;
  if (ok) {
    if (hide)
      XFixesHideCursor(display, DefaultRootWindow(display));
    else
      XFixesShowCursor(display, DefaultRootWindow(display));
    XSync(display, False);
  }
  pthread_mutex_unlock(&cursor_lock);
  return ok;
}

int x11_hide_cursor(void) { return change_cursor(1); }
int x11_show_cursor(void) { return change_cursor(0); }

// The channel of a pixel under one of the visual's masks, scaled to 8 bits.
static unsigned char channel(unsigned long pixel, unsigned long mask) {
  if (mask == 0) return 0;
  int shift = 0;
  while (!((mask >> shift) & 1)) ++shift;
  unsigned long const top = mask >> shift;
  return (unsigned char)((((pixel & mask) >> shift) * 255 + top / 2) / top);
}

int x11_write_screenshot(const char* path) {
  pthread_mutex_lock(&cursor_lock);
  Display* display = cursor_connection();
  XImage* image = NULL;
  if (display != NULL) {
    int const screen = DefaultScreen(display);
    image = XGetImage(display, RootWindow(display, screen), 0, 0,
                      (unsigned int)DisplayWidth(display, screen),
                      (unsigned int)DisplayHeight(display, screen), AllPlanes, ZPixmap);
  }
  pthread_mutex_unlock(&cursor_lock);
  if (image == NULL) return 0;
  FILE* file = fopen(path, "wb");
  int ok = file != NULL;
  if (ok) {
    fprintf(file, "P6\n%d %d\n255\n", image->width, image->height);
    for (int y = 0; y < image->height && ok; ++y)
      for (int x = 0; x < image->width && ok; ++x) {
        unsigned long const pixel = XGetPixel(image, x, y);
        unsigned char const rgb[3] = {channel(pixel, image->red_mask),
                                      channel(pixel, image->green_mask),
                                      channel(pixel, image->blue_mask)};
        ok = fwrite(rgb, 1, 3, file) == 3;
      }
    ok = fclose(file) == 0 && ok;
  }
  XDestroyImage(image);
  return ok;
}
