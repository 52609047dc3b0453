#ifndef SKETCHUP_API_STANDIN_INTERNAL_H
#define SKETCHUP_API_STANDIN_INTERNAL_H

// The in-memory objects behind the SDK's references. A reference's ptr is always the
// Object* of what it names, so a reference of the wrong kind (an instance passed where a
// group is wanted) is caught by its kind, and a released object by its cleared tag.

#include <SketchUpAPI/sketchup.h>

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace standin {

enum class Kind : uint32_t {
  Model,
  Entities,
  Group,
  Instance,
  Definition,
  Dictionary,
  TypedValue,
  String
};

// Written into every live object and cleared when it is destroyed.
inline constexpr uint32_t kLiveTag = 0x5155494cu;

struct Object {
  explicit Object(Kind k) : kind(k) {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  ~Object() { tag = 0; }

  uint32_t tag = kLiveTag;
  Kind kind;
};

struct Model;
struct Definition;
struct Group;
struct Instance;

struct TypedValue : Object {
  TypedValue() : Object(Kind::TypedValue), vector_value{0.0, 0.0, 0.0} {}
  static bool accepts(Kind k) { return k == Kind::TypedValue; }
  void assign(const TypedValue& other);
  void clear();

  SUTypedValueType type = SUTypedValueType_Empty;
  union {
    char byte_value;
    int16_t int16_value;
    int32_t int32_value;
    float float_value;
    double double_value;
    bool bool_value;
    SUColor color_value;
    int64_t time_value;
    double vector_value[3];
  };
  std::string string_value;
  std::vector<std::unique_ptr<TypedValue>> items;
  // Items of an array belong to it: releasing one through the SDK is refused.
  bool owned_by_array = false;
};

struct String : Object {
  String() : Object(Kind::String) {}
  static bool accepts(Kind k) { return k == Kind::String; }
  std::string utf8;
};

struct Dictionary : Object {
  explicit Dictionary(std::string n) : Object(Kind::Dictionary), name(std::move(n)) {}
  static bool accepts(Kind k) { return k == Kind::Dictionary; }
  std::string name;
  std::vector<std::pair<std::string, std::unique_ptr<TypedValue>>> values;
};

struct Entities : Object {
  explicit Entities(Model* m) : Object(Kind::Entities), model(m) {}
  static bool accepts(Kind k) { return k == Kind::Entities; }
  Model* model;
  std::vector<Group*> groups;
  std::vector<Instance*> instances;
};

struct Entity : Object {
  Entity(Kind k, Model* m, int32_t entity_id) : Object(k), model(m), id(entity_id) {}
  static bool accepts(Kind k) {
    return k == Kind::Group || k == Kind::Instance || k == Kind::Definition;
  }
  Model* model;
  int32_t id;
  std::vector<std::unique_ptr<Dictionary>> dictionaries;
};

struct Definition : Entity {
  Definition(Model* m, int32_t entity_id, bool group, std::string n)
      : Entity(Kind::Definition, m, entity_id), is_group(group), name(std::move(n)), entities(m) {}
  static bool accepts(Kind k) { return k == Kind::Definition; }
  bool is_group;
  std::string name;
  Entities entities;
};

// A group and a component instance differ only in kind: both place a definition.
struct Placement : Entity {
  Placement(Kind k, Model* m, int32_t entity_id, Definition* d)
      : Entity(k, m, entity_id), definition(d) {}
  Definition* definition;
  SUTransformation transform = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
};

struct Group : Placement {
  Group(Model* m, int32_t entity_id, Definition* d) : Placement(Kind::Group, m, entity_id, d) {}
  static bool accepts(Kind k) { return k == Kind::Group; }
};

struct Instance : Placement {
  Instance(Model* m, int32_t entity_id, Definition* d)
      : Placement(Kind::Instance, m, entity_id, d) {}
  static bool accepts(Kind k) { return k == Kind::Instance; }
};

struct Model : Object {
  Model() : Object(Kind::Model), entities(this) {}
  static bool accepts(Kind k) { return k == Kind::Model; }
  Entities entities;
  std::vector<std::unique_ptr<Definition>> group_definitions;
  std::vector<std::unique_ptr<Definition>> component_definitions;
  std::vector<std::unique_ptr<Placement>> placements;
  int32_t next_id = 1;
};

// The object a reference names when it is live and of kind T, else null.
template <class T>
T* resolve(void* ptr) {
  auto* object = static_cast<Object*>(ptr);
  if (object == nullptr || object->tag != kLiveTag || !T::accepts(object->kind)) return nullptr;
  return static_cast<T*>(object);
}

template <class Ref, class T>
Ref make_ref(T* object) {
  Ref ref;
  ref.ptr = static_cast<Object*>(object);
  return ref;
}

// Every SDK function, for call counting and fault injection; laid out by hand as a table.
// clang-format off
#define STANDIN_FUNCTIONS(X)                                                                     \
  X(SUStringCreate) X(SUStringCreateFromUTF8) X(SUStringRelease) X(SUStringSetUTF8)             \
  X(SUStringGetUTF8Length) X(SUStringGetUTF8) X(SUModelFromExisting) X(SUModelGetEntities)      \
  X(SUModelGetNumGroupDefinitions) X(SUModelGetGroupDefinitions)                                \
  X(SUModelGetNumComponentDefinitions) X(SUModelGetComponentDefinitions)                        \
  X(SUEntitiesGetNumGroups) X(SUEntitiesGetGroups) X(SUEntitiesGetNumInstances)                 \
  X(SUEntitiesGetInstances) X(SUEntityGetID) X(SUEntityGetNumAttributeDictionaries)             \
  X(SUEntityGetAttributeDictionaries) X(SUGroupToEntity) X(SUGroupGetDefinition)                \
  X(SUGroupGetTransform) X(SUComponentInstanceToEntity) X(SUComponentInstanceGetDefinition)     \
  X(SUComponentInstanceGetTransform) X(SUComponentDefinitionToEntity)                           \
  X(SUComponentDefinitionGetEntities) X(SUAttributeDictionaryGetName)                           \
  X(SUAttributeDictionaryGetValue) X(SUTypedValueCreate) X(SUTypedValueRelease)                 \
  X(SUTypedValueGetType) X(SUTypedValueGetByte) X(SUTypedValueSetByte) X(SUTypedValueGetInt16)  \
  X(SUTypedValueSetInt16) X(SUTypedValueGetInt32) X(SUTypedValueSetInt32) X(SUTypedValueGetFloat) \
  X(SUTypedValueSetFloat) X(SUTypedValueGetDouble) X(SUTypedValueSetDouble)                     \
  X(SUTypedValueGetBool) X(SUTypedValueSetBool) X(SUTypedValueGetColor) X(SUTypedValueSetColor) \
  X(SUTypedValueGetTime) X(SUTypedValueSetTime) X(SUTypedValueGetString)                        \
  X(SUTypedValueSetString) X(SUTypedValueGetVector3d) X(SUTypedValueSetVector3d)               \
  X(SUTypedValueGetNumArrayItems) X(SUTypedValueGetArrayItems) X(SUTypedValueSetArrayItems)
// clang-format on

enum class Fn : unsigned {
#define STANDIN_ENUM(name) name,
  STANDIN_FUNCTIONS(STANDIN_ENUM)
#undef STANDIN_ENUM
      Count
};

// Counts the call and answers the injected code, or SU_ERROR_NONE to go on.
SUResult enter(Fn function);
// A size function's result: when the call succeeded and su_standin_report_size asked for it
// on this call, *size becomes the size set there; result passes through.
SUResult report_size(Fn function, SUResult result, size_t* size);

extern size_t live_strings;
extern size_t live_typed_values;

}  // namespace standin

// First statement of every SDK function that returns SUResult.
#define STANDIN_ENTER(name)                                           \
  do {                                                                \
    const SUResult injected_ = ::standin::enter(::standin::Fn::name); \
    if (injected_ != SU_ERROR_NONE) return injected_;                 \
  } while (0)

#endif
