// What colour each piece of a line gets, by the engine that the editor itself uses. A row is a line, and for pieces of it
// the innermost scope (without ".lexon") that they must have.
//
// LEXON_NODE_MODULES names the folder with the engine's packages.
import assert from "node:assert/strict";
import fs from "node:fs";
import { createRequire } from "node:module";
import path from "node:path";
import test from "node:test";
import { fileURLToPath } from "node:url";

const modules = process.env.LEXON_NODE_MODULES;
const require = createRequire(path.join(modules, "any.js"));
const oniguruma = require("vscode-oniguruma");
const { Registry, INITIAL, parseRawGrammar } = require("vscode-textmate");

const here = path.dirname(fileURLToPath(import.meta.url));
const extension = path.dirname(here);
const root = path.resolve(extension, "../..");
const contributed = JSON.parse(fs.readFileSync(path.join(extension, "package.json"), "utf8")).contributes;

const wasm = fs.readFileSync(require.resolve("vscode-oniguruma/release/onig.wasm"));
await oniguruma.loadWASM(wasm);
const registry = new Registry({
  onigLib: Promise.resolve({
    createOnigScanner: (sources) => new oniguruma.OnigScanner(sources),
    createOnigString: (text) => new oniguruma.OnigString(text),
  }),
  loadGrammar: async (scope) => {
    const file = path.join(extension, contributed.grammars.find((grammar) => grammar.scopeName === scope).path);
    return parseRawGrammar(fs.readFileSync(file, "utf8"), file);
  },
});

const grammars = {};
for (const { language, scopeName } of contributed.grammars) grammars[language] = await registry.loadGrammar(scopeName);

// The lines of a text, each as pieces [text, scopes].
function tokens(language, text) {
  let state = INITIAL;
  return text.split("\n").map((line) => {
    const result = grammars[language].tokenizeLine(line, state);
    state = result.ruleStack;
    return result.tokens.map((token) => [line.slice(token.startIndex, token.endIndex), token.scopes]);
  });
}

const innermost = (scopes) => scopes.at(-1).replace(/\.lexon$/, "");

// `wanted`: pieces in the order of the line, as [text, innermost scope]. Neighbours of one scope are one piece.
function check(language, text, wanted) {
  const pieces = [];
  for (const line of tokens(language, text)) {
    for (const [index, [piece, scopes]] of line.entries()) {
      const scope = innermost(scopes);
      if (index !== 0 && pieces.at(-1)[1] === scope) pieces.at(-1)[0] += piece;
      else pieces.push([piece, scope]);
    }
  }
  for (const piece of pieces) piece[0] = piece[0].trim();
  let from = 0;
  for (const [piece, scope] of wanted) {
    const at = pieces.findIndex(([other], index) => index >= from && other === piece);
    assert.notEqual(at, -1, `no piece "${piece}" in ${JSON.stringify(pieces.slice(from))}`);
    assert.equal(pieces[at][1], scope, `"${piece}" of ${text}`);
    from = at + 1;
  }
}

