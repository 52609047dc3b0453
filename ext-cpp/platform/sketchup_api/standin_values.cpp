// Strings and typed values: the SDK's small value objects.

#include <algorithm>
#include <cstring>

#include "standin_internal.h"

namespace standin {

void TypedValue::clear() {
  type = SUTypedValueType_Empty;
  vector_value[0] = vector_value[1] = vector_value[2] = 0.0;
  string_value.clear();
  items.clear();
}

void TypedValue::assign(const TypedValue& other) {
  if (&other == this) return;
  clear();
  type = other.type;
  std::memcpy(vector_value, other.vector_value, sizeof vector_value);
  string_value = other.string_value;
  for (const auto& item : other.items) {
    auto copy = std::make_unique<TypedValue>();
    copy->assign(*item);
    copy->owned_by_array = true;
    items.push_back(std::move(copy));
  }
}

namespace {

// The common shape of a scalar getter: a null output, an invalid value, and a value of
// another type are refused before anything is written.
template <class Out, class Read>
SUResult get_scalar(SUTypedValueRef ref, Out* out, SUTypedValueType wanted, Read read) {
  TypedValue* value = resolve<TypedValue>(ref.ptr);
  if (value == nullptr) return SU_ERROR_INVALID_INPUT;
  if (out == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  if (value->type != wanted) return SU_ERROR_NO_DATA;
  *out = read(*value);
  return SU_ERROR_NONE;
}

template <class Write>
SUResult set_scalar(SUTypedValueRef ref, SUTypedValueType type, Write write) {
  TypedValue* value = resolve<TypedValue>(ref.ptr);
  if (value == nullptr) return SU_ERROR_INVALID_INPUT;
  value->clear();
  value->type = type;
  write(*value);
  return SU_ERROR_NONE;
}

// *out must name a string the caller created.
String* output_string(SUStringRef* out, SUResult* error) {
  if (out == nullptr) {
    *error = SU_ERROR_NULL_POINTER_OUTPUT;
    return nullptr;
  }
  String* string = resolve<String>(out->ptr);
  if (string == nullptr) *error = SU_ERROR_INVALID_OUTPUT;
  return string;
}

}  // namespace

}  // namespace standin

using standin::Fn;
using standin::resolve;
using standin::String;
using standin::TypedValue;

extern "C" {

SUResult SUStringCreate(SUStringRef* out_string) {
  STANDIN_ENTER(SUStringCreate);
  if (out_string == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  if (SUIsValid(*out_string)) return SU_ERROR_OVERWRITE_VALID;
  *out_string = standin::make_ref<SUStringRef>(new String);
  ++standin::live_strings;
  return SU_ERROR_NONE;
}

SUResult SUStringCreateFromUTF8(SUStringRef* out_string, const char* char_array) {
  STANDIN_ENTER(SUStringCreateFromUTF8);
  if (char_array == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (out_string == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  if (SUIsValid(*out_string)) return SU_ERROR_OVERWRITE_VALID;
  auto* string = new String;
  string->utf8 = char_array;
  *out_string = standin::make_ref<SUStringRef>(string);
  ++standin::live_strings;
  return SU_ERROR_NONE;
}

SUResult SUStringRelease(SUStringRef* string) {
  STANDIN_ENTER(SUStringRelease);
  if (string == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  String* object = resolve<String>(string->ptr);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  delete object;
  --standin::live_strings;
  SUSetInvalid(*string);
  return SU_ERROR_NONE;
}

SUResult SUStringSetUTF8(SUStringRef string, const char* char_array) {
  STANDIN_ENTER(SUStringSetUTF8);
  String* object = resolve<String>(string.ptr);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (char_array == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  object->utf8 = char_array;
  return SU_ERROR_NONE;
}

SUResult SUStringGetUTF8Length(SUStringRef string, size_t* out_length) {
  STANDIN_ENTER(SUStringGetUTF8Length);
  const String* object = resolve<String>(string.ptr);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (out_length == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *out_length = object->utf8.size();
  return standin::report_size(standin::Fn::SUStringGetUTF8Length, SU_ERROR_NONE, out_length);
}

SUResult SUStringGetUTF8(SUStringRef string, size_t char_array_length, char* out_char_array,
                         size_t* out_number_of_chars_copied) {
  STANDIN_ENTER(SUStringGetUTF8);
  const String* object = resolve<String>(string.ptr);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (out_char_array == nullptr || out_number_of_chars_copied == nullptr) {
    return SU_ERROR_NULL_POINTER_OUTPUT;
  }
  // No room even for the terminator: nothing can be written honestly.
  if (char_array_length == 0) return SU_ERROR_INSUFFICIENT_SIZE;
  const size_t copied = std::min(char_array_length - 1, object->utf8.size());
  std::memcpy(out_char_array, object->utf8.data(), copied);
  out_char_array[copied] = '\0';
  *out_number_of_chars_copied = copied;
  return SU_ERROR_NONE;
}

SUResult SUTypedValueCreate(SUTypedValueRef* typed_value) {
  STANDIN_ENTER(SUTypedValueCreate);
  if (typed_value == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  if (SUIsValid(*typed_value)) return SU_ERROR_OVERWRITE_VALID;
  *typed_value = standin::make_ref<SUTypedValueRef>(new TypedValue);
  ++standin::live_typed_values;
  return SU_ERROR_NONE;
}

SUResult SUTypedValueRelease(SUTypedValueRef* typed_value) {
  STANDIN_ENTER(SUTypedValueRelease);
  if (typed_value == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  TypedValue* value = resolve<TypedValue>(typed_value->ptr);
  if (value == nullptr || value->owned_by_array) return SU_ERROR_INVALID_INPUT;
  delete value;
  --standin::live_typed_values;
  SUSetInvalid(*typed_value);
  return SU_ERROR_NONE;
}

SUResult SUTypedValueGetType(SUTypedValueRef typed_value, SUTypedValueType* type) {
  STANDIN_ENTER(SUTypedValueGetType);
  const TypedValue* value = resolve<TypedValue>(typed_value.ptr);
  if (value == nullptr) return SU_ERROR_INVALID_INPUT;
  if (type == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *type = value->type;
  return SU_ERROR_NONE;
}

#define STANDIN_SCALAR(Name, Type, tag, member)                                           \
  SUResult SUTypedValueGet##Name(SUTypedValueRef typed_value, Type* out) {                \
    STANDIN_ENTER(SUTypedValueGet##Name);                                                 \
    return standin::get_scalar(typed_value, out, tag,                                     \
                               [](const TypedValue& v) { return v.member; });             \
  }                                                                                       \
  SUResult SUTypedValueSet##Name(SUTypedValueRef typed_value, Type in) {                  \
    STANDIN_ENTER(SUTypedValueSet##Name);                                                 \
    return standin::set_scalar(typed_value, tag, [in](TypedValue& v) { v.member = in; }); \
  }

STANDIN_SCALAR(Byte, char, SUTypedValueType_Byte, byte_value)
STANDIN_SCALAR(Int16, int16_t, SUTypedValueType_Short, int16_value)
STANDIN_SCALAR(Int32, int32_t, SUTypedValueType_Int32, int32_value)
STANDIN_SCALAR(Float, float, SUTypedValueType_Float, float_value)
STANDIN_SCALAR(Double, double, SUTypedValueType_Double, double_value)
STANDIN_SCALAR(Bool, bool, SUTypedValueType_Bool, bool_value)
STANDIN_SCALAR(Time, int64_t, SUTypedValueType_Time, time_value)
#undef STANDIN_SCALAR

SUResult SUTypedValueGetColor(SUTypedValueRef typed_value, SUColor* color) {
  STANDIN_ENTER(SUTypedValueGetColor);
  return standin::get_scalar(typed_value, color, SUTypedValueType_Color,
                             [](const TypedValue& v) { return v.color_value; });
}

SUResult SUTypedValueSetColor(SUTypedValueRef typed_value, const SUColor* color) {
  STANDIN_ENTER(SUTypedValueSetColor);
  if (color == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  const SUColor in = *color;
  return standin::set_scalar(typed_value, SUTypedValueType_Color,
                             [in](TypedValue& v) { v.color_value = in; });
}

SUResult SUTypedValueGetString(SUTypedValueRef typed_value, SUStringRef* string_value) {
  STANDIN_ENTER(SUTypedValueGetString);
  const TypedValue* value = resolve<TypedValue>(typed_value.ptr);
  if (value == nullptr) return SU_ERROR_INVALID_INPUT;
  SUResult error = SU_ERROR_NONE;
  String* out = standin::output_string(string_value, &error);
  if (out == nullptr) return error;
  if (value->type != SUTypedValueType_String) return SU_ERROR_NO_DATA;
  out->utf8 = value->string_value;
  return SU_ERROR_NONE;
}

SUResult SUTypedValueSetString(SUTypedValueRef typed_value, const char* string_value) {
  STANDIN_ENTER(SUTypedValueSetString);
  if (string_value == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return standin::set_scalar(typed_value, SUTypedValueType_String,
                             [string_value](TypedValue& v) { v.string_value = string_value; });
}

SUResult SUTypedValueGetVector3d(SUTypedValueRef typed_value, double vector3d_value[3]) {
  STANDIN_ENTER(SUTypedValueGetVector3d);
  const TypedValue* value = resolve<TypedValue>(typed_value.ptr);
  if (value == nullptr) return SU_ERROR_INVALID_INPUT;
  if (vector3d_value == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  if (value->type != SUTypedValueType_Vector3D) return SU_ERROR_NO_DATA;
  std::memcpy(vector3d_value, value->vector_value, sizeof value->vector_value);
  return SU_ERROR_NONE;
}

SUResult SUTypedValueSetVector3d(SUTypedValueRef typed_value, const double vector3d_value[3]) {
  STANDIN_ENTER(SUTypedValueSetVector3d);
  if (vector3d_value == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  return standin::set_scalar(typed_value, SUTypedValueType_Vector3D,
                             [vector3d_value](TypedValue& v) {
                               std::memcpy(v.vector_value, vector3d_value, sizeof v.vector_value);
                             });
}

SUResult SUTypedValueGetNumArrayItems(SUTypedValueRef typed_value, size_t* count) {
  STANDIN_ENTER(SUTypedValueGetNumArrayItems);
  return standin::get_scalar(typed_value, count, SUTypedValueType_Array,
                             [](const TypedValue& v) { return v.items.size(); });
}

SUResult SUTypedValueGetArrayItems(SUTypedValueRef typed_value, size_t len,
                                   SUTypedValueRef values[], size_t* count) {
  STANDIN_ENTER(SUTypedValueGetArrayItems);
  const TypedValue* value = resolve<TypedValue>(typed_value.ptr);
  if (value == nullptr) return SU_ERROR_INVALID_INPUT;
  if (values == nullptr || count == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  if (value->type != SUTypedValueType_Array) return SU_ERROR_NO_DATA;
  const size_t filled = std::min(len, value->items.size());
  for (size_t i = 0; i < filled; ++i)
    values[i] = standin::make_ref<SUTypedValueRef>(value->items[i].get());
  *count = filled;
  return SU_ERROR_NONE;
}

SUResult SUTypedValueSetArrayItems(SUTypedValueRef typed_value, size_t len,
                                   SUTypedValueRef values[]) {
  STANDIN_ENTER(SUTypedValueSetArrayItems);
  TypedValue* value = resolve<TypedValue>(typed_value.ptr);
  if (value == nullptr) return SU_ERROR_INVALID_INPUT;
  if (values == nullptr && len > 0) return SU_ERROR_NULL_POINTER_INPUT;
  // Validate every item first so a bad one leaves the value as it was.
  for (size_t i = 0; i < len; ++i) {
    const TypedValue* item = resolve<TypedValue>(values[i].ptr);
    if (item == nullptr) return SU_ERROR_INVALID_INPUT;
  }
  TypedValue array;
  array.type = SUTypedValueType_Array;
  for (size_t i = 0; i < len; ++i) {
    auto copy = std::make_unique<TypedValue>();
    copy->assign(*resolve<TypedValue>(values[i].ptr));
    copy->owned_by_array = true;
    array.items.push_back(std::move(copy));
  }
  value->clear();
  value->type = SUTypedValueType_Array;
  value->items = std::move(array.items);
  return SU_ERROR_NONE;
}

}  // extern "C"
