// lexon-lab lsp as an editor's own library speaks with it: the examples, and what a user does with them.
//
// LEXON_NODE_MODULES names the folder with the library's packages, LEXON_LAB the program.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import fs from "node:fs";
import { createRequire } from "node:module";
import os from "node:os";
import path from "node:path";
import test from "node:test";
import { fileURLToPath, pathToFileURL } from "node:url";

const require = createRequire(path.join(process.env.LEXON_NODE_MODULES, "any.js"));
const rpc = require("vscode-jsonrpc/node");
const lsp = require("vscode-languageserver-protocol/node");

const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), "../../..");
const folder = fs.mkdtempSync(path.join(os.tmpdir(), "lexon-lsp-"));
for (const example of ["english", "turkish"]) {
  fs.cpSync(path.join(root, "examples", example), path.join(folder, example), { recursive: true });
}
const server = spawn(process.env.LEXON_LAB, ["lsp", "--stdio"], { stdio: ["pipe", "pipe", "inherit"] });
const ended = new Promise((resolve) => server.on("exit", resolve));
const connection = rpc.createMessageConnection(
  new rpc.StreamMessageReader(server.stdout),
  new rpc.StreamMessageWriter(server.stdin),
);
const findings = new Map();
const waiting = [];
connection.onNotification(lsp.PublishDiagnosticsNotification.type, (params) => {
  findings.set(params.uri, params.diagnostics);
  for (const look of [...waiting]) look();
});
const registered = [];
connection.onRequest(lsp.RegistrationRequest.type, (params) => void registered.push(...params.registrations));
connection.listen();

const uri = (...names) => pathToFileURL(path.join(folder, ...names)).href;
const text = (...names) => fs.readFileSync(path.join(folder, ...names), "utf8");

function open(language, ...names) {
  return connection.sendNotification(lsp.DidOpenTextDocumentNotification.type, {
    textDocument: { uri: uri(...names), languageId: language, version: 1, text: text(...names) },
  });
}

// Resolves with the findings of a document once they are as wanted.
function found(of, wanted) {
  return new Promise((resolve) => {
    const look = () => {
      if (!findings.has(of) || !wanted(findings.get(of))) return;
      waiting.splice(waiting.indexOf(look), 1);
      resolve(findings.get(of));
    };
    waiting.push(look);
    look();
  });
}

function place(names, part, column) {
  const lines = text(...names).split("\n");
  const line = lines.findIndex((each) => each.includes(part));
  return { textDocument: { uri: uri(...names) }, position: { line, character: lines[line].indexOf(part) + column } };
}

