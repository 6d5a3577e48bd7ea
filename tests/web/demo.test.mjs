// The demo page: from two files to a downloaded share page.
import assert from 'node:assert';
import {readFileSync} from 'node:fs';
import {join} from 'node:path';
import {after, before, test} from 'node:test';
import {pathToFileURL} from 'node:url';

import {closeServed, made, openServed, until} from './harness.mjs';

let browser, server, base;
before(async () => ({browser, server, base} = await openServed()));
after(() => closeServed({browser, server}));

const ready = (page) => until('ready', () => page.evaluate(() => !!document.querySelector('parallax-photo[ready]')));
/** Waits until the page shows what it was given; it opens with a picture of its own. */
const readyWithFiles = (page) => until('ready', () => page.evaluate(
    () => document.querySelector('parallax-photo[ready]')?.src.startsWith('blob:')));

test('it opens with a picture', async (t) => {
  const page = await browser.newPage();
  await page.goto(`${base}/web/demo/index.html`);
  await ready(page);
  await page.screenshot({path: join(made, 'demo-opened.png'), fullPage: true});
  // A file takes its place: the next photo is not seen with the sample's depth.
  await page.locator('#photo').setInputFiles(join(made, 'photo.png'));
  await until('the question', async () => (await page.locator('#said').textContent()).includes('its depth map?'));
  assert.strictEqual(await page.locator('parallax-photo').count(), 0);
  await page.close();
});

test('a picture is composed as the program composes it', async (t) => {
  const page = await browser.newPage();
  await page.goto(`${base}/web/demo/index.html`);
  const found = await page.evaluate(async () => {
    const {compose} = await import('/web/demo/compose.js');
    const [photo, depth] = await Promise.all(['scene', 'scene-depth'].map(async (name) => {
      const image = Object.assign(new Image(), {src: `/made/${name}.png`});
      await image.decode();
      return image;
    }));
    const begun = performance.now();
    const {samples, ...rest} = await compose(photo, depth);
    const milliseconds = performance.now() - begun;
    const negative = Object.assign(document.createElement('canvas'), {width: depth.width, height: depth.height});
    const context = negative.getContext('2d');
    context.filter = 'invert(1)';
    context.drawImage(depth, 0, 0);
    const turned = Object.assign(new Image(), {src: negative.toDataURL()});
    await turned.decode();
    const exchanged = await compose(photo, turned);
    return {...rest, samples: [...samples], milliseconds, exchanged: {...exchanged, samples: [...exchanged.samples]}};
  });
  t.diagnostic(`${found.milliseconds} ms`);
  const html = readFileSync(join(made, 'share.html'), 'utf8');
  const [, params] = html.match(/ params="([^"]*)"/);
  const wanted = JSON.parse(params.replace(/&quot;/g, '"'));
  for (const name of ['fov_scale', 'rotate_z_trans'])
    assert.ok(Math.abs(found.params[name] / wanted[name] - 1) < 1e-6, `${name}: ${found.params[name]}, ${wanted[name]}`);
  const shaped = await page.evaluate(async (url) => {
    const picture = await createImageBitmap(await (await fetch(url)).blob());
    const context = new OffscreenCanvas(picture.width, picture.height).getContext('2d');
    context.drawImage(picture, 0, 0);
    const {data, width} = context.getImageData(0, 0, picture.width, picture.height);
    return {width, levels: [...data].filter((_, i) => i % 4 === 0)};
  }, html.match(/ depth="(data:[^"]*)"/)[1]);
  assert.strictEqual(found.width, shaped.width);
  assert.deepStrictEqual(found.samples, shaped.levels);
  assert.deepStrictEqual(found.findings, []);
  // With dark as near, the same comes out, and is said.
  const {exchanged} = found;
  assert.ok(!found.inverted && exchanged.inverted);
  assert.match(exchanged.findings.join(), /invert/);
  const off = exchanged.samples.reduce((sum, level, i) => sum + Math.abs(level - found.samples[i]), 0);
  assert.ok(off / found.samples.length < 1, `${off / found.samples.length} levels off`);
  await page.close();
});

