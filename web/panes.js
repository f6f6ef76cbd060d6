// Editors for a build without the bundle: plain text areas with the same face as those of editor.js.
'use strict';

function plainEditor(parent, { label, text, onChange, onCaret }) {
  const area = document.createElement('textarea');
  area.className = 'plain';
  area.setAttribute('aria-label', label);
  area.spellcheck = false;
  area.wrap = 'off';
  area.value = text;
  // A text area has no margin, so what is found in the text stands beside it.
  const beside = document.createElement('ul');
  beside.className = 'beside places';
  beside.setAttribute('aria-label', `Findings in ${label}`);
  beside.hidden = true;
  parent.append(area, beside);
  let found = [];
  area.addEventListener('input', onChange);
  area.addEventListener('keydown', (event) => {
    if (event.key !== 'F8' || found.length === 0) return;
    event.preventDefault();
    const line = editor.caretLine();
    const next = found.find((each) => each.line > line) || found[0];
    editor.goTo(next.line, next.column);
  });
  for (const event of ['keyup', 'click', 'focus']) area.addEventListener(event, onCaret);
  const start = (line) => {
    let at = 0;
    for (let i = 1; i < line; i += 1) {
      const end = area.value.indexOf('\n', at);
      if (end < 0) break;
      at = end + 1;
    }
    return at;
  };
  function findingItem(each) {
    const item = document.createElement('li');
    item.className = each.level;
    const place = document.createElement(each.line ? 'button' : 'span');
    place.className = 'place';
    place.textContent = each.line ? `line ${each.line}` : 'the file';
    if (each.line) {
      place.type = 'button';
      place.onclick = () => {
        editor.goTo(each.line, each.column);
        area.focus();
      };
    }
    const level = document.createElement('span');
    level.className = 'level';
    level.textContent = each.level;
    const text = document.createElement('span');
    text.textContent = each.fix ? `${each.text} – ${each.fix}` : each.text;
    item.append(place, level, text);
    return item;
  }
  const editor = {
    getText: () => area.value,
    setText(now) {
      const at = area.selectionStart;
      area.value = now;
      area.setSelectionRange(at, at);
      onChange();
    },
    focus: () => area.focus(),
    caretLine: () => area.value.slice(0, area.selectionStart).split('\n').length,
    goTo(line, column) {
      const at = start(line) + Math.max(0, (column || 1) - 1);
      area.setSelectionRange(at, at);
      const height = parseFloat(getComputedStyle(area).lineHeight) || 18;
      area.scrollTop = Math.max(0, (line - 1) * height - area.clientHeight / 2);
      onCaret();
    },
    setFindings(findings) {
      const mostShown = 200;
      beside.hidden = findings.length === 0;
      beside.replaceChildren(...findings.slice(0, mostShown).map(findingItem));
      found = findings.filter((each) => each.line > 0).sort((a, b) => a.line - b.line);
    },
    setCounts() {},
    setReadOnly(isIt) { area.readOnly = isIt; },
    layout() {},
  };
  return editor;
}
