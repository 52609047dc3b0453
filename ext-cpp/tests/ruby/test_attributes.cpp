#include <gtest/gtest.h>

#include <sketchup_api_standin.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <quillmark/ruby/ruby_attributes.h>
#include <quillmark/ruby/ruby_entities.h>
#include "bridge_test_util.h"

using qmtest::eval;

namespace {

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

// Makes array an Array of Doubles, with a String ("2") in place of the item at string_at.
void set_array(SUTypedValueRef array, const std::vector<double>& items,
               size_t string_at = SIZE_MAX) {
  std::vector<Value> values(items.size());
  std::vector<SUTypedValueRef> refs;
  for (size_t i = 0; i < items.size(); ++i) {
    if (i == string_at)
      SUTypedValueSetString(values[i].ref(), "2");
    else
      SUTypedValueSetDouble(values[i].ref(), items[i]);
    refs.push_back(values[i].ref());
  }
  ASSERT_EQ(SUTypedValueSetArrayItems(array, refs.size(), refs.data()), SU_ERROR_NONE);
}

std::string number(double d) {
  std::ostringstream text;
  text << std::setprecision(17) << d;
  return text.str();
}

// Every reader on one value, as "int32 int64 double treal bool string vector": each the value
// read, or "E" and the SUResult, with "!" added when the output is not as a failure leaves it
// (untouched; a string null).
std::string read_all(SUTypedValueRef v) {
  std::string out;
  auto show = [&out](SUResult r, bool untouched, std::string const& value) {
    out += r == SU_ERROR_NONE ? value : "E" + std::to_string(r) + (untouched ? "" : "!");
    out += ' ';
  };
  int i32 = 111;
  long long i64 = 222;
  double d = 3.25, t = 4.25;
  bool flag = false;
  SUResult r = RU::csu_typed_value_to_int32_t(v, &i32);
  show(r, i32 == 111, std::to_string(i32));
  r = RU::csu_typed_value_to_int64_t(v, &i64);
  show(r, i64 == 222, std::to_string(i64));
  r = RU::csu_typed_value_to_double(v, &d);
  show(r, d == 3.25, number(d));
  r = RU::csu_typed_value_to_treal(v, &t);
  show(r, t == 4.25, number(t));
  r = RU::csu_typed_value_to_bool(v, &flag);
  show(r, !flag, flag ? "true" : "false");
  char* text = reinterpret_cast<char*>(&flag);
  r = RU::csu_typed_value_to_c_str_utf8(v, &text);
  std::unique_ptr<char[]> owned(text == reinterpret_cast<char*>(&flag) ? nullptr : text);
  show(r, text == nullptr, r == SU_ERROR_NONE ? "'" + std::string(text) + "'" : "");
  Geom::Vector3 vector(9.0, 9.0, 9.0);
  r = RU::csu_typed_value_to_vector3d(v, vector);
  show(r, vector.x == 9.0 && vector.y == 9.0 && vector.z == 9.0,
       number(vector.x) + "," + number(vector.y) + "," + number(vector.z));
  out.pop_back();
  return out;
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
    EXPECT_EQ(su_standin_live_strings(), strings_at_start_)
        << "a reader left a library string behind";
    eval("$am = $ag = nil");
  }

  SUAttributeDictionaryRef add(const char* name, const char* key, int32_t tag) {
    SUAttributeDictionaryRef dictionary = su_standin_add_dictionary(entity_, name);
    Value value;
    SUTypedValueSetInt32(value.ref(), tag);
    EXPECT_EQ(su_standin_dictionary_set(dictionary, key, value.ref()), SU_ERROR_NONE);
    return dictionary;
  }

  // The Int32 under "k" in the first dictionary named "quill", or the code of the failure.
  std::string tag_in_quill() {
    Value value;
    const SUResult r = RU::csu_entity_get_attribute(entity_, "quill", "k", value.out());
    if (r != SU_ERROR_NONE) return "E" + std::to_string(r);
    const std::string read = read_all(value.ref());
    return read.substr(0, read.find(' '));
  }

