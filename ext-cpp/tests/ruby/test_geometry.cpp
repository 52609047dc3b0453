#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include <quillmark/geom/geom_transformation.h>
#include <quillmark/ruby/ruby_geometry.h>
#include <quillmark/ruby/ruby_handles.h>
#include "bridge_test_util.h"

using qmtest::eval;
using qmtest::let;
using qmtest::raised_by;
using qmtest::truthy;

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double INF = std::numeric_limits<double>::infinity();
const Geom::Vector3 SENTINEL(-7.0, -7.0, -7.0);

// Equal, counting NaN as equal to NaN: an outcome table holds both.
bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

::testing::AssertionResult same_vector(Geom::Vector3 const& a, Geom::Vector3 const& e) {
  if (same(a.x, e.x) && same(a.y, e.y) && same(a.z, e.z)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure()
         << a.x << " " << a.y << " " << a.z << " != " << e.x << " " << e.y << " " << e.z;
}

::testing::AssertionResult same_matrix(Geom::Transformation const& a,
                                       Geom::Transformation const& e) {
  for (int k = 0; k < 16; ++k) {
    if (!same(a.data()[k], e.data()[k]))
      return ::testing::AssertionFailure()
             << "element " << k << ": " << a.data()[k] << " != " << e.data()[k];
  }
  return ::testing::AssertionSuccess();
}

double random_coordinate(std::mt19937& rng) {
  return std::ldexp(std::uniform_real_distribution<double>(-1.0, 1.0)(rng),
                    std::uniform_int_distribution<int>(-20, 20)(rng));
}

Geom::Vector3 random_vector(std::mt19937& rng) {
  return Geom::Vector3(random_coordinate(rng), random_coordinate(rng), random_coordinate(rng));
}

// What the interpreter raises, in its own words, for an error written "Class|x" (what
// `$v.x` raises) or "Class|f:code" (what rb_num2dbl raises for the value of code); any other
// text is the expected error itself.
std::string expected_error(const char* written) {
  std::string expected = written;
  std::size_t const bar = expected.find('|');
  if (bar == std::string::npos) return expected;
  std::string const how = expected.substr(bar + 1), error_class = expected.substr(0, bar) + ": ";
  expected = how == "x" ? qmtest::interpreter_error("$v", "x")
                        : qmtest::float_conversion_error(how.substr(2).c_str());
  EXPECT_EQ(expected.rfind(error_class, 0), 0u) << written << ": " << expected;
  return expected;
}

}  // namespace

