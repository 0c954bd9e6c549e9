// Times every workload at every size with Google Benchmark. The labels are NAME|SIZE.
#include <benchmark/benchmark.h>

#include "bench/workloads.h"

namespace {

void Time(benchmark::State& state) {
  const Workload& workload = Workloads()[static_cast<std::size_t>(state.range(0))];
  const int size = static_cast<int>(state.range(1));
  const ScriptFile script(workload, size);
  RunWorkload(workload, script.Path(), size);  // loads the module before the timing
  while (state.KeepRunning()) RunWorkload(workload, script.Path(), size);

  using benchmark::Counter;
  const double units = static_cast<double>(size) * workload.units;
  state.counters["unit"] = Counter(units, Counter::kIsIterationInvariantRate | Counter::kInvert);
  state.SetLabel(std::string(workload.name) + "|" + std::to_string(size));
}

void EveryWorkload(benchmark::internal::Benchmark* time) {
  for (std::size_t i = 0; i < Workloads().size(); ++i) {
    for (const int size : Workloads()[i].sizes) time->Args({static_cast<std::int64_t>(i), size});
  }
}

BENCHMARK(Time)->Apply(EveryWorkload);

}  // namespace

BENCHMARK_MAIN();
