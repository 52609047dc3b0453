#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "embedded_ruby.h"
#include <quillmark/ruby/ruby_handles.h>

// The expected tables are written out here independently of the implementation's own, in
// the order the cache must fill them, so a swapped row or a wrong name on either side shows.

namespace {

struct ValueSlot {
  VALUE* slot;
  const char* constant;
};

const std::vector<ValueSlot> CLASS_HANDLES = {
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

const std::vector<ValueSlot> GL_HANDLES = {
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

struct FacePointSlot {
  VALUE* slot;
  const char* constant;
  int legacy;
};

const std::vector<FacePointSlot> FACE_POINT_HANDLES = {
    {&RU::SU_FACE_POINT_UNKNOWN, "Sketchup::Face::PointUnknown", 0},
    {&RU::SU_FACE_POINT_INSIDE, "Sketchup::Face::PointInside", 1},
    {&RU::SU_FACE_POINT_ON_VERTEX, "Sketchup::Face::PointOnVertex", 2},
    {&RU::SU_FACE_POINT_ON_EDGE, "Sketchup::Face::PointOnEdge", 4},
    {&RU::SU_FACE_POINT_ON_FACE, "Sketchup::Face::PointOnFace", 8},
    {&RU::SU_FACE_POINT_ON_OUTSIDE, "Sketchup::Face::PointOutside", 16},
    {&RU::SU_FACE_POINT_NOT_ON_PLANE, "Sketchup::Face::PointNotOnPlane", 32},
};

struct IdSlot {
  ID* slot;
  const char* name;
};

// A sample across the cache's 172 names, in its order: the first and the last, setters,
// predicates, bang methods and operators, and the names the bridge itself calls.
const std::vector<IdSlot> METHOD_IDS = {
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

// Returns the cache to its state before the load, so a test can fill it from scratch.
void clear_cache() {
  for (ValueSlot const& h : CLASS_HANDLES) *h.slot = 0;
  for (ValueSlot const& h : GL_HANDLES) *h.slot = 0;
  for (FacePointSlot const& h : FACE_POINT_HANDLES) *h.slot = 0;
  for (IdSlot const& h : METHOD_IDS) *h.slot = 0;
  RU::SU_MAJOR_VERSION = 0;
  RU::SU_IS_64BIT = false;
}

std::string refill() {
  clear_cache();
  return qmtest::raised_by([] { RU::vsu_init_ruby(); });
}

// Each test leaves the host as the harness found it and the cache filled.
class HandleCache : public testing::Test {
 protected:
  void TearDown() override {
    qmtest::eval("HostStandin.reset");
    ASSERT_EQ(refill(), "");
  }
};

size_t filled_count(std::vector<ValueSlot> const& handles) {
  size_t n = 0;
  while (n < handles.size() && *handles[n].slot != 0) ++n;
  for (size_t i = n; i < handles.size(); ++i)
    EXPECT_EQ(*handles[i].slot, VALUE(0)) << handles[i].constant << " filled after a gap";
  return n;
}

void expect_classes_are_the_constants() {
  for (ValueSlot const& h : CLASS_HANDLES)
    EXPECT_EQ(*h.slot, qmtest::eval(h.constant)) << h.constant;
}

TEST_F(HandleCache, EveryClassHandleIsTheObjectOfItsConstant) {
  expect_classes_are_the_constants();
  for (ValueSlot const& h : GL_HANDLES) EXPECT_EQ(*h.slot, qmtest::eval(h.constant)) << h.constant;
  EXPECT_EQ(RU::SU_MAJOR_VERSION, 17);
  EXPECT_TRUE(RU::SU_IS_64BIT);
}

TEST_F(HandleCache, EveryMethodIdIsItsNameInternedInListOrder) {
  for (IdSlot const& h : METHOD_IDS) EXPECT_EQ(*h.slot, rb_intern(h.name)) << h.name;

  // Names the cache interned first carry IDs above the harness's marker, in the order they
  // were interned; they must follow the list's order.
  ID previous = qmtest::marker_before_init;
  const char* previous_name = "(marker)";
  size_t fresh = 0;
  for (IdSlot const& h : METHOD_IDS) {
    if (*h.slot < qmtest::marker_before_init) continue;
    EXPECT_GT(*h.slot, previous) << h.name << " interned before " << previous_name;
    previous = *h.slot;
    previous_name = h.name;
    ++fresh;
  }
  EXPECT_GE(fresh, 3u) << "too few fresh names to check the order";
}

TEST_F(HandleCache, HostBefore9GetsIntegersWithoutLookingForTheConstants) {
  // The stand-in removes the Face::Point* constants for such a host: a lookup would raise.
  qmtest::eval("HostStandin.version = '8.0.4811'");
  ASSERT_EQ(refill(), "");
  EXPECT_EQ(RU::SU_MAJOR_VERSION, 8);
  for (FacePointSlot const& h : FACE_POINT_HANDLES) EXPECT_EQ(*h.slot, INT2FIX(h.legacy));
}

TEST_F(HandleCache, HostFrom9GetsItsOwnConstants) {
  // The host's values equal the legacy Integers, so give them distinct objects to tell the
  // two sources apart.
  qmtest::eval(R"(
    HostStandin.version = '9.0.0'
    $VERBOSE, verbose = nil, $VERBOSE
    HostStandin::FACE_POINT_CONSTANTS.each_key { |c| Sketchup::Face.const_set(c, "host #{c}") }
    $VERBOSE = verbose
  )");
  ASSERT_EQ(refill(), "");
  EXPECT_EQ(RU::SU_MAJOR_VERSION, 9);
  for (FacePointSlot const& h : FACE_POINT_HANDLES)
    EXPECT_EQ(*h.slot, qmtest::eval(h.constant)) << h.constant;
  qmtest::eval(
      "HostStandin::FACE_POINT_CONSTANTS.each_key { |c| Sketchup::Face.send(:remove_const, c) }");
}

TEST_F(HandleCache, Only64BitTrueCounts) {
  struct Case {
    const char* setting;
    bool expected;
  };
  for (Case c : {Case{"true", true}, Case{"1", false}, Case{"'yes'", false}, Case{"false", false},
                 Case{":absent", false}}) {
    qmtest::eval(("HostStandin.is_64bit = " + std::string(c.setting)).c_str());
    RU::SU_IS_64BIT = !c.expected;
    ASSERT_EQ(refill(), "");
    EXPECT_EQ(RU::SU_IS_64BIT, c.expected) << "is_64bit? answering " << c.setting;
  }
}

TEST_F(HandleCache, VersionOutsideInt32Raises) {
  qmtest::eval("HostStandin.version = '4294967296.1'");
  EXPECT_EQ(refill().rfind("RangeError", 0), 0u);
  // Everything up to the version is filled; nothing after it.
  EXPECT_EQ(filled_count(CLASS_HANDLES), CLASS_HANDLES.size());
  EXPECT_NE(RU::INTERN_OP_SUBTRACT, ID(0));
  EXPECT_EQ(filled_count(GL_HANDLES), 0u);
  EXPECT_EQ(RU::SU_FACE_POINT_UNKNOWN, VALUE(0));
}

TEST_F(HandleCache, MissingClassStopsTheFillThere) {
  qmtest::eval("Sketchup.send(:remove_const, :Camera)");
  EXPECT_EQ(refill(), "NameError: uninitialized constant Sketchup::Camera");
  EXPECT_EQ(filled_count(CLASS_HANDLES), 9u);  // rows before Sketchup::Camera
  EXPECT_EQ(RU::INTERN_TO_A, ID(0));
  EXPECT_EQ(RU::SU_MAJOR_VERSION, 0);
  EXPECT_EQ(filled_count(GL_HANDLES), 0u);
  qmtest::eval("module Sketchup; class Camera; end; end");
}

TEST_F(HandleCache, HostClassesAreLookedUpInTheirModuleOnly) {
  // A top-level Camera must not stand in for Sketchup::Camera, nor Object's Point3d for
  // Geom::Point3d.
  qmtest::eval("Sketchup.send(:remove_const, :Camera); ::Camera = Class.new");
  EXPECT_EQ(refill().rfind("NameError", 0), 0u);
  qmtest::eval("Object.send(:remove_const, :Camera); module Sketchup; class Camera; end; end");

  qmtest::eval("::SavedPoint3d = Geom::Point3d; Geom.send(:remove_const, :Point3d); "
               "::Point3d = ::SavedPoint3d");
  EXPECT_EQ(refill(), "NameError: uninitialized constant Geom::Point3d");
  EXPECT_EQ(filled_count(CLASS_HANDLES), 18u);
  qmtest::eval("Geom.const_set(:Point3d, ::SavedPoint3d); "
               "Object.send(:remove_const, :Point3d); Object.send(:remove_const, :SavedPoint3d)");
}

TEST_F(HandleCache, TopLevelRowsFollowAncestors) {
  // LanguageHandler is looked up from Object with ancestors: a constant that Object only
  // inherits from an included module still counts.
  qmtest::eval("::SavedHandler = LanguageHandler; Object.send(:remove_const, :LanguageHandler); "
               "module HostMixin; LanguageHandler = ::SavedHandler; end; "
               "Object.include(HostMixin)");
  EXPECT_EQ(refill(), "");
  EXPECT_EQ(RU::SU_LANGUAGE_HANDLER, qmtest::eval("::SavedHandler"));
  qmtest::eval("HostMixin.send(:remove_const, :LanguageHandler); "
               "Object.const_set(:LanguageHandler, ::SavedHandler); "
               "Object.send(:remove_const, :SavedHandler)");
}

TEST_F(HandleCache, MissingGlConstantStopsTheFillThere) {
  qmtest::eval("::SavedTriangles = GL_TRIANGLES; Object.send(:remove_const, :GL_TRIANGLES)");
  EXPECT_EQ(refill(), "NameError: uninitialized constant GL_TRIANGLES");
  EXPECT_EQ(filled_count(CLASS_HANDLES), CLASS_HANDLES.size());
  EXPECT_EQ(RU::INTERN_OP_SUBTRACT, rb_intern("-"));
  EXPECT_EQ(RU::SU_MAJOR_VERSION, 17);
  EXPECT_EQ(RU::SU_FACE_POINT_NOT_ON_PLANE, INT2FIX(32));
  EXPECT_EQ(filled_count(GL_HANDLES), 4u);  // GL_POINTS to GL_LINE_LOOP
  qmtest::eval("Object.const_set(:GL_TRIANGLES, ::SavedTriangles); "
               "Object.send(:remove_const, :SavedTriangles)");
}

TEST_F(HandleCache, HandlesSurviveCompaction) {
  // Compaction moves every object nothing pins; a handle only a C global points to would
  // then name freed or foreign memory.
  if (!qmtest::compact_and_verify()) GTEST_SKIP() << "this interpreter does not compact";
  expect_classes_are_the_constants();
  VALUE name = rb_funcallv(RU::SU_COLOR, rb_intern("name"), 0, nullptr);
  EXPECT_TRUE(RTEST(rb_equal(name, qmtest::eval("'Sketchup::Color'"))));
}

}  // namespace

namespace {

// Runs in an interpreter started without the host (ctest entry ruby_tests.without_host);
// skipped in the ordinary run, where the harness has already filled the cache.
class WithoutHost : public testing::Test {
 protected:
  void SetUp() override {
    if (qmtest::host_loaded) GTEST_SKIP() << "needs QM_HOST=none";
  }

  static void expect_cache_empty() {
    for (ValueSlot const& h : CLASS_HANDLES) EXPECT_EQ(*h.slot, VALUE(0)) << h.constant;
    for (ValueSlot const& h : GL_HANDLES) EXPECT_EQ(*h.slot, VALUE(0)) << h.constant;
    for (FacePointSlot const& h : FACE_POINT_HANDLES) EXPECT_EQ(*h.slot, VALUE(0)) << h.constant;
    for (IdSlot const& h : METHOD_IDS) EXPECT_EQ(*h.slot, ID(0)) << h.name;
    EXPECT_EQ(RU::SU_MAJOR_VERSION, 0);
    EXPECT_FALSE(RU::SU_IS_64BIT);
  }
};

TEST_F(WithoutHost, TheFillFailsAtTheFirstLookupAndLeavesEveryHandleZero) {
  expect_cache_empty();
  EXPECT_EQ(qmtest::raised_by([] { RU::init_ruby(); }), "NameError: uninitialized constant Sketchup");
  expect_cache_empty();
}

}  // namespace
