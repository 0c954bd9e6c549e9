#include "host/events/json_call.h"

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <vector>

#include "host/events/call_fields.h"
#include "host/system/text.h"
#include "host/target/wires.h"

namespace icehost {
namespace {

void AppendFlagNames(int flags, std::string& line) {
  line += ",\"flag_names\":[";
  const char* before = "\"";
  for (int bit = 0; bit < kFlags; ++bit) {
    if ((flags >> bit & 1) == 0) continue;
    line.append(before).append(kFlagNames[bit]) += '"';
    before = ",\"";
  }
  line += ']';
}

// Appends the name as the value of the last key, and the number under a separate key.
void AppendNamed(const Field& field, std::string& line) {
  const char* const name = NameOf(field);
  if (name != nullptr) {
    line.append("\"").append(name) += '"';
  } else {
    line += "null";
  }
  line.append(",\"").append(field.name) += "_number\":";
  AppendNumber(field.number, line);
}

// No text needs escaping, because the names are constants and the bytes are digits.
void AppendFields(const std::vector<Field>& fields, std::string& line) {
  for (const Field& field : fields) {
    line.append(",\"").append(field.name) += "\":";
    switch (field.kind) {
      case Field::Kind::kBytes:
        line.append("\"").append(field.bytes) += '"';
        break;
      case Field::Kind::kCode:
      case Field::Kind::kMode:
      case Field::Kind::kReset:
        AppendNamed(field, line);
        break;
      case Field::Kind::kFlags:
        AppendNumber(field.number, line);
        AppendFlagNames(field.number, line);
        break;
      case Field::Kind::kNumber:
      case Field::Kind::kPins:
        AppendNumber(field.number, line);
        break;
    }
  }
}

void AppendComparisons(const std::vector<Comparison>& comparisons, std::string& line) {
  const char* before = ",\"expectations\":[";
  for (const Comparison& one : comparisons) {
    const bool met = one.fault.empty();
    line += fmt::format(
        R"({}{{"of":"{}","line":{},"column":{},"expected":"{}","mask":"{}","captured":{},"met":{})",
        before, one.of, one.line, one.column, one.expected, one.mask,
        one.captured.empty() ? "null" : '"' + one.captured + '"', met);
    if (!met) line += fmt::format(R"(,"wrong_bits":[{}])", fmt::join(one.wrong_bits, ","));
    line += '}';
    before = ",";
  }
  if (!comparisons.empty()) line += ']';
}

}  // namespace

void AppendNumber(long number, std::string& line) {
  const fmt::format_int digits(number);
  line.append(digits.data(), digits.size());
}

void AppendMember(std::string_view key, long number, std::string& line) {
  line += key;
  AppendNumber(number, line);
}

void AppendSection(const CallSource& source, std::string& line) {
  if (source.section == nullptr) return;
  line.append(",\"section\":").append(JsonText(*source.section));
  AppendMember(R"(,"operation":)", source.operation, line);
}

void AppendCall(const CallEvent& call, std::size_t script, std::string& line) {
  const CallFields fields = FieldsOf(call.call);
  line.append("{\"call\":\"").append(FunctionOf(call.call)) += '"';
  AppendMember(R"(,"script":)", static_cast<long>(script), line);
  if (call.source.line != 0) AppendMember(R"(,"line":)", call.source.line, line);
  AppendSection(call.source, line);
  AppendFields(fields.arguments, line);
  AppendMember(R"(,"result":)", call.result, line);
  if (AsksForInterface(call) && call.result >= 0 && call.result < kInterfaces) {
    line.append(",\"interface\":\"").append(kInterfaceNames[call.result]) += '"';
  }
  AppendFields(fields.outputs, line);
  AppendComparisons(call.comparisons, line);
  AppendMember(R"(,"at_us":)", call.at.count(), line);
  if (call.took.has_value()) AppendMember(R"(,"took_us":)", call.took->count(), line);
  line += "}\n";
}

}  // namespace icehost
