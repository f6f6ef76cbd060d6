// The page of `lexon-lab serve`. It holds what is typed; the program renders, checks and saves. What is not saved goes with
// every request, so that the program remembers nothing of a page.
'use strict';

const client = Array.from(crypto.getRandomValues(new Uint8Array(8)), (byte) => byte.toString(16).padStart(2, '0')).join('');
const $ = (id) => document.getElementById(id);
const files = new Map(); // path -> file
const panes = {};
let project = null;
let shown = null; // the sentence of the last result
let counted = []; // coverage, as [file, line, hits, taken back, tried, offered]
let sentences = []; // of the last run
let findings = [];

function make(tag, properties = {}, ...children) {
  const element = Object.assign(document.createElement(tag), properties);
  element.append(...children);
  return element;
}

function notice(text, isBad = false) {
  $('notice').textContent = text;
  $('notice').classList.toggle('bad', isBad);
}

// ---- Asking the program

// Requests can overtake each other, so that each has a number.
let turn = 0;
async function ask(name, asked, signal) {
  turn += 1;
  const request = { ...asked, client, turn };
  let answer;
  try {
    answer = await fetch(`api/${name}`, {
      method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(request), signal,
    });
  } catch (fault) {
    if (fault.name !== 'AbortError') $('gone').hidden = false;
    throw fault;
  }
  $('gone').hidden = true;
  const text = await answer.text();
  try {
    return { status: answer.status, ...JSON.parse(text) };
  } catch {
    return { status: answer.status, error: text };
  }
}

function unsaved() {
  const texts = {};
  for (const file of files.values()) if (isDirty(file)) texts[file.path] = textOf(file);
  return texts;
}

// Work of one kind: what is asked for last is wanted, what is under way is given up.
function lane(name, use) {
  let under = null;
  return async (more) => {
    under?.abort();
    const mine = new AbortController();
    under = mine;
    try {
      const answer = await ask(name, { texts: unsaved(), ...more }, mine.signal);
      if (under === mine && !answer.superseded) await use(answer);
      return under === mine ? answer : null;
    } catch (fault) {
      if (fault.name !== 'AbortError') console.error(fault);
      return null;
    }
  };
}

// Runs once the keys have rested.
function after(milliseconds, work) {
  let timer = 0;
  return () => {
    clearTimeout(timer);
    timer = setTimeout(work, milliseconds);
  };
}

// ---- Files

// Line ends of one kind come back as they were; of a mixture a page would make one kind.
function lineEndsOf(text) {
  const ends = text.match(/\r\n|\r|\n/g) || [];
  if (!text.includes('\r')) return '\n';
  return ends.every((end) => end === '\r\n') ? '\r\n' : null;
}

const inEditor = (text) => text.replace(/\r\n/g, '\n');
function textOf(file) {
  if (!file.editor || file.error || !file.lineEnd) return file.saved;
  const text = file.editor.getText();
  return file.lineEnd === '\n' ? text : text.replace(/\n/g, file.lineEnd);
}
const isDirty = (file) => Boolean(file.editor) && !file.error && textOf(file) !== file.saved;

async function open(path, pane, kind) {
  const file = { path, pane, kind, saved: '', stamp: '', lineEnd: '\n', conflict: null, error: '' };
  files.set(path, file);
  file.holder = make('div', { className: 'editor', hidden: true });
  file.bar = make('div', { className: 'banner', hidden: true });
  file.bar.setAttribute('role', 'alert');
  pane.body.append(file.bar, file.holder);
  const answer = await ask('read', { path });
  if (answer.error) {
    file.error = answer.error;
    file.holder.append(make('p', { className: 'refused', textContent: answer.error }));
    return;
  }
  file.saved = answer.text;
  file.stamp = answer.stamp;
  file.lineEnd = lineEndsOf(answer.text);
  const create = window.LexonEditor?.create || plainEditor;
  file.editor = create(file.holder, {
    label: path, kind, text: inEditor(answer.text), onChange: () => changed(file), onCaret: () => moved(file),
  });
  if (!file.lineEnd) {
    file.editor.setReadOnly(true);
    banner(file, `${path} mixes line ends of several kinds, which a page would change: it can be read here, not edited.`, []);
  }
}

