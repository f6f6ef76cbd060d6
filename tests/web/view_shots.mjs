// The pictures of the manual that show the page of `lexon-lab view`: view_shots.mjs FOLDER
import { join } from 'node:path';
import { browser } from './browser.mjs';
import { failing, view } from './view_page.mjs';

const folder = process.argv[2];
const chromium = await browser();

async function shot(name, address, size, act) {
  const page = await chromium.newPage({ viewport: size, deviceScaleFactor: 1 });
  await page.goto(address);
  await act(page);
  await page.screenshot({ path: join(folder, `${name}.png`) });
  await page.close();
}

const all = view('english', null).address;
await shot('view', `${all}#13`, { width: 1200, height: 900 }, (page) => page.focus('[role=tree]', { preventScroll: true }));
await shot('view-step', `${all}#38`, { width: 1200, height: 760 }, async (page) => {
  await page.focus('[role=tree]');
  for (let i = 0; i < 3; ++i) await page.keyboard.press('ArrowDown');
  await page.keyboard.press('*');
  await page.locator('.lx-steps').scrollIntoViewIfNeeded();
  await page.evaluate(() => document.querySelector('.lx-steps').scrollIntoView());
});
await shot('view-failed', view('english', failing).address, { width: 1200, height: 800 }, async () => {});
await chromium.close();
