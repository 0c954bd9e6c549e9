// A drawing context that draws the waveform as an SVG picture, which is sharp at any size.
class SvgContext {
  static ANCHORS = {left: "start", center: "middle", right: "end"};

  constructor(width, height) {
    this.picture = this.make("svg", {viewBox: `0 0 ${width} ${height}`});
    this.parent = this.picture;
    this.colour = null;  // the colour of the rectangles in `path`
    this.path = "";
    this.bounds = null;
  }

  make(name, attributes) {
    const element = document.createElementNS("http://www.w3.org/2000/svg", name);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    return element;
  }

  add(element) {
    this.endPath();
    this.parent.append(element);
    return element;
  }

  measureText(text) {
    return {width: 6.63 * text.length};  // at a font size of 11 pixels
  }

  fillRect(x, y, width, height) {
    if (this.colour !== this.fillStyle) this.endPath();
    this.colour = this.fillStyle;
    const short = (number) => Math.round(number * 100) / 100;
    this.path += `M${short(x)} ${short(y)}h${short(width)}v${short(height)}h${short(-width)}z`;
  }

  endPath() {
    if (this.path !== "") this.parent.append(this.make("path", {fill: this.colour, d: this.path}));
    this.path = "";
  }

  fillText(text, x, y) {
    const anchor = SvgContext.ANCHORS[this.textAlign];
    this.add(this.make("text", {x, y, fill: this.fillStyle, "text-anchor": anchor,
      "dominant-baseline": "central"})).textContent = text;
  }

  beginPath() {
    this.outline = "";
  }

  moveTo(x, y) {
    this.outline += `M${x} ${y}`;
  }

  lineTo(x, y) {
    this.outline += `L${x} ${y}`;
  }

  // Always draws a whole circle.
  arc(x, y, radius) {
    const half = `a${radius} ${radius} 0 0 1 `;
    this.outline += `M${x - radius} ${y}${half}${2 * radius} 0${half}${-2 * radius} 0`;
  }

  fill() {
    this.add(this.make("path", {fill: this.fillStyle, d: this.outline}));
  }

  stroke() {
    this.add(this.make("path", {fill: "none", stroke: this.strokeStyle, "stroke-width": this.lineWidth,
      d: this.outline}));
  }

  // Sets the area for clip(). The clipping ends with restore().
  rect(x, y, width, height) {
    this.bounds = {x, y, width, height, viewBox: `${x} ${y} ${width} ${height}`};
  }

  clip() {
    this.parent = this.add(this.make("svg", this.bounds));
  }

  restore() {
    this.endPath();
    this.parent = this.picture;
  }

  save() {}
}
