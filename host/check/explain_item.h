// Why an item of a GPIO script is refused.
#ifndef ICESCRIPT_HOST_CHECK_EXPLAIN_ITEM_H_
#define ICESCRIPT_HOST_CHECK_EXPLAIN_ITEM_H_

#include <string>
#include <string_view>

namespace icehost {

// What is wrong with an item that the plug-in's parser refused, what is allowed and what was
// probably meant. `field` is the item as it stands in the text of its line.
std::string WhyRefused(std::string_view field, std::string_view line);

}  // namespace icehost

#endif  // ICESCRIPT_HOST_CHECK_EXPLAIN_ITEM_H_
