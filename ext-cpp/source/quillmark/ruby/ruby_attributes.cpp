#include <quillmark/ruby/ruby_attributes.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>

#include <quillmark/ruby/ruby_entities.h>

namespace RU {

namespace {

// csu_to_c_str_utf8, telling an allocation that failed (*no_memory set) from an SDK failure.
SUResult utf8_copy(SUStringRef string, char** out, bool* no_memory) {
  *out = nullptr;
  size_t length = 0;
  SUResult result = SUStringGetUTF8Length(string, &length);
  if (result != SU_ERROR_NONE) return result;
  // SIZE_MAX would wrap length + 1 to an empty buffer.
  char* buffer = length == SIZE_MAX ? nullptr : new (std::nothrow) char[length + 1];
  if (buffer == nullptr) {
    *no_memory = true;
    return ALLOCATION_FAILED;
  }
  size_t written = 0;
  result = SUStringGetUTF8(string, length + 1, buffer, &written);
  if (result != SU_ERROR_NONE) {
    delete[] buffer;
    return result;
  }
  *out = buffer;
  return SU_ERROR_NONE;
}

// Finds the first dictionary of entity named name: SU_ERROR_NONE with *found, SU_ERROR_NO_DATA,
// or the code of a failing call that stops the search.
SUResult find_dictionary(SUEntityRef entity, const char* name, SUAttributeDictionaryRef* found) {
  size_t count = 0;
  SUResult result = SUEntityGetNumAttributeDictionaries(entity, &count);
  if (result != SU_ERROR_NONE) return result;
  if (count == 0) return SU_ERROR_NO_DATA;
  Buffer<SUAttributeDictionaryRef> dictionaries(count);
  if (dictionaries.data == nullptr) return ALLOCATION_FAILED;
  result = SUEntityGetAttributeDictionaries(entity, count, dictionaries.data, &count);
  if (result != SU_ERROR_NONE) return result;
  SUStringRef dictionary_name = SU_INVALID;
  result = SUStringCreate(&dictionary_name);
  if (result != SU_ERROR_NONE) return result;

  bool matched = false;
  bool no_memory = false;
  for (size_t i = 0; i < count && !matched && !no_memory; ++i) {
    char* candidate = nullptr;
    // A dictionary whose name cannot be read cannot be the one wanted; the search goes on.
    // A name there is no memory to copy might be it: that ends the search.
    if (SUAttributeDictionaryGetName(dictionaries.data[i], &dictionary_name) != SU_ERROR_NONE)
      continue;
    if (utf8_copy(dictionary_name, &candidate, &no_memory) != SU_ERROR_NONE) continue;
    matched = std::strcmp(candidate, name) == 0;
    delete[] candidate;
    if (matched) *found = dictionaries.data[i];
  }
  SUStringRelease(&dictionary_name);
  if (no_memory) return ALLOCATION_FAILED;
  return matched ? SU_ERROR_NONE : SU_ERROR_NO_DATA;
}

// Truncation toward zero into Int. Int's minimum, -2^(bits-1), is exact in a double, and so is
// its negation, the first value past the maximum; NaN fails both tests.
template <class Int>
Int truncate_to(double value) {
  constexpr double lowest = static_cast<double>(std::numeric_limits<Int>::min());
  const double truncated = std::trunc(value);
  if (!(truncated >= lowest && truncated < -lowest)) return std::numeric_limits<Int>::min();
  return static_cast<Int>(truncated);
}

template <class Target>
Target convert(double value) {
  if constexpr (std::is_integral_v<Target>) {
    return truncate_to<Target>(value);
  } else {
    return value;
  }
}

// Stores convert(stored) in out when getter succeeds; out is left alone otherwise.
template <class Stored, class Target, class Convert>
SUResult read_as(SUTypedValueRef value, SUResult (*getter)(SUTypedValueRef, Stored*), Target* out,
                 Convert convert) {
  Stored stored{};
  const SUResult result = getter(value, &stored);
  if (result == SU_ERROR_NONE) *out = convert(stored);
  return result;
}

// Reads a Byte, Short, Int32, Float or Double with the getter of its stored type and converts
// it to Target.
template <class Target>
SUResult read_number(SUTypedValueRef value, Target* out) {
  SUTypedValueType type = SUTypedValueType_Empty;
  const SUResult result = SUTypedValueGetType(value, &type);
  if (result != SU_ERROR_NONE) return result;
  const auto widen = [](auto stored) { return static_cast<Target>(stored); };
  switch (type) {
    case SUTypedValueType_Byte:
      // The SDK's byte is a signed 8-bit value whatever the platform's char.
      return read_as(value, SUTypedValueGetByte, out, [](char stored) {
        return static_cast<Target>(static_cast<signed char>(stored));
      });
    case SUTypedValueType_Short:
      return read_as(value, SUTypedValueGetInt16, out, widen);
    case SUTypedValueType_Int32:
      return read_as(value, SUTypedValueGetInt32, out, widen);
    case SUTypedValueType_Float:
      return read_as(value, SUTypedValueGetFloat, out,
                     [](float stored) { return convert<Target>(static_cast<double>(stored)); });
    case SUTypedValueType_Double:
      return read_as(value, SUTypedValueGetDouble, out,
                     [](double stored) { return convert<Target>(stored); });
    default:
      return SU_ERROR_INVALID_INPUT;
  }
}

}  // namespace

SUResult csu_to_c_str_utf8(SUStringRef string, char** out) {
  bool no_memory = false;
  return utf8_copy(string, out, &no_memory);
}

SUResult csu_entity_get_dictionary(SUEntityRef entity, const char* name,
                                   SUAttributeDictionaryRef* dictionary) {
  return find_dictionary(entity, name, dictionary);
}

SUResult csu_entity_get_attribute(SUEntityRef entity, const char* dictionary_name, const char* key,
                                  SUTypedValueRef* value) {
  SUAttributeDictionaryRef dictionary = SU_INVALID;
  const SUResult result = find_dictionary(entity, dictionary_name, &dictionary);
  if (result != SU_ERROR_NONE) return result;
  return SUAttributeDictionaryGetValue(dictionary, key, value);
}

SUResult csu_typed_value_to_vector3d(SUTypedValueRef value, Geom::Vector3& out) {
  SUTypedValueType type = SUTypedValueType_Empty;
  SUResult result = SUTypedValueGetType(value, &type);
  if (result != SU_ERROR_NONE) return result;
  if (type == SUTypedValueType_Vector3D) return SUTypedValueGetVector3d(value, &out.x);
  if (type != SUTypedValueType_Array) return SU_ERROR_INVALID_INPUT;

  size_t count = 0;
  result = SUTypedValueGetNumArrayItems(value, &count);
  if (result != SU_ERROR_NONE) return result;
  if (count < 3) return SU_ERROR_INVALID_INPUT;
  SUTypedValueRef items[3] = {SU_INVALID, SU_INVALID, SU_INVALID};
  result = SUTypedValueGetArrayItems(value, 3, items, &count);
  if (result != SU_ERROR_NONE) return result;
  if (count != 3) return SU_ERROR_GENERIC;
  result = SUTypedValueGetDouble(items[0], &out.x);
  if (result != SU_ERROR_NONE) return result;
  result = SUTypedValueGetDouble(items[1], &out.y);
  if (result != SU_ERROR_NONE) return result;
  return SUTypedValueGetDouble(items[2], &out.z);
}

SUResult csu_typed_value_to_int32_t(SUTypedValueRef value, int* out) {
  return read_number(value, out);
}

SUResult csu_typed_value_to_int64_t(SUTypedValueRef value, long long* out) {
  return read_number(value, out);
}

SUResult csu_typed_value_to_double(SUTypedValueRef value, double* out) {
  return read_number(value, out);
}

SUResult csu_typed_value_to_treal(SUTypedValueRef value, double* out) {
  return read_number(value, out);
}

SUResult csu_typed_value_to_bool(SUTypedValueRef value, bool* out) {
  SUTypedValueType type = SUTypedValueType_Empty;
  const SUResult result = SUTypedValueGetType(value, &type);
  if (result != SU_ERROR_NONE) return result;
  if (type != SUTypedValueType_Bool) return SU_ERROR_INVALID_INPUT;
  return SUTypedValueGetBool(value, out);
}

SUResult csu_typed_value_to_c_str_utf8(SUTypedValueRef value, char** out) {
  *out = nullptr;
  SUTypedValueType type = SUTypedValueType_Empty;
  SUResult result = SUTypedValueGetType(value, &type);
  if (result != SU_ERROR_NONE) return result;
  if (type != SUTypedValueType_String) return SU_ERROR_INVALID_INPUT;
  SUStringRef string = SU_INVALID;
  result = SUStringCreate(&string);
  if (result != SU_ERROR_NONE) return result;
  result = SUTypedValueGetString(value, &string);
  if (result == SU_ERROR_NONE) result = csu_to_c_str_utf8(string, out);
  SUStringRelease(&string);
  return result;
}

}  // namespace RU
