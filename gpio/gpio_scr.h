// The list of operations of a GPIO script, with each REPT paired with its ENDR.
#ifndef ICESCRIPT_GPIO_GPIO_SCR_H_
#define ICESCRIPT_GPIO_GPIO_SCR_H_

#include <cstdint>
#include <deque>

#include "base/ini_file.h"
#include "entry/icescript.h"

namespace icescript {

// One operation: a node of the list.
struct GpioOperatorData {
  std::int32_t out_value;     // output levels, GPIO_PIN_ bits
  std::int32_t oe_mask;       // output enables, GPIO_PIN_ bits
  std::int32_t flags;         // GPIO_FLAG_ bits
  std::uint32_t gpio_data;    // 0 at first, then the last value that the host stored
  std::int32_t kind;          // GPIO_KIND_
  std::int32_t repeat_count;  // REPT: remaining runs; ENDR: the count of its REPT; else 0
  GpioOperatorData* next;     // null at the tail
  GpioOperatorData* partner;  // REPT and ENDR: each other's node; else null
  bool holds_pins;            // REPT: whether its block contains a pin operation, at any depth
};

// Reads a GPIO script when constructed, reports its errors to the callback, and sets `status`. Owns
// the list. Exceptions from the callback and the standard library pass through without leaks.
class GpioScr {
 public:
  // A null `path` sets `error` and prints nothing. `callback` must not be null.
  GpioScr(char* path, PrintCallback callback);
  ~GpioScr();
  GpioScr(const GpioScr&) = delete;
  GpioScr& operator=(const GpioScr&) = delete;

  // Appends the operations of the script to the list. Returns the value for `status`.
  int ParseScr(char* path);
  // Returns a new node, which this object owns and which is not yet in the list. A REPT becomes the
  // innermost open REPT. An ENDR is paired with the innermost open REPT. If none is open, sets and
  // prints `error` and returns null.
  GpioOperatorData* ParseGpioOperatorData(int out_value, int oe_mask, int flags, int kind,
                                          int repeat_count);
  // Makes `node`, which must be a REPT, the innermost open REPT.
  void RepeatNodePush(GpioOperatorData* node);
  // Closes the innermost open REPT and returns it, or null if none is open.
  GpioOperatorData* RepeatNodePop();

  // Returns the first node, which this object owns, or null.
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

  std::deque<GpioOperatorData> nodes;  // a deque never moves its elements
  GpioOperatorData* head = nullptr;
  GpioOperatorData* tail = nullptr;
  RepeatStackEntry* repeat_stack = nullptr;
  std::int32_t count = 0;
  PrintCallback print;

 public:
  // A message if the path was null or a REPT or ENDR has no partner; else null.
  const char* error = nullptr;
  // GPIO_READ_OK, or a negative GPIO_READ_ value.
  std::int32_t status = 0;
};

}  // namespace icescript

#endif  // ICESCRIPT_GPIO_GPIO_SCR_H_
