#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bridge_test_util.h"
#include "ruby_strings.h"

using qmtest::bytes_of;
using qmtest::eval;
using qmtest::let;
using qmtest::raised;
using qmtest::raised_by;
using qmtest::truthy;

namespace {

struct WideDeleter {
  void operator()(wchar_t* p) const { delete[] p; }
};
using WideString = std::unique_ptr<wchar_t[], WideDeleter>;

// A random scalar value other than 0, weighted so that every UTF-8 length shows up often.
wchar_t random_scalar(std::mt19937& rng) {
  static const std::uint32_t LIMITS[] = {0x80, 0x800, 0x10000, 0x110000};
  std::uint32_t limit = LIMITS[rng() % 4];
  for (;;) {
    std::uint32_t code = 1 + rng() % (limit - 1);
    if (code < 0xD800 || code > 0xDFFF) return static_cast<wchar_t>(code);
  }
}

// The same code points packed by the interpreter itself, as the reference for our encoder.
VALUE packed_by_ruby(std::vector<wchar_t> const& units) {
  VALUE codes = let("$codes", rb_ary_new_capa(static_cast<long>(units.size())));
  for (wchar_t unit : units) rb_ary_push(codes, UINT2NUM(static_cast<std::uint32_t>(unit)));
  return eval("$codes.pack('U*')");
}

// Converts with value_to_wc_str, or answers what it raised: the array never outlives this.
std::vector<wchar_t> wide_of(VALUE value, std::string& error) {
  wchar_t* raw = nullptr;
  error = raised_by([&] { raw = RU::value_to_wc_str(value); });
  std::vector<wchar_t> units;
  if (raw == nullptr) return units;
  WideString owner(raw);
  for (wchar_t const* p = raw; *p != 0; ++p) units.push_back(*p);
  return units;
}

std::vector<wchar_t> codepoints_of(const char* ruby_expression) {
  VALUE string = let("$s", eval(ruby_expression));
  VALUE codes = eval("$s.codepoints");
  std::vector<wchar_t> units;
  for (long i = 0; i < RARRAY_LEN(codes); ++i) {
    units.push_back(static_cast<wchar_t>(NUM2UINT(rb_ary_entry(codes, i))));
  }
  RB_GC_GUARD(string);
  return units;
}

}  // namespace

TEST(StringsToValue, ByteStringsKeepEveryByteAndAreTaggedUtf8) {
  let("$s", RU::to_value(""));
  EXPECT_TRUE(truthy("$s.empty? && $s.encoding == Encoding::UTF_8"));

  // The counted form stops neither at an embedded NUL nor at the end of the text.
  const char with_nul[] = {'a', '\0', 'b', 'c'};
  VALUE counted = let("$s", RU::to_value(with_nul, 3));
  EXPECT_EQ(bytes_of(counted), std::string("a\0b", 3));
  EXPECT_TRUE(truthy("$s.encoding == Encoding::UTF_8"));

  // Bytes are not validated: a broken sequence is still tagged UTF-8.
  let("$s", RU::to_value("caf\xC3"));
  EXPECT_TRUE(truthy("$s.bytesize == 4 && $s.encoding == Encoding::UTF_8 && !$s.valid_encoding?"));

  let("$s", RU::to_value("na\xC3\xAFve"));
  EXPECT_TRUE(truthy("$s == \"na\\u00EFve\" && $s.length == 5"));
}

TEST(StringsToValue, WideStringsMatchTheInterpretersOwnEncoding) {
  // Every boundary of the UTF-8 length classes, then random text across the whole range.
  std::vector<wchar_t> edges = {0x1,    0x7F,   0x80,   0x7FF,   0x800,    0xD7FF,
                                0xE000, 0xFFFD, 0xFFFF, 0x10000, 0x10FFFF, 0x41};
  VALUE made = let("$s", RU::to_value(edges.data(), static_cast<unsigned>(edges.size())));
  EXPECT_EQ(bytes_of(made), bytes_of(packed_by_ruby(edges)));

  std::mt19937 rng(20240611);
  for (int round = 0; round < 200; ++round) {
    std::vector<wchar_t> units(rng() % 40);
    for (wchar_t& unit : units) unit = random_scalar(rng);
    VALUE counted = let("$s", RU::to_value(units.data(), static_cast<unsigned>(units.size())));
    ASSERT_EQ(bytes_of(counted), bytes_of(packed_by_ruby(units))) << "round " << round;
    ASSERT_TRUE(truthy("$s.encoding == Encoding::UTF_8 && $s.valid_encoding? && "
                       "$s.length == $codes.size"));

    // Zero-terminated form of the same text, when it holds no zero unit, says the same.
    units.push_back(0);
    if (std::find(units.begin(), units.end() - 1, 0) == units.end() - 1) {
      ASSERT_EQ(bytes_of(RU::to_value(units.data())), bytes_of(counted));
    }
  }
}

