// The workloads to measure: scripts for the plug-in, and minimal code for comparison.
#ifndef ICESCRIPT_BENCH_WORKLOADS_H_
#define ICESCRIPT_BENCH_WORKLOADS_H_

#include <ostream>
#include <string>
#include <vector>

struct Workload {
  const char* name;
  const char* unit;
  int units;               // number of units in a script of size 1
  std::vector<int> sizes;  // the sizes to measure
  void (*write)(std::ostream& script, int size);
  void (*run)(const std::string& path, int size);
};

const std::vector<Workload>& Workloads();

// A temporary file with the script of a workload. The destructor removes it.
class ScriptFile {
 public:
  ScriptFile(const Workload& workload, int size);
  ~ScriptFile();
  ScriptFile(const ScriptFile&) = delete;
  ScriptFile& operator=(const ScriptFile&) = delete;

  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// Runs a workload once. callgrind finds this function by its name and counts its instructions.
extern "C" void RunWorkload(const Workload& workload, const std::string& path, int size);

// Runs the script at `path` once on the idle host. Returns the result of the plug-in, 0 or -1.
int RunFile(const std::string& path);

#endif  // ICESCRIPT_BENCH_WORKLOADS_H_
