// The SDK stand-in's string copy, as strict as the bridge's tests need it: a bridge that
// passed a wrong size or reused a live reference would otherwise go unnoticed. Its lists,
// call counts and faults are exercised by the bridge's own tests.

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

}  // namespace
