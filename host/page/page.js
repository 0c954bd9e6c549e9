// Connects the parts of the page: an item selected in one part is also shown in the others.
const sourceList = new List(document.getElementById("source-list"), renderSourceItem);
const rowList = new List(document.getElementById("row-list"), renderRowItem);
let wave = null;
let wrapping = null;
let pickedLine = null;  // {source, line}
let pickedRow = null;

// Selects a row and a line in all parts of the page. The line may differ from the row's own line.
function pick(row, line, from) {
  pickedRow = row;
  pickedLine = line;
  showDetail(line, row);  // must be first, because it makes the list of rows smaller
  sourceList.pick(line === null ? null : `${line.source}:${line.line}`);
  rowList.pick(row === null ? null : row.index);
  if (wave !== null && from === "wave") wave.row = row;
  else if (wave !== null) wave.showRow(row);
  showFailureCount();
  const said = from === "address" || from === "start";
  if (line !== null && !said) setAddress(lineHash(line.source, line.line));
}

function pickRow(row, from) {
  pick(row, row.line === 0 ? null : {source: row.source, line: row.line}, from);
}

// Selects the first row of a line, or the next row of the line if the line is selected again.
function pickLine(source, line, from) {
  const of = lineRows[source].get(lineInCharge(source, line)) ?? [];
  const again = pickedLine?.source === source && pickedLine.line === line;
  const next = again && from === "source" ? (of.indexOf(pickedRow) + 1) % (of.length || 1) : 0;
  pick(of[next] ?? null, {source, line}, from);
}

function setAddress(hash) {
  try {
    history.replaceState(null, "", hash);
  } catch {
    // A page inside another page has no address of its own.
  }
}

function openAddress() {
  const parts = /^#(?:(\d+)-)?line-(\d+)$/.exec(location.hash);
  const source = parts === null ? -1 : Number(parts[1] ?? 1) - 1;
  if (data.sources[source] === undefined) return false;
  pickLine(source, Number(parts[2]), "address");
  return true;
}

function listenTo(list, onPick) {
  list.element.addEventListener("click", (event) => {
    const item = list.itemOf(event.target);
    if (item === undefined || String(getSelection()) !== "") return;
    event.preventDefault();
    onPick(item, true);
  });
  list.element.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const item = list.neighbour(event.key);
    if (item === null) return;
    event.preventDefault();
    onPick(item, false);
  });
}

function showReadout() {
  const at = wave.hover ?? wave.cursor;
  const last = Math.min(steps.length, wave.from + wave.room() / wave.scale);
  document.getElementById("view").textContent =
    `${Math.floor(wave.from)} to ${Math.ceil(last)} of ${steps.length} us`;
  const readout = document.getElementById("readout");
  if (at === null) return readout.replaceChildren();
  const away = wave.cursor === null || wave.cursor === at ? ""
    : ` (${at - wave.cursor} from the cursor)`;
  const levels = data.pins.map((name, pin) => `, ${name} ${steps[at] >> pin & 1}`).join("");
  readout.textContent = `${at} us${away}: ${tapName(tapOf(steps[at]))}${narrow.matches ? "" : levels}`;
}

function startWave() {
  document.getElementById("wave").hidden = steps.length === 0;
  if (steps.length === 0) return;
  const onPick = (step) => {
    const row = rowAtStep(step);
    if (row !== null) pickRow(row, "wave");
  };
  wave = new Wave(document.getElementById("canvas"), onPick, showReadout);
  document.getElementById("zoom-in").onclick = () => wave.zoomAtCursor(1.5);
  document.getElementById("zoom-out").onclick = () => wave.zoomAtCursor(1 / 1.5);
  document.getElementById("zoom-all").onclick = () => wave.show(0, 0);
  document.getElementById("zoom-row").onclick = () => wave.zoomToRow(pickedRow);
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => wave.readColours());
}

function setSourceItems() {
  sourceList.setItems(sourceItems((text) => wrapping.pieces(text)));
  findMatches();
}

function startLists() {
  const button = (id) => document.getElementById(id);
  wrapping = new Wrapping(button("wrap"), sourceList, setSourceItems);
  messages = new Messages(button("messages"), rowList, showOperations);
  fitColumns();
  setSourceItems();
  showOperations();
  narrow.addEventListener("change", showOperations);
  listenTo(sourceList, (item, clicked) => {
    if (item.line !== undefined) pickLine(item.source, item.line, clicked ? "source" : "keys");
  });
  listenTo(rowList, (item) => {
    if (item.row) pickRow(item.row, "rows");
  });
}

function start() {
  showHead();
  showSummary((row) => {
    showArea("table");
    pickRow(row, "summary");
  });
  showNotes();
  const bare = data.sources.length === 0;
  document.querySelector("main").classList.toggle("bare", bare);
  for (const id of ["source", "divider", "source-tab"]) document.getElementById(id).hidden = bare;
  new Divider(document.getElementById("divider"), document.getElementById("source"));
  startLists();
  startTools();
  startWave();
  startTabs();
  addEventListener("hashchange", openAddress);
  // Readers look for failures first.
  if (!openAddress() && badRows.length > 0) pickRow(badRows[0], "start");
}

start();
