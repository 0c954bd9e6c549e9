// The workloads to measure: scripts for the built plug-in, and minimal code to compare it with.
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

// A file with the script of a workload of this size. The destructor removes the file.
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

// Runs a workload once. callgrind counts instructions inside this function, by its name.
extern "C" void RunWorkload(const Workload& workload, const std::string& path, int size);

// Runs the script at `path` once on the idle host. Returns the result of the plug-in, 0 or -1.
int RunFile(const std::string& path);

#endif  // ICESCRIPT_BENCH_WORKLOADS_H_
