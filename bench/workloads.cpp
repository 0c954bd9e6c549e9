#include "bench/workloads.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "bench/idle_host.h"

namespace {

// ---- Scripts

constexpr char kGpioStart[] = "[ORVEX_ICE_GPIO]\nSTART\n";

// Lines have 13 bytes each.
void WriteFlat(std::ostream& script, int size) {
  script << kGpioStart;
  for (int i = 0; i < size; ++i) script << (i % 2 == 0 ? "TCK=1, TDI=0\n" : "TCK=0, TMS=1\n");
  script << "END\n";
}

void WriteNested(std::ostream& script, int size) {
  script << kGpioStart << "REPT=" << size
         << "\nREPT=1000\nTCK=0\nTDI=1\nTCK=1\nTDI=0\nENDR\nENDR\nEND\n";
}

void WriteOneItemLines(std::ostream& script, int size) {
  script << kGpioStart;
  for (int i = 0; i < size; ++i) script << "TCK\n";
  script << "END\n";
}

void WriteLongLines(std::ostream& script, int size) {
  script << kGpioStart;
  for (int i = 0; i < size; ++i) {
    for (int item = 0; item < 499; ++item) script << "TCK,";
    script << "TCK\n";
  }
  script << "END\n";
}

void WriteReads(std::ostream& script, int size) {
  script << kGpioStart << "REPT=" << size << "\nREPT=1000\nPRINT=GPIO_IN\nENDR\nENDR\nEND\n";
}

// Every block contains the next block, followed by a pin operation.
void WriteDeep(std::ostream& script, int size) {
  script << kGpioStart;
  for (int i = 0; i < size; ++i) script << "REPT=1\n";
  for (int i = 0; i < size; ++i) script << "TCK=1\nENDR\n";
  script << "END\n";
}

// Each reading of an IDCODE has 81 lines, which reset the TAP, enter Shift-DR, and read 32 bits.
void WriteIdcodes(std::ostream& script, int size) {
  script << kGpioStart;
  for (int i = 0; i < size; ++i) {
    script << "TMS=1\n";
    for (int clock = 0; clock < 5; ++clock) script << "TCK=1\nTCK=0\n";
    script << "TMS=0\nTCK=1\nTCK=0, TMS=1\nTCK=1\nTCK=0, TMS=0\nTCK=1\n";
    for (int bit = 0; bit < 32; ++bit) script << "TCK=0, PRINT=GPIO_IN\nTCK=1\n";
  }
  script << "END\n";
}

constexpr char kScan[] = "]\nIR=5,0x01\nDR=R,32,0x12,0x34,0x56,0x78\n";

// Returns S0000, S0001, ...
std::string Numbered(int i) {
  const std::string number = std::to_string(i);
  return "S" + std::string(4 - number.size(), '0') + number;
}

// Sections have 46 bytes each.
void WriteJtag(std::ostream& script, int size) {
  for (int i = 0; i < size; ++i) script << '[' << Numbered(i) << kScan;
}

void WriteLongScans(std::ostream& script, int size) {
  for (int i = 0; i < size; ++i) {
    script << '[' << Numbered(i) << "]\nIR=5,0x01\nDR=R,288";
    for (int byte = 0; byte < JTAG_DR_MAX_BYTES; ++byte) script << ",0x" << 10 + byte;
    script << '\n';
  }
}

// Section names have 4 to 11 random letters.
void WriteFreeNames(std::ostream& script, int size) {
  std::uint32_t seed = 1;
  const auto below = [&seed](std::uint32_t limit) {
    seed = seed * 1664525 + 1013904223;
    return (seed >> 16) % limit;
  };
  for (int i = 0; i < size; ++i) {
    std::string name(4 + below(8), ' ');
    for (char& ch : name) ch = static_cast<char>('a' + below(26));
    script << '[' << name << kScan;
  }
}

void WriteOneScan(std::ostream& script, int /*size*/) {
  WriteJtag(script, 1);
}

// ---- Runs

int Implement(int& handle, const std::string& path) {
  static const auto entry = [] {
    void* const module = dlopen(ICESCRIPT_MODULE, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<decltype(&ImplementScr)>(dlsym(module, "ImplementScr"));
  }();
  std::string name = path;  // ImplementScr takes a char* but does not write to it
  return entry(&handle, name.data(), DropMessage);
}

void RunScript(const std::string& path, int /*size*/) {
  if (Implement(idle_runs, path) != 0) std::abort();
}

void ParseScript(const std::string& path, int /*size*/) {
  if (Implement(idle_stops, path) != -1) std::abort();
}

void RunOften(const std::string& path, int size) {
  for (int i = 0; i < size; ++i) RunScript(path, 1);
}

// The plug-in reads a JTAG script twice, because it first tries to read it as a GPIO script.
void ReadTwiceOften(const std::string& path, int size) {
  char text[4096];
  for (int i = 0; i < 2 * size; ++i) {
    const int file = open(path.c_str(), O_RDONLY);
    if (read(file, text, sizeof text) < 0) std::abort();
    close(file);
  }
}

void CallHost(const std::string& /*path*/, int size) {
  uint32_t data = 0;
  for (int i = 0; i < size; ++i) {
    if (link_gpio_operator(&idle_runs, 0, &data, 0, 0) < 0) std::abort();
  }
}

void GetLines(const std::string& path, int size) {
  std::ifstream file(path);
  std::string line;
  int lines = 0;
  while (std::getline(file, line)) ++lines;
  if (lines < size) std::abort();
}

void FindLineEnds(const std::string& path, int size) {
  const auto bytes = static_cast<std::size_t>(std::filesystem::file_size(path));
  const int file = open(path.c_str(), O_RDONLY);
  void* const text = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0);
  if (text == MAP_FAILED) std::abort();
  const char* const end = static_cast<const char*>(text) + bytes;
  int lines = 0;
  for (const void* at = text; at != nullptr; ++lines) {
    const char* const rest = static_cast<const char*>(at) + (lines == 0 ? 0 : 1);
    at = std::memchr(rest, '\n', static_cast<std::size_t>(end - rest));
  }
  munmap(text, bytes);
  close(file);
  if (lines < size) std::abort();
}

}  // namespace

