// The Ruby bridge's conversions beside the interpreter's own floor for the same work: the
// Ruby calls that a conversion cannot avoid (`t.to_a`, `Geom::Point3d.new(x, y, z)`,
// `codes.pack("U*")`, `str.unpack("U*")`), issued from C with no conversion around them, or,
// where the conversion makes no Ruby call at all, the same reads written in Ruby. The
// interpreter runs embedded, with the host stand-in loaded, as in the bridge's tests.

#include <benchmark/benchmark.h>

#include <string>

#include <quillmark/ruby/ruby_geometry.h>
#include <quillmark/ruby/ruby_handles.h>
#include <quillmark/ruby/ruby_strings.h>
#include "embedded_ruby_bench.h"

namespace {

using qmbench::eval_or_die;

// Ruby values a benchmark reads, made once and kept alive through a global variable.
VALUE keep(const char* name, VALUE value) {
  rb_gv_set(name, value);
  return value;
}

// 100 code points of mixed text: ASCII, Latin, CJK and one beyond U+FFFF in every ten.
std::wstring mixed_text() {
  const wchar_t pattern[] = {L'S', L'i', L'z', 0xE9, L' ', 0x5C3A, 0x5BF8, L'/', 0x1F4D0, L'.'};
  std::wstring text;
  for (int i = 0; i < 10; ++i) text.append(pattern, 10);
  return text;
}

std::wstring ascii_text() { return std::wstring(100, L'a'); }

VALUE code_points(std::wstring const& text) {
  VALUE codes = rb_ary_new_capa(static_cast<long>(text.size()));
  for (wchar_t unit : text) rb_ary_push(codes, UINT2NUM(static_cast<unsigned>(unit)));
  return codes;
}

// --- Transformations --------------------------------------------------------------------

void BM_value_to_transformation(benchmark::State& state) {
  VALUE t = keep("$bench_t", eval_or_die("Geom::Transformation.new((1..16).map(&:to_f))"));
  Geom::Transformation out;
  for (auto _ : state) {
    RU::value_to_transformation(t, out);
    benchmark::DoNotOptimize(out);
  }
}

void BM_floor_transformation_to_a(benchmark::State& state) {
  VALUE t = keep("$bench_t", eval_or_die("Geom::Transformation.new((1..16).map(&:to_f))"));
  for (auto _ : state) benchmark::DoNotOptimize(rb_funcallv(t, RU::INTERN_TO_A, 0, nullptr));
}

void BM_transformation_to_value(benchmark::State& state) {
  Geom::Transformation t = Geom::Transformation::rotatez(0.5);
  t.origin = Geom::Vector4(1.5, -2.25, 3.125, 1.0);
  for (auto _ : state) benchmark::DoNotOptimize(RU::transformation_to_value(t));
}

// What the interpreter does for `Geom::Transformation.new([e0, ..., e15])`: one Array of
// 16 ready values, then the constructor.
void BM_floor_transformation_new(benchmark::State& state) {
  VALUE elements = keep("$bench_e", eval_or_die("(1..16).map { |i| i * 0.5 + 0.25 }"));
  VALUE const* values = RARRAY_CONST_PTR(elements);
  for (auto _ : state) {
    VALUE array = rb_ary_new_from_values(16, values);
    benchmark::DoNotOptimize(rb_class_new_instance(1, &array, RU::SU_TRANSFORMATION));
  }
}

// --- Points and vectors -----------------------------------------------------------------

void BM_value_to_vector_array(benchmark::State& state) {
  VALUE array = keep("$bench_a", eval_or_die("[1.5, -2.25, 3.125]"));
  Geom::Vector3 out;
  for (auto _ : state) {
    RU::value_to_vector(array, out);
    benchmark::DoNotOptimize(out);
  }
}

// The same three reads written in Ruby, called once per iteration.
void BM_floor_array_reads_in_ruby(benchmark::State& state) {
  eval_or_die("module QmBenchFloor; def self.xyz(a); a[0].to_f; a[1].to_f; a[2].to_f; end; end");
  VALUE array = keep("$bench_a", eval_or_die("[1.5, -2.25, 3.125]"));
  VALUE floor = eval_or_die("QmBenchFloor");
  ID xyz = rb_intern("xyz");
  for (auto _ : state) benchmark::DoNotOptimize(rb_funcall(floor, xyz, 1, array));
}

void BM_value_to_vector_point(benchmark::State& state) {
  VALUE point = keep("$bench_p", eval_or_die("Geom::Point3d.new(1.5, -2.25, 3.125)"));
  Geom::Vector3 out;
  for (auto _ : state) {
    RU::value_to_vector(point, out);
    benchmark::DoNotOptimize(out);
  }
}

void BM_floor_point_to_a(benchmark::State& state) {
  VALUE point = keep("$bench_p", eval_or_die("Geom::Point3d.new(1.5, -2.25, 3.125)"));
  for (auto _ : state) benchmark::DoNotOptimize(rb_funcallv(point, RU::INTERN_TO_A, 0, nullptr));
}

void BM_point_to_value(benchmark::State& state) {
  Geom::Vector3 p(1.5, -2.25, 3.125);
  for (auto _ : state) benchmark::DoNotOptimize(RU::point_to_value(p));
}

void BM_floor_point_new(benchmark::State& state) {
  VALUE args[3] = {rb_float_new(1.5), rb_float_new(-2.25), rb_float_new(3.125)};
  for (auto _ : state) benchmark::DoNotOptimize(rb_class_new_instance(3, args, RU::SU_POINT3D));
}

// --- Wide strings -----------------------------------------------------------------------

void BM_wide_to_value(benchmark::State& state, std::wstring (*make)()) {
  std::wstring text = make();
  for (auto _ : state) benchmark::DoNotOptimize(RU::to_value(text.c_str()));
}

void BM_floor_pack_u(benchmark::State& state, std::wstring (*make)()) {
  VALUE codes = keep("$bench_codes", code_points(make()));
  VALUE format = keep("$bench_format", rb_str_new_cstr("U*"));
  for (auto _ : state) benchmark::DoNotOptimize(rb_funcall(codes, RU::INTERN_PACK, 1, format));
}

void BM_value_to_wc_str(benchmark::State& state, std::wstring (*make)()) {
  std::wstring text = make();
  VALUE string = keep("$bench_s", RU::to_value(text.c_str()));
  for (auto _ : state) {
    wchar_t* wide = RU::value_to_wc_str(string);
    benchmark::DoNotOptimize(wide);
    delete[] wide;
  }
}

void BM_floor_unpack_u(benchmark::State& state, std::wstring (*make)()) {
  std::wstring text = make();
  VALUE string = keep("$bench_s", RU::to_value(text.c_str()));
  VALUE format = keep("$bench_format", rb_str_new_cstr("U*"));
  for (auto _ : state) benchmark::DoNotOptimize(rb_funcall(string, RU::INTERN_UNPACK, 1, format));
}

}  // namespace

