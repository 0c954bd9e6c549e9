// A GPIO script as a list of operations with its repeat blocks paired.
#ifndef ICESCRIPT_GPIO_GPIO_SCR_H_
#define ICESCRIPT_GPIO_GPIO_SCR_H_

#include <cstdint>
#include <deque>

#include "base/ini_file.h"
#include "entry/icescript.h"

namespace icescript {

// One operation, a list node.
struct GpioOperatorData {
  std::int32_t out_value;     // output levels, GPIO_PIN_ bits
  std::int32_t oe_mask;       // output enables, GPIO_PIN_ bits
  std::int32_t flags;         // GPIO_FLAG_ bits
  std::uint32_t gpio_data;    // 0 at first, then what the host stored last
  std::int32_t kind;          // GPIO_KIND_
  std::int32_t repeat_count;  // REPT: runs still to go; ENDR: the count of its REPT; else 0
  GpioOperatorData* next;     // null at the tail
  GpioOperatorData* partner;  // REPT and ENDR: each other's node; else null
  bool holds_pins;            // REPT: whether a pin operation stands in its block, at any depth
};

// Reads a GPIO script when it is constructed, sends what is wrong with it to the callback, and
// keeps the outcome in `status`. Owns the list. Exceptions of the callback and of the standard
// library pass through; nothing leaks.
class GpioScr {
 public:
  // `path` may be null, which sets `error` and prints nothing; `callback` must not.
  GpioScr(char* path, PrintCallback callback);
  ~GpioScr();
  GpioScr(const GpioScr&) = delete;
  GpioScr& operator=(const GpioScr&) = delete;

  // Appends the script's operations to the list and returns the status to keep.
  int ParseScr(char* path);
  // A new node, owned by this object and not yet in the list. A REPT is opened, an ENDR paired with
  // the innermost open REPT; null, with `error` set and printed, when there is none.
  GpioOperatorData* ParseGpioOperatorData(int out_value, int oe_mask, int flags, int kind,
                                          int repeat_count);
  void RepeatNodePush(GpioOperatorData* node);
  // The innermost open REPT, open no longer; null when none is.
  GpioOperatorData* RepeatNodePop();

  // First node, or null; owned by this object.
  GpioOperatorData* GetFirstGpioOperatorData() { return head; }
  GpioOperatorData* GetNextGpioOperatorData(GpioOperatorData* node) const {
    return node != nullptr ? node->next : nullptr;
  }
  int GetGpioOperatorDataCount() const { return count; }

 private:
  struct RepeatStackEntry {
    GpioOperatorData* node;
    RepeatStackEntry* below;
  };

  explicit GpioScr(PrintCallback callback) : print(callback) {}
  int AppendElements(CIniFile& ini);
  int RefuseOpenRepeat();
  bool CloseBlock(GpioOperatorData* endr);
  void MarkOpenBlock();

  std::deque<GpioOperatorData> nodes;  // which never move
  GpioOperatorData* head = nullptr;
  GpioOperatorData* tail = nullptr;
  RepeatStackEntry* repeat_stack = nullptr;
  std::int32_t count = 0;
  PrintCallback print;

 public:
  // Null, or the message of a null path or of REPT and ENDR that do not pair.
  const char* error = nullptr;
  // GPIO_READ_OK, or a negative GPIO_READ_ status: GPIO_READ_NOT_GPIO for a file that is no GPIO
  // script.
  std::int32_t status = 0;
};

}  // namespace icescript

#endif  // ICESCRIPT_GPIO_GPIO_SCR_H_
