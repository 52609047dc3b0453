// The SDK stand-in on its own: the bridge's tests are only as good as its checks.

#include <gtest/gtest.h>

#include <sketchup_api_standin.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <vector>

namespace {

class SketchupApi : public ::testing::Test {
 protected:
  void SetUp() override {
    su_standin_reset();
    model_ = su_standin_model_create();
    ASSERT_EQ(SUModelGetEntities(model_, &top_), SU_ERROR_NONE);
  }
  void TearDown() override {
    su_standin_model_release(model_);
    su_standin_reset();
  }

  SUModelRef model_ = SU_INVALID;
  SUEntitiesRef top_ = SU_INVALID;
};

TEST_F(SketchupApi, Utf8CopyHonoursTheBufferSizeAndAlwaysTerminates) {
  const size_t live = su_standin_live_strings();
  SUStringRef string = SU_INVALID;
  ASSERT_EQ(SUStringCreateFromUTF8(&string, "hello"), SU_ERROR_NONE);
  EXPECT_EQ(su_standin_live_strings(), live + 1);
  EXPECT_EQ(SUStringCreate(&string), SU_ERROR_OVERWRITE_VALID) << "a live reference must not be overwritten";

  for (size_t size = 1; size <= 8; ++size) {
    char buffer[9];
    std::memset(buffer, '#', sizeof buffer);
    size_t copied = 99;
    ASSERT_EQ(SUStringGetUTF8(string, size, buffer, &copied), SU_ERROR_NONE);
    const size_t expected = size - 1 < 5 ? size - 1 : 5;
    EXPECT_EQ(copied, expected) << size;
    EXPECT_EQ(std::strncmp(buffer, "hello", expected), 0) << size;
    EXPECT_EQ(buffer[expected], '\0') << size;
    EXPECT_EQ(buffer[size], '#') << "wrote past a buffer of " << size;
  }
  char untouched = '#';
  size_t copied = 99;
  EXPECT_EQ(SUStringGetUTF8(string, 0, &untouched, &copied), SU_ERROR_INSUFFICIENT_SIZE);
  EXPECT_EQ(untouched, '#');
  EXPECT_EQ(SUStringGetUTF8(string, 4, nullptr, &copied), SU_ERROR_NULL_POINTER_OUTPUT);

  ASSERT_EQ(SUStringRelease(&string), SU_ERROR_NONE);
  EXPECT_TRUE(SUIsInvalid(string));
  EXPECT_EQ(SUStringRelease(&string), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(su_standin_live_strings(), live);
}

TEST_F(SketchupApi, ReferencesOfTheWrongKindOrNullAreRefused) {
  const SUGroupRef group = su_standin_add_group(top_);
  const SUComponentDefinitionRef definition = su_standin_add_component_definition(model_, "D");
  const SUComponentInstanceRef instance = su_standin_add_instance(top_, definition);
  ASSERT_TRUE(SUIsValid(group) && SUIsValid(definition) && SUIsValid(instance));

  // Placements start at the identity.
  SUTransformation start;
  ASSERT_EQ(SUGroupGetTransform(group, &start), SU_ERROR_NONE);
  for (int k = 0; k < 16; ++k) EXPECT_EQ(start.values[k], k % 5 == 0 ? 1.0 : 0.0) << k;
  ASSERT_EQ(SUComponentInstanceGetTransform(instance, &start), SU_ERROR_NONE);
  for (int k = 0; k < 16; ++k) EXPECT_EQ(start.values[k], k % 5 == 0 ? 1.0 : 0.0) << k;

  SUGroupRef instance_as_group;
  instance_as_group.ptr = instance.ptr;
  SUComponentInstanceRef group_as_instance;
  group_as_instance.ptr = group.ptr;
  SUEntitiesRef model_as_entities;
  model_as_entities.ptr = model_.ptr;
  SUComponentDefinitionRef out_definition = SU_INVALID;
  SUTransformation transform;
  size_t count = 0;

  EXPECT_EQ(SUGroupGetDefinition(instance_as_group, &out_definition), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(SUComponentInstanceGetTransform(group_as_instance, &transform), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(SUEntitiesGetNumGroups(model_as_entities, &count), SU_ERROR_INVALID_INPUT);
  EXPECT_TRUE(SUIsInvalid(SUGroupToEntity(instance_as_group)));
  EXPECT_EQ(SUModelGetNumGroupDefinitions(SUModelRef{}, &count), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(SUModelGetNumGroupDefinitions(model_, nullptr), SU_ERROR_NULL_POINTER_OUTPUT);
  EXPECT_EQ(SUEntityGetID(SUEntityRef{}, nullptr), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(SUEntityGetID(SUGroupToEntity(group), nullptr), SU_ERROR_NULL_POINTER_OUTPUT);
  EXPECT_TRUE(SUIsInvalid(out_definition));

  // An address that names no live model gives an invalid model.
  EXPECT_TRUE(SUIsInvalid(SUModelFromExisting(reinterpret_cast<uintptr_t>(&count))));
  const SUModelRef other = su_standin_model_create();
  EXPECT_EQ(SUModelFromExisting(reinterpret_cast<uintptr_t>(other.ptr)).ptr, other.ptr);
  su_standin_model_release(other);
  EXPECT_TRUE(SUIsInvalid(SUModelFromExisting(reinterpret_cast<uintptr_t>(other.ptr))));
}

TEST_F(SketchupApi, ListsFillAtMostLenAndReportTheCount) {
  std::vector<int32_t> ids;
  for (int i = 0; i < 5; ++i) {
    int32_t id = 0;
    ASSERT_EQ(SUEntityGetID(SUGroupToEntity(su_standin_add_group(top_)), &id), SU_ERROR_NONE);
    ids.push_back(id);
  }
  SUGroupRef groups[8];
  int marker;
  for (SUGroupRef& g : groups) g.ptr = &marker;
  size_t count = 99;
  ASSERT_EQ(SUEntitiesGetGroups(top_, 3, groups, &count), SU_ERROR_NONE);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(groups[3].ptr, &marker);
  ASSERT_EQ(SUEntitiesGetGroups(top_, 8, groups, &count), SU_ERROR_NONE);
  EXPECT_EQ(count, 5u);
  EXPECT_EQ(groups[5].ptr, &marker);
  for (size_t i = 0; i < count; ++i) {
    int32_t id = 0;
    ASSERT_EQ(SUEntityGetID(SUGroupToEntity(groups[i]), &id), SU_ERROR_NONE);
    EXPECT_EQ(id, ids[i]) << "listed out of order";
  }
  ASSERT_EQ(SUModelGetNumGroupDefinitions(model_, &count), SU_ERROR_NONE);
  EXPECT_EQ(count, 5u) << "every group has a definition of its own";
}

TEST_F(SketchupApi, EntityIdsAreUniqueAcrossEveryKind) {
  std::mt19937 rng(7);
  std::vector<SUEntitiesRef> containers = {top_};
  std::vector<SUComponentDefinitionRef> definitions;
  std::vector<SUEntityRef> entities;
  for (int i = 0; i < 300; ++i) {
    SUEntitiesRef into = containers[rng() % containers.size()];
    if (rng() % 3 == 0 || definitions.empty()) {
      SUComponentDefinitionRef d = su_standin_add_component_definition(model_, "D");
      definitions.push_back(d);
      entities.push_back(SUComponentDefinitionToEntity(d));
      SUEntitiesRef inside = SU_INVALID;
      ASSERT_EQ(SUComponentDefinitionGetEntities(d, &inside), SU_ERROR_NONE);
      containers.push_back(inside);
    } else if (rng() % 2 == 0) {
      SUGroupRef g = su_standin_add_group(into);
      entities.push_back(SUGroupToEntity(g));
      SUComponentDefinitionRef d = SU_INVALID;
      ASSERT_EQ(SUGroupGetDefinition(g, &d), SU_ERROR_NONE);
      entities.push_back(SUComponentDefinitionToEntity(d));
    } else {
      entities.push_back(SUComponentInstanceToEntity(su_standin_add_instance(into, definitions[rng() % definitions.size()])));
    }
  }
  std::set<int32_t> seen;
  for (SUEntityRef entity : entities) {
    int32_t id = 0;
    ASSERT_EQ(SUEntityGetID(entity, &id), SU_ERROR_NONE);
    EXPECT_TRUE(seen.insert(id).second) << "duplicate ID " << id;
  }
}

TEST_F(SketchupApi, TypedValuesAreCopiedDeeplyAndTypeChecked) {
  SUTypedValueRef item = SU_INVALID, array = SU_INVALID, out = SU_INVALID;
  ASSERT_EQ(SUTypedValueCreate(&item), SU_ERROR_NONE);
  ASSERT_EQ(SUTypedValueCreate(&array), SU_ERROR_NONE);
  ASSERT_EQ(SUTypedValueCreate(&out), SU_ERROR_NONE);
  SUTypedValueSetDouble(item, 1.25);
  ASSERT_EQ(SUTypedValueSetArrayItems(array, 1, &item), SU_ERROR_NONE);
  SUTypedValueSetDouble(item, 2.5);  // the array kept a copy
  SUTypedValueRef own_item = SU_INVALID;
  size_t own_count = 0;
  ASSERT_EQ(SUTypedValueGetArrayItems(array, 1, &own_item, &own_count), SU_ERROR_NONE);
  EXPECT_EQ(SUTypedValueRelease(&own_item), SU_ERROR_INVALID_INPUT) << "items belong to their array";

  const SUAttributeDictionaryRef dictionary = su_standin_add_dictionary(SUGroupToEntity(su_standin_add_group(top_)), "d");
  ASSERT_EQ(su_standin_dictionary_set(dictionary, "a", array), SU_ERROR_NONE);
  SUTypedValueSetInt32(array, 3);  // and so did the dictionary
  ASSERT_EQ(SUAttributeDictionaryGetValue(dictionary, "a", &out), SU_ERROR_NONE);

  // Reading into a value replaces what it held, items included.
  ASSERT_EQ(SUAttributeDictionaryGetValue(dictionary, "a", &out), SU_ERROR_NONE);
  SUTypedValueRef items[2] = {SU_INVALID, SU_INVALID};
  size_t count = 0;
  ASSERT_EQ(SUTypedValueGetArrayItems(out, 2, items, &count), SU_ERROR_NONE);
  ASSERT_EQ(count, 1u);
  double stored = 0.0;
  ASSERT_EQ(SUTypedValueGetDouble(items[0], &stored), SU_ERROR_NONE);
  EXPECT_EQ(stored, 1.25);
  EXPECT_EQ(SUTypedValueRelease(&items[0]), SU_ERROR_INVALID_INPUT) << "and to copies of it";

  float as_float = 0.0f;
  int32_t as_int = 0;
  EXPECT_EQ(SUTypedValueGetFloat(item, &as_float), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUTypedValueGetInt32(out, &as_int), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUAttributeDictionaryGetValue(dictionary, "b", &out), SU_ERROR_NO_DATA);
  EXPECT_EQ(SUTypedValueGetNumArrayItems(out, &count), SU_ERROR_NONE) << "a missing key leaves the value alone";

  const size_t live = su_standin_live_typed_values();
  for (SUTypedValueRef* value : {&item, &array, &out}) {
    EXPECT_EQ(SUTypedValueRelease(value), SU_ERROR_NONE);
    EXPECT_TRUE(SUIsInvalid(*value)) << "a released value must not look live";
  }
  EXPECT_EQ(su_standin_live_typed_values(), live - 3);
}

TEST_F(SketchupApi, FaultsHitTheChosenCallOrEveryCall) {
  size_t count = 0;
  EXPECT_EQ(su_standin_fail("SUNoSuchFunction", SU_ERROR_GENERIC, 0), 0);
  ASSERT_EQ(su_standin_fail("SUModelGetNumGroupDefinitions", SU_ERROR_SERIALIZATION, 2), 1);
  EXPECT_EQ(SUModelGetNumGroupDefinitions(model_, &count), SU_ERROR_NONE);
  count = 42;
  EXPECT_EQ(SUModelGetNumGroupDefinitions(model_, &count), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(count, 42u) << "a failing call writes nothing";
  EXPECT_EQ(SUModelGetNumGroupDefinitions(model_, &count), SU_ERROR_NONE);
  EXPECT_EQ(su_standin_calls("SUModelGetNumGroupDefinitions"), 3u);

  // Counted from when it is armed, not from the last reset.
  ASSERT_EQ(su_standin_fail("SUModelGetNumGroupDefinitions", SU_ERROR_OUT_OF_RANGE, 1), 1);
  EXPECT_EQ(SUModelGetNumGroupDefinitions(model_, &count), SU_ERROR_OUT_OF_RANGE);

  ASSERT_EQ(su_standin_fail("SUModelGetEntities", SU_ERROR_GENERIC, 0), 1);
  SUEntitiesRef entities = SU_INVALID;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(SUModelGetEntities(model_, &entities), SU_ERROR_GENERIC);

  su_standin_reset();
  EXPECT_EQ(su_standin_calls("SUModelGetEntities"), 0u);
  EXPECT_EQ(SUModelGetEntities(model_, &entities), SU_ERROR_NONE);
  EXPECT_EQ(entities.ptr, top_.ptr);
}

}  // namespace
