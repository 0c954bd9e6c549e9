// A host for tests: records every call and message in order, and answers as the test says.
#ifndef ICESCRIPT_TESTS_FAKE_HOST_H_
#define ICESCRIPT_TESTS_FAKE_HOST_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "entry/icescript.h"
#include "tests/temp_file.h"

// Events, one a line of the transcript:
//   "text"                          a message, line breaks and tabs as \n and \t; adjacent messages
//                                   are joined unless `pieces` is set
//   config CODE VALUE               reset KIND              execute
//   insert BITS:BYTES BITS:BYTES    bytes in hexadecimal, in the order of the array
//   gpio OUT OE FLAGS               in hexadecimal
class FakeHost {
 public:
  // Results by the call's first word, or "query" for link_config(LINK_CONFIG_GET_CDI): the n-th
  // call gets the n-th, 0 where there is none.
  std::map<std::string, std::vector<int>> results;
  // The call of this number, counted over all of them, gets `answer` instead; negative: none does.
  int answered_call = -1;
  int answer = 0;
  // What the n-th pin read stores; a read past the end stores nothing.
  std::vector<std::uint32_t> pin_reads;
  // Copied to the start of the capture buffer.
  std::vector<std::uint8_t> capture;
  // Number of messages after which the next one throws an int; negative: never.
  int throw_after = -1;
  bool pieces = false;

  // Loads the plug-in afresh, so that the read numbers begin at 0, and runs a file of this text (or
  // the file `path`). Returns what was recorded, then what came on standard output as
  // "stdout TEXT", then the result as "= N", or "thrown N" where an int came out instead.
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

// `text` with line breaks and tabs visible, in quotes.
std::string Quoted(const std::string& text);

// The built module, loaded.
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
