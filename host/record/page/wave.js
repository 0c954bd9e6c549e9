// The waveform: a ruler, the operations, the TAP's states and the pins, on a canvas. Positions are
// steps, as fractions where a pixel is less than one.
class Wave {
  static LABELS = 64;  // pixels, as all that follows
  static RULER = 22;
  static LANE = 24;
  static HIGH = 14;    // of a signal
  static MOST_SCALE = 60;

  // `onPick` is told the step that was clicked, `onMove` of every change.
  constructor(canvas, onPick, onMove) {
    this.canvas = canvas;
    this.context = canvas.getContext("2d");
    this.onPick = onPick;
    this.onMove = onMove;
    this.taps = tapSegments(steps);
    this.badRows = rows.filter((row) => row.verdict >= NOT_MET && row.begin <= steps.length);
    this.from = 0;       // the step at the left edge
    this.scale = 0;      // pixels a step
    this.cursor = null;  // a step
    this.hover = null;   // likewise
    this.row = null;     // the one that is picked
    this.readColours();
    this.resize();
    new ResizeObserver(() => this.resize()).observe(canvas);
    this.listen();
  }

  readColours() {
    const style = getComputedStyle(document.documentElement);
    const names = ["bg", "fg", "dim", "edge", "bad", "bad-soft", "pick", "wave", "block", "shift",
      "grid", "cursor"];
    this.colour = Object.fromEntries(names.map((name) => [name,
      style.getPropertyValue(`--${name}`).trim()]));
    this.draw();
  }

  resize() {
    const ratio = window.devicePixelRatio || 1;
    this.width = this.canvas.clientWidth;
    this.height = this.canvas.clientHeight;
    this.canvas.width = Math.round(this.width * ratio);
    this.canvas.height = Math.round(this.height * ratio);
    this.context.setTransform(ratio, 0, 0, ratio, 0, 0);
    this.context.font = "11px monospace";
    this.character = this.context.measureText("0").width;
    this.show(this.from, this.scale === 0 ? Math.max(1, this.leastScale()) : this.scale);
  }

  room() {
    return Math.max(1, this.width - Wave.LABELS);
  }

  leastScale() {
    return Math.min(Wave.MOST_SCALE, this.room() / Math.max(1, steps.length));
  }

  show(from, scale) {
    this.scale = Math.min(Wave.MOST_SCALE, Math.max(this.leastScale(), scale));
    this.from = Math.max(0, Math.min(from, steps.length - this.room() / this.scale));
    this.redraw();
  }

  // Keeps the step at `x` where it is.
  zoom(factor, x) {
    const step = this.stepAt(x);
    const scale = Math.min(Wave.MOST_SCALE, Math.max(this.leastScale(), this.scale * factor));
    this.show(step - (x - Wave.LABELS) / scale, scale);
  }

  zoomAtCursor(factor) {
    const x = this.cursor === null ? -1 : this.x(this.cursor + 0.5);
    const seen = x >= Wave.LABELS && x <= this.width;
    this.zoom(factor, seen ? x : Wave.LABELS + this.room() / 2);
  }

  // Brings a row into sight, wide enough to be seen, with the cursor at its beginning. One that only
  // reads has no step of its own: it reads what the step before it left. Null: none is picked.
  showRow(row) {
    this.row = row;
    if (row === null) return this.redraw();
    const place = row.end > row.begin ? row.begin : row.begin - 1;
    this.cursor = place >= 0 && place < steps.length ? place : null;
    if (this.cursor === null) return this.redraw();
    const length = Math.max(1, row.end - row.begin);
    const room = this.room();
    let scale = this.scale;
    if (length * scale > room) scale = room / (1.2 * length);
    if (length * scale < 12) scale = 12 / length;
    this.scale = Math.min(Wave.MOST_SCALE, Math.max(this.leastScale(), scale));
    const inSight = place >= this.from && place + length <= this.from + room / this.scale;
    this.show(inSight ? this.from : place + length / 2 - room / this.scale / 2, this.scale);
  }

  setCursor(step) {
    this.cursor = Math.max(0, Math.min(step, steps.length - 1));
    const x = this.x(this.cursor + 0.5);
    if (x < Wave.LABELS || x > this.width) this.from = this.cursor - this.room() / this.scale / 2;
    this.show(this.from, this.scale);
  }

  x(step) {
    return Wave.LABELS + (step - this.from) * this.scale;
  }

  stepAt(x) {
    return this.from + (x - Wave.LABELS) / this.scale;
  }

  // The steps in sight: the first, and the one past the last.
  sight() {
    const end = Math.min(steps.length, Math.ceil(this.stepAt(this.width)) + 1);
    return [Math.max(0, Math.floor(this.from)), end];
  }

