#include <gtest/gtest.h>

#include <sketchup_api_standin.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "bridge_test_util.h"
#include <quillmark/ruby/ruby_attributes.h>
#include <quillmark/ruby/ruby_entities.h>

using qmtest::eval;

namespace {

struct CharsDeleter {
  void operator()(char* p) const { delete[] p; }
};
using OwnedChars = std::unique_ptr<char[], CharsDeleter>;

// A typed value made through the SDK and released with the test.
class Value {
 public:
  Value() { EXPECT_EQ(SUTypedValueCreate(&ref_), SU_ERROR_NONE); }
  ~Value() { SUTypedValueRelease(&ref_); }
  Value(const Value&) = delete;
  Value& operator=(const Value&) = delete;
  SUTypedValueRef ref() const { return ref_; }
  SUTypedValueRef* out() { return &ref_; }

 private:
  SUTypedValueRef ref_ = SU_INVALID;
};

void set_doubles(SUTypedValueRef array, const std::vector<double>& items) {
  std::vector<std::unique_ptr<Value>> values;
  std::vector<SUTypedValueRef> refs;
  for (double item : items) {
    values.push_back(std::make_unique<Value>());
    SUTypedValueSetDouble(values.back()->ref(), item);
    refs.push_back(values.back()->ref());
  }
  ASSERT_EQ(SUTypedValueSetArrayItems(array, refs.size(), refs.data()), SU_ERROR_NONE);
}

// The attribute tests work on a group that Ruby made, reached the way extension code reaches
// it; the strings the readers create must all be released again.
class Attributes : public ::testing::Test {
 protected:
  void SetUp() override {
    eval("$am = Sketchup::Model.new; $ag = $am.entities.add_group");
    ASSERT_EQ(RU::vsu_to_csu_gci_entity(rb_gv_get("$ag"), &entity_), SU_ERROR_NONE);
    strings_at_start_ = su_standin_live_strings();
    su_standin_reset();
  }
  void TearDown() override {
    su_standin_reset();
    EXPECT_EQ(su_standin_live_strings(), strings_at_start_) << "a reader left a library string behind";
    eval("$am = $ag = nil");
  }

  SUAttributeDictionaryRef add(const char* name, const char* key, int32_t tag) {
    SUAttributeDictionaryRef dictionary = su_standin_add_dictionary(entity_, name);
    Value value;
    SUTypedValueSetInt32(value.ref(), tag);
    EXPECT_EQ(su_standin_dictionary_set(dictionary, key, value.ref()), SU_ERROR_NONE);
    return dictionary;
  }

