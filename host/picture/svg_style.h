// Colours and fonts of a picture.
#ifndef ICESCRIPT_HOST_PICTURE_SVG_STYLE_H_
#define ICESCRIPT_HOST_PICTURE_SVG_STYLE_H_

namespace icehost {

// Attributes of what is drawn, as a viewer without style sheets takes them; the classes are those
// of kSvgDarkStyle.
constexpr char kSvgPage[] = R"(class="page" fill="#ffffff")";
constexpr char kSvgInk[] = R"(class="ink" fill="#1f2328")";
constexpr char kSvgGrid[] = R"(class="grid" fill="none" stroke="#d0d7de" stroke-width="1")";
constexpr char kSvgWave[] = R"(class="wave" fill="none" stroke="#0a58ca" stroke-width="1.5")";
constexpr char kSvgShape[] = R"(class="shape" fill="#eef2f7" stroke="#8c959f" stroke-width="0.7")";
constexpr char kSvgRead[] = R"(class="read" fill="#0a58ca")";
constexpr char kSvgUnmet[] = R"(class="unmet" fill="none" stroke="#cf222e" stroke-width="2.5")";
constexpr char kSvgUnmetInk[] = R"(class="unmet-ink" fill="#cf222e")";

constexpr char kSvgDarkStyle[] =
    "<style>\n"
    "@media (prefers-color-scheme:dark){\n"
    ".page{fill:#0d1117}.ink{fill:#e6edf3}.grid{stroke:#30363d}.wave{stroke:#6cb6ff}\n"
    ".shape{fill:#1c2430;stroke:#6e7681}.read{fill:#6cb6ff}\n"
    ".unmet{stroke:#ff7b72}.unmet-ink{fill:#ff7b72}}\n"
    "</style>\n";

}  // namespace icehost

#endif  // ICESCRIPT_HOST_PICTURE_SVG_STYLE_H_
