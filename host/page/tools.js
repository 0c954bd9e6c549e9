// The tools above the lists: the search, and the buttons for failures.
const tool = (id) => document.getElementById(id);
let search = null;

// Returns the errors, the items of failed operations, and the titles above them.
function failedItems(items) {
  const kept = items.filter((item) => item.kind === "title" || item.kind === "error" ||
    item.row?.verdict >= NOT_MET);
  return kept.filter((item, at) => item.kind !== "title" || (kept[at + 1] ?? item).kind !== "title");
}

function showOperations() {
  search?.look(tool("search").value);
  const items = rowItems();
  rowList.setItems(tool("failed-only").checked ? failedItems(items) : items);
  if (pickedRow !== null) rowList.pick(pickedRow.index);
  findMatches();
}

function showMatch(list, index) {
  const item = list.items[index];
  if (item.row) pickRow(item.row, "search");
  else if (item.line > 0) pickLine(item.source, item.line, "search");
  bringIntoSight(list, index);
}

function bringIntoSight(list, index) {
  showArea(list === rowList ? "table" : "source");
  list.reveal(index);
}

function showMatchCount() {
  const {matches, current} = search;
  const place = current < 0 ? "" : `${current + 1} of `;
  tool("matches").textContent = search.pattern === null ? ""
    : matches.length === 0 ? "no matches"
    : `${place}${matches.length} ${matches.length === 1 ? "match" : "matches"}`;
  for (const id of ["match-previous", "match-next"]) tool(id).disabled = matches.length === 0;
}

function findMatches() {
  if (search === null) return;
  search.find();
  showMatchCount();
}

function stepMatch(way) {
  search.step(way);
  showMatchCount();
}

function focusSearch() {
  tool("search").focus();
  tool("search").select();
}

function clearSearch() {
  if (tool("search").value === "") return tool("search").blur();
  tool("search").value = "";
  showOperations();
}

// Shows the next or previous failure. The last failure is followed by the first.
function stepFailure(way) {
  const at = pickedRow === null ? -1 : pickedRow.index;
  const next = way > 0 ? badRows.find((row) => row.index > at)
    : badRows.findLast((row) => row.index < at);
  const row = next ?? badRows.at(way > 0 ? 0 : -1);
  if (row === undefined) return;
  pickRow(row, "failures");
  bringIntoSight(rowList, rowList.items.findIndex((item) => item.key === row.index));
}

function showFailureCount() {
  const at = badRows.indexOf(pickedRow);
  const count = badRows.length;
  const all = `${count === 0 ? "no" : count} ${count === 1 ? "failure" : "failures"}`;
  tool("failures").textContent = at < 0 ? all : `${at + 1} of ${all}`;
}

function onToolKey(event) {
  if (event.ctrlKey || event.altKey || event.metaKey) return;
  const field = tool("search");
  const keys = event.target === field
    ? {Enter: () => stepMatch(event.shiftKey ? -1 : 1), Escape: clearSearch}
    : {"/": focusSearch, Escape: clearSearch, n: () => stepFailure(1),
      p: () => stepFailure(-1)};
  if (!(event.key in keys)) return;
  event.preventDefault();
  keys[event.key]();
}

function startTools() {
  search = new Search([sourceList, rowList], showMatch);
  const click = (id, onClick) => { tool(id).onclick = onClick; };
  tool("search").oninput = () => { showOperations(); stepMatch(1); };
  click("match-previous", () => stepMatch(-1));
  click("match-next", () => stepMatch(1));
  tool("failed-only").onchange = showOperations;
  click("failure-previous", () => stepFailure(-1));
  click("failure-next", () => stepFailure(1));
  for (const id of ["failed-only", "failure-previous", "failure-next"]) {
    tool(id).disabled = badRows.length === 0;
  }
  document.addEventListener("keydown", onToolKey);
  showMatchCount();
  showFailureCount();
}
