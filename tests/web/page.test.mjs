// The page of `lexon-lab serve` in a real browser, with the editor and with plain text areas.
import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { after, before, test } from 'node:test';
import { browser, open, serve } from './browser.mjs';

let chromium;
before(async () => { chromium = await browser(); });
after(() => chromium.close());

// Runs `work` with a page on a copy of an example; nothing may have gone wrong on the page.
async function onPage(example, { prepare, hash, words }, work) {
  const site = await serve(example, prepare, words);
  const context = await chromium.newContext({ viewport: { width: 1300, height: 900 } });
  try {
    const page = await open(context, site, hash);
    await work(page, site);
    assert.deepEqual(page.faults, []);
  } finally {
    await context.close();
    assert.equal(await site.end(), 0);
  }
}

const sentence = (page, text) => page.waitForFunction((wanted) => document.querySelector('#sentence').textContent === wanted, text);
const badge = (page, tab, text) => page.waitForFunction(([name, wanted]) => document.querySelector(`#tab-${name} .badge`).textContent === wanted, [tab, text]);
// The browser itself tells of every answer of such a status.
const allow = (page, status) => { page.faults = page.faults.filter((fault) => !fault.includes(`status of ${status}`)); };
// Puts the caret behind the first place where the pane's file has `text`, and types.
async function type(page, pane, text, keys) {
  const editor = page.locator(`#pane-${pane} .editor:not([hidden]) :is(.cm-content, textarea)`);
  if (await editor.evaluate((each) => each.tagName === 'TEXTAREA')) {
    await editor.evaluate((area, [wanted]) => {
      const at = area.value.indexOf(wanted) + wanted.length;
      area.focus();
      area.setSelectionRange(at, at);
    }, [text]);
  } else {
    await editor.focus();
    await page.keyboard.press('Control+f');
    await page.keyboard.type(text);
    await page.keyboard.press('Enter');
    await page.keyboard.press('Escape');
    await page.keyboard.press('ArrowRight');
  }
  for (const key of keys) await (key.length > 1 ? page.keyboard.press(key) : page.keyboard.type(key));
}

for (const hash of ['', '#plain']) {
  const kind = hash ? 'text areas' : 'the editor';
  test(`${kind}: the result under the keys, saved by an act alone, gold that turns`, () => onPage('english', { hash }, async (page, site) => {
    assert.equal(await page.locator('.cm-editor').count() > 0, !hash, `this program was built with${hash ? '' : 'out'} the editor: make web`);
    await sentence(page, 'The dog slept.');
    await badge(page, 'gold', '64/64');
    const before = readFileSync(join(site.folder, 'input.txt'), 'utf8');
    await type(page, 'graphs', 'agn(sleep(>rest).@entry', ['.', '@', 'n', 'o', 't']);
    await sentence(page, 'The dog didn\'t sleep.');
    assert.equal(readFileSync(join(site.folder, 'input.txt'), 'utf8'), before);
    // Pressed twice it is not taken for a change from elsewhere.
    await Promise.all([page.keyboard.press('Control+s'), page.keyboard.press('Control+s')]);
    await badge(page, 'gold', '63/64');
    assert.equal(await page.locator('.sentences li.bad em').textContent(), 'broken');
    assert.match(readFileSync(join(site.folder, 'input.txt'), 'utf8'), /@entry\.@not/);
    for (let i = 0; i < 5; i += 1) await page.keyboard.press('Backspace');
    await page.keyboard.press('Control+s');
    await badge(page, 'gold', '64/64');
    assert.equal(await page.locator('.sentences li.turned em').textContent(), 'mended');
    assert.equal(readFileSync(join(site.folder, 'input.txt'), 'utf8'), before);
    await page.keyboard.press('Alt+ArrowDown');
    await sentence(page, 'Two dogs are walking in the park.');
  }));

  test(`${kind}: a file that changes on the disk is never overwritten`, () => onPage('english', { hash }, async (page, site) => {
    const path = join(site.folder, 'rules.lxr');
    const first = readFileSync(path, 'utf8');
    writeFileSync(path, `${first}; theirs\n`);
    await page.waitForFunction(() => document.querySelector('#notice').textContent.includes('read again'));
    await type(page, 'rules', '; theirs', ['!']);
    writeFileSync(path, `${first}; theirs again\n`);
    await page.keyboard.press('Control+s');
    const bar = page.locator('#pane-rules .banner:not([hidden])');
    await bar.waitFor();
    allow(page, '409');
    assert.equal(readFileSync(path, 'utf8'), `${first}; theirs again\n`);
    await bar.getByRole('button', { name: 'Keep mine' }).click();
    assert.equal(readFileSync(path, 'utf8'), `${first}; theirs again\n`);
    await page.locator('#save-all').click();
    await page.waitForFunction(() => document.querySelector('#save-all').disabled);
    assert.equal(readFileSync(path, 'utf8'), `${first}; theirs!\n`);
  }));
}

test('findings and coverage stand in the margin, and lead to their place', () => onPage('english', {}, async (page) => {
  await page.locator('#pane-rules .count.hit').first().waitFor();
  await type(page, 'rules', ':{[<<]} {V,ING,@progress', [',', 'n', 'o', 's', 'u', 'c', 'h']);
  await page.locator('#pane-rules .cm-lint-marker').first().waitFor();
  await page.locator('#tab-findings').click();
  const found = page.locator('#findings li', { hasText: 'nosuch' }).first();
  await page.getByLabel('input.txt').focus();
  await found.locator('button').click();
  assert.equal(await page.locator('#pane-rules .cm-activeLine', { hasText: 'nosuch' }).count(), 1);
  await page.locator('#tab-coverage').click();
  assert.match(await page.locator('#coverage p').textContent(), /\d+ of \d+ lines with rules/);
  await page.locator('#tab-steps').click();
  await page.locator('#steps [role=treeitem]').first().click();
  await page.locator('#steps .lx-link', { hasText: /^rules\.lxr:\d+$/ }).first().click();
  assert.equal(await page.evaluate(() => document.activeElement.getAttribute('aria-label')), 'rules.lxr');
}));

