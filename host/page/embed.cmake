# Makes OUTPUT, a C++ file with the page of FOLDER in it: page.html, where "@FILE@" stands for
# another file of the folder.
file(READ ${FOLDER}/page.html page)
foreach(part page.css tools.css register.css print.css
             model.js register.js list.js search.js bit_view.js panes.js head.js columns.js
             wrapping.js messages.js divider.js tabs.js wave_view.js data_lane.js wave.js tools.js
             page.js svg_context.js print.js)
  file(READ ${FOLDER}/${part} text)
  string(REPLACE "@${part}@" "${text}" page "${page}")
endforeach()
# Byte by byte: compilers bound the length of a literal.
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
