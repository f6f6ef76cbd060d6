// A browser, and the program that serves it a copy of an example.
import { spawn } from 'node:child_process';
import { cpSync, existsSync, mkdtempSync, rmSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';

export const root = join(dirname(fileURLToPath(import.meta.url)), '..', '..');
const require = createRequire(join(process.env.LEXON_NODE_MODULES, 'node_modules', 'x.js'));
const { chromium } = require('playwright-core');

export async function browser() {
  const path = ['/usr/bin/chromium', '/usr/bin/chromium-browser', '/usr/bin/google-chrome'].find((each) => existsSync(each));
  return chromium.launch({ executablePath: path, args: ['--no-sandbox', '--disable-gpu'] });
}

// The program at work on a folder. `prepare` may change the copy before it begins.
export async function serve(example, prepare = () => {}, words = []) {
  const base = mkdtempSync(join(tmpdir(), 'lexon-web-'));
  const folder = join(base, example.split('/').pop());
  cpSync(join(root, 'examples', example), folder, { recursive: true });
  prepare(folder);
  const program = spawn(join(process.env.LEXON_BIN, 'lexon-lab'), ['serve', folder, ...words], { stdio: ['ignore', 'pipe', 'ignore'] });
  const address = await new Promise((done, fail) => {
    createInterface({ input: program.stdout }).once('line', done);
    program.once('exit', (code) => fail(new Error(`lexon-lab serve ended with ${code}`)));
  });
  return {
    folder,
    address,
    async end() {
      program.removeAllListeners('exit');
      const ended = new Promise((done) => { program.once('exit', done); });
      program.kill('SIGINT');
      const code = await ended;
      rmSync(base, { recursive: true });
      return code;
    },
  };
}

// A page of the program, ready: all sentences have been run.
export async function open(context, site, hash = '') {
  const page = await context.newPage();
  page.faults = [];
  page.on('console', (message) => { if (['error', 'warning'].includes(message.type())) page.faults.push(message.text()); });
  page.on('pageerror', (fault) => page.faults.push(String(fault)));
  page.on('request', (request) => {
    const url = request.url();
    if (!url.startsWith(site.address) && !url.startsWith('data:')) page.faults.push(`asks for ${url}`);
  });
  await page.goto(site.address + hash);
  await page.waitForSelector('body[data-ready]');
  await page.waitForSelector('#gold li');
  await page.waitForSelector('#result[data-turn]');
  return page;
}
