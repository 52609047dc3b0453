#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "embedded_ruby.h"
#include "ruby_handles.h"

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

const std::vector<IdSlot> METHOD_IDS = {
    {&RU::INTERN_TO_A, "to_a"},
    {&RU::INTERN_TO_I, "to_i"},
    {&RU::INTERN_TO_F, "to_f"},
    {&RU::INTERN_TO_S, "to_s"},
    {&RU::INTERN_PUTS, "puts"},
    {&RU::INTERN_INSPECT, "inspect"},
    {&RU::INTERN_BACKTRACE, "backtrace"},
    {&RU::INTERN_CALL, "call"},
    {&RU::INTERN_PACK, "pack"},
    {&RU::INTERN_UNPACK, "unpack"},
    {&RU::INTERN_KEY, "key"},
    {&RU::INTERN_KEYS, "keys"},
    {&RU::INTERN_INDEX, "index"},
    {&RU::INTERN_CLASS, "class"},
    {&RU::INTERN_MESSAGE, "message"},
    {&RU::INTERN_X, "x"},
    {&RU::INTERN_Y, "y"},
    {&RU::INTERN_Z, "z"},
    {&RU::INTERN_XAXIS, "xaxis"},
    {&RU::INTERN_YAXIS, "yaxis"},
    {&RU::INTERN_ZAXIS, "zaxis"},
    {&RU::INTERN_RED, "red"},
    {&RU::INTERN_SRED, "red="},
    {&RU::INTERN_GREEN, "green"},
    {&RU::INTERN_SGREEN, "green="},
    {&RU::INTERN_BLUE, "blue"},
    {&RU::INTERN_SBLUE, "blue="},
    {&RU::INTERN_ALPHA, "alpha"},
    {&RU::INTERN_SALPHA, "alpha="},
    {&RU::INTERN_SDRAWING_COLOR, "drawing_color="},
    {&RU::INTERN_SLINE_WIDTH, "line_width="},
    {&RU::INTERN_SLINE_STIPPLE, "line_stipple="},
    {&RU::INTERN_DRAW, "draw"},
    {&RU::INTERN_DRAW_POINTS, "draw_points"},
    {&RU::INTERN_DRAW2D, "draw2d"},
    {&RU::INTERN_SCREEN_COORDS, "screen_coords"},
    {&RU::INTERN_CORNER, "corner"},
    {&RU::INTERN_CAMERA, "camera"},
    {&RU::INTERN_ASPECT_RATIO, "aspect_ratio"},
    {&RU::INTERN_SASPECT_RATIO, "aspect_ratio="},
    {&RU::INTERN_FOCAL_LENGTH, "focal_length"},
    {&RU::INTERN_SFOCAL_LENGTH, "focal_length="},
    {&RU::INTERN_FOV, "fov"},
    {&RU::INTERN_SFOV, "fov="},
    {&RU::INTERN_IMAGE_WIDTH, "image_width"},
    {&RU::INTERN_SIMAGE_WIDTH, "image_width="},
    {&RU::INTERN_EYE, "eye"},
    {&RU::INTERN_DIRECTION, "direction"},
    {&RU::INTERN_UP, "up"},
    {&RU::INTERN_HEIGHT, "height"},
    {&RU::INTERN_SHEIGHT, "height="},
    {&RU::INTERN_SPERSPECTIVE, "perspective="},
    {&RU::INTERN_TPERSPECTIVE, "perspective?"},
    {&RU::INTERN_BOUNDS, "bounds"},
    {&RU::INTERN_ADD, "add"},
    {&RU::INTERN_CENTER, "center"},
    {&RU::INTERN_VPWIDTH, "vpwidth"},
    {&RU::INTERN_VPHEIGHT, "vpheight"},
    {&RU::INTERN_PICKRAY, "pickray"},
    {&RU::INTERN_LENGTH, "length"},
    {&RU::INTERN_SIZE, "size"},
    {&RU::INTERN_AT, "at"},
    {&RU::INTERN_ENTITYID, "entityID"},
    {&RU::INTERN_START, "start"},
    {&RU::INTERN_SSTART, "start="},
    {&RU::INTERN_END, "end"},
    {&RU::INTERN_SEND, "end="},
    {&RU::INTERN_POSITION, "position"},
    {&RU::INTERN_POSITION_MATERIAL, "position_material"},
    {&RU::INTERN_MESH, "mesh"},
    {&RU::INTERN_LOOPS, "loops"},
    {&RU::INTERN_POLYGONS, "polygons"},
    {&RU::INTERN_POLYGON_POINTS_AT, "polygon_points_at"},
    {&RU::INTERN_COUNT_POLYGONS, "count_polygons"},
    {&RU::INTERN_COUNT_POINTS, "count_points"},
    {&RU::INTERN_ADD_POINT, "add_point"},
    {&RU::INTERN_POINTS, "points"},
    {&RU::INTERN_POINT_AT, "point_at"},
    {&RU::INTERN_POLYGON_AT, "polygon_at"},
    {&RU::INTERN_UV_AT, "uv_at"},
    {&RU::INTERN_SET_UV, "set_uv"},
    {&RU::INTERN_POINT_INDEX, "point_index"},
    {&RU::INTERN_RAYTEST, "raytest"},
    {&RU::INTERN_NORMAL, "normal"},
    {&RU::INTERN_NAME, "name"},
    {&RU::INTERN_SNAME, "name="},
    {&RU::INTERN_LAYER, "layer"},
    {&RU::INTERN_SLAYER, "layer="},
    {&RU::INTERN_MATERIAL, "material"},
    {&RU::INTERN_SMATERIAL, "material="},
    {&RU::INTERN_BACK_MATERIAL, "back_material"},
    {&RU::INTERN_SBACK_MATERIAL, "back_material="},
    {&RU::INTERN_TEXTURE, "texture"},
    {&RU::INTERN_TRANSFORMATION, "transformation"},
    {&RU::INTERN_STRANSFORMATION, "transformation="},
    {&RU::INTERN_EMOVE, "move!"},
    {&RU::INTERN_TCASTS_SHADOWS, "casts_shadows?"},
    {&RU::INTERN_SCASTS_SHADOWS, "casts_shadows="},
    {&RU::INTERN_TRECEIVES_SHADOWS, "receives_shadows?"},
    {&RU::INTERN_SRECEIVES_SHADOWS, "receives_shadows="},
    {&RU::INTERN_TVISIBLE, "visible?"},
    {&RU::INTERN_SVISIBLE, "visible="},
    {&RU::INTERN_THIDDEN, "hidden?"},
    {&RU::INTERN_SHIDDEN, "hidden="},
    {&RU::INTERN_TSMOOTH, "smooth?"},
    {&RU::INTERN_SSMOOTH, "smooth="},
    {&RU::INTERN_TSOFT, "soft?"},
    {&RU::INTERN_SSOFT, "soft="},
    {&RU::INTERN_STIPPLE, "stipple"},
    {&RU::INTERN_SSTIPPLE, "stipple="},
    {&RU::INTERN_EERASE, "erase!"},
    {&RU::INTERN_ACTIVE_MODEL, "active_model"},
    {&RU::INTERN_ACTIVE_VIEW, "active_view"},
    {&RU::INTERN_IS_64BIT, "is_64bit?"},
    {&RU::INTERN_VERSION, "version"},
    {&RU::INTERN_COMMON_EDGE, "common_edge"},
    {&RU::INTERN_COMMON_FACE, "common_face"},
    {&RU::INTERN_ENTITIES, "entities"},
    {&RU::INTERN_ACTIVE_ENTITIES, "active_entities"},
    {&RU::INTERN_INSTANCES, "instances"},
    {&RU::INTERN_DEFINITIONS, "definitions"},
    {&RU::INTERN_MATERIALS, "materials"},
    {&RU::INTERN_LAYERS, "layers"},
    {&RU::INTERN_STYLES, "styles"},
    {&RU::INTERN_PAGES, "pages"},
    {&RU::INTERN_DEFINITION, "definition"},
    {&RU::INTERN_PARENT, "parent"},
    {&RU::INTERN_MODEL, "model"},
    {&RU::INTERN_TGROUP, "group?"},
    {&RU::INTERN_TVALID, "valid?"},
    {&RU::INTERN_VERTICES, "vertices"},
    {&RU::INTERN_TRANSFORM, "transform"},
    {&RU::INTERN_TRANSFORM_SELF, "transform!"},
    {&RU::INTERN_TRANSFORM_ENTITIES, "transform_entities"},
    {&RU::INTERN_TRANSFORM_BY_VECTORS, "transform_by_vectors"},
    {&RU::INTERN_ADD_POLYGON, "add_polygon"},
    {&RU::INTERN_ALL_CONNECTED, "all_connected"},
    {&RU::INTERN_DISTANCE, "distance"},
    {&RU::INTERN_ADD_INSTANCE, "add_instance"},
    {&RU::INTERN_ADD_FACES_FROM_MESH, "add_faces_from_mesh"},
    {&RU::INTERN_FILL_FROM_MESH, "fill_from_mesh"},
    {&RU::INTERN_ADD_GROUP, "add_group"},
    {&RU::INTERN_ADD_EDGES, "add_edges"},
    {&RU::INTERN_ADD_FACE, "add_face"},
    {&RU::INTERN_ADD_CPOINT, "add_cpoint"},
    {&RU::INTERN_ADD_CLINE, "add_cline"},
    {&RU::INTERN_ADD_LINE, "add_line"},
    {&RU::INTERN_CLOSE_ACTIVE, "close_active"},
    {&RU::INTERN_THAS_LEADER, "has_leader?"},
    {&RU::INTERN_EXPLODE, "explode"},
    {&RU::INTERN_ADD_NOTE, "add_note"},
    {&RU::INTERN_SET_TEXT, "set_text"},
    {&RU::INTERN_CLASSIFY_POINT, "classify_point"},
    {&RU::INTERN_FACES, "faces"},
    {&RU::INTERN_TPARALLEL, "parallel?"},
    {&RU::INTERN_PLANE, "plane"},
    {&RU::INTERN_TON_PLANE, "on_plane?"},
    {&RU::INTERN_MIN, "min"},
    {&RU::INTERN_MAX, "max"},
    {&RU::INTERN_MAKE_UNIQUE, "make_unique"},
    {&RU::INTERN_COUNT, "count"},
    {&RU::INTERN_EDGES, "edges"},
    {&RU::INTERN_INTERSECT_WITH, "intersect_with"},
    {&RU::INTERN_INVALIDATE_BOUNDS, "invalidate_bounds"},
    {&RU::INTERN_SKPDOC, "skpdoc"},
    {&RU::INTERN_GUID, "guid"},
    {&RU::INTERN_GET_ATTRIBUTE, "get_attribute"},
    {&RU::INTERN_SET_ATTRIBUTE, "set_attribute"},
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
  ASSERT_EQ(METHOD_IDS.size(), 172u);
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
  EXPECT_GT(fresh, 20u) << "too few fresh names to check the order";
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
