// A host for tests: it records every call and message in order, and the test sets its answers.
#ifndef ICESCRIPT_TESTS_FAKE_HOST_H_
#define ICESCRIPT_TESTS_FAKE_HOST_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "entry/icescript.h"
#include "tests/temp_file.h"

// Writes a transcript with one event per line:
//   "text"                          a message, with \n and \t for line breaks and tabs; joined with
//                                   adjacent messages unless `pieces` is set
//   config CODE VALUE               reset KIND              execute
//   insert BITS:BYTES BITS:BYTES    bytes in hexadecimal, in the order of the array
//   gpio OUT OE FLAGS               in hexadecimal
class FakeHost {
 public:
  // The results for each kind of call. The key is the first word, or "query" for
  // LINK_CONFIG_GET_CDI. The n-th call gets the n-th result, or 0 if there is none.
  std::map<std::string, std::vector<int>> results;
  // The number of the call whose result is `answer`, counted from 0. Negative means no call.
  int answered_call = -1;
  int answer = 0;
  // The values that pin reads store, in order. Later reads store nothing.
  std::vector<std::uint32_t> pin_reads;
  // Bytes that each execute copies to the start of the capture buffer.
  std::vector<std::uint8_t> capture;
  // The index of the message at which the callback throws an int. Negative means never.
  int throw_after = -1;
  bool pieces = false;

  // Load the plug-in, so that reads are numbered from 0. Then run a file with this text, or the
  // file at `path`, which may be null. Return the transcript. It ends with "stdout TEXT" if there
  // is text on standard output, and then with the result as "= N", or a thrown int as "thrown N".
  std::string RunText(const std::string& script);
  std::string RunFile(const char* path);

  int Result(const std::string& call);
  void Record(const std::string& event) { events_ += event + "\n"; }
  void Message(const char* text);
  int Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags);

 private:
  std::map<std::string, std::size_t> calls_;
  std::size_t reads_ = 0;
  std::string events_;
};

// Returns `text` in quotes, with line breaks as \n and tabs as \t.
std::string Quoted(const std::string& text);

// The loaded plug-in. The constructor throws std::runtime_error if it cannot load the plug-in.
class Module {
 public:
  Module();
  ~Module();
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  decltype(&ImplementScr) entry;

 private:
  void* library_;
};

#endif  // ICESCRIPT_TESTS_FAKE_HOST_H_