// Every type there and back: exact without a factor. The 2 forms multiply lengths by the
// factor one way, computed as the test computes it, and divide the other way; there and back
// with 1/f returns the input up to the two roundings. Of a transformation only the
// translation (elements 12 to 14) is a length.
TEST(GeometryRoundTrip, EveryTypeThereAndBackAgain) {
  std::mt19937 rng(11);
  for (int round = 0; round < qmtest::rounds(200); ++round) {
    SCOPED_TRACE(round);
    double const f = std::ldexp(1.0 + (rng() % 1000) / 1000.0, static_cast<int>(rng() % 9) - 4);
    Geom::Vector3 const v = random_vector(rng), w = round == 0 ? v : random_vector(rng);
    struct {
      VALUE value;
      const char* check;
      Geom::Vector3 expected;
    } const made[] = {{RU::point_to_value(v), "$v.instance_of?(Geom::Point3d)", v},
                      {RU::vector_to_value(v), "$v.instance_of?(Geom::Vector3d)", v},
                      {RU::point_to_value2(v, f), "$v.instance_of?(Geom::Point3d)", v * f},
                      {RU::vector_to_value2(v, f), "$v.instance_of?(Geom::Vector3d)", v * f}};
    Geom::Vector3 back;
    for (auto const& m : made) {
      let("$v", m.value);
      ASSERT_TRUE(truthy(m.check)) << m.check;
      back = SENTINEL;
      RU::value_to_vector(m.value, back);
      ASSERT_TRUE(same_vector(back, m.expected));
    }
    RU::value_to_vector2(made[2].value, back, 1.0 / f);
    ASSERT_NEAR(back.x, v.x, 4e-16 * std::fabs(v.x));
    ASSERT_NEAR(back.y, v.y, 4e-16 * std::fabs(v.y));
    ASSERT_NEAR(back.z, v.z, 4e-16 * std::fabs(v.z));

    Geom::Transformation t, scaled, matrix;
    for (int k = 0; k < 16; ++k) t.data()[k] = random_coordinate(rng);
    scaled = t;
    for (int k = 12; k < 15; ++k) scaled.data()[k] *= f;
    VALUE const ruby = let("$t", RU::transformation_to_value(t));
    VALUE const ruby_scaled = let("$s", RU::transformation_to_value2(t, f));
    ASSERT_TRUE(truthy("$t.instance_of?(Geom::Transformation)"));
    VALUE const elements = let("$a", eval("$t.to_a")), scaled_elements = let("$b", eval("$s.to_a"));
    for (long k = 0; k < 16; ++k) {
      ASSERT_EQ(NUM2DBL(rb_ary_entry(elements, k)), t.data()[k]) << k;
      ASSERT_EQ(NUM2DBL(rb_ary_entry(scaled_elements, k)), scaled.data()[k]) << k;
    }
    RU::value_to_transformation(ruby, matrix);
    ASSERT_TRUE(same_matrix(matrix, t));
    RU::value_to_transformation2(ruby, matrix, f);
    ASSERT_TRUE(same_matrix(matrix, scaled));
    RU::value_to_transformation2(ruby_scaled, matrix, 1.0 / f);
    for (int k = 0; k < 16; ++k)
      ASSERT_NEAR(matrix.data()[k], t.data()[k], 4e-16 * std::fabs(t.data()[k]));

    // Boxes, the first of one point.
    Geom::BoundingBox3 const box(
        Geom::Vector3(std::fmin(v.x, w.x), std::fmin(v.y, w.y), std::fmin(v.z, w.z)),
        Geom::Vector3(std::fmax(v.x, w.x), std::fmax(v.y, w.y), std::fmax(v.z, w.z)));
    VALUE const ruby_box = let("$b", RU::bb_to_value(box));
    ASSERT_TRUE(truthy("$b.instance_of?(Geom::BoundingBox) && !$b.empty?"));
    Geom::BoundingBox3 box_back;
    RU::value_to_bb(ruby_box, box_back);
    ASSERT_TRUE(same_vector(box_back.min, box.min) && same_vector(box_back.max, box.max));
    RU::value_to_bb(RU::bb_to_value2(box, f), box_back);
    ASSERT_TRUE(same_vector(box_back.min, box.min * f) && same_vector(box_back.max, box.max * f));
    RU::value_to_bb2(ruby_box, box_back, f);
    ASSERT_TRUE(same_vector(box_back.min, box.min * f) && same_vector(box_back.max, box.max * f));

    // Colours, the first two all 0 and all 255.
    Geom::Color c(static_cast<unsigned char>(rng()), static_cast<unsigned char>(rng()),
                  static_cast<unsigned char>(rng()), static_cast<unsigned char>(rng()));
    if (round < 2) c = round == 0 ? Geom::Color(0, 0, 0, 0) : Geom::Color(255, 255, 255, 255);
    VALUE const ruby_color = let("$c", RU::color_to_value(c));
    let("$e", rb_ary_new_from_args(4, INT2FIX(c.r), INT2FIX(c.g), INT2FIX(c.b), INT2FIX(c.a)));
    ASSERT_TRUE(
        truthy("$c.instance_of?(Sketchup::Color) && [$c.red, $c.green, $c.blue, $c.alpha] == $e"));
    Geom::Color color_back(1, 2, 3, 4);
    RU::value_to_color(ruby_color, color_back);
    ASSERT_EQ(std::memcmp(&color_back, &c, sizeof c), 0);
  }
}

