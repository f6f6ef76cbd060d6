// Search over the index that lies beside it as a script, since a page that is read from the disk may load no other kind
// of file. A section is found when it has all words; those that have them in their title come first.
"use strict";

const words = document.getElementById("words");
const found = document.getElementById("found");
const here = new URL(".", new URL(document.currentScript.src)).href;  // .../js/
const kMost = 30;

function rank(section, wanted) {
  const title = section.title.toLowerCase();
  const text = section.text.toLowerCase();
  let points = 0;
  for (const word of wanted) {
    if (title.includes(word)) points += title.startsWith(word) ? 20 : 10;
    else if (!text.includes(word)) return 0;
    points += Math.min(text.split(word).length - 1, 5);
  }
  return points;
}

// The text around the first word, with the word marked.
function excerpt(text, word) {
  const at = Math.max(text.toLowerCase().indexOf(word), 0);
  const line = document.createElement("small");
  const mark = document.createElement("mark");
  mark.textContent = text.slice(at, at + word.length);
  line.append(text.slice(Math.max(at - 40, 0), at), mark, text.slice(at + word.length, at + 80));
  return line;
}

function show() {
  const wanted = words.value.toLowerCase().split(/\s+/).filter(Boolean);
  found.hidden = wanted.length === 0;
  found.replaceChildren();
  if (found.hidden) return;
  const hits = lexonIndex.map(section => ({section, points: rank(section, wanted)})).filter(hit => hit.points > 0);
  hits.sort((a, b) => b.points - a.points);
  for (const {section} of hits.slice(0, kMost)) {
    const item = document.createElement("li");
    const link = document.createElement("a");
    link.href = here + "../" + section.place;
    link.textContent = section.title + (section.page === section.title ? "" : " (" + section.page + ")");
    item.append(link, excerpt(section.text, wanted[0]));
    found.append(item);
  }
  if (hits.length === 0) found.append(Object.assign(document.createElement("li"), {textContent: "Nothing is found."}));
}

words.addEventListener("input", show);
document.getElementById("search").addEventListener("submit", event => {
  event.preventDefault();
  found.querySelector("a")?.click();
});
document.addEventListener("keydown", event => {
  if (event.key !== "/" || event.target === words) return;
  event.preventDefault();
  words.focus();
});
