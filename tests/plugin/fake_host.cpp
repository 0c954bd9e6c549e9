#include "tests/plugin/fake_host.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

namespace {

FakeHost* running = nullptr;  // global because the callback gets no handle

FakeHost& HostOf(LinkHandle handle) {
  return *static_cast<FakeHost*>(handle);
}

std::string Hex(unsigned value) {
  char text[16];
  std::snprintf(text, sizeof text, "%02x", value);
  return text;
}

std::string Register(int bits, const unsigned char* bytes) {
  std::string text = std::to_string(bits) + ":";
  for (int i = 0; i < (bits + 7) / 8 && i < JTAG_IR_MAX_BYTES; ++i) text += Hex(bytes[i]);
  return text;
}

}  // namespace

int link_config(LinkHandle handle, int code, int value) {
  HostOf(handle).Record("config " + std::to_string(code) + " " + std::to_string(value));
  return HostOf(handle).Result(code == LINK_CONFIG_GET_CDI ? "query" : "config");
}

int link_reset(LinkHandle handle, int kind) {
  HostOf(handle).Record("reset " + std::to_string(kind));
  return HostOf(handle).Result("reset");
}

int link_jtag_insert(LinkHandle handle, int ir_bits, unsigned char* ir, int dr_bits,
                     unsigned char* dr) {
  HostOf(handle).Record("insert " + Register(ir_bits, ir) + " " + Register(dr_bits, dr));
  return HostOf(handle).Result("insert");
}

int link_jtag_execute(LinkHandle handle, unsigned char* capture) {
  static constexpr unsigned char kClear[3 + JTAG_DR_MAX_BYTES] = {};
  EXPECT_EQ(std::memcmp(capture, kClear, sizeof kClear), 0);
  const auto& bytes = HostOf(handle).capture;
  std::copy(bytes.begin(), bytes.end(), capture);
  HostOf(handle).Record("execute");
  return HostOf(handle).Result("execute");
}

int link_gpio_operator(LinkHandle handle, int out_value, uint32_t* data, int oe_mask, int flags) {
  return HostOf(handle).Gpio(out_value, *data, oe_mask, flags);
}

int FakeHost::Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) {
  Record("gpio " + Hex(static_cast<unsigned>(out_value)) + " " +
         Hex(static_cast<unsigned>(oe_mask)) + " " + Hex(static_cast<unsigned>(flags)));
  if ((flags & GPIO_FLAG_READ_IN) != 0 && reads_ < pin_reads.size()) data = pin_reads[reads_++];
  return Result("gpio");
}

int FakeHost::Result(const std::string& call) {
  const std::vector<int>& answers = results[call];
  const std::size_t n = calls_[call]++;
  if (answered_call-- == 0) return answer;
  return n < answers.size() ? answers[n] : 0;
}

void FakeHost::Message(const char* text) {
  if (throw_after-- == 0) throw 42;
  const bool join = !pieces && events_.size() >= 2 && events_.substr(events_.size() - 2) == "\"\n";
  if (join && events_.substr(events_.size() - 3) != "\"\"\n") {
    events_.resize(events_.size() - 2);
    events_ += Quoted(text).substr(1) + "\n";
  } else {
    Record(Quoted(text));
  }
}

std::string FakeHost::RunText(const std::string& script) {
  return RunFile(TempFile(script).Path());
}

std::string FakeHost::RunFile(const char* path) {
  const Module module;
  running = this;
  std::string name = path != nullptr ? path : "";
  testing::internal::CaptureStdout();
  std::string end;
  try {
    const auto record = [](const char* text) {
      running->Message(text);
      return -1;  // the plug-in must ignore the result
    };
    end =
        "= " + std::to_string(module.entry(this, path != nullptr ? name.data() : nullptr, record));
  } catch (int thrown) {
    end = "thrown " + std::to_string(thrown);
  }
  const std::string output = testing::internal::GetCapturedStdout();
  if (!output.empty()) Record("stdout " + Quoted(output));
  Record(end);
  return events_;
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char ch : text) {
    quoted += ch == '\n' ? "\\n" : ch == '\t' ? "\\t" : std::string(1, ch);
  }
  return quoted + "\"";
}

Module::Module() : library_(dlopen(ICESCRIPT_MODULE, RTLD_LAZY | RTLD_LOCAL)) {
  if (library_ == nullptr) throw std::runtime_error(dlerror());
  entry = reinterpret_cast<decltype(entry)>(dlsym(library_, "ImplementScr"));
}

Module::~Module() {
  dlclose(library_);
}
