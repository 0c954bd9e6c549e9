#include "host/observed_probe.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>

#include "entry/icescript.h"
#include "host/chain/chain.h"
#include "host/chain/chain_reader.h"
#include "host/system/errors.h"

namespace icehost {
namespace {

// Returns the bytes of a register. If `bits` is too large, stops at the end of the array.
std::string RegisterBytes(const std::uint8_t* bytes, int bits) {
  const int count = std::clamp((bits + 7) / 8, 0, static_cast<int>(JTAG_DR_MAX_BYTES));
  return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(count)};
}

}  // namespace

ObservedProbe::ObservedProbe(const ProbeOptions& options, int wire_mode, bool record_steps,
                             bool confirms_chain, Follower& follower, RunEvents& events,
                             Rescue& rescue)
    : place_(options.place),
      measures_place_(options.measures_place),
      confirms_chain_(confirms_chain),
      follower_(follower),
      events_(events),
      rescue_(rescue) {
  const ProbeKind& kind = *options.kind;
  if (!kind.ShowsPins()) {
    probe_ = kind.open_scans(options);
    pins_ = dynamic_cast<PinProbe*>(probe_.get());
    if (pins_ != nullptr) pins_->SetPlace(place_);
    return;
  }
  port_ = kind.open_pins(options);
  PinPort* top = port_.get();
  if (record_steps) {
    recording_ = std::make_unique<RecordingPort>(*port_, std::vector<StepRecorder*>{&events});
    top = recording_.get();
  }
  auto pins = std::make_unique<PinProbe>(*top, wire_mode, kind.two_wire, place_);
  pins_ = pins.get();
  probe_ = std::move(pins);
}

void ObservedProbe::Begin(const char* function, bool begins_operation) {
  begin_step_ = Steps();
  events_.BeginCall(function, source_, begins_operation);
  if (begins_operation && recording_ != nullptr) BeginRecording();
}

void ObservedProbe::BeginRecording() {
  recording_->BeginOperation(source_.section != nullptr ? fmt::format("[{}]", *source_.section)
                                                        : fmt::format("line {}", source_.line),
                             source_);
}

template <class Ask>
int ObservedProbe::Guard(Ask ask) {
  ThrowIfInterrupted();
  int result = -1;
  try {
    result = ask();
  } catch (const Unsupported& error) {
    events_.Fail(error.what());
  }
  events_.LeaveCall();
  return result;
}

void ObservedProbe::End(const HostCall& call, int result, std::vector<Comparison> comparisons) {
  events_.EndCall({call, result, std::move(comparisons), source_, {begin_step_, Steps()}});
}

bool ObservedProbe::ResetTapBeforeScan() {
  lacks_reset_ = !probe_->ResetTapBeforeScan();
  return !lacks_reset_;
}

int ObservedProbe::Config(int code, int value) {
  const Rescue::Scope working(rescue_, Rescue::State::kWorking);
  const bool query = code == LINK_CONFIG_GET_CDI;
  if (!query) ++counts_.operations;
  source_ = follower_.NextOperation();
  Begin("link_config", !query);
  const int result = Guard([&] { return probe_->Config(code, value); });
  if (query) {
    wire_mode_ = result;
  } else {
    follower_.Perform();
  }
  End(ConfigCall{code, value}, result);
  return result;
}

int ObservedProbe::Reset(int kind) {
  const Rescue::Scope working(rescue_, Rescue::State::kWorking);
  ++counts_.operations;
  source_ = follower_.NextOperation();
  Begin("link_reset", true);
  const int result = Guard([&] { return probe_->Reset(kind); });
  follower_.Perform();
  End(ResetCall{kind}, result);
  return result;
}

int ObservedProbe::Insert(int ir_bits, const std::uint8_t* ir, int dr_bits,
                          const std::uint8_t* dr) {
  const Rescue::Scope working(rescue_, Rescue::State::kWorking);
  ++counts_.operations;
  scan_ = {{ir_bits, RegisterBytes(ir, ir_bits), {}},
           {dr_bits, RegisterBytes(dr, dr_bits), {}},
           wire_mode_};
  Begin("link_jtag_insert", false);
  const bool lacks_reset = std::exchange(lacks_reset_, false);
  const int result = Guard([&] {
    if (lacks_reset && ir_bits <= UnshiftedBits()) {
      throw Unsupported("this scan relies on # reset TAP, but this probe cannot reset the TAP");
    }
    return probe_->Insert(ir_bits, ir, dr_bits, dr);
  });
  End(InsertCall{&scan_}, result);
  return result;
}

