#include "host/serve.h"

#include <fmt/format.h>

#include <chrono>
#include <memory>

#include "host/open_probe.h"
#include "host/page_head.h"
#include "host/probe/bitbang_server.h"
#include "host/reporter.h"
#include "host/serve_record.h"
#include "host/system/errors.h"

namespace icehost {
namespace {

class Serving : private BitbangServer::Observer {
 public:
  // Opens everything. Throws IoError, or Interrupted.
  explicit Serving(const ServeCommand& command)
      : command_(command),
        record_(command.record),
        port_(OpenPins(command.probe, BitbangPort::Manner::kProxy)),
        listener_(command.endpoint) {}

  ExitStatus Run();

 private:
  std::string Serve();
  PageHead Head(const std::string& error) const;
  void EndClient();
  void OnClient(const std::string& peer) override;
  void OnBytes(std::size_t count) override { client_.bytes += count; }
  void OnDone() override { record_.Flush(); }
  void OnClientLeft() override;
  void OnRefusal(const std::string& why) override { Say(why); }
  void Say(const std::string& text) const;

  const ServeCommand& command_;
  ServeRecord record_;
  std::unique_ptr<PinPort> port_;
  Listener listener_;
  ServedClient client_;  // the last one
  bool has_client_ = false;
  std::size_t scans_before_ = 0;  // it came
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

ExitStatus Serving::Run() {
  const std::string error = Serve();
  if (has_client_) EndClient();
  if (!error.empty()) Complain(error);
  const std::vector<std::string> failures = record_.Complete(error, Head(error));
  for (const std::string& failure : failures) Complain(failure);
  return error.empty() && failures.empty() ? kAllWell : kNotOpened;
}

PageHead Serving::Head(const std::string& error) const {
  const std::chrono::duration<double> served = std::chrono::steady_clock::now() - start_;
  return ServeHead(command_,
                   {listener_.Name(), error,
                    fmt::format("clients {}, scans {}, steps {}, {:.3f} s", client_.number,
                                record_.Scans(), record_.Steps(), served.count()),
                    served.count()});
}

// Returns why it ended; nothing for a signal.
std::string Serving::Serve() try {
  PinPort& port = record_.Begin(*port_);
  Say("serving remote_bitbang on " + listener_.Name());
  BitbangServer(listener_, port, command_.idle_limit, *this).Run();
} catch (const Interrupted&) {
  return "";
} catch (const IoError& error) {
  return error.what();
}

void Serving::OnClient(const std::string& peer) {
  client_ = {client_.number + 1, peer};
  has_client_ = true;
  scans_before_ = record_.Scans();
  record_.OnClient(client_);
  if (command_.verbose) {
    Say(fmt::format("client {} connected{}{}", client_.number, peer.empty() ? "" : " from ", peer));
  }
  record_.Flush();
}

void Serving::OnClientLeft() {
  EndClient();
  record_.Flush();
}

void Serving::EndClient() {
  has_client_ = false;
  client_.scans = record_.Scans() - scans_before_;
  record_.OnClientLeft(client_);
  if (command_.verbose) {
    const std::string scans = record_.IsAskedFor() ? fmt::format(", scans {}", client_.scans) : "";
    Say(fmt::format("client {} left: bytes {}{}", client_.number, client_.bytes, scans));
  }
}

void Serving::Say(const std::string& text) const {
  if (!command_.quiet) Complain(text);
}

}  // namespace

ExitStatus Serve(const ServeCommand& command) try {
  return Serving(command).Run();
} catch (const IoError& error) {
  Complain(error.what());
  return kNotOpened;
}

}  // namespace icehost