function banner(file, text, buttons) {
  file.bar.replaceChildren(make('span', { textContent: text }));
  for (const [name, act] of buttons) file.bar.append(make('button', { type: 'button', textContent: name, onclick: act }));
  file.bar.hidden = !text || file.pane.shown !== file;
  file.bannerText = text;
}

function show(file) {
  const { pane } = file;
  pane.shown = file;
  for (const each of files.values()) {
    if (each.pane !== pane) continue;
    each.holder.hidden = each !== file;
    each.bar.hidden = each !== file || !each.bannerText;
  }
  pane.select.value = file.path;
  file.editor?.layout();
  mark(file);
}

function mark(file) {
  const dirty = isDirty(file);
  const option = [...file.pane.select.options].find((each) => each.value === file.path);
  if (option) option.textContent = (dirty ? '● ' : '') + file.path;
  if (file.pane.shown === file) file.pane.save.disabled = !dirty;
  $('save-all').disabled = ![...files.values()].some(isDirty);
}

function makePane(id, title, paths, kindOf) {
  const pane = { id, element: $(`pane-${id}`), shown: null };
  pane.select = make('select', { ariaLabel: `${title}: file` });
  for (const path of paths) pane.select.append(make('option', { value: path, textContent: path }));
  pane.select.onchange = () => {
    show(files.get(pane.select.value));
    if (id === 'graphs') render();
  };
  pane.save = make('button', { type: 'button', textContent: 'Save', disabled: true, onclick: () => save(pane.shown) });
  pane.body = make('div', { className: 'body' });
  pane.element.append(make('div', { className: 'head' }, make('h2', { textContent: title }), pane.select, pane.save), pane.body);
  panes[id] = pane;
  return Promise.all(paths.map((path, number) => open(path, pane, kindOf(path, number)))).then(() => {
    if (paths.length) show(files.get(paths[0]));
  });
}

// ---- Saving

async function save(file) {
  // Two at a time would take each other for a change from elsewhere.
  if (!file || file.isSaving || !isDirty(file)) return true;
  const text = textOf(file);
  file.isSaving = true;
  const answer = await ask('save', { path: file.path, text, stamp: file.stamp }).finally(() => { file.isSaving = false; });
  if (answer.status === 409) {
    file.conflict = answer.stamp;
    return conflict(file, answer.error);
  }
  if (answer.error) {
    notice(answer.error, true);
    return false;
  }
  file.saved = text;
  file.stamp = answer.stamp;
  file.conflict = null;
  banner(file, '', []);
  mark(file);
  notice(`${file.path} saved`);
  run();
  return true;
}

function conflict(file, text) {
  const isGone = file.conflict === '';
  const buttons = [[isGone ? 'Let the next save make it anew' : 'Keep mine: the next save overwrites it', () => {
    file.stamp = file.conflict;
    file.conflict = null;
    banner(file, '', []);
    notice(`${file.path}: yours is kept, and not saved yet`);
    file.editor.focus();
  }]];
  if (!isGone) buttons.unshift(['Take what is on the disk', () => reload(file)]);
  banner(file, `${text}. Nothing was overwritten.`, buttons);
  if (file.pane.shown !== file) show(file);
  notice(`${file.path} was not saved`, true);
  return false;
}

async function reload(file) {
  const answer = await ask('read', { path: file.path });
  if (answer.error) return notice(answer.error, true);
  file.saved = answer.text;
  file.stamp = answer.stamp;
  file.conflict = null;
  file.lineEnd = lineEndsOf(answer.text);
  file.editor.setReadOnly(!file.lineEnd);
  banner(file, '', []);
  file.editor.setText(inEditor(answer.text));
  mark(file);
  notice(`${file.path} has changed on the disk and was read again`);
  changed(file);
  return run();
}

async function watch() {
  if (document.hidden) return;
  const open = [...files.values()].filter((file) => file.editor && !file.isSaving).map((file) => [file, file.stamp]);
  const answer = await ask('stamps', { paths: open.map(([file]) => file.path) }).catch(() => null);
  for (const [file, before] of answer?.stamps ? open : []) {
    const now = answer.stamps[file.path];
    // What was saved or read meanwhile is newer than the answer.
    if (now === file.stamp || now === file.conflict || before !== file.stamp || file.isSaving) continue;
    if (!isDirty(file) && now !== '') {
      await reload(file);
    } else {
      file.conflict = now;
      conflict(file, now === '' ? `${file.path} is no longer there` : `${file.path} has changed on the disk since it was read here`);
    }
  }
}