const rules = {
  "a grammar source": [
    "%for c in CASES %; why\n%list CASES\nnom\n%end\nR{%c}",
    [["%for", "keyword.control.directive"], ["%; why", "comment.line.source"], ["%list", "keyword.control.directive"],
      ["nom", "meta.values"], ["%end", "keyword.control.directive"], ["R", "keyword.control.type"]],
  ],
  "comments, and what stands behind a rule": [
    "; a comment {\nR{}{}P1; remark",
    [["; a comment {", "comment.line.semicolon"], ["R", "keyword.control.type"], ["1", "constant.numeric.priority"],
      ["; remark", "comment.line.remark"]],
  ],
  "types": [
    "P<<\"[n]\"{}P1\n?L{a}{}P1\nPSL{}{}P1\n+{}{}P1\nZ{}{}P1",
    [["P<<", "keyword.control.type.post-edit"], ["?L", "keyword.control.type"], ["PSL", "keyword.control.type.post-edit"],
      ["+", "invalid.deprecated.type"], ["Z{}{}P1", "invalid.illegal.type"]],
  ],
  "conditions": [
    ":{[went],[[go]],^N,@past,>agn,a(b)}{}P1",
    [["[went]", "string.quoted.other.surface"], ["[[go]]", "entity.name.type.concept"], ["^", "keyword.operator.negation"],
      ["N", "variable.other.attribute"], ["@past", "constant.other.attribute.graph"],
      [">agn", "entity.name.function.relation-mark"], ["a(b)", "variable.other.attribute"]],
  ],
  "surface forms with brackets, and an empty concept": [
    "L{[a]b], ^[\\[x\\]], N}{[[]]}P1",
    [["[a]b]", "string.quoted.other.surface"], [",", "punctuation.separator.item"], ["^", "keyword.operator.negation"],
      ["\\[", "constant.character.escape"], ["\\]", "constant.character.escape"], ["N", "variable.other.attribute"],
      ["[[]]", "entity.name.type.concept"], ["}", "punctuation.section.pattern.end"]],
  ],
  "the four sections": [
    ":{V:-@past,+set:agn:/tim/}\"N\"P9",
    [["V", "variable.other.attribute"], [":", "punctuation.separator.section"], ["-", "keyword.operator.remove"],
      ["@past", "constant.other.attribute.graph"], ["+", "keyword.operator.add"], ["set", "variable.other.attribute"],
      ["agn", "entity.name.function.relation"], ["/tim/", "variable.parameter.role"],
      ["\"", "punctuation.section.pattern.inserted.begin"], ["N", "variable.other.attribute"],
      ["\"", "punctuation.section.pattern.inserted.end"], ["P", "keyword.other.priority"]],
  ],
  "groups with and without a star": [
    ":(N,^[not])*{a}(MID)\"[there]\"(SUF)P1",
    [["(", "punctuation.section.group.begin"], ["N", "variable.other.attribute"], ["^", "keyword.operator.negation"],
      ["[not]", "string.quoted.other.surface"], ["*", "keyword.operator.quantifier"],
      ["MID", "variable.other.attribute"], ["SUF", "variable.other.attribute"]],
  ],
  "word classes": [":\"[#unit]\"{a}P1", [["#unit", "support.class.word-class"]]],
  "mistakes": [
    "R{a:^b::x:y}{::agents}(a:b)P1",
    [["^", "invalid.illegal.negation"], ["::", "punctuation.separator.section"], ["x", "variable.parameter.role"],
      [":", "invalid.illegal.section"], ["age", "entity.name.function.relation"], ["nts", "invalid.illegal.too-long"],
      [":", "invalid.illegal.in-group"]],
  ],
  "a pattern that is not closed ends with its line": [
    "R{a,[b\nR{c}{}P1",
    [["R", "keyword.control.type"], ["R", "keyword.control.type"], ["c", "variable.other.attribute"]],
  ],
};

