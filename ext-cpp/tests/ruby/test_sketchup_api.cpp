// The SDK stand-in on its own: the bridge's tests are only as good as its checks.

#include <gtest/gtest.h>

#include <sketchup_api_standin.h>

#include <cstdint>
#include <cstring>
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