test('a photo and a depth map become a page that moves from the disk', async () => {
  const page = await browser.newPage();
  const asked = [];
  await page.goto(`${base}/web/demo/index.html`);
  page.on('request', (request) => asked.push(request));
  await page.locator('#photo').setInputFiles(join(made, 'photo.png'));
  await until('the question', async () => (await page.locator('#said').textContent()).includes('its depth map?'));
  await page.locator('#depth').setInputFiles(join(made, 'depth.png'));
  await readyWithFiles(page);
  await page.locator('#alt').fill('A "lake" <at> dawn');
  await page.locator('#motion').selectOption('circle');
  await readyWithFiles(page);
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
  await readyWithFiles(page);
  assert.strictEqual(await page.locator('#said').textContent(), '');
  await page.close();
});

/** Drops a file of build/web on the page. */
const drop = (page, name) => page.evaluate(async (name) => {
  const data = new DataTransfer();
  data.items.add(new File([await (await fetch(`/made/${name}`)).blob()], name));
  document.dispatchEvent(new DragEvent('drop', {dataTransfer: data, bubbles: true, cancelable: true}));
}, name);

/** By how much the depths of two pictures differ, each spread from 0 to 255: mean over the first one's pixels, and its size. */
const depthDifference = (page, one, other) => page.evaluate(async (urls) => {
  const [one, other] = await Promise.all(urls.map(async (url) => createImageBitmap(await (await fetch(url)).blob())));
  const [first, second] = [one, other].map((picture) => {
    const canvas = new OffscreenCanvas(one.width, one.height);
    const context = canvas.getContext('2d');
    context.drawImage(picture, 0, 0, one.width, one.height);
    const levels = Array.from(context.getImageData(0, 0, one.width, one.height).data).filter((_, i) => i % 4 === 0);
    const low = levels.reduce((a, b) => Math.min(a, b)), high = levels.reduce((a, b) => Math.max(a, b));
    return levels.map((level) => 255 * (level - low) / (high - low));
  });
  const mean = first.reduce((sum, level, i) => sum + Math.abs(level - second[i]), 0) / first.length;
  return {mean, size: [one.width, one.height], otherSize: [other.width, other.height]};
}, [one, other]);

test("a portrait photo's own depth is found, upright and with its near end near", async () => {
  const page = await browser.newPage();
  await page.goto(`${base}/web/demo/index.html`);
  // Pictures stored on their side, two that store 0 for near, a matte before the depth, bare samples.
  for (const name of ['gdepth', 'dynamic', 'apple', 'huawei']) {
    await page.evaluate(() => document.querySelector('#picture').replaceChildren());
    await drop(page, `portrait-${name}.jpg`);
    await readyWithFiles(page);
    assert.strictEqual(await page.locator('#said').textContent(), '');
    const depth = await page.evaluate(async (name) => {
      const {depthInside} = await import('/web/demo/portrait.js');
      const file = new File([await (await fetch(`/made/portrait-${name}.jpg`)).blob()], 'portrait.jpg');
      return URL.createObjectURL(await depthInside(file));
    }, name);
    const {mean, size, otherSize} = await depthDifference(page, depth, `/made/portrait-${name}-depth.png`);
    assert.deepStrictEqual(size, otherSize, name);
    assert.ok(mean < 1.5, `${name}: ${mean} levels off`);
  }
  await page.close();
});

test('a portrait photo becomes a page, and a photo without a depth asks for one', async () => {
  const page = await browser.newPage({acceptDownloads: true});
  await page.goto(`${base}/web/demo/index.html`);
  await drop(page, 'portrait-gdepth.jpg');
  await readyWithFiles(page);
  await page.screenshot({path: join(made, 'demo-portrait.png'), fullPage: true});
  const shapedIn = async (name) => {
    const download = page.waitForEvent('download');
    await page.locator('#save').click();
    const file = join(made, name);
    await (await download).saveAs(file);
    return readFileSync(file, 'utf8').match(/ depth="(data:[^"]*)"/)[1];
  };
  const found = await shapedIn('portrait.html');
  await page.evaluate(() => document.querySelector('#picture').replaceChildren());
  await page.locator('#depth').setInputFiles(join(made, 'portrait-gdepth-depth.png'));
  await readyWithFiles(page);
  const {mean} = await depthDifference(page, found, await shapedIn('portrait-by-hand.html'));
  assert.ok(mean < 1.5, `${mean} levels off the page of the same depth map given by hand`);

  await drop(page, 'portrait-gdepth.jpg');
  await drop(page, 'photo.png');
  await until('the question', async () => (await page.locator('#said').textContent()).includes('its depth map?'));
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
