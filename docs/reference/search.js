// Searches the names of the reference as the user types. build.py writes the data, search-index.js:
// [name, place, kind, where it belongs]. A "term" is another word for the name; it is in the last field.
"use strict";

const field = document.getElementById("search");
const results = document.getElementById("results");
const kLimit = 30;
// What is found first: classes, then functions of a topic, then members of classes.
const kCosts = {topic: 0, class: 0.1, struct: 0.1, concept: 0.1, page: 0.3, term: 0.3, header: 0.9};
const kMemberCost = 1.6;
const kUnmatched = 100;

// How badly a word matches a name: 0 for the whole name. Words start at a capital letter or after
// another sign; a prefix such as TQ does not count, so "rect" is the start of TQRect.
function distance(word, name) {
  const lower = name.toLowerCase();
  const stem = lower.replace(/^(tq|lr|cg)(?=\w)/, "");
  if (lower === word || stem === word) return 0;
  if (lower.startsWith(word) || stem.startsWith(word)) return 1;
  let best = kUnmatched;
  for (let at = lower.indexOf(word); at >= 0; at = lower.indexOf(word, at + 1)) {
    const isStart = /[A-Z]/.test(name[at]) || !/[a-z]/i.test(name[at - 1]);
    best = Math.min(best, isStart ? 1.4 : 3);
  }
  return best;
}

// The sum over all words. A word matches the name, or less well the place that it belongs to.
function cost(words, [name, place, kind, where]) {
  let sum = kCosts[kind] ?? (place.startsWith("group") ? 0.6 : kMemberCost);
  sum += (kind === "term" ? where : name).length / 1000;
  for (const word of words) {
    sum += kind === "term" ? distance(word, where)
                           : Math.min(distance(word, name), distance(word, where) + 4);
  }
  return sum;
}

// The entries that match all words; at least one of them if `isTolerant`.
function matches(words, isTolerant) {
  const bound = kUnmatched * (isTolerant ? words.length : 1);
  const seen = new Set();
  return searchIndex
    .map(entry => [cost(words, entry), entry])
    .filter(([sum]) => sum < bound)
    .sort((a, b) => a[0] - b[0])
    .map(([, entry]) => entry)
    .filter(([, place]) => !seen.has(place) && seen.add(place))
    .slice(0, kLimit);
}

function search() {
  const words = field.value.toLowerCase().split(/[\s():]+/).filter(Boolean);
  let found = words.length > 0 ? matches(words, false) : [];
  if (found.length === 0) {  // "rectInset": what has "rect", what has "inset"
    const parts = field.value.split(/[^A-Za-z]+|(?=[A-Z][a-z])/).filter(part => part?.length > 2);
    found = matches(parts.map(part => part.toLowerCase()), true);
  }
  results.replaceChildren(...found.map(([name, place, kind, where]) => {
    const link = document.createElement("a");
    link.href = place;
    const title = document.createElement("b");
    title.textContent = name;
    const note = document.createElement("span");
    note.textContent = kind === "term" ? `for “${where}”` : where ? `${kind} in ${where}` : kind;
    link.append(title, note);
    const item = document.createElement("li");
    item.append(link);
    return item;
  }));
  if (found.length === 0) results.textContent = "No such name. Try a part of it, or another word.";
  results.hidden = words.length === 0;
}

// The data are loaded at the first use.
function start() {
  if (document.getElementById("searchIndex")) return;
  const script = document.createElement("script");
  script.id = "searchIndex";
  script.src = "search-index.js";
  script.onload = () => {
    field.addEventListener("input", search);
    search();
  };
  document.head.append(script);
}

field.addEventListener("focus", start);
document.addEventListener("keydown", event => {
  const links = [...results.querySelectorAll("a")];
  const at = links.indexOf(document.activeElement);
  if (event.key === "/" && document.activeElement !== field) {
    field.focus();
  } else if (event.key === "Escape") {
    field.value = "";
    results.hidden = true;
  } else if (event.key === "Enter" && document.activeElement === field && links.length > 0) {
    links[0].click();
  } else if (!results.hidden && event.key === "ArrowDown" && at + 1 < links.length) {
    links[at + 1].focus();
  } else if (!results.hidden && event.key === "ArrowUp" && at >= 0) {
    (links[at - 1] ?? field).focus();
  } else {
    return;
  }
  event.preventDefault();
});
document.addEventListener("click", event => {
  if (!event.target.closest(".search")) results.hidden = true;
});
// A search can be linked: index.html?q=lock.
const query = new URLSearchParams(location.search).get("q");
if (query) {
  field.value = query;
  start();
}