TEST(StringsToValue, WideZeroUnitsEndOrStayAccordingToForm) {
  const wchar_t text[] = {L'a', 0, L'\u00F1', 0x1F600, 0};
  let("$s", RU::to_value(text, 4));
  EXPECT_TRUE(truthy("$s == \"a\\u0000\\u00F1\\u{1F600}\" && $s.length == 4"));
  let("$s", RU::to_value(text));
  EXPECT_TRUE(truthy("$s == 'a'"));
  let("$s", RU::to_value(L""));
  EXPECT_TRUE(truthy("$s.empty? && $s.encoding == Encoding::UTF_8"));
  let("$s", RU::to_value(text, 0));
  EXPECT_TRUE(truthy("$s.empty? && $s.encoding == Encoding::UTF_8"));
}

TEST(StringsToValue, InvalidCodePointsRaiseTheInterpretersError) {
  struct Case {
    std::uint32_t code;
    const char* reference;
  };
  const Case cases[] = {
      {0xD800, "0xD800.chr(Encoding::UTF_8)"},
      {0xDFFF, "0xDFFF.chr(Encoding::UTF_8)"},
      {0x110000, "0x110000.chr(Encoding::UTF_8)"},
      {0xFFFFFFFF, "0xFFFFFFFF.chr(Encoding::UTF_8)"},  // a negative wchar_t
  };
  for (Case const& c : cases) {
    // The bad unit sits after good ones, so a raise that comes late (mid-write) would show
    // as a different error or none.
    const wchar_t text[] = {L'o', L'k', static_cast<wchar_t>(c.code), L'!', 0};
    std::string expected = raised(c.reference);
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(raised_by([&] { RU::to_value(text, 4); }), expected) << std::hex << c.code;
    EXPECT_EQ(raised_by([&] { RU::to_value(text); }), expected) << std::hex << c.code;
  }
}

TEST(StringsValueToWide, RoundTripsTheWholeUnicodeRange) {
  std::mt19937 rng(777);
  std::string error;
  for (int round = 0; round < 200; ++round) {
    std::vector<wchar_t> units(rng() % 50);
    for (wchar_t& unit : units) unit = random_scalar(rng);
    if (round % 4 == 0) {
      // Pure ASCII text goes through a separate path.
      for (wchar_t& unit : units) unit = static_cast<wchar_t>(1 + rng() % 0x7F);
    }
    VALUE string = RU::to_value(units.data(), static_cast<unsigned>(units.size()));
    ASSERT_EQ(wide_of(string, error), units) << "round " << round;
    ASSERT_EQ(error, "");
  }

  EXPECT_EQ(wide_of(eval("\"a\\u00F1b\""), error), (std::vector<wchar_t>{0x61, 0xF1, 0x62}));
  // An empty String gives the terminator alone.
  wchar_t* empty = RU::value_to_wc_str(eval("''"));
  EXPECT_EQ(empty[0], 0);
  delete[] empty;
}

TEST(StringsValueToWide, ReadsCodePointsOfTheStringsOwnEncoding) {
  // Nothing is transcoded: each String answers its own encoding's code points, which for
  // the Unicode encodings are Unicode's and for the others are not.
  const char* strings[] = {
      "'abc'.encode('US-ASCII')",
      "\"a\\u00E9\\u00FF\".encode('ISO-8859-1')",
      "\"a\\u00E9\\u{1F600}\".encode('UTF-16LE')",
      "\"x\\u{10FFFF}y\".encode('UTF-32BE')",
      "\"\\u65E5\\u672C\".encode('Shift_JIS')",
      "\"\\u65E5a\".encode('EUC-JP')",
      "\"\\xE9t\\xE9\".b",
      "'abc'.encode('UTF-16BE')",
  };
  std::string error;
  for (const char* expression : strings) {
    EXPECT_EQ(wide_of(eval(expression), error), codepoints_of(expression)) << expression;
    EXPECT_EQ(error, "") << expression;
  }
  // The reference above is the interpreter's; pin two answers down independently of it.
  EXPECT_EQ(wide_of(eval("\"a\\u00E9\\u00FF\".encode('ISO-8859-1')"), error),
            (std::vector<wchar_t>{0x61, 0xE9, 0xFF}));
  EXPECT_EQ(wide_of(eval("\"\\u65E5\".encode('Shift_JIS')"), error), (std::vector<wchar_t>{0x93FA}));
}

