// Starts the language server, `lexon-lab lsp`. The colours need none of this.
const vscode = require("vscode");

let client;

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
  if (stopped) await stopped.stop();
}

exports.activate = async (context) => {
  context.subscriptions.push(
    vscode.commands.registerCommand("lexon.restart", async () => {
      await stop();
      await start();
    }),
    vscode.workspace.onDidChangeConfiguration(async (change) => {
      if (!change.affectsConfiguration("lexon.server")) return;
      await stop();
      await start();
    }),
  );
  await start();
};

exports.deactivate = stop;
