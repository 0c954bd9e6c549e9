// icehost checks and runs scripts without a debug server.
#include <exception>
#include <new>

#include "host/options/commands.h"
#include "host/system/errors.h"
#include "host/system/interrupt.h"
#include "host/system/standard_streams.h"
#include "host/verbs.h"

namespace icehost {
namespace {

ExitStatus Main(int argc, char** argv) {
  const auto parsed = ParseCommandLine(argc, argv);
  if (const auto* status = std::get_if<ExitStatus>(&parsed)) return *status;
  CatchInterrupts();
  const Rescue rescue(Rescue::State::kAway, [] { Complain(Interrupted().what()); });
  return std::visit([](const auto& command) { return Execute(command); },
                    std::get<Command>(parsed));
}

}  // namespace
}  // namespace icehost

int main(int argc, char** argv) {
  using namespace icehost;
  try {
    OccupyStandardDescriptors();
    const ExitStatus status = Main(argc, argv);
    return CompleteStandardStreams() || status != kAllWell ? status : StatusOfLoss();
  } catch (const Interrupted& error) {
    Complain(error.what());
    return kInterrupted;
  } catch (const BadUsage& error) {
    Complain(error.what());
    return kBadUsage;
  } catch (const std::bad_alloc&) {
    ComplainOfMemory();
    return kNotOpened;
  } catch (const std::exception& error) {
    Complain(error.what());
    return kNotOpened;
  }
}
