// Times every workload at every size, with Google Benchmark.
#include <benchmark/benchmark.h>

#include "bench/workloads.h"

namespace {

void Time(benchmark::State& state, const Workload& workload, int size) {
  const ScriptFile script(workload, size);
  RunWorkload(workload, script.Path(), size);  // not timed: loads the module
  for (auto _ : state) RunWorkload(workload, script.Path(), size);
  using benchmark::Counter;
  const double units = static_cast<double>(size) * workload.units;
  state.counters["unit"] = Counter(units, Counter::kIsIterationInvariantRate | Counter::kInvert);
}

}  // namespace

int main(int argc, char** argv) {
  for (const Workload& workload : Workloads()) {
    for (const int size : workload.sizes) {
      const std::string name = std::string(workload.name) + "|" + std::to_string(size);
      benchmark::RegisterBenchmark(name.c_str(), Time, workload, size);
    }
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