const graphs = {
  "a sentence": [
    "[S:1]\nagn(sleep(>rest).@entry.@past, dog(>animal):02.@def)\n[/S]\nagn(a,b)",
    [["[S", "keyword.control.sentence.begin"], ["1", "entity.name.section"], ["agn", "entity.name.function.relation"],
      ["(", "punctuation.section.arguments.begin"], ["sleep", "entity.name.type.concept"],
      ["(>rest)", "support.type.restriction"], ["@entry", "keyword.other.entry"],
      ["@past", "constant.other.attribute.graph"], [",", "punctuation.separator.arguments"],
      ["dog", "entity.name.type.concept"], ["(>animal)", "support.type.restriction"], ["02", "constant.numeric.word"],
      ["@def", "constant.other.attribute.graph"], [")", "punctuation.section.arguments.end"],
      ["[/S]", "keyword.control.sentence.end"], ["agn(a,b)", "comment.line.ignored"]],
  ],
  "scopes": [
    "[S]\npat(know.@entry, :01)\nagn:01(a(b>c(d)), :02)\n[/S]",
    [["know", "entity.name.type.concept"], ["01", "variable.other.scope"], ["agn", "entity.name.function.relation"],
      ["01", "constant.numeric.scope"], ["a", "entity.name.type.concept"], ["(b>c(d))", "support.type.restriction"],
      ["02", "variable.other.scope"]],
  ],
  "blocks": [
    "{note:en}\nagn(a,b)\n[/S]\n{/note}\n{sem}\n[W]\n;c\ndog.@pl\n[/W]\n[R]\nx\n[/R]\nnot a relation\nbeneficiary(a,b)\n{/sem}",
    [["note", "entity.name.tag"], ["agn(a,b)", "comment.block.hidden"], ["[/S]", "comment.block.hidden"],
      ["note", "entity.name.tag"], ["{sem}", "keyword.control.graph.begin"], ["[W]", "keyword.control.words.begin"],
      [";c", "comment.line.semicolon"], ["dog", "entity.name.type.concept"], ["[/W]", "keyword.control.words.end"],
      ["x", "comment.block.hidden"], ["not a relation", "invalid.illegal.relation"],
      ["beneficiary(a,b)", "invalid.illegal.relation"],
      ["{/sem}", "keyword.control.graph.end"]],
  ],
};

const entries = {
  "an entry with all fields": [
    "[ran]{run} moved fast \"run(>move){note}\" (V,a(b,c)) <E,9,2>; x[one]{two}",
    [["[ran]", "string.quoted.other.surface"], ["run", "variable.other.id"], ["moved", "string.unquoted.gloss"],
      ["\"run(>move)", "entity.name.type.concept"], ["{note}", "comment.block.definition"],
      ["V", "variable.other.attribute"], ["a(b,c)", "variable.other.attribute"], ["E", "constant.language"],
      ["9", "constant.numeric.frequency"], ["2", "constant.numeric.priority"], [";", "punctuation.terminator.entry"],
      ["x", "constant.language"], ["[one]{two}", "string.quoted.other.extra"]],
  ],
  "what is no entry": ["dog\n; dog", [["dog", "invalid.illegal.entry"], ["; dog", "comment.line.semicolon"]]],
};

for (const [language, table] of Object.entries({ "lexon-rules": rules, "lexon-graph": graphs, "lexon-dictionary": entries })) {
  for (const [name, [text, wanted]] of Object.entries(table)) {
    test(`${language}: ${name}`, () => check(language, text, wanted));
  }
}

// The language of a file by its name, as the extension declares it.
function language_of(file) {
  const matches = (pattern) => new RegExp("^" + pattern.replaceAll(".", "\\.").replaceAll("*", ".*") + "$").test(file);
  return contributed.languages.find((language) => language.filenamePatterns.some(matches))?.id;
}

// The places of a text that show as errors.
function errors_of(language, text) {
  return tokens(language, text).flatMap((pieces, index) => {
    const wrong = pieces.find(([, scopes]) => scopes.some((scope) => scope.startsWith("invalid")));
    return wrong === undefined ? [] : [`${index + 1}: ${wrong[0]}`];
  });
}

// What stands in the examples and in the manual's files is right and shows no error, but for those about errors.
for (const folder of ["examples", "docs/tutorial", "docs/snippets"]) {
  test(`${folder} shows the errors that are there`, () => {
    let files = 0;
    for (const name of fs.readdirSync(path.join(root, folder), { recursive: true })) {
      const language = language_of(path.basename(name));
      if (language === undefined) continue;
      files += 1;
      const errors = errors_of(language, fs.readFileSync(path.join(root, folder, name), "utf8"));
      const is_about_errors = name.startsWith(language === "lexon-rules" ? "rule-errors" : "graph-errors");
      if (is_about_errors && language !== "lexon-dictionary") assert.notDeepEqual(errors, [], name);
      else assert.deepEqual(errors, [], name);
    }
    assert.ok(files >= 5, "the names of the files are not recognised");
  });
}
