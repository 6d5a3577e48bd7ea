// The demo page: from two files to a downloaded share page.
import assert from 'node:assert';
import {readFileSync} from 'node:fs';
import {join} from 'node:path';
import {after, before, test} from 'node:test';
import {pathToFileURL} from 'node:url';

import {made, openBrowser, serve, until} from './harness.mjs';

let browser, server, base;
before(async () => {
  browser = await openBrowser();
  server = await serve();
  base = `http://127.0.0.1:${server.address().port}`;
});
after(async () => {
  await browser?.close();
  server?.close();
});

const ready = (page) => until('ready', () => page.evaluate(() => !!document.querySelector('parallax-photo[ready]')));

test('a photo and a depth map become a page that moves from the disk', async () => {
  const page = await browser.newPage();
  const asked = [];
  await page.goto(`${base}/web/demo/index.html`);
  page.on('request', (request) => asked.push(request));
  await page.locator('#photo').setInputFiles(join(made, 'photo.png'));
  await until('the question', async () => (await page.locator('#said').textContent()).includes('its depth map?'));
  await page.locator('#depth').setInputFiles(join(made, 'depth.png'));
  await ready(page);
  await page.locator('#alt').fill('A "lake" <at> dawn');
  await page.locator('#motion').selectOption('circle');
  await ready(page);
  await page.screenshot({path: join(made, 'demo.png'), fullPage: true});
  const download = page.waitForEvent('download');
  await page.locator('#save').click();
  const file = join(made, 'downloaded.html');
  await (await download).saveAs(file);
  assert.ok(asked.every((request) => request.method() === 'GET'), 'something is uploaded');
  await page.close();

  const shared = await browser.newPage();
  const said = [], other = [];
  shared.on('console', (message) => said.push(message.text()));
  shared.on('request', (request) => request.url().startsWith('data:') || other.push(request.url()));
  await shared.goto(pathToFileURL(file).href);
  await ready(shared);
  assert.strictEqual(await shared.title(), 'A "lake" <at> dawn');
  assert.strictEqual(await shared.evaluate(() => document.querySelector('parallax-photo').motion),
                     'pointer tilt keys circle');
  await shared.locator('parallax-photo').press('ArrowLeft');
  await until('a view from the left', () => shared.evaluate(() => document.querySelector('parallax-photo').view.x < -0.1));
  assert.deepStrictEqual(said, []);
  assert.deepStrictEqual(other, [pathToFileURL(file).href]);
  assert.ok(!/\{\{/.test(readFileSync(file, 'utf8')));
  await shared.close();
});

test('two dropped files find their places by their colours', async () => {
  const page = await browser.newPage();
  await page.goto(`${base}/web/demo/index.html`);
  await page.evaluate(async () => {
    const data = new DataTransfer();
    for (const name of ['depth', 'photo'])
      data.items.add(new File([await (await fetch(`/made/${name}.png`)).blob()], `${name}.png`, {type: 'image/png'}));
    document.dispatchEvent(new DragEvent('drop', {dataTransfer: data, bubbles: true, cancelable: true}));
  });
  await ready(page);
  assert.strictEqual(await page.locator('#said').textContent(), '');
  await page.close();
});

test('what is no picture is said in a sentence', async () => {
  const page = await browser.newPage();
  await page.goto(`${base}/web/demo/index.html`);
  await page.locator('#photo').setInputFiles({name: 'a.txt', mimeType: 'text/plain', buffer: Buffer.from('text')});
  await until('the sentence', async () =>
      (await page.locator('#said').textContent()) === 'a.txt: this browser cannot read it as a picture');
  await page.close();
});