TEST(GeometryVectors, OutcomeOfEveryKindOfInput) {
  eval(
      "class QmXyz; def x; 1; end; def y; 2.5r; end; def z; -3.0; end; end\n"
      "class QmNoXyz < Geom::Point3d; def x; raise 'x read'; end; end\n"
      "class QmBadToA < Geom::Point3d; def to_a; 'xyz'; end; end\n"
      "class QmList < Array; end");
  const Geom::Vector3 S = SENTINEL;
  // Successes first; for failures the error (see expected_error) and what was stored before
  // the raise. Then the safe form: 'y' when it takes the value as value_to_vector does, 'n'
  // when it answers false (with out untouched) instead of raising; it asks only arrays of
  // three Numerics and points and vectors, so QmXyz is refused.
  struct Case {
    const char* expression;
    const char* error;
    Geom::Vector3 left;
    char safe;
  } const cases[] = {
      {"[1.5, -2, 3, :ignored]", "", {1.5, -2, 3}, 'y'},
      {"QmList[4, 5, 6]", "", {4, 5, 6}, 'y'},
      {"[2**53, 1r/4, -0.0]", "", {9007199254740992.0, 0.25, -0.0}, 'y'},
      {"[10**400, -10**400, Float::NAN]", "", {INF, -INF, NaN}, 'y'},
      {"[0.0, 1e-300, -(2**62)]", "", {0, 1e-300, -4611686018427387904.0}, 'y'},
      {"[Float::INFINITY, 1.7272337110188893e-77, 2.0**-255]",
       "",
       {INF, 1.7272337110188893e-77, std::ldexp(1, -255)},
       'y'},
      {"QmXyz.new", "", {1, 2.5, -3}, 'n'},
      {"Geom::Vector3d.new(1, 2, 3)", "", {1, 2, 3}, 'y'},
      {"Geom::Point3d.new(7, 8, 9)", "", {7, 8, 9}, 'y'},
      {"QmNoXyz.new(4, 5, 6)", "", {4, 5, 6}, '-'},  // a point is read through to_a
      {"nil", "NoMethodError|x", S, 'n'},
      {"true", "NoMethodError|x", S, 'n'},
      {"'1, 2, 3'", "NoMethodError|x", S, 'n'},
      {":xyz", "NoMethodError|x", S, 'n'},
      {"Object.new", "NoMethodError|x", S, 'n'},
      {"10**400", "NoMethodError|x", S, 'n'},
      {"Float::NAN", "NoMethodError|x", S, 'n'},
      {"QmBadToA.new", "TypeError: wrong argument type String (expected Array)", S, '-'},
      {"[]", "TypeError|f:nil", S, 'n'},
      {"[1, 2]", "TypeError|f:nil", {1, 2, -7}, 'n'},
      {"[1, nil, 3]", "TypeError|f:nil", {1, -7, -7}, 'n'},
      {"[1, 2, '3']", "TypeError|f:'3'", {1, 2, -7}, 'n'},
      {"['a', 2, 3]", "TypeError|f:'a'", S, 'n'},
      {"[true, 2, 3]", "TypeError|f:true", S, 'n'},
      {"[1, :b, 3]", "TypeError|f::b", {1, -7, -7}, 'n'},
      {"[1, 2, Complex(1, 1)]", "RangeError|f:Complex(1, 1)", {1, 2, -7}, '-'},
  };
  for (Case const& c : cases) {
    Geom::Vector3 out = SENTINEL;
    VALUE value = let("$v", eval(c.expression));
    std::string error = raised_by([&] { RU::value_to_vector(value, out); });
    EXPECT_EQ(error, expected_error(c.error)) << c.expression;
    EXPECT_TRUE(same_vector(out, c.left)) << c.expression;
    if (c.safe == '-') continue;
    bool accepted = c.safe != 'y';
    out = SENTINEL;
    EXPECT_EQ(raised_by([&] { accepted = RU::value_to_vector_safe(value, out); }), "")
        << c.expression;
    EXPECT_EQ(accepted, c.safe == 'y') << c.expression;
    EXPECT_TRUE(same_vector(out, c.safe == 'y' ? c.left : S)) << c.expression;
  }

  VALUE array = let("$a", eval("[0, 1.5, 2, 3r, nil]"));
  Geom::Vector3 out = SENTINEL;
  RU::varry_to_vector2(RARRAY_CONST_PTR(array) + 1, out, -2.0);
  EXPECT_TRUE(same_vector(out, Geom::Vector3(-3, -4, -6)));
  EXPECT_EQ(raised_by([&] { RU::varry_to_vector(RARRAY_CONST_PTR(array) + 2, out); }),
            qmtest::float_conversion_error("nil"));
  EXPECT_TRUE(same_vector(out, Geom::Vector3(2, 3, -6)));
}

