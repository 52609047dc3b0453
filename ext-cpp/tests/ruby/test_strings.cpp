#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <quillmark/ruby/ruby_strings.h>
#include "bridge_test_util.h"

using qmtest::bytes_of;
using qmtest::eval;
using qmtest::let;
using qmtest::raised_by;
using qmtest::truthy;

namespace {

// A random scalar value other than 0, weighted so that every UTF-8 length shows up often.
wchar_t random_scalar(std::mt19937& rng) {
  static const std::uint32_t LIMITS[] = {0x80, 0x800, 0x10000, 0x110000};
  std::uint32_t limit = LIMITS[rng() % 4];
  for (;;) {
    std::uint32_t code = 1 + rng() % (limit - 1);
    if (code < 0xD800 || code > 0xDFFF) return static_cast<wchar_t>(code);
  }
}

// Converts with value_to_wc_str, or answers what it raised: the array never outlives this.
std::vector<wchar_t> wide_of(VALUE value, std::string& error) {
  wchar_t* raw = nullptr;
  error = raised_by([&] { raw = RU::value_to_wc_str(value); });
  std::vector<wchar_t> units;
  for (wchar_t const* p = raw; p != nullptr && *p != 0; ++p) units.push_back(*p);
  delete[] raw;
  return units;
}

}  // namespace

TEST(StringsToValue, ByteStringsKeepEveryByteAndAreTaggedUtf8) {
  // The counted form stops neither at an embedded NUL nor at the end of the text; bytes are
  // not validated, a broken sequence is still tagged UTF-8.
  EXPECT_EQ(bytes_of(let("$s", RU::to_value("a\0bc", 3))), std::string("a\0b", 3));
  EXPECT_TRUE(truthy("$s.encoding == Encoding::UTF_8"));
  let("$s", RU::to_value("caf\xC3"));
  EXPECT_TRUE(truthy("$s.bytesize == 4 && $s.encoding == Encoding::UTF_8 && !$s.valid_encoding?"));
  let("$s", RU::to_value(""));
  EXPECT_TRUE(truthy("$s.empty? && $s.encoding == Encoding::UTF_8"));
}

TEST(StringsToValue, WideStringsMatchTheInterpretersOwnEncoding) {
  // Every boundary of the UTF-8 length classes first, then random text over the whole range.
  std::vector<wchar_t> units = {0x1,    0x7F,   0x80,   0x7FF,   0x800,    0xD7FF,
                                0xE000, 0xFFFD, 0xFFFF, 0x10000, 0x10FFFF, 0x41};
  std::mt19937 rng(20240611);
  for (int round = 0; round < qmtest::rounds(200); ++round) {
    VALUE codes = let("$codes", rb_ary_new());
    for (wchar_t unit : units) rb_ary_push(codes, UINT2NUM(static_cast<std::uint32_t>(unit)));
    VALUE counted = let("$s", RU::to_value(units.data(), static_cast<unsigned>(units.size())));
    ASSERT_TRUE(truthy(
        "$s == $codes.pack('U*') && $s.encoding == Encoding::UTF_8 && $s.length == $codes.size"))
        << "round " << round;
    units.push_back(0);
    ASSERT_EQ(bytes_of(RU::to_value(units.data())), bytes_of(counted));
    units.resize(rng() % 40);
    for (wchar_t& unit : units) unit = random_scalar(rng);
  }
  // A zero unit ends the terminated form and stays, as one 0 byte, in the counted one.
  const wchar_t text[] = {L'a', 0, 0xF1, 0x1F600, 0};
  let("$s", RU::to_value(text, 4));
  EXPECT_TRUE(truthy("$s == \"a\\u0000\\u00F1\\u{1F600}\" && $s.length == 4"));
  let("$s", RU::to_value(text));
  EXPECT_TRUE(truthy("$s == 'a' && $s.encoding == Encoding::UTF_8"));
}

TEST(StringsToValue, InvalidCodePointsRaiseTheInterpretersError) {
  // 0xFFFFFFFF is a negative wchar_t. The bad unit follows good ones, so a check that came
  // too late (while writing) would show as another error or none.
  for (std::uint32_t code : {0xD800u, 0xDFFFu, 0x110000u, 0xFFFFFFFFu}) {
    const wchar_t text[] = {L'o', L'k', static_cast<wchar_t>(code), L'!', 0};
    std::string expected = qmtest::raised((std::to_string(code) + ".chr(Encoding::UTF_8)").c_str());
    ASSERT_EQ(expected.rfind("RangeError: ", 0), 0u) << expected;
    EXPECT_EQ(raised_by([&] { RU::to_value(text, 4); }), expected);
    EXPECT_EQ(raised_by([&] { RU::to_value(text); }), expected);
  }
}

TEST(StringsValueToWide, RoundTripsTheWholeUnicodeRange) {
  std::mt19937 rng(777);
  std::string error;
  for (int round = 0; round < qmtest::rounds(200); ++round) {
    std::vector<wchar_t> units(rng() % 50);
    // Every fourth text is pure ASCII, which takes a path of its own.
    for (wchar_t& unit : units)
      unit = round % 4 == 0 ? static_cast<wchar_t>(1 + rng() % 0x7F) : random_scalar(rng);
    VALUE string = RU::to_value(units.data(), static_cast<unsigned>(units.size()));
    ASSERT_EQ(wide_of(string, error), units) << "round " << round;
    ASSERT_EQ(error, "");
  }
}

