// Moves the visible part and the cursor of the waveform. Positions are steps and can be fractions.
class WaveView {
  static LABELS = 64;  // pixels to the left of the waveform
  static MOST_SCALE = 60;

  // `onPick` is called with the step that was clicked. A subclass must define draw().
  constructor(canvas, onPick) {
    this.canvas = canvas;
    this.context = canvas.getContext("2d");
    this.onPick = onPick;
    this.from = 0;       // the step at the left edge
    this.scale = 0;      // pixels per step
    this.cursor = null;  // a step
    this.hover = null;   // the step under the pointer
    this.row = null;     // the selected row
    this.resize();
    new ResizeObserver(() => this.resize()).observe(canvas);
    this.listen();
  }

  resize() {
    const ratio = window.devicePixelRatio || 1;
    this.width = this.canvas.clientWidth;
    this.height = this.canvas.clientHeight;
    this.canvas.width = Math.round(this.width * ratio);
    this.canvas.height = Math.round(this.height * ratio);
    this.context.setTransform(ratio, 0, 0, ratio, 0, 0);
    this.show(this.from, this.scale === 0 ? Math.max(1, this.leastScale()) : this.scale);
  }

  room() {
    return Math.max(1, this.width - WaveView.LABELS);
  }

  leastScale() {
    return Math.min(WaveView.MOST_SCALE, this.room() / Math.max(1, steps.length));
  }

  show(from, scale) {
    this.scale = Math.min(WaveView.MOST_SCALE, Math.max(this.leastScale(), scale));
    this.from = Math.max(0, Math.min(from, steps.length - this.room() / this.scale));
    this.redraw();
  }

  // Zooms without moving the step at `x`.
  zoom(factor, x) {
    const step = this.stepAt(x);
    const scale = Math.min(WaveView.MOST_SCALE, Math.max(this.leastScale(), this.scale * factor));
    this.show(step - (x - WaveView.LABELS) / scale, scale);
  }

  zoomAtCursor(factor) {
    const x = this.cursor === null ? -1 : this.x(this.cursor + 0.5);
    const seen = x >= WaveView.LABELS && x <= this.width;
    this.zoom(factor, seen ? x : WaveView.LABELS + this.room() / 2);
  }

  // Makes a row visible, and moves the cursor to its beginning. For a row without steps, shows the
  // step at which it read the pins. Null selects no row.
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
    this.scale = Math.min(WaveView.MOST_SCALE, Math.max(this.leastScale(), scale));
    const inSight = place >= this.from && place + length <= this.from + room / this.scale;
    this.show(inSight ? this.from : place + length / 2 - room / this.scale / 2, this.scale);
  }

  // Zooms until a row fills most of the width. For a row without steps, uses the step at which it
  // read the pins.
  zoomToRow(row) {
    if (row === null || row.end === 0 || row.begin > steps.length) return;
    const begin = Math.min(row.begin, row.end - 1);
    const length = row.end - begin;
    const scale = Math.min(WaveView.MOST_SCALE, this.room() / (1.1 * length));
    this.show(begin + length / 2 - this.room() / scale / 2, scale);
  }

  setCursor(step) {
    this.cursor = Math.max(0, Math.min(step, steps.length - 1));
    const x = this.x(this.cursor + 0.5);
    if (x < WaveView.LABELS || x > this.width) this.from = this.cursor - this.room() / this.scale / 2;
    this.show(this.from, this.scale);
  }

  x(step) {
    return WaveView.LABELS + (step - this.from) * this.scale;
  }

  stepAt(x) {
    return this.from + (x - WaveView.LABELS) / this.scale;
  }

  // Returns the first visible step, and the step after the last visible step.
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
      const inside = event.offsetX >= WaveView.LABELS && step < steps.length;
      if (press !== null && !press.moved && inside) this.pick(step);
      press = null;
    });
    this.canvas.addEventListener("dblclick", (event) => {
      if (event.offsetX < WaveView.LABELS) return;
      this.zoomToRow(rowAtStep(Math.floor(this.stepAt(event.offsetX))));
    });
    this.canvas.addEventListener("pointercancel", () => { press = null; });
    this.canvas.addEventListener("pointerleave", () => this.setHover(-1));
    this.canvas.addEventListener("wheel", (event) => this.onWheel(event), {passive: false});
    this.canvas.addEventListener("keydown", (event) => this.onKey(event));
  }

  setHover(x) {
    const step = Math.floor(this.stepAt(x));
    const hover = x >= WaveView.LABELS && step < steps.length ? step : null;
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
      this.zoom(Math.exp(-event.deltaY * lines * 0.002), Math.max(event.offsetX, WaveView.LABELS));
    }
  }

  onKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const away = {ArrowLeft: -1, ArrowRight: 1}[event.key];
    const keys = {
      "+": () => this.zoomAtCursor(1.5), "=": () => this.zoomAtCursor(1.5),
      "-": () => this.zoomAtCursor(1 / 1.5), "0": () => this.show(0, 0),
      "Enter": () => this.zoomToRow(this.row),
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

  // Draws once per frame, even if there are several changes before the next frame.
  redraw() {
    this.frame ??= requestAnimationFrame(() => {
      this.frame = null;
      this.draw();
    });
  }
}