TEST(StringsValueToWide, ConvertsThroughToStrAndRefusesTheRest) {
  eval("class QmTextLike; def to_str; \"h\\u00E9\"; end; end");
  std::string error;
  EXPECT_EQ(wide_of(eval("QmTextLike.new"), error), (std::vector<wchar_t>{L'h', 0xE9}));

  struct Bad {
    const char* expression;
    const char* message;
  };
  const Bad bad[] = {
      {"nil", "TypeError: no implicit conversion of nil into String"},
      {"true", "TypeError: no implicit conversion of true into String"},
      {"42", "TypeError: no implicit conversion of Integer into String"},
      {":sym", "TypeError: no implicit conversion of Symbol into String"},
      {"{}", "TypeError: no implicit conversion of Hash into String"},
      {"Object.new", "TypeError: no implicit conversion of Object into String"},
      // Broken byte sequences: at the start, in the middle, cut short at the end.
      {"\"\\xFFabc\".force_encoding('UTF-8')", "ArgumentError: invalid byte sequence in UTF-8"},
      {"\"ab\\xC3(cd\".force_encoding('UTF-8')", "ArgumentError: invalid byte sequence in UTF-8"},
      {"\"abc\\xE3\\x81\".force_encoding('UTF-8')", "ArgumentError: invalid byte sequence in UTF-8"},
      {"\"\\xD8\\x00\".force_encoding('UTF-16BE')", "ArgumentError: invalid byte sequence in UTF-16BE"},
  };
  for (Bad const& b : bad) {
    EXPECT_TRUE(wide_of(eval(b.expression), error).empty()) << b.expression;
    EXPECT_EQ(error, b.message) << b.expression;
  }
}

TEST(ArrayDeleteFirst, RemovesTheFirstIdenticalValueOnly) {
  VALUE array = let("$a", eval("[1, 2, 1]"));
  EXPECT_EQ(RU::array_delete_first(array, INT2FIX(1)), INT2FIX(0));
  EXPECT_TRUE(truthy("$a == [2, 1]"));
  EXPECT_EQ(RU::array_delete_first(array, INT2FIX(1)), INT2FIX(1));
  EXPECT_TRUE(truthy("$a == [2]"));

  // Identity, not ==: an equal String that is another object matches nothing...
  array = let("$a", eval("['x', :y, nil]"));
  EXPECT_EQ(RU::array_delete_first(array, eval("'x'")), Qnil);
  EXPECT_EQ(RU::array_delete_first(array, eval("1.0")), Qnil);
  EXPECT_TRUE(truthy("$a == ['x', :y, nil]"));
  // ...while the element itself, and immediates by value, do.
  EXPECT_EQ(RU::array_delete_first(array, eval("$a[0]")), INT2FIX(0));
  EXPECT_EQ(RU::array_delete_first(array, Qnil), INT2FIX(1));
  EXPECT_EQ(RU::array_delete_first(array, ID2SYM(rb_intern("y"))), INT2FIX(0));
  EXPECT_TRUE(truthy("$a.empty?"));
  EXPECT_EQ(RU::array_delete_first(array, Qnil), Qnil);

  eval("class QmList < Array; end");
  array = let("$a", eval("QmList[3, 4]"));
  EXPECT_EQ(RU::array_delete_first(array, INT2FIX(4)), INT2FIX(1));
  EXPECT_TRUE(truthy("$a == [3] && $a.is_a?(QmList)"));
}

TEST(ArrayDeleteFirst, AgreesWithIndexAndDeleteAtOnRandomArrays) {
  std::mt19937 rng(99);
  for (int round = 0; round < 300; ++round) {
    VALUE array = let("$a", rb_ary_new());
    long length = static_cast<long>(rng() % 8);
    for (long i = 0; i < length; ++i) rb_ary_push(array, INT2FIX(rng() % 4));
    VALUE item = let("$item", INT2FIX(rng() % 5));
    VALUE expected_index = eval("$expected = $a.dup; i = $expected.index($item); "
                                "$expected.delete_at(i) if i; i");
    ASSERT_EQ(RU::array_delete_first(array, item), expected_index) << "round " << round;
    ASSERT_TRUE(truthy("$a == $expected"));
  }
}

TEST(ArrayDeleteFirst, RefusesWhatIsNotAnArray) {
  const char* values[] = {"nil", "'[1, 2]'", ":a", "{1 => 2}", "1..3", "Object.new"};
  for (const char* expression : values) {
    VALUE value = let("$v", eval(expression));
    VALUE before = let("$before", eval("$v.inspect"));
    EXPECT_EQ(raised_by([&] { RU::array_delete_first(value, INT2FIX(1)); }),
              "TypeError: Expected an Array object!")
        << expression;
    EXPECT_TRUE(truthy("$v.inspect == $before")) << expression;
    RB_GC_GUARD(before);
  }

  // A frozen Array is the interpreter's to refuse, and only when something would change.
  VALUE frozen = let("$a", eval("[1, 2].freeze"));
  EXPECT_EQ(RU::array_delete_first(frozen, INT2FIX(3)), Qnil);
  EXPECT_EQ(raised_by([&] { RU::array_delete_first(frozen, INT2FIX(2)); }).rfind("FrozenError", 0),
            0u);
}
