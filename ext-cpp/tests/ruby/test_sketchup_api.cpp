// The SDK stand-in on its own: the bridge's tests are only as good as its checks.

#include <gtest/gtest.h>

#include <sketchup_api_standin.h>

#include <cstring>

namespace {

TEST(SketchupApi, Utf8CopyHonoursTheBufferSizeAndRefusesMisuse) {
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

TEST(SketchupApi, ListsFillAtMostLenAndFaultsHitTheChosenCall) {
  su_standin_reset();
  SUModelRef model = su_standin_model_create();
  SUEntitiesRef top = SU_INVALID;
  ASSERT_EQ(SUModelGetEntities(model, &top), SU_ERROR_NONE);
  SUGroupRef made[5];
  for (SUGroupRef& g : made) g = su_standin_add_group(top);
  SUGroupRef groups[8];
  int marker;
  for (SUGroupRef& g : groups) g.ptr = &marker;
  size_t count = 99;
  ASSERT_EQ(SUEntitiesGetGroups(top, 3, groups, &count), SU_ERROR_NONE);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(groups[3].ptr, &marker);
  ASSERT_EQ(SUEntitiesGetGroups(top, 8, groups, &count), SU_ERROR_NONE);
  EXPECT_EQ(count, 5u);
  EXPECT_EQ(groups[5].ptr, &marker);
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(groups[i].ptr, made[i].ptr) << "listed out of order";
  ASSERT_EQ(SUModelGetNumGroupDefinitions(model, &count), SU_ERROR_NONE);
  EXPECT_EQ(count, 5u) << "every group has a definition of its own";

  // The nth call from when the fault is armed fails and writes nothing; 0 fails every call.
  EXPECT_EQ(su_standin_fail("SUNoSuchFunction", SU_ERROR_GENERIC, 0), 0);
  ASSERT_EQ(su_standin_fail("SUModelGetNumGroupDefinitions", SU_ERROR_SERIALIZATION, 2), 1);
  EXPECT_EQ(SUModelGetNumGroupDefinitions(model, &count), SU_ERROR_NONE);
  count = 42;
  EXPECT_EQ(SUModelGetNumGroupDefinitions(model, &count), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(count, 42u);
  EXPECT_EQ(SUModelGetNumGroupDefinitions(model, &count), SU_ERROR_NONE);
  EXPECT_EQ(su_standin_calls("SUModelGetNumGroupDefinitions"), 4u);
  ASSERT_EQ(su_standin_fail("SUModelGetEntities", SU_ERROR_GENERIC, 0), 1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(SUModelGetEntities(model, &top), SU_ERROR_GENERIC);
  su_standin_reset();
  EXPECT_EQ(su_standin_calls("SUModelGetEntities"), 0u);
  EXPECT_EQ(SUModelGetEntities(model, &top), SU_ERROR_NONE);
  su_standin_model_release(model);
}

}  // namespace
