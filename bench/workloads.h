// What is measured: scripts run by the built plug-in, and this machine's limits on the same files.
#ifndef ICESCRIPT_BENCH_WORKLOADS_H_
#define ICESCRIPT_BENCH_WORKLOADS_H_

#include <ostream>
#include <string>
#include <vector>

struct Workload {
  const char* name;
  const char* unit;
  int units;               // for each 1 of size
  std::vector<int> sizes;  // the sizes to measure
  void (*write)(std::ostream& script, int size);
  void (*run)(const std::string& path, int size);
};

const std::vector<Workload>& Workloads();

// The script of one workload and size in a file, for as long as the object lives.
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

// Runs a workload once. What is counted is counted inside this function, found by its name.
extern "C" void RunWorkload(const Workload& workload, const std::string& path, int size);

// Runs the script of this path once, on a host that does nothing; the plug-in's result.
int RunFile(const std::string& path);

#endif  // ICESCRIPT_BENCH_WORKLOADS_H_
