// The in-memory model: entities, definitions, groups, component instances and their
// attribute dictionaries, with the SDK functions that read it and the builder that fills it.

#include <sketchup_api_standin.h>

#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "standin_internal.h"

namespace standin {

namespace {

// Live models, so that an address coming back from Ruby is checked before it is trusted.
std::unordered_set<uintptr_t>& live_models() {
  static auto* models = new std::unordered_set<uintptr_t>;
  return *models;
}

template <class Ref, class T>
SUResult list(const std::vector<T>& items, size_t len, Ref out[], size_t* count) {
  if (out == nullptr || count == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  const size_t filled = std::min(len, items.size());
  for (size_t i = 0; i < filled; ++i) out[i] = make_ref<Ref>(&*items[i]);
  *count = filled;
  return SU_ERROR_NONE;
}

// The size, and the elements, of a collection held by the object a reference names.
template <class Owner, class Items>
SUResult count_member(void* ptr, Items Owner::*items, size_t* count) {
  const Owner* owner = resolve<Owner>(ptr);
  if (owner == nullptr) return SU_ERROR_INVALID_INPUT;
  if (count == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *count = (owner->*items).size();
  return SU_ERROR_NONE;
}

template <class Owner, class Items, class Ref>
SUResult list_member(void* ptr, Items Owner::*items, size_t len, Ref out[], size_t* count) {
  const Owner* owner = resolve<Owner>(ptr);
  if (owner == nullptr) return SU_ERROR_INVALID_INPUT;
  return list(owner->*items, len, out, count);
}

template <class T>
SUEntityRef to_entity(void* ptr, Fn function) {
  SUEntityRef entity = SU_INVALID;
  if (enter(function) != SU_ERROR_NONE) return entity;
  if (T* object = resolve<T>(ptr)) entity = make_ref<SUEntityRef>(static_cast<Entity*>(object));
  return entity;
}

template <class T>
SUResult definition_of(void* ptr, SUComponentDefinitionRef* definition) {
  const T* placement = resolve<T>(ptr);
  if (placement == nullptr) return SU_ERROR_INVALID_INPUT;
  if (definition == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *definition = make_ref<SUComponentDefinitionRef>(placement->definition);
  return SU_ERROR_NONE;
}

template <class T>
SUResult transform_of(void* ptr, SUTransformation* transform) {
  const T* placement = resolve<T>(ptr);
  if (placement == nullptr) return SU_ERROR_INVALID_INPUT;
  if (transform == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *transform = placement->transform;
  return SU_ERROR_NONE;
}

}  // namespace

}  // namespace standin

using standin::Definition;
using standin::Dictionary;
using standin::Entities;
using standin::Entity;
using standin::Fn;
using standin::Group;
using standin::Instance;
using standin::make_ref;
using standin::Model;
using standin::resolve;

extern "C" {

SUModelRef SUModelFromExisting(uintptr_t data) {
  SUModelRef model = SU_INVALID;
  if (standin::enter(Fn::SUModelFromExisting) != SU_ERROR_NONE) return model;
  if (standin::live_models().count(data) != 0) model.ptr = reinterpret_cast<void*>(data);
  return model;
}

SUResult SUModelGetEntities(SUModelRef model, SUEntitiesRef* entities) {
  STANDIN_ENTER(SUModelGetEntities);
  Model* object = resolve<Model>(model.ptr);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (entities == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *entities = make_ref<SUEntitiesRef>(&object->entities);
  return SU_ERROR_NONE;
}

SUResult SUModelGetNumGroupDefinitions(SUModelRef model, size_t* count) {
  STANDIN_ENTER(SUModelGetNumGroupDefinitions);
  return standin::report_size(standin::Fn::SUModelGetNumGroupDefinitions,
                              standin::count_member(model.ptr, &Model::group_definitions, count),
                              count);
}

SUResult SUModelGetGroupDefinitions(SUModelRef model, size_t len,
                                    SUComponentDefinitionRef definitions[], size_t* count) {
  STANDIN_ENTER(SUModelGetGroupDefinitions);
  return standin::list_member(model.ptr, &Model::group_definitions, len, definitions, count);
}

SUResult SUModelGetNumComponentDefinitions(SUModelRef model, size_t* count) {
  STANDIN_ENTER(SUModelGetNumComponentDefinitions);
  return standin::report_size(
      standin::Fn::SUModelGetNumComponentDefinitions,
      standin::count_member(model.ptr, &Model::component_definitions, count), count);
}

SUResult SUModelGetComponentDefinitions(SUModelRef model, size_t len,
                                        SUComponentDefinitionRef definitions[], size_t* count) {
  STANDIN_ENTER(SUModelGetComponentDefinitions);
  return standin::list_member(model.ptr, &Model::component_definitions, len, definitions, count);
}

SUResult SUEntitiesGetNumGroups(SUEntitiesRef entities, size_t* count) {
  STANDIN_ENTER(SUEntitiesGetNumGroups);
  return standin::report_size(standin::Fn::SUEntitiesGetNumGroups,
                              standin::count_member(entities.ptr, &Entities::groups, count), count);
}

SUResult SUEntitiesGetGroups(SUEntitiesRef entities, size_t len, SUGroupRef groups[],
                             size_t* count) {
  STANDIN_ENTER(SUEntitiesGetGroups);
  return standin::list_member(entities.ptr, &Entities::groups, len, groups, count);
}

SUResult SUEntitiesGetNumInstances(SUEntitiesRef entities, size_t* count) {
  STANDIN_ENTER(SUEntitiesGetNumInstances);
  return standin::report_size(standin::Fn::SUEntitiesGetNumInstances,
                              standin::count_member(entities.ptr, &Entities::instances, count),
                              count);
}

SUResult SUEntitiesGetInstances(SUEntitiesRef entities, size_t len,
                                SUComponentInstanceRef instances[], size_t* count) {
  STANDIN_ENTER(SUEntitiesGetInstances);
  return standin::list_member(entities.ptr, &Entities::instances, len, instances, count);
}

SUResult SUEntityGetID(SUEntityRef entity, int32_t* entity_id) {
  STANDIN_ENTER(SUEntityGetID);
  const Entity* object = resolve<Entity>(entity.ptr);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (entity_id == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *entity_id = object->id;
  return SU_ERROR_NONE;
}

SUResult SUEntityGetNumAttributeDictionaries(SUEntityRef entity, size_t* count) {
  STANDIN_ENTER(SUEntityGetNumAttributeDictionaries);
  return standin::report_size(standin::Fn::SUEntityGetNumAttributeDictionaries,
                              standin::count_member(entity.ptr, &Entity::dictionaries, count),
                              count);
}

SUResult SUEntityGetAttributeDictionaries(SUEntityRef entity, size_t len,
                                          SUAttributeDictionaryRef dictionaries[], size_t* count) {
  STANDIN_ENTER(SUEntityGetAttributeDictionaries);
  return standin::list_member(entity.ptr, &Entity::dictionaries, len, dictionaries, count);
}

SUEntityRef SUGroupToEntity(SUGroupRef group) {
  return standin::to_entity<Group>(group.ptr, Fn::SUGroupToEntity);
}

SUResult SUGroupGetDefinition(SUGroupRef group, SUComponentDefinitionRef* definition) {
  STANDIN_ENTER(SUGroupGetDefinition);
  return standin::definition_of<Group>(group.ptr, definition);
}

SUResult SUGroupGetTransform(SUGroupRef group, SUTransformation* transform) {
  STANDIN_ENTER(SUGroupGetTransform);
  return standin::transform_of<Group>(group.ptr, transform);
}

SUEntityRef SUComponentInstanceToEntity(SUComponentInstanceRef instance) {
  return standin::to_entity<Instance>(instance.ptr, Fn::SUComponentInstanceToEntity);
}

SUResult SUComponentInstanceGetDefinition(SUComponentInstanceRef instance,
                                          SUComponentDefinitionRef* definition) {
  STANDIN_ENTER(SUComponentInstanceGetDefinition);
  return standin::definition_of<Instance>(instance.ptr, definition);
}

SUResult SUComponentInstanceGetTransform(SUComponentInstanceRef instance,
                                         SUTransformation* transform) {
  STANDIN_ENTER(SUComponentInstanceGetTransform);
  return standin::transform_of<Instance>(instance.ptr, transform);
}

SUEntityRef SUComponentDefinitionToEntity(SUComponentDefinitionRef comp_def) {
  return standin::to_entity<Definition>(comp_def.ptr, Fn::SUComponentDefinitionToEntity);
}

SUResult SUComponentDefinitionGetEntities(SUComponentDefinitionRef comp_def,
                                          SUEntitiesRef* entities) {
  STANDIN_ENTER(SUComponentDefinitionGetEntities);
  Definition* object = resolve<Definition>(comp_def.ptr);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (entities == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  *entities = make_ref<SUEntitiesRef>(&object->entities);
  return SU_ERROR_NONE;
}

SUResult SUAttributeDictionaryGetName(SUAttributeDictionaryRef dictionary, SUStringRef* name) {
  STANDIN_ENTER(SUAttributeDictionaryGetName);
  const Dictionary* object = resolve<Dictionary>(dictionary.ptr);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (name == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  standin::String* out = resolve<standin::String>(name->ptr);
  if (out == nullptr) return SU_ERROR_INVALID_OUTPUT;
  out->utf8 = object->name;
  return SU_ERROR_NONE;
}

SUResult SUAttributeDictionaryGetValue(SUAttributeDictionaryRef dictionary, const char* key,
                                       SUTypedValueRef* value_out) {
  STANDIN_ENTER(SUAttributeDictionaryGetValue);
  const Dictionary* object = resolve<Dictionary>(dictionary.ptr);
  if (object == nullptr) return SU_ERROR_INVALID_INPUT;
  if (key == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  if (value_out == nullptr) return SU_ERROR_NULL_POINTER_OUTPUT;
  standin::TypedValue* out = resolve<standin::TypedValue>(value_out->ptr);
  if (out == nullptr) return SU_ERROR_INVALID_OUTPUT;
  for (const auto& [stored_key, value] : object->values) {
    if (stored_key == key) {
      out->assign(*value);
      return SU_ERROR_NONE;
    }
  }
  return SU_ERROR_NO_DATA;
}

SUModelRef su_standin_model_create(void) {
  auto* model = new Model;
  standin::live_models().insert(reinterpret_cast<uintptr_t>(static_cast<standin::Object*>(model)));
  return make_ref<SUModelRef>(model);
}

void su_standin_model_release(SUModelRef model) {
  Model* object = resolve<Model>(model.ptr);
  if (object == nullptr) return;
  standin::live_models().erase(reinterpret_cast<uintptr_t>(model.ptr));
  delete object;
}

size_t su_standin_live_models(void) { return standin::live_models().size(); }

SUComponentDefinitionRef su_standin_add_component_definition(SUModelRef model, const char* name) {
  SUComponentDefinitionRef ref = SU_INVALID;
  Model* object = resolve<Model>(model.ptr);
  if (object == nullptr) return ref;
  object->component_definitions.push_back(
      std::make_unique<Definition>(object, object->next_id++, false, name ? name : ""));
  return make_ref<SUComponentDefinitionRef>(object->component_definitions.back().get());
}

SUGroupRef su_standin_add_group(SUEntitiesRef entities) {
  SUGroupRef ref = SU_INVALID;
  Entities* parent = resolve<Entities>(entities.ptr);
  if (parent == nullptr) return ref;
  Model* model = parent->model;
  model->group_definitions.push_back(
      std::make_unique<Definition>(model, model->next_id++, true, "Group"));
  model->placements.push_back(
      std::make_unique<Group>(model, model->next_id++, model->group_definitions.back().get()));
  auto* group = static_cast<Group*>(model->placements.back().get());
  parent->groups.push_back(group);
  return make_ref<SUGroupRef>(group);
}

SUComponentInstanceRef su_standin_add_instance(SUEntitiesRef entities,
                                               SUComponentDefinitionRef definition) {
  SUComponentInstanceRef ref = SU_INVALID;
  Entities* parent = resolve<Entities>(entities.ptr);
  Definition* placed = resolve<Definition>(definition.ptr);
  if (parent == nullptr || placed == nullptr || placed->model != parent->model) return ref;
  Model* model = parent->model;
  model->placements.push_back(std::make_unique<Instance>(model, model->next_id++, placed));
  auto* instance = static_cast<Instance*>(model->placements.back().get());
  parent->instances.push_back(instance);
  return make_ref<SUComponentInstanceRef>(instance);
}

int su_standin_set_transform(SUEntityRef entity, const SUTransformation* transform) {
  auto* object = static_cast<standin::Object*>(entity.ptr);
  if (transform == nullptr) return 0;
  if (Group* group = resolve<Group>(object)) {
    group->transform = *transform;
  } else if (Instance* instance = resolve<Instance>(object)) {
    instance->transform = *transform;
  } else {
    return 0;
  }
  return 1;
}

SUAttributeDictionaryRef su_standin_add_dictionary(SUEntityRef entity, const char* name) {
  SUAttributeDictionaryRef ref = SU_INVALID;
  Entity* object = resolve<Entity>(entity.ptr);
  if (object == nullptr || name == nullptr) return ref;
  object->dictionaries.push_back(std::make_unique<Dictionary>(name));
  return make_ref<SUAttributeDictionaryRef>(object->dictionaries.back().get());
}

SUResult su_standin_dictionary_set(SUAttributeDictionaryRef dictionary, const char* key,
                                   SUTypedValueRef value) {
  Dictionary* object = resolve<Dictionary>(dictionary.ptr);
  const standin::TypedValue* stored = resolve<standin::TypedValue>(value.ptr);
  if (object == nullptr || stored == nullptr) return SU_ERROR_INVALID_INPUT;
  if (key == nullptr) return SU_ERROR_NULL_POINTER_INPUT;
  auto copy = std::make_unique<standin::TypedValue>();
  copy->assign(*stored);
  for (auto& [stored_key, slot] : object->values) {
    if (stored_key == key) {
      slot = std::move(copy);
      return SU_ERROR_NONE;
    }
  }
  object->values.emplace_back(key, std::move(copy));
  return SU_ERROR_NONE;
}

}  // extern "C"
