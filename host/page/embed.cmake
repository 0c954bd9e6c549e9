# Writes the C++ file OUTPUT, which contains FOLDER/page.html. Replaces each "@FILE@" in the page
# with the contents of FOLDER/FILE.
file(READ ${FOLDER}/page.html page)
foreach(part page.css tools.css register.css print.css
             model.js register.js list.js search.js bit_view.js panes.js head.js columns.js
             wrapping.js messages.js divider.js tabs.js wave_view.js data_lane.js wave.js tools.js
             page.js svg_context.js print.js)
  file(READ ${FOLDER}/${part} text)
  string(REPLACE "@${part}@" "${text}" page "${page}")
endforeach()
# The page becomes an array of bytes, because compilers limit the length of a string literal.
string(HEX "${page}" bytes)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
file(WRITE ${OUTPUT} "#include \"host/page/page_writer.h\"

namespace icehost {
namespace {

constexpr char kPage[] = {${bytes}};

}  // namespace

std::string_view PageTemplate() {
  return {kPage, sizeof kPage};
}

}  // namespace icehost
")
