// Takes what the waveform draws on a canvas, and makes a picture of it that is sharp at any size.
class SvgContext {
  static ANCHORS = {left: "start", center: "middle", right: "end"};

  constructor(width, height) {
    this.picture = this.make("svg", {viewBox: `0 0 ${width} ${height}`});
    this.parent = this.picture;
    this.fill = null;  // of the rectangles that follow each other
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
    return {width: 6.63 * text.length};  // of a font of 11 pixels
  }

  fillRect(x, y, width, height) {
    if (this.fill !== this.fillStyle) this.endPath();
    this.fill = this.fillStyle;
    const short = (number) => Math.round(number * 100) / 100;
    this.path += `M${short(x)} ${short(y)}h${short(width)}v${short(height)}h${short(-width)}z`;
  }

  endPath() {
    if (this.path !== "") this.parent.append(this.make("path", {fill: this.fill, d: this.path}));
    this.path = "";
  }

  fillText(text, x, y) {
    const anchor = SvgContext.ANCHORS[this.textAlign];
    this.add(this.make("text", {x, y, fill: this.fillStyle, "text-anchor": anchor,
      "dominant-baseline": "central"})).textContent = text;
  }

  // What follows is cut at the rectangle, until it is restored.
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

  beginPath() {}
}
