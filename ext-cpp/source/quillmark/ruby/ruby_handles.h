#ifndef QUILLMARK_RUBY_RUBY_HANDLES_H
#define QUILLMARK_RUBY_RUBY_HANDLES_H

// The cache of the host's Ruby classes, constants and method IDs. Filled once by
// RU::vsu_init_ruby while the bundle loads, read-only afterwards; every handle is zero
// until then. Readers use the globals directly. Object handles are pinned against the
// collector (and compaction) for the life of the process. Once filled the values may be
// read from any thread; calls into Ruby that use them still belong on the Ruby thread.

#include <quillmark/ruby/ruby_lib.h>

namespace RU {

/// Host major version (`Sketchup.version.to_i`), and whether `Sketchup.is_64bit?` is `true`.
extern int SU_MAJOR_VERSION;
extern bool SU_IS_64BIT;

// Classes and modules, in the order they are looked up.
extern VALUE SU_SKETCHUP;
extern VALUE SU_COLOR;
extern VALUE SU_GROUP;
extern VALUE SU_ENTITIES;
extern VALUE SU_ENTITY;
extern VALUE SU_DRAWING_ELEMENT;
extern VALUE SU_COMPONENT_INSTANCE;
extern VALUE SU_COMPONENT_DEFINITION;
extern VALUE SU_MODEL;
extern VALUE SU_CAMERA;
extern VALUE SU_TEXT;
extern VALUE SU_FACE;
extern VALUE SU_EDGE;
extern VALUE SU_CONSTRUCTION_POINT;
extern VALUE SU_CONSTRUCTION_LINE;
extern VALUE SU_MATERIAL;
extern VALUE SU_LANGUAGE_HANDLER;
extern VALUE SU_GEOM;
extern VALUE SU_POINT3D;
extern VALUE SU_VECTOR3D;
extern VALUE SU_TRANSFORMATION;
extern VALUE SU_BOUNDING_BOX;
extern VALUE SU_POLYGON_MESH;

// Face point classification: the host's constants from version 9, Integers before.
extern VALUE SU_FACE_POINT_UNKNOWN;
extern VALUE SU_FACE_POINT_INSIDE;
extern VALUE SU_FACE_POINT_ON_VERTEX;
extern VALUE SU_FACE_POINT_ON_EDGE;
extern VALUE SU_FACE_POINT_ON_FACE;
extern VALUE SU_FACE_POINT_ON_OUTSIDE;
extern VALUE SU_FACE_POINT_NOT_ON_PLANE;

// OpenGL primitive constants.
extern VALUE SU_GL_POINTS;
extern VALUE SU_GL_LINES;
extern VALUE SU_GL_LINE_STRIP;
extern VALUE SU_GL_LINE_LOOP;
extern VALUE SU_GL_TRIANGLES;
extern VALUE SU_GL_TRIANGLE_STRIP;
extern VALUE SU_GL_TRIANGLE_FAN;
extern VALUE SU_GL_QUADS;
extern VALUE SU_GL_QUAD_STRIP;
extern VALUE SU_GL_POLYGON;

// Interned method names, in the order they are interned.
extern ID INTERN_TO_A;  // "to_a"
extern ID INTERN_TO_I;  // "to_i"
extern ID INTERN_TO_F;  // "to_f"
extern ID INTERN_TO_S;  // "to_s"
extern ID INTERN_PUTS;  // "puts"
extern ID INTERN_INSPECT;  // "inspect"
extern ID INTERN_BACKTRACE;  // "backtrace"
extern ID INTERN_CALL;  // "call"
extern ID INTERN_PACK;  // "pack"
extern ID INTERN_UNPACK;  // "unpack"
extern ID INTERN_KEY;  // "key"
extern ID INTERN_KEYS;  // "keys"
extern ID INTERN_INDEX;  // "index"
extern ID INTERN_CLASS;  // "class"
extern ID INTERN_MESSAGE;  // "message"
extern ID INTERN_X;  // "x"
extern ID INTERN_Y;  // "y"
extern ID INTERN_Z;  // "z"
extern ID INTERN_XAXIS;  // "xaxis"
extern ID INTERN_YAXIS;  // "yaxis"
extern ID INTERN_ZAXIS;  // "zaxis"
extern ID INTERN_RED;  // "red"
extern ID INTERN_SRED;  // "red="
extern ID INTERN_GREEN;  // "green"
extern ID INTERN_SGREEN;  // "green="
extern ID INTERN_BLUE;  // "blue"
extern ID INTERN_SBLUE;  // "blue="
extern ID INTERN_ALPHA;  // "alpha"
extern ID INTERN_SALPHA;  // "alpha="
extern ID INTERN_SDRAWING_COLOR;  // "drawing_color="
extern ID INTERN_SLINE_WIDTH;  // "line_width="
extern ID INTERN_SLINE_STIPPLE;  // "line_stipple="
extern ID INTERN_DRAW;  // "draw"
extern ID INTERN_DRAW_POINTS;  // "draw_points"
extern ID INTERN_DRAW2D;  // "draw2d"
extern ID INTERN_SCREEN_COORDS;  // "screen_coords"
extern ID INTERN_CORNER;  // "corner"
extern ID INTERN_CAMERA;  // "camera"
extern ID INTERN_ASPECT_RATIO;  // "aspect_ratio"
extern ID INTERN_SASPECT_RATIO;  // "aspect_ratio="
extern ID INTERN_FOCAL_LENGTH;  // "focal_length"
extern ID INTERN_SFOCAL_LENGTH;  // "focal_length="
extern ID INTERN_FOV;  // "fov"
extern ID INTERN_SFOV;  // "fov="
extern ID INTERN_IMAGE_WIDTH;  // "image_width"
extern ID INTERN_SIMAGE_WIDTH;  // "image_width="
extern ID INTERN_EYE;  // "eye"
extern ID INTERN_DIRECTION;  // "direction"
extern ID INTERN_UP;  // "up"
extern ID INTERN_HEIGHT;  // "height"
extern ID INTERN_SHEIGHT;  // "height="
extern ID INTERN_SPERSPECTIVE;  // "perspective="
extern ID INTERN_TPERSPECTIVE;  // "perspective?"
extern ID INTERN_BOUNDS;  // "bounds"
extern ID INTERN_ADD;  // "add"
extern ID INTERN_CENTER;  // "center"
extern ID INTERN_VPWIDTH;  // "vpwidth"
extern ID INTERN_VPHEIGHT;  // "vpheight"
extern ID INTERN_PICKRAY;  // "pickray"
extern ID INTERN_LENGTH;  // "length"
extern ID INTERN_SIZE;  // "size"
extern ID INTERN_AT;  // "at"
extern ID INTERN_ENTITYID;  // "entityID"
extern ID INTERN_START;  // "start"
extern ID INTERN_SSTART;  // "start="
extern ID INTERN_END;  // "end"
extern ID INTERN_SEND;  // "end="
extern ID INTERN_POSITION;  // "position"
extern ID INTERN_POSITION_MATERIAL;  // "position_material"
extern ID INTERN_MESH;  // "mesh"
extern ID INTERN_LOOPS;  // "loops"
extern ID INTERN_POLYGONS;  // "polygons"
extern ID INTERN_POLYGON_POINTS_AT;  // "polygon_points_at"
extern ID INTERN_COUNT_POLYGONS;  // "count_polygons"
extern ID INTERN_COUNT_POINTS;  // "count_points"
extern ID INTERN_ADD_POINT;  // "add_point"
extern ID INTERN_POINTS;  // "points"
extern ID INTERN_POINT_AT;  // "point_at"
extern ID INTERN_POLYGON_AT;  // "polygon_at"
extern ID INTERN_UV_AT;  // "uv_at"
extern ID INTERN_SET_UV;  // "set_uv"
extern ID INTERN_POINT_INDEX;  // "point_index"
extern ID INTERN_RAYTEST;  // "raytest"
extern ID INTERN_NORMAL;  // "normal"
extern ID INTERN_NAME;  // "name"
extern ID INTERN_SNAME;  // "name="
extern ID INTERN_LAYER;  // "layer"
extern ID INTERN_SLAYER;  // "layer="
extern ID INTERN_MATERIAL;  // "material"
extern ID INTERN_SMATERIAL;  // "material="
extern ID INTERN_BACK_MATERIAL;  // "back_material"
extern ID INTERN_SBACK_MATERIAL;  // "back_material="
extern ID INTERN_TEXTURE;  // "texture"
extern ID INTERN_TRANSFORMATION;  // "transformation"
extern ID INTERN_STRANSFORMATION;  // "transformation="
extern ID INTERN_EMOVE;  // "move!"
extern ID INTERN_TCASTS_SHADOWS;  // "casts_shadows?"
extern ID INTERN_SCASTS_SHADOWS;  // "casts_shadows="
extern ID INTERN_TRECEIVES_SHADOWS;  // "receives_shadows?"
extern ID INTERN_SRECEIVES_SHADOWS;  // "receives_shadows="
extern ID INTERN_TVISIBLE;  // "visible?"
extern ID INTERN_SVISIBLE;  // "visible="
extern ID INTERN_THIDDEN;  // "hidden?"
extern ID INTERN_SHIDDEN;  // "hidden="
extern ID INTERN_TSMOOTH;  // "smooth?"
extern ID INTERN_SSMOOTH;  // "smooth="
extern ID INTERN_TSOFT;  // "soft?"
extern ID INTERN_SSOFT;  // "soft="
extern ID INTERN_STIPPLE;  // "stipple"
extern ID INTERN_SSTIPPLE;  // "stipple="
extern ID INTERN_EERASE;  // "erase!"
extern ID INTERN_ACTIVE_MODEL;  // "active_model"
extern ID INTERN_ACTIVE_VIEW;  // "active_view"
extern ID INTERN_IS_64BIT;  // "is_64bit?"
extern ID INTERN_VERSION;  // "version"
extern ID INTERN_COMMON_EDGE;  // "common_edge"
extern ID INTERN_COMMON_FACE;  // "common_face"
extern ID INTERN_ENTITIES;  // "entities"
extern ID INTERN_ACTIVE_ENTITIES;  // "active_entities"
extern ID INTERN_INSTANCES;  // "instances"
extern ID INTERN_DEFINITIONS;  // "definitions"
extern ID INTERN_MATERIALS;  // "materials"
extern ID INTERN_LAYERS;  // "layers"
extern ID INTERN_STYLES;  // "styles"
extern ID INTERN_PAGES;  // "pages"
extern ID INTERN_DEFINITION;  // "definition"
extern ID INTERN_PARENT;  // "parent"
extern ID INTERN_MODEL;  // "model"
extern ID INTERN_TGROUP;  // "group?"
extern ID INTERN_TVALID;  // "valid?"
extern ID INTERN_VERTICES;  // "vertices"
extern ID INTERN_TRANSFORM;  // "transform"
extern ID INTERN_TRANSFORM_SELF;  // "transform!"
extern ID INTERN_TRANSFORM_ENTITIES;  // "transform_entities"
extern ID INTERN_TRANSFORM_BY_VECTORS;  // "transform_by_vectors"
extern ID INTERN_ADD_POLYGON;  // "add_polygon"
extern ID INTERN_ALL_CONNECTED;  // "all_connected"
extern ID INTERN_DISTANCE;  // "distance"
extern ID INTERN_ADD_INSTANCE;  // "add_instance"
extern ID INTERN_ADD_FACES_FROM_MESH;  // "add_faces_from_mesh"
extern ID INTERN_FILL_FROM_MESH;  // "fill_from_mesh"
extern ID INTERN_ADD_GROUP;  // "add_group"
extern ID INTERN_ADD_EDGES;  // "add_edges"
extern ID INTERN_ADD_FACE;  // "add_face"
extern ID INTERN_ADD_CPOINT;  // "add_cpoint"
extern ID INTERN_ADD_CLINE;  // "add_cline"
extern ID INTERN_ADD_LINE;  // "add_line"
extern ID INTERN_CLOSE_ACTIVE;  // "close_active"
extern ID INTERN_THAS_LEADER;  // "has_leader?"
extern ID INTERN_EXPLODE;  // "explode"
extern ID INTERN_ADD_NOTE;  // "add_note"
extern ID INTERN_SET_TEXT;  // "set_text"
extern ID INTERN_CLASSIFY_POINT;  // "classify_point"
extern ID INTERN_FACES;  // "faces"
extern ID INTERN_TPARALLEL;  // "parallel?"
extern ID INTERN_PLANE;  // "plane"
extern ID INTERN_TON_PLANE;  // "on_plane?"
extern ID INTERN_MIN;  // "min"
extern ID INTERN_MAX;  // "max"
extern ID INTERN_MAKE_UNIQUE;  // "make_unique"
extern ID INTERN_COUNT;  // "count"
extern ID INTERN_EDGES;  // "edges"
extern ID INTERN_INTERSECT_WITH;  // "intersect_with"
extern ID INTERN_INVALIDATE_BOUNDS;  // "invalidate_bounds"
extern ID INTERN_SKPDOC;  // "skpdoc"
extern ID INTERN_GUID;  // "guid"
extern ID INTERN_GET_ATTRIBUTE;  // "get_attribute"
extern ID INTERN_SET_ATTRIBUTE;  // "set_attribute"
extern ID INTERN_OP_SQUARE_BRACKETS;  // "[]"
extern ID INTERN_OP_ASTERISKS;  // "*"
extern ID INTERN_OP_ADD;  // "+"
extern ID INTERN_OP_SUBTRACT;  // "-"

/// Fills every handle above (classes, the 172 method IDs, host version, 64-bit flag, face
/// point and OpenGL constants), in that order; Ruby thread only. Rescues nothing: a missing
/// constant raises NameError, a failing Sketchup.version or to_i its own error, a version
/// outside 32 bits RangeError, and the handles after the failure stay as they were (zero on
/// a first fill). A host without is_64bit? is no failure. Calling it again stores the same
/// values.
void vsu_init_ruby();

/// Calls vsu_init_ruby().
void init_ruby();

}  // namespace RU

#endif