int ObservedProbe::Execute(std::uint8_t* capture) {
  const Rescue::Scope working(rescue_, Rescue::State::kWorking);
  Begin("link_jtag_execute", true);
  int result = Guard([&] {
    FindPlace();
    const int executed = probe_->Execute(capture);
    ++counts_.reads;
    for (const int bits : {scan_.ir.bits, scan_.dr.bits}) {
      counts_.bits += std::max(bits - UnshiftedBits(), 0);
    }
    const std::string doubt = probe_->Doubt();
    if (!doubt.empty()) events_.Doubt(doubt);
    return executed;
  });
  follower_.Perform();
  std::vector<Comparison> comparisons;
  if (result == 0) {
    KeepCaptured(capture);
    scan_.chain = probe_->WholeChain();
    if (!follower_.CompareScan(scan_, comparisons)) result = -1;
  }
  End(ExecuteCall{&scan_}, result, std::move(comparisons));
  return result;
}

// Before the first scan, finds or confirms the place of the TAP in the chain and reports it.
void ObservedProbe::FindPlace() {
  if (found_place_ || pins_ == nullptr) return;
  if (measures_place_ || (confirms_chain_ && wire_mode_ == CDI_ANSWER_JTAG5)) ReadPlace();
  found_place_ = true;
  if (place_.ir_lengths.size() > 1) events_.SetPlace(place_, measures_place_);
}

// Reading the chain resets the TAPs, so an instruction that a GPIO script loaded would be lost.
void ObservedProbe::ReadPlace() {
  if (scan_.ir.bits <= UnshiftedBits() && played_pins_) {
    throw Unsupported(
        "this scan must load an instruction, because icehost first reads the chain, which resets "
        "the TAP");
  }
  if (recording_ != nullptr) recording_->BeginOperation("reading the chain", {});
  const Chain chain = ReadChain(pins_->Port());
  pins_->ResetTapBeforeScan();
  pins_->SetPlace(place_ =
                      measures_place_ ? PlaceIn(chain, place_.tap) : ConfirmPlace(chain, place_));
  if (recording_ == nullptr) return;
  BeginRecording();
  begin_step_ = Steps();
}

void ObservedProbe::KeepCaptured(const std::uint8_t* capture) {
  const int ir_bits = scan_.ir.bits - UnshiftedBits();
  // Over two wires, a scan may be longer than the array, so its length is limited here.
  const int dr_bits =
      std::min(scan_.dr.bits, 8 * static_cast<int>(JTAG_DR_MAX_BYTES)) - UnshiftedBits();
  if (probe_->CapturesIr() && ir_bits <= 8 * kDrCaptureByte) {
    scan_.ir.out = RegisterBytes(capture, ir_bits);
  }
  scan_.dr.out = RegisterBytes(capture + kDrCaptureByte + UnshiftedBits() / 8, dr_bits);
}

int ObservedProbe::Gpio(int out_value, std::uint32_t& data, int oe_mask, int flags) {
  const Rescue::Scope working(rescue_, Rescue::State::kWorking);
  ++counts_.operations;
  const bool read = (flags & GPIO_FLAG_READ_IN) != 0;
  source_ = follower_.NextPinOperation(data);
  Begin("link_gpio_operator", true);
  played_pins_ = true;
  int result = Guard([&] { return probe_->Gpio(out_value, data, oe_mask, flags); });
  GpioCall call = {out_value, oe_mask, flags, {}};
  std::vector<Comparison> comparisons;
  if (read && result >= 0) {
    ++counts_.reads;
    call.data = static_cast<int>(data);
    if (!follower_.ComparePins(*call.data, probe_->ReportedPins(), comparisons)) result = -1;
  }
  End(call, result, std::move(comparisons));
  return result;
}

}  // namespace icehost
