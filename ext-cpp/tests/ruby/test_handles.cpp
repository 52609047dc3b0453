#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include <quillmark/ruby/ruby_handles.h>
#include "embedded_ruby.h"

// The expected tables are written out here independently of the implementation's own, in
// the order the cache must fill them, so a swapped row or a wrong name on either side shows.

namespace {

template <class T>
struct Slot {
  T* slot;
  const char* name;
};

const std::vector<Slot<VALUE>> CLASSES = {
    {&RU::SU_SKETCHUP, "Sketchup"},
    {&RU::SU_COLOR, "Sketchup::Color"},
    {&RU::SU_GROUP, "Sketchup::Group"},
    {&RU::SU_ENTITIES, "Sketchup::Entities"},
    {&RU::SU_ENTITY, "Sketchup::Entity"},
    {&RU::SU_DRAWING_ELEMENT, "Sketchup::Drawingelement"},
    {&RU::SU_COMPONENT_INSTANCE, "Sketchup::ComponentInstance"},
    {&RU::SU_COMPONENT_DEFINITION, "Sketchup::ComponentDefinition"},
    {&RU::SU_MODEL, "Sketchup::Model"},
    {&RU::SU_CAMERA, "Sketchup::Camera"},
    {&RU::SU_TEXT, "Sketchup::Text"},
    {&RU::SU_FACE, "Sketchup::Face"},
    {&RU::SU_EDGE, "Sketchup::Edge"},
    {&RU::SU_CONSTRUCTION_POINT, "Sketchup::ConstructionPoint"},
    {&RU::SU_CONSTRUCTION_LINE, "Sketchup::ConstructionLine"},
    {&RU::SU_MATERIAL, "Sketchup::Material"},
    {&RU::SU_LANGUAGE_HANDLER, "LanguageHandler"},
    {&RU::SU_GEOM, "Geom"},
    {&RU::SU_POINT3D, "Geom::Point3d"},
    {&RU::SU_VECTOR3D, "Geom::Vector3d"},
    {&RU::SU_TRANSFORMATION, "Geom::Transformation"},
    {&RU::SU_BOUNDING_BOX, "Geom::BoundingBox"},
    {&RU::SU_POLYGON_MESH, "Geom::PolygonMesh"},
};

// A sample across the cache's 172 names, in its order: the first and the last, setters,
// predicates, bang methods and operators, and the names the bridge itself calls.
const std::vector<Slot<ID>> IDS = {
    {&RU::INTERN_TO_A, "to_a"},
    {&RU::INTERN_INSPECT, "inspect"},
    {&RU::INTERN_SRED, "red="},
    {&RU::INTERN_TPERSPECTIVE, "perspective?"},
    {&RU::INTERN_PICKRAY, "pickray"},
    {&RU::INTERN_ENTITYID, "entityID"},
    {&RU::INTERN_POLYGON_POINTS_AT, "polygon_points_at"},
    {&RU::INTERN_EMOVE, "move!"},
    {&RU::INTERN_EERASE, "erase!"},
    {&RU::INTERN_IS_64BIT, "is_64bit?"},
    {&RU::INTERN_TRANSFORM_BY_VECTORS, "transform_by_vectors"},
    {&RU::INTERN_SKPDOC, "skpdoc"},
    {&RU::INTERN_OP_SQUARE_BRACKETS, "[]"},
    {&RU::INTERN_OP_ASTERISKS, "*"},
    {&RU::INTERN_OP_ADD, "+"},
    {&RU::INTERN_OP_SUBTRACT, "-"},
};

struct FacePoint {
  VALUE* slot;
  const char* name;
  int legacy;
};
const std::vector<FacePoint> FACE_POINTS = {
    {&RU::SU_FACE_POINT_UNKNOWN, "PointUnknown", 0},
    {&RU::SU_FACE_POINT_INSIDE, "PointInside", 1},
    {&RU::SU_FACE_POINT_ON_VERTEX, "PointOnVertex", 2},
    {&RU::SU_FACE_POINT_ON_EDGE, "PointOnEdge", 4},
    {&RU::SU_FACE_POINT_ON_FACE, "PointOnFace", 8},
    {&RU::SU_FACE_POINT_ON_OUTSIDE, "PointOutside", 16},
    {&RU::SU_FACE_POINT_NOT_ON_PLANE, "PointNotOnPlane", 32},
};

const std::vector<Slot<VALUE>> GL = {
    {&RU::SU_GL_POINTS, "GL_POINTS"},
    {&RU::SU_GL_LINES, "GL_LINES"},
    {&RU::SU_GL_LINE_STRIP, "GL_LINE_STRIP"},
    {&RU::SU_GL_LINE_LOOP, "GL_LINE_LOOP"},
    {&RU::SU_GL_TRIANGLES, "GL_TRIANGLES"},
    {&RU::SU_GL_TRIANGLE_STRIP, "GL_TRIANGLE_STRIP"},
    {&RU::SU_GL_TRIANGLE_FAN, "GL_TRIANGLE_FAN"},
    {&RU::SU_GL_QUADS, "GL_QUADS"},
    {&RU::SU_GL_QUAD_STRIP, "GL_QUAD_STRIP"},
    {&RU::SU_GL_POLYGON, "GL_POLYGON"},
};

// How many rows from the start are filled; a filled row after an empty one fails the test.
template <class Rows>
size_t filled(Rows const& rows) {
  size_t n = 0;
  while (n < rows.size() && *rows[n].slot != 0) ++n;
  for (size_t i = n; i < rows.size(); ++i)
    EXPECT_EQ(*rows[i].slot, 0u) << rows[i].name << " filled after a gap";
  return n;
}

void clear_cache() {
  for (auto const& h : CLASSES) *h.slot = 0;
  for (auto const& h : GL) *h.slot = 0;
  for (auto const& h : FACE_POINTS) *h.slot = 0;
  for (auto const& h : IDS) *h.slot = 0;
  RU::SU_MAJOR_VERSION = 0;
  RU::SU_IS_64BIT = false;
}

std::string refill() {
  clear_cache();
  return qmtest::raised_by([] { RU::vsu_init_ruby(); });
}

void expect_rows_are_the_constants(std::vector<Slot<VALUE>> const& rows) {
  for (auto const& h : rows) EXPECT_EQ(*h.slot, qmtest::eval(h.name)) << h.name;
}

// Each test leaves the host as the harness found it and the cache filled.
class HandleCache : public testing::Test {
 protected:
  void TearDown() override {
    qmtest::eval("HostStandin.reset");
    ASSERT_EQ(refill(), "");
  }
};

TEST_F(HandleCache, EveryHandleIsTheObjectOfItsConstantAndEveryIdItsName) {
  expect_rows_are_the_constants(CLASSES);
  expect_rows_are_the_constants(GL);
  EXPECT_EQ(RU::SU_MAJOR_VERSION, 17);
  EXPECT_TRUE(RU::SU_IS_64BIT);
  for (auto const& h : IDS) EXPECT_EQ(*h.slot, rb_intern(h.name)) << h.name;

  // Names the cache interned first carry IDs above the harness's marker, in the order they
  // were interned; they must follow the list's order.
  ID previous = qmtest::marker_before_init;
  size_t fresh = 0;
  for (auto const& h : IDS) {
    if (*h.slot < qmtest::marker_before_init) continue;
    EXPECT_GT(*h.slot, previous) << h.name << " interned out of order";
    previous = *h.slot;
    ++fresh;
  }
  EXPECT_GE(fresh, 3u) << "too few fresh names to check the order";
}

TEST_F(HandleCache, FacePointsAreIntegersBefore9AndTheHostsConstantsFrom9) {
  // The stand-in removes the constants for an older host: a lookup would raise.
  qmtest::eval("HostStandin.version = '8.0.4811'");
  ASSERT_EQ(refill(), "");
  EXPECT_EQ(RU::SU_MAJOR_VERSION, 8);
  for (auto const& h : FACE_POINTS) EXPECT_EQ(*h.slot, INT2FIX(h.legacy)) << h.name;
  // The host's values equal the legacy Integers: distinct objects tell the two sources apart.
  qmtest::eval(R"(
    HostStandin.version = '9.0.0'
    $VERBOSE, verbose = nil, $VERBOSE
    HostStandin::FACE_POINT_CONSTANTS.each_key { |c| Sketchup::Face.const_set(c, "host #{c}") }
    $VERBOSE = verbose
  )");
  ASSERT_EQ(refill(), "");
  EXPECT_EQ(RU::SU_MAJOR_VERSION, 9);
  for (auto const& h : FACE_POINTS)
    EXPECT_EQ(*h.slot, qmtest::eval(("Sketchup::Face::" + std::string(h.name)).c_str())) << h.name;
  qmtest::eval(
      "HostStandin::FACE_POINT_CONSTANTS.each_key { |c| Sketchup::Face.send(:remove_const, c) }");
}

TEST_F(HandleCache, Only64BitTrueCounts) {
  for (auto setting : {"true", "1", "'yes'", "false", ":absent"}) {
    bool const expected = std::string(setting) == "true";
    qmtest::eval(("HostStandin.is_64bit = " + std::string(setting)).c_str());
    RU::SU_IS_64BIT = !expected;
    ASSERT_EQ(refill(), "");
    EXPECT_EQ(RU::SU_IS_64BIT, expected) << "is_64bit? answering " << setting;
  }
}

// A host that breaks one row: the fill raises there, everything before it is filled and
// nothing after it. Classes in a module are looked up there only (no top-level stand-in);
// top-level rows follow Object's ancestors.
TEST_F(HandleCache, TheFillStopsAtTheFirstRowItCannotRead) {
  const size_t all = CLASSES.size(), ids = IDS.size(), faces = FACE_POINTS.size();
  struct Case {
    const char* breaks;
    const char* repairs;
    const char* error;  // a prefix of what the fill raises; "" when it raises nothing
    size_t classes, ids;
    int version;
    size_t faces, gl;
  } const cases[] = {
      {"Sketchup.send(:remove_const, :Camera)", "module Sketchup; class Camera; end; end",
       "NameError: uninitialized constant Sketchup::Camera", 9, 0, 0, 0, 0},
      {"Sketchup.send(:remove_const, :Camera); ::Camera = Class.new",
       "Object.send(:remove_const, :Camera); module Sketchup; class Camera; end; end", "NameError",
       9, 0, 0, 0, 0},
      {"$saved = Geom::Point3d; Geom.send(:remove_const, :Point3d); ::Point3d = $saved",
       "Geom.const_set(:Point3d, $saved); Object.send(:remove_const, :Point3d)",
       "NameError: uninitialized constant Geom::Point3d", 18, 0, 0, 0, 0},
      {"$saved = LanguageHandler; Object.send(:remove_const, :LanguageHandler); "
       "module HostMixin; LanguageHandler = $saved; end; Object.include(HostMixin)",
       "HostMixin.send(:remove_const, :LanguageHandler); Object.const_set(:LanguageHandler, "
       "$saved)",
       "", all, ids, 17, faces, GL.size()},
      {"HostStandin.version = '4294967296.1'", "HostStandin.reset", "RangeError", all, ids, 0, 0,
       0},
      {"$saved = GL_TRIANGLES; Object.send(:remove_const, :GL_TRIANGLES)",
       "Object.const_set(:GL_TRIANGLES, $saved)", "NameError: uninitialized constant GL_TRIANGLES",
       all, ids, 17, faces, 4},
  };
  for (Case const& c : cases) {
    qmtest::eval(c.breaks);
    std::string const error = refill();
    EXPECT_EQ(*c.error ? error.substr(0, std::strlen(c.error)) : error, c.error) << c.breaks;
    EXPECT_EQ(filled(CLASSES), c.classes) << c.breaks;
    EXPECT_EQ(filled(IDS), c.ids) << c.breaks;
    EXPECT_EQ(RU::SU_MAJOR_VERSION, c.version) << c.breaks;
    EXPECT_EQ(filled(FACE_POINTS), c.faces) << c.breaks;
    EXPECT_EQ(filled(GL), c.gl) << c.breaks;
    if (c.classes == all) expect_rows_are_the_constants(CLASSES);
    qmtest::eval(c.repairs);
  }
  qmtest::eval("$saved = nil");
}

TEST_F(HandleCache, HandlesSurviveCompaction) {
  // Compaction moves every object nothing pins; a handle only a C global points to would
  // then name freed or foreign memory.
  bool const compacts = RTEST(qmtest::eval("GC.respond_to?(:compact)"));
  // The build must agree with the interpreter, or the compaction passes compact nothing.
  ASSERT_EQ(qmtest::compact_and_verify(), compacts);
  if (!compacts) GTEST_SKIP() << "this interpreter does not compact";
  expect_rows_are_the_constants(CLASSES);
  VALUE name = rb_funcallv(RU::SU_COLOR, rb_intern("name"), 0, nullptr);
  EXPECT_TRUE(RTEST(rb_equal(name, qmtest::eval("'Sketchup::Color'"))));
}

// Runs in an interpreter started without the host (ctest entry ruby_tests.without_host);
// skipped in the ordinary run, where the harness has already filled the cache.
TEST(WithoutHost, TheFillFailsAtTheFirstLookupAndLeavesEveryHandleZero) {
  if (qmtest::host_loaded) GTEST_SKIP() << "needs QM_HOST=none";
  for (int pass = 0; pass < 2; ++pass) {
    EXPECT_EQ(filled(CLASSES) + filled(IDS) + filled(FACE_POINTS) + filled(GL), 0u);
    EXPECT_EQ(RU::SU_MAJOR_VERSION, 0);
    EXPECT_FALSE(RU::SU_IS_64BIT);
    if (pass == 0) {
      EXPECT_EQ(qmtest::raised_by([] { RU::init_ruby(); }),
                "NameError: uninitialized constant Sketchup");
    }
  }
}

}  // namespace