// ---- The sentence under the keys

let typedAt = 0;

function changed(file) {
  typedAt = performance.now();
  mark(file);
  render();
  checkSoon();
}

function moved(file) {
  if (file.pane !== panes.graphs || file.kind !== 'graph') return;
  const line = file.editor.caretLine();
  if (shown && shown.file === file.path && line >= shown.first && line <= shown.last) return;
  render();
}

function graphFile() {
  const file = panes.graphs.shown;
  return file?.kind === 'graph' ? file : files.get(project.graphs[0]);
}

const renderLane = lane('render', (answer) => {
  if (answer.error) return showResult({ status: 'unusable', rules: [{ level: 'error', text: answer.error }] });
  shown = answer;
  showResult(answer);
  if (!$('steps').hidden) viewSoon();
  return null;
});

function render() {
  const file = graphFile();
  if (!file) return;
  renderLane({ graphs: file.path, line: file.editor ? file.editor.caretLine() : 1 });
}

function showResult(answer) {
  const words = { failed: 'no sentence', 'over time': 'took too long', 'over steps': 'took too many steps', stopped: 'stopped',
    unusable: 'the rules or words cannot be used', empty: 'there is no sentence here' };
  const isDone = answer.status === 'done';
  $('label').textContent = answer.label ? answer.label : answer.number ? `sentence ${answer.number}` : '';
  $('sentence').textContent = isDone ? answer.text || '(an empty sentence)' : words[answer.status] || answer.status;
  $('result').dataset.status = answer.status;
  const notes = [...(answer.rules || []).filter((note) => note.level === 'error'), ...(answer.notes || [])];
  $('notes').replaceChildren(...notes.slice(0, 50).map((note) => placeItem(note)));
  const figures = [];
  if (answer.seconds !== undefined) figures.push(`${Math.max(0.1, answer.seconds * 1000).toFixed(answer.seconds < 0.01 ? 1 : 0)} ms`);
  if (answer.steps !== undefined) figures.push(`${answer.steps} steps`);
  $('figures').textContent = figures.join(', ');
  const from = typedAt;
  // What a reader waits for, from the key to the picture.
  requestAnimationFrame(() => {
    $('result').dataset.waited = from ? Math.round(performance.now() - from) : '';
    $('result').dataset.turn = String(Number($('result').dataset.turn || 0) + 1);
  });
}

function placeText(note) {
  return note.file ? `${note.file}${note.line ? `:${note.line}` : ''}` : '';
}

function placeItem(note) {
  const item = make('li', { className: note.level });
  item.append(make('span', { className: 'level', textContent: note.level }));
  if (files.has(note.file) && note.line) {
    item.append(make('button', { type: 'button', className: 'place', textContent: placeText(note),
      onclick: () => goTo(note.file, note.line, note.column) }));
  } else if (note.file) {
    item.append(make('span', { className: 'place', textContent: placeText(note) }));
  }
  item.append(make('span', { textContent: note.text }));
  if (note.code) item.append(make('code', { textContent: note.code }));
  if (note.fix) item.append(make('span', { className: 'fix', textContent: note.fix }));
  return item;
}

function goTo(path, line, column) {
  const file = files.get(path);
  if (!file?.editor) return;
  show(file);
  file.editor.goTo(line, column);
  file.editor.focus();
}

function toNeighbour(step) {
  if (!shown) return;
  const file = files.get(shown.file);
  file.editor.goTo(step < 0 ? Math.max(1, shown.first - 1) : shown.last + 1);
  render();
}

// ---- Findings

const checkLane = lane('check', (answer) => {
  findings = answer.error ? [{ level: 'error', text: answer.error }] : answer.findings;
  showFindings();
});
// One at a time: a check cannot be given up half way.
let isChecking = false;
let checksAgain = false;
async function check() {
  checksAgain = isChecking;
  if (isChecking) return;
  isChecking = true;
  await checkLane({});
  isChecking = false;
  if (checksAgain) check();
}
const checkSoon = after(250, check);

