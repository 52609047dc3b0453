/* The six AppKit and Foundation messages the window activation sends, one C function each,
   so that the C++ around them never touches Objective-C. Written for both GCC's Objective-C
   and Apple's clang without changes: manual reference counting, plain message sends, no
   object literals, no subscripting syntax, no autorelease pool block.

   None of these creates or releases an object: the window list and its elements belong to
   the caller, and every answer is an object someone else owns. A message to nil answers
   nil or 0, which is exactly what the declarations promise for a null receiver. */

#import <AppKit/AppKit.h>

#include <objc_seam.h>

void* ns_app_window_with_window_number(long n) {
  return (void*)[NSApp windowWithWindowNumber:(NSInteger)n];
}

void* ns_window_toolbar(void* window) { return (void*)[(NSWindow*)window toolbar]; }

long ns_window_level(void* window) { return (long)[(NSWindow*)window level]; }

void ns_window_make_key_window(void* window) { [(NSWindow*)window makeKeyWindow]; }

const void* ns_object_for_keyed_subscript(const void* dictionary, const void* key) {
  return (const void*)[(NSDictionary*)dictionary objectForKeyedSubscript:(id)key];
}

long ns_integer_value(const void* number) { return (long)[(NSNumber*)number integerValue]; }
