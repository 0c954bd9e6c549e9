// Runs the examples cut at every byte, with each call failing, and with an exception at each
// message and each allocation. Only the sanitizers find leaks.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <sstream>

#include "tests/plugin/fake_host.h"

namespace {
// The number of allocations before the one that fails; if it is negative, none fails.
int allocations_left = -1;
}  // namespace

// These operators replace the library's in the whole process. The array forms call them, too.
void* operator new(std::size_t size) {
  void* const block = allocations_left-- == 0 ? nullptr : std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
  std::free(block);
}

namespace {

using Texts = std::vector<std::string>;

const std::string kEnd = "Execute ORVEX ICE Script End.\\n\"\n= 0\n";
const std::string kGpioFailed = "\"error: fail to execute orvex_ice_gpio script.\\n\"\n= -1\n";

Texts Examples() {
  Texts texts;
  for (const auto& entry : std::filesystem::directory_iterator(ICESCRIPT_SOURCE "/examples")) {
    std::stringstream text;
    text << std::ifstream(entry.path()).rdbuf();
    texts.push_back(text.str());
  }
  EXPECT_GE(texts.size(), 6U);
  return texts;
}

// Returns the examples, and scripts with faults that the parsers report.
Texts Scripts() {
  Texts scripts = Examples();
  for (const char* const lines : {"REPT=2\nREPT=2\nEND", "TCK=1\nENDR\nEND", "FOO"}) {
    scripts.push_back(std::string("[ORVEX_ICE_GPIO]\nSTART\n") + lines);
  }
  scripts.insert(scripts.end(), {"[A]\nIR=5,1\nDR=R,8,1\n[B]\nIR=", "[A]\nIR=5,1\nDR=R\n", "FOO"});
  return scripts;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Returns the lines of a transcript that are host calls.
Texts Calls(const std::string& transcript) {
  Texts calls;
  std::istringstream stream(transcript);
  for (std::string line; std::getline(stream, line);) {
    if (line[0] != '"' && line[0] != '=' && line.compare(0, 6, "stdout") != 0)
      calls.push_back(line);
  }
  return calls;
}

// Returns the transcript of a run, without the numbers of the reads, which differ in each run.
std::string Transcript(const std::string& script) {
  std::string transcript = FakeHost().RunText(script);
  const std::string word = "GPIO_DATA_";
  for (std::size_t at = 0; (at = transcript.find(word, at)) != std::string::npos;) {
    at += word.size();
    transcript.erase(at, transcript.find(' ', at) - at);
  }
  return transcript;
}

// A cut GPIO script does not run. A cut JTAG script runs up to the cut, and the section at the
// cut may become a scan with fewer bits or bytes.
TEST(EveryExample, RunsNothingElseWhenCut) {
  for (const std::string& script : Examples()) {
    const Texts whole = Calls(Transcript(script));
    for (std::size_t size = 0; size < script.size(); ++size) {
      const std::string transcript = Transcript(script.substr(0, size));
      const bool ended = transcript.find("Script End.") != std::string::npos;
      EXPECT_TRUE(EndsWith(transcript, ended ? "= 0\n" : "\"\n= -1\n")) << transcript;
      Texts calls = Calls(transcript);
      if (calls.empty() || calls == whole) continue;
      EXPECT_TRUE(ended) << transcript;
      if (calls.back() == "execute") calls.resize(calls.size() - 2);
      ASSERT_LT(calls.size(), whole.size());
      EXPECT_TRUE(std::equal(calls.begin(), calls.end(), whole.begin())) << transcript;
      EXPECT_NE(whole[0].substr(0, 4), "gpio") << transcript;
    }
  }
}

bool Fails(const std::string& call, int result) {
  if (call == "config 22 0") return false;
  const bool by_sign = call == "config 3 1" || call == "reset 1" || call.substr(0, 4) == "gpio";
  return by_sign ? result < 0 : result != 0;
}

TEST(EveryExample, StopsAtTheCallThatFails) {
  for (const std::string& script : Examples()) {
    const std::string whole = FakeHost().RunText(script);
    const Texts calls = Calls(whole);
    std::size_t done = 0;  // the end of calls[i] in `whole`
    for (std::size_t i = 0; i < calls.size(); ++i) {
      done = whole.find("\n" + calls[i] + "\n", done) + calls[i].size() + 1;
      for (const int result : {INT_MIN, -1, 0, 1, 2, INT_MAX}) {
        FakeHost host;
        host.answered_call = static_cast<int>(i);
        host.answer = result;
        const std::string transcript = host.RunText(script);
        const bool fails = Fails(calls[i], result);
        EXPECT_NE(EndsWith(transcript, kEnd), fails) << calls[i] << result;
        const bool gpio = calls[i].substr(0, 4) == "gpio";
        const std::string tail = gpio ? kGpioFailed : "= -1\n";
        if (fails) {
          EXPECT_EQ(transcript, whole.substr(0, done + 1) + tail);
        }
      }
    }
  }
}

// In the two tests below, the plug-in stays loaded, and an exception must not affect the next run.

TEST(EveryScript, PassesTheHostsExceptionOn) {
  const Module stays_loaded;
  for (const std::string& script : Scripts()) {
    const std::string whole = Transcript(script);
    bool thrown = true;
    for (int k = 0; thrown; ++k) {
      FakeHost host;
      host.throw_after = k;
      thrown = EndsWith(host.RunText(script), "thrown 42\n");
      EXPECT_TRUE(thrown || k > 0);
      EXPECT_EQ(Transcript(script), whole) << k;
    }
  }
}

TEST(EveryScript, PassesOnThatThereIsNoMemory) {
  const Module module;
  for (const std::string& script : Scripts()) {
    TempFile file(script);
    const std::string whole = Transcript(script);
    bool failed = true;
    int k = 0;
    for (; failed; ++k) {
      FakeHost host;
      bool thrown = false;
      allocations_left = k;
      try {
        module.entry(&host, file.Path(), [](const char*) { return 0; });
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      failed = allocations_left < 0;
      allocations_left = -1;
      EXPECT_EQ(thrown, failed) << k << script;
      EXPECT_EQ(Transcript(script), whole) << k;
    }
    EXPECT_GT(k, 1) << script;  // otherwise the module does not call the operators of this file
  }
}

}  // namespace
