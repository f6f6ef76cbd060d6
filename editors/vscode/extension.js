// Starts the language server, `lexon-lab lsp`. The colours need none of this.
const vscode = require("vscode");

let client;
// Starts and stops come one behind the other: two changes of settings at once would leave a server that nobody stops.
let turn = Promise.resolve();

async function start() {
  const settings = vscode.workspace.getConfiguration("lexon");
  let LanguageClient;
  try {
    ({ LanguageClient } = require("vscode-languageclient/node"));
  } catch {
    vscode.window.showWarningMessage(
      "Lexon: only colours, since a package is missing: run `npm install --omit=dev` in the folder of the extension",
    );
    return;
  }
  const command = settings.get("server.path");
  if (!command) return;
  client = new LanguageClient(
    "lexon",
    "Lexon",
    { command, args: ["lsp", ...settings.get("server.arguments")] },
    {
      documentSelector: [
        { scheme: "file", language: "lexon-rules" },
        { scheme: "file", language: "lexon-graph" },
        { scheme: "file", language: "lexon-dictionary" },
        { scheme: "file", pattern: "**/lexon.json" },
      ],
      initializationOptions: { project: settings.get("project"), delay: settings.get("delay") },
      synchronize: { configurationSection: "lexon" },
    },
  );
  try {
    await client.start();
  } catch (fault) {
    client = undefined;
    vscode.window.showErrorMessage(
      `Lexon: "${command} lsp" cannot be started (${fault.message}): set "lexon.server.path" to the program lexon-lab`,
    );
  }
}

async function stop() {
  const stopped = client;
  client = undefined;
  // One that does not answer any more has been ended all the same.
  if (stopped) await stopped.stop().catch(() => {});
}

function restart() {
  turn = turn.catch(() => {}).then(stop).then(start);
  return turn;
}

exports.activate = (context) => {
  context.subscriptions.push(
    vscode.commands.registerCommand("lexon.restart", restart),
    vscode.workspace.onDidChangeConfiguration((change) => {
      if (change.affectsConfiguration("lexon.server")) restart();
    }),
  );
  return restart();
};

exports.deactivate = () => turn.catch(() => {}).then(stop);
