// Threads and bit storage beside their peers: ThreadHive against tbb::task_group, the Debian
// thread pool and std::async; ParallelDispatcher against OpenMP and tbb::parallel_for; BitBuffer
// against std::vector<bool>. Every peer runs in this binary, in the same run, on two threads.
#include <benchmark/benchmark.h>
#include <oneapi/tbb/blocked_range.h>
#include <oneapi/tbb/parallel_for.h>
#include <oneapi/tbb/partitioner.h>
#include <oneapi/tbb/task_arena.h>
#include <oneapi/tbb/task_group.h>
#include <thread_pool/thread_pool.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <future>
#include <random>
#include <thread>
#include <vector>

#include <quillmark/geom/geom_transformation.h>
#include <quillmark/utils/bit_buffer.h>
#include <quillmark/utils/parallel_dispatcher.h>
#include <quillmark/utils/thread_hive.h>

namespace {

constexpr int kThreads = 2;
constexpr std::int64_t kEmptyTasks = 1000000;
constexpr std::int64_t kMicroTasks = 100000;
constexpr std::int64_t kAsyncTasks = 2000;  // one thread per task: scaled down
// A dependent multiply-add chain of this length takes about a microsecond here; the
// Task/Serial row reports what it really costs on the machine that runs the benchmark.
constexpr int kMicroTaskSteps = 330;

benchmark::Counter per_item(std::int64_t items) {
  return benchmark::Counter(
      static_cast<double>(items),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void empty_work() { benchmark::ClobberMemory(); }

void micro_work() {
  double x = 1.0;
  for (int i = 0; i < kMicroTaskSteps; ++i) {
    x = x * 1.0000001 + 1e-9;
  }
  benchmark::DoNotOptimize(x);
}

template <void (*Work)()>
void hive_task(void*, ThreadHive*) {
  Work();
}

oneapi::tbb::task_arena& two_thread_arena() {
  static oneapi::tbb::task_arena arena(kThreads);
  return arena;
}

// ---- Pool: throughput of many small tasks ----

template <void (*Work)()>
void BM_Pool_ThreadHive(benchmark::State& state) {
  const std::int64_t tasks = state.range(0);
  ThreadHive hive(kThreads);
  for (auto _ : state) {
    for (std::int64_t i = 0; i < tasks; ++i) hive.enqueue(&hive_task<Work>, nullptr);
    hive.wait_until_finished();
  }
  state.counters["per_task"] = per_item(tasks);
}

template <void (*Work)()>
void BM_Pool_TbbTaskGroup(benchmark::State& state) {
  const std::int64_t tasks = state.range(0);
  for (auto _ : state) {
    two_thread_arena().execute([tasks] {
      oneapi::tbb::task_group group;
      for (std::int64_t i = 0; i < tasks; ++i) group.run([] { Work(); });
      group.wait();
    });
  }
  state.counters["per_task"] = per_item(tasks);
}

template <void (*Work)()>
void BM_Pool_DebianThreadPool(benchmark::State& state) {
  const std::int64_t tasks = state.range(0);
  thread_pool::ThreadPool pool(kThreads);
  std::vector<std::future<void>> done;
  done.reserve(static_cast<std::size_t>(tasks));
  for (auto _ : state) {
    done.clear();
    for (std::int64_t i = 0; i < tasks; ++i) done.push_back(pool.Submit([] { Work(); }));
    for (auto& f : done) f.wait();
  }
  state.counters["per_task"] = per_item(tasks);
}

template <void (*Work)()>
void BM_Pool_StdAsync(benchmark::State& state) {
  const std::int64_t tasks = state.range(0);
  std::vector<std::future<void>> done;
  done.reserve(static_cast<std::size_t>(tasks));
  for (auto _ : state) {
    done.clear();
    for (std::int64_t i = 0; i < tasks; ++i) {
      done.push_back(std::async(std::launch::async, [] { Work(); }));
    }
    for (auto& f : done) f.wait();
  }
  state.counters["per_task"] = per_item(tasks);
}

void BM_Task_Serial(benchmark::State& state) {
  for (auto _ : state) micro_work();
}

BENCHMARK_TEMPLATE(BM_Pool_ThreadHive, empty_work)
    ->Arg(kEmptyTasks)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_TEMPLATE(BM_Pool_TbbTaskGroup, empty_work)
    ->Arg(kEmptyTasks)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_TEMPLATE(BM_Pool_DebianThreadPool, empty_work)
    ->Arg(kEmptyTasks)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_TEMPLATE(BM_Pool_StdAsync, empty_work)
    ->Arg(kAsyncTasks)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_Task_Serial);
BENCHMARK_TEMPLATE(BM_Pool_ThreadHive, micro_work)
    ->Arg(kMicroTasks)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_TEMPLATE(BM_Pool_TbbTaskGroup, micro_work)
    ->Arg(kMicroTasks)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_TEMPLATE(BM_Pool_DebianThreadPool, micro_work)
    ->Arg(kMicroTasks)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_TEMPLATE(BM_Pool_StdAsync, micro_work)
    ->Arg(kAsyncTasks)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// ---- Dispatcher: latency of a tiny range ----

void touch_range(unsigned long begin, unsigned long end, void* data) {
  auto* slots = static_cast<std::uint64_t*>(data);
  for (unsigned long i = begin; i < end; ++i) slots[i * 8] += i;  // one cache line per index
}

std::uint64_t tiny_slots[2 * 8];

void tiny_openmp() {
#pragma omp parallel for num_threads(kThreads) schedule(static)
  for (int i = 0; i < 2; ++i) {
    touch_range(static_cast<unsigned long>(i), static_cast<unsigned long>(i) + 1, tiny_slots);
  }
}

void tiny_tbb() {
  two_thread_arena().execute([] {
    oneapi::tbb::parallel_for(
        oneapi::tbb::blocked_range<unsigned long>(0, 2, 1),
        [](const oneapi::tbb::blocked_range<unsigned long>& r) {
          touch_range(r.begin(), r.end(), tiny_slots);
        },
        oneapi::tbb::simple_partitioner());
  });
}

void BM_Dispatch_Tiny_ParallelDispatcher(benchmark::State& state) {
  ParallelDispatcher dispatcher(kThreads);
  for (auto _ : state) dispatcher.distribute_task(&touch_range, 0, 2, tiny_slots);
}

void BM_Dispatch_Tiny_OpenMP(benchmark::State& state) {
  for (auto _ : state) tiny_openmp();
}

void BM_Dispatch_Tiny_Tbb(benchmark::State& state) {
  for (auto _ : state) tiny_tbb();
}

BENCHMARK(BM_Dispatch_Tiny_ParallelDispatcher)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_Dispatch_Tiny_OpenMP)->Unit(benchmark::kMicrosecond)->UseRealTime();
BENCHMARK(BM_Dispatch_Tiny_Tbb)->Unit(benchmark::kMicrosecond)->UseRealTime();

// ---- Dispatcher: what an idle loop costs after its last dispatch ----
// One tiny dispatch, then 20 ms of rest: the process CPU time spent during the rest is what
// polling threads burn before they go to sleep.

constexpr auto kRest = std::chrono::milliseconds(20);

double process_cpu_us() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) * 1e6 + static_cast<double>(t.tv_nsec) / 1e3;
}

