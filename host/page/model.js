// Reads the recorded data from the page. Texts in the data may contain any characters. An entry of
// data.log has one of these types:
//   a number   the next source begins
//   an array   an operation: [number, line, begin step, end step, name, sent, received, expected,
//              wrong, verdict]; the verdict is an index into VERDICTS
//   a string   a message of the previous operation, or a part of a message
//   an object  an error: {line, text}; the line is 0 if the error has no line
const data = JSON.parse(document.getElementById("data").textContent);

const VERDICTS = ["ok", "met", "NOT MET", "FAILED"];
const VERDICT_STYLES = ["done", "met", "bad", "bad"];
const NOT_MET = 2;
const UNKNOWN_TAP = 16;

// Replaces characters that are invisible or change the direction of the text with their codes.
function visible(text) {
  return text.replace(/[\0-\x08\x0a-\x1f\x7f-\x9f\u200b-\u200f\u2028-\u202e\u2060-\u2069\ufeff]/g,
    (ch) => "\\u" + ch.charCodeAt(0).toString(16).padStart(4, "0"));
}

// Each step has two bytes, low byte first. The TAP state is in the bits above the pin levels.
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

// Returns {begin, end, tap} for each series of steps with the same TAP state.
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

// Returns the log as {rows, entries}. Each line of a message becomes an entry of its own.
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
    // A served target has no sources, and its messages belong to no operation.
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

// Returns, for each source, a map from lines to their rows.
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
const badRows = rows.filter((row) => row.verdict >= NOT_MET);
// The rows that the waveform shows, in order of their steps.
const drawnRows = rows.filter((row) => row.end > row.begin && row.begin < steps.length);

// Returns the row in progress at a step, or null.
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

// Returns the line whose rows are shown for `line`, or 0. Looks for rows at `line`, then in the
// later lines of its section, and then backwards in the earlier lines of the section.
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