BENCHMARK(BM_value_to_transformation);
BENCHMARK(BM_floor_transformation_to_a);
BENCHMARK(BM_transformation_to_value);
BENCHMARK(BM_floor_transformation_new);
BENCHMARK(BM_value_to_vector_array);
BENCHMARK(BM_floor_array_reads_in_ruby);
BENCHMARK(BM_value_to_vector_point);
BENCHMARK(BM_floor_point_to_a);
BENCHMARK(BM_point_to_value);
BENCHMARK(BM_floor_point_new);
BENCHMARK_CAPTURE(BM_wide_to_value, ascii100, ascii_text);
BENCHMARK_CAPTURE(BM_floor_pack_u, ascii100, ascii_text);
BENCHMARK_CAPTURE(BM_wide_to_value, mixed100, mixed_text);
BENCHMARK_CAPTURE(BM_floor_pack_u, mixed100, mixed_text);
BENCHMARK_CAPTURE(BM_value_to_wc_str, ascii100, ascii_text);
BENCHMARK_CAPTURE(BM_floor_unpack_u, ascii100, ascii_text);
BENCHMARK_CAPTURE(BM_value_to_wc_str, mixed100, mixed_text);
BENCHMARK_CAPTURE(BM_floor_unpack_u, mixed100, mixed_text);

int main(int argc, char** argv) { return qmbench::run_in_ruby(argc, argv, "bench_ruby"); }
