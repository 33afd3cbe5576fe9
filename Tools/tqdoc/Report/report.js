// The report of tqdoc diff --html: the three views of a pair of pictures, and the link between the
// list of changes and the marks in the pictures. Without this script, the page shows the pictures side
// by side, the marks and the list.
"use strict";

const blinkMilliseconds = 800;

/** Links the entries of the list with the marks in both pictures. */
function linkChanges(section) {
  const entries = [...section.querySelectorAll(".change")];
  const parts = new Map();  // by the number of the mark: its entries, outlines and tags
  for (const part of section.querySelectorAll("[data-mark]")) {
    parts.set(part.dataset.mark, [...(parts.get(part.dataset.mark) ?? []), part]);
  }
  let shown = null;
  let pinned = null;

  function show(mark) {
    if (mark === shown) return;
    for (const part of parts.get(shown) ?? []) part.classList.remove("on");
    for (const part of parts.get(mark) ?? []) part.classList.add("on");
    section.classList.toggle("showing", mark !== null);
    shown = mark;
  }

  function pin(mark) {
    pinned = mark;
    for (const entry of entries) entry.setAttribute("aria-pressed", String(entry.dataset.mark === mark));
    show(mark);
  }

  /** Makes an entry the one that the tab key reaches. */
  function choose(entry) {
    for (const each of entries) each.tabIndex = each === entry ? 0 : -1;
  }

  /** Scrolls the list, but not the page. */
  function reveal(entry) {
    const list = entry?.closest(".changes");
    if (!list || list.scrollHeight === list.clientHeight) return;
    const bottom = entry.offsetTop + entry.offsetHeight - list.clientHeight;
    list.scrollTop = Math.min(Math.max(list.scrollTop, bottom), entry.offsetTop);
  }

  const markAt = (event) => event.target.closest?.("[data-mark]") ?? null;
  section.addEventListener("pointerover", (event) => {
    const part = markAt(event);
    show(part ? part.dataset.mark : pinned);
    if (part?.classList.contains("mark")) {
      reveal(entries.find((each) => each.dataset.mark === part.dataset.mark));
    }
  });
  section.addEventListener("pointerleave", () => show(pinned));
  section.addEventListener("click", (event) => {
    const part = markAt(event);
    if (!part) return;
    pin(pinned === part.dataset.mark ? null : part.dataset.mark);
    if (part.classList.contains("mark")) entries.find((each) => each.dataset.mark === pinned)?.focus();
  });
  section.addEventListener("focusin", (event) => {
    if (!entries.includes(event.target)) return show(pinned);
    choose(event.target);
    show(event.target.dataset.mark);
  });
  section.addEventListener("keydown", (event) => {
    const at = entries.indexOf(event.target);
    if (event.key === "Escape") return pin(null);
    if (at < 0) return;
    const next = {ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: entries.length - 1}[event.key];
    if (next === undefined) return;
    event.preventDefault();
    entries[Math.min(Math.max(next, 0), entries.length - 1)].focus();
  });
  if (entries.length > 0) choose(entries[0]);
  for (const entry of entries) entry.setAttribute("aria-pressed", "false");
}

/** Makes the divider between both versions follow the slider and the pointer. */
function linkSlider(section) {
  const slider = section.querySelector(".split");
  const frame = section.querySelector(".new .frame");
  const divider = document.createElement("div");
  divider.className = "divider";
  frame.append(divider);
  const update = () => section.style.setProperty("--split", `${slider.value}%`);
  slider.addEventListener("input", update);
  divider.addEventListener("pointerdown", (event) => divider.setPointerCapture(event.pointerId));
  divider.addEventListener("pointermove", (event) => {
    if (!divider.hasPointerCapture(event.pointerId)) return;
    const area = frame.getBoundingClientRect();
    slider.value = String((100 * (event.clientX - area.left)) / area.width);
    update();
  });
  update();
}

/** Shows the versions in turns. Only on request if the reader prefers less motion. */
function linkBlinking(section) {
  const flip = section.querySelector(".flip");
  const auto = section.querySelector(".auto");
  const show = (version) => {
    section.dataset.shown = version;
    flip.textContent = version === "old" ? "Show new" : "Show old";
  };
  const turn = () => show(section.dataset.shown === "old" ? "new" : "old");
  let timer = null;
  const update = () => {
    clearInterval(timer);
    timer = section.dataset.view === "blink" && auto.checked ? setInterval(turn, blinkMilliseconds) : null;
  };
  auto.checked = !matchMedia("(prefers-reduced-motion: reduce)").matches;
  auto.addEventListener("change", update);
  flip.addEventListener("click", () => {
    auto.checked = false;
    update();
    turn();
  });
  show("old");
  return update;
}

function linkViews(section) {
  const updateBlinking = linkBlinking(section);
  for (const view of section.querySelectorAll(".views input")) {
    view.addEventListener("change", () => {
      section.dataset.view = view.value;
      updateBlinking();
    });
  }
  section.querySelector(".marks").addEventListener("change", (event) => {
    section.classList.toggle("unmarked", !event.target.checked);
  });
  section.querySelector(".controls").hidden = false;
}

for (const section of document.querySelectorAll("section[data-view]")) {
  linkChanges(section);
  linkSlider(section);
  linkViews(section);
}
document.querySelector(".keys").hidden = false;
