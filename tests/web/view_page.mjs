// The page of `lexon-lab view` for an example, or for texts of a test, in a folder that goes with the process.
import { execFileSync } from 'node:child_process';
import { cpSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { root } from './browser.mjs';

export const failing = `[S:tired]
thm(tired(>state).@entry.@past, dog(>animal).@def)
pat(tired(>state), cat(>animal).@def)
[/S]
`;

// Renders `input`, a text, or the example's own if it is null. The address of the page, and the status.
export function view(example, input, words = [], { path = process.env.PATH, rules = null } = {}) {
  const folder = mkdtempSync(join(tmpdir(), 'lexon-view-'));
  process.on('exit', () => rmSync(folder, { recursive: true, force: true }));
  cpSync(join(root, 'examples', example), folder, { recursive: true });
  const run = (name, ...arguments_) => {
    try {
      execFileSync(join(process.env.LEXON_BIN, name), arguments_, { cwd: folder, stdio: 'pipe', env: { ...process.env, PATH: path } });
      return 0;
    } catch (fault) {
      return fault.status;
    }
  };
  if (input !== null) writeFileSync(join(folder, 'input.txt'), input);
  if (rules !== null) writeFileSync(join(folder, 'rules.txt'), rules);
  run('lexon-dict', 'build', 'entries.txt', 'words.dic');
  run('lexon-dict', 'build', 'cr.txt', 'cr.dic');
  const file = rules === null ? 'rules.lxr' : 'rules.txt';
  const status = run('lexon-lab', 'view', 'input.txt', '-d', 'words.dic', '-r', file, '-c', 'cr.dic', '-o', 'page.html', ...words);
  return { status, address: pathToFileURL(join(folder, 'page.html')).href };
}
