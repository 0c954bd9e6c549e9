// Makes the items of the two lists, and the elements that show the items.
const narrow = matchMedia("screen and (max-width: 900px)");
let messages = null;  // page.js sets this variable

function make(name, style, text) {
  const element = document.createElement(name);
  if (style) element.className = style;
  if (text !== undefined) element.textContent = visible(String(text));
  return element;
}

function cells(element, values) {
  for (const [style, text] of values) {
    const cell = element.appendChild(make("span", style, text));
    cell.setAttribute("role", "gridcell");
  }
  return element;
}

function textLine(style, text) {
  return cells(make("div", style), [["", text]]);
}

// Lets a narrow cell cut off the left ends of long numbers.
function foldNumbers(cell) {
  const parts = cell.textContent.split(/(?<=0x)([0-9a-f]{8,})/);
  if (parts.length === 1) return;
  cell.replaceChildren(...parts.map((text, at) => {
    const part = make("span", at % 2 === 1 ? "tail" : "");
    part.append(at % 2 === 1 ? make("bdi", "", text) : text);
    return part;
  }));
}

// Returns the address of a line within the page.
function lineHash(source, line) {
  return source === 0 ? `#line-${line}` : `#${source + 1}-line-${line}`;
}

// Returns the text of an error without the place at its beginning.
function errorText(entry) {
  const name = data.sources[entry.source]?.name.replace(/, round \d+$/, "");
  const place = `${name}:${entry.line}:`;
  if (!entry.text.startsWith(place)) return entry.text;
  return entry.text.slice(place.length).replace(/^\d+:/, "").trim();
}

// Returns, for each line of a source, the texts of its errors and how often each occurs.
function errorsByLine(source) {
  const lines = new Map();
  for (const entry of entries) {
    if (entry.kind !== "error" || entry.source !== source || entry.line === 0) continue;
    if (!lines.has(entry.line)) lines.set(entry.line, new Map());
    const counts = lines.get(entry.line);
    const text = errorText(entry);
    counts.set(text, (counts.get(text) ?? 0) + 1);
  }
  return lines;
}

function times(count) {
  return count > 1 ? ` \u00d7${count}` : "";
}

const MOST_TEXTS_OF_A_LINE = 3;

function remarksByLine(source) {
  const remarks = new Map();
  const add = (line, remark) => {
    if (!remarks.has(line)) remarks.set(line, []);
    remarks.get(line).push(remark);
  };
  for (const [line, column, error, text] of data.sources[source].marks) {
    add(line, {error, text: `${column}: ${error ? "error" : "warning"}: ${text}`});
  }
  for (const [line, counts] of errorsByLine(source)) {
    for (const [text, count] of [...counts].slice(0, MOST_TEXTS_OF_A_LINE)) {
      add(line, {error: true, text: text + times(count)});
    }
    const more = counts.size - MOST_TEXTS_OF_A_LINE;
    if (more > 0) add(line, {error: true, text: `and ${more} more in the list of operations`});
  }
  return remarks;
}

const lineRemarks = data.sources.map((_, source) => remarksByLine(source));

// `pieces` splits a text that is too long for one line.
function sourceItems(pieces) {
  const items = [];
  data.sources.forEach((source, at) => {
    if (data.sources.length > 1) items.push({kind: "title", text: source.name});
    const remarks = lineRemarks[at];
    const end = [...remarks.keys()].reduce((a, b) => Math.max(a, b), source.lines.length);
    for (let line = 1; line <= end; ++line) {
      const text = source.lines[line - 1];
      if (text === undefined && !remarks.has(line)) continue;
      const [first, ...others] = pieces(text ?? "");
      const place = {key: `${at}:${line}`, source: at, line};
      items.push({kind: "line", leads: true, ...place, text: first});
      for (const text of others) items.push({kind: "piece", ...place, text});
      for (const {error, text} of remarks.get(line) ?? []) {
        for (const piece of pieces(text)) {
          items.push({kind: "mark", source: at, line, error, text: piece});
        }
      }
    }
    const missing = source.total_lines - source.lines.length;
    if (missing > 0) items.push({kind: "title", text: `${missing} more lines are not shown`});
  });
  return items;
}

function worstOf(rows) {
  return rows.reduce((most, row) => Math.max(most, row.verdict), -1);
}

// Returns the worst result of a line's rows, and how many rows have it.
function verdictText(of) {
  const worst = worstOf(of);
  const count = of.filter((row) => row.verdict === worst).length;
  const more = count > 1 && rows.length < data.total_rows ? "+" : "";
  return `${VERDICTS[worst] ?? ""}${times(count)}${more}`;
}

