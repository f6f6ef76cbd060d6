// The pictures of the page in the manual: web-test FOLDER BIN screenshots.mjs OUT.
import { join } from 'node:path';
import { browser, open, serve } from './browser.mjs';

const out = process.argv[2];
const chromium = await browser();
const site = await serve('english');
const context = await chromium.newContext({ viewport: { width: 1360, height: 900 }, colorScheme: 'light' });
const page = await open(context, site);
await page.locator('#folder').evaluate((each) => { each.textContent = 'examples/english'; });
await page.locator('#pane-rules .count.hit').first().waitFor();
for (let i = 0; i < 3; i += 1) await page.keyboard.press('Alt+ArrowDown');
await page.waitForFunction(() => document.querySelector('#label').textContent === 'S:4');
await page.screenshot({ path: join(out, 'page.png') });

// A rule that asks for the wrong name.
await page.locator('#pane-rules .cm-content').focus();
await page.keyboard.press('Control+f');
await page.keyboard.type('V,PTCP,@passive');
await page.keyboard.press('Enter');
await page.keyboard.press('Escape');
await page.keyboard.press('ArrowRight');
await page.keyboard.type(',done');
await page.keyboard.press('Control+s');
await page.locator('.sentences li.bad').first().waitFor();
await page.locator('#pane-rules .cm-lint-marker').first().waitFor();
await page.emulateMedia({ colorScheme: 'dark' });
await page.locator('.sentences li.bad').first().scrollIntoViewIfNeeded();
await page.screenshot({ path: join(out, 'page-broken.png') });
await context.close();
await chromium.close();
await site.end();
