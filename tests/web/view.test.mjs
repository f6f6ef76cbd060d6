// The page of `lexon-lab view` in a real browser, by the keys alone.
import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { browser } from './browser.mjs';
import { failing, view } from './view_page.mjs';

let chromium;
before(async () => { chromium = await browser(); });
after(() => chromium.close());

// Opens the page; nothing may go wrong on it, and nothing may be asked for.
async function onPage(address, work) {
  const page = await chromium.newPage({ viewport: { width: 1300, height: 900 } });
  const faults = [];
  page.on('console', (message) => faults.push(message.text()));
  page.on('pageerror', (fault) => faults.push(String(fault)));
  page.on('request', (request) => { if (request.url() !== address) faults.push(`asks for ${request.url()}`); });
  await page.goto(address);
  await work(page);
  assert.deepEqual(faults, []);
  await page.close();
}
const heading = (page) => page.textContent('main h2');
const step = (page) => page.textContent('.lx-detail h4');
const count = (page, what) => page.locator(what).count();

test('sentences: failed ones first, arrow keys, the box', async () => {
  const { address, status } = view('english', `[S:1]\nagn(sleep(>rest).@entry.@past, dog(>animal).@def)\n[/S]\n${failing}`);
  assert.equal(status, 1);
  await onPage(address, async (page) => {
    assert.equal(await heading(page), 'This sentence failed');
    assert.match(await page.textContent('.lx-trouble'), /pat\(tired\(>state\), cat\(>animal\)\)/);
    await page.focus('.lx-sentences');
    await page.keyboard.press('ArrowDown');
    assert.equal(await heading(page), 'The dog slept.');
    await page.fill('nav input', 'tired');
    assert.equal(await page.textContent('nav [role=status]'), '1 of 2 sentences, 1 failed');
    await page.press('nav input', 'Enter');
    assert.equal(await heading(page), 'This sentence failed');
  });
});

test('steps: keys, folds, the step, the search', async () => {
  const { address } = view('english', null, ['-s', '38']);
  await onPage(address, async (page) => {
    await page.focus('[role=tree]');
    assert.match(await step(page), /^Step 1$/);
    assert.equal(await count(page, '.lx-list .lx-left'), 2);
    assert.match(await page.textContent('.lx-rule'), /^rules\.lxr:\d+/);
    const folds = await count(page, '[aria-expanded=false].lx-row');
    assert.ok(folds > 0);
    while (await page.getAttribute('.lx-row[aria-selected=true]', 'aria-expanded') !== 'false') await page.keyboard.press('ArrowDown');
    await page.keyboard.press('ArrowRight');
    assert.equal(await page.getAttribute('.lx-row[aria-selected=true]', 'aria-expanded'), 'true');
    await page.keyboard.press('ArrowDown');
    assert.match(await step(page), /taken back$/);
    await page.keyboard.press('ArrowLeft');
    await page.keyboard.press('ArrowLeft');
    assert.equal(await count(page, '[aria-expanded=false].lx-row'), folds);
    await page.fill('.lx-bar input', 'step back');
    assert.equal(await page.textContent('.lx-found'), 'nothing');
    await page.fill('.lx-bar input', '@past');
    assert.match(await page.textContent('.lx-found'), /^\d+ steps?$/);
    await page.press('.lx-bar input', 'Enter');
    assert.equal(await count(page, '.lx-row.lx-hit[aria-selected=true]'), 1);
  });
});

test('words: entry, attributes and their origin, rules', async () => {
  const { address } = view('english', null, ['-s', '1']);
  await onPage(address, async (page) => {
    await page.click('.lx-words button:text-is("dog")');
    const panel = '.lx-words + .lx-word';
    assert.match(await page.textContent(panel), /\[dog\]\{/);
    const from = async (attr) => page.locator(`${panel} tr`, { has: page.locator(`th:text-is("${attr}")`) }).locator('td').textContent();
    assert.equal(await from('N'), 'dictionary');
    assert.equal(await from('<agn'), 'graph');
    await page.click(`${panel} .lx-touched button`);
    assert.match(await step(page), /^Step \d+$/);
  });
});

test('text of graphs and rules stays text', async () => {
  const hostile = `[S:</script><script>alert(1)</script>]\nagn(sleep(>rest).@entry.@past, "<img src=x onerror=alert(1)>")\n[/S]\n`;
  const { address } = view('english', hostile);
  await onPage(address, async (page) => {
    assert.equal(await count(page, 'main img, main script'), 0);
    assert.match(await page.textContent('.lx-facts'), /<\/script>/);
    assert.match(await page.textContent('.lx-graph'), /<img src=x/);
  });
});

test('without Graphviz, in print, for a screen reader', async () => {
  const { address } = view('english', null, ['-s', '25', '-s', '2'], { path: '/nowhere' });
  await onPage(address, async (page) => {
    assert.match(await page.textContent('section .lx-notice'), /Graphviz/);
    assert.ok(await count(page, '.lx-node') > 2);
    await page.pdf();
    assert.ok(await count(page, '.lx-print tbody tr') > 2);
    const names = await page.locator('main, nav, section, [role=tree], [role=listbox], [role=region], input, svg').evaluateAll((all) =>
      all.filter((each) => each.tagName !== 'MAIN' && !each.hasAttribute('aria-label') && !each.hasAttribute('aria-hidden')).map((each) => each.outerHTML));
    assert.deepEqual(names, []);
  });
});

test('ten thousand steps: few elements', async () => {
  const { address } = view('english', null, ['-s', '1', '--steps', '30000'], { rules: ':{}{}P1;\nL:{}{}P9;\nR:{}{}P9;\n' });
  await onPage(address, async (page) => {
    await page.focus('[role=tree]');
    await page.keyboard.press('End');
    assert.ok(Number((await step(page)).replace(/\D/g, '')) >= 10000);
    assert.ok(await count(page, '.lx-row') < 100);
  });
});