function renderLine({source, line, text}) {
  const of = lineRows[source].get(line) ?? [];
  const element = cells(make("div", "line"),
    [["", ""], [VERDICT_STYLES[worstOf(of)] ?? "", verdictText(of)], ["text", text]]);
  const link = element.firstChild.appendChild(make("a", "", line));
  link.href = lineHash(source, line);
  link.tabIndex = -1;
  return element;
}

function renderSourceItem(item) {
  if (item.kind === "line") return renderLine(item);
  if (item.kind === "piece") {
    return cells(make("div", "line"), [["", ""], ["", ""], ["text", item.text]]);
  }
  if (item.kind === "title") return textLine("title", item.text);
  return textLine(item.error ? "mark error" : "mark warning", item.text);
}

function rowValues(row) {
  return [["sent", row.sent], ["received", row.received], ["expected", row.expected]]
    .filter(([, text]) => text !== "");
}

// Returns the parts of a row's texts that its registers do not show.
function rowRests(row) {
  return rowValues(row).map(([name, text]) => [name, withoutValues(text)])
    .filter(([, text]) => text !== "");
}

function rowItems() {
  const items = [];
  for (const entry of entries) {
    if (entry.kind === "source") {
      if (data.sources.length > 1) {
        items.push({kind: "title", text: data.sources[entry.source].name});
      }
    } else if (entry.kind === "row") {
      items.push({kind: "row", row: entry.row, key: entry.row.index, leads: true});
      if (!narrow.matches) continue;
      for (const [name, text] of rowValues(entry.row)) {
        items.push({kind: "value", row: entry.row, key: entry.row.index, text: `${name} ${text}`});
      }
    } else if (!messages.hides(entry)) {
      items.push({...entry, text: entry.kind === "error" ? errorText(entry) : entry.text});
    }
  }
  return items;
}

function renderRow(row) {
  const values = [["", row.sent], ["", row.received], ["", row.expected]];
  const element = cells(make("div", "row"), [
    ["", row.number],
    ["", row.line === 0 ? "" : row.line],
    ["", row.name],
    ...(narrow.matches ? [] : values),
    [VERDICT_STYLES[row.verdict], VERDICTS[row.verdict]],
  ]);
  if (!narrow.matches) [3, 4, 5].forEach((at) => foldNumbers(element.children[at]));
  element.setAttribute("aria-level", 1);
  if (row.messages > 0) {
    element.setAttribute("aria-expanded", messages.isOpen(row));
    element.firstChild.prepend(make("span", "toggle"));
  }
  return element;
}

// Returns the text of a message, or of an error with its line.
function noteText(item) {
  return item.kind === "error" && item.line > 0 ? `line ${item.line}: ${item.text}` : item.text;
}

function renderRowItem(item) {
  if (item.kind === "row") return renderRow(item.row);
  if (item.kind === "title") return textLine("title", item.text);
  if (item.kind === "value") {
    const element = textLine("value", item.text);
    foldNumbers(element.firstChild);
    return element;
  }
  return textLine(item.kind === "error" ? "note error" : "note", noteText(item));
}

function lineDetails({source, line}) {
  const text = data.sources[source].lines[line - 1];
  const remarks = lineRemarks[source].get(line) ?? [];
  return [...(text === undefined ? [] : [[`line ${line}`, text]]),
    ...remarks.map((remark) => ["", remark.text])];
}

function rowDetails(row) {
  const left = row.end > steps.length ? ", not in the waveform" : "";
  const taken = row.end > row.begin ? `${row.begin} to ${row.end} us${left}`
    : `none, at ${row.begin} us${left}`;
  return [[`No. ${row.number}`, `${row.name}: ${VERDICTS[row.verdict]}`], ...rowRests(row),
    // Errors are left out if the registers below show the wrong bits.
    ...(row.wrong === "" ? row.errors.map((error) => ["error", errorText(error)]) : []),
    ...(steps.length > 0 ? [["steps", taken]] : [])];
}

// Shows the complete texts of a line and a row, which the lists may cut off. Both may be null.
function showDetail(line, row) {
  const detail = document.getElementById("detail");
  detail.replaceChildren();
  const values = [...(line === null ? [] : lineDetails(line)),
    ...(row === null ? [] : rowDetails(row))];
  for (const [name, text] of values) {
    const pair = detail.appendChild(make("div"));
    pair.append(make("dt", "", name), make("dd", "", text));
  }
  if (row !== null) showRegisters(detail, row);
}
