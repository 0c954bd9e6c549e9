// What was recorded, from the data in the page. Every text in it may hold any characters.
//
// data.log tells it in order, by the type of an entry:
//   a number   the next source begins
//   an array   an operation: [number, line, begin step, end step, name, sent, received, expected,
//              wrong, verdict], the verdict a place in VERDICTS
//   a text     what was printed, of the operation before it; may be a piece of a line
//   an object  an error: {line, text}; a line of 0 is none
const data = JSON.parse(document.getElementById("data").textContent);

const VERDICTS = ["ok", "met", "NOT MET", "FAILED"];
const VERDICT_STYLES = ["done", "met", "bad", "bad"];
const NOT_MET = 2;
const UNKNOWN_TAP = 16;

// Characters that would not be seen, or would turn the direction of others, as their codes.
function visible(text) {
  return text.replace(/[\0-\x08\x0a-\x1f\x7f-\x9f\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff]/g,
    (ch) => "\\u" + ch.charCodeAt(0).toString(16).padStart(4, "0"));
}

// Two bytes a step, the low one first: the levels of data.pins, and the TAP's state above them.
function decodeSteps(text) {
  const bytes = atob(text);
  const steps = new Uint16Array(bytes.length / 2);
  for (let i = 0; i < steps.length; ++i) {
    steps[i] = bytes.charCodeAt(2 * i) | bytes.charCodeAt(2 * i + 1) << 8;
  }
  return steps;
}

function tapOf(step) {
  return step >> data.pins.length;
}

function tapName(tap) {
  return tap === UNKNOWN_TAP ? "TAP unknown" : data.taps[tap];
}

// Where the steps' TAP state changes: {begin, end, tap}.
function tapSegments(steps) {
  const segments = [];
  for (let i = 0; i < steps.length; ++i) {
    const tap = tapOf(steps[i]);
    if (i > 0 && segments[segments.length - 1].tap === tap) continue;
    if (i > 0) segments[segments.length - 1].end = i;
    segments.push({begin: i, end: steps.length, tap});
  }
  return segments;
}

function makeRow(entry, source, index) {
  const [number, line, begin, end, name, sent, received, expected, wrong, verdict] = entry;
  return {index, source, number, line, begin, end, name, sent, received, expected, wrong, verdict,
    messages: 0, errors: []};
}

// The log as {rows, entries}: entries are {kind, row, ...} in their order, messages line by line.
function readLog(log) {
  const rows = [];
  const entries = [];
  let source = -1;
  let row = null;
  let message = "";
  const endMessage = () => {
    const lines = message.split("\n");
    if (lines[lines.length - 1] === "") lines.pop();
    for (const text of lines) entries.push({kind: "message", row, text});
    // A served target has no sources. Its messages belong to no operation.
    if (row !== null && source >= 0) row.messages += lines.length;
    message = "";
  };
  for (const entry of log) {
    if (typeof entry === "string") {
      message += entry;
      continue;
    }
    endMessage();
    if (typeof entry === "number") {
      row = null;
      entries.push({kind: "source", source: ++source});
    } else if (Array.isArray(entry)) {
      row = makeRow(entry, source, rows.length);
      rows.push(row);
      entries.push({kind: "row", row});
    } else {
      entries.push({kind: "error", row, source, line: entry.line, text: entry.text});
      if (entry.line > 0) row?.errors.push(entries[entries.length - 1]);
    }
  }
  endMessage();
  return {rows, entries};
}

// The rows of each line of a source.
function rowsByLine(rows) {
  const lines = data.sources.map(() => new Map());
  for (const row of rows) {
    const of = lines[row.source];
    if (of === undefined || row.line === 0) continue;
    if (!of.has(row.line)) of.set(row.line, []);
    of.get(row.line).push(row);
  }
  return lines;
}

const steps = decodeSteps(data.steps);
const {rows, entries} = readLog(data.log);
const lineRows = rowsByLine(rows);
// Those that failed.
const badRows = rows.filter((row) => row.verdict >= NOT_MET);
// Those that are in the waveform, in its order.
const drawnRows = rows.filter((row) => row.end > row.begin && row.begin < steps.length);

// The row that is under way at a step, or null.
function rowAtStep(step) {
  let low = 0;
  let high = drawnRows.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (drawnRows[middle].end <= step) low = middle + 1;
    else high = middle;
  }
  const row = drawnRows[low];
  return row !== undefined && row.begin <= step ? row : null;
}

// The line whose rows stand for a line: itself, or, where it did nothing itself, the nearest that
// did in its section, those below it first. 0: none.
function lineInCharge(source, line) {
  const of = lineRows[source];
  const text = data.sources[source].lines;
  if (of.has(line)) return line;
  if (/^\s*(#|$)/.test(text[line - 1] ?? "")) return 0;
  const heads = (number) => text[number - 1].startsWith("[");
  for (let at = line + 1; at <= text.length && !heads(at); ++at) if (of.has(at)) return at;
  for (let at = line; at > 0; --at) {
    if (of.has(at)) return at;
    if (heads(at)) return 0;
  }
  return 0;
}
