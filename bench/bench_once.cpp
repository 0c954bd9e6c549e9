// `bench_once NAME SIZE` runs one workload once, for valgrind to measure. `bench_once FILE` runs a
// script on a host that does nothing. Without arguments, bench_once lists the workloads as
// NAME|UNIT|UNITS AT SIZE 1|SIZE.
#include <iostream>
#include <string>

#include "bench/workloads.h"

namespace {

void List() {
  for (const Workload& workload : Workloads()) {
    for (const int size : workload.sizes) {
      std::cout << workload.name << '|' << workload.unit << '|' << workload.units << '|' << size
                << '\n';
    }
  }
}

int RunOnce(const std::string& name, int size) {
  for (const Workload& workload : Workloads()) {
    if (workload.name != name) continue;
    const ScriptFile script(workload, size);
    RunWorkload(workload, script.Path(), size);
    return 0;
  }
  std::cerr << "no workload " << name << '\n';
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) return RunFile(argv[1]);
  if (argc == 3) return RunOnce(argv[1], std::stoi(argv[2]));
  List();
}
