// The header: the title, the result, a summary in one line, and notes.

function counted(count, what) {
  return `${count} ${what}${count === 1 ? "" : "s"}`;
}

// Returns how many values of a row were not as expected. Each of them has its own error.
function faultsOf(row) {
  return Math.max(1, row.errors.length);
}

// Returns the line of the expectation that failed first, or else the line of the row.
function faultLine(row) {
  return row.errors[0]?.line ?? row.line;
}

function summaryTexts() {
  const {planned} = data.head;
  const total = data.total_rows;
  const ended = planned > total && planned < Number.MAX_SAFE_INTEGER;
  const texts = [(ended ? `${total} of ` : "") + counted(ended ? planned : total, "operation")];
  const unmet = badRows.filter((row) => row.verdict === NOT_MET);
  const values = unmet.reduce((sum, row) => sum + faultsOf(row), 0);
  const met = rows.filter((row) => VERDICTS[row.verdict] === "met").length;
  const more = data.cut_faults ? " or more" : "";
  if (values > 0) texts.push(`${values}${more} ${values === 1 ? "value" : "values"} not as expected`);
  else if (met > 0) texts.push(`${counted(met, "value")} as expected`);
  if (badRows.length > unmet.length) texts.push(`${badRows.length - unmet.length} failed`);
  return texts;
}

// Shows the summary with a link to the first failed row. A click calls `onFault` with this row.
function showSummary(onFault) {
  const summary = document.getElementById("summary");
  summary.append(summaryTexts().join(", "));
  if (badRows.length === 0 || badRows[0].line === 0) return;
  const [first] = badRows;
  const line = faultLine(first);
  const link = make("a", "", `line ${line}`);
  link.href = lineHash(first.source, line);
  link.onclick = (event) => {
    event.preventDefault();
    onFault(first);
  };
  const of = data.sources.length > 1 ? ` of ${data.sources[first.source].name}` : "";
  summary.append(", ", link, visible(of));
}

function showHead() {
  const {head} = data;
  document.title = `${head.result}: ${visible(head.title)}`;
  document.getElementById("title").textContent = visible(head.title);
  const result = document.getElementById("result");
  result.textContent = head.result;
  result.classList.toggle("good", head.good);
  for (const [name, text] of head.entries) {
    const pair = document.getElementById("entries").appendChild(make("div"));
    pair.append(make("dt", "", name), make("dd", "", text));
  }
  const entry = Object.fromEntries(head.entries);
  document.querySelector("#about summary").textContent =
    visible([entry.Probe, entry.Started].filter(Boolean).join(" \u00b7 "));
}

function showNotes() {
  const notes = document.getElementById("notes");
  const note = (style, text) => notes.append(make("li", style, text));
  // Returns whether the summary already contains this failure.
  const said = (text) => badRows.length > 0 && / failed(: .*not as expected.*)?$/.test(text);
  const plain = entries.filter((entry) => entry.kind === "error" && entry.line === 0
    && !said(entry.text));
  for (const entry of plain) note("error", entry.text);
  for (const source of data.sources) {
    const left = source.total_marks - source.marks.length;
    if (left > 0) note("warning", `${source.name}: ${left} more problems are not shown`);
  }
  if (rows.length < data.total_rows || data.cut_messages) {
    const late = data.late_faults > 0 ? ", and later failures" : "";
    note("warning",
      `The page shows the first ${data.first_rows} of ${data.total_rows} operations${late}`);
  }
  if (data.cut_faults) note("warning", "Some later failures are not shown");
  if (steps.length < data.total_steps) {
    note("warning",
      `The waveform shows the first ${steps.length} of ${data.total_steps} steps`);
  }
  if (data.total_steps === 0) {
    note("", "No waveform: the probe gives no access to pins, or no pin was driven");
  }
}