  SUEntityRef entity_ = SU_INVALID;
  size_t strings_at_start_ = 0;
  char text_marker_ = 0;
};

TEST_F(Attributes, DictionaryIsFoundByExactNameFirstListedWins) {
  SUAttributeDictionaryRef found = SU_INVALID;
  EXPECT_EQ(RU::csu_entity_get_dictionary(entity_, "quill", &found), SU_ERROR_NO_DATA);

  const SUAttributeDictionaryRef upper = add("Quill", "k", 1);
  add("quil", "k", 2);
  add("quill ", "k", 3);
  found.ptr = &found;
  EXPECT_EQ(RU::csu_entity_get_dictionary(entity_, "quill", &found), SU_ERROR_NO_DATA);
  EXPECT_EQ(found.ptr, &found) << "a failed search must leave the output alone";

  const SUAttributeDictionaryRef first = add("quill", "k", 4);
  add("quill", "k", 5);
  ASSERT_EQ(RU::csu_entity_get_dictionary(entity_, "quill", &found), SU_ERROR_NONE);
  EXPECT_EQ(found.ptr, first.ptr);
  ASSERT_EQ(RU::csu_entity_get_dictionary(entity_, "Quill", &found), SU_ERROR_NONE);
  EXPECT_EQ(found.ptr, upper.ptr);
}

TEST_F(Attributes, AttributeComesFromTheFirstDictionaryOfThatName) {
  Value value;
  EXPECT_EQ(RU::csu_entity_get_attribute(entity_, "quill", "k", value.out()), SU_ERROR_NO_DATA);
  add("other", "k", 1);
  EXPECT_EQ(RU::csu_entity_get_attribute(entity_, "quill", "k", value.out()), SU_ERROR_NO_DATA);
  add("quill", "k", 2);
  add("quill", "k", 3);
  ASSERT_EQ(RU::csu_entity_get_attribute(entity_, "quill", "k", value.out()), SU_ERROR_NONE);
  int tag = 0;
  ASSERT_EQ(RU::csu_typed_value_to_int32_t(value.ref(), &tag), SU_ERROR_NONE);
  EXPECT_EQ(tag, 2);
  // A missing key is the SDK's answer, passed on.
  EXPECT_EQ(RU::csu_entity_get_attribute(entity_, "quill", "absent", value.out()), SU_ERROR_NO_DATA);
  su_standin_fail("SUAttributeDictionaryGetValue", SU_ERROR_SERIALIZATION, 0);
  EXPECT_EQ(RU::csu_entity_get_attribute(entity_, "quill", "k", value.out()), SU_ERROR_SERIALIZATION);
}

TEST_F(Attributes, DictionarySearchPassesOnListFailuresAndSkipsUnreadableNames) {
  add("quill", "k", 1);
  add("quill", "k", 2);
  for (const char* function : {"SUEntityGetNumAttributeDictionaries", "SUEntityGetAttributeDictionaries",
                               "SUStringCreate"}) {
    su_standin_reset();
    su_standin_fail(function, SU_ERROR_OUT_OF_RANGE, 1);
    SUAttributeDictionaryRef found = SU_INVALID;
    EXPECT_EQ(RU::csu_entity_get_dictionary(entity_, "quill", &found), SU_ERROR_OUT_OF_RANGE) << function;
    EXPECT_EQ(found.ptr, nullptr) << function;
    EXPECT_EQ(su_standin_live_strings(), strings_at_start_) << function;
  }
  // A dictionary whose name cannot be read is passed over: the second one answers.
  for (const char* function : {"SUAttributeDictionaryGetName", "SUStringGetUTF8Length", "SUStringGetUTF8"}) {
    su_standin_reset();
    su_standin_fail(function, SU_ERROR_OUT_OF_RANGE, 1);
    Value value;
    ASSERT_EQ(RU::csu_entity_get_attribute(entity_, "quill", "k", value.out()), SU_ERROR_NONE) << function;
    int tag = 0;
    ASSERT_EQ(RU::csu_typed_value_to_int32_t(value.ref(), &tag), SU_ERROR_NONE);
    EXPECT_EQ(tag, 2) << function;
    EXPECT_EQ(su_standin_live_strings(), strings_at_start_) << function;
  }
  // And when no name can be read, nothing matches.
  su_standin_reset();
  su_standin_fail("SUAttributeDictionaryGetName", SU_ERROR_OUT_OF_RANGE, 0);
  SUAttributeDictionaryRef found = SU_INVALID;
  EXPECT_EQ(RU::csu_entity_get_dictionary(entity_, "quill", &found), SU_ERROR_NO_DATA);
}

// One stored value of every type, and what each reader must make of it.
struct Stored {
  const char* name;
  void (*set)(SUTypedValueRef);
};

const Stored kStored[] = {
    {"Empty", [](SUTypedValueRef) {}},
    {"Byte", [](SUTypedValueRef v) { SUTypedValueSetByte(v, static_cast<char>(0xFF)); }},
    {"Short", [](SUTypedValueRef v) { SUTypedValueSetInt16(v, -5); }},
    {"Int32", [](SUTypedValueRef v) { SUTypedValueSetInt32(v, -70000); }},
    {"Float", [](SUTypedValueRef v) { SUTypedValueSetFloat(v, 2.9f); }},
    {"Double", [](SUTypedValueRef v) { SUTypedValueSetDouble(v, -2.9); }},
    {"Bool", [](SUTypedValueRef v) { SUTypedValueSetBool(v, true); }},
    {"Color", [](SUTypedValueRef v) {
       const SUColor color = {1, 2, 3, 4};
       SUTypedValueSetColor(v, &color);
     }},
    {"Time", [](SUTypedValueRef v) { SUTypedValueSetTime(v, 1700000000); }},
    {"String", [](SUTypedValueRef v) { SUTypedValueSetString(v, "gr\xC3\xBC\xC3\x9F"); }},
    {"Vector3D", [](SUTypedValueRef v) {
       const double xyz[3] = {1.5, -2.5, 3.5};
       SUTypedValueSetVector3d(v, xyz);
     }},
    {"Array", [](SUTypedValueRef v) { set_doubles(v, {4.0, 5.0, 6.0}); }},
};

// Sizes no allocation can hold (the byte size overflows, SIZE_MAX's terminator wraps it to
// 0, or malloc answers null for 2^61 bytes): RU::ALLOCATION_FAILED, outputs untouched (a
// string output null), where the readers used to end the host. Sizes at or above 2^63 would
// reach malloc only as "negative" requests, which valgrind reports as errors.
TEST_F(Attributes, SizesNoMemoryHoldsFailWithoutTouchingOutputs) {
  add("quill", "k", 1);
  Value text;
  SUTypedValueSetString(text.ref(), "text");
  for (size_t size : {SIZE_MAX, size_t{1} << 61}) {
    su_standin_reset();
    su_standin_report_size("SUEntityGetNumAttributeDictionaries", size, 0);
    SUAttributeDictionaryRef found = SU_INVALID;
    EXPECT_EQ(RU::csu_entity_get_dictionary(entity_, "quill", &found), RU::ALLOCATION_FAILED) << size;
    EXPECT_EQ(found.ptr, nullptr);
    su_standin_reset();
    // The dictionary's name cannot be copied: that stops the search, it is no missing name.
    su_standin_report_size("SUStringGetUTF8Length", size, 0);
    Value value;
    EXPECT_EQ(RU::csu_entity_get_attribute(entity_, "quill", "k", value.out()), RU::ALLOCATION_FAILED) << size;
    char* copy = &text_marker_;
    EXPECT_EQ(RU::csu_typed_value_to_c_str_utf8(text.ref(), &copy), RU::ALLOCATION_FAILED) << size;
    EXPECT_EQ(copy, nullptr);
  }
}

TEST_F(Attributes, EveryReaderAgainstEveryStoredType) {
  const double float_widened = static_cast<double>(2.9f);
  for (const Stored& stored : kStored) {
    Value value;
    stored.set(value.ref());
    const std::string type = stored.name;
    const bool numeric = type == "Byte" || type == "Short" || type == "Int32" || type == "Float" || type == "Double";

    int i32 = 111;
    const SUResult r32 = RU::csu_typed_value_to_int32_t(value.ref(), &i32);
    long long i64 = 222;
    const SUResult r64 = RU::csu_typed_value_to_int64_t(value.ref(), &i64);
    double d = 3.25;
    const SUResult rd = RU::csu_typed_value_to_double(value.ref(), &d);
    double t = 4.25;
    const SUResult rt = RU::csu_typed_value_to_treal(value.ref(), &t);
    if (!numeric) {
      EXPECT_EQ(r32, SU_ERROR_INVALID_INPUT) << type;
      EXPECT_EQ(r64, SU_ERROR_INVALID_INPUT) << type;
      EXPECT_EQ(rd, SU_ERROR_INVALID_INPUT) << type;
      EXPECT_EQ(rt, SU_ERROR_INVALID_INPUT) << type;
      EXPECT_EQ(i32, 111) << type;
      EXPECT_EQ(i64, 222) << type;
      EXPECT_EQ(d, 3.25) << type;
      EXPECT_EQ(t, 4.25) << type;
    } else {
      ASSERT_EQ(r32, SU_ERROR_NONE) << type;
      ASSERT_EQ(r64, SU_ERROR_NONE) << type;
      ASSERT_EQ(rd, SU_ERROR_NONE) << type;
      ASSERT_EQ(rt, SU_ERROR_NONE) << type;
      const double expected = type == "Byte" ? -1.0 : type == "Short" ? -5.0 : type == "Int32" ? -70000.0
                              : type == "Float" ? float_widened : -2.9;
      EXPECT_EQ(d, expected) << type;
      EXPECT_EQ(t, expected) << type;
      const long long truncated = static_cast<long long>(std::trunc(expected));
      EXPECT_EQ(i32, truncated) << type;
      EXPECT_EQ(i64, truncated) << type;
    }

    bool flag = false;
    EXPECT_EQ(RU::csu_typed_value_to_bool(value.ref(), &flag), type == "Bool" ? SU_ERROR_NONE : SU_ERROR_INVALID_INPUT)
        << type;
    EXPECT_EQ(flag, type == "Bool") << type;

    char* text = reinterpret_cast<char*>(&flag);
    const SUResult rs = RU::csu_typed_value_to_c_str_utf8(value.ref(), &text);
    OwnedChars owned(text);
    if (type == "String") {
      ASSERT_EQ(rs, SU_ERROR_NONE);
      EXPECT_STREQ(text, "gr\xC3\xBC\xC3\x9F");
    } else {
      EXPECT_EQ(rs, SU_ERROR_INVALID_INPUT) << type;
      EXPECT_EQ(text, nullptr) << type << ": a failed string read hands out null";
    }

    Geom::Vector3 vector(9.0, 9.0, 9.0);
    const SUResult rv = RU::csu_typed_value_to_vector3d(value.ref(), vector);
    if (type == "Vector3D" || type == "Array") {
      ASSERT_EQ(rv, SU_ERROR_NONE) << type;
      const Geom::Vector3 expected = type == "Array" ? Geom::Vector3(4.0, 5.0, 6.0) : Geom::Vector3(1.5, -2.5, 3.5);
      EXPECT_EQ(vector.x, expected.x);
      EXPECT_EQ(vector.y, expected.y);
      EXPECT_EQ(vector.z, expected.z);
    } else {
      EXPECT_EQ(rv, SU_ERROR_INVALID_INPUT) << type;
      EXPECT_EQ(vector.x, 9.0) << type;
    }
  }
}

TEST_F(Attributes, FloatingValuesTruncateTowardZeroAndOutOfRangeGivesTheMinimum) {
  constexpr int kMin32 = std::numeric_limits<int>::min();
  constexpr long long kMin64 = std::numeric_limits<long long>::min();
  struct Case {
    double stored;
    int as32;
    long long as64;
  };
  const Case cases[] = {
      {2.9, 2, 2},
      {-2.9, -2, -2},
      {1e20, kMin32, kMin64},
      {-1e20, kMin32, kMin64},
      {std::nan(""), kMin32, kMin64},
      {INFINITY, kMin32, kMin64},
      {2147483647.9, 2147483647, 2147483647},
      {2147483648.0, kMin32, 2147483648LL},
      {-2147483648.9, kMin32, -2147483648LL},
      {-2147483649.0, kMin32, -2147483649LL},
      {9223372036854774784.0, kMin32, 9223372036854774784LL},  // the largest double below 2^63
      {9223372036854775808.0, kMin32, kMin64},                 // 2^63 itself is out of range
      {-9223372036854775808.0, kMin32, kMin64},                // -2^63 is the minimum, exactly
  };
  for (const Case& c : cases) {
    Value value;
    SUTypedValueSetDouble(value.ref(), c.stored);
    int i32 = 0;
    long long i64 = 0;
    ASSERT_EQ(RU::csu_typed_value_to_int32_t(value.ref(), &i32), SU_ERROR_NONE);
    ASSERT_EQ(RU::csu_typed_value_to_int64_t(value.ref(), &i64), SU_ERROR_NONE);
    EXPECT_EQ(i32, c.as32) << c.stored;
    EXPECT_EQ(i64, c.as64) << c.stored;
  }
  // A Float goes through the same rule after widening.
  Value value;
  SUTypedValueSetFloat(value.ref(), -2.9f);
  int i32 = 0;
  ASSERT_EQ(RU::csu_typed_value_to_int32_t(value.ref(), &i32), SU_ERROR_NONE);
  EXPECT_EQ(i32, -2);
  SUTypedValueSetFloat(value.ref(), 3e9f);
  ASSERT_EQ(RU::csu_typed_value_to_int32_t(value.ref(), &i32), SU_ERROR_NONE);
  EXPECT_EQ(i32, kMin32);
  long long i64 = 0;
  ASSERT_EQ(RU::csu_typed_value_to_int64_t(value.ref(), &i64), SU_ERROR_NONE);
  EXPECT_EQ(i64, 3000000000LL);
  // Integers widen without loss: the extremes of Short and Int32 come through sign-extended.
  SUTypedValueSetInt16(value.ref(), std::numeric_limits<int16_t>::min());
  ASSERT_EQ(RU::csu_typed_value_to_int64_t(value.ref(), &i64), SU_ERROR_NONE);
  EXPECT_EQ(i64, -32768);
  SUTypedValueSetInt32(value.ref(), kMin32);
  ASSERT_EQ(RU::csu_typed_value_to_int64_t(value.ref(), &i64), SU_ERROR_NONE);
  EXPECT_EQ(i64, kMin32);
  SUTypedValueSetByte(value.ref(), 0x7F);
  ASSERT_EQ(RU::csu_typed_value_to_int32_t(value.ref(), &i32), SU_ERROR_NONE);
  EXPECT_EQ(i32, 127);
}

TEST_F(Attributes, FailingSdkCallsArePassedOnAndOutputsKept) {
  // The getter of the stored type fails: its code comes back and the output is not written.
  const struct {
    const Stored* stored;
    const char* getter;
  } numeric[] = {{&kStored[1], "SUTypedValueGetByte"}, {&kStored[2], "SUTypedValueGetInt16"},
                 {&kStored[3], "SUTypedValueGetInt32"}, {&kStored[4], "SUTypedValueGetFloat"},
                 {&kStored[5], "SUTypedValueGetDouble"}};
  for (const auto& n : numeric) {
    Value value;
    n.stored->set(value.ref());
    su_standin_reset();
    su_standin_fail(n.getter, SU_ERROR_SERIALIZATION, 0);
    int i32 = 7;
    long long i64 = 7;
    double d = 7.0;
    EXPECT_EQ(RU::csu_typed_value_to_int32_t(value.ref(), &i32), SU_ERROR_SERIALIZATION) << n.getter;
    EXPECT_EQ(RU::csu_typed_value_to_int64_t(value.ref(), &i64), SU_ERROR_SERIALIZATION) << n.getter;
    EXPECT_EQ(RU::csu_typed_value_to_double(value.ref(), &d), SU_ERROR_SERIALIZATION) << n.getter;
    EXPECT_EQ(i32, 7);
    EXPECT_EQ(i64, 7);
    EXPECT_EQ(d, 7.0);
  }

  // The type cannot be read: every reader stops there.
  su_standin_reset();
  su_standin_fail("SUTypedValueGetType", SU_ERROR_SERIALIZATION, 0);
  Value value;
  int i32 = 7;
  long long i64 = 7;
  double d = 7.0;
  bool flag = false;
  char* text = reinterpret_cast<char*>(&flag);
  Geom::Vector3 vector(9.0, 9.0, 9.0);
  EXPECT_EQ(RU::csu_typed_value_to_int32_t(value.ref(), &i32), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(RU::csu_typed_value_to_int64_t(value.ref(), &i64), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(RU::csu_typed_value_to_treal(value.ref(), &d), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(RU::csu_typed_value_to_bool(value.ref(), &flag), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(RU::csu_typed_value_to_c_str_utf8(value.ref(), &text), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(RU::csu_typed_value_to_vector3d(value.ref(), vector), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(vector.x, 9.0);

  // The getters behind bool, string and vector reads.
  su_standin_reset();
  SUTypedValueSetBool(value.ref(), true);
  su_standin_fail("SUTypedValueGetBool", SU_ERROR_SERIALIZATION, 0);
  EXPECT_EQ(RU::csu_typed_value_to_bool(value.ref(), &flag), SU_ERROR_SERIALIZATION);
  EXPECT_FALSE(flag);

  const double xyz[3] = {1.0, 2.0, 3.0};
  SUTypedValueSetVector3d(value.ref(), xyz);
  su_standin_fail("SUTypedValueGetVector3d", SU_ERROR_SERIALIZATION, 0);
  EXPECT_EQ(RU::csu_typed_value_to_vector3d(value.ref(), vector), SU_ERROR_SERIALIZATION);
  EXPECT_EQ(vector.x, 9.0);

  SUTypedValueSetString(value.ref(), "text");
  for (const char* function : {"SUStringCreate", "SUTypedValueGetString", "SUStringGetUTF8Length",
                               "SUStringGetUTF8"}) {
    su_standin_reset();
    su_standin_fail(function, SU_ERROR_SERIALIZATION, 0);
    text = reinterpret_cast<char*>(&flag);
    EXPECT_EQ(RU::csu_typed_value_to_c_str_utf8(value.ref(), &text), SU_ERROR_SERIALIZATION) << function;
    EXPECT_EQ(text, nullptr) << function;
    EXPECT_EQ(su_standin_live_strings(), strings_at_start_) << function;
  }
}

TEST_F(Attributes, StringsComeOutByteForByteAtAnyLength) {
  // Lengths 0 and up, with two-, three- and four-byte sequences mixed in.
  const char* const pieces[] = {"a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "z"};
  std::string expected;
  for (int round = 0; round < 2600; ++round) {
    Value value;
    SUTypedValueSetString(value.ref(), expected.c_str());
    char* text = nullptr;
    ASSERT_EQ(RU::csu_typed_value_to_c_str_utf8(value.ref(), &text), SU_ERROR_NONE);
    OwnedChars owned(text);
    ASSERT_NE(text, nullptr);
    ASSERT_EQ(std::strlen(text), expected.size());
    ASSERT_EQ(std::memcmp(text, expected.data(), expected.size() + 1), 0) << "length " << expected.size();
    expected += pieces[round % 5];
    if (round % 500 == 499) expected += std::string(1000, 'x');
  }
  EXPECT_GT(expected.size(), 10000u);

  // The SDK-string form directly.
  SUStringRef string = SU_INVALID;
  ASSERT_EQ(SUStringCreateFromUTF8(&string, expected.c_str()), SU_ERROR_NONE);
  char* text = nullptr;
  ASSERT_EQ(RU::csu_to_c_str_utf8(string, &text), SU_ERROR_NONE);
  OwnedChars owned(text);
  EXPECT_EQ(std::string(text), expected);
  SUStringRelease(&string);
}

TEST_F(Attributes, ArraysGiveTheirFirstThreeDoubles) {
  Value value;
  Geom::Vector3 vector(9.0, 9.0, 9.0);
  set_doubles(value.ref(), {1.0, 2.0});
  EXPECT_EQ(RU::csu_typed_value_to_vector3d(value.ref(), vector), SU_ERROR_INVALID_INPUT);
  set_doubles(value.ref(), {});
  EXPECT_EQ(RU::csu_typed_value_to_vector3d(value.ref(), vector), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(vector.x, 9.0);

  set_doubles(value.ref(), {1.0, 2.0, 3.0, 4.0});
  ASSERT_EQ(RU::csu_typed_value_to_vector3d(value.ref(), vector), SU_ERROR_NONE);
  EXPECT_EQ(vector.x, 1.0);
  EXPECT_EQ(vector.y, 2.0);
  EXPECT_EQ(vector.z, 3.0);

  // An item that is not a Double stops the read with the SDK's code; earlier items stay written.
  for (int bad = 0; bad < 3; ++bad) {
    Value items[3];
    SUTypedValueRef refs[3];
    for (int i = 0; i < 3; ++i) {
      if (i == bad) {
        SUTypedValueSetString(items[i].ref(), "2");
      } else {
        SUTypedValueSetDouble(items[i].ref(), 10.0 + i);
      }
      refs[i] = items[i].ref();
    }
    ASSERT_EQ(SUTypedValueSetArrayItems(value.ref(), 3, refs), SU_ERROR_NONE);
    Geom::Vector3 partial(9.0, 9.0, 9.0);
    EXPECT_EQ(RU::csu_typed_value_to_vector3d(value.ref(), partial), SU_ERROR_NO_DATA) << "bad item " << bad;
    const double* components = &partial.x;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(components[i], i < bad ? 10.0 + i : 9.0) << "bad " << bad << " item " << i;
  }

  set_doubles(value.ref(), {1.0, 2.0, 3.0});
  for (const char* function : {"SUTypedValueGetNumArrayItems", "SUTypedValueGetArrayItems"}) {
    su_standin_reset();
    su_standin_fail(function, SU_ERROR_SERIALIZATION, 0);
    Geom::Vector3 untouched(9.0, 9.0, 9.0);
    EXPECT_EQ(RU::csu_typed_value_to_vector3d(value.ref(), untouched), SU_ERROR_SERIALIZATION) << function;
    EXPECT_EQ(untouched.x, 9.0);
  }
}

}  // namespace
