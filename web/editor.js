// The editor of the page: CodeMirror with the colours of our files, findings and coverage in its margins. Bundled into one
// file, which gives the page `LexonEditor`; without it panes.js makes text areas do.
import { history, historyKeymap, defaultKeymap } from '@codemirror/commands';
import { HighlightStyle, StreamLanguage, bracketMatching, syntaxHighlighting } from '@codemirror/language';
import { lintGutter, lintKeymap, setDiagnostics } from '@codemirror/lint';
import { highlightSelectionMatches, search, searchKeymap } from '@codemirror/search';
import { Compartment, EditorState, RangeSet, StateEffect, StateField } from '@codemirror/state';
import {
  EditorView, GutterMarker, drawSelection, gutter, highlightActiveLine, highlightActiveLineGutter, keymap, lineNumbers,
} from '@codemirror/view';
import { tags } from '@lezer/highlight';

// ---- Colours

// Each kind: what a line may begin with, and what stands in it. The first expression that fits takes its text.
const kinds = {
  rules: {
    lines: [
      [/^[ \t]*%;.*/, 'comment'],
      [/^[ \t]*%(define|list|table|for|if|elif|else|end|include)\b/, 'keyword'],
      [/^[ \t]*;.*/, 'comment'],
      [/^[ \t]*(P(<<?|>>?|[:LR]|S[LR])|\?[LR]?|C[LR]?|D[LR]|[:LRX12])(?=[{("])/, 'keyword'],
    ],
    tokens: [
      [/^\[\[[^\]]*\]\]/, 'typeName'], [/^\[[^\]]*\]/, 'string'], [/^P[0-9]+/, 'number'], [/^;.*/, 'comment'],
      [/^%[({]?\w+[)}]?/, 'variableName'], [/^\^[^,:}")]*/, 'invalid'], [/^[-+][^,:}")]+/, 'operator'],
      [/^[{}"():,*]/, 'punctuation'], [/^[@<>!][^,:}"\s)]*/, 'labelName'], [/^[^\s,:}{")(;[%P^+-]+/, 'attributeName'],
    ],
  },
  words: {
    lines: [[/^[ \t]*;.*/, 'comment']],
    tokens: [
      [/^\[[^\]]*\]/, 'string'], [/^\{[^}]*\}/, 'labelName'], [/^"[^"]*"/, 'typeName'], [/^<[^>]*>/, 'number'],
      [/^;.*/, 'comment'], [/^[(),]/, 'punctuation'], [/^[^\s(),;<"[{]+/, 'attributeName'],
    ],
  },
  graph: {
    lines: [[/^[ \t]*;.*/, 'comment'], [/^[ \t]*\[\/?[SWPD](:[^\]]*)?\].*/, 'keyword'], [/^[^\s(:]+(?=(:\d\d)?\()/, 'labelName']],
    tokens: [
      [/^:\d\d/, 'number'], [/^"[^"]*"/, 'string'], [/^\.@[^\s.,()]+/, 'attributeName'], [/^[(),]/, 'punctuation'],
      [/^[^\s(),."]+/, 'typeName'],
    ],
  },
  gold: { lines: [[/^;.*/, 'comment'], [/^\[S.*/, 'keyword']], tokens: [] },
  plain: { lines: [[/^[ \t]*%;.*/, 'comment']], tokens: [] },
};

function language(kind) {
  const { lines, tokens } = kinds[kind] || kinds.plain;
  return StreamLanguage.define({
    name: kind,
    token(stream) {
      if (stream.sol()) {
        for (const [form, name] of lines) if (stream.match(form)) return name;
      }
      if (stream.eatSpace()) return null;
      for (const [form, name] of tokens) if (stream.match(form)) return name;
      if (!tokens.length) stream.skipToEnd();
      else stream.next();
      return null;
    },
  });
}

const colours = HighlightStyle.define([
  { tag: tags.comment, class: 'tok-comment' }, { tag: tags.keyword, class: 'tok-keyword' },
  { tag: tags.string, class: 'tok-form' }, { tag: tags.typeName, class: 'tok-concept' },
  { tag: tags.number, class: 'tok-number' }, { tag: tags.invalid, class: 'tok-not' },
  { tag: tags.operator, class: 'tok-action' }, { tag: tags.attributeName, class: 'tok-attribute' },
  { tag: tags.labelName, class: 'tok-label' }, { tag: tags.variableName, class: 'tok-keyword' },
  { tag: tags.punctuation, class: 'tok-mark' },
]);

// ---- Coverage in the margin

const setCounts = StateEffect.define();

class CountMarker extends GutterMarker {
  constructor(count) {
    super();
    this.count = count;
  }

  eq(other) { return other.count.shown === this.count.shown && other.count.title === this.count.title; }

  toDOM() {
    const mark = document.createElement('span');
    mark.className = `count ${this.count.level}`;
    mark.textContent = this.count.shown;
    mark.title = this.count.title;
    return mark;
  }
}

const counts = StateField.define({
  create: () => RangeSet.empty,
  update(marks, transaction) {
    let now = marks.map(transaction.changes);
    for (const effect of transaction.effects) {
      if (!effect.is(setCounts)) continue;
      const doc = transaction.state.doc;
      const list = effect.value.filter((count) => count.line <= doc.lines).sort((a, b) => a.line - b.line);
      now = RangeSet.of(list.map((count) => new CountMarker(count).range(doc.line(count.line).from)));
    }
    return now;
  },
});

const countGutter = gutter({ class: 'cm-counts', markers: (view) => view.state.field(counts) });

// ---- The editor

function create(parent, { label, kind, text, onChange, onCaret }) {
  const writable = new Compartment();
  const state = EditorState.create({
    doc: text,
    extensions: [
      kind === 'rules' ? [counts, countGutter] : counts,
      lineNumbers(), lintGutter(), history(), drawSelection(), highlightActiveLine(), highlightActiveLineGutter(),
      bracketMatching(), highlightSelectionMatches(), search({ top: true }), language(kind), syntaxHighlighting(colours),
      keymap.of([...defaultKeymap, ...historyKeymap, ...searchKeymap, ...lintKeymap]),
      EditorView.contentAttributes.of({ 'aria-label': label, spellcheck: 'false', autocorrect: 'off' }),
      writable.of([]),
      EditorView.updateListener.of((update) => {
        if (update.docChanged) onChange();
        else if (update.selectionSet) onCaret();
      }),
    ],
  });
  const view = new EditorView({ state, parent });
  const place = (line, column) => {
    const found = view.state.doc.line(Math.min(Math.max(line, 1), view.state.doc.lines));
    if (!column) return found.from;
    // Columns count characters, positions are units of UTF-16.
    return found.from + [...found.text].slice(0, column - 1).join('').length;
  };
  return {
    getText: () => view.state.doc.toString(),
    setText(now) {
      const { from, to } = smallestChange(view.state.doc.toString(), now);
      view.dispatch({ changes: { from, to: from + to.removed, insert: to.inserted } });
    },
    focus: () => view.focus(),
    caretLine: () => view.state.doc.lineAt(view.state.selection.main.head).number,
    goTo(line, column) {
      const at = place(line, column);
      view.dispatch({ selection: { anchor: at }, effects: EditorView.scrollIntoView(at, { y: 'center' }) });
    },
    setFindings(findings) {
      const marks = findings.filter((each) => each.line > 0 && each.line <= view.state.doc.lines).map((each) => {
        const line = view.state.doc.line(each.line);
        const from = place(each.line, each.column);
        const to = each.end > each.column ? Math.min(place(each.line, each.end), line.to) : line.to;
        return {
          from: Math.min(from, line.to), to: Math.max(from, to),
          severity: each.level === 'note' ? 'info' : each.level, source: each.code,
          message: each.fix ? `${each.text}\n${each.fix}` : each.text,
        };
      });
      view.dispatch(setDiagnostics(view.state, marks));
    },
    setCounts: (list) => view.dispatch({ effects: setCounts.of(list) }),
    setReadOnly: (isIt) => view.dispatch({ effects: writable.reconfigure(isIt ? EditorState.readOnly.of(true) : []) }),
    layout: () => view.requestMeasure(),
  };
}

// What differs, so that the caret and the history of changes stay.
function smallestChange(before, now) {
  let from = 0;
  while (from < before.length && from < now.length && before[from] === now[from]) from += 1;
  let tail = 0;
  while (tail < before.length - from && tail < now.length - from
    && before[before.length - 1 - tail] === now[now.length - 1 - tail]) tail += 1;
  return { from, to: { removed: before.length - tail - from, inserted: now.slice(from, now.length - tail) } };
}

window.LexonEditor = { create };