const std::vector<Workload>& Workloads() {
  static const std::vector<int> kLineCounts = {1000, 10000, 100000, 1000000};
  static const std::vector<Workload> workloads = {
      {"gpio", "line", 1, kLineCounts, WriteFlat, RunScript},
      {"gpio, parse and list", "line", 1, kLineCounts, WriteFlat, ParseScript},
      {"gpio, nested REPT", "operation", 4000, {1000}, WriteNested, RunScript},
      {"gpio, pin reads", "read", 1000, {100}, WriteReads, RunScript},
      {"gpio, nested blocks", "host call", 1, {1000, 10000}, WriteDeep, RunScript},
      {"gpio, IDCODE by hand", "line", 81, {1000}, WriteIdcodes, RunScript},
      {"gpio, lines of 1 item", "item", 1, {10000}, WriteOneItemLines, ParseScript},
      {"gpio, lines of 500 items", "item", 500, {100}, WriteLongLines, ParseScript},
      {"jtag", "section", 1, {10, 100, 1000, 10000}, WriteJtag, RunScript},
      {"jtag, DR of 288 bits", "section", 1, {100}, WriteLongScans, RunScript},
      {"jtag, names without a pattern", "section", 1, {10000}, WriteFreeNames, RunScript},
      {"jtag, calls for one section", "call", 1, {1000}, WriteOneScan, RunOften},
      {"limit: bare host call", "call", 1, {100000}, WriteFlat, CallHost},
      {"limit: two open/read/close", "call", 1, {1000}, WriteOneScan, ReadTwiceOften},
      {"limit: std::getline", "line", 1, {100000}, WriteFlat, GetLines},
      {"limit: memchr", "line", 1, {100000}, WriteFlat, FindLineEnds},
  };
  return workloads;
}

ScriptFile::ScriptFile(const Workload& workload, int size)
    : path_(std::filesystem::temp_directory_path() / "icescript_benchXXXXXX") {
  const int file = mkstemp(path_.data());
  if (file < 0) throw std::runtime_error("cannot write " + path_);
  close(file);
  std::ofstream script(path_);
  workload.write(script, size);
}

ScriptFile::~ScriptFile() {
  unlink(path_.c_str());
}

void RunWorkload(const Workload& workload, const std::string& path, int size) {
  workload.run(path, size);
}

int RunFile(const std::string& path) {
  return Implement(idle_runs, path);
}