template <typename Dispatch>
void measure_idle(benchmark::State& state, Dispatch dispatch) {
  double idle_cpu = 0;
  for (auto _ : state) {
    dispatch();
    const double before = process_cpu_us();
    std::this_thread::sleep_for(kRest);
    idle_cpu += process_cpu_us() - before;
  }
  state.counters["idle_cpu_us"] = idle_cpu / static_cast<double>(state.iterations());
}

void BM_Idle_ParallelDispatcher(benchmark::State& state) {
  ParallelDispatcher dispatcher(kThreads);
  measure_idle(state, [&] { dispatcher.distribute_task(&touch_range, 0, 2, tiny_slots); });
}

void BM_Idle_OpenMP(benchmark::State& state) { measure_idle(state, &tiny_openmp); }

void BM_Idle_Tbb(benchmark::State& state) { measure_idle(state, &tiny_tbb); }

BENCHMARK(BM_Idle_ParallelDispatcher)->Iterations(25)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Idle_OpenMP)->Iterations(25)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Idle_Tbb)->Iterations(25)->Unit(benchmark::kMillisecond)->UseRealTime();

// ---- Dispatcher: speed-up of a real loop ----

constexpr std::size_t kPoints = 4000000;

struct PointLoop {
  Geom::Transformation transformation;
  std::vector<Geom::Vector3> in;
  std::vector<Geom::Vector3> out;

  PointLoop()
      : transformation(Geom::Vector3(1.0, -2.0, 0.5), Geom::Vector3(0.3, 0.4, 0.866), 0.7),
        in(kPoints),
        out(kPoints) {
    std::mt19937_64 rng(42);
    std::uniform_real_distribution<double> coordinate(-100.0, 100.0);
    for (auto& p : in) p = Geom::Vector3(coordinate(rng), coordinate(rng), coordinate(rng));
  }

  void run(std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) out[i] = transformation.transform_vector(in[i]);
  }
};

PointLoop& point_loop() {
  static PointLoop loop;
  return loop;
}

void BM_Loop_Serial(benchmark::State& state) {
  PointLoop& loop = point_loop();
  for (auto _ : state) {
    loop.run(0, kPoints);
    benchmark::ClobberMemory();
  }
}

void BM_Loop_ParallelDispatcher(benchmark::State& state) {
  PointLoop& loop = point_loop();
  ParallelDispatcher dispatcher(kThreads);
  for (auto _ : state) {
    dispatcher.distribute_task([](unsigned long begin, unsigned long end,
                                  void* data) { static_cast<PointLoop*>(data)->run(begin, end); },
                               0, kPoints, &loop);
    benchmark::ClobberMemory();
  }
}

