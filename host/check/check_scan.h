// One scan of a JTAG script.
#ifndef ICESCRIPT_HOST_CHECK_CHECK_SCAN_H_
#define ICESCRIPT_HOST_CHECK_CHECK_SCAN_H_

#include <string>

#include "base/cstring.h"
#include "host/check/check.h"
#include "host/check/ini_places.h"

namespace icehost {

// Reports what is wrong with the values of IR and DR, neither of them empty. `name` and `section`
// are the section's.
void CheckScan(const icescript::CString& ir, const icescript::CString& dr,
               const IniSection& section, const std::string& name, Problems& problems);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_CHECK_SCAN_H_
