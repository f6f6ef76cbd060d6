// Editors for a build without the bundle: plain text areas with the same face as those of editor.js.
'use strict';

function plainEditor(parent, { label, text, onChange, onCaret }) {
  const area = document.createElement('textarea');
  area.className = 'plain';
  area.setAttribute('aria-label', label);
  area.spellcheck = false;
  area.wrap = 'off';
  area.value = text;
  parent.append(area);
  area.addEventListener('input', onChange);
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
  return {
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
    setFindings() {},
    setCounts() {},
    setReadOnly(isIt) { area.readOnly = isIt; },
    layout() {},
  };
}
