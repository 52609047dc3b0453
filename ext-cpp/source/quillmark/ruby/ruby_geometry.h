#ifndef QUILLMARK_RUBY_RUBY_GEOMETRY_H
#define QUILLMARK_RUBY_RUBY_GEOMETRY_H

// Geometry across the border between the host's Ruby objects (Geom::Point3d, Vector3d,
// Transformation, BoundingBox, Sketchup::Color) and the library's value types. Every form
// whose name ends in 2 multiplies each length that crosses by `factor`, in either
// direction: point and vector coordinates, box corners, a transformation's translation.
// Axes and colour channels are never scaled. All of these need the handle cache filled,
// run on the interpreter's thread and may raise Ruby exceptions. A transformation crosses
// as the host's 16-element array, which has the library's column-major order.

#include <quillmark/geom/geom_bounding_box3.h>
#include <quillmark/geom/geom_color.h>
#include <quillmark/geom/geom_transformation.h>
#include <quillmark/geom/geom_vector3.h>
#include <quillmark/ruby/ruby_lib.h>

namespace RU {

/// Geom::Vector3d.new(x, y, z).
VALUE vector_to_value(Geom::Vector3 const& v);
VALUE vector_to_value2(Geom::Vector3 const& v, double factor);

/// Geom::Point3d.new(x, y, z).
VALUE point_to_value(Geom::Vector3 const& p);
VALUE point_to_value2(Geom::Vector3 const& p, double factor);

/// Geom::Transformation.new(array of 16 Floats); the 2 form scales elements 12 to 14 only.
VALUE transformation_to_value(Geom::Transformation const& t);
VALUE transformation_to_value2(Geom::Transformation const& t, double factor);

/// Sketchup::Color.new(r, g, b, a).
VALUE color_to_value(Geom::Color const& c);

/// A new Geom::BoundingBox: empty when the library box is (max < min on some axis, or a
/// NaN), otherwise grown by min and then max.
VALUE bb_to_value(Geom::BoundingBox3 const& bb);
VALUE bb_to_value2(Geom::BoundingBox3 const& bb, double factor);

/// Three Ruby numbers in consecutive memory (the caller guarantees all three are readable),
/// converted and stored x, y, z in that order; a non-number raises TypeError after the
/// components before it are written.
void varry_to_vector(VALUE const* elements, Geom::Vector3& out);
void varry_to_vector2(VALUE const* elements, Geom::Vector3& out, double factor);

/// Elements 0 to 2 of an Array (missing ones read as nil and raise TypeError), the to_a of
/// a Geom::Point3d, or else x, y and z of any object (NoMethodError without them). A
/// failure part-way leaves the components before it written.
void value_to_vector(VALUE value, Geom::Vector3& out);
void value_to_vector2(VALUE value, Geom::Vector3& out, double factor);

/// Accepts an Array of at least three Numerics (only the first three are read), a
/// Geom::Point3d or a Geom::Vector3d; answers false for anything else, with out untouched.
/// Not quite raise-free: a Numeric that will not become a Float (Complex(1, 1)) raises, with
/// the components before it written.
bool value_to_vector_safe(VALUE value, Geom::Vector3& out);

/// A Geom::Transformation, or anything Geom::Transformation.new takes as its one argument
/// (whatever that raises propagates). out is written element by element, so an element that
/// is no number, or missing, raises TypeError with the earlier elements written.
void value_to_transformation(VALUE value, Geom::Transformation& out);
void value_to_transformation2(VALUE value, Geom::Transformation& out, double factor);

/// As value_to_transformation, made affine: the projective row is dropped, a usable weight
/// (|w| > 1e-6) is divided out, and the axes must be pairwise perpendicular (|dot| < 0.001)
/// and at least 1e-6 long, else TypeError. Axes of different lengths and mirrored axes pass.
/// out is written only when both checks pass.
void value_to_transformation3(VALUE value, Geom::Transformation& out);

/// A Geom::BoundingBox only (TypeError "Expected Geom::BoundingBox" otherwise); its min and
/// max as the host reports them, with no emptiness test.
void value_to_bb(VALUE value, Geom::BoundingBox3& out);
void value_to_bb2(VALUE value, Geom::BoundingBox3& out, double factor);

/// A Sketchup::Color, or anything Sketchup::Color.new takes as its one argument; the low
/// 8 bits of each channel, stored r, g, b, a in that order.
void value_to_color(VALUE value, Geom::Color& out);

}  // namespace RU

#endif
