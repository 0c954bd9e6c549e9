// Takes what the waveform draws on a canvas, and makes a picture of it that is sharp at any size.
class SvgContext {
  static ANCHORS = {left: "start", center: "middle", right: "end"};

  constructor(width, height) {
    this.picture = this.make("svg", {viewBox: `0 0 ${width} ${height}`});
    this.parent = this.picture;
    this.path = null;  // the rectangles of one colour that follow each other
    this.bounds = null;
  }

  make(name, attributes) {
    const element = document.createElementNS("http://www.w3.org/2000/svg", name);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    return element;
  }

  add(element) {
    this.parent.append(element);
    this.path = null;
    return element;
  }

  measureText(text) {
    return {width: 6.63 * text.length};  // of a font of 11 pixels
  }

  fillRect(x, y, width, height) {
    if (this.path?.fill !== this.fillStyle) {
      const element = this.add(this.make("path", {fill: this.fillStyle}));
      this.path = {element, fill: this.fillStyle, text: ""};
    }
    const short = (number) => Math.round(number * 100) / 100;
    this.path.text += `M${short(x)} ${short(y)}h${short(width)}v${short(height)}h${short(-width)}z`;
    this.path.element.setAttribute("d", this.path.text);
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
    this.parent = this.picture;
    this.path = null;
  }

  save() {}

  beginPath() {}
}
