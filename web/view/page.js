// The page of `lexon-lab view`: a list of sentences, those that came to nothing first, and the view of the one that is
// chosen. The data of a sentence is read when it is shown.
'use strict';

(() => {
  const kHeight = 46; // pixels of a sentence in the list, as in view.css
  const index = JSON.parse(document.getElementById('index').textContent);
  const make = (name, attributes, ...children) => {
    const element = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    element.append(...children);
    return element;
  };
  const isDone = (number) => index.sentences[number].status === 'done';
  const order = [...index.sentences.keys()].sort((a, b) => isDone(a) - isDone(b) || a - b);
  const failures = order.filter((number) => !isDone(number)).length;

  document.body.className = 'lx-body';
  const box = make('input', { type: 'search', 'aria-label': 'Find sentences', placeholder: 'Find: label, text, status', autocomplete: 'off' });
  const list = make('div', { class: 'lx-sentences', role: 'listbox', tabindex: '0', 'aria-label': 'Sentences, those that failed first' });
  const spacer = make('div', { role: 'presentation' });
  list.append(spacer);
  const number = make('p', { role: 'status' });
  const main = make('main', { class: 'lx-main', id: 'main', tabindex: '-1' });
  const files = [index.inputs.join(', '), index.rules, index.dictionary, index.cooccurrence].filter(Boolean).join(' · ');
  document.getElementById('page').append(
    make('a', { class: 'lx-skip', href: '#main' }, 'To the sentence'),
    make('div', { class: 'lx-page' },
      make('nav', { class: 'lx-side', 'aria-label': 'Sentences' }, make('h1', {}, `Run of ${index.inputs.join(', ')}`), make('p', {}, files),
        ...index.notices.map((notice) => make('p', { class: 'lx-notice' }, notice + '.')), box, number, list),
      main));

  let rows = order;
  let chosen = -1; // index of `rows`
  let current = -1; // number of the sentence that is shown
  let drawn = new Map();

  function draw() {
    const first = Math.max(0, Math.floor(list.scrollTop / kHeight) - 5);
    const last = Math.min(rows.length, Math.ceil((list.scrollTop + list.clientHeight) / kHeight) + 5);
    const next = new Map();
    for (let at = first; at < last; ++at) next.set(at, drawn.get(at) || row(at));
    for (const [at, element] of drawn) if (!next.has(at)) element.remove();
    for (const [at, element] of next) if (!drawn.has(at)) spacer.append(element);
    drawn = next;
  }

  function row(at) {
    const sentence = index.sentences[rows[at]];
    const element = make('div', { class: 'lx-sentence', role: 'option', id: `sentence-${at}`, 'aria-selected': String(rows[at] === current), 'aria-posinset': at + 1, 'aria-setsize': rows.length },
      make('div', {}, isDone(rows[at]) ? sentence.text : make('span', { class: 'lx-badge' }, sentence.status)),
      make('div', { class: 'lx-about' }, `${sentence.label || '(no label)'} · ${sentence.file}:${sentence.line}${sentence.taken_back > 0 ? ` · ${sentence.taken_back.toLocaleString('en')} taken back` : ''}`));
    element.style.top = `${at * kHeight}px`;
    return element;
  }

  function redraw() {
    drawn.forEach((element) => element.remove());
    drawn = new Map();
    spacer.style.height = `${rows.length * kHeight}px`;
    number.textContent = `${rows.length === order.length ? '' : `${rows.length.toLocaleString('en')} of `}${order.length.toLocaleString('en')} sentence${order.length === 1 ? '' : 's'}, ${failures.toLocaleString('en')} failed`;
    draw();
  }

  function choose(at) {
    if (rows.length === 0) return;
    chosen = Math.max(0, Math.min(rows.length - 1, at));
    current = rows[chosen];
    const top = chosen * kHeight;
    if (top < list.scrollTop) list.scrollTop = top;
    if (top + kHeight > list.scrollTop + list.clientHeight) list.scrollTop = top + kHeight - list.clientHeight;
    draw();
    drawn.forEach((element, each) => element.setAttribute('aria-selected', String(each === chosen)));
    list.setAttribute('aria-activedescendant', `sentence-${chosen}`);
    const label = index.sentences[current].label;
    document.title = `${label ? label + ' – ' : ''}${index.inputs.join(', ')}`;
    history.replaceState(null, '', `#${current + 1}`);
    lexonView(main, JSON.parse(document.getElementById(`s${current}`).textContent));
    window.scrollTo(0, 0);
  }

  list.addEventListener('scroll', draw, { passive: true });
  list.addEventListener('click', (event) => {
    const element = event.target.closest('.lx-sentence');
    if (element) choose(Number(element.id.slice('sentence-'.length)));
  });
  list.addEventListener('keydown', (event) => {
    const page = Math.max(1, Math.floor(list.clientHeight / kHeight) - 1);
    const by = { ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -rows.length, End: rows.length }[event.key];
    if (by === undefined || event.ctrlKey || event.altKey || event.metaKey) return;
    event.preventDefault();
    choose(chosen + by);
  });
  box.addEventListener('input', () => {
    const wanted = box.value.trim().toLowerCase();
    rows = order.filter((each) => {
      const { label, text, status } = index.sentences[each];
      return [label, text, status].some((field) => field.toLowerCase().includes(wanted));
    });
    chosen = rows.indexOf(current);
    list.scrollTop = 0;
    redraw();
  });
  box.addEventListener('keydown', (event) => {
    if (event.key === 'Enter') choose(0);
  });
  window.addEventListener('resize', draw);
  redraw();
  if (order.length === 0) main.append(make('p', {}, 'No sentence is shown.'));
  else choose(Math.max(0, rows.indexOf(Number(location.hash.slice(1)) - 1)));
})();