  SUEntityRef entity_ = SU_INVALID;
  size_t strings_at_start_ = 0;
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
  EXPECT_EQ(tag_in_quill(), "E9");  // SU_ERROR_NO_DATA
  add("other", "k", 1);
  add("quill", "j", 2);
  add("quill", "k", 3);
  EXPECT_EQ(tag_in_quill(), "E9") << "a missing key is the SDK's answer, passed on";
}

// With two dictionaries named "quill", each holding "k": a failing list call stops the search
// with its code; a dictionary whose name cannot be read is passed over (the second answers),
// and with no name readable nothing matches. Sizes no allocation can hold (the byte size
// overflows, SIZE_MAX's terminator wraps it to 0, or malloc answers null for 2^61 bytes) give
// RU::ALLOCATION_FAILED where the readers used to end the host; a name that cannot be copied
// stops the search, it is no missing name. Sizes at or above 2^63 would reach malloc only as
// "negative" requests, which valgrind reports as errors.
TEST_F(Attributes, TheSearchPassesOnFailuresAndSkipsUnreadableNames) {
  add("quill", "k", 1);
  add("quill", "k", 2);
  const struct {
    const char* function;
    size_t nth, size;  // a size of 0: the call fails with SU_ERROR_OUT_OF_RANGE instead
    const char* tag;
  } cases[] = {
      {"SUEntityGetNumAttributeDictionaries", 1, 0, "E8"},
      {"SUEntityGetAttributeDictionaries", 1, 0, "E8"},
      {"SUStringCreate", 1, 0, "E8"},
      {"SUAttributeDictionaryGetValue", 1, 0, "E8"},
      {"SUAttributeDictionaryGetName", 1, 0, "2"},
      {"SUStringGetUTF8Length", 1, 0, "2"},
      {"SUStringGetUTF8", 1, 0, "2"},
      {"SUAttributeDictionaryGetName", 0, 0, "E9"},
      {"SUEntityGetNumAttributeDictionaries", 0, SIZE_MAX, "E11"},
      {"SUEntityGetNumAttributeDictionaries", 0, size_t{1} << 61, "E11"},
      {"SUStringGetUTF8Length", 0, SIZE_MAX, "E11"},
      {"SUStringGetUTF8Length", 0, size_t{1} << 61, "E11"},
  };
  EXPECT_EQ(tag_in_quill(), "1");
  for (auto const& c : cases) {
    su_standin_reset();
    if (c.size == 0)
      su_standin_fail(c.function, SU_ERROR_OUT_OF_RANGE, c.nth);
    else
      su_standin_report_size(c.function, c.size, c.nth);
    EXPECT_EQ(tag_in_quill(), c.tag) << c.function << " " << c.nth << " " << c.size;
    EXPECT_EQ(su_standin_live_strings(), strings_at_start_) << c.function;
  }
  Value text;
  SUTypedValueSetString(text.ref(), "text");
  for (size_t size : {SIZE_MAX, size_t{1} << 61}) {
    su_standin_reset();
    su_standin_report_size("SUStringGetUTF8Length", size, 0);
    EXPECT_EQ(read_all(text.ref()), "E2 E2 E2 E2 E2 E11 E2") << size;
  }
}

// A stored value and what every reader makes of it (E2: SU_ERROR_INVALID_INPUT). The SDK's
// byte is signed; integers widen exactly; floating values truncate toward zero.
using V = SUTypedValueRef;
struct Stored {
  void (*set)(V);
  const char* read;
};

