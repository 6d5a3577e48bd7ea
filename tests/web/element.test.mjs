// The element in a browser.
import assert from 'node:assert';
import {readFileSync} from 'node:fs';
import {join} from 'node:path';
import {after, before, test} from 'node:test';

import {accessibleNodes, closeServed, made, openServed, until} from './harness.mjs';

let browser, server, base;
before(async () => ({browser, server, base} = await openServed()));
after(() => closeServed({browser, server}));

const photo = '<img alt="a lake" src="/made/photo.png" width="384" height="512">';
const element = (attributes = '', style = 'width:180px', inside = photo) =>
    `<parallax-photo loading="eager" depth="/made/shaped.png" style="${style}" ${attributes}>${inside}</parallax-photo>`;

/** A page with `html` in it. What its elements say is kept in window.said. */
async function open(html, {context = {}, script} = {}) {
  const page = await (await browser.newContext({viewport: {width: 800, height: 600}, ...context})).newPage();
  page.failures = [];
  page.on('pageerror', (error) => page.failures.push(error.message));
  await page.addInitScript(() => {
    window.said = [];
    window.views = [];
    for (const type of ['load', 'error'])
      document.addEventListener(type, (event) => {
        if (event.target.localName === 'parallax-photo') said.push([type, event.message]);
      }, true);
    document.addEventListener('view', (event) => views.push(event.detail), true);
  });
  if (script) await page.addInitScript(script);
  server.page = `<!doctype html><meta charset="utf-8"><title>Elements</title><style>body { margin: 0; }</style>
      <script type="module" src="/web/element/parallax-photo.js"></script>${html}`;
  await page.goto(`${base}/page`);
  return page;
}

const close = (page) => page.context().close();
const ready = (page, count = 1) => until(`${count} ready`, () => page.evaluate(
    (wanted) => document.querySelectorAll('parallax-photo[ready]').length >= wanted, count));
const frames = (page) => page.evaluate(() => views.length);
const view = (page) => page.evaluate(() => document.querySelector('parallax-photo').view);
const source = (page) => page.evaluate(() => views[views.length - 1].source);
const comes = (page, x, y) => until(`view at ${x}, ${y}`, async () => {
  const at = await view(page);
  return Math.abs(at.x - x) < 1e-9 && Math.abs(at.y - y) < 1e-9;
});
/** Waits until nothing is drawn any more, for as long as `quiet` milliseconds. */
async function rests(page, quiet = 700) {
  let last = -1;
  await until('rest', async () => {
    const now = await frames(page);
    const same = now === last;
    last = now;
    if (!same) await page.waitForTimeout(quiet);
    return same;
  });
}
const pixels = async (page) => Buffer.from(await page.evaluate(() => {
  const canvas = document.querySelector('parallax-photo').shadowRoot.querySelector('canvas');
  const {data} = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
  let text = '';
  for (let i = 0; i < data.length; i += 0x8000) text += String.fromCharCode(...data.subarray(i, i + 0x8000));
  return btoa(text);
}), 'base64');

/** Mean difference over R, G and B, and the shares of pixels that are equal and off by more than 2 and more than 8. */
function difference(a, b) {
  assert.strictEqual(a.length, b.length);
  let sum = 0, equal = 0, over2 = 0, over8 = 0, largest = 0;
  for (let i = 0; i < a.length; i += 4) {
    let worst = 0;
    for (let c = 0; c < 3; ++c) {
      const off = Math.abs(a[i + c] - b[i + c]);
      sum += off;
      worst = Math.max(worst, off);
    }
    equal += worst === 0;
    over2 += worst > 2;
    over8 += worst > 8;
    largest = Math.max(largest, worst);
  }
  const count = a.length / 4;
  return {mean: sum / count / 3, equal: equal / count, over2: over2 / count, over8: over8 / count, largest};
}

const {width, height, stills} = JSON.parse(readFileSync(join(made, 'stills.json'), 'utf8'));

/** The element as large as the stills, with one sample a pixel as they have. */
async function openLikeStills(html = '') {
  const page = await open(`${html}${element('motion="" antialias="none"', `width:${width}px;height:${height}px`)}`, {
    context: {reducedMotion: 'reduce'},
  });
  await ready(page);
  return page;
}