TEST(StringsValueToWide, ReadsCodePointsOfTheStringsOwnEncodingThroughToStr) {
  // Nothing is transcoded: each String gives its own encoding's code points.
  eval("class QmTextLike; def to_str; \"h\\u00E9\"; end; end");
  for (const char* expression :
       {"\"a\\u00E9\\u{1F600}\".encode('UTF-16LE')", "\"x\\u{10FFFF}y\".encode('UTF-32BE')",
        "\"\\u65E5a\".encode('EUC-JP')", "\"\\xE9t\\xE9\".b", "'abc'.encode('UTF-16BE')", "''",
        "QmTextLike.new", "\"a\\u00E9\\u00FF\".encode('ISO-8859-1')",
        "\"\\u65E5\".encode('Shift_JIS')"}) {
    VALUE codes =
        let("$codes", eval(("String(" + std::string(expression) + ").codepoints").c_str()));
    std::vector<wchar_t> expected;
    for (long i = 0; i < RARRAY_LEN(codes); ++i)
      expected.push_back(NUM2INT(rb_ary_entry(codes, i)));
    std::string error;
    EXPECT_EQ(wide_of(eval(expression), error), expected) << expression;
    EXPECT_EQ(error, "") << expression;
  }
}

TEST(StringsValueToWide, RefusesWhatIsNoStringAndBrokenSequences) {
  // What is no String is refused as String#+ refuses it, in this interpreter's words.
  // Broken byte sequences at the start, in the middle and cut short at the end: the array
  // that would have held the result must not leak (the leak-check run sees to that).
  const char* cases[][2] = {
      {"nil", nullptr},
      {"true", nullptr},
      {"10**400", nullptr},
      {":sym", nullptr},
      {"Object.new", nullptr},
      {"\"\\xFFabc\".force_encoding('UTF-8')", "ArgumentError: invalid byte sequence in UTF-8"},
      {"\"ab\\xC3(cd\".force_encoding('UTF-8')", "ArgumentError: invalid byte sequence in UTF-8"},
      {"\"abc\\xE3\\x81\".force_encoding('UTF-8')",
       "ArgumentError: invalid byte sequence in UTF-8"},
      {"\"\\xD8\\x00\".force_encoding('UTF-16BE')",
       "ArgumentError: invalid byte sequence in UTF-16BE"},
  };
  for (auto const& c : cases) {
    std::string const expected =
        c[1] ? c[1] : qmtest::raised(("'' + " + std::string(c[0])).c_str());
    ASSERT_EQ(expected.rfind(c[1] ? "ArgumentError" : "TypeError: no implicit conversion", 0), 0u)
        << expected;
    std::string error;
    EXPECT_TRUE(wide_of(eval(c[0]), error).empty()) << c[0];
    EXPECT_EQ(error, expected) << c[0];
  }
}

TEST(ArrayDeleteFirst, AgreesWithIndexAndDeleteAtOnRandomArrays) {
  std::mt19937 rng(99);
  for (int round = 0; round < qmtest::rounds(300); ++round) {
    VALUE array = let("$a", rb_ary_new());
    for (unsigned i = rng() % 8; i > 0; --i) rb_ary_push(array, INT2FIX(rng() % 4));
    VALUE item = let("$item", INT2FIX(rng() % 5));
    VALUE expected = eval("$b = $a.dup; i = $b.index($item); $b.delete_at(i) if i; i");
    ASSERT_EQ(RU::array_delete_first(array, item), expected) << "round " << round;
    ASSERT_TRUE(truthy("$a == $b"));
  }
}

TEST(ArrayDeleteFirst, MatchesByIdentityAndRefusesWhatIsNotAnArray) {
  // An equal String or (heap) Float that is another object matches nothing; the element
  // itself does, and immediates match by value. Subclasses of Array are accepted.
  eval("class QmList < Array; end");
  VALUE array = let("$a", eval("QmList['x', :y, nil, 1e300]"));
  EXPECT_EQ(RU::array_delete_first(array, eval("'x'")), Qnil);
  EXPECT_EQ(RU::array_delete_first(array, eval("1e300")), Qnil);
  EXPECT_EQ(RU::array_delete_first(array, eval("$a[0]")), INT2FIX(0));
  EXPECT_EQ(RU::array_delete_first(array, Qnil), INT2FIX(1));
  EXPECT_TRUE(truthy("$a == [:y, 1e300] && $a.is_a?(QmList)"));
  // Reading past the end gives nil, which must not pass for a match.
  EXPECT_EQ(RU::array_delete_first(array, Qnil), Qnil);
  EXPECT_TRUE(truthy("$a == [:y, 1e300]"));

  for (const char* expression : {"nil", "'[1, 2]'", ":a", "{1 => 2}", "Object.new"}) {
    VALUE value = let("$v", eval(expression));
    let("$before", eval("$v.inspect"));
    EXPECT_EQ(raised_by([&] { RU::array_delete_first(value, INT2FIX(1)); }),
              "TypeError: Expected an Array object!")
        << expression;
    EXPECT_TRUE(truthy("$v.inspect == $before")) << expression;
  }
  // A frozen Array is the interpreter's to refuse, and only when something would change.
  VALUE frozen = let("$a", eval("[1, 2].freeze"));
  EXPECT_EQ(RU::array_delete_first(frozen, INT2FIX(3)), Qnil);
  std::string const refusal = qmtest::raised("[1, 2].freeze.delete_at(1)");  // FrozenError from 2.5
  ASSERT_NE(refusal.find("frozen"), std::string::npos) << refusal;
  EXPECT_EQ(raised_by([&] { RU::array_delete_first(frozen, INT2FIX(2)); }), refusal);
}
