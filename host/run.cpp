#include <utility>
#include <vector>

#include "host/runner.h"
#include "host/scripts.h"
#include "host/system/errors.h"
#include "host/system/standard_streams.h"
#include "host/verbs.h"

namespace icehost {

ExitStatus Execute(const RunCommand& command) {
  std::vector<Script> scripts;
  try {
    scripts = LoadScripts(command);
  } catch (const IoError& error) {
    Complain(error.what());
    return kScriptFailed;
  }
  if (scripts.empty()) return kScriptFailed;
  try {
    return Runner(command).RunAll(std::move(scripts));
  } catch (const Interrupted& error) {
    Complain(error.what());
    return kInterrupted;
  } catch (const IoError& error) {
    Complain(error.what());
    return kNotOpened;
  }
}

}  // namespace icehost
