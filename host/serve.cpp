#include <fmt/format.h>

#include <chrono>
#include <memory>
#include <new>
#include <optional>
#include <vector>

#include "host/pins/recording_port.h"
#include "host/pins/tap_decoder.h"
#include "host/probe/server.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"
#include "host/system/standard_streams.h"
#include "host/tables/outputs.h"
#include "host/verbs.h"

namespace icehost {
namespace {

constexpr const char* kOutOfMemory = "out of memory";
// How long the port may continue after a signal. This leaves enough time to complete the files.
constexpr std::chrono::milliseconds kLastBytes{400};

std::unique_ptr<PinPort> OpenServed(const ProbeOptions& probe) {
  const ProbeKind& kind = *probe.kind;
  return (kind.open_served != nullptr ? kind.open_served : kind.open_pins)(probe);
}

class Serving : private Server::Observer {
 public:
  // Opens the outputs, the port and the endpoint. Throws IoError, BadUsage, or Interrupted.
  explicit Serving(const ServeCommand& command)
      : command_(command),
        outputs_(command.outputs, &OutputKind::serve, command.probe, FileUses()),
        decoder_({outputs_.serve_listeners.begin(), outputs_.serve_listeners.end()}),
        port_(OpenServed(command.probe)),
        listener_(command.endpoint, command.probe.timeout) {}

  ExitStatus Run();

 private:
  std::string Serve();
  std::string Fault(const std::string& why) const;
  PinPort& Begin();
  std::size_t Steps() const { return recording_.has_value() ? recording_->Steps() : 0; }
  // Reports the end to the listeners, with the reason in `error`. Sets `error` if memory runs out.
  PageHead End(std::string& error);
  PageHead Head(const std::string& error) const;
  void EndClient();
  void OnClient(const std::string& peer) override;
  void OnBytes(std::size_t count) override { client_.bytes += count; }
  void OnDone() override { outputs_.Flush(); }
  void OnFault(const std::string& why) override;
  void OnClientLeft() override;
  void OnRefusal(const std::string& why) override { Say(why); }
  void Say(const std::string& text) const;

  const ServeCommand& command_;
  Outputs outputs_;
  TapDecoder decoder_;
  std::unique_ptr<PinPort> port_;
  std::optional<RecordingPort> recording_;  // wraps port_ if there are outputs
  Listener listener_;
  std::unique_ptr<Session> session_;
  std::optional<Server> server_;
  ServedClient client_;  // the current or most recent client
  bool has_client_ = false;
  std::size_t scans_before_ = 0;  // the number of scans before the client connected
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

ExitStatus Serving::Run() {
  std::string error = Serve();
  const PageHead head = End(error);
  const std::vector<std::string> failures = outputs_.Complete(head);
  for (const std::string& failure : failures) Complain(failure);
  return error.empty() && failures.empty() ? kAllWell : kNotOpened;
}

PageHead Serving::End(std::string& error) {
  PageHead head = {};
  try {
    if (has_client_) EndClient();
    if (!error.empty()) Complain(error);
    head = Head(error);
    for (ServeListener* const listener : outputs_.serve_listeners) listener->OnEnd(error);
  } catch (const std::bad_alloc&) {
    outputs_.MarkIncomplete();
    ComplainOfMemory();
    error = kOutOfMemory;
  }
  return head;
}

PageHead Serving::Head(const std::string& error) const {
  const std::chrono::duration<double> served = std::chrono::steady_clock::now() - start_;
  const std::string counts = fmt::format("clients: {}, scans: {}, steps: {}, time: {:.3f} s",
                                         client_.number, decoder_.Scans(), Steps(), served.count());
  return {"serve " + listener_.Name(), error.empty() ? "ended" : "aborted", error.empty(),
          HeadEntries(command_.probe, counts, served.count())};
}

PinPort& Serving::Begin() {
  if (!outputs_.Any()) return *port_;
  outputs_.Begin();
  outputs_.Flush();
  std::vector<StepRecorder*> recorders = outputs_.recorders;
  recorders.push_back(&decoder_);
  return recording_.emplace(*port_, recorders);
}

// Returns why serving ended, or an empty text if a signal ended it and nothing was lost.
std::string Serving::Serve() try {
  AllowAfterSignal(kLastBytes);
  PinPort& port = Begin();
  session_ = command_.protocol->open(port);
  Say(fmt::format("serving {} on {}", command_.protocol->title, listener_.Name()));
  Observer& observer = *this;
  server_.emplace(listener_, port, *session_, command_.idle_limit, observer).Run();
  return "";
} catch (const Interrupted& interrupted) {
  return Fault(interrupted.what());
} catch (const IoError& error) {
  return Fault(error.what());
} catch (const std::bad_alloc&) {
  outputs_.MarkIncomplete();
  return kOutOfMemory;
}

// A signal may also have ended the port's server, so after a signal, only lost data is a fault.
std::string Serving::Fault(const std::string& why) const {
  if (!IsInterrupted()) return why;
  const std::size_t missing = recording_.has_value() ? recording_->Unrecorded() : 0;
  if (missing > 0) {
    return fmt::format("{}: the last {} of {} steps were not recorded", why, missing, Steps());
  }
  if (!server_.has_value() || !server_->OwesAPart()) return "";
  return fmt::format("{}: the last bytes of client {} may not have reached the probe", why,
                     client_.number);
}

void Serving::OnClient(const std::string& peer) {
  client_ = {client_.number + 1, peer};
  has_client_ = true;
  scans_before_ = decoder_.Scans();
  for (ServeListener* const one : outputs_.serve_listeners) one->OnClient(client_, Steps());
  if (recording_.has_value()) {
    recording_->BeginOperation(fmt::format("client {}", client_.number), {});
  }
  if (command_.verbose) {
    Say(fmt::format("client {} connected{}{}", client_.number, peer.empty() ? "" : " from ", peer));
  }
  outputs_.Flush();
}

void Serving::OnFault(const std::string& why) {
  if (command_.verbose) Say(fmt::format("client {} was disconnected: {}", client_.number, why));
}

void Serving::OnClientLeft() {
  EndClient();
  outputs_.Flush();
}

void Serving::EndClient() {
  has_client_ = false;
  decoder_.End();
  client_.scans = decoder_.Scans() - scans_before_;
  for (ServeListener* const one : outputs_.serve_listeners) one->OnClientLeft(client_, Steps());
  if (command_.verbose) {
    const std::string scans = outputs_.Any() ? fmt::format(", scans: {}", client_.scans) : "";
    Say(fmt::format("client {} left (bytes: {}{})", client_.number, client_.bytes, scans));
  }
}

void Serving::Say(const std::string& text) const {
  if (!command_.quiet) Complain(text);
}

ExitStatus RunServing(const ServeCommand& command) try {
  return Serving(command).Run();
} catch (const IoError& error) {
  Complain(error.what());
  return kNotOpened;
}

}  // namespace

ExitStatus Execute(const ServeCommand& command) {
  return EndSpawned(command.probe, RunServing(command));
}

}  // namespace icehost