test("a session of an editor", async (t) => {
  const started = await connection.sendRequest(lsp.InitializeRequest.type, {
    processId: process.pid,
    rootUri: pathToFileURL(folder).href,
    workspaceFolders: [{ uri: pathToFileURL(folder).href, name: "words" }],
    capabilities: {
      workspace: {
        workspaceEdit: { documentChanges: true },
        didChangeWatchedFiles: { dynamicRegistration: true },
      },
      textDocument: {
        hover: { contentFormat: ["markdown"] },
        documentSymbol: { hierarchicalDocumentSymbolSupport: true },
      },
    },
    initializationOptions: { delay: 1 },
  });
  assert.equal(started.capabilities.textDocumentSync.change, lsp.TextDocumentSyncKind.Incremental);
  await connection.sendNotification(lsp.InitializedNotification.type, {});

  await t.test("the source of an example, with what it includes in one project", async () => {
    await open("lexon-rules", "english", "rules.lxr");
    const shown = await found(uri("english", "rules.lxr"), () => true);
    assert.deepEqual(shown.filter((each) => each.severity === lsp.DiagnosticSeverity.Error), []);
    const hover = await connection.sendRequest(lsp.HoverRequest.type, place(["english", "rules.lxr"], "V,PAST,@past", 8));
    assert.match(hover.contents.value, /attribute `@past`/);
    const symbols = await connection.sendRequest(lsp.DocumentSymbolRequest.type, {
      textDocument: { uri: uri("english", "rules.lxr") },
    });
    assert.ok(symbols.some((each) => each.name.startsWith("1. The form of the predicate") && each.children.length > 5));
  });

  await t.test("another project beside it", async () => {
    await open("lexon-rules", "turkish", "rules.txt");
    const shown = await found(uri("turkish", "rules.txt"), () => true);
    assert.deepEqual(shown.filter((each) => each.severity === lsp.DiagnosticSeverity.Error), []);
  });

  await t.test("a rename over all files keeps within its project", async () => {
    const params = { ...place(["english", "rules.lxr"], "V,PAST,@past", 8), newName: "@gone" };
    assert.equal(
      (await connection.sendRequest(lsp.PrepareRenameRequest.type, params)).placeholder,
      "@past",
    );
    const edit = await connection.sendRequest(lsp.RenameRequest.type, params);
    const files = edit.documentChanges.map((each) => path.relative(folder, fileURLToPath(each.textDocument.uri))).sort();
    assert.deepEqual(files, ["english/input.txt", "english/rules.lxr"]);
    await assert.rejects(
      connection.sendRequest(lsp.RenameRequest.type, { ...params, newName: "SHEAD" }),
      (fault) => fault.code === lsp.LSPErrorCodes.RequestFailed,
    );
  });

  await t.test("a slip in the graphs is told while it is typed, and mended", async () => {
    await open("lexon-graph", "english", "input.txt");
    const at = place(["english", "input.txt"], "agn(sleep", 0).position;
    const range = { start: at, end: { line: at.line, character: at.character + 3 } };
    await connection.sendNotification(lsp.DidChangeTextDocumentNotification.type, {
      textDocument: { uri: uri("english", "input.txt"), version: 2 },
      contentChanges: [{ range, text: "agx" }],
    });
    const shown = await found(uri("english", "input.txt"), (all) => all.some((each) => each.code === "unfollowed-label"));
    const slip = shown.find((each) => each.code === "unfollowed-label");
    assert.deepEqual(slip.range, range);
    const items = await connection.sendRequest(lsp.CompletionRequest.type, {
      textDocument: { uri: uri("english", "input.txt") },
      position: { line: at.line, character: at.character + 2 },
    });
    assert.ok(items.items.some((each) => each.label === "agn"));
    await connection.sendNotification(lsp.DidChangeTextDocumentNotification.type, {
      textDocument: { uri: uri("english", "input.txt"), version: 3 },
      contentChanges: [{ range, text: "agn" }],
    });
    await found(uri("english", "input.txt"), (all) => !all.some((each) => each.code === "unfollowed-label"));
  });

  await t.test("lexon.json says which findings are not wanted", async () => {
    const codes = new Set([...findings.values()].flat().map((each) => each.code));
    fs.writeFileSync(path.join(folder, "english", "lexon.json"), JSON.stringify({ no: [...codes] }));
    await connection.sendNotification(lsp.DidChangeWatchedFilesNotification.type, {
      changes: [{ uri: uri("english", "lexon.json"), type: lsp.FileChangeType.Created }],
    });
    await found(uri("english", "rules.lxr"), (all) => all.length === 0);
  });

  await t.test("what is cancelled is answered all the same", async () => {
    const many = Array.from({ length: 50 }, () => {
      const source = new rpc.CancellationTokenSource();
      const answer = connection.sendRequest(
        lsp.ReferencesRequest.type,
        { ...place(["english", "rules.lxr"], "V,PAST,@past", 1), context: { includeDeclaration: true } },
        source.token,
      );
      source.cancel();
      return answer.then((list) => list.length > 0, (fault) => fault.code === lsp.LSPErrorCodes.RequestCancelled);
    });
    assert.ok((await Promise.all(many)).every((each) => each));
  });

  await t.test("the end", async () => {
    assert.ok(registered.some((each) => each.method === "workspace/didChangeWatchedFiles"));
    await connection.sendRequest(lsp.ShutdownRequest.type);
    await connection.sendNotification(lsp.ExitNotification.type);
    assert.equal(await ended, 0);
    connection.dispose();
    fs.rmSync(folder, { recursive: true });
  });
});
