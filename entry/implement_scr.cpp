#include "entry/icescript.h"
#include "gpio/gpio_loop.h"
#include "jtag/jtag_loop.h"

namespace icescript {
namespace {

constexpr char kEndBanner[] = "Execute ORVEX ICE Script End.\n";

int PrintNothing(const char* /*message*/) {
  return 0;
}

int RunGpioScript(LinkHandle handle, PrintCallback print, GpioScr& gpio) {
  print("Execute ORVEX_ICE_GPIO Script.\n");
  if (gpio.error != nullptr) {
    print(gpio.error);
    return -1;
  }
  if (!RunGpioOperators(handle, print, gpio.GetFirstGpioOperatorData())) {
    print("error: fail to execute orvex_ice_gpio script.\n");
    return -1;
  }
  print(kEndBanner);
  return 0;
}

int RunJtagScript(LinkHandle handle, char* path, PrintCallback print) {
  print("Execute ORVEX_JTAG Script.\n");
  {
    JtagScr jtag(path, print);
    if (jtag.errorMessage != nullptr) {
      print(jtag.errorMessage);
      return -1;
    }
    if (!RunJtagOperators(handle, print, jtag.GetFirstJtagOperatorData())) return -1;
  }
  print(kEndBanner);
  return 0;
}

}  // namespace
}  // namespace icescript

int ImplementScr(LinkHandle handle, char* path, PrintCallback callback) {
  using namespace icescript;
  const PrintCallback print = callback != nullptr ? callback : PrintNothing;
  GpioScr gpio(path, print);
  if (gpio.status >= 0) return RunGpioScript(handle, print, gpio);
  if (gpio.status == GPIO_READ_NOT_GPIO) return RunJtagScript(handle, path, print);
  return -1;
}
