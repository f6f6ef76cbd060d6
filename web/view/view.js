// Draws the run of one sentence: graph, words, steps. The data is described in src/lab/view.hpp.
//
//   const view = lexonView(element, data, options);
//
// fills the element, which may stand in any page that holds view.css. `options`, all of them optional:
//   onPlace(place)   called when a rule's place ("rules.txt:203") is chosen; without it places are plain text
//   heading          level of the headings, 2 unless told
// The view has
//   select(number)   shows the step with this number; unfolds what hides it
//   find(text)       marks the steps that hold the text, and returns how many they are
'use strict';

const lexonView = (() => {
  const kRowHeight = 26; // pixels, as in view.css
  const kOverscan = 12;
  const kKinds = ['rule', 'narrowed', 'asked', 'end'];
  const kAbout = {
    rule: 'A rule was carried out', narrowed: 'A word test narrowed the words',
    asked: 'A word test asked for a step back', end: 'No rule was left at this window',
  };
  const kMostPrinted = 2000;
  let views = 0;
  // By element, what lets go of the view that it showed before: a page that draws one at every key would keep them all.
  const ends = new WeakMap();

  // ---- Elements.

  function make(name, attributes, ...children) {
    const element = document.createElement(name);
    for (const [key, value] of Object.entries(attributes || {})) {
      if (value === undefined || value === null || value === false) continue;
      if (key === 'onclick') element.addEventListener('click', value);
      else element.setAttribute(key, value === true ? '' : value);
    }
    element.append(...children.filter((child) => child !== null && child !== undefined));
    return element;
  }

  function draw(name, attributes, ...children) {
    const element = document.createElementNS('http://www.w3.org/2000/svg', name);
    for (const [key, value] of Object.entries(attributes || {})) element.setAttribute(key, value);
    element.append(...children);
    return element;
  }

  const count = (number, noun) => `${number.toLocaleString('en')} ${noun}${number === 1 ? '' : 's'}`;
  const attrsOf = (text) => text.split(',').filter((attr) => attr !== '' && attr !== ';');
  // Control characters would be invisible.
  const shown = (text) => text.replace(/[\u0000-\u001f\u007f]/g, (c) =>
    c === '\u007f' ? '\u2421' : String.fromCharCode(0x2400 + c.charCodeAt(0)));
  const baseName = (place) => shown(place.slice(place.lastIndexOf('/') + 1));
  const short = (text, most) => {
    const characters = Array.from(text);
    return characters.length <= most ? text : characters.slice(0, most - 1).join('') + '…';
  };

  // ---- The search as a tree. A step that is not the last one that followed on its parent begins a branch of its own,
  // which can be folded; the last one goes on in the line of its parent.

  function treeOf(data) {
    const steps = (data.steps || []).map(([number, size, kind, rule, scope, before, beforeAt, after, afterAt, used]) => ({
      number, size, kind: kKinds[kind & 7], isPostEdit: (kind & 8) !== 0, isUndone: (kind & 16) !== 0,
      rule, scope, before, beforeAt, after, afterAt, used, parent: -1, level: 0, depth: 1, isHead: false, last: -1,
    }));
    const open = [];
    let lastOfRoot = -1;
    steps.forEach((step, at) => {
      while (open.length > 0) {
        const top = steps[open[open.length - 1]];
        if (step.number < top.number + top.size) break;
        open.pop();
      }
      step.parent = open.length > 0 ? open[open.length - 1] : -1;
      if (step.parent >= 0) steps[step.parent].last = at;
      else lastOfRoot = at;
      open.push(at);
    });
    steps.forEach((step, at) => {
      const parent = step.parent >= 0 ? steps[step.parent] : null;
      const isLast = (parent ? parent.last : lastOfRoot) === at;
      step.isHead = !isLast || (parent !== null && step.isUndone && !parent.isUndone);
      step.level = (parent ? parent.level : 0) + (step.isHead ? 1 : 0);
      step.depth = (parent ? parent.depth : 0) + 1;
    });
    return steps;
  }

  // Indexes of the steps from the first one down to `at`.
  function pathTo(steps, at) {
    const path = [];
    for (let each = at; each >= 0; each = steps[each].parent) path.push(each);
    return path.reverse();
  }

  // ---- What happened to the words of a list.

  const placeOf = (data, state) => data.states[state][0];
  const listOf = (data, list) => (list >= 0 ? data.lists[list] : []);

  // The state of this place in a list, or -1.
  function stateIn(data, list, place) {
    for (const state of listOf(data, list)) if (state >= 0 && placeOf(data, state) === place) return state;
    return -1;
  }

  function difference(data, step) {
    const changes = [];
    if (step.before < 0 || step.after < 0) return changes;
    const before = listOf(data, step.before);
    const after = listOf(data, step.after);
    if (before.some((state) => state < 0) || after.some((state) => state < 0)) {
      // Of lists that are cut only what both show can be compared.
      for (const state of after) {
        if (state < 0) continue;
        const old = stateIn(data, step.before, placeOf(data, state));
        if (old >= 0 && old !== state) changes.push(change(data, old, state));
      }
      return changes;
    }
    for (const state of after) {
      const old = stateIn(data, step.before, placeOf(data, state));
      if (old < 0) changes.push({ what: 'new', state, ...sourceChange(data, step, state) });
      else if (old !== state) changes.push(change(data, old, state));
    }
    for (const state of before) {
      if (stateIn(data, step.after, placeOf(data, state)) < 0) changes.push({ what: 'gone', state, added: [], removed: [] });
    }
    return changes.filter((each) => each.what !== 'same');
  }

  function change(data, old, state) {
    const was = data.states[old];
    const is = data.states[state];
    const had = new Set(attrsOf(was[2]));
    const has = new Set(attrsOf(is[2]));
    const added = [...has].filter((attr) => !had.has(attr));
    const removed = [...had].filter((attr) => !has.has(attr));
    const isTouched = was[4] !== is[4];
    const form = was[1] !== is[1] && !isTouched ? was[1] : null;
    const isSame = added.length === 0 && removed.length === 0 && form === null;
    return { what: isSame && !isTouched ? 'same' : isSame ? 'touched' : 'changed', state, old, added, removed, form };
  }

  // A copy, or a word that has taken in another one: against what it came from.
  function sourceChange(data, step, state) {
    const from = data.nodes[placeOf(data, state)].from;
    const old = from >= 0 ? stateIn(data, step.before, from) : -1;
    if (old < 0) return { added: [], removed: [], from: -1 };
    const { added, removed } = change(data, old, state);
    return { added, removed, from: old };
  }

  function changeText(data, each) {
    const name = shown(data.states[each.state][1]);
    const marks = [...each.added.map((attr) => '+' + attr), ...each.removed.map((attr) => '−' + attr)].join(' ');
    if (each.what === 'new') return `new: ${name}${marks ? ' ' + marks : ''}`;
    if (each.what === 'gone') return `gone: ${name}`;
    if (each.what === 'touched') return `${name}: its form is settled`;
    return `${name}: ${each.form !== null && each.form !== undefined ? `was ${shown(each.form)} ` : ''}${marks}`;
  }

  // Where each attribute of a state comes from, as it stands behind the last step of `path`.
  function originsOf(data, steps, path, state) {
    const origins = new Map();
    const wanted = new Set(attrsOf(data.states[state][2]));
    let place = placeOf(data, state);
    const entry = data.states[state][3];
    const rule = (at) => ({ kind: 'rule', step: at });
    for (let i = path.length - 1; i >= 0 && wanted.size > 0; --i) {
      const step = steps[path[i]];
      if (step.after < 0) continue;
      const after = stateIn(data, step.after, place);
      if (after < 0) continue;
      let before = stateIn(data, step.before, place);
      const from = data.nodes[place].from;
      if (before < 0 && from >= 0) {
        before = stateIn(data, step.before, from);
        if (before >= 0) place = from;
      }
      const has = new Set(attrsOf(data.states[after][2]));
      if (before < 0) {
        // It came in here.
        const own = new Set(entry >= 0 ? attrsOf(data.entries[entry][1]) : []);
        const said = saidOf(data, place);
        for (const attr of [...wanted]) {
          if (own.has(attr) || said.has(attr) || !has.has(attr)) continue;
          origins.set(attr, rule(path[i]));
          wanted.delete(attr);
        }
        continue;
      }
      const had = new Set(attrsOf(data.states[before][2]));
      for (const attr of [...wanted]) {
        if (!has.has(attr) || had.has(attr)) continue;
        origins.set(attr, rule(path[i]));
        wanted.delete(attr);
      }
    }
    const own = new Set(entry >= 0 ? attrsOf(data.entries[entry][1]) : []);
    const said = saidOf(data, place);
    for (const attr of wanted) {
      origins.set(attr, { kind: own.has(attr) ? 'dictionary' : said.has(attr) ? 'graph' : 'other' });
    }
    return origins;
  }

  // What the graph says of the node that stands behind a place.
  function saidOf(data, place) {
    const said = new Set();
    for (let each = place, i = 0; each >= 0 && i < 100; each = data.nodes[each].from, ++i) {
      const node = data.graph && data.graph.nodes[data.nodes[each].graph];
      if (!node) continue;
      for (const [, text] of node.attrs) attrsOf(text).forEach((attr) => said.add(attr));
    }
    return said;
  }

  function graphNodeOf(data, place) {
    for (let each = place, i = 0; each >= 0 && i < 100; each = data.nodes[each].from, ++i) {
      if (data.nodes[each].graph >= 0) return data.nodes[each].graph;
    }
    return -1;
  }

  // ---- The graph.

  const nodeName = (node) => shown(node.name) + (node.instance > 0 ? ` (${node.instance})` : '');
  const nodeAttrs = (node) => shown(node.attrs.map(([, text]) => text).join(' ').replaceAll(',', ', '));
  const relationName = (relation) =>
    shown(relation.label) + (relation.scope > 0 ? ':' + String(relation.scope).padStart(2, '0') : '');

  // A plain arrangement in rows, for want of Graphviz: each node one row below the first that points to it.
  function plainLayout(graph) {
    const nodes = graph.nodes;
    const row = new Array(nodes.length).fill(-1);
    const below = nodes.map(() => []);
    graph.relations.forEach(({ from, to }) => below[from].push(to));
    nodes.forEach((node, at) => {
      const scope = graph.scopes.find(({ number, entry }) => node.scope === number && entry >= 0);
      if (scope) below[at].push(scope.entry);
    });
    const starts = graph.scopes.filter(({ entry }) => entry >= 0).slice(0, 1).map(({ entry }) => entry);
    for (const start of [...starts, ...nodes.keys()]) {
      if (row[start] >= 0) continue;
      row[start] = 0;
      for (const queue = [start]; queue.length > 0;) {
        const at = queue.shift();
        for (const next of below[at]) {
          if (row[next] >= 0) continue;
          row[next] = row[at] + 1;
          queue.push(next);
        }
      }
    }
    const places = [];
    let width = 0;
    const rows = Math.max(0, ...row) + 1;
    for (let r = 0; r < rows; ++r) {
      let x = 10;
      nodes.forEach((node, at) => {
        if (row[at] !== r) return;
        const length = Math.max(Math.min(Array.from(node.name).length + 3, 40), Math.min(Array.from(nodeAttrs(node)).length, 34));
        const w = length * 7.2 + 16;
        places[at] = [x + w / 2, 30 + r * 100, w, node.attrs.length > 0 ? 42 : 29];
        x += w + 30;
      });
      width = Math.max(width, x);
    }
    const line = (from, to, at) => {
      const [x1, y1, w1, h1] = places[from];
      const [x2, y2, w2, h2] = places[to];
      const isLevel = y1 === y2;
      const start = isLevel ? [x1, y1 + h1 / 2] : [x1, y1 + (y2 > y1 ? h1 : -h1) / 2];
      const end = isLevel ? [x2, y2 + h2 / 2] : [x2, y2 - (y2 > y1 ? h2 : -h2) / 2];
      const bend = isLevel ? 34 : 0;
      const middle = [(start[0] + end[0]) / 2, (start[1] + end[1]) / 2 + bend];
      const share = 0.5 + 0.12 * ((at % 3) - 1);
      return {
        path: `M${start} Q${middle} ${end}`,
        tip: [middle[0] + (end[0] - middle[0]) * 0.97, middle[1] + (end[1] - middle[1]) * 0.97, ...end],
        x: start[0] + (end[0] - start[0]) * share + 4,
        y: isLevel ? middle[1] - bend / 2 + 4 : start[1] + (end[1] - start[1]) * share,
      };
    };
    const references = [];
    nodes.forEach((node, at) => graph.scopes.forEach(({ number, entry }) => {
      if (node.scope === number && entry >= 0) references.push(line(at, entry, 0));
    }));
    const scopeOf = new Map();
    graph.relations.forEach(({ from, to, scope }) => [from, to].forEach((at) => scopeOf.has(at) || scopeOf.set(at, scope)));
    const scopes = graph.scopes.filter(({ number }) => number > 0).map(({ number }) => {
      const inside = [...scopeOf].filter(([, scope]) => scope === number).map(([at]) => places[at]);
      if (inside.length === 0) return null;
      const left = Math.min(...inside.map(([x, , w]) => x - w / 2)) - 8;
      const right = Math.max(...inside.map(([x, , w]) => x + w / 2)) + 8;
      const top = Math.min(...inside.map(([, y, , h]) => y - h / 2)) - 16;
      const bottom = Math.max(...inside.map(([, y, , h]) => y + h / 2)) + 8;
      return { number, x: left, y: top, width: right - left, height: bottom - top };
    });
    return {
      width, height: 30 + rows * 100 - 40, nodes: places, references, scopes: scopes.filter((scope) => scope !== null),
      relations: graph.relations.map(({ from, to }, at) => line(from, to, at)),
    };
  }

  function arrow([x1, y1, x2, y2]) {
    const length = Math.hypot(x2 - x1, y2 - y1) || 1;
    const [dx, dy] = [(x2 - x1) / length, (y2 - y1) / length];
    const [bx, by] = [x2 - dx * 9, y2 - dy * 9];
    const point = (x, y) => `${x.toFixed(1)},${y.toFixed(1)}`;
    return [point(x2, y2), point(bx - dy * 3.5, by + dx * 3.5), point(bx + dy * 3.5, by - dx * 3.5)].join(' ');
  }

  // The picture, and what shows a step in it.
  function graphPicture(data) {
    const graph = data.graph;
    const layout = graph.layout || plainLayout(graph);
    const pad = 12;
    const picture = draw('svg', {
      viewBox: `${-pad} ${-pad} ${layout.width + 2 * pad} ${layout.height + 2 * pad}`,
      width: layout.width + 2 * pad, height: layout.height + 2 * pad, role: 'img', class: 'lx-graph',
      'aria-label': `Graph of ${count(graph.nodes.length, 'node')} and ${count(graph.relations.length, 'relation')}; the list below says the same`,
    });
    for (const scope of layout.scopes) {
      picture.append(
        draw('rect', { x: scope.x, y: scope.y, width: scope.width, height: scope.height, rx: 6, class: 'lx-scope' }),
        draw('text', { x: scope.x + 6, y: scope.y + 13, class: 'lx-scope-name' }, `scope :${String(scope.number).padStart(2, '0')}`));
    }
    for (const curve of layout.references) {
      if (curve) picture.append(draw('path', { d: curve.path, class: 'lx-reference' }));
    }
    const relations = graph.relations.map((relation, at) => {
      const curve = layout.relations[at];
      if (!curve) return null;
      const group = draw('g', { class: 'lx-relation' }, draw('title', {}, `${relationName(relation)}(${shown(graph.nodes[relation.from].name)}, ${shown(graph.nodes[relation.to].name)})`),
        draw('path', { d: curve.path }));
      if (curve.tip) group.append(draw('polygon', { points: arrow(curve.tip) }));
      if (curve.x !== undefined) group.append(draw('text', { x: curve.x, y: curve.y + 4 }, relationName(relation)));
      picture.append(group);
      return group;
    });
    const entries = new Map(graph.scopes.filter(({ entry }) => entry >= 0).map(({ number, entry }) => [entry, number]));
    const nodes = graph.nodes.map((node, at) => {
      if (!layout.nodes[at]) return null;
      const [x, y, w, h] = layout.nodes[at];
      const isEntry = entries.has(at);
      const group = draw('g', { class: `lx-node${isEntry ? ' lx-entry' : ''}${node.unknown ? ' lx-unknown' : ''}` },
        draw('title', {}, `${nodeName(node)}${node.attrs.length > 0 ? '\n' + nodeAttrs(node) : ''}${isEntry ? '\nentry' : ''}${node.unknown ? '\nthe dictionary has no entry for it' : ''}`),
        draw('rect', { x: x - w / 2, y: y - h / 2, width: w, height: h, rx: 4 }));
      if (isEntry) group.append(draw('rect', { x: x - w / 2 + 3, y: y - h / 2 + 3, width: w - 6, height: h - 6, rx: 2, class: 'lx-inner' }));
      const attrs = nodeAttrs(node);
      group.append(draw('text', { x, y: attrs ? y - 3 : y + 4.5, class: 'lx-name' }, short(nodeName(node), 38)));
      if (attrs) group.append(draw('text', { x, y: y + 12, class: 'lx-attrs' }, short(attrs, 34)));
      picture.append(group);
      return group;
    });
    return {
      picture,
      show(step) {
        const used = step && data.used[step.used] ? data.used[step.used] : null;
        relations.forEach((group, at) => {
          if (group === null) return;
          const isUsed = used ? used[at] === '1' : graph.relations[at].used;
          group.classList.toggle('lx-unused', !isUsed);
        });
        const inWindow = new Set();
        if (step) {
          const [list, at] = step.after >= 0 ? [step.after, step.afterAt] : [step.before, step.beforeAt];
          const states = listOf(data, list);
          for (const state of [states[at], states[at + 1]]) {
            if (at >= 0 && state >= 0) inWindow.add(graphNodeOf(data, placeOf(data, state)));
          }
        }
        nodes.forEach((group, at) => group && group.classList.toggle('lx-in-window', inWindow.has(at)));
      },
    };
  }

  function relationTable(data) {
    const graph = data.graph;
    const rows = graph.relations.map((relation) => make('tr', {},
      make('td', {}, relationName(relation)), make('td', {}, nodeName(graph.nodes[relation.from])),
      make('td', {}, nodeName(graph.nodes[relation.to])), make('td', {}, relation.used ? 'followed' : 'not followed')));
    const nodes = graph.nodes.map((node, at) => make('tr', {}, make('td', {}, nodeName(node)), make('td', {}, nodeAttrs(node)),
      make('td', {}, [graph.scopes.some(({ entry }) => entry === at) ? 'entry' : '', node.unknown ? 'no entry in the dictionary' : ''].filter(Boolean).join(', '))));
    const table = (caption, heads, body) => make('table', {}, make('caption', {}, caption),
      make('thead', {}, make('tr', {}, ...heads.map((head) => make('th', { scope: 'col' }, head)))), make('tbody', {}, ...body));
    return make('details', { class: 'lx-lists' }, make('summary', {}, 'The graph as lists, and as it is written'),
      make('div', { class: 'lx-tables' }, table('Relations', ['Relation', 'From', 'To', 'In the end'], rows),
        table('Nodes', ['Node', 'Attributes', ''], nodes)),
      make('pre', {}, shownLines(graph.source || '')));
  }

  const shownLines = (text) => text.split('\n').map((line) => shown(line.replace(/\r$/, '').replaceAll('\t', '  '))).join('\n');

  // ---- Steps as rows of a tree, of which only those in sight are elements.

  function stepRows(container, { onSelect, rowContent, isFoldable, label }) {
    const spacer = make('div', { class: 'lx-spacer', role: 'presentation' });
    const id = `lx${++views}`;
    container.classList.add('lx-rows');
    container.setAttribute('role', 'tree');
    container.setAttribute('aria-label', label);
    container.tabIndex = 0;
    container.append(spacer);
    let rows = [];
    let selected = -1;
    let drawn = new Map();
    function show() {
      const first = Math.max(0, Math.floor(container.scrollTop / kRowHeight) - kOverscan);
      const last = Math.min(rows.length, Math.ceil((container.scrollTop + container.clientHeight) / kRowHeight) + kOverscan);
      const next = new Map();
      for (let at = first; at < last; ++at) next.set(at, drawn.get(at) || rowElement(at));
      for (const [at, element] of drawn) if (!next.has(at)) element.remove();
      for (const [at, element] of next) if (!drawn.has(at)) spacer.append(element);
      drawn = next;
    }
    function rowElement(at) {
      const row = rows[at];
      const element = make('div', {
        class: 'lx-row', role: 'treeitem', id: `${id}-${at}`, 'aria-level': row.level + 1, 'aria-posinset': at + 1,
        'aria-setsize': rows.length, 'aria-selected': at === selected ? 'true' : 'false',
      });
      if (isFoldable(row)) element.setAttribute('aria-expanded', row.isFolded ? 'false' : 'true');
      element.style.top = `${at * kRowHeight}px`;
      rowContent(element, row);
      return element;
    }
    function redraw() {
      drawn.forEach((element) => element.remove());
      drawn = new Map();
      spacer.style.height = `${rows.length * kRowHeight}px`;
      show();
    }
    function select(at, isQuiet) {
      if (rows.length === 0) return;
      const before = drawn.get(selected);
      selected = Math.max(0, Math.min(rows.length - 1, at));
      const top = selected * kRowHeight;
      if (top < container.scrollTop) container.scrollTop = top;
      if (top + kRowHeight > container.scrollTop + container.clientHeight)
        container.scrollTop = top + kRowHeight - container.clientHeight;
      if (before) before.setAttribute('aria-selected', 'false');
      show();
      const now = drawn.get(selected);
      if (now) now.setAttribute('aria-selected', 'true');
      container.setAttribute('aria-activedescendant', `${id}-${selected}`);
      if (!isQuiet) onSelect(rows[selected], selected);
    }
    container.addEventListener('scroll', show, { passive: true });
    if (typeof ResizeObserver !== 'undefined') new ResizeObserver(show).observe(container);
    container.addEventListener('click', (event) => {
      const row = event.target.closest('.lx-row');
      if (row) select(Number(row.id.slice(id.length + 1)));
    });
    return {
      get rows() { return rows; },
      get selected() { return selected; },
      page: () => Math.max(1, Math.floor(container.clientHeight / kRowHeight) - 1),
      select, redraw,
      set(next, at) {
        rows = next;
        selected = at;
        redraw();
      },
    };
  }

  // ---- The whole.

  return function lexonView(element, data, options = {}) {
    const level = options.heading || 2;
    const steps = treeOf(data);
    const standing = steps.flatMap((step, at) => (step.isUndone ? [] : [at]));
    const folded = new Set(steps.flatMap((step, at) => (step.isHead && step.size > 1 ? [at] : [])));
    const isDone = data.status === 'done';
    const root = make('article', { class: 'lx-view', 'aria-label': `Sentence ${data.label || data.number}` });
    element.replaceChildren(root);
    const heading = (extra, text) => make(`h${level + extra}`, {}, text);
    const ruleOf = (step) => (step.rule >= 0 ? data.rules[step.rule] : null);
    const placeLink = (place) => (options.onPlace ? make('button', { type: 'button', class: 'lx-link', onclick: () => options.onPlace(place) }, shown(place)) : make('span', { class: 'lx-place' }, shown(place)));

    // What came of it.
    const facts = [data.label && shown(data.label), data.status, data.file && `${shown(data.file)}:${data.line}`,
      data.kept && count(data.kept.of, 'step'), data.taken_back > 0 && `${data.taken_back.toLocaleString('en')} taken back`,
      data.seconds >= 0.001 && `${data.seconds.toFixed(3)} s`].filter(Boolean);
    root.append(make('header', {},
      make(`h${level}`, { class: isDone ? '' : 'lx-failed' }, isDone ? shown(data.text) : data.status === 'failed' ? 'This sentence failed' : `This sentence came to nothing: ${data.status}`),
      make('p', { class: 'lx-facts' }, facts.join(' · '))));
    if (data.messages && data.messages.length > 0)
      root.append(make('ul', { class: 'lx-messages' }, ...data.messages.map((message) => make('li', {}, shown(message)))));
    if (data.trouble) root.append(troubleSection());

    // The graph.
    let picture = null;
    if (data.graph && data.graph.nodes.length > 0) {
      picture = graphPicture(data);
      root.append(make('section', { 'aria-label': 'Graph' }, heading(1, 'Graph'),
        data.graph.notice ? make('p', { class: 'lx-notice' }, data.graph.notice + '.') : null,
        make('div', { class: 'lx-picture', tabindex: '0', role: 'group', 'aria-label': 'Picture of the graph' }, picture.picture),
        make('p', { class: 'lx-legend' }, 'Double frame: entry. Solid arrow: followed. Dashed arrow: not followed, at the step that is shown. Thick frame: a word of the window. Dotted frame: no entry in the dictionary.'),
        relationTable(data)));
    }

    const detail = make('div', { class: 'lx-detail', role: 'region', 'aria-label': 'The chosen step' });
    const announce = make('div', { class: 'lx-hidden', 'aria-live': 'polite' });
    const tree = make('div', {});
    let hits = new Set();
    let rows = null;
    if (data.final >= 0 && isDone) root.append(wordsSection());
    root.append(stepsSection());
    const printed = make('section', { class: 'lx-print', 'aria-hidden': 'true' });
    root.append(printed);
    if (picture) picture.show(null);
    function print() {
      if (printed.childElementCount > 0) return undefined;
      printed.append(heading(1, 'Steps that stand'));
      const lines = standing.slice(0, kMostPrinted).map((at) => {
        const step = steps[at];
        const rule = ruleOf(step);
        return make('tr', {}, make('td', {}, String(step.number)), make('td', {}, rule ? baseName(rule.place) : ''),
          make('td', {}, listText(step.before, step.beforeAt)), make('td', {}, difference(data, step).map((each) => changeText(data, each)).join('; ')));
      });
      printed.append(make('table', {}, make('thead', {}, make('tr', {}, ...['Step', 'Rule', 'List before', 'Changes'].map((head) => make('th', { scope: 'col' }, head)))), make('tbody', {}, ...lines)));
      if (standing.length > kMostPrinted) printed.append(make('p', {}, `and ${standing.length - kMostPrinted} more`));
      return undefined;
    }
    window.addEventListener('beforeprint', print);
    ends.get(element)?.();
    ends.set(element, () => window.removeEventListener('beforeprint', print));

    function troubleSection() {
      const trouble = data.trouble;
      const part = (title, lines) => (lines.length > 0 ? [heading(2, title), make('ul', {}, ...lines.map((line) => make('li', {}, shown(line))))] : []);
      const deepest = steps.reduce((best, step, at) => (best < 0 || step.depth > steps[best].depth ? at : best), -1);
      return make('section', { class: 'lx-trouble', 'aria-label': 'Why it failed' }, heading(1, 'Why it failed'),
        trouble.list ? make('p', {}, `The deepest list, ${count(trouble.steps, 'step')} in: `, make('span', { class: 'lx-mono' }, shown(trouble.list)), ' ',
          deepest >= 0 ? make('button', { type: 'button', onclick: () => select(steps[deepest].number, true) }, 'Show the deepest step that was kept') : null) : null,
        ...part('Relations that nobody had followed there', trouble.unfollowed),
        ...part('Marks there that a word test asks about', trouble.debts),
        ...part('The tests that took back most', trouble.tests),
        ...part('The windows in which no rule was left', trouble.windows));
    }

    // ---- Words.

    function wordsSection() {
      const panel = make('div', { class: 'lx-word', 'aria-live': 'polite' });
      const path = standing;
      const buttons = listOf(data, data.final).map((state) => {
        const text = data.states[state][1];
        const button = make('button', { type: 'button', class: `lx-chip${text === "' '" ? ' lx-blank' : ''}`, 'aria-expanded': 'false' }, text === "' '" ? '␣' : shown(text));
        if (text === "' '") button.setAttribute('aria-label', 'a blank');
        button.addEventListener('click', () => {
          const isOpen = button.getAttribute('aria-expanded') === 'true';
          buttons.forEach((each) => each.setAttribute('aria-expanded', 'false'));
          button.setAttribute('aria-expanded', String(!isOpen));
          panel.replaceChildren(...(isOpen ? [] : wordPanel(state, path)));
        });
        return button;
      });
      return make('section', { 'aria-label': 'Words' }, heading(1, 'Words'),
        make('p', { class: 'lx-legend' }, 'Choose a word for its entry, its attributes, and the rules that touched it.'),
        make('div', { class: 'lx-words' }, ...buttons), panel);
    }

    function wordPanel(state, path) {
      const [place, , , entry] = data.states[state];
      // The places that this word has been, with those that it was copied from.
      const places = new Set();
      for (let each = place, i = 0; each >= 0 && i < 100; each = data.nodes[each].from, ++i) places.add(each);
      const touched = path.filter((at) => {
        const step = steps[at];
        if (step.rule < 0) return false;
        return difference(data, step).some((each) => places.has(placeOf(data, each.state)) || (each.from >= 0 && places.has(placeOf(data, each.from))));
      });
      const node = graphNodeOf(data, place);
      return [
        make('dl', {},
          make('dt', {}, 'Entry'), make('dd', { class: 'lx-mono' }, entry >= 0 ? shown(data.entries[entry][0]) : 'none: the dictionary does not know this word, or a rule has made it'),
          ...(node >= 0 ? [make('dt', {}, 'In the graph'), make('dd', {}, nodeName(data.graph.nodes[node]), ' ', nodeAttrs(data.graph.nodes[node]))] : [])),
        attributeTable(state, path),
        heading(2, 'Rules that touched it'),
        touched.length === 0 ? make('p', {}, 'None.') : make('ol', { class: 'lx-touched' }, ...touched.map((at) => make('li', {}, stepLink(at), ' ',
          make('span', { class: 'lx-mono' }, short(shown(ruleOf(steps[at]).text), 160)), ' ',
          make('span', { class: 'lx-changes' }, difference(data, steps[at]).filter((each) => places.has(placeOf(data, each.state))).map((each) => changeText(data, each)).join('; '))))),
      ];
    }

    function stepLink(at) {
      const rule = ruleOf(steps[at]);
      return make('button', { type: 'button', class: 'lx-link', onclick: () => select(steps[at].number, true) },
        `step ${steps[at].number}${rule ? ', ' + baseName(rule.place) : ''}`);
    }

    function attributeTable(state, path) {
      const [, text, , entry] = data.states[state];
      const origins = originsOf(data, steps, path, state);
      const attrs = [...new Set(attrsOf(data.states[state][2]))];
      if (attrs.length === 0) return make('p', { class: 'lx-legend' }, `${shown(text)} has no attributes.`);
      const names = { dictionary: 'dictionary', graph: 'graph', other: 'came with the word, or from its scope' };
      const rows = attrs.map((attr) => {
        const origin = origins.get(attr);
        const from = origin.kind === 'rule' ? stepLink(origin.step) : names[origin.kind];
        const title = origin.kind === 'dictionary' && entry >= 0 ? shown(data.entries[entry][0]) : null;
        return make('tr', {}, make('th', { scope: 'row' }, shown(attr)), make('td', { title }, from));
      });
      return make('table', { class: 'lx-attributes' }, make('caption', {}, `Attributes of ${shown(text)}`),
        make('thead', {}, make('tr', {}, make('th', { scope: 'col' }, 'Attribute'), make('th', { scope: 'col' }, 'From'))), make('tbody', {}, ...rows));
    }

    // ---- Steps.

    function listText(list, at) {
      return listOf(data, list).map((state, i) => {
        const text = state < 0 ? `(${-state} more)` : shown(data.states[state][1]);
        return i === at ? '⟨' + text : i === at + 1 && at >= 0 ? text + '⟩' : text;
      }).join(' ');
    }

    function stepsSection() {
      const section = make('section', { 'aria-label': 'Steps', class: 'lx-steps' }, heading(1, 'Steps'));
      if (steps.length === 0) {
        section.append(make('p', {}, 'No rule was carried out.'));
        return section;
      }
      const box = make('input', { type: 'search', 'aria-label': 'Find in the steps', placeholder: 'Find: rule, line, word, attribute', autocomplete: 'off', spellcheck: 'false' });
      const found = make('span', { class: 'lx-found', role: 'status' });
      box.addEventListener('input', () => {
        const number = find(box.value);
        found.textContent = box.value.trim() === '' ? '' : number === 0 ? 'nothing' : count(number, 'step');
      });
      box.addEventListener('keydown', (event) => {
        if (event.key !== 'Enter' || hits.size === 0) return;
        event.preventDefault();
        nextHit(event.shiftKey ? -1 : 1);
      });
      const button = (text, title, act) => make('button', { type: 'button', title, onclick: act }, text);
      const notKept = data.kept && data.kept.of > data.kept.steps
        ? make('p', { class: 'lx-notice' }, `Of ${data.kept.of.toLocaleString('en')} steps the first and the last are here, ${data.kept.steps.toLocaleString('en')} in all.`) : null;
      section.append(make('div', { class: 'lx-bar', role: 'toolbar', 'aria-label': 'Steps' },
        button('Previous', 'Arrow up', () => move(-1)), button('Next', 'Arrow down', () => move(1)),
        button('Unfold all', 'Show what was taken back', () => foldAll(false)), button('Fold all', 'Hide what was taken back', () => foldAll(true)), box, found),
        ...(notKept ? [notKept] : []),
        make('p', { class: 'lx-legend' }, 'Arrow keys step through the list; right and left unfold and fold what was taken back; Enter in the box goes to the next step found.'),
        make('div', { class: 'lx-columns' }, tree, detail), announce);
      rows = stepRows(tree, { onSelect: showStep, rowContent, isFoldable: (row) => row.at >= 0 && folds(row.at), label: 'Steps of the search' });
      rows.set(visible(), -1);
      tree.addEventListener('keydown', keys);
      tree.addEventListener('focus', () => rows.selected < 0 && rows.select(0));
      requestAnimationFrame(() => rows.redraw());
      return section;
    }

    function folds(at) {
      return steps[at].isHead && steps[at].size > 1;
    }

    // The rows that no fold hides, and gaps where steps are not kept.
    function visible() {
      const list = [];
      let expected = 1;
      for (let at = 0; at < steps.length;) {
        const step = steps[at];
        if (step.number > expected) list.push({ at: -1, level: step.level, missing: step.number - expected });
        const isFolded = folded.has(at);
        list.push({ at, level: step.level, isFolded });
        expected = step.number + (isFolded ? step.size : 1);
        for (++at; isFolded && at < steps.length && steps[at].number < expected;) ++at;
      }
      return list;
    }

    function rowContent(row, { at, level: depth, isFolded, missing }) {
      row.style.paddingLeft = `${6 + Math.min(depth, 24) * 14}px`;
      if (at < 0) {
        row.classList.add('lx-gap');
        row.append(`… ${count(missing, 'step')} not kept`);
        return;
      }
      const step = steps[at];
      const rule = ruleOf(step);
      row.classList.toggle('lx-undone', step.isUndone);
      row.classList.toggle('lx-reason', step.kind === 'asked' || step.kind === 'end');
      row.classList.toggle('lx-hit', hits.has(at));
      if (folds(at)) {
        const sign = make('span', { class: 'lx-fold', 'aria-hidden': 'true', onclick: (event) => {
          event.stopPropagation();
          toggle(at);
        } }, isFolded ? '▸' : '▾');
        row.append(sign);
      }
      if (step.isUndone && !folds(at)) row.append(make('span', { class: 'lx-fold', 'aria-hidden': 'true' }, '×'));
      row.append(make('span', { class: 'lx-number' }, String(step.number)));
      row.append(make('span', { class: 'lx-where' }, rule ? baseName(rule.place) : ''));
      row.append(make('span', { class: 'lx-what' }, stepSummary(step)));
      if (folds(at) && isFolded) row.append(make('span', { class: 'lx-count' }, `${count(step.size, 'step')} taken back`));
      if (step.isPostEdit) row.append(make('span', { class: 'lx-tag' }, 'post-edit'));
      if (step.scope > 0) row.append(make('span', { class: 'lx-tag' }, `scope :${String(step.scope).padStart(2, '0')}`));
      if (step.isUndone) row.append(make('span', { class: 'lx-hidden' }, ', taken back'));
    }

    function windowText(list, at) {
      const states = listOf(data, list);
      if (at < 0 || states.length === 0) return '';
      return [states[at], states[at + 1]].filter((state) => state !== undefined && state >= 0).map((state) => shown(data.states[state][1])).join(' ');
    }

    function stepSummary(step) {
      const window = windowText(step.before, step.beforeAt);
      if (step.kind === 'asked') return `${window}: the test asks for a step back`;
      if (step.kind === 'end') return `${window}: no rule is left`;
      const changes = difference(data, step).filter((each) => each.what !== 'touched').map((each) => changeText(data, each)).join('; ');
      if (step.kind === 'narrowed') return `${window}: words narrowed${changes ? '; ' + changes : ''}`;
      return changes ? `${window}  →  ${changes}` : `${window}  →  ${windowText(step.after, step.afterAt) || 'on'}`;
    }

    function showStep({ at }) {
      if (at < 0) {
        detail.replaceChildren(make('p', {}, 'These steps were taken back and are not kept; --keep keeps more.'));
        return;
      }
      const step = steps[at];
      const rule = ruleOf(step);
      const path = pathTo(steps, at);
      const changes = difference(data, step);
      detail.replaceChildren(
        heading(2, `Step ${step.number.toLocaleString('en')}${step.isUndone ? ', taken back' : ''}`),
        make('p', { class: 'lx-legend' }, `${kAbout[step.kind]}${step.isPostEdit ? ', in post-edit' : ''}${step.scope > 0 ? `, in scope :${String(step.scope).padStart(2, '0')}` : ''}; ${count(step.depth, 'step')} deep.`));
      if (rule) {
        const isAsWritten = rule.source && rule.source.replace(/\s+/g, '').includes(rule.text.replace(/\s+/g, ''));
        detail.append(make('div', { class: 'lx-rule' }, placeLink(rule.place), rule.values ? make('span', { class: 'lx-values' }, ' ' + shown(rule.values)) : null,
          make('pre', {}, shown(rule.text)),
          rule.source && !isAsWritten ? make('pre', { class: 'lx-source', title: 'As it stands in the file' }, shown(rule.source.trim().replace(/\s+/g, ' '))) : null));
      }
      const panel = make('div', { class: 'lx-word' });
      const marks = new Map(changes.map((each) => [each.state, each.what]));
      for (const each of changes) if (each.old !== undefined) marks.set(each.old, 'changed');
      const showWord = (state) => panel.replaceChildren(attributeTable(state, path));
      if (step.before >= 0) detail.append(heading(2, step.after >= 0 ? 'List before' : 'List'), wordList(step.before, step.beforeAt, marks, 'before', showWord));
      if (step.after >= 0) detail.append(heading(2, 'List after'), wordList(step.after, step.afterAt, marks, 'after', showWord));
      if (step.kind === 'rule' || step.kind === 'narrowed') {
        detail.append(heading(2, 'What changed'), changes.length === 0 ? make('p', {}, 'The window has moved; no word has changed.') : make('ul', { class: 'lx-changes' }, ...changes.map((each) => make('li', {}, changeText(data, each)))));
      }
      detail.append(panel);
      const first = changes.find((each) => each.what === 'changed' || each.what === 'new');
      if (first) showWord(first.state);
      if (picture) picture.show(step);
      announce.textContent = stepSummary(step);
    }

    function wordList(list, at, marks, side, showWord) {
      return make('ol', { class: 'lx-list' }, ...listOf(data, list).map((state, i) => {
        if (state < 0) return make('li', { class: 'lx-more' }, `${-state} more`);
        const [, text, , , isUntouched] = data.states[state];
        const mark = marks.get(state);
        const isShown = mark && (mark !== 'gone' || side === 'before') && (mark !== 'new' || side === 'after');
        const isLeft = at >= 0 && i === at;
        const isRight = at >= 0 && i === at + 1;
        const names = ['lx-chip', isUntouched && 'lx-untouched', isShown && `lx-is-${mark}`, text === '|' && 'lx-boundary'].filter(Boolean).join(' ');
        const button = make('button', { type: 'button', class: names, onclick: () => showWord(state), title: shown(data.states[state][2]) }, shown(text));
        const notes = [isLeft && 'left word of the window', isRight && 'right word of the window', isShown && mark].filter(Boolean);
        if (notes.length > 0) button.append(make('span', { class: 'lx-hidden' }, `, ${notes.join(', ')}`));
        return make('li', { class: `${isLeft ? 'lx-left' : ''}${isRight ? 'lx-right' : ''}` || null }, button);
      }));
    }

    function refresh(at) {
      const list = visible();
      const index = list.findIndex((row) => row.at === at);
      rows.set(list, index);
      if (index >= 0) rows.select(index, true);
    }

    function toggle(at) {
      if (!folded.delete(at)) folded.add(at);
      refresh(at);
    }

    function foldAll(isFolded) {
      const row = rows.rows[rows.selected];
      let at = row ? row.at : -1;
      folded.clear();
      if (isFolded) steps.forEach((step, each) => folds(each) && folded.add(each));
      // What hides the chosen step is chosen instead.
      for (const each of at >= 0 ? pathTo(steps, at) : []) {
        if (!folded.has(each)) continue;
        at = each;
        break;
      }
      refresh(at);
    }

    function move(by) {
      rows.select(rows.selected < 0 ? 0 : rows.selected + by);
    }

    function keys(event) {
      const row = rows.rows[rows.selected];
      const at = row ? row.at : -1;
      const act = {
        ArrowDown: () => move(1), ArrowUp: () => move(-1), j: () => move(1), k: () => move(-1),
        PageDown: () => move(rows.page()), PageUp: () => move(-rows.page()),
        Home: () => rows.select(0), End: () => rows.select(rows.rows.length - 1),
        ArrowRight: () => (at >= 0 && folded.has(at) ? toggle(at) : move(1)),
        ArrowLeft: () => {
          if (at >= 0 && folds(at) && !folded.has(at)) return toggle(at);
          for (let each = at >= 0 ? steps[at].parent : -1; each >= 0; each = steps[each].parent) {
            if (folds(each)) return select(steps[each].number);
          }
          return undefined;
        },
        Enter: () => at >= 0 && folds(at) && toggle(at), '*': () => foldAll(false),
      }[event.key];
      if (!act || event.ctrlKey || event.altKey || event.metaKey) return;
      event.preventDefault();
      act();
    }

    function select(number, wantsFocus) {
      const at = steps.findIndex((step) => step.number === number);
      if (at < 0 || rows === null) return;
      for (let each = steps[at].parent; each >= 0; each = steps[each].parent) folded.delete(each);
      refresh(at);
      rows.select(rows.selected);
      if (!wantsFocus) return;
      tree.scrollIntoView({ block: 'nearest' });
      tree.focus({ preventScroll: true });
    }

    function find(text) {
      const wanted = text.trim().toLowerCase();
      hits = new Set();
      if (wanted !== '') {
        const holds = (each) => each.toLowerCase().includes(wanted);
        const rules = data.rules.map((rule) => holds(rule.place) || holds(rule.text) || holds(rule.source || '') || holds(rule.values || ''));
        const states = data.states.map(([, form, attrs]) => holds(form) || holds(attrs));
        steps.forEach((step, at) => {
          const isChanged = () => difference(data, step).some((each) => states[each.state] || holds(changeText(data, each)));
          const list = listOf(data, step.before);
          const isInWindow = step.beforeAt >= 0 && [list[step.beforeAt], list[step.beforeAt + 1]].some((state) => state >= 0 && states[state]);
          if ((step.rule >= 0 && rules[step.rule]) || isInWindow || isChanged()) hits.add(at);
        });
      }
      rows?.redraw();
      return hits.size;
    }

    function nextHit(by) {
      const row = rows.rows[rows.selected];
      const at = row ? row.at : -1;
      const list = [...hits];
      const next = by > 0 ? list.find((each) => each > at) ?? list[0] : list.findLast((each) => each < at) ?? list[list.length - 1];
      select(steps[next].number);
    }

    return { select: (number) => select(number), find };
  };
})();
