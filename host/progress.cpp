#include "host/progress.h"

#include <fmt/format.h>

#include <cstdio>

namespace icehost {
namespace {

constexpr std::chrono::milliseconds kDrawEvery{200};
constexpr char kEraseLine[] = "\r\033[K";

}  // namespace

void Progress::OnOperation() {
  ++operations_;
  if (!shown_ || Clock::now() < next_) return;
  next_ = Clock::now() + kDrawEvery;
  const double rate = static_cast<double>(operations_) / Elapsed().count();
  std::fputs(fmt::format("{}{} operations, {:.0f}/s", kEraseLine, operations_, rate).c_str(),
             stderr);
  std::fflush(stderr);
  drawn_ = true;
}

void Progress::Erase() {
  if (drawn_) std::fputs(kEraseLine, stderr);
  drawn_ = false;
}

}  // namespace icehost
