// Shows one area. Wide screens always show all areas.
function showArea(name) {
  document.body.dataset.shows = name;
  for (const button of document.querySelectorAll("#tabs button")) {
    button.setAttribute("aria-pressed", button.dataset.shows === name);
  }
  sourceList.revealPicked();
  rowList.revealPicked();
}

function startTabs() {
  for (const button of document.querySelectorAll("#tabs button")) {
    button.onclick = () => showArea(button.dataset.shows);
  }
  showArea("table");
}