test('its pictures are the component\'s, in the same browser', async (t) => {
  const page = await openLikeStills('<script src="/made/oracle.js"></script><canvas id="oracle" hidden></canvas>');
  const shaped = await page.evaluate(async ([width, height]) => {
    window.component = await openComponent({print: () => {}});
    const levels = async (address) => {
      const image = new Image();
      image.src = address;
      await image.decode();
      const canvas = Object.assign(document.createElement('canvas'), {width: image.width, height: image.height});
      const context = canvas.getContext('2d');
      context.drawImage(image, 0, 0);
      return context.getImageData(0, 0, image.width, image.height).data;
    };
    /** The first `count` of each pixel's four bytes, in the component's memory. */
    const place = async (address, count) => {
      const bytes = (await levels(address)).filter((byte, i) => i % 4 < count);
      const at = component._malloc(bytes.length);
      component.HEAPU8.set(bytes, at);
      return at;
    };
    const photo = await place('/made/photo.png', 3), depth = await place('/made/depth.png', 1);
    if (!component._setUp(width, height, photo, width, height, depth)) return 'the component cannot be set up';
    const wanted = (await levels('/made/shaped.png')).filter((byte, i) => i % 4 === 0);
    const at = component._shaped();
    return wanted.filter((byte, i) => byte !== component.HEAPU8[at + i]).length;
  }, [width, height]);
  assert.strictEqual(shaped, 0, 'bytes of the shaped depth that differ');
  for (const {x, y} of stills) {
    await page.evaluate(({x, y}) => document.querySelector('parallax-photo').lookAt(x, y), {x, y});
    await comes(page, x, y);
    const drawn = Buffer.from(await page.evaluate(({x, y, bytes}) => {
      const at = component._draw(x, y);
      const data = component.HEAPU8.slice(at, at + bytes);
      let text = '';
      for (let i = 0; i < data.length; i += 0x8000) text += String.fromCharCode(...data.subarray(i, i + 0x8000));
      return btoa(text);
    }, {x, y, bytes: 4 * width * height}), 'base64');
    const found = difference(await pixels(page), drawn);
    t.diagnostic(`${x}, ${y}: ${JSON.stringify(found)}`);
    // The element draws upside down, so that single pixels on outlines fall to the other side.
    assert.ok(found.equal >= 0.999 && found.over8 === 0, JSON.stringify(found));
  }
  await close(page);
});

test('its pictures are the renderer\'s on another driver', async (t) => {
  const page = await openLikeStills();
  for (const still of stills) {
    await page.evaluate(({x, y}) => document.querySelector('parallax-photo').lookAt(x, y), still);
    await comes(page, still.x, still.y);
    const found = difference(await pixels(page), readFileSync(join(made, still.file)));
    t.diagnostic(`${still.x}, ${still.y}: ${JSON.stringify(found)}`);
    assert.ok(found.mean <= 0.25 && found.over8 <= 1e-4, JSON.stringify(found));
  }
  await close(page);
});

/** Averages of 2 x 2 pixels. */
function halved(large, width, height) {
  const half = Buffer.alloc(width * height);
  for (let y = 0; y < height / 2; ++y)
    for (let x = 0; x < width / 2; ++x)
      for (let c = 0; c < 4; ++c) {
        const at = (column, row) => large[4 * (row * width + column) + c];
        const sum = at(2 * x, 2 * y) + at(2 * x + 1, 2 * y) + at(2 * x, 2 * y + 1) + at(2 * x + 1, 2 * y + 1);
        half[4 * (y * width / 2 + x) + c] = Math.round(sum / 4);
      }
  return half;
}