  listen() {
    let press = null;
    this.canvas.addEventListener("pointerdown", (event) => {
      if (event.button !== 0) return;
      press = {x: event.offsetX, from: this.from, moved: false};
      this.canvas.setPointerCapture(event.pointerId);
    });
    this.canvas.addEventListener("pointermove", (event) => {
      if (press !== null && Math.abs(event.offsetX - press.x) > 3) press.moved = true;
      if (press?.moved) this.show(press.from - (event.offsetX - press.x) / this.scale, this.scale);
      this.setHover(event.offsetX);
    });
    this.canvas.addEventListener("pointerup", (event) => {
      const step = Math.floor(this.stepAt(event.offsetX));
      const inside = event.offsetX >= Wave.LABELS && step < steps.length;
      if (press !== null && !press.moved && inside) this.pick(step);
      press = null;
    });
    this.canvas.addEventListener("pointercancel", () => { press = null; });
    this.canvas.addEventListener("pointerleave", () => this.setHover(-1));
    this.canvas.addEventListener("wheel", (event) => this.onWheel(event), {passive: false});
    this.canvas.addEventListener("keydown", (event) => this.onKey(event));
  }

  setHover(x) {
    const step = Math.floor(this.stepAt(x));
    const hover = x >= Wave.LABELS && step < steps.length ? step : null;
    if (hover === this.hover) return;
    this.hover = hover;
    this.redraw();
  }

  pick(step) {
    this.setCursor(step);
    this.onPick(this.cursor);
  }