TEST(GeometryTransformations, HandsWhatIsNoTransformationToTheHost) {
  // What is no Transformation goes to the host's constructor; this host takes a point as a
  // translation and an Array of 16 as the elements.
  Geom::Transformation out;
  RU::value_to_transformation(eval("Geom::Point3d.new(1, 2, 3)"), out);
  EXPECT_TRUE(same_vector(out.origin, Geom::Vector3(1, 2, 3)) && out.origin.w == 1 &&
              out.data()[0] == 1);
  RU::value_to_transformation(eval("(1..16).to_a"), out);
  EXPECT_TRUE(same_vector(out.origin, Geom::Vector3(13, 14, 15)) && out.origin.w == 16 &&
              out.data()[0] == 1);
  const char* refused[][2] = {
      {"nil", "TypeError: Cannot convert NilClass to Geom::Transformation"},
      {"Object.new", "TypeError: Cannot convert Object to Geom::Transformation"},
      {"[1]", "ArgumentError: Expected an Array of 16 numbers or a point"},
      {"[1] * 15", "ArgumentError: Expected an Array of 16 numbers or a point"},
      {"[1] * 15 + [nil]", "TypeError|f:nil"},
      {"0", "ArgumentError: Scale cannot be zero"},
  };
  for (auto const& r : refused) {
    out.clear();
    VALUE value = let("$v", eval(r[0]));
    EXPECT_EQ(raised_by([&] { RU::value_to_transformation2(value, out, 2.0); }),
              expected_error(r[1]))
        << r[0];
    EXPECT_EQ(out.data()[15], 0.0) << r[0] << ": out must stay untouched";
  }

  // A to_a that goes wrong part-way has written the elements before the bad one.
  eval("class QmPartial < Geom::Transformation; def to_a; a = super; a[5] = 'x'; a; end; end");
  out.clear();
  VALUE partial = let("$v", eval("QmPartial.new((1..16).to_a)"));
  EXPECT_EQ(raised_by([&] { RU::value_to_transformation(partial, out); }),
            qmtest::float_conversion_error("'x'"));
  for (int k = 0; k < 16; ++k) EXPECT_EQ(out.data()[k], k < 5 ? k + 1.0 : 0.0) << k;
}

TEST(GeometryTransformations, AffineFormDividesTheWeightAndChecksTheAxes) {
  const char* P =
      "TypeError: Expected a uniform transformation, where axes are perpendicular to each other.";
  const char* F =
      "TypeError: Expected a non-flat transformation, where axes are non-zero-lengthed.";
  // Each case: changes to the identity by element (column-major), then the error or the
  // changes the result has, "=" when they are the input's.
  eval(
      "def qm_matrix(changes); a = [1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]; changes.each { |k, v| "
      "a[k] = v }; "
      "Geom::Transformation.new(a); end");
  const char* cases[][3] = {
      // Weight 2 over axes of length 2: unit axes and half the translation.
      {"{0=>2, 5=>2, 10=>2, 12=>4, 13=>6, 14=>8, 15=>2}", "", "{12=>2, 13=>3, 14=>4}"},
      {"{12=>1, 15=>-0.5}", "", "{0=>-2, 5=>-2, 10=>-2, 12=>-2}"},
      // Non-uniform and mirrored axes pass unchanged; the projective row is never read.
      {"{0=>2}", "", "="},
      {"{0=>-1, 10=>3, 12=>1, 13=>2, 14=>3}", "", "="},
      {"{3=>9, 7=>9, 11=>9, 12=>1, 13=>2, 14=>3}", "", "{12=>1, 13=>2, 14=>3}"},
      // A weight at or below 1e-6 in size, or NaN, divides nothing.
      {"{12=>5, 15=>1e-7}", "", "{12=>5}"},
      {"{12=>5, 15=>1e-6}", "", "{12=>5}"},
      {"{12=>5, 15=>-1e-6}", "", "{12=>5}"},
      {"{12=>5, 15=>Float::NAN}", "", "{12=>5}"},
      // Perpendicular means |dot| strictly below 0.001, for each pair of axes.
      {"{4=>0.5}", P, ""},
      {"{4=>0.001}", P, ""},
      {"{4=>-0.001}", P, ""},
      {"{4=>0.0009765625}", "", "="},
      {"{8=>0.001}", P, ""},
      {"{9=>0.001}", P, ""},
      {"{9=>Float::NAN}", P, ""},
      // Axes shorter than 1e-6 are flat; exactly 1e-6 is not.
      {"{10=>0}", F, ""},
      {"{0=>0}", F, ""},
      {"{5=>9.9e-7}", F, ""},
      {"{10=>1e7, 15=>1e7}", F, ""},
      {"{10=>1e-6}", "", "="},
      {"{10=>-1e-6}", "", "="},
  };
  for (auto const& c : cases) {
    Geom::Transformation out, expected;
    out.clear();
    expected.clear();  // untouched on error
    auto matrix = [](const char* changes) {
      return eval(("qm_matrix(" + std::string(changes) + ")").c_str());
    };
    VALUE value = let("$t", matrix(c[0]));
    EXPECT_EQ(raised_by([&] { RU::value_to_transformation3(value, out); }), c[1]) << c[0];
    if (*c[1] == '\0') RU::value_to_transformation(matrix(*c[2] == '=' ? c[0] : c[2]), expected);
    EXPECT_TRUE(same_matrix(out, expected)) << c[0];
  }
}