test('outlines are smoothed by the browser, by size, or not at all', async () => {
  const drawn = async (attributes, style, script) => {
    const page = await open(element(`motion="" ${attributes}`, style), {script, context: {reducedMotion: 'reduce'}});
    await ready(page);
    // At rest near things hide nothing that the photo shows, and outlines look alike.
    await page.evaluate(() => document.querySelector('parallax-photo').lookAt(1, -1));
    await comes(page, 1, -1);
    const picture = await pixels(page);
    await close(page);
    return picture;
  };
  const box = 'width:192px;height:256px';
  const sharp = await drawn('antialias="none"', box);
  const twice = await drawn('antialias="2"', box);
  const large = await drawn('antialias="none"', 'width:384px;height:512px');
  const expected = halved(large, 384, 512);
  const found = difference(twice, expected);
  assert.ok(found.over2 === 0, `twice as large and averaged: ${JSON.stringify(found)}`);
  assert.ok(difference(sharp, expected).over8 > 0.005, 'without it outlines are others');
  assert.ok(difference(await drawn('', box), sharp).over8 > 0.001, 'the browser smooths');
  const unsmoothed = () => {
    const original = HTMLCanvasElement.prototype.getContext;
    HTMLCanvasElement.prototype.getContext = function(kind, options) {
      return original.call(this, kind, kind === 'webgl' ? {...options, antialias: false} : options);
    };
  };
  assert.ok((await drawn('', box, unsmoothed)).equals(twice), 'where the browser does not, it is drawn twice as large');
});

test('the poster is framed as the first picture', async () => {
  const page = await open(element('motion=""', 'width:384px;height:512px'));
  await ready(page);
  const drawn = await pixels(page);
  const box = await page.evaluate(() => {
    const element = document.querySelector('parallax-photo');
    element.removeAttribute('ready');
    const {left, top, width, height} = element.querySelector('img').getBoundingClientRect();
    return {left, top, width, height};
  });
  // 0.81 of the photo is seen: the poster is larger than the element by as much, around the same middle.
  assert.ok(Math.abs(box.width - 384 / 0.81) < 0.01 && Math.abs(box.height - 512 / 0.81) < 0.01);
  assert.ok(Math.abs(box.left + box.width / 2 - 192) < 0.01 && Math.abs(box.top + box.height / 2 - 256) < 0.01);
  const shot = await page.evaluate(async (png) => {
    const image = new Image();
    image.src = `data:image/png;base64,${png}`;
    await image.decode();
    const canvas = document.createElement('canvas');
    canvas.width = 384;
    canvas.height = 512;
    const context = canvas.getContext('2d');
    context.drawImage(image, 0, 0);
    return [...context.getImageData(0, 0, 384, 512).data];
  }, (await page.screenshot({clip: {x: 0, y: 0, width: 384, height: 512}})).toString('base64'));
  assert.ok(difference(drawn, Buffer.from(shot)).mean < 2);
  await close(page);
});

test('the mouse moves the view, and leaving brings it back', async () => {
  const page = await open(element());
  await ready(page);
  await rests(page);
  await page.mouse.move(135, 60);
  await comes(page, 0.5, 0.5);
  assert.strictEqual(await source(page), 'pointer');
  await page.mouse.move(500, 500);
  await comes(page, 0, 0);
  await rests(page);
  await page.evaluate(() => {
    window.requestAnimationFrame = () => views.push('a frame is asked for at rest');
  });
  const before = await frames(page);
  await page.waitForTimeout(1000);
  assert.strictEqual(await frames(page), before);
  await close(page);
});

test('arrows and Home move the view, once the element has the focus', async () => {
  const page = await open(element());
  await ready(page);
  await page.keyboard.press('ArrowRight');
  await page.waitForTimeout(200);
  assert.deepStrictEqual(await view(page), {x: 0, y: 0});
  await page.keyboard.press('Tab');
  await page.keyboard.press('ArrowRight');
  await page.keyboard.press('ArrowUp');
  await comes(page, 0.2, 0.2);
  assert.strictEqual(await source(page), 'keys');
  await page.keyboard.press('Home');
  await comes(page, 0, 0);
  await close(page);
});

test('motion says what moves the view', async () => {
  const page = await open(element('motion="keys"'));
  await ready(page);
  await page.mouse.move(135, 60);
  await page.waitForTimeout(300);
  assert.deepStrictEqual(await view(page), {x: 0, y: 0});
  await close(page);
});

