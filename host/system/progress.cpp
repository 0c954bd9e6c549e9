#include "host/system/progress.h"

#include <utility>

#include "host/system/standard_streams.h"

namespace icehost {
namespace {

constexpr std::chrono::milliseconds kDrawEvery{200};
constexpr char kEraseLine[] = "\r\033[K";

}  // namespace

void Progress::Draw(const std::string& line) {
  next_ = Clock::now() + kDrawEvery;
  StandardError() << kEraseLine + line;
  drawn_ = true;
}

void Progress::Erase() {
  if (std::exchange(drawn_, false)) StandardError() << kEraseLine;
}

}  // namespace icehost