TEST(GeometryTransformations, AffineFormKeepsRigidMotionsWithAnyAxisScales) {
  std::mt19937 rng(3);
  std::uniform_real_distribution<double> angle(-Geom::PI, Geom::PI), scale(0.01, 100.0);
  for (int round = 0; round < qmtest::rounds(100); ++round) {
    Geom::Transformation t =
        Geom::Transformation::rotate(random_vector(rng).normalize(), angle(rng));
    t.x_axis.scale_self(scale(rng) * (rng() % 2 ? 1 : -1));
    t.y_axis.scale_self(scale(rng));
    t.z_axis.scale_self(scale(rng));
    t.origin =
        Geom::Vector4(random_coordinate(rng), random_coordinate(rng), random_coordinate(rng), 1.0);
    double const weight = (round % 3 == 0) ? 1.0 : scale(rng);
    Geom::Transformation weighted = t, out;
    for (Geom::Vector4* column :
         {&weighted.x_axis, &weighted.y_axis, &weighted.z_axis, &weighted.origin})
      column->scale_self(weight);
    weighted.origin.w = weight;
    VALUE ruby = RU::transformation_to_value(weighted);
    ASSERT_EQ(raised_by([&] { RU::value_to_transformation3(ruby, out); }), "") << "round " << round;
    for (int k = 0; k < 16; ++k)
      ASSERT_NEAR(out.data()[k], t.data()[k], 1e-13 * (1.0 + std::fabs(t.data()[k])))
          << round << " element " << k;
  }
}

TEST(GeometryBoxes, EmptyBoxesGetNoAddAndOthersMinThenMax) {
  eval(
      "module QmRecordAdds; def add(*args); $adds << args.map(&:to_a); super; end; end\n"
      "Geom::BoundingBox.prepend(QmRecordAdds)");
  // min and max per case; inverted on one axis, or NaN anywhere, is empty.
  const Geom::Vector3 corners[][2] = {{{1e15, 1e15, 1e15}, {-1e15, -1e15, -1e15}},
                                      {{0, 0, 0}, {1, -1, 1}},
                                      {{0, 0, 2}, {1, 1, 1}},
                                      {{2, 0, 0}, {1, 1, 1}},
                                      {{NaN, 0, 0}, {1, 1, 1}},
                                      {{0, 0, 0}, {1, 1, NaN}},
                                      {{1, 2, 3}, {1, 2, 3}},
                                      {{-1, -2, -3}, {4, 5, 6}}};
  for (auto const& c : corners) {
    bool const empty = !(c[1].x >= c[0].x && c[1].y >= c[0].y && c[1].z >= c[0].z);
    eval("$adds = []");
    let("$b", RU::bb_to_value2(Geom::BoundingBox3(c[0], c[1]), 2.0));
    EXPECT_EQ(truthy("$b.empty?"), empty);
    for (int k = 0; k < 2; ++k)
      let(k == 0 ? "$min" : "$max",
          rb_ary_new_from_args(3, DBL2NUM(2 * c[k].x), DBL2NUM(2 * c[k].y), DBL2NUM(2 * c[k].z)));
    EXPECT_TRUE(truthy(empty ? "$adds == []" : "$adds == [[$min], [$max]]"))
        << (empty ? "empty" : "full");
  }
  eval("module QmRecordAdds; def add(*args); super; end; end; $min = $max = nil");

  // The host's own empty box converts to whatever corners it reports.
  Geom::BoundingBox3 out;
  RU::value_to_bb(eval("Geom::BoundingBox.new"), out);
  EXPECT_TRUE(same_vector(out.min, Geom::Vector3(1e30, 1e30, 1e30)));
  EXPECT_TRUE(same_vector(out.max, Geom::Vector3(-1e30, -1e30, -1e30)));
}