test('text areas: findings stand beside the text, and lead to their place', () => onPage('english', { hash: '#plain' }, async (page) => {
  await type(page, 'rules', ':{[<<]} {V,ING,@progress', [',', 'n', 'o', 's', 'u', 'c', 'h']);
  const found = page.locator('#pane-rules .beside li', { hasText: 'nosuch' }).first();
  await found.waitFor();
  const line = () => page.getByLabel('rules.lxr', { exact: true }).evaluate((area) => area.value.slice(0, area.selectionStart).split('\n').length);
  const wanted = await line();
  await page.keyboard.press('Control+Home');
  await found.locator('button').click();
  assert.equal(await line(), wanted);
  await page.keyboard.press('Control+Home');
  for (let presses = 0; presses < 50 && await line() !== wanted; presses += 1) await page.keyboard.press('F8');
  assert.equal(await line(), wanted);
}));

test('rules without end do not keep the page busy', () => onPage('english', {
  words: ['-T', '2'],
  prepare(folder) {
    const letters = [...'abcdefghi'];
    const chain = letters.slice(1).map((each, at) => `nxt(${letters[at]}${at ? '' : '.@entry'},${each})\n`);
    writeFileSync(join(folder, 'rules.lxr'), 'R{OK:::}{STAIL:::}P1;\n');
    writeFileSync(join(folder, 'input.txt'), `[S:1]\n${chain.join('')}[/S]\n`);
    writeFileSync(join(folder, 'expected.txt'), '');
    writeFileSync(join(folder, 'entries.txt'), letters.flatMap((each) => [...'0123456789'].map((n) => `[${each}${n}]{} "${each}" (N);\n`)).join(''));
  },
}, async (page) => {
  await sentence(page, 'no sentence');
  await page.getByLabel('rules.lxr').focus();
  await page.keyboard.insertText(':{N:::}"N::nxt:"P9;\nR{:::}{^STAIL:::}P5;\n');
  await sentence(page, 'took too long');
  await page.keyboard.press('Control+z');
  await sentence(page, 'no sentence');
}));

test('line ends stay, and what a page would damage is not edited', () => onPage('turkish', {
  prepare(folder) {
    const rules = readFileSync(join(folder, 'rules.txt'), 'utf8');
    writeFileSync(join(folder, 'rules.txt'), rules.replaceAll('\n', '\r\n'));
    writeFileSync(join(folder, 'expected.txt'), Buffer.from('k\xf6y\n', 'latin1'));
    writeFileSync(join(folder, 'entries.txt'), `${readFileSync(join(folder, 'entries.txt'), 'utf8')}; one\r\n`);
  },
}, async (page, site) => {
  await page.locator('#pane-rules .cm-content').focus();
  await page.keyboard.press('Control+End');
  await page.keyboard.type('; more');
  await page.keyboard.press('Control+s');
  await page.waitForFunction(() => document.querySelector('#notice').textContent.includes('saved'));
  const now = readFileSync(join(site.folder, 'rules.txt'), 'utf8');
  assert.ok(now.endsWith('\r\n; more') && !/[^\r]\n/.test(now));
  assert.match(await page.locator('#pane-words .banner').textContent(), /mixes line ends/);
  await page.locator('#pane-graphs select').selectOption('expected.txt');
  assert.match(await page.locator('#pane-graphs .refused').textContent(), /expected\.txt:1: .*UTF-8/);
  allow(page, '415');
}));

test('with the keyboard alone, and names for all that can be reached', () => onPage('english', {}, async (page) => {
  const nameless = await page.evaluate(() => [...document.querySelectorAll('button, select, textarea, [role=textbox], [tabindex="0"]')]
    .filter((each) => each.offsetParent && !(each.getAttribute('aria-label') || each.getAttribute('aria-labelledby') || each.textContent.trim()))
    .map((each) => each.outerHTML.slice(0, 120)));
  assert.deepEqual(nameless, []);
  const stops = [];
  for (let i = 0; i < 5; i += 1) {
    await page.keyboard.press('F6');
    stops.push(await page.evaluate(() => document.activeElement.closest('section').id));
  }
  assert.deepEqual(stops, ['pane-words', 'pane-rules', 'result', 'below', 'pane-graphs']);
  await page.keyboard.press('Shift+F6');
  await page.keyboard.press('ArrowRight');
  assert.equal(await page.locator('[role=tab][aria-selected=true]').getAttribute('id'), 'tab-findings');
  for (const scheme of ['light', 'dark']) {
    await page.emulateMedia({ colorScheme: scheme });
    const contrast = await page.evaluate(() => {
      const brightness = (colour) => {
        const [r, g, b] = colour.match(/[\d.]+/g).slice(0, 3).map((each) => {
          const part = each / 255;
          return part <= 0.03928 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4;
        });
        return 0.2126 * r + 0.7152 * g + 0.0722 * b;
      };
      const ground = brightness(getComputedStyle(document.querySelector('.pane')).backgroundColor);
      return Math.min(...[...document.querySelectorAll('.cm-content span, #label, #figures, .place, .badge, .mark')].map((each) => {
        const ink = brightness(getComputedStyle(each).color);
        return (Math.max(ink, ground) + 0.05) / (Math.min(ink, ground) + 0.05);
      }));
    });
    assert.ok(contrast >= 4.5, `${scheme}: the faintest text has a contrast of ${contrast.toFixed(2)}`);
  }
}));
