// The share page, opened from the disk as the person opens it who got it.
import assert from 'node:assert';
import {createHash} from 'node:crypto';
import {readFileSync} from 'node:fs';
import {join} from 'node:path';
import {after, before, test} from 'node:test';
import {pathToFileURL} from 'node:url';

import {accessibleNodes, made, openBrowser, until} from './harness.mjs';

const file = join(made, 'share.html');
const html = readFileSync(file, 'utf8');
const address = pathToFileURL(file).href;

let browser;
before(async () => {
  browser = await openBrowser();
});
after(() => browser?.close());

async function open({context = {}, script} = {}) {
  const page = await (await browser.newContext({viewport: {width: 360, height: 270}, ...context})).newPage();
  page.asked = [];
  page.on('request', (request) => request.url().startsWith('data:') || page.asked.push(request.url()));
  page.said = [];
  page.on('console', (message) => page.said.push(message.text()));
  page.on('pageerror', (error) => page.said.push(error.message));
  await page.addInitScript(() => {
    window.views = [];
    document.addEventListener('view', (event) => views.push(event.detail), true);
  });
  if (script) await page.addInitScript(script);
  await page.goto(address);
  return page;
}

const close = (page) => page.context().close();
const ready = (page) => until('ready', () => page.evaluate(() => !!document.querySelector('parallax-photo[ready]')));
const view = (page) => page.evaluate(() => document.querySelector('parallax-photo').view);

/** How many colours the screenshot has, which is one where nothing is shown. */
async function colours(page) {
  const png = (await page.screenshot()).toString('base64');
  const other = await browser.newPage();
  const count = await other.evaluate(async (data) => {
    const image = new Image();
    image.src = `data:image/png;base64,${data}`;
    await image.decode();
    const canvas = document.createElement('canvas');
    [canvas.width, canvas.height] = [image.width, image.height];
    const context = canvas.getContext('2d');
    context.drawImage(image, 0, 0);
    return new Set(new Uint32Array(context.getImageData(0, 0, image.width, image.height).data.buffer)).size;
  }, png);
  await other.close();
  return count;
}

test('it moves with mouse and keys, and asks for nothing', async () => {
  const page = await open();
  await ready(page);
  await page.mouse.move(270, 67);
  await until('a view from above right', async () => {
    const {x, y} = await view(page);
    return x > 0.4 && y > 0.4;
  });
  await page.locator('parallax-photo').press('Home');
  await page.keyboard.press('ArrowLeft');
  await until('a view from the left', async () => (await view(page)).x < -0.1);
  assert.deepStrictEqual(page.asked, [address]);
  assert.deepStrictEqual(page.said, []);
  assert.strictEqual(await page.title(), 'A lake & "birches"');
  assert.deepStrictEqual(await accessibleNodes(page), ['image A lake & "birches"']);
  await page.screenshot({path: join(made, 'share.png')});
  await close(page);
});

test('left alone it moves by itself', async () => {
  const page = await open();
  await until('idle motion', () => page.evaluate(() => views.some(({source}) => source === 'idle')));
  await close(page);
});

test('its own policy forbids it every request', async () => {
  const page = await open();
  await ready(page);
  const blocked = await page.evaluate(async () => {
    const found = [];
    document.addEventListener('securitypolicyviolation', (event) => found.push(event.effectiveDirective));
    await fetch('https://example.invalid/').catch(() => {});
    await new Promise((resolve) => {
      const image = new Image();
      image.onerror = resolve;
      image.src = 'https://example.invalid/x.png';
    });
    return found;
  });
  assert.deepStrictEqual(blocked, ['connect-src', 'img-src']);
  await close(page);
});

test('without JavaScript the photo is there', async () => {
  const page = await open({context: {javaScriptEnabled: false}});
  await until('the photo', async () => (await colours(page)) > 1000);
  await page.screenshot({path: join(made, 'share-without-script.png')});
  assert.deepStrictEqual(page.asked, [address]);
  await close(page);
});

test('without WebGL the photo is there', async () => {
  const page = await open({script: () => {
    HTMLCanvasElement.prototype.getContext = () => null;
  }});
  await until('the photo', async () => (await colours(page)) > 1000);
  await close(page);
});

test('the policy names the script\'s hash, and nothing names another place', () => {
  const [, script] = html.match(/<script type="module">([^]*)<\/script>/);
  const hash = createHash('sha256').update(script).digest('base64');
  assert.ok(html.includes(`script-src 'sha256-${hash}'"`));
  assert.ok(!/\bhttps?:/.test(html.replace(/base64,[^"]*"/g, '')));
});

test('all but photo and depth takes 30 KB at most', (t) => {
  const rest = html.replace(/base64,[^"]*"/g, '').length;
  t.diagnostic(`${rest} bytes`);
  assert.ok(rest <= 30000);
});