const Stored kStored[] = {
    {[](V) {}, "E2 E2 E2 E2 E2 E2 E2"},
    {[](V v) { SUTypedValueSetByte(v, static_cast<char>(0xFF)); }, "-1 -1 -1 -1 E2 E2 E2"},
    {[](V v) { SUTypedValueSetByte(v, 0x7F); }, "127 127 127 127 E2 E2 E2"},
    {[](V v) { SUTypedValueSetInt16(v, -32768); }, "-32768 -32768 -32768 -32768 E2 E2 E2"},
    {[](V v) { SUTypedValueSetInt32(v, INT32_MIN); },
     "-2147483648 -2147483648 -2147483648 -2147483648 E2 E2 E2"},
    {[](V v) { SUTypedValueSetFloat(v, 2.9f); },
     "2 2 2.9000000953674316 2.9000000953674316 E2 E2 E2"},
    {[](V v) { SUTypedValueSetFloat(v, -3e9f); },
     "-2147483648 -3000000000 -3000000000 -3000000000 E2 E2 E2"},
    {[](V v) { SUTypedValueSetDouble(v, -2.9); },
     "-2 -2 -2.8999999999999999 -2.8999999999999999 E2 E2 E2"},
    {[](V v) { SUTypedValueSetBool(v, true); }, "E2 E2 E2 E2 true E2 E2"},
    {[](V v) {
       const SUColor color = {1, 2, 3, 4};
       SUTypedValueSetColor(v, &color);
     },
     "E2 E2 E2 E2 E2 E2 E2"},
    {[](SUTypedValueRef v) { SUTypedValueSetTime(v, 1700000000); }, "E2 E2 E2 E2 E2 E2 E2"},
    {[](SUTypedValueRef v) { SUTypedValueSetString(v, "gr\xC3\xBC\xC3\x9F"); },
     "E2 E2 E2 E2 E2 'gr\xC3\xBC\xC3\x9F' E2"},
    {[](SUTypedValueRef v) { SUTypedValueSetString(v, ""); }, "E2 E2 E2 E2 E2 '' E2"},
    {[](SUTypedValueRef v) {
       const double xyz[3] = {1.5, -2.5, 3.5};
       SUTypedValueSetVector3d(v, xyz);
     },
     "E2 E2 E2 E2 E2 E2 1.5,-2.5,3.5"},
    {[](SUTypedValueRef v) {
       set_array(v, {4.0, 5.0, 6.0, 7.0});
     },
     "E2 E2 E2 E2 E2 E2 4,5,6"},
    {[](SUTypedValueRef v) {
       set_array(v, {4.0, 5.0});
     },
     "E2 E2 E2 E2 E2 E2 E2"},
    {[](SUTypedValueRef v) { set_array(v, {}); }, "E2 E2 E2 E2 E2 E2 E2"},
};

TEST_F(Attributes, EveryReaderAgainstEveryStoredType) {
  for (const Stored& stored : kStored) {
    Value value;
    stored.set(value.ref());
    EXPECT_EQ(read_all(value.ref()), stored.read);
  }
}

TEST_F(Attributes, FloatingValuesOutOfRangeOrNaNGiveTheMinimum) {
  constexpr long long kMin32 = std::numeric_limits<int>::min(),
                      kMin64 = std::numeric_limits<long long>::min();
  const struct {
    double stored;
    long long as32, as64;
  } cases[] = {
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
      {9223372036854775808.0, kMin32, kMin64},  // 2^63 itself is out of range
      {-9223372036854775808.0, kMin32, kMin64},  // -2^63 is the minimum, exactly
  };
  for (const auto& c : cases) {
    Value value;
    SUTypedValueSetDouble(value.ref(), c.stored);
    const std::string read = read_all(value.ref());
    EXPECT_EQ(read.substr(0, read.find(' ', read.find(' ') + 1)),
              std::to_string(c.as32) + " " + std::to_string(c.as64))
        << c.stored;
  }
}

TEST_F(Attributes, FailingSdkCallsArePassedOnAndOutputsKept) {
  const struct {
    size_t stored;  // a row of kStored
    const char* function;
    const char* read;
  } cases[] = {
      {1, "SUTypedValueGetByte", "E7 E7 E7 E7 E2 E2 E2"},
      {3, "SUTypedValueGetInt16", "E7 E7 E7 E7 E2 E2 E2"},
      {4, "SUTypedValueGetInt32", "E7 E7 E7 E7 E2 E2 E2"},
      {5, "SUTypedValueGetFloat", "E7 E7 E7 E7 E2 E2 E2"},
      {7, "SUTypedValueGetDouble", "E7 E7 E7 E7 E2 E2 E2"},
      {8, "SUTypedValueGetType", "E7 E7 E7 E7 E7 E7 E7"},
      {8, "SUTypedValueGetBool", "E2 E2 E2 E2 E7 E2 E2"},
      {13, "SUTypedValueGetVector3d", "E2 E2 E2 E2 E2 E2 E7"},
      {11, "SUStringCreate", "E2 E2 E2 E2 E2 E7 E2"},
      {11, "SUTypedValueGetString", "E2 E2 E2 E2 E2 E7 E2"},
      {11, "SUStringGetUTF8Length", "E2 E2 E2 E2 E2 E7 E2"},
      {11, "SUStringGetUTF8", "E2 E2 E2 E2 E2 E7 E2"},
      {14, "SUTypedValueGetNumArrayItems", "E2 E2 E2 E2 E2 E2 E7"},
      {14, "SUTypedValueGetArrayItems", "E2 E2 E2 E2 E2 E2 E7"},
  };
  for (const auto& c : cases) {
    Value value;
    kStored[c.stored].set(value.ref());
    su_standin_reset();
    su_standin_fail(c.function, SU_ERROR_SERIALIZATION, 0);
    EXPECT_EQ(read_all(value.ref()), c.read) << c.function;
  }
}