function showFindings() {
  const mostShown = 500;
  for (const file of files.values()) {
    file.editor?.setFindings(findings.filter((each) => each.file === file.path).slice(0, 2000));
  }
  const bad = findings.filter((each) => each.level !== 'note').length;
  badge('findings', bad ? String(bad) : '', bad > 0);
  const list = make('ul', { className: 'places' });
  list.append(...findings.slice(0, mostShown).map(placeItem));
  $('findings').replaceChildren(findings.length ? list : make('p', { className: 'quiet', textContent: 'Nothing was found.' }));
  if (findings.length > mostShown)
    $('findings').append(make('p', { className: 'quiet', textContent: `and ${findings.length - mostShown} more` }));
}

// ---- All sentences, against what is expected

let running = 0;
async function run() {
  const mine = ++running;
  const before = new Map(sentences.map((each) => [`${each.file} ${each.number}`, each.good]));
  const now = [];
  const coverage = new Map();
  let from = 0;
  $('run-all').setAttribute('aria-busy', 'true');
  while (from !== null) {
    const answer = await ask('run', { texts: unsaved(), from }).catch(() => ({ error: 'no answer' }));
    if (mine !== running || answer.superseded) return;
    if (answer.error || answer.status === 'unusable') {
      $('run-all').removeAttribute('aria-busy');
      badge('gold', '', false);
      $('gold').replaceChildren(make('p', { className: 'refused', textContent: answer.error || 'The rules or words cannot be used: nothing was run.' }));
      return;
    }
    for (const each of answer.sentences) {
      each.before = before.get(`${each.file} ${each.number}`);
      now.push(each);
    }
    for (const row of answer.coverage) {
      const key = `${row[0]}:${row[1]}`;
      const sum = coverage.get(key);
      if (sum) for (let i = 2; i < row.length; i += 1) sum[i] += row[i];
      else coverage.set(key, row);
    }
    from = answer.next;
    if (from !== null) badge('gold', `${from} …`, false);
  }
  $('run-all').removeAttribute('aria-busy');
  sentences = now;
  counted = [...coverage.values()];
  showSentences();
  showCoverage();
}

function badge(name, text, isBad) {
  const element = $(`tab-${name}`).querySelector('.badge');
  element.textContent = text;
  element.classList.toggle('bad', isBad);
}

// The words of both, those of one alone marked.
function difference(before, now) {
  const a = before.split(' ');
  const b = now.split(' ');
  const common = Array.from({ length: a.length + 1 }, () => new Array(b.length + 1).fill(0));
  for (let i = a.length - 1; i >= 0; i -= 1) {
    for (let j = b.length - 1; j >= 0; j -= 1) {
      common[i][j] = a[i] === b[j] ? common[i + 1][j + 1] + 1 : Math.max(common[i + 1][j], common[i][j + 1]);
    }
  }
  const line = make('span');
  let i = 0;
  let j = 0;
  while (i < a.length || j < b.length) {
    if (i < a.length && j < b.length && a[i] === b[j]) {
      line.append(`${a[i]} `);
      i += 1;
      j += 1;
    } else if (j === b.length || (i < a.length && common[i + 1][j] >= common[i][j + 1])) {
      line.append(make('del', { textContent: a[i] }), ' ');
      i += 1;
    } else {
      line.append(make('ins', { textContent: b[j] }), ' ');
      j += 1;
    }
  }
  return line;
}

function showSentences() {
  const judged = sentences.filter((each) => each.good !== undefined);
  const bad = judged.filter((each) => !each.good);
  badge('gold', judged.length ? `${judged.length - bad.length}/${judged.length}` : String(sentences.length), bad.length > 0);
  const list = make('ol', { className: 'sentences' });
  for (const each of sentences) {
    const state = each.good === undefined ? 'plain' : each.good ? 'good' : 'bad';
    const names = { plain: '·', good: '✓', bad: '✗' };
    const said = { plain: 'nothing is expected', good: 'as expected', bad: 'not as expected' };
    const turned = each.before !== undefined && each.good !== undefined && each.before !== each.good;
    const item = make('li', { className: `${state}${turned ? ' turned' : ''}` });
    const mark = make('span', { className: 'mark', textContent: names[state] });
    mark.setAttribute('role', 'img');
    mark.setAttribute('aria-label', said[state]);
    const words = each.status === 'done' ? each.text : `(${each.status}) ${each.why || ''}`;
    item.append(mark, make('button', { type: 'button', className: 'place', textContent: each.label || String(each.number),
      onclick: () => { goTo(each.file, each.line); render(); } }));
    if (state === 'bad' && each.status === 'done' && each.expected?.length) item.append(difference(each.expected[0], each.text));
    else item.append(make('span', { textContent: words }));
    if (turned) item.append(make('em', { textContent: each.good ? 'mended' : 'broken' }));
    if (state === 'bad' && each.status !== 'done' && each.expected?.length)
      item.append(make('span', { className: 'fix', textContent: `expected: ${each.expected[0]}` }));
    if (state === 'bad' && !each.expected?.length) item.append(make('span', { className: 'fix', textContent: 'was expected to fail' }));
    list.append(item);
  }
  $('gold').replaceChildren(sentences.length ? list : make('p', { className: 'quiet', textContent: 'There is no sentence.' }));
}

