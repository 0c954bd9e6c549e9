// The data lane of the waveform. It has a box for each register of a scan, and a mark for each step
// at which a script read the pins.
class DataLane {
  static REACH = 6;   // pixels between the middle of a mark and any text
  static RADIUS = 3;  // radius of a mark
  static DENSE = 8;   // marks that are closer together become ticks
  static APART = 3;   // crosses that are closer together are drawn as one

  constructor(taps) {
    this.boxes = scanBoxes(taps);
    this.reads = pinReads();
    this.unmet = [
      ...this.boxes.filter(({wrong}) => wrong),
      ...this.reads.filter(({row}) => row.verdict === NOT_MET),
    ].sort((a, b) => a.begin - b.begin);
  }

  draw(wave, y) {
    const {colour} = wave;
    this.wave = wave;
    wave.drawBlocks(this.boxes, y, (box) => ({
      fill: colour[box.wrong ? "bad-soft" : "block"],
      texts: textsOfBox(box),
      inset: box.wrong ? 2 * DataLane.REACH : 0,
    }));
    this.drawReads(y);
    this.drawUnmet(y);
  }

  drawReads(y) {
    const {wave, reads} = this;
    const [first, end] = wave.sight();
    const xOf = (read) => wave.x(read.begin + 0.5);
    let free = WaveView.LABELS;  // the next text can begin here
    let column = -1;
    for (let i = wave.firstEndingAfter(reads, first); i < reads.length; ++i) {
      if (reads[i].begin >= end) break;
      const x = xOf(reads[i]);
      const next = i + 1 < reads.length ? xOf(reads[i + 1]) : Infinity;
      const before = i > 0 ? xOf(reads[i - 1]) : -Infinity;
      if (Math.min(next - x, x - before) < DataLane.DENSE) {
        if (Math.floor(x) !== column) this.drawTick(x, y);
        column = Math.floor(x);
      } else {
        if (reads[i].row.verdict !== NOT_MET) this.drawDot(x, y, reads[i].row.expected !== "");
        const [begin, past] = this.roomAround(reads[i]);
        free = this.drawReadText(reads[i], x, Math.max(free, begin),
          Math.min(next - DataLane.REACH, past), y);
      }
    }
  }

  // Returns the beginning and end of the space between the boxes on both sides of a read.
  roomAround(read) {
    const {wave, boxes} = this;
    const next = wave.firstEndingAfter(boxes, read.end);
    return [next > 0 ? wave.x(boxes[next - 1].end) : WaveView.LABELS,
      next < boxes.length ? Math.min(wave.x(boxes[next].begin), wave.width) : wave.width];
  }

  drawTick(x, y) {
    this.wave.context.fillStyle = this.wave.colour.dim;
    this.wave.context.fillRect(Math.floor(x), y + 4, 1, Wave.HIGH - 6);
  }

  // Draws a filled dot if the levels are as expected, or a ring if there was no expectation.
  drawDot(x, y, full) {
    const {context, colour} = this.wave;
    context.beginPath();
    context.arc(x, y + Wave.HIGH / 2 + 1, DataLane.RADIUS, 0, 2 * Math.PI);
    context.fillStyle = full ? colour.wave : colour.bg;
    context.fill();
    context.strokeStyle = colour.wave;
    context.lineWidth = 1;
    context.stroke();
  }

  // Draws the longest text that fits beside the mark. Returns where the next text can begin.
  drawReadText(read, x, begin, end, y) {
    const {context, colour, character} = this.wave;
    const reach = DataLane.REACH;
    for (const text of textsOfRead(read)) {
      const width = text.length * character;
      const left = x + reach + width <= end ? x + reach : x - reach - width;
      if (left < begin) continue;
      context.textAlign = "left";
      context.fillStyle = read.row.verdict === NOT_MET ? colour.bad : colour.fg;
      context.fillText(text, left, y + Wave.HIGH / 2 + 1);
      return Math.max(x, left + width) + reach;
    }
    return x + reach;
  }