  onWheel(event) {
    event.preventDefault();
    const lines = event.deltaMode === WheelEvent.DOM_DELTA_PIXEL ? 1 : 20;
    const sideways = event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY);
    if (sideways) {
      this.show(this.from + (event.deltaX || event.deltaY) * lines / this.scale, this.scale);
    } else {
      this.zoom(Math.exp(-event.deltaY * lines * 0.002), Math.max(event.offsetX, Wave.LABELS));
    }
  }

  onKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const away = {ArrowLeft: -1, ArrowRight: 1}[event.key];
    const keys = {
      "+": () => this.zoomAtCursor(1.5), "=": () => this.zoomAtCursor(1.5),
      "-": () => this.zoomAtCursor(1 / 1.5), "0": () => this.show(0, 0),
      "Home": () => this.show(0, this.scale), "End": () => this.show(steps.length, this.scale),
    };
    if (away !== undefined && event.shiftKey) {
      this.hover = null;
      this.pick((this.cursor ?? Math.floor(this.from) - away) + away);
    } else if (away !== undefined) {
      this.show(this.from + away * this.room() / this.scale / 8, this.scale);
    } else if (event.key in keys) {
      keys[event.key]();
    } else {
      return;
    }
    event.preventDefault();
  }

  // Once for all that happens before the next frame.
  redraw() {
    this.frame ??= requestAnimationFrame(() => {
      this.frame = null;
      this.draw();
    });
  }

  draw() {
    if (!(this.scale > 0)) return;
    const {context, colour} = this;
    context.fillStyle = colour.bg;
    context.fillRect(0, 0, this.width, this.height);
    context.save();
    context.beginPath();
    context.rect(Wave.LABELS, 0, this.room(), this.height);
    context.clip();
    this.drawRow();
    this.drawRuler();
    this.drawRows(Wave.RULER);
    this.drawTaps(Wave.RULER + Wave.LANE);
    const columns = this.columns();
    const pinY = (pin) => Wave.RULER + (2 + pin) * Wave.LANE;
    data.pins.forEach((_, pin) => this.drawPin(columns, pin, pinY(pin)));
    this.drawLine(this.hover, colour.dim);
    this.drawLine(this.cursor, colour.cursor);
    context.restore();
    this.drawLabels();
    this.drawPlace();
    this.onMove();
  }

  drawRow() {
    if (this.row === null) return;
    const x = Math.floor(this.x(this.row.begin));
    const width = Math.max(2, Math.ceil(this.x(this.row.end)) - x);
    this.context.fillStyle = this.colour.pick;
    this.context.fillRect(x, Wave.RULER - 4, width, this.height);
  }

  drawLine(step, colour) {
    if (step === null) return;
    this.context.fillStyle = colour;
    this.context.fillRect(Math.round(this.x(step + 0.5)), 0, 1, this.height);
  }

  // Marks 1, 2 or 5 times a power of ten apart.
  drawRuler() {
    const {context, colour} = this;
    const least = 90 / this.scale;
    const power = 10 ** Math.max(0, Math.floor(Math.log10(least)));
    const apart = [1, 2, 5, 10].map((n) => n * power).find((n) => n >= least) ?? power;
    const [, end] = this.sight();
    context.textAlign = "left";
    context.textBaseline = "middle";
    for (let at = Math.floor(this.from / apart) * apart; at <= end; at += apart) {
      const x = Math.round(this.x(at));
      context.fillStyle = colour.grid;
      context.fillRect(x, 0, 1, this.height);
      context.fillStyle = colour.dim;
      context.fillText(`${at} us`, x + 4, Wave.RULER / 2 - 2);
    }
  }

  // Blocks in a lane. Those thinner than a pixel fall into one; `style` answers {fill, texts}, the
  // texts from the longest on.
  drawBlocks(segments, y, style) {
    const {context, colour} = this;
    const [first, end] = this.sight();
    let lastX = -1;
    for (let i = this.firstEndingAfter(segments, first); i < segments.length; ++i) {
      const segment = segments[i];
      if (segment.begin >= end) break;
      const x = this.x(segment.begin);
      const width = this.x(segment.end) - x;
      const left = Math.floor(x);
      if (width < 1 && left === lastX) continue;
      lastX = left;
      const {fill, texts} = style(segment);
      context.fillStyle = fill;
      context.fillRect(left, y, Math.max(1, Math.floor(x + width) - left), Wave.HIGH + 2);
      context.fillStyle = colour.edge;
      context.fillRect(left, y, 1, Wave.HIGH + 2);
      if (width > this.character + 4) this.drawText(texts, x, width, y);
    }
  }

  firstEndingAfter(segments, step) {
    let low = 0;
    let high = segments.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (segments[middle].end <= step) low = middle + 1;
      else high = middle;
    }
    return low;
  }

  // In the part of the block that is in sight.
  drawText(texts, x, width, y) {
    const left = Math.max(x, Wave.LABELS);
    const right = Math.min(x + width, this.width);
    const text = texts.find((one) => one.length * this.character + 6 <= right - left);
    if (text === undefined) return;
    this.context.textAlign = "center";
    this.context.fillStyle = this.colour.fg;
    this.context.fillText(text, (left + right) / 2, y + Wave.HIGH / 2 + 1);
  }

  drawRows(y) {
    const {colour} = this;
    const style = (row) => ({
      fill: row.verdict >= NOT_MET ? colour["bad-soft"] : row === this.row ? colour.pick
        : colour.block,
      texts: row.line === 0 ? [visible(row.name)]
        : [`${row.line} ${visible(row.name)}`, `${row.line}`],
    });
    this.drawBlocks(drawnRows, y, style);
    this.context.fillStyle = colour.bad;
    for (const row of this.badRows) {
      const x = this.x(row.begin);
      this.context.fillRect(x, y + Wave.HIGH + 2, Math.max(2, this.x(row.end) - x), 2);
    }
  }

  drawTaps(y) {
    const style = ({tap}) => {
      const name = tapName(tap);
      const shift = name.startsWith("Shift");
      return {fill: this.colour[shift ? "shift" : "block"], texts: [name, name.split("-")[0]]};
    };
    this.drawBlocks(this.taps, y, style);
  }

  // What each column of pixels shows: the levels that any, and that all of its steps have; one that
  // begins with a change shows both levels.
  columns() {
    const count = Math.min(this.room(), Math.ceil(this.x(steps.length)) - Wave.LABELS);
    const columns = [];
    let end = Math.max(0, Math.floor(this.from));
    let before = null;
    for (let column = 0; column < count; ++column) {
      const first = Math.min(end, steps.length - 1);
      end = Math.min(steps.length, Math.floor(this.stepAt(Wave.LABELS + column + 1)));
      let any = steps[first];
      let all = any;
      for (let i = first + 1; i < end; ++i) {
        any |= steps[i];
        all &= steps[i];
      }
      columns.push({any: any | (before ?? any), all: all & (before ?? all)});
      before = steps[Math.max(first, end - 1)];
    }
    return columns;
  }

  drawPin(columns, pin, y) {
    const {context} = this;
    const level = ({any, all}) => (any >> pin & 1) + (all >> pin & 1);  // 0, 2, or 1: both
    context.fillStyle = this.colour.wave;
    for (let from = 0, to = 0; from < columns.length; from = to) {
      const shown = level(columns[from]);
      while (to < columns.length && level(columns[to]) === shown) ++to;
      const top = shown === 0 ? y + Wave.HIGH : y;
      context.fillRect(Wave.LABELS + from, top, to - from, shown === 1 ? Wave.HIGH + 1 : 1.5);
    }
  }

  drawLabels() {
    const {context, colour} = this;
    const at = this.hover ?? this.cursor;
    context.fillStyle = colour.bg;
    context.fillRect(0, 0, Wave.LABELS, this.height);
    context.fillStyle = colour.edge;
    context.fillRect(Wave.LABELS - 1, 0, 1, this.height);
    ["op", "TAP", ...data.pins].forEach((name, lane) => {
      const y = Wave.RULER + lane * Wave.LANE + Wave.HIGH / 2 + 1;
      context.textAlign = "left";
      context.fillStyle = colour.fg;
      context.fillText(name, 8, y);
      if (lane < 2 || at === null) return;
      context.textAlign = "right";
      context.fillStyle = at === this.hover ? colour.dim : colour.cursor;
      context.fillText(steps[at] >> (lane - 2) & 1, Wave.LABELS - 8, y);
    });
  }

  // How much of all is in sight, and where.
  drawPlace() {
    const part = this.room() / steps.length;
    this.context.fillStyle = this.colour.edge;
    this.context.fillRect(Wave.LABELS + this.from * part, this.height - 3,
      Math.max(4, this.room() / this.scale * part), 3);
  }
}