// ---- Coverage

function countOf([, line, hits, undone, tried, offered]) {
  const times = (count) => (count > 9999 ? `${Math.round(count / 1000)}k` : String(count));
  if (hits) {
    return { line, level: 'hit', shown: times(hits),
      title: `of use ${hits} times, ${undone} of them taken back, tried ${tried} times` };
  }
  const title = tried ? `never fired: refused in ${tried} tries`
    : offered ? `never fired: another rule came first at ${offered} windows` : 'never fired: never offered';
  return { line, level: 'never', shown: '–', title };
}

function showCoverage() {
  for (const file of files.values()) {
    if (file.kind === 'rules') file.editor?.setCounts(counted.filter((row) => row[0] === file.path).map(countOf));
  }
  const never = counted.filter((row) => row[2] === 0);
  badge('coverage', counted.length ? `${Math.round((100 * (counted.length - never.length)) / counted.length)} %` : '', false);
  const panel = $('coverage');
  panel.replaceChildren(make('p', { className: 'quiet',
    textContent: `${counted.length - never.length} of ${counted.length} lines with rules were of use in the last run.` }));
  const list = make('ul', { className: 'places' });
  for (const row of never.slice(0, 500)) {
    list.append(placeItem({ level: 'note', file: row[0], line: row[1], text: countOf(row).title }));
  }
  panel.append(list);
}

// ---- Steps

const viewLane = lane('view', (answer) => {
  const panel = $('steps');
  if (answer.error || !answer.view) {
    panel.replaceChildren(make('p', { className: 'quiet', textContent: answer.error || 'There is nothing to be shown.' }));
    return;
  }
  panel.replaceChildren();
  // The program names files by their whole path.
  const inFolder = (path) => (path.startsWith(`${project.folder}/`) ? path.slice(project.folder.length + 1) : path);
  const data = answer.view;
  data.file = inFolder(data.file || '');
  for (const rule of data.rules || []) rule.place = inFolder(rule.place);
  lexonView(panel, data, { heading: 3, onPlace: (place) => {
    const [, path, line] = /^(.*):(\d+)$/.exec(place) || [];
    if (path) goTo(path, Number(line));
  } });
});
const viewSoon = after(120, () => {
  const file = graphFile();
  if (file) viewLane({ graphs: file.path, line: file.editor ? file.editor.caretLine() : 1 });
});

// ---- Tabs, keys, looks

const tabs = [...document.querySelectorAll('[role=tab]')];
function choose(tab) {
  for (const each of tabs) {
    const isIt = each === tab;
    each.setAttribute('aria-selected', String(isIt));
    each.tabIndex = isIt ? 0 : -1;
    $(each.getAttribute('aria-controls')).hidden = !isIt;
  }
  if (tab.id === 'tab-steps') viewSoon();
}
for (const tab of tabs) {
  tab.onclick = () => choose(tab);
  tab.onkeydown = (event) => {
    const step = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
    if (!step) return;
    const next = tabs[(tabs.indexOf(tab) + step + tabs.length) % tabs.length];
    choose(next);
    next.focus();
  };
}

