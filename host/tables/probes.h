// The probes of --probe. To add one, write its class and a row in probes.cpp.
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

// A row of the table. For a probe across a network, the functions that open it or read its chain
// start the command of --spawn, if any, and connect. They may throw IoError and Interrupted.
struct ProbeKind {
  using OpenPins = std::unique_ptr<PinPort> (*)(const ProbeOptions& options);

  const char* name = "";               // the value of --probe, up to the colon before an address
  std::vector<std::string> addresses;  // the forms of its address; empty if it has none
  const char* title = "";              // its name in messages
  bool has_target = false;             // it has the options of the simulated target
  bool two_wire = false;               // it supports the 2-wire interface
  // Reads the address into `options`. Throws std::invalid_argument, which says what is expected.
  void (*parse)(const std::string& address, ProbeOptions& options) = nullptr;
  // Describes the probe for the head of a page. Never null.
  std::string (*describe)(const ProbeOptions& options) = nullptr;
  // Opens the pins for scripts. Null if the probe shows no pins.
  OpenPins open_pins = nullptr;
  // Opens the pins for serve, where only the client drives them. Null: serve uses open_pins.
  OpenPins open_served = nullptr;
  // Opens a probe that shows no pins; null if the probe shows pins.
  std::unique_ptr<Probe> (*open_scans)(const ProbeOptions& options) = nullptr;
  // Reads the chain. Throws Unsupported if the probe cannot report it. Never null.
  Chain (*read_chain)(const ProbeOptions& options) = nullptr;
  // Returns the index of the only TAP that scripts can scan. Throws Unsupported if the chain has
  // several TAPs and the options name none. Null if scripts can scan the whole chain.
  std::size_t (*only_tap)(const Chain& chain, const ProbeOptions& options) = nullptr;

  bool ShowsPins() const { return open_pins != nullptr; }
};

// Returns the rows of the table. The first one is the default.
const std::vector<ProbeKind>& ProbeKinds();

// The probe that a verb works on.
struct ProbeOptions {
  const ProbeKind* kind = &ProbeKinds().front();
  Endpoint endpoint;
  std::string tap;                          // the name of the TAP in OpenOCD; may be empty
  std::chrono::milliseconds timeout{5000};  // the longest wait for an answer
  std::shared_ptr<SpawnedCommand> spawned;  // the command of --spawn; may be null
  std::string spawn_log;                    // the file for the command's output; may be empty
  TargetOptions target;                     // of the simulated probe
  ChainPlace place;                         // of the TAP that scripts address
  bool measures_place = false;              // `place` must be read from the chain

  // Returns whether the chain has, or may have, several TAPs.
  bool ChoosesTap() const { return measures_place || place.ir_lengths.size() > 1; }
  // Returns the name of the probe for messages.
  std::string Name() const;
};

// Reads the value of --probe. Throws std::invalid_argument, which says what is expected.
void ParseProbe(const std::string& text, ProbeOptions& options);
// Return the help texts of --probe for most verbs, and for serve.
std::string ProbeHelp();
std::string ServedProbeHelp();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_TABLES_PROBES_H_
