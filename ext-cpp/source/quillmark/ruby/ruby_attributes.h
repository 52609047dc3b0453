#ifndef QUILLMARK_RUBY_RUBY_ATTRIBUTES_H
#define QUILLMARK_RUBY_RUBY_ATTRIBUTES_H

// Readers of an entity's attribute dictionaries and of the SDK's typed values and strings.
// They make no Ruby calls, but like every SDK user they belong on the thread where the host
// lets extensions read its model.
//
// Results: SU_ERROR_NONE; SU_ERROR_INVALID_INPUT when a typed value holds a type the reader
// does not take; SU_ERROR_GENERIC when an array does not yield three items; SU_ERROR_NO_DATA
// when the entity has no dictionary of the wanted name; RU::ALLOCATION_FAILED when a list or
// string the SDK sizes cannot be allocated; otherwise the code of the first failing SDK call. On
// failure an output keeps its contents, except that a string output is null and a vector read from
// an array may hold the components read before the failure.
//
// Strings handed out are NUL-terminated UTF-8 arrays allocated with new[]; the caller
// releases them with delete[].

#include <SketchUpAPI/sketchup.h>

#include <quillmark/geom/geom_vector3.h>

namespace RU {

/// A new UTF-8 copy of an SDK string; *out is set to null first and stays null on failure.
SUResult csu_to_c_str_utf8(SUStringRef string, char** out);

/// The first dictionary of entity whose name equals name byte for byte (case matters);
/// SU_ERROR_NO_DATA when none does. A dictionary whose name cannot be read is skipped. The
/// dictionary belongs to the host.
SUResult csu_entity_get_dictionary(SUEntityRef entity, const char* name,
                                   SUAttributeDictionaryRef* dictionary);

/// Fills value (a typed value the caller created) from key in the first dictionary named
/// dictionary_name; what a missing key gives is the SDK's answer.
SUResult csu_entity_get_attribute(SUEntityRef entity, const char* dictionary_name, const char* key,
                                  SUTypedValueRef* value);

/// A Vector3D as stored, or the first three items of an Array, each a Double (items past the
/// third are ignored). An Array of fewer than three items gives SU_ERROR_INVALID_INPUT; an
/// item that is no Double fails with the SDK's code after the components before it are set.
SUResult csu_typed_value_to_vector3d(SUTypedValueRef value, Geom::Vector3& out);

/// The numeric readers take Byte (signed), Short, Int32, Float and Double; any other type,
/// Bool included, gives SU_ERROR_INVALID_INPUT with out untouched. Integers widen exactly.
/// Floating values are truncated toward zero for the integer targets; one out of the target's
/// range, or NaN, gives the target's minimum.
SUResult csu_typed_value_to_int32_t(SUTypedValueRef value, int* out);
SUResult csu_typed_value_to_int64_t(SUTypedValueRef value, long long* out);
SUResult csu_typed_value_to_double(SUTypedValueRef value, double* out);
/// treal is the SDK's real-number type, a double.
SUResult csu_typed_value_to_treal(SUTypedValueRef value, double* out);

/// Bool only; any other type gives SU_ERROR_INVALID_INPUT.
SUResult csu_typed_value_to_bool(SUTypedValueRef value, bool* out);

/// String only: a new UTF-8 copy (an empty String gives a one-byte array); any other type
/// gives SU_ERROR_INVALID_INPUT. *out is null on every failure.
SUResult csu_typed_value_to_c_str_utf8(SUTypedValueRef value, char** out);

}  // namespace RU

#endif