TEST_F(Attributes, StringsComeOutByteForByteAtAnyLength) {
  // Lengths 0 and up, with two-, three- and four-byte sequences mixed in.
  const char* const pieces[] = {"a", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "z"};
  std::string expected;
  for (int round = 0; round < 2600; ++round) {
    Value value;
    SUTypedValueSetString(value.ref(), expected.c_str());
    ASSERT_EQ(read_all(value.ref()), "E2 E2 E2 E2 E2 '" + expected + "' E2")
        << "length " << expected.size();
    expected += pieces[round % 5];
    if (round % 500 == 499) expected += std::string(1000, 'x');
  }
  // The SDK-string form directly.
  SUStringRef string = SU_INVALID;
  ASSERT_EQ(SUStringCreateFromUTF8(&string, expected.c_str()), SU_ERROR_NONE);
  char* text = nullptr;
  ASSERT_EQ(RU::csu_to_c_str_utf8(string, &text), SU_ERROR_NONE);
  std::unique_ptr<char[]> owned(text);
  EXPECT_EQ(std::string(text), expected);
  SUStringRelease(&string);
}

TEST_F(Attributes, AnArrayItemThatIsNoDoubleStopsTheReadAfterTheItemsBeforeIt) {
  for (size_t bad = 0; bad < 3; ++bad) {
    Value value;
    set_array(value.ref(), {10.0, 11.0, 12.0}, bad);
    Geom::Vector3 partial(9.0, 9.0, 9.0);
    EXPECT_EQ(RU::csu_typed_value_to_vector3d(value.ref(), partial), SU_ERROR_NO_DATA)
        << "bad item " << bad;
    const double* components = &partial.x;
    for (size_t i = 0; i < 3; ++i)
      EXPECT_EQ(components[i], i < bad ? 10.0 + i : 9.0) << "bad " << bad << " item " << i;
  }
}

// The SDK stand-in's string copy, as strict as these tests need it: a reader that passed a
// wrong size or reused a live reference would otherwise go unnoticed.
TEST(SketchupApi, Utf8CopyHonoursTheBufferSizeAndRefusesMisuse) {
  const size_t live = su_standin_live_strings();
  SUStringRef string = SU_INVALID;
  ASSERT_EQ(SUStringCreateFromUTF8(&string, "hello"), SU_ERROR_NONE);
  EXPECT_EQ(SUStringCreate(&string), SU_ERROR_OVERWRITE_VALID)
      << "a live reference must not be overwritten";
  for (size_t size = 0; size <= 8; ++size) {
    char buffer[9] = "########";
    size_t copied = 99;
    const size_t expected = size == 0 ? 99 : std::min<size_t>(size - 1, 5);
    EXPECT_EQ(SUStringGetUTF8(string, size, buffer, &copied),
              size == 0 ? SU_ERROR_INSUFFICIENT_SIZE : SU_ERROR_NONE);
    EXPECT_EQ(copied, expected) << size;
    const std::string written = size == 0 ? "" : std::string("hello", expected) + '\0';
    EXPECT_EQ(std::string(buffer, 8), written + std::string(8 - written.size(), '#')) << size;
  }
  ASSERT_EQ(SUStringRelease(&string), SU_ERROR_NONE);
  EXPECT_EQ(SUStringRelease(&string), SU_ERROR_INVALID_INPUT);
  EXPECT_EQ(su_standin_live_strings(), live);
}

}  // namespace
