// Adapts the widths of columns, in characters, to their contents.
const COLUMNS = ["No.", "Line", "Operation", "Sent", "Received", "Expected", "Result"];

function longest(texts) {
  let most = 0;
  for (const text of texts) most = Math.max(most, text.length);
  return most;
}

function cellTexts(row) {
  return [String(row.number), row.line === 0 ? "" : String(row.line), row.name, row.sent,
    row.received, row.expected, VERDICTS[row.verdict]];
}

// Returns the width that each column of the operations needs, or 0 for an empty column.
function columnNeeds() {
  const needs = COLUMNS.map(() => 0);
  for (const row of rows) {
    cellTexts(row).forEach((text, column) => {
      needs[column] = Math.max(needs[column], text.length);
    });
  }
  return needs.map((need, column) => need === 0 ? 0 : Math.max(need, COLUMNS[column].length));
}

// The minimum widths of columns that can shrink. Other columns always show their whole texts.
const LEAST = {Operation: 10, Sent: 10, Received: 22, Expected: 24};

function fitRows(style, needs) {
  const least = needs.map((need, column) => Math.min(need, LEAST[COLUMNS[column]] ?? need));
  const tracks = needs.map((need, column) => `minmax(${least[column]}ch, ${need}ch)`);
  const width = (widths) => `${widths.reduce((sum, one) => sum + one + (one > 0 ? 1.5 : 0), 0)}ch`;
  style.setProperty("--columns", tracks.filter((_, column) => needs[column] > 0).join(" "));
  style.setProperty("--short-columns", `${needs[0]}ch ${needs[1] > 0 ? `${needs[1]}ch ` : ""}`
    + `minmax(0, 1fr) ${needs[6]}ch`);
  style.setProperty("--table", width(needs));
  style.setProperty("--least", width(least));
  style.setProperty("--note", `${needs[0] + 1.5 + (needs[1] > 0 ? needs[1] + 1.5 : 0)}ch`);
  needs.forEach((need, column) => {
    document.getElementById("table").classList.toggle(`without-${column + 1}`, need === 0);
  });
}

function verdictTexts() {
  return lineRows.flatMap((lines) => [...lines.values()].map(verdictText));
}

function fitLines(style) {
  const numbers = data.sources.map((source) => String(source.lines.length));
  const digits = Math.max(2, longest(numbers));
  const verdict = longest(verdictTexts());
  const text = longest(data.sources.flatMap((source) => source.lines));
  style.setProperty("--digits", `${digits}ch`);
  style.setProperty("--verdict", `${verdict}ch`);
  style.setProperty("--source", `${digits + verdict + text + 5}ch`);
}

function fitColumns() {
  const {style} = document.querySelector("main");
  fitRows(style, columnNeeds());
  fitLines(style);
}
