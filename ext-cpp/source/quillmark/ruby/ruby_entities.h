#ifndef QUILLMARK_RUBY_RUBY_ENTITIES_H
#define QUILLMARK_RUBY_RUBY_ENTITIES_H

// From the host's Ruby entities to the SDK's references to the same entities. The model
// comes from the Ruby model's skpdoc handle; definitions, groups and component instances are
// found by walking the model through the SDK and matching entity IDs.
//
// Every function here calls Ruby, so it runs on the interpreter's thread, after the handle
// cache is filled. A Ruby method that raises propagates; SDK failures are returned as
// SUResult codes (SU_ERROR_GENERIC when the entity is not found, ALLOCATION_FAILED when a
// list the SDK sizes cannot be allocated, otherwise the code of the first failing SDK call),
// and an output is written only when the result is SU_ERROR_NONE.
// The references returned point into the live model, which the host owns.

#include <SketchUpAPI/sketchup.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <quillmark/geom/geom_transformation.h>
#include <quillmark/ruby/ruby_lib.h>

namespace RU {

/// What the finders here and the attribute readers answer when memory for a list or a
/// string cannot be had (the SDK reported a size no allocation holds, or malloc failed).
/// Of the SDK's codes it is the one that blames neither the arguments nor the model: an
/// SDK call answers it when it fails inside on an exception, which is what running out of
/// memory is. The others would mislead a caller into acting on the model (GENERIC: "not
/// found", NO_DATA: "no such dictionary") or on its own buffer (INSUFFICIENT_SIZE).
constexpr SUResult ALLOCATION_FAILED = SU_ERROR_UNKNOWN_EXCEPTION;

namespace detail {
/// Grows *data (malloc'd, *capacity elements of element_size bytes) to exactly n elements,
/// copying the old ones; nothing when n <= *capacity. False, with nothing changed, when the
/// allocation fails.
bool buffer_reserve(void** data, uint64_t* capacity, unsigned long n, size_t element_size);
/// Room for n elements of element_size bytes, uninitialised; null when the size overflows
/// or malloc fails.
void* buffer_allocate(uint64_t n, size_t element_size);
}  // namespace detail

/// A growable raw array of SDK references, for the lists the SDK hands out. It keeps no
/// element count: the caller keeps the count the filling call reported. Elements are plain
/// handles, copied as raw bytes.
template <class T>
class Buffer {
 public:
  /// Room for n elements, at least one; when that cannot be allocated, data is null and
  /// capacity 0.
  explicit Buffer(unsigned long n)
      : data(static_cast<T*>(detail::buffer_allocate(n == 0 ? 1 : n, sizeof(T)))),
        capacity(data == nullptr ? 0 : (n == 0 ? 1 : n)) {}
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;
  /// Frees data.
  virtual ~Buffer() { std::free(data); }

  /// Grows to exactly n elements when capacity < n, keeping the old ones; never shrinks.
  /// False, with the buffer as it was, when the allocation fails.
  bool reserve(unsigned long n) {
    void* raw = data;
    const bool grown = detail::buffer_reserve(&raw, &capacity, n, sizeof(T));
    data = static_cast<T*>(raw);
    return grown;
  }

  /// malloc'd room for `capacity` elements, uninitialised; `capacity` is at least 1 unless
  /// the first allocation failed (data null).
  T* data;
  uint64_t capacity;
};

/// The SDK model behind a Ruby Sketchup::Model (its skpdoc(true) address). Always
/// SU_ERROR_NONE: an address that names no model gives a reference the SDK rejects later.
SUResult vsu_to_csu_model(VALUE model, SUModelRef* out);

/// A Ruby Sketchup::ComponentDefinition; group? (true only) decides whether the group
/// definitions or the component definitions are searched. A candidate whose ID cannot be
/// read is skipped, not reported.
SUResult vsu_to_csu_component_definition(VALUE definition, SUComponentDefinitionRef* out);

/// A Ruby Sketchup::Group at any depth: top level, then group definitions, then component
/// definitions. Unlike the definition finder, a failing ID read ends the search with its code.
SUResult vsu_to_csu_group(VALUE group, SUGroupRef* out);

/// A Ruby Sketchup::ComponentInstance at any depth, searched like a group.
SUResult vsu_to_csu_component_instance(VALUE instance, SUComponentInstanceRef* out);

/// A component instance (kind_of? Sketchup::ComponentInstance) or otherwise a group, found
/// as above and handed out as an entity.
SUResult vsu_to_csu_gci_entity(VALUE gci, SUEntityRef* out);

/// The entity, definition and transformation of a group or component instance, written only
/// when all three were read. The transformation takes the SDK's 16 values in their stored
/// (column-major) order, unscaled.
SUResult csu_ent_def_tra_from_vsu_gci(VALUE gci, SUEntityRef* entity,
                                      SUComponentDefinitionRef* definition,
                                      Geom::Transformation& transformation);

/// The Ruby Sketchup::ComponentDefinition of a group or component instance, or nil. Hosts
/// before version 14 are served by a scan of the model's definitions, matching the very
/// object passed in (identity, not equality); nil there when no group definition lists it.
VALUE vsu_get_definition(VALUE gci);

}  // namespace RU

#endif
