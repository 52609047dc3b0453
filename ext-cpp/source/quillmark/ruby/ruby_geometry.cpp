#include <quillmark/ruby/ruby_geometry.h>

#include <cmath>
#include <cstring>

#include <quillmark/geom/geom_tolerances.h>
#include <quillmark/ruby/ruby_handles.h>

namespace RU {

namespace {

// Two axes count as perpendicular while the dot product of the (unnormalised) axes stays
// below this. Loose on purpose: it accepts what the host's own modelling tools leave behind
// after rounding, and still catches any visible shear.
constexpr double PERPENDICULAR_DOT_TOLERANCE = 0.001;

// Elements 12, 13 and 14 of the 16-element array are the translation: the only
// transformation elements that are lengths.
constexpr int TRANSLATION_BEGIN = 12;
constexpr int TRANSLATION_END = 15;

double scale_for_element(int k, double factor) {
  return k >= TRANSLATION_BEGIN && k < TRANSLATION_END ? factor : 1.0;
}

VALUE new_triple(VALUE klass, Geom::Vector3 const& v, double factor) {
  VALUE args[3] = {rb_float_new(v.x * factor), rb_float_new(v.y * factor),
                   rb_float_new(v.z * factor)};
  return rb_class_new_instance(3, args, klass);
}

// Every instance of Array or of a subclass is a T_ARRAY object and nothing else is, so the
// type tag answers rb_obj_is_kind_of(value, rb_cArray) without walking ancestors.
bool is_array(VALUE value) { return RB_TYPE_P(value, T_ARRAY); }

// An instance of exactly `klass` is answered from its class pointer; subclasses, and objects
// with a singleton class, take the full ancestor test.
bool is_kind_of(VALUE value, VALUE klass) {
  if (!SPECIAL_CONST_P(value) && RBASIC_CLASS(value) == klass) return true;
  return RTEST(rb_obj_is_kind_of(value, klass));
}

// rb_ary_entry for k >= 0, inlined: past the end reads nil. The length is read on every
// call because converting an earlier element may run Ruby code (a custom to_f) that
// changes the array.
VALUE entry(VALUE array, long k) {
  return k < RARRAY_LEN(array) ? RARRAY_CONST_PTR(array)[k] : Qnil;
}

// rb_num2dbl, with the two common immediates decoded inline: a call per element is most of
// a 16-element read. A flonum is a Float stored in the VALUE itself: the double's bits
// rotated left by 3, with bits 62 and 61 (which a flonum's exponent has complementary)
// replaced by the tag, and +0.0 kept as one fixed pattern. This layout has been the same on
// every 64-bit interpreter since flonums appeared.
double to_double(VALUE number) {
#if USE_FLONUM
  if (FLONUM_P(number)) {
    constexpr VALUE POSITIVE_ZERO = VALUE{1} << 63 | 0x02;
    if (number == POSITIVE_ZERO) return 0.0;
    VALUE bits = (2 - (number >> 63)) | (number & ~VALUE{0x03});
    bits = bits >> 3 | bits << 61;
    double d;
    std::memcpy(&d, &bits, sizeof d);
    return d;
  }
#endif
  if (FIXNUM_P(number)) return static_cast<double>(FIX2LONG(number));
  return rb_num2dbl(number);
}

// The Array that `to_a` answered; refuses an answer that is no Array rather than read it
// as one.
VALUE checked_to_a(VALUE value) {
  VALUE array = rb_funcallv(value, INTERN_TO_A, 0, nullptr);
  Check_Type(array, T_ARRAY);
  return array;
}

// Converts the three fetched components and stores each as soon as it converts, so a
// failure part-way leaves the earlier ones written.
void store_components(VALUE x, VALUE y, VALUE z, Geom::Vector3& out, double factor) {
  out.x = to_double(x) * factor;
  out.y = to_double(y) * factor;
  out.z = to_double(z) * factor;
}

// The value itself when it already is a `klass`, else klass.new(value).
VALUE coerce(VALUE value, VALUE klass) {
  if (is_kind_of(value, klass)) return value;
  return rb_class_new_instance(1, &value, klass);
}

}  // namespace

VALUE vector_to_value(Geom::Vector3 const& v) { return new_triple(SU_VECTOR3D, v, 1.0); }

VALUE vector_to_value2(Geom::Vector3 const& v, double factor) {
  return new_triple(SU_VECTOR3D, v, factor);
}

VALUE point_to_value(Geom::Vector3 const& p) { return new_triple(SU_POINT3D, p, 1.0); }

VALUE point_to_value2(Geom::Vector3 const& p, double factor) {
  return new_triple(SU_POINT3D, p, factor);
}

VALUE transformation_to_value(Geom::Transformation const& t) {
  return transformation_to_value2(t, 1.0);
}

VALUE transformation_to_value2(Geom::Transformation const& t, double factor) {
  double const* m = t.data();
  VALUE array = rb_ary_new_capa(16);
  for (int k = 0; k < 16; ++k) {
    rb_ary_store(array, k, rb_float_new(m[k] * scale_for_element(k, factor)));
  }
  return rb_class_new_instance(1, &array, SU_TRANSFORMATION);
}

VALUE color_to_value(Geom::Color const& c) {
  VALUE args[4] = {INT2FIX(c.r), INT2FIX(c.g), INT2FIX(c.b), INT2FIX(c.a)};
  return rb_class_new_instance(4, args, SU_COLOR);
}

VALUE bb_to_value(Geom::BoundingBox3 const& bb) { return bb_to_value2(bb, 1.0); }

VALUE bb_to_value2(Geom::BoundingBox3 const& bb, double factor) {
  VALUE box = rb_class_new_instance(0, nullptr, SU_BOUNDING_BOX);
  // Written as >= so that a NaN on any axis reads as empty.
  if (bb.max.x >= bb.min.x && bb.max.y >= bb.min.y && bb.max.z >= bb.min.z) {
    VALUE min = new_triple(SU_POINT3D, bb.min, factor);
    rb_funcall(box, INTERN_ADD, 1, min);
    VALUE max = new_triple(SU_POINT3D, bb.max, factor);
    rb_funcall(box, INTERN_ADD, 1, max);
  }
  return box;
}

void varry_to_vector(VALUE const* elements, Geom::Vector3& out) {
  varry_to_vector2(elements, out, 1.0);
}

void varry_to_vector2(VALUE const* elements, Geom::Vector3& out, double factor) {
  store_components(elements[0], elements[1], elements[2], out, factor);
}

void value_to_vector(VALUE value, Geom::Vector3& out) { value_to_vector2(value, out, 1.0); }

void value_to_vector2(VALUE value, Geom::Vector3& out, double factor) {
  VALUE x, y, z;
  if (is_array(value)) {
    x = entry(value, 0);
    y = entry(value, 1);
    z = entry(value, 2);
  } else if (is_kind_of(value, SU_POINT3D)) {
    VALUE array = checked_to_a(value);
    x = entry(array, 0);
    y = entry(array, 1);
    z = entry(array, 2);
    RB_GC_GUARD(array);
  } else {
    x = rb_funcallv(value, INTERN_X, 0, nullptr);
    y = rb_funcallv(value, INTERN_Y, 0, nullptr);
    z = rb_funcallv(value, INTERN_Z, 0, nullptr);
  }
  // rb_num2dbl may call to_f on an exotic Numeric, which can collect garbage: the three
  // components must stay visible to the collector until all are read.
  store_components(x, y, z, out, factor);
  RB_GC_GUARD(x);
  RB_GC_GUARD(y);
  RB_GC_GUARD(z);
}

bool value_to_vector_safe(VALUE value, Geom::Vector3& out) {
  if (is_array(value) && RARRAY_LEN(value) >= 3) {
    VALUE x = entry(value, 0);
    VALUE y = entry(value, 1);
    VALUE z = entry(value, 2);
    if (!RTEST(rb_obj_is_kind_of(x, rb_cNumeric)) || !RTEST(rb_obj_is_kind_of(y, rb_cNumeric)) ||
        !RTEST(rb_obj_is_kind_of(z, rb_cNumeric))) {
      return false;
    }
    store_components(x, y, z, out, 1.0);
    return true;
  }
  if (is_kind_of(value, SU_POINT3D) || is_kind_of(value, SU_VECTOR3D)) {
    out.x = to_double(rb_funcallv(value, INTERN_X, 0, nullptr));
    out.y = to_double(rb_funcallv(value, INTERN_Y, 0, nullptr));
    out.z = to_double(rb_funcallv(value, INTERN_Z, 0, nullptr));
    return true;
  }
  return false;
}

void value_to_transformation(VALUE value, Geom::Transformation& out) {
  value_to_transformation2(value, out, 1.0);
}

void value_to_transformation2(VALUE value, Geom::Transformation& out, double factor) {
  VALUE array = checked_to_a(coerce(value, SU_TRANSFORMATION));
  double* m = out.data();
  for (int k = 0; k < 16; ++k) {
    m[k] = to_double(entry(array, k)) * scale_for_element(k, factor);
  }
  RB_GC_GUARD(array);
}

void value_to_transformation3(VALUE value, Geom::Transformation& out) {
  VALUE array = checked_to_a(coerce(value, SU_TRANSFORMATION));

  // Built in a local so that out stays untouched by every raise below. Elements 3, 7 and
  // 11 (the projective row) are never read: the result is affine by construction.
  Geom::Transformation t;
  Geom::Vector4* columns[4] = {&t.x_axis, &t.y_axis, &t.z_axis, &t.origin};
  for (int c = 0; c < 4; ++c) {
    columns[c]->x = to_double(entry(array, 4 * c));
    columns[c]->y = to_double(entry(array, 4 * c + 1));
    columns[c]->z = to_double(entry(array, 4 * c + 2));
  }
  double w = to_double(entry(array, 15));
  RB_GC_GUARD(array);

  // A weight other than 1 scales the whole matrix (the host keeps a uniform scale there);
  // dividing it out keeps that scale in the axes. An unusable or NaN weight divides nothing.
  if (std::fabs(w) > Geom::LENGTH_EPSILON) {
    double s = 1.0 / w;
    for (Geom::Vector4* column : columns) column->scale_self(s);
  }

  // Written as !(|dot| < tolerance) so that a NaN fails the test too.
  if (!(std::fabs(t.x_axis.dot(t.y_axis)) < PERPENDICULAR_DOT_TOLERANCE) ||
      !(std::fabs(t.x_axis.dot(t.z_axis)) < PERPENDICULAR_DOT_TOLERANCE) ||
      !(std::fabs(t.y_axis.dot(t.z_axis)) < PERPENDICULAR_DOT_TOLERANCE)) {
    rb_raise(rb_eTypeError,
             "Expected a uniform transformation, where axes are perpendicular to each other.");
  }
  if (t.x_axis.length() < Geom::LENGTH_EPSILON || t.y_axis.length() < Geom::LENGTH_EPSILON ||
      t.z_axis.length() < Geom::LENGTH_EPSILON) {
    rb_raise(rb_eTypeError,
             "Expected a non-flat transformation, where axes are non-zero-lengthed.");
  }
  out = t;
}

void value_to_bb(VALUE value, Geom::BoundingBox3& out) { value_to_bb2(value, out, 1.0); }

void value_to_bb2(VALUE value, Geom::BoundingBox3& out, double factor) {
  if (!is_kind_of(value, SU_BOUNDING_BOX)) {
    rb_raise(rb_eTypeError, "Expected %" PRIsVALUE, rb_class_name(SU_BOUNDING_BOX));
  }
  value_to_vector2(rb_funcallv(value, INTERN_MIN, 0, nullptr), out.min, factor);
  value_to_vector2(rb_funcallv(value, INTERN_MAX, 0, nullptr), out.max, factor);
}

void value_to_color(VALUE value, Geom::Color& out) {
  VALUE color = coerce(value, SU_COLOR);
  out.r = static_cast<unsigned char>(NUM2INT(rb_funcallv(color, INTERN_RED, 0, nullptr)));
  out.g = static_cast<unsigned char>(NUM2INT(rb_funcallv(color, INTERN_GREEN, 0, nullptr)));
  out.b = static_cast<unsigned char>(NUM2INT(rb_funcallv(color, INTERN_BLUE, 0, nullptr)));
  out.a = static_cast<unsigned char>(NUM2INT(rb_funcallv(color, INTERN_ALPHA, 0, nullptr)));
  RB_GC_GUARD(color);
}

}  // namespace RU
