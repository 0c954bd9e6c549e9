// The divider between the script and the operations. The pointer and keys move it.
class Divider {
  static STEP = 2;  // percent
  static LEAST = 10;
  static MOST = 90;

  constructor(element, left) {
    this.element = element;
    this.left = left;
    this.area = element.parentElement;
    element.setAttribute("aria-valuemin", Divider.LEAST);
    element.setAttribute("aria-valuemax", Divider.MOST);
    new ResizeObserver(() => this.tell()).observe(left);
    element.addEventListener("pointerdown", (event) => {
      if (event.button === 0) element.setPointerCapture(event.pointerId);
    });
    element.addEventListener("pointermove", (event) => {
      if (element.hasPointerCapture(event.pointerId)) this.moveTo(this.percent(event.clientX));
    });
    element.addEventListener("dblclick", () => this.reset());
    element.addEventListener("keydown", (event) => this.onKey(event));
  }

  percent(x) {
    const {left, width} = this.area.getBoundingClientRect();
    return 100 * (x - left) / width;
  }

  now() {
    return this.percent(this.left.getBoundingClientRect().right);
  }

  tell() {
    this.element.setAttribute("aria-valuenow", Math.round(this.now()));
  }

  moveTo(percent) {
    const kept = Math.min(Divider.MOST, Math.max(Divider.LEAST, percent));
    this.area.style.setProperty("--split", `${kept}%`);
    this.tell();
  }

  // Restores the default width, which fits the script.
  reset() {
    this.area.style.removeProperty("--split");
    this.tell();
  }

  onKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const keys = {
      ArrowLeft: () => this.moveTo(this.now() - Divider.STEP),
      ArrowRight: () => this.moveTo(this.now() + Divider.STEP),
      Home: () => this.moveTo(Divider.LEAST),
      End: () => this.moveTo(Divider.MOST),
      Enter: () => this.reset(),
    };
    if (!(event.key in keys)) return;
    keys[event.key]();
    event.preventDefault();
  }
}
