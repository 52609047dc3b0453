// A Ruby extension of its own, built against the installed Quillmark package:
//
//   QuillmarkConsumer.transform_points(transformation, points) -> Array of Geom::Point3d
//   QuillmarkConsumer.double_attribute(group_or_instance, dictionary, key) -> Float or nil
//
// Every point is transformed as the host transforms points (divided by the weight; all
// zero when the weight is unusable). The work follows the one pattern that is safe with
// worker threads: convert every Ruby value on the interpreter's thread, compute in
// parallel on plain doubles, then convert back on the interpreter's thread. Workers never
// see a VALUE.
//
// double_attribute reads one attribute through the host's C SDK rather than through Ruby.

#include <new>
#include <type_traits>

#include <quillmark/geom/geom_transformation.h>
#include <quillmark/geom/geom_vector3.h>
#include <quillmark/ruby/ruby_attributes.h>
#include <quillmark/ruby/ruby_entities.h>
#include <quillmark/ruby/ruby_geometry.h>
#include <quillmark/ruby/ruby_handles.h>
#include <quillmark/ruby/ruby_lib.h>
#include <quillmark/utils/parallel_dispatcher.h>

namespace {

struct TransformJob {
  Geom::Transformation transformation;
  Geom::Vector3* points;
};

void transform_slice(unsigned long begin, unsigned long end, void* data) {
  auto* job = static_cast<TransformJob*>(data);
  // In place, with the widest vector unit this processor has: the same bits as
  // transform_vector on each point.
  job->transformation.transform_vectors(job->points + begin, job->points + begin, end - begin);
}

// One pool for the life of the process, started on first use. Only the interpreter's
// thread dispatches, and it holds the GVL throughout, so no two dispatches overlap.
ParallelDispatcher& pool() {
  static ParallelDispatcher* const dispatcher =
      new ParallelDispatcher(ParallelDispatcher::get_num_processors());
  return *dispatcher;
}

VALUE transform_points(VALUE /*self*/, VALUE transformation, VALUE points) {
  // Any of the conversions below may raise, which skips C++ destructors: only trivially
  // destructible values are live here, and the point buffer belongs to Ruby's collector.
  static_assert(std::is_trivially_destructible<Geom::Vector3>::value,
                "the point buffer is never destroyed");
  TransformJob job;
  RU::value_to_transformation(transformation, job.transformation);
  Check_Type(points, T_ARRAY);
  long const count = RARRAY_LEN(points);

  VALUE buffer_owner = 0;
  job.points = ALLOCV_N(Geom::Vector3, buffer_owner, count);
  for (long i = 0; i < count; ++i) {
    new (&job.points[i]) Geom::Vector3();
    // The array may change under a conversion that calls back into Ruby: read it afresh.
    RU::value_to_vector(rb_ary_entry(points, i), job.points[i]);
  }

  pool().distribute_task(transform_slice, 0, static_cast<unsigned long>(count), &job);

  VALUE result = rb_ary_new_capa(count);
  for (long i = 0; i < count; ++i) {
    rb_ary_push(result, RU::point_to_value(job.points[i]));
  }
  ALLOCV_END(buffer_owner);
  return result;
}

VALUE double_attribute(VALUE /*self*/, VALUE entity_value, VALUE dictionary, VALUE key) {
  // Everything that may raise comes first, while nothing is held that needs releasing.
  char const* dictionary_name = StringValueCStr(dictionary);
  char const* key_name = StringValueCStr(key);
  SUEntityRef entity = SU_INVALID;
  if (RU::vsu_to_csu_gci_entity(entity_value, &entity) != SU_ERROR_NONE) return Qnil;

  SUTypedValueRef value = SU_INVALID;
  if (SUTypedValueCreate(&value) != SU_ERROR_NONE) return Qnil;
  double number = 0.0;
  SUResult result = RU::csu_entity_get_attribute(entity, dictionary_name, key_name, &value);
  if (result == SU_ERROR_NONE) result = RU::csu_typed_value_to_double(value, &number);
  SUTypedValueRelease(&value);
  return result == SU_ERROR_NONE ? rb_float_new(number) : Qnil;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) void Init_quillmark_consumer() {
  // Fills the handle cache the conversions use; raises NameError without the host.
  RU::init_ruby();
  VALUE module = rb_define_module("QuillmarkConsumer");
  rb_define_module_function(module, "transform_points", QM_METHOD_FUNC(transform_points), 2);
  rb_define_module_function(module, "double_attribute", QM_METHOD_FUNC(double_attribute), 3);
}
