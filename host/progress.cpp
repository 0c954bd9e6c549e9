#include "host/progress.h"

#include <cstdio>

namespace icehost {
namespace {

constexpr std::chrono::milliseconds kDrawEvery{200};

}  // namespace

void Progress::OnOperation() {
  ++operations_;
  if (!shown_ || Clock::now() < next_) return;
  next_ = Clock::now() + kDrawEvery;
  const double rate = static_cast<double>(operations_) / Elapsed().count();
  std::fprintf(stderr, "\r\033[K%ld operations, %.0f/s", operations_, rate);
  std::fflush(stderr);
  drawn_ = true;
}

void Progress::Erase() {
  if (drawn_) std::fputs("\r\033[K", stderr);
  drawn_ = false;
}

}  // namespace icehost
