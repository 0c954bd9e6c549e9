// The waveform on a canvas: a ruler, the operations, their data, the TAP states and the pins.
class Wave extends WaveView {
  static RULER = 22;      // height of the ruler, in pixels
  static MOST_LANE = 24;  // maximum height of a lane
  static HIGH = 14;       // height of a signal

  // `onMove` is called when the visible part or the cursor may have changed.
  constructor(canvas, onPick, onMove) {
    super(canvas, onPick);
    this.onMove = onMove;
    this.taps = tapSegments(steps);
    this.data = new DataLane(this.taps);
    this.badRows = rows.filter((row) => row.verdict >= NOT_MET && row.begin <= steps.length);
    this.readColours();
  }

  // Reduces the height of the lanes if there is little room.
  resize() {
    const room = this.canvas.clientHeight - Wave.RULER - 6;
    this.lane = Math.min(Wave.MOST_LANE, Math.floor(room / (data.pins.length + 3)));
    super.resize();
  }

  readColours() {
    const style = getComputedStyle(document.documentElement);
    const names = ["bg", "fg", "dim", "edge", "bad", "bad-soft", "pick", "wave", "block", "shift",
      "grid", "cursor"];
    this.colour = Object.fromEntries(names.map((name) => [name,
      style.getPropertyValue(`--${name}`).trim()]));
    this.redraw();
  }

  draw() {
    const {context, colour} = this;
    context.font = "11px monospace";
    this.character = context.measureText("0").width;
    context.fillStyle = colour.bg;
    context.fillRect(0, 0, this.width, this.height);
    context.save();
    context.beginPath();
    context.rect(Wave.LABELS, 0, this.room(), this.height);
    context.clip();
    this.drawRow();
    this.drawRuler();
    this.drawRows(Wave.RULER);
    this.data.draw(this, Wave.RULER + this.lane);
    this.drawTaps(Wave.RULER + 2 * this.lane);
    const columns = this.columns();
    const pinY = (pin) => Wave.RULER + (3 + pin) * this.lane;
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

  // Draws marks that are 1, 2 or 5 times a power of ten steps apart.
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

  // Draws the blocks of a lane, but only the first block in each pixel. `style` returns
  // {fill, texts, inset}. The longest text comes first. `inset` pixels at the end remain free.
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
      const {fill, texts, inset = 0} = style(segment);
      context.fillStyle = fill;
      context.fillRect(left, y, Math.max(1, Math.floor(x + width) - left), Wave.HIGH + 2);
      context.fillStyle = colour.edge;
      context.fillRect(left, y, 1, Wave.HIGH + 2);
      if (width > this.character + 4) this.drawText(texts, x, width - inset, y);
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

  // Draws the longest text that fits into the visible part of the block.
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

  // Returns {any, all} for each column of pixels. `any` has the pins that are high in at least one
  // step of the column, and `all` has the pins that are high in every step. A pin that changes at
  // the beginning of a column counts as having both levels.
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
    const level = ({any, all}) => (any >> pin & 1) + (all >> pin & 1);  // 0: low, 2: high, 1: both
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
    ["op", "data", "TAP", ...data.pins].forEach((name, lane) => {
      const y = Wave.RULER + lane * this.lane + Wave.HIGH / 2 + 1;
      context.textAlign = "left";
      context.fillStyle = colour.fg;
      context.fillText(name, 8, y);
      if (lane < 3 || at === null) return;
      context.textAlign = "right";
      context.fillStyle = at === this.hover ? colour.dim : colour.cursor;
      context.fillText(steps[at] >> (lane - 3) & 1, Wave.LABELS - 8, y);
    });
  }

  // Shows which part of the waveform is visible.
  drawPlace() {
    const part = this.room() / steps.length;
    this.context.fillStyle = this.colour.edge;
    this.context.fillRect(Wave.LABELS + this.from * part, this.height - 3,
      Math.max(4, this.room() / this.scale * part), 3);
  }
}