TEST(GeometryBoxes, OnlyBoundingBoxesAreRead) {
  eval(
      "class QmBox < Geom::BoundingBox; end\n"
      "class QmBadMax < Geom::BoundingBox; def max; nil; end; end");
  for (const char* expression : {"nil", "'box'", ":box", "Object.new", "[[0, 0, 0], [1, 1, 1]]",
                                 "Geom::Point3d.new", "10**400"}) {
    Geom::BoundingBox3 out(SENTINEL, SENTINEL);
    VALUE value = let("$v", eval(expression));
    EXPECT_EQ(raised_by([&] { RU::value_to_bb2(value, out, 2.0); }),
              "TypeError: Expected Geom::BoundingBox")
        << expression;
    EXPECT_TRUE(same_vector(out.min, SENTINEL) && same_vector(out.max, SENTINEL)) << expression;
  }
  Geom::BoundingBox3 out;
  RU::value_to_bb(eval("QmBox.new.add([1, 2, 3], [4, 5, 6])"), out);
  EXPECT_TRUE(same_vector(out.min, Geom::Vector3(1, 2, 3)) &&
              same_vector(out.max, Geom::Vector3(4, 5, 6)));

  // A max that cannot be read leaves min written and max as it was.
  out = Geom::BoundingBox3(SENTINEL, SENTINEL);
  VALUE bad = let("$v", eval("QmBadMax.new.add([1, 2, 3])"));
  EXPECT_EQ(raised_by([&] { RU::value_to_bb(bad, out); }), qmtest::interpreter_error("nil", "x"));
  EXPECT_TRUE(same_vector(out.min, Geom::Vector3(1, 2, 3)) && same_vector(out.max, SENTINEL));
}

TEST(GeometryColors, HandsWhatIsNoColorToTheHostAndKeepsTheLowByteOfEachChannel) {
  const Geom::Color U(9, 9, 9, 9), navy(0, 0, 128, 255), rgba(1, 2, 3, 4), wide(44, 255, 9, 9);
  Geom::Color out = U;
  // What is no Color goes to the host's constructor, which converts or raises.
  RU::value_to_color(eval("'Navy'"), out);
  EXPECT_EQ(std::memcmp(&out, &navy, sizeof out), 0);
  RU::value_to_color(eval("[1, 2, 3, 4]"), out);
  EXPECT_EQ(std::memcmp(&out, &rgba, sizeof out), 0);
  out = U;
  EXPECT_EQ(raised_by([&] { RU::value_to_color(Qnil, out); }),
            "TypeError: Cannot convert NilClass to Sketchup::Color");
  EXPECT_EQ(std::memcmp(&out, &U, sizeof out), 0);
  // A channel that does not fit an int raises, in NUM2INT's own words, after the channels
  // before it are stored.
  eval(
      "class QmWideColor < Sketchup::Color; def red; 300; end; def green; -1; end; def blue; "
      "2**40; end; end");
  VALUE const too_wide = let("$v", eval("2**40")), color = let("$c", eval("QmWideColor.new"));
  std::string const expected = raised_by([&] { static_cast<void>(NUM2INT(too_wide)); });
  ASSERT_EQ(expected.rfind("RangeError: ", 0), 0u) << expected;
  EXPECT_EQ(raised_by([&] { RU::value_to_color(color, out); }), expected);
  EXPECT_EQ(std::memcmp(&out, &wide, sizeof out), 0)
      << int(out.r) << " " << int(out.g) << " " << int(out.b);
}
