#ifndef SKETCHUP_API_MODEL_TYPED_VALUE_H
#define SKETCHUP_API_MODEL_TYPED_VALUE_H

#include <SketchUpAPI/color.h>
#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

typedef enum {
  SUTypedValueType_Empty = 0,
  SUTypedValueType_Byte = 1,
  SUTypedValueType_Short = 2,
  SUTypedValueType_Int32 = 3,
  SUTypedValueType_Float = 4,
  SUTypedValueType_Double = 5,
  SUTypedValueType_Bool = 6,
  SUTypedValueType_Color = 7,
  SUTypedValueType_Time = 8,
  SUTypedValueType_String = 9,
  SUTypedValueType_Vector3D = 10,
  SUTypedValueType_Array = 11
} SUTypedValueType;

SU_API_BEGIN

/* *typed_value must be invalid; the new value is Empty and must be released. */
SU_EXPORT SUResult SUTypedValueCreate(SUTypedValueRef* typed_value);
SU_EXPORT SUResult SUTypedValueRelease(SUTypedValueRef* typed_value);
SU_EXPORT SUResult SUTypedValueGetType(SUTypedValueRef typed_value, SUTypedValueType* type);

/* Each getter answers SU_ERROR_NO_DATA when the value holds another type. */
SU_EXPORT SUResult SUTypedValueGetByte(SUTypedValueRef typed_value, char* byte_value);
SU_EXPORT SUResult SUTypedValueSetByte(SUTypedValueRef typed_value, char byte_value);
SU_EXPORT SUResult SUTypedValueGetInt16(SUTypedValueRef typed_value, int16_t* int16_value);
SU_EXPORT SUResult SUTypedValueSetInt16(SUTypedValueRef typed_value, int16_t int16_value);
SU_EXPORT SUResult SUTypedValueGetInt32(SUTypedValueRef typed_value, int32_t* int32_value);
SU_EXPORT SUResult SUTypedValueSetInt32(SUTypedValueRef typed_value, int32_t int32_value);
SU_EXPORT SUResult SUTypedValueGetFloat(SUTypedValueRef typed_value, float* float_value);
SU_EXPORT SUResult SUTypedValueSetFloat(SUTypedValueRef typed_value, float float_value);
SU_EXPORT SUResult SUTypedValueGetDouble(SUTypedValueRef typed_value, double* double_value);
SU_EXPORT SUResult SUTypedValueSetDouble(SUTypedValueRef typed_value, double double_value);
SU_EXPORT SUResult SUTypedValueGetBool(SUTypedValueRef typed_value, bool* bool_value);
SU_EXPORT SUResult SUTypedValueSetBool(SUTypedValueRef typed_value, bool bool_value);
SU_EXPORT SUResult SUTypedValueGetColor(SUTypedValueRef typed_value, struct SUColor* color);
SU_EXPORT SUResult SUTypedValueSetColor(SUTypedValueRef typed_value, const struct SUColor* color);
/* Seconds since the epoch. */
SU_EXPORT SUResult SUTypedValueGetTime(SUTypedValueRef typed_value, int64_t* time_value);
SU_EXPORT SUResult SUTypedValueSetTime(SUTypedValueRef typed_value, int64_t time_value);
/* *string_value must be a string the caller created; its contents are replaced. */
SU_EXPORT SUResult SUTypedValueGetString(SUTypedValueRef typed_value, SUStringRef* string_value);
SU_EXPORT SUResult SUTypedValueSetString(SUTypedValueRef typed_value, const char* string_value);
SU_EXPORT SUResult SUTypedValueGetVector3d(SUTypedValueRef typed_value, double vector3d_value[3]);
SU_EXPORT SUResult SUTypedValueSetVector3d(SUTypedValueRef typed_value,
                                           const double vector3d_value[3]);
SU_EXPORT SUResult SUTypedValueGetNumArrayItems(SUTypedValueRef typed_value, size_t* count);
/* The items handed out belong to the array value and live as long as it does. */
SU_EXPORT SUResult SUTypedValueGetArrayItems(SUTypedValueRef typed_value, size_t len,
                                             SUTypedValueRef values[], size_t* count);
/* Stores copies of the len values given. */
SU_EXPORT SUResult SUTypedValueSetArrayItems(SUTypedValueRef typed_value, size_t len,
                                             SUTypedValueRef values[]);

SU_API_END

#endif
