// The probes that --probe chooses from. A new one is its class, and a row in probes.cpp.
#ifndef ICESCRIPT_HOST_TABLES_PROBES_H_
#define ICESCRIPT_HOST_TABLES_PROBES_H_

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/chain/chain.h"
#include "host/probe/pin_port.h"
#include "host/probe/probe.h"
#include "host/probe/sim_port.h"
#include "host/system/endpoint.h"
#include "host/system/spawned_command.h"
#include "host/target/chain_place.h"

namespace icehost {

struct ProbeOptions;

// A row: it sets the members that are not as below. Functions that reach a probe connect where it
// is across a network, and throw IoError.
struct ProbeKind {
  using OpenPins = std::unique_ptr<PinPort> (*)(const ProbeOptions& options);

  const char* name = "";               // the value of --probe, up to the colon before an address
  std::vector<std::string> addresses;  // the forms that an address has; empty: there is none
  const char* title = "";              // in messages
  bool has_target = false;             // takes the options of the simulated target
  bool two_wire = false;               // has the 2-wire interface
  // Reads the address; throws std::invalid_argument that says what is expected.
  void (*parse)(const std::string& address, ProbeOptions& options) = nullptr;
  // Describes the probe for the head of a page; every row has it.
  std::string (*describe)(const ProbeOptions& options) = nullptr;
  // Opens the pins for scripts. Null where the probe shows none.
  OpenPins open_pins = nullptr;
  // Opens the pins for a client of serve, which alone drives them. Null where open_pins will do.
  OpenPins open_served = nullptr;
  // Opens a probe that shows no pins.
  std::unique_ptr<Probe> (*open_scans)(const ProbeOptions& options) = nullptr;
  // Reads the chain; every row has it. Throws Unsupported where the probe says nothing of it.
  Chain (*read_chain)(const ProbeOptions& options) = nullptr;
  // Returns the one TAP that scripts scan; throws Unsupported where the options leave it open. Null
  // where scripts scan the whole chain.
  std::size_t (*only_tap)(const Chain& chain, const ProbeOptions& options) = nullptr;

  bool ShowsPins() const { return open_pins != nullptr; }
};

// Returns all rows. The first is the default.
const std::vector<ProbeKind>& ProbeKinds();

// The probe that a verb works on.
struct ProbeOptions {
  const ProbeKind* kind = &ProbeKinds().front();
  Endpoint endpoint;
  std::string tap;                          // empty: the only one
  std::chrono::milliseconds timeout{5000};  // for its answers
  std::shared_ptr<SpawnedCommand> spawned;  // runs its server, and is started for the connection
  std::string spawn_log;                    // the file for the command's output; may be empty
  TargetOptions target;                     // of the simulated probe
  ChainPlace place;                         // of the TAP that scripts address
  bool measures_place = false;              // the place is yet to be read from the chain

  // Whether there are TAPs beside the one that scripts address, or may be.
  bool ChoosesTap() const { return measures_place || place.ir_lengths.size() > 1; }
  // The probe as the user names it.
  std::string Name() const;
};

// Reads the value of --probe; throws std::invalid_argument that says what is expected.
void ParseProbe(const std::string& text, ProbeOptions& options);
// The help text of --probe, and the one for serve.
std::string ProbeHelp();
std::string ServedProbeHelp();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TABLES_PROBES_H_
