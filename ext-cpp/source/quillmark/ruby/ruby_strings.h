#ifndef QUILLMARK_RUBY_RUBY_STRINGS_H
#define QUILLMARK_RUBY_RUBY_STRINGS_H

// Native text to and from Ruby Strings, and one Array edit. Every String made here is
// tagged UTF-8. Wide strings are the platform's 32-bit wchar_t, one code point per unit.
// All of these run on the interpreter's thread and may raise Ruby exceptions.

#include <quillmark/ruby/ruby_lib.h>

#include <cwchar>

namespace RU {

/// A new UTF-8 String of the bytes up to the first NUL. The bytes are not validated.
VALUE to_value(char const* str);

/// A new UTF-8 String of exactly `length` bytes, NUL bytes included; 0 gives "".
VALUE to_value(char const* str, unsigned int length);

/// A new UTF-8 String of the code points up to the first zero unit. A unit that is no
/// Unicode scalar value (a surrogate, or past U+10FFFF) raises the interpreter's
/// RangeError before any String is made.
VALUE to_value(wchar_t const* str);

/// As above for exactly `length` units; a zero unit becomes one 0 byte, and 0 units give "".
VALUE to_value(wchar_t const* str, unsigned int length);

/// The code points of a String (or of what its `to_str` answers) in the String's own
/// encoding, nothing transcoded, followed by 0. The caller owns the array and releases it
/// with delete[]. Raises TypeError for a value without `to_str`, and the interpreter's
/// ArgumentError for an invalid byte sequence; in both cases nothing stays allocated. A NUL
/// inside the String comes out as a 0 unit ahead of the terminator; "" gives just the 0.
wchar_t* value_to_wc_str(VALUE value);

/// Removes the first element of `array` that is the very same Ruby value as `item` (identity,
/// not ==) and answers its index as an Integer, or nil when there is none. Raises TypeError
/// "Expected an Array object!" when `array` is not an Array (subclasses are accepted). An
/// array without a match, the empty one included, is left as it was.
VALUE array_delete_first(VALUE array, VALUE item);

}  // namespace RU

#endif