test('tilt moves the view as a window is turned under the eye', async () => {
  const page = await open(element('motion="tilt"'));
  await ready(page);
  const sensor = await page.context().newCDPSession(page);
  const turn = (alpha, beta, gamma) =>
      sensor.send('DeviceOrientation.setDeviceOrientationOverride', {alpha, beta, gamma});
  await turn(0, 45, 0);
  await page.waitForTimeout(300);
  await turn(0, 45, 6);  // the right edge goes away: seen from the left
  await until('a view from the left', async () => (await view(page)).x < -0.2);
  assert.ok(Math.abs((await view(page)).y) < 0.1);
  assert.strictEqual(await source(page), 'tilt');
  await turn(0, 53, 6);  // the top edge comes nearer: seen from above
  await until('a view from above', async () => (await view(page)).y > 0.2);
  await close(page);
});

test('a button asks for the sensors only where the page may not', async () => {
  const shown = (page) => page.evaluate(() => {
    const button = document.querySelector('parallax-photo').shadowRoot.querySelector('button');
    return button.checkVisibility();
  });
  const granting = await open(element());
  await ready(granting);
  assert.strictEqual(await shown(granting), false);
  await close(granting);

  const refusing = await open(element(), {
    script: () => {
      DeviceOrientationEvent.requestPermission = async () => {
        if (!navigator.userActivation.isActive) throw new DOMException('a gesture is wanted', 'NotAllowedError');
        return 'granted';
      };
    },
  });
  await ready(refusing);
  await until('the button', () => shown(refusing));
  await refusing.getByText('Tilt to look around').click();
  await until('no button', async () => !(await shown(refusing)));
  await close(refusing);
});

test('left alone it moves by itself, until a key stops it', async () => {
  const page = await open(element('motion="keys sway"'));
  await ready(page);
  await until('idle motion', async () => (await frames(page)) > 3 && (await source(page)) === 'idle');
  await page.locator('parallax-photo').focus();
  await page.keyboard.press('Escape');
  await rests(page, 3500);
  await close(page);
});

test('left alone it comes closer on the spot, until a key puts it back', async () => {
  const page = await open(element('motion="keys zoom"'));
  await ready(page);
  const at_rest = await pixels(page);
  await until('another picture', async () => difference(await pixels(page), at_rest).over8 > 0.1);
  assert.deepStrictEqual(await page.evaluate(() => views.every(({x, y}) => x === 0 && y === 0)), true);
  await page.locator('parallax-photo').focus();
  await page.keyboard.press('Home');
  await until('the first picture again', async () => (await pixels(page)).equals(at_rest));
  await close(page);
});

test('reduced motion: nothing moves by itself, and keys jump', async () => {
  const page = await open(element('motion="pointer tilt keys circle"'), {context: {reducedMotion: 'reduce'}});
  await ready(page);
  await page.waitForTimeout(4000);
  assert.strictEqual(await frames(page), 1);
  await page.locator('parallax-photo').focus();
  await page.keyboard.press('ArrowLeft');
  await comes(page, -0.2, 0);
  assert.strictEqual(await frames(page), 2, 'one frame, without a way to it');
  await close(page);
});

test('assistive technology meets one image with one name', async () => {
  const page = await open(element());
  await ready(page);
  assert.deepStrictEqual(await accessibleNodes(page), ['image a lake']);
  await close(page);
});

test('a lost context shows the poster, and a new one the picture', async () => {
  const page = await open(element('motion="keys"'), {
    script: () => {
      const original = HTMLCanvasElement.prototype.getContext;
      HTMLCanvasElement.prototype.getContext = function(kind, options) {
        const context = original.call(this, kind, options);
        if (kind === 'webgl') window.gl = context;
        return context;
      };
    },
  });
  await ready(page);
  await rests(page);
  const before = await pixels(page);
  await page.evaluate(() => {
    window.loss = gl.getExtension('WEBGL_lose_context');
    loss.loseContext();
  });
  await until('the poster', () => page.evaluate(() => !document.querySelector('parallax-photo').hasAttribute('ready')));
  // Whatever comes meanwhile must not draw with what is lost.
  await page.locator('parallax-photo').press('ArrowLeft');
  await page.locator('parallax-photo').press('Home');
  await page.waitForTimeout(500);
  await page.evaluate(() => loss.restoreContext());
  await ready(page);
  await comes(page, 0, 0);
  assert.deepStrictEqual(await pixels(page), before);
  assert.deepStrictEqual(page.failures, []);
  await close(page);
});

