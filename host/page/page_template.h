// The page that a browser shows, embedded at build time: page/page.html with its styles and
// scripts.
#ifndef ICESCRIPT_HOST_PAGE_PAGE_TEMPLATE_H_
#define ICESCRIPT_HOST_PAGE_PAGE_TEMPLATE_H_

#include <string_view>

namespace icehost {

// "@data@" stands once in it, where the data belongs.
std::string_view PageTemplate();

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PAGE_PAGE_TEMPLATE_H_
