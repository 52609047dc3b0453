#include <quillmark/ruby/ruby_entities.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <quillmark/ruby/ruby_handles.h>

namespace RU {

namespace detail {

// The counts come from the SDK, so a size that does not fit, like memory that runs out, is
// the caller's failure to report, not the host's to die of.
void* buffer_allocate(uint64_t n, size_t element_size) {
  if (n > SIZE_MAX / element_size) return nullptr;
  return std::malloc(static_cast<size_t>(n) * element_size);
}

bool buffer_reserve(void** data, uint64_t* capacity, unsigned long n, size_t element_size) {
  if (*capacity >= n) return true;
  void* grown = buffer_allocate(n, element_size);
  if (grown == nullptr) return false;
  if (*capacity != 0) std::memcpy(grown, *data, static_cast<size_t>(*capacity) * element_size);
  std::free(*data);
  *data = grown;
  *capacity = n;
  return true;
}

}  // namespace detail

namespace {

// The walks below are the same for groups and component instances; these name the SDK
// calls that differ.
struct GroupCalls {
  using Ref = SUGroupRef;
  static SUResult count(SUEntitiesRef entities, size_t* n) {
    return SUEntitiesGetNumGroups(entities, n);
  }
  static SUResult list(SUEntitiesRef entities, size_t len, Ref* out, size_t* n) {
    return SUEntitiesGetGroups(entities, len, out, n);
  }
  static SUEntityRef to_entity(Ref ref) { return SUGroupToEntity(ref); }
  static SUResult definition(Ref ref, SUComponentDefinitionRef* out) {
    return SUGroupGetDefinition(ref, out);
  }
  static SUResult transform(Ref ref, SUTransformation* out) {
    return SUGroupGetTransform(ref, out);
  }
};

struct InstanceCalls {
  using Ref = SUComponentInstanceRef;
  static SUResult count(SUEntitiesRef entities, size_t* n) {
    return SUEntitiesGetNumInstances(entities, n);
  }
  static SUResult list(SUEntitiesRef entities, size_t len, Ref* out, size_t* n) {
    return SUEntitiesGetInstances(entities, len, out, n);
  }
  static SUEntityRef to_entity(Ref ref) { return SUComponentInstanceToEntity(ref); }
  static SUResult definition(Ref ref, SUComponentDefinitionRef* out) {
    return SUComponentInstanceGetDefinition(ref, out);
  }
  static SUResult transform(Ref ref, SUTransformation* out) {
    return SUComponentInstanceGetTransform(ref, out);
  }
};

int32_t entity_id_of(VALUE entity) {
  return NUM2INT(rb_funcallv(entity, INTERN_ENTITYID, 0, nullptr));
}

// The Ruby half of every finder. It may raise, so it runs before anything is allocated.
void model_and_id_of(VALUE entity, SUModelRef* model, int32_t* id) {
  vsu_to_csu_model(rb_funcallv(entity, INTERN_MODEL, 0, nullptr), model);
  *id = entity_id_of(entity);
}

// Lists the count placements of entities into items (already large enough) and tests each
// against id. Answers SU_ERROR_NONE with *found set on a match, SU_ERROR_NONE with *found
// clear when there is none, or the code of the first failing call.
template <class Calls>
SUResult match_listed(SUEntitiesRef entities, size_t count, Buffer<typename Calls::Ref>& items,
                      int32_t id, typename Calls::Ref* out, bool* found) {
  const SUResult result = Calls::list(entities, count, items.data, &count);
  if (result != SU_ERROR_NONE) return result;
  for (size_t i = 0; i < count; ++i) {
    int32_t candidate = 0;
    const SUResult id_result = SUEntityGetID(Calls::to_entity(items.data[i]), &candidate);
    if (id_result != SU_ERROR_NONE) return id_result;
    if (candidate == id) {
      *out = items.data[i];
      *found = true;
      return SU_ERROR_NONE;
    }
  }
  return SU_ERROR_NONE;
}

template <class Calls>
SUResult match_in_definitions(const Buffer<SUComponentDefinitionRef>& definitions, size_t count,
                              Buffer<typename Calls::Ref>& items, int32_t id,
                              typename Calls::Ref* out, bool* found) {
  for (size_t i = 0; i < count && !*found; ++i) {
    SUEntitiesRef entities = SU_INVALID;
    SUResult result = SUComponentDefinitionGetEntities(definitions.data[i], &entities);
    if (result != SU_ERROR_NONE) return result;
    size_t count_here = 0;
    result = Calls::count(entities, &count_here);
    if (result != SU_ERROR_NONE) return result;
    if (!items.reserve(count_here)) return ALLOCATION_FAILED;
    result = match_listed<Calls>(entities, count_here, items, id, out, found);
    if (result != SU_ERROR_NONE) return result;
  }
  return SU_ERROR_NONE;
}

// Every group or instance lies in the model's top-level entities or in the entities of exactly
// one definition (a nested one in its parent group's definition), so one flat pass over the
// top level and the two definition lists reaches every depth. Both buffers live for the whole
// walk and grow only when a collection is larger than any before it.
template <class Calls>
SUResult find_placement(SUModelRef model, int32_t id, typename Calls::Ref* out) {
  SUEntitiesRef top = SU_INVALID;
  SUResult result = SUModelGetEntities(model, &top);
  if (result != SU_ERROR_NONE) return result;
  size_t count = 0;
  result = Calls::count(top, &count);
  if (result != SU_ERROR_NONE) return result;
  Buffer<typename Calls::Ref> items(count);
  if (items.data == nullptr) return ALLOCATION_FAILED;
  bool found = false;
  result = match_listed<Calls>(top, count, items, id, out, &found);
  if (result != SU_ERROR_NONE || found) return result;

  result = SUModelGetNumGroupDefinitions(model, &count);
  if (result != SU_ERROR_NONE) return result;
  Buffer<SUComponentDefinitionRef> definitions(count);
  if (definitions.data == nullptr) return ALLOCATION_FAILED;
  result = SUModelGetGroupDefinitions(model, count, definitions.data, &count);
  if (result != SU_ERROR_NONE) return result;
  result = match_in_definitions<Calls>(definitions, count, items, id, out, &found);
  if (result != SU_ERROR_NONE || found) return result;

  result = SUModelGetNumComponentDefinitions(model, &count);
  if (result != SU_ERROR_NONE) return result;
  if (!definitions.reserve(count)) return ALLOCATION_FAILED;
  result = SUModelGetComponentDefinitions(model, count, definitions.data, &count);
  if (result != SU_ERROR_NONE) return result;
  result = match_in_definitions<Calls>(definitions, count, items, id, out, &found);
  if (result != SU_ERROR_NONE || found) return result;
  return SU_ERROR_GENERIC;
}

template <class Calls>
SUResult find_placement_of(VALUE placement, typename Calls::Ref* out) {
  SUModelRef model = SU_INVALID;
  int32_t id = 0;
  model_and_id_of(placement, &model, &id);
  return find_placement<Calls>(model, id, out);
}

bool is_component_instance(VALUE gci) {
  return rb_obj_is_kind_of(gci, SU_COMPONENT_INSTANCE) == Qtrue;
}

template <class Calls>
SUResult gci_entity(VALUE gci, SUEntityRef* out) {
  typename Calls::Ref placement = SU_INVALID;
  const SUResult result = find_placement_of<Calls>(gci, &placement);
  if (result == SU_ERROR_NONE) *out = Calls::to_entity(placement);
  return result;
}

template <class Calls>
SUResult gci_parts(VALUE gci, SUEntityRef* entity, SUComponentDefinitionRef* definition,
                   Geom::Transformation& transformation) {
  typename Calls::Ref placement = SU_INVALID;
  SUResult result = find_placement_of<Calls>(gci, &placement);
  if (result != SU_ERROR_NONE) return result;
  const SUEntityRef found_entity = Calls::to_entity(placement);
  SUComponentDefinitionRef found_definition = SU_INVALID;
  result = Calls::definition(placement, &found_definition);
  if (result != SU_ERROR_NONE) return result;
  SUTransformation matrix;
  result = Calls::transform(placement, &matrix);
  if (result != SU_ERROR_NONE) return result;
  *entity = found_entity;
  *definition = found_definition;
  transformation = Geom::Transformation(matrix.values);
  return SU_ERROR_NONE;
}

}  // namespace

SUResult vsu_to_csu_model(VALUE model, SUModelRef* out) {
  const VALUE address = rb_funcall(model, INTERN_SKPDOC, 1, Qtrue);
  *out = SUModelFromExisting(static_cast<uintptr_t>(NUM2ULL(address)));
  return SU_ERROR_NONE;
}

SUResult vsu_to_csu_component_definition(VALUE definition, SUComponentDefinitionRef* out) {
  SUModelRef model = SU_INVALID;
  int32_t id = 0;
  model_and_id_of(definition, &model, &id);
  const bool group = rb_funcallv(definition, INTERN_TGROUP, 0, nullptr) == Qtrue;

  size_t count = 0;
  SUResult result = group ? SUModelGetNumGroupDefinitions(model, &count)
                          : SUModelGetNumComponentDefinitions(model, &count);
  if (result != SU_ERROR_NONE) return result;
  Buffer<SUComponentDefinitionRef> candidates(count);
  if (candidates.data == nullptr) return ALLOCATION_FAILED;
  result = group ? SUModelGetGroupDefinitions(model, count, candidates.data, &count)
                 : SUModelGetComponentDefinitions(model, count, candidates.data, &count);
  if (result != SU_ERROR_NONE) return result;
  for (size_t i = 0; i < count; ++i) {
    int32_t candidate = 0;
    // A candidate that cannot report its ID cannot be the one wanted; the search goes on.
    if (SUEntityGetID(SUComponentDefinitionToEntity(candidates.data[i]), &candidate) !=
        SU_ERROR_NONE)
      continue;
    if (candidate == id) {
      *out = candidates.data[i];
      return SU_ERROR_NONE;
    }
  }
  return SU_ERROR_GENERIC;
}

SUResult vsu_to_csu_group(VALUE group, SUGroupRef* out) {
  return find_placement_of<GroupCalls>(group, out);
}

SUResult vsu_to_csu_component_instance(VALUE instance, SUComponentInstanceRef* out) {
  return find_placement_of<InstanceCalls>(instance, out);
}

SUResult vsu_to_csu_gci_entity(VALUE gci, SUEntityRef* out) {
  return is_component_instance(gci) ? gci_entity<InstanceCalls>(gci, out)
                                    : gci_entity<GroupCalls>(gci, out);
}

SUResult csu_ent_def_tra_from_vsu_gci(VALUE gci, SUEntityRef* entity,
                                      SUComponentDefinitionRef* definition,
                                      Geom::Transformation& transformation) {
  return is_component_instance(gci)
             ? gci_parts<InstanceCalls>(gci, entity, definition, transformation)
             : gci_parts<GroupCalls>(gci, entity, definition, transformation);
}

VALUE vsu_get_definition(VALUE gci) {
  if (is_component_instance(gci)) return rb_funcallv(gci, INTERN_DEFINITION, 0, nullptr);
  if (SU_MAJOR_VERSION >= 14)
    return rb_funcallv(rb_funcallv(gci, INTERN_ENTITIES, 0, nullptr), INTERN_PARENT, 0, nullptr);

  // Older hosts cannot answer a group's definition directly: find the group definition that
  // lists this very object among its instances.
  const VALUE definitions =
      rb_funcallv(rb_funcallv(gci, INTERN_MODEL, 0, nullptr), INTERN_DEFINITIONS, 0, nullptr);
  const unsigned long n = NUM2ULONG(rb_funcallv(definitions, INTERN_LENGTH, 0, nullptr));
  for (unsigned long i = 0; i < n; ++i) {
    const VALUE definition = rb_funcall(definitions, INTERN_AT, 1, ULONG2NUM(i));
    if (rb_funcallv(definition, INTERN_TGROUP, 0, nullptr) == Qfalse) continue;
    const VALUE instances = rb_funcallv(definition, INTERN_INSTANCES, 0, nullptr);
    const unsigned long m = NUM2ULONG(rb_funcallv(instances, INTERN_LENGTH, 0, nullptr));
    for (unsigned long j = 0; j < m; ++j) {
      if (rb_funcall(instances, INTERN_AT, 1, ULONG2NUM(j)) == gci) return definition;
    }
  }
  return Qnil;
}

}  // namespace RU
