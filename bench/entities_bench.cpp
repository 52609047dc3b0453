// The entity finders on large models: time per find, time per entity visited, and heap
// allocations per find. The peer is the same walk written the obvious way, with a fresh
// std::vector for every list the SDK hands out. Models are built by the host's Ruby stand-in
// in the SDK stand-in, exactly as the bridge's tests build them, with the interpreter
// embedded.
//
// Every model holds `groups` groups spread evenly over `definitions` component definitions;
// the group looked for is the last one of the last definition, so a find visits every group
// definition (one per group), every component definition and every group.

#include <benchmark/benchmark.h>

#include <sketchup_api_standin.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include <quillmark/ruby/ruby_entities.h>
#include <quillmark/ruby/ruby_handles.h>
#include "embedded_ruby_bench.h"

// Allocation counting: the executable's malloc family interposes glibc's for the whole
// process, the interpreter and the SDK stand-in included.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* pointer, size_t size);
}

namespace {
bool counting = false;
size_t allocations = 0;
}  // namespace

extern "C" {
void* malloc(size_t size) {
  if (counting) ++allocations;
  return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
  if (counting) ++allocations;
  return __libc_calloc(count, size);
}
void* realloc(void* pointer, size_t size) {
  if (counting) ++allocations;
  return __libc_realloc(pointer, size);
}
}

namespace {

// The last group of a model of `groups` groups over `definitions` definitions, built once per
// shape and kept alive in a global variable.
VALUE last_group(long groups, long definitions) {
  const std::string name = "$bench_" + std::to_string(groups) + "_" + std::to_string(definitions);
  const VALUE cached = rb_gv_get(name.c_str());
  if (!NIL_P(cached)) return cached;
  const std::string code = name + " = begin\n" +
                           "  model = Sketchup::Model.new\n"
                           "  last = nil\n  " +
                           std::to_string(definitions) + ".times do |d|\n" +
                           "    definition = model.definitions.add(\"D#{d}\")\n    " +
                           std::to_string(groups / definitions) +
                           ".times { last = definition.entities.add_group }\n" +
                           "  end\n"
                           "  last\n"
                           "end";
  return qmbench::eval_or_die(code.c_str());
}

// The same walk with a vector per list: what the finder saves.
bool vector_walk(SUEntitiesRef entities, int32_t id, SUGroupRef* out) {
  size_t count = 0;
  if (SUEntitiesGetNumGroups(entities, &count) != SU_ERROR_NONE) return false;
  std::vector<SUGroupRef> items(count);
  if (SUEntitiesGetGroups(entities, count, items.data(), &count) != SU_ERROR_NONE) return false;
  for (size_t i = 0; i < count; ++i) {
    int32_t candidate = 0;
    if (SUEntityGetID(SUGroupToEntity(items[i]), &candidate) == SU_ERROR_NONE && candidate == id) {
      *out = items[i];
      return true;
    }
  }
  return false;
}

SUResult vector_find_group(VALUE group, SUGroupRef* out) {
  SUModelRef model = SU_INVALID;
  RU::vsu_to_csu_model(rb_funcallv(group, RU::INTERN_MODEL, 0, nullptr), &model);
  const int32_t id = NUM2INT(rb_funcallv(group, RU::INTERN_ENTITYID, 0, nullptr));
  SUEntitiesRef top = SU_INVALID;
  SUModelGetEntities(model, &top);
  if (vector_walk(top, id, out)) return SU_ERROR_NONE;
  using CountDefinitions = SUResult (*)(SUModelRef, size_t*);
  using ListDefinitions = SUResult (*)(SUModelRef, size_t, SUComponentDefinitionRef[], size_t*);
  const std::pair<CountDefinitions, ListDefinitions> lists[] = {
      {SUModelGetNumGroupDefinitions, SUModelGetGroupDefinitions},
      {SUModelGetNumComponentDefinitions, SUModelGetComponentDefinitions}};
  for (const auto& [count_of, list_of] : lists) {
    size_t count = 0;
    count_of(model, &count);
    std::vector<SUComponentDefinitionRef> definitions(count);
    list_of(model, count, definitions.data(), &count);
    for (size_t i = 0; i < count; ++i) {
      SUEntitiesRef entities = SU_INVALID;
      SUComponentDefinitionGetEntities(definitions[i], &entities);
      if (vector_walk(entities, id, out)) return SU_ERROR_NONE;
    }
  }
  return SU_ERROR_GENERIC;
}

template <SUResult (*Find)(VALUE, SUGroupRef*)>
void BM_find_last_group(benchmark::State& state) {
  const long groups = state.range(0);
  const long definitions = state.range(1);
  const VALUE group = last_group(groups, definitions);
  SUGroupRef found = SU_INVALID;
  if (Find(group, &found) != SU_ERROR_NONE) {
    state.SkipWithError("the last group was not found");
    return;
  }
  allocations = 0;
  for (auto _ : state) {
    counting = true;
    const SUResult result = Find(group, &found);
    counting = false;
    benchmark::DoNotOptimize(result);
    benchmark::DoNotOptimize(found);
  }
  const double finds = static_cast<double>(state.iterations());
  // One group definition per group, every component definition, every group.
  const double visited = static_cast<double>(groups + definitions + groups);
  state.counters["allocs/find"] = benchmark::Counter(static_cast<double>(allocations) / finds);
  state.counters["visited"] = benchmark::Counter(visited);
  state.counters["per_entity"] = benchmark::Counter(
      visited, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void shapes(benchmark::internal::Benchmark* bench) {
  bench->Args({1000, 10})->Args({10000, 100})->Args({100000, 1000})->Unit(benchmark::kMicrosecond);
}

BENCHMARK_TEMPLATE(BM_find_last_group, RU::vsu_to_csu_group)
    ->Name("finder/vsu_to_csu_group")
    ->Apply(shapes);
BENCHMARK_TEMPLATE(BM_find_last_group, vector_find_group)
    ->Name("peer/vector_per_list")
    ->Apply(shapes);

}  // namespace

int main(int argc, char** argv) { return qmbench::run_in_ruby(argc, argv, "bench_entities"); }
