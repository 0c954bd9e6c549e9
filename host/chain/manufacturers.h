// The names of manufacturers.
#ifndef ICESCRIPT_HOST_CHAIN_MANUFACTURERS_H_
#define ICESCRIPT_HOST_CHAIN_MANUFACTURERS_H_

#include <istream>
#include <string>
#include <vector>

#include "host/chain/idcode.h"

namespace icehost {

class Manufacturers {
 public:
  // Knows none.
  Manufacturers() = default;
  // Those of a table as Debian's decode-dimms holds it: behind a line "@vendors = (" a list of
  // banks in brackets, each of names in quotes by their codes, up to ");". A table of another form
  // has none: better no name than a wrong one. Reads at most 1 MiB.
  explicit Manufacturers(std::istream& table);
  // The table that is installed on this machine, if any.
  static Manufacturers Installed();

  // Empty where it is not known.
  std::string NameOf(Manufacturer manufacturer) const;

 private:
  std::vector<std::vector<std::string>> banks_;
};

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHAIN_MANUFACTURERS_H_
