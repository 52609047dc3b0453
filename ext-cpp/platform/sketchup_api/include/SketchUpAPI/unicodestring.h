#ifndef SKETCHUP_API_UNICODESTRING_H
#define SKETCHUP_API_UNICODESTRING_H

#include <SketchUpAPI/common.h>

DEFINE_SU_TYPE(SUStringRef)

SU_API_BEGIN

/* *out_string must be invalid; the new string is empty and must be released. */
SU_EXPORT SUResult SUStringCreate(SUStringRef* out_string);
SU_EXPORT SUResult SUStringCreateFromUTF8(SUStringRef* out_string, const char* char_array);
/* Frees the string and leaves *string invalid. */
SU_EXPORT SUResult SUStringRelease(SUStringRef* string);
SU_EXPORT SUResult SUStringSetUTF8(SUStringRef string, const char* char_array);
/* Length in bytes, without the terminator. */
SU_EXPORT SUResult SUStringGetUTF8Length(SUStringRef string, size_t* out_length);
/* Copies at most char_array_length - 1 bytes and always terminates the copy;
 *out_number_of_chars_copied counts the bytes copied, without the terminator. */
SU_EXPORT SUResult SUStringGetUTF8(SUStringRef string, size_t char_array_length,
                                   char* out_char_array, size_t* out_number_of_chars_copied);

SU_API_END

#endif
