#include <quillmark/ruby/ruby_handles.h>

namespace RU {

int SU_MAJOR_VERSION = 0;
bool SU_IS_64BIT = false;

VALUE SU_SKETCHUP = 0;
VALUE SU_COLOR = 0;
VALUE SU_GROUP = 0;
VALUE SU_ENTITIES = 0;
VALUE SU_ENTITY = 0;
VALUE SU_DRAWING_ELEMENT = 0;
VALUE SU_COMPONENT_INSTANCE = 0;
VALUE SU_COMPONENT_DEFINITION = 0;
VALUE SU_MODEL = 0;
VALUE SU_CAMERA = 0;
VALUE SU_TEXT = 0;
VALUE SU_FACE = 0;
VALUE SU_EDGE = 0;
VALUE SU_CONSTRUCTION_POINT = 0;
VALUE SU_CONSTRUCTION_LINE = 0;
VALUE SU_MATERIAL = 0;
VALUE SU_LANGUAGE_HANDLER = 0;
VALUE SU_GEOM = 0;
VALUE SU_POINT3D = 0;
VALUE SU_VECTOR3D = 0;
VALUE SU_TRANSFORMATION = 0;
VALUE SU_BOUNDING_BOX = 0;
VALUE SU_POLYGON_MESH = 0;

VALUE SU_FACE_POINT_UNKNOWN = 0;
VALUE SU_FACE_POINT_INSIDE = 0;
VALUE SU_FACE_POINT_ON_VERTEX = 0;
VALUE SU_FACE_POINT_ON_EDGE = 0;
VALUE SU_FACE_POINT_ON_FACE = 0;
VALUE SU_FACE_POINT_ON_OUTSIDE = 0;
VALUE SU_FACE_POINT_NOT_ON_PLANE = 0;

VALUE SU_GL_POINTS = 0;
VALUE SU_GL_LINES = 0;
VALUE SU_GL_LINE_STRIP = 0;
VALUE SU_GL_LINE_LOOP = 0;
VALUE SU_GL_TRIANGLES = 0;
VALUE SU_GL_TRIANGLE_STRIP = 0;
VALUE SU_GL_TRIANGLE_FAN = 0;
VALUE SU_GL_QUADS = 0;
VALUE SU_GL_QUAD_STRIP = 0;
VALUE SU_GL_POLYGON = 0;

ID INTERN_TO_A = 0;
ID INTERN_TO_I = 0;
ID INTERN_TO_F = 0;
ID INTERN_TO_S = 0;
ID INTERN_PUTS = 0;
ID INTERN_INSPECT = 0;
ID INTERN_BACKTRACE = 0;
ID INTERN_CALL = 0;
ID INTERN_PACK = 0;
ID INTERN_UNPACK = 0;
ID INTERN_KEY = 0;
ID INTERN_KEYS = 0;
ID INTERN_INDEX = 0;
ID INTERN_CLASS = 0;
ID INTERN_MESSAGE = 0;
ID INTERN_X = 0;
ID INTERN_Y = 0;
ID INTERN_Z = 0;
ID INTERN_XAXIS = 0;
ID INTERN_YAXIS = 0;
ID INTERN_ZAXIS = 0;
ID INTERN_RED = 0;
ID INTERN_SRED = 0;
ID INTERN_GREEN = 0;
ID INTERN_SGREEN = 0;
ID INTERN_BLUE = 0;
ID INTERN_SBLUE = 0;
ID INTERN_ALPHA = 0;
ID INTERN_SALPHA = 0;
ID INTERN_SDRAWING_COLOR = 0;
ID INTERN_SLINE_WIDTH = 0;
ID INTERN_SLINE_STIPPLE = 0;
ID INTERN_DRAW = 0;
ID INTERN_DRAW_POINTS = 0;
ID INTERN_DRAW2D = 0;
ID INTERN_SCREEN_COORDS = 0;
ID INTERN_CORNER = 0;
ID INTERN_CAMERA = 0;
ID INTERN_ASPECT_RATIO = 0;
ID INTERN_SASPECT_RATIO = 0;
ID INTERN_FOCAL_LENGTH = 0;
ID INTERN_SFOCAL_LENGTH = 0;
ID INTERN_FOV = 0;
ID INTERN_SFOV = 0;
ID INTERN_IMAGE_WIDTH = 0;
ID INTERN_SIMAGE_WIDTH = 0;
ID INTERN_EYE = 0;
ID INTERN_DIRECTION = 0;
ID INTERN_UP = 0;
ID INTERN_HEIGHT = 0;
ID INTERN_SHEIGHT = 0;
ID INTERN_SPERSPECTIVE = 0;
ID INTERN_TPERSPECTIVE = 0;
ID INTERN_BOUNDS = 0;
ID INTERN_ADD = 0;
ID INTERN_CENTER = 0;
ID INTERN_VPWIDTH = 0;
ID INTERN_VPHEIGHT = 0;
ID INTERN_PICKRAY = 0;
ID INTERN_LENGTH = 0;
ID INTERN_SIZE = 0;
ID INTERN_AT = 0;
ID INTERN_ENTITYID = 0;
ID INTERN_START = 0;
ID INTERN_SSTART = 0;
ID INTERN_END = 0;
ID INTERN_SEND = 0;
ID INTERN_POSITION = 0;
ID INTERN_POSITION_MATERIAL = 0;
ID INTERN_MESH = 0;
ID INTERN_LOOPS = 0;
ID INTERN_POLYGONS = 0;
ID INTERN_POLYGON_POINTS_AT = 0;
ID INTERN_COUNT_POLYGONS = 0;
ID INTERN_COUNT_POINTS = 0;
ID INTERN_ADD_POINT = 0;
ID INTERN_POINTS = 0;
ID INTERN_POINT_AT = 0;
ID INTERN_POLYGON_AT = 0;
ID INTERN_UV_AT = 0;
ID INTERN_SET_UV = 0;
ID INTERN_POINT_INDEX = 0;
ID INTERN_RAYTEST = 0;
ID INTERN_NORMAL = 0;
ID INTERN_NAME = 0;
ID INTERN_SNAME = 0;
ID INTERN_LAYER = 0;
ID INTERN_SLAYER = 0;
ID INTERN_MATERIAL = 0;
ID INTERN_SMATERIAL = 0;
ID INTERN_BACK_MATERIAL = 0;
ID INTERN_SBACK_MATERIAL = 0;
ID INTERN_TEXTURE = 0;
ID INTERN_TRANSFORMATION = 0;
ID INTERN_STRANSFORMATION = 0;
ID INTERN_EMOVE = 0;
ID INTERN_TCASTS_SHADOWS = 0;
ID INTERN_SCASTS_SHADOWS = 0;
ID INTERN_TRECEIVES_SHADOWS = 0;
ID INTERN_SRECEIVES_SHADOWS = 0;
ID INTERN_TVISIBLE = 0;
ID INTERN_SVISIBLE = 0;
ID INTERN_THIDDEN = 0;
ID INTERN_SHIDDEN = 0;
ID INTERN_TSMOOTH = 0;
ID INTERN_SSMOOTH = 0;
ID INTERN_TSOFT = 0;
ID INTERN_SSOFT = 0;
ID INTERN_STIPPLE = 0;
ID INTERN_SSTIPPLE = 0;
ID INTERN_EERASE = 0;
ID INTERN_ACTIVE_MODEL = 0;
ID INTERN_ACTIVE_VIEW = 0;
ID INTERN_IS_64BIT = 0;
ID INTERN_VERSION = 0;
ID INTERN_COMMON_EDGE = 0;
ID INTERN_COMMON_FACE = 0;
ID INTERN_ENTITIES = 0;
ID INTERN_ACTIVE_ENTITIES = 0;
ID INTERN_INSTANCES = 0;
ID INTERN_DEFINITIONS = 0;
ID INTERN_MATERIALS = 0;
ID INTERN_LAYERS = 0;
ID INTERN_STYLES = 0;
ID INTERN_PAGES = 0;
ID INTERN_DEFINITION = 0;
ID INTERN_PARENT = 0;
ID INTERN_MODEL = 0;
ID INTERN_TGROUP = 0;
ID INTERN_TVALID = 0;
ID INTERN_VERTICES = 0;
ID INTERN_TRANSFORM = 0;
ID INTERN_TRANSFORM_SELF = 0;
ID INTERN_TRANSFORM_ENTITIES = 0;
ID INTERN_TRANSFORM_BY_VECTORS = 0;
ID INTERN_ADD_POLYGON = 0;
ID INTERN_ALL_CONNECTED = 0;
ID INTERN_DISTANCE = 0;
ID INTERN_ADD_INSTANCE = 0;
ID INTERN_ADD_FACES_FROM_MESH = 0;
ID INTERN_FILL_FROM_MESH = 0;
ID INTERN_ADD_GROUP = 0;
ID INTERN_ADD_EDGES = 0;
ID INTERN_ADD_FACE = 0;
ID INTERN_ADD_CPOINT = 0;
ID INTERN_ADD_CLINE = 0;
ID INTERN_ADD_LINE = 0;
ID INTERN_CLOSE_ACTIVE = 0;
ID INTERN_THAS_LEADER = 0;
ID INTERN_EXPLODE = 0;
ID INTERN_ADD_NOTE = 0;
ID INTERN_SET_TEXT = 0;
ID INTERN_CLASSIFY_POINT = 0;
ID INTERN_FACES = 0;
ID INTERN_TPARALLEL = 0;
ID INTERN_PLANE = 0;
ID INTERN_TON_PLANE = 0;
ID INTERN_MIN = 0;
ID INTERN_MAX = 0;
ID INTERN_MAKE_UNIQUE = 0;
ID INTERN_COUNT = 0;
ID INTERN_EDGES = 0;
ID INTERN_INTERSECT_WITH = 0;
ID INTERN_INVALIDATE_BOUNDS = 0;
ID INTERN_SKPDOC = 0;
ID INTERN_GUID = 0;
ID INTERN_GET_ATTRIBUTE = 0;
ID INTERN_SET_ATTRIBUTE = 0;
ID INTERN_OP_SQUARE_BRACKETS = 0;
ID INTERN_OP_ASTERISKS = 0;
ID INTERN_OP_ADD = 0;
ID INTERN_OP_SUBTRACT = 0;

namespace {

// Our interpreter compacts its heap (GC.compact, or auto-compaction), and a compaction may
// move any object that only a C global points to, leaving the global stale. The host
// interpreter this cache was first written for never moved objects; here every object
// handle is pinned as it is stored. rb_gc_register_mark_object marks and pins for the
// life of the process, which is the life of the cache. Immediates need no pinning.
void store(VALUE& slot, VALUE value) {
  if (!SPECIAL_CONST_P(value) && slot != value) rb_gc_register_mark_object(value);
  slot = value;
}

struct ClassRow {
  VALUE* slot;
  VALUE const* scope;  // null: looked up from Object, with ancestors; else in that module only
  const char* name;
};

// Rows in lookup order; a row's scope is always filled by an earlier row.
const ClassRow CLASS_TABLE[] = {
    {&SU_SKETCHUP, nullptr, "Sketchup"},
    {&SU_COLOR, &SU_SKETCHUP, "Color"},
    {&SU_GROUP, &SU_SKETCHUP, "Group"},
    {&SU_ENTITIES, &SU_SKETCHUP, "Entities"},
    {&SU_ENTITY, &SU_SKETCHUP, "Entity"},
    {&SU_DRAWING_ELEMENT, &SU_SKETCHUP, "Drawingelement"},
    {&SU_COMPONENT_INSTANCE, &SU_SKETCHUP, "ComponentInstance"},
    {&SU_COMPONENT_DEFINITION, &SU_SKETCHUP, "ComponentDefinition"},
    {&SU_MODEL, &SU_SKETCHUP, "Model"},
    {&SU_CAMERA, &SU_SKETCHUP, "Camera"},
    {&SU_TEXT, &SU_SKETCHUP, "Text"},
    {&SU_FACE, &SU_SKETCHUP, "Face"},
    {&SU_EDGE, &SU_SKETCHUP, "Edge"},
    {&SU_CONSTRUCTION_POINT, &SU_SKETCHUP, "ConstructionPoint"},
    {&SU_CONSTRUCTION_LINE, &SU_SKETCHUP, "ConstructionLine"},
    {&SU_MATERIAL, &SU_SKETCHUP, "Material"},
    {&SU_LANGUAGE_HANDLER, nullptr, "LanguageHandler"},
    {&SU_GEOM, nullptr, "Geom"},
    {&SU_POINT3D, &SU_GEOM, "Point3d"},
    {&SU_VECTOR3D, &SU_GEOM, "Vector3d"},
    {&SU_TRANSFORMATION, &SU_GEOM, "Transformation"},
    {&SU_BOUNDING_BOX, &SU_GEOM, "BoundingBox"},
    {&SU_POLYGON_MESH, &SU_GEOM, "PolygonMesh"},
};

struct InternRow {
  ID* slot;
  const char* name;
};

const InternRow INTERN_TABLE[] = {
    {&INTERN_TO_A, "to_a"},
    {&INTERN_TO_I, "to_i"},
    {&INTERN_TO_F, "to_f"},
    {&INTERN_TO_S, "to_s"},
    {&INTERN_PUTS, "puts"},
    {&INTERN_INSPECT, "inspect"},
    {&INTERN_BACKTRACE, "backtrace"},
    {&INTERN_CALL, "call"},
    {&INTERN_PACK, "pack"},
    {&INTERN_UNPACK, "unpack"},
    {&INTERN_KEY, "key"},
    {&INTERN_KEYS, "keys"},
    {&INTERN_INDEX, "index"},
    {&INTERN_CLASS, "class"},
    {&INTERN_MESSAGE, "message"},
    {&INTERN_X, "x"},
    {&INTERN_Y, "y"},
    {&INTERN_Z, "z"},
    {&INTERN_XAXIS, "xaxis"},
    {&INTERN_YAXIS, "yaxis"},
    {&INTERN_ZAXIS, "zaxis"},
    {&INTERN_RED, "red"},
    {&INTERN_SRED, "red="},
    {&INTERN_GREEN, "green"},
    {&INTERN_SGREEN, "green="},
    {&INTERN_BLUE, "blue"},
    {&INTERN_SBLUE, "blue="},
    {&INTERN_ALPHA, "alpha"},
    {&INTERN_SALPHA, "alpha="},
    {&INTERN_SDRAWING_COLOR, "drawing_color="},
    {&INTERN_SLINE_WIDTH, "line_width="},
    {&INTERN_SLINE_STIPPLE, "line_stipple="},
    {&INTERN_DRAW, "draw"},
    {&INTERN_DRAW_POINTS, "draw_points"},
    {&INTERN_DRAW2D, "draw2d"},
    {&INTERN_SCREEN_COORDS, "screen_coords"},
    {&INTERN_CORNER, "corner"},
    {&INTERN_CAMERA, "camera"},
    {&INTERN_ASPECT_RATIO, "aspect_ratio"},
    {&INTERN_SASPECT_RATIO, "aspect_ratio="},
    {&INTERN_FOCAL_LENGTH, "focal_length"},
    {&INTERN_SFOCAL_LENGTH, "focal_length="},
    {&INTERN_FOV, "fov"},
    {&INTERN_SFOV, "fov="},
    {&INTERN_IMAGE_WIDTH, "image_width"},
    {&INTERN_SIMAGE_WIDTH, "image_width="},
    {&INTERN_EYE, "eye"},
    {&INTERN_DIRECTION, "direction"},
    {&INTERN_UP, "up"},
    {&INTERN_HEIGHT, "height"},
    {&INTERN_SHEIGHT, "height="},
    {&INTERN_SPERSPECTIVE, "perspective="},
    {&INTERN_TPERSPECTIVE, "perspective?"},
    {&INTERN_BOUNDS, "bounds"},
    {&INTERN_ADD, "add"},
    {&INTERN_CENTER, "center"},
    {&INTERN_VPWIDTH, "vpwidth"},
    {&INTERN_VPHEIGHT, "vpheight"},
    {&INTERN_PICKRAY, "pickray"},
    {&INTERN_LENGTH, "length"},
    {&INTERN_SIZE, "size"},
    {&INTERN_AT, "at"},
    {&INTERN_ENTITYID, "entityID"},
    {&INTERN_START, "start"},
    {&INTERN_SSTART, "start="},
    {&INTERN_END, "end"},
    {&INTERN_SEND, "end="},
    {&INTERN_POSITION, "position"},
    {&INTERN_POSITION_MATERIAL, "position_material"},
    {&INTERN_MESH, "mesh"},
    {&INTERN_LOOPS, "loops"},
    {&INTERN_POLYGONS, "polygons"},
    {&INTERN_POLYGON_POINTS_AT, "polygon_points_at"},
    {&INTERN_COUNT_POLYGONS, "count_polygons"},
    {&INTERN_COUNT_POINTS, "count_points"},
    {&INTERN_ADD_POINT, "add_point"},
    {&INTERN_POINTS, "points"},
    {&INTERN_POINT_AT, "point_at"},
    {&INTERN_POLYGON_AT, "polygon_at"},
    {&INTERN_UV_AT, "uv_at"},
    {&INTERN_SET_UV, "set_uv"},
    {&INTERN_POINT_INDEX, "point_index"},
    {&INTERN_RAYTEST, "raytest"},
    {&INTERN_NORMAL, "normal"},
    {&INTERN_NAME, "name"},
    {&INTERN_SNAME, "name="},
    {&INTERN_LAYER, "layer"},
    {&INTERN_SLAYER, "layer="},
    {&INTERN_MATERIAL, "material"},
    {&INTERN_SMATERIAL, "material="},
    {&INTERN_BACK_MATERIAL, "back_material"},
    {&INTERN_SBACK_MATERIAL, "back_material="},
    {&INTERN_TEXTURE, "texture"},
    {&INTERN_TRANSFORMATION, "transformation"},
    {&INTERN_STRANSFORMATION, "transformation="},
    {&INTERN_EMOVE, "move!"},
    {&INTERN_TCASTS_SHADOWS, "casts_shadows?"},
    {&INTERN_SCASTS_SHADOWS, "casts_shadows="},
    {&INTERN_TRECEIVES_SHADOWS, "receives_shadows?"},
    {&INTERN_SRECEIVES_SHADOWS, "receives_shadows="},
    {&INTERN_TVISIBLE, "visible?"},
    {&INTERN_SVISIBLE, "visible="},
    {&INTERN_THIDDEN, "hidden?"},
    {&INTERN_SHIDDEN, "hidden="},
    {&INTERN_TSMOOTH, "smooth?"},
    {&INTERN_SSMOOTH, "smooth="},
    {&INTERN_TSOFT, "soft?"},
    {&INTERN_SSOFT, "soft="},
    {&INTERN_STIPPLE, "stipple"},
    {&INTERN_SSTIPPLE, "stipple="},
    {&INTERN_EERASE, "erase!"},
    {&INTERN_ACTIVE_MODEL, "active_model"},
    {&INTERN_ACTIVE_VIEW, "active_view"},
    {&INTERN_IS_64BIT, "is_64bit?"},
    {&INTERN_VERSION, "version"},
    {&INTERN_COMMON_EDGE, "common_edge"},
    {&INTERN_COMMON_FACE, "common_face"},
    {&INTERN_ENTITIES, "entities"},
    {&INTERN_ACTIVE_ENTITIES, "active_entities"},
    {&INTERN_INSTANCES, "instances"},
    {&INTERN_DEFINITIONS, "definitions"},
    {&INTERN_MATERIALS, "materials"},
    {&INTERN_LAYERS, "layers"},
    {&INTERN_STYLES, "styles"},
    {&INTERN_PAGES, "pages"},
    {&INTERN_DEFINITION, "definition"},
    {&INTERN_PARENT, "parent"},
    {&INTERN_MODEL, "model"},
    {&INTERN_TGROUP, "group?"},
    {&INTERN_TVALID, "valid?"},
    {&INTERN_VERTICES, "vertices"},
    {&INTERN_TRANSFORM, "transform"},
    {&INTERN_TRANSFORM_SELF, "transform!"},
    {&INTERN_TRANSFORM_ENTITIES, "transform_entities"},
    {&INTERN_TRANSFORM_BY_VECTORS, "transform_by_vectors"},
    {&INTERN_ADD_POLYGON, "add_polygon"},
    {&INTERN_ALL_CONNECTED, "all_connected"},
    {&INTERN_DISTANCE, "distance"},
    {&INTERN_ADD_INSTANCE, "add_instance"},
    {&INTERN_ADD_FACES_FROM_MESH, "add_faces_from_mesh"},
    {&INTERN_FILL_FROM_MESH, "fill_from_mesh"},
    {&INTERN_ADD_GROUP, "add_group"},
    {&INTERN_ADD_EDGES, "add_edges"},
    {&INTERN_ADD_FACE, "add_face"},
    {&INTERN_ADD_CPOINT, "add_cpoint"},
    {&INTERN_ADD_CLINE, "add_cline"},
    {&INTERN_ADD_LINE, "add_line"},
    {&INTERN_CLOSE_ACTIVE, "close_active"},
    {&INTERN_THAS_LEADER, "has_leader?"},
    {&INTERN_EXPLODE, "explode"},
    {&INTERN_ADD_NOTE, "add_note"},
    {&INTERN_SET_TEXT, "set_text"},
    {&INTERN_CLASSIFY_POINT, "classify_point"},
    {&INTERN_FACES, "faces"},
    {&INTERN_TPARALLEL, "parallel?"},
    {&INTERN_PLANE, "plane"},
    {&INTERN_TON_PLANE, "on_plane?"},
    {&INTERN_MIN, "min"},
    {&INTERN_MAX, "max"},
    {&INTERN_MAKE_UNIQUE, "make_unique"},
    {&INTERN_COUNT, "count"},
    {&INTERN_EDGES, "edges"},
    {&INTERN_INTERSECT_WITH, "intersect_with"},
    {&INTERN_INVALIDATE_BOUNDS, "invalidate_bounds"},
    {&INTERN_SKPDOC, "skpdoc"},
    {&INTERN_GUID, "guid"},
    {&INTERN_GET_ATTRIBUTE, "get_attribute"},
    {&INTERN_SET_ATTRIBUTE, "set_attribute"},
    {&INTERN_OP_SQUARE_BRACKETS, "[]"},
    {&INTERN_OP_ASTERISKS, "*"},
    {&INTERN_OP_ADD, "+"},
    {&INTERN_OP_SUBTRACT, "-"},
};

struct FacePointRow {
  VALUE* slot;
  const char* name;  // the constant in Sketchup::Face, from host version 9
  int legacy_value;  // the Integer used on older hosts, which lack the constants
};

const FacePointRow FACE_POINT_TABLE[] = {
    {&SU_FACE_POINT_UNKNOWN, "PointUnknown", 0},
    {&SU_FACE_POINT_INSIDE, "PointInside", 1},
    {&SU_FACE_POINT_ON_VERTEX, "PointOnVertex", 2},
    {&SU_FACE_POINT_ON_EDGE, "PointOnEdge", 4},
    {&SU_FACE_POINT_ON_FACE, "PointOnFace", 8},
    {&SU_FACE_POINT_ON_OUTSIDE, "PointOutside", 16},
    {&SU_FACE_POINT_NOT_ON_PLANE, "PointNotOnPlane", 32},
};

// The first host version that defines Sketchup::Face::Point*.
constexpr int FACE_POINT_CONSTANTS_SINCE = 9;

const ClassRow GL_TABLE[] = {
    {&SU_GL_POINTS, nullptr, "GL_POINTS"},
    {&SU_GL_LINES, nullptr, "GL_LINES"},
    {&SU_GL_LINE_STRIP, nullptr, "GL_LINE_STRIP"},
    {&SU_GL_LINE_LOOP, nullptr, "GL_LINE_LOOP"},
    {&SU_GL_TRIANGLES, nullptr, "GL_TRIANGLES"},
    {&SU_GL_TRIANGLE_STRIP, nullptr, "GL_TRIANGLE_STRIP"},
    {&SU_GL_TRIANGLE_FAN, nullptr, "GL_TRIANGLE_FAN"},
    {&SU_GL_QUADS, nullptr, "GL_QUADS"},
    {&SU_GL_QUAD_STRIP, nullptr, "GL_QUAD_STRIP"},
    {&SU_GL_POLYGON, nullptr, "GL_POLYGON"},
};

// From Object: the interpreter's lookup with ancestors. In a module: that module only,
// with no ancestors and no fallback to the top level.
void look_up(ClassRow const& row) {
  VALUE value = row.scope == nullptr ? rb_const_get(rb_cObject, rb_intern(row.name))
                                     : rb_const_get_at(*row.scope, rb_intern(row.name));
  store(*row.slot, value);
}

}  // namespace

void vsu_init_ruby() {
  for (ClassRow const& row : CLASS_TABLE) look_up(row);
  for (InternRow const& row : INTERN_TABLE) *row.slot = rb_intern(row.name);

  VALUE version =
      rb_funcallv(rb_funcallv(SU_SKETCHUP, INTERN_VERSION, 0, nullptr), INTERN_TO_I, 0, nullptr);
  SU_MAJOR_VERSION = NUM2INT(version);

  // Only the value true counts; a host without the method is a 32-bit one.
  SU_IS_64BIT = rb_respond_to(SU_SKETCHUP, INTERN_IS_64BIT) == 1 &&
                rb_funcallv(SU_SKETCHUP, INTERN_IS_64BIT, 0, nullptr) == Qtrue;

  for (FacePointRow const& row : FACE_POINT_TABLE) {
    VALUE value = SU_MAJOR_VERSION < FACE_POINT_CONSTANTS_SINCE
                      ? rb_int2inum(row.legacy_value)
                      : rb_const_get_at(SU_FACE, rb_intern(row.name));
    store(*row.slot, value);
  }

  for (ClassRow const& row : GL_TABLE) look_up(row);
}

void init_ruby() { vsu_init_ruby(); }

}  // namespace RU