  // Draws a cross for each value that is not as expected, at the end of its box if there is room.
  drawUnmet(y) {
    const {wave, unmet} = this;
    const [first, end] = wave.sight();
    let last = -Infinity;
    wave.context.strokeStyle = wave.colour.bad;
    wave.context.lineWidth = 2;
    for (const {begin, end: past} of unmet) {
      if (past <= first || begin >= end) continue;
      const middle = wave.x((begin + past) / 2);
      const x = Math.max(middle, wave.x(past) - DataLane.REACH - 1);
      if (x - last < DataLane.APART) continue;
      last = x;
      this.drawCross(x, y + Wave.HIGH / 2 + 1);
    }
  }

  drawCross(x, y) {
    const {context} = this.wave;
    const radius = DataLane.RADIUS;
    context.beginPath();
    context.moveTo(x - radius, y - radius);
    context.lineTo(x + radius, y + radius);
    context.moveTo(x - radius, y + radius);
    context.lineTo(x + radius, y - radius);
    context.stroke();
  }
}

// Returns {begin, end, name, shift} for each scan that shifts bits. Shifting begins at `shift`.
function passes(taps) {
  const found = [];
  for (const {begin, end, tap} of taps) {
    const [, state, name] = /^(\w+)-([ID]R)$/.exec(tapName(tap)) ?? [];
    const last = found[found.length - 1];
    if (name === undefined) continue;
    if (state === "Capture" || last?.end !== begin) found.push({begin, end, name, shift: null});
    const pass = found[found.length - 1];
    pass.end = end;
    if (state === "Shift") pass.shift ??= begin;
  }
  return found.filter(({shift}) => shift !== null);
}

// Returns {begin, end, name, row, wrong} for each scan whose row contains the value that was sent.
function scanBoxes(taps) {
  const boxes = [];
  for (const {begin, end, name, shift} of passes(taps)) {
    const row = rowAtStep(shift);
    if (row === null || !valuesOf(row.sent).has(name)) continue;
    boxes.push({begin, end, name, row, wrong: valuesOf(row.wrong).has(name)});
  }
  return boxes;
}

// Returns {begin, end, row} for each step at which the pins were read. If several rows read them
// at one step, `row` is the first that is not as expected, or else the last.
function pinReads() {
  const reads = [];
  for (const row of rows) {
    if (!row.received.startsWith("0x") || row.end === 0 || row.end > steps.length) continue;
    const last = reads[reads.length - 1];
    if (last?.end === row.end) {
      if (last.row.verdict !== NOT_MET) last.row = row;
    } else {
      reads.push({begin: row.end - 1, end: row.end, row});
    }
  }
  return reads;
}

// Returns the texts for a box, longest first.
function textsOfBox(box) {
  if (box.texts !== undefined) return box.texts;
  const {name} = box;
  const {bits, total, values, wrong} = registersOf(box.row).find((one) => one.name === name);
  const write = (kind) => values[kind] === undefined ? "" : inHexadecimal(values[kind], bits);
  const back = values.received === undefined ? "" : `-> ${write("received")}`;
  const unmet = wrong === 0n ? [] : [`${back}, expected ${write("expected")}`];
  const sent = `${write("sent")} ${unmet[0] ?? back}`.trim();
  box.texts = [`${name} ${total} bits ${sent}`, `${name} ${sent}`, ...unmet, `${name} ${back}`,
    back, `${name} ${total} bits`, name].filter((text) => text !== "");
  return box.texts;
}

// Returns the texts for a read, longest first. The last text is the level of TDO if it is compared.
function textsOfRead(read) {
  const {row} = read;
  if (read.texts !== undefined) return read.texts;
  const [pins] = registersOf(row);
  const value = row.received.slice(0, 4);
  const tdo = data.pins.indexOf("TDO");
  const level = bitAt(pins.mask, tdo) === 1 ? [String(bitAt(pins.values.received, tdo))] : [];
  const why = wrongText(pins);
  read.texts = row.verdict !== NOT_MET ? [row.received, value, ...level]
    : why === "" ? [`${row.received}, expected ${row.expected}`, value]
    : [`${row.received}: ${why}`, why, value];
  return read.texts;
}