test('without WebGL the photo stands still, and an error says so', async () => {
  const page = await open(element(), {
    script: () => {
      HTMLCanvasElement.prototype.getContext = () => null;
    },
  });
  await until('an error', () => page.evaluate(() => said.length > 0));
  assert.deepStrictEqual(await page.evaluate(() => said),
                         [['error', 'this browser has no WebGL; the photo stands still']]);
  assert.ok(await page.locator('parallax-photo > img').isVisible());
  assert.deepStrictEqual(await accessibleNodes(page), ['image a lake']);
  assert.deepStrictEqual(page.failures, []);
  await close(page);
});

test('what cannot be shown is an error of one sentence', async () => {
  const cases = [
    [element().replace('shaped.png', 'nowhere.png'), 'depth: cannot be loaded'],
    [element().replace('photo.png', 'nowhere.png'), 'src: cannot be loaded'],
    [element().replace(/depth="[^"]*"/, ''), 'depth: none is given'],
    [element('params="{&quot;zoom&quot;:1}"'), 'params: zoom is no parameter with a number'],
  ];
  for (const [html, sentence] of cases) {
    const page = await open(html);
    await until(sentence, () => page.evaluate(() => said.length > 0));
    assert.deepStrictEqual(await page.evaluate(() => said), [['error', sentence]]);
    await close(page);
  }
});

test('a raw depth map is shaped in the page', async () => {
  const raw = element('motion="" raw-depth').replace('shaped.png', 'depth.png');
  const page = await open(raw, {context: {reducedMotion: 'reduce'}});
  await ready(page);
  await page.evaluate(() => document.querySelector('parallax-photo').lookAt(1, 0));
  await comes(page, 1, 0);
  const shaped_here = await pixels(page);
  const other = await open(element('motion=""'), {context: {reducedMotion: 'reduce'}});
  await ready(other);
  await other.evaluate(() => document.querySelector('parallax-photo').lookAt(1, 0));
  await comes(other, 1, 0);
  // The renderer's depth had a coarser grid, of 96 x 128 cells, so that outlines differ; inverted, everything does.
  const shaped_there = await pixels(other);
  const off = difference(shaped_here, shaped_there).mean;
  await page.evaluate(() => {
    document.querySelector('parallax-photo').rawDepth = 'inverted';
  });
  await ready(page);
  await until('what was near is far', async () => difference(await pixels(page), shaped_there).mean > 2 * off);
  await close(page);
  await close(other);
});

test('src alone needs no slotted image, and may change', async () => {
  const page = await open(element('src="/made/photo.png" alt="here"', 'width:180px', ''));
  await ready(page);
  assert.deepStrictEqual(await accessibleNodes(page), ['image here']);
  assert.strictEqual(await page.evaluate(() => document.querySelector('parallax-photo').offsetHeight), 240);
  const before = await pixels(page);
  await page.evaluate(() => {
    document.querySelector('parallax-photo').src = '/made/depth.png';
  });
  await until('another picture', async () => {
    const shown = await page.evaluate(() => document.querySelector('parallax-photo').hasAttribute('ready'));
    return shown && !(await pixels(page)).equals(before);
  });
  await close(page);
});

test('a box of another aspect is covered, without distortion', async () => {
  const page = await open(element('motion=""', 'width:300px;height:200px'));
  await ready(page);
  const size = await page.evaluate(() => {
    const canvas = document.querySelector('parallax-photo').shadowRoot.querySelector('canvas');
    return [canvas.width, canvas.height, getComputedStyle(canvas).objectFit];
  });
  assert.deepStrictEqual(size, [300, 400, 'cover']);
  await close(page);
});

test('40 elements share one context, and only those near the viewport are loaded', async () => {
  const one = element('motion=""').replace('loading="eager"', '').replace('width:180px', 'width:180px;height:240px');
  const page = await open(`<div style="display:flex;flex-wrap:wrap">${one.repeat(40)}</div>`, {
    script: () => {
      window.contexts = 0;
      const original = HTMLCanvasElement.prototype.getContext;
      HTMLCanvasElement.prototype.getContext = function(kind, options) {
        if (kind === 'webgl') ++window.contexts;
        return original.call(this, kind, options);
      };
    },
  });
  const count = () => page.evaluate(() => document.querySelectorAll('[ready]').length);
  await ready(page, 16);
  await page.waitForTimeout(1000);
  assert.strictEqual(await count(), 16, 'four rows of four: the viewport, and 200 pixels below it');
  await page.evaluate(() => scrollTo(0, 100000));
  await until('the last ones', async () => (await count()) > 16);
  assert.strictEqual(await page.evaluate(() => contexts), 1);
  await close(page);
});

test('at rest no frame is asked for', async () => {
  const page = await open(element('motion="keys"'), {
    script: () => {
      window.asked = 0;
      const original = requestAnimationFrame;
      window.requestAnimationFrame = (callback) => {
        ++asked;
        return original.call(window, callback);
      };
    },
  });
  await ready(page);
  await page.locator('parallax-photo').press('ArrowRight');
  await rests(page);
  const asked = await page.evaluate(() => window.asked);
  assert.ok(asked > 1);
  await page.waitForTimeout(500);
  assert.strictEqual(await page.evaluate(() => window.asked), asked);
  await close(page);
});

test('off-screen nothing is drawn', async () => {
  const page = await open(`${element('motion="sway"')}<div style="height:5000px"></div>`);
  await ready(page);
  await until('idle motion', async () => (await source(page)) === 'idle');
  await page.evaluate(() => scrollTo(0, 4000));
  await rests(page);
  await page.evaluate(() => scrollTo(0, 0));
  const before = await frames(page);
  await until('motion again', async () => (await frames(page)) > before);
  await close(page);
});

test('an element may be moved, removed and put back', async () => {
  const page = await open(element('motion="keys"'));
  await ready(page);
  await page.evaluate(() => {
    const element = document.querySelector('parallax-photo');
    document.body.append(document.createElement('p'), element);
    element.remove();
  });
  await page.waitForTimeout(300);
  await page.evaluate(() => {
    document.body.append(Object.assign(document.createElement('parallax-photo'), {
      alt: 'made by a script', src: '/made/photo.png', depth: '/made/shaped.png', loading: 'eager', motion: '',
    }));
  });
  await ready(page);
  assert.deepStrictEqual(page.failures, []);
  await close(page);
});

test('JavaScript takes a millisecond a frame at most', async (t) => {
  const page = await open(element('motion=""'), {context: {reducedMotion: 'reduce'}});
  await ready(page);
  // The time of the frame's callback, of which the slower frames on a busy machine say nothing.
  const milliseconds = await page.evaluate(async () => {
    const element = document.querySelector('parallax-photo');
    const original = requestAnimationFrame, taken = [];
    window.requestAnimationFrame = (step) => original((now) => {
      const start = performance.now();
      step(now);
      taken.push(performance.now() - start);
    });
    for (let i = 0; i < 60; ++i) {
      element.lookAt(i % 2 ? 0.5 : -0.5, i / 60);
      await new Promise((resolve) => original(() => original(resolve)));
    }
    return taken.sort((a, b) => a - b)[Math.floor(taken.length / 2)];
  });
  t.diagnostic(`median ${milliseconds} ms`);
  assert.ok(milliseconds <= 1);
  await close(page);
});

test('the parts of the package agree', async () => {
  const page = await open(element());
  const package_json = JSON.parse(readFileSync(new URL('../../web/element/package.json', import.meta.url), 'utf8'));
  const manifest = JSON.parse(
      readFileSync(new URL(`../../web/element/${package_json.customElements}`, import.meta.url), 'utf8'));
  const [declaration] = manifest.modules[0].declarations;
  assert.deepStrictEqual(declaration.attributes.map(({name}) => name), await page.evaluate(
      () => customElements.get('parallax-photo').observedAttributes));
  const fields = [...declaration.attributes.map(({fieldName}) => fieldName), 'view', 'lookAt'];
  const missing = await page.evaluate((names) => names.filter((name) => !(name in customElements.get('parallax-photo').prototype)), fields);
  assert.deepStrictEqual(missing, []);
  const types = readFileSync(new URL('../../web/element/class.d.ts', import.meta.url), 'utf8');
  for (const field of fields) assert.match(types, new RegExp(`\\b${field}\\b`));
  await close(page);
});