function nextPart(step) {
  const stops = [
    ['#pane-graphs', () => panes.graphs.shown?.editor?.focus()], ['#pane-words', () => panes.words.shown?.editor?.focus()],
    ['#pane-rules', () => panes.rules.shown?.editor?.focus()], ['#result', () => $('result').focus()],
    ['#below', () => tabs.find((tab) => tab.tabIndex === 0).focus()],
  ];
  const before = document.activeElement;
  let at = stops.findIndex(([part]) => before?.closest(part));
  // A pane without a text that can be edited takes no focus.
  for (let tries = 0; tries < stops.length && document.activeElement === before; tries += 1) {
    at = (at + step + stops.length) % stops.length;
    stops[at][1]();
  }
}

document.addEventListener('keydown', (event) => {
  const control = event.ctrlKey || event.metaKey;
  if (control && event.key === 's') {
    const pane = Object.values(panes).find((each) => each.element.contains(document.activeElement));
    if (pane) save(pane.shown);
    else saveAll();
  } else if (control && event.key === 'Enter') {
    run();
  } else if (event.altKey && (event.key === 'ArrowUp' || event.key === 'ArrowDown')) {
    toNeighbour(event.key === 'ArrowUp' ? -1 : 1);
  } else if (event.key === 'F6') {
    nextPart(event.shiftKey ? -1 : 1);
  } else {
    return;
  }
  event.preventDefault();
  event.stopPropagation();
}, true);

async function saveAll() {
  for (const file of files.values()) await save(file);
}

function store(key, value) {
  try {
    if (value === undefined) return localStorage.getItem(key);
    localStorage.setItem(key, value);
  } catch { /* a browser may forbid it */ }
  return null;
}

$('theme').onclick = () => {
  const isDark = getComputedStyle(document.documentElement).colorScheme.trim() === 'dark';
  document.documentElement.dataset.theme = isDark ? 'light' : 'dark';
  store('theme', document.documentElement.dataset.theme);
};
$('help').onclick = () => {
  $('keys').hidden = !$('keys').hidden;
  $('help').setAttribute('aria-expanded', String(!$('keys').hidden));
};
$('previous').onclick = () => toNeighbour(-1);
$('next').onclick = () => toNeighbour(1);
$('run-all').onclick = run;
$('save-all').onclick = saveAll;

function setSplit(percent) {
  const now = Math.min(80, Math.max(15, percent));
  document.documentElement.style.setProperty('--below', `${now}vh`);
  $('split').setAttribute('aria-valuenow', String(Math.round(now)));
}
$('split').onpointerdown = (event) => {
  $('split').setPointerCapture(event.pointerId);
  $('split').onpointermove = (move) => setSplit((100 * (innerHeight - move.clientY - 60)) / innerHeight);
};
$('split').onpointerup = () => { $('split').onpointermove = null; };
$('split').onkeydown = (event) => {
  const step = { ArrowUp: 4, ArrowDown: -4 }[event.key];
  if (step) setSplit(Number($('split').getAttribute('aria-valuenow')) + step);
};
setSplit(34);

addEventListener('beforeunload', (event) => {
  if ([...files.values()].some(isDirty)) event.preventDefault();
});

// ---- Begin

async function begin() {
  const theme = store('theme');
  if (theme) document.documentElement.dataset.theme = theme;
  project = await ask('files', {});
  if (project.error) return notice(project.error, true);
  $('folder').textContent = project.folder;
  document.title = `${project.folder.split('/').pop()} – Lexon`;
  if (project.editor && location.hash !== '#plain') {
    await new Promise((done) => {
      const script = make('script', { src: 'editor.js', onload: done, onerror: done });
      document.head.append(script);
    });
  }
  await Promise.all([
    makePane('graphs', 'Graphs', project.graphs, (path) => (path === project.gold ? 'gold' : 'graph')),
    makePane('words', 'Words', project.words, () => 'words'),
    makePane('rules', 'Rules', project.rules, (path) => (path.endsWith('.tsv') ? 'plain' : 'rules')),
  ]);
  // Past what is written about a file at its head.
  for (const { shown: file } of Object.values(panes)) {
    const line = file?.saved.split('\n').findIndex((each) => each.trim() && !each.trim().startsWith(';')) + 1;
    file?.editor?.goTo(Math.max(1, line));
  }
  panes.graphs.shown?.editor?.focus();
  render();
  run();
  check();
  setInterval(watch, 2000);
  addEventListener('focus', watch);
  document.body.dataset.ready = 'yes';
  return null;
}

begin().catch((fault) => notice(String(fault), true));