void BM_Loop_OpenMP(benchmark::State& state) {
  PointLoop& loop = point_loop();
  for (auto _ : state) {
#pragma omp parallel for num_threads(kThreads) schedule(static)
    for (long i = 0; i < static_cast<long>(kPoints); ++i) {
      loop.out[static_cast<std::size_t>(i)] =
          loop.transformation.transform_vector(loop.in[static_cast<std::size_t>(i)]);
    }
    benchmark::ClobberMemory();
  }
}

void BM_Loop_Tbb(benchmark::State& state) {
  PointLoop& loop = point_loop();
  for (auto _ : state) {
    two_thread_arena().execute([&loop] {
      oneapi::tbb::parallel_for(oneapi::tbb::blocked_range<std::size_t>(0, kPoints),
                                [&loop](const oneapi::tbb::blocked_range<std::size_t>& r) {
                                  loop.run(r.begin(), r.end());
                                });
    });
    benchmark::ClobberMemory();
  }
}

BENCHMARK(BM_Loop_Serial)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Loop_ParallelDispatcher)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Loop_OpenMP)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Loop_Tbb)->Unit(benchmark::kMillisecond)->UseRealTime();

// ---- BitBuffer: random single-bit access ----

constexpr std::size_t kBits = 10000000;

const std::vector<std::uint32_t>& random_bits() {
  static const std::vector<std::uint32_t> bits = [] {
    std::vector<std::uint32_t> v(kBits);
    std::mt19937 rng(7);
    std::uniform_int_distribution<std::uint32_t> index(0, kBits - 1);
    for (auto& b : v) b = index(rng);
    return v;
  }();
  return bits;
}

void BM_Bits_SetTest_BitBuffer(benchmark::State& state) {
  const auto& bits = random_bits();
  BitBuffer buffer(kBits / 8);
  for (auto _ : state) {
    buffer.clear();
    for (std::uint32_t b : bits) buffer.set_bit(b);
    std::uint64_t hits = 0;
    for (std::uint32_t b : bits) hits += buffer.test_bit(b ^ 1u) ? 1 : 0;
    benchmark::DoNotOptimize(hits);
  }
  state.counters["per_bit"] = per_item(2 * static_cast<std::int64_t>(kBits));
}

void BM_Bits_SetTest_VectorBool(benchmark::State& state) {
  const auto& bits = random_bits();
  std::vector<bool> flags(kBits);
  for (auto _ : state) {
    std::fill(flags.begin(), flags.end(), false);
    for (std::uint32_t b : bits) flags[b] = true;
    std::uint64_t hits = 0;
    for (std::uint32_t b : bits) hits += flags[b ^ 1u] ? 1 : 0;
    benchmark::DoNotOptimize(hits);
  }
  state.counters["per_bit"] = per_item(2 * static_cast<std::int64_t>(kBits));
}

// The "first visit?" idiom: one access with test_and_set_bit against test-then-set.
void BM_Bits_FirstVisit_BitBuffer(benchmark::State& state) {
  const auto& bits = random_bits();
  BitBuffer buffer(kBits / 8);
  for (auto _ : state) {
    buffer.clear();
    std::uint64_t first = 0;
    for (std::uint32_t b : bits) first += buffer.test_and_set_bit(b) ? 0 : 1;
    benchmark::DoNotOptimize(first);
  }
  state.counters["per_bit"] = per_item(static_cast<std::int64_t>(kBits));
}

void BM_Bits_FirstVisit_VectorBool(benchmark::State& state) {
  const auto& bits = random_bits();
  std::vector<bool> flags(kBits);
  for (auto _ : state) {
    std::fill(flags.begin(), flags.end(), false);
    std::uint64_t first = 0;
    for (std::uint32_t b : bits) {
      if (!flags[b]) {
        flags[b] = true;
        ++first;
      }
    }
    benchmark::DoNotOptimize(first);
  }
  state.counters["per_bit"] = per_item(static_cast<std::int64_t>(kBits));
}

void BM_Bits_Count_BitBuffer(benchmark::State& state) {
  BitBuffer buffer(kBits / 8);
  for (std::uint32_t b : random_bits()) buffer.set_bit(b);
  for (auto _ : state) benchmark::DoNotOptimize(buffer.count_set_bits());
}

void BM_Bits_Count_VectorBool(benchmark::State& state) {
  std::vector<bool> flags(kBits);
  for (std::uint32_t b : random_bits()) flags[b] = true;
  for (auto _ : state) benchmark::DoNotOptimize(std::count(flags.begin(), flags.end(), true));
}

BENCHMARK(BM_Bits_SetTest_BitBuffer)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bits_SetTest_VectorBool)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bits_FirstVisit_BitBuffer)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bits_FirstVisit_VectorBool)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Bits_Count_BitBuffer)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Bits_Count_VectorBool)->Unit(benchmark::kMicrosecond);

}  // namespace
