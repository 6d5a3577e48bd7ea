// The element's arithmetic against the renderer's, bit by bit: node --test bits.test.mjs, with the output of native_bits
// in the file that QUORVANE_NATIVE_BITS names. What is in the folder that QUORVANE_WEB_MADE names comes from tests/checks/web.
import assert from 'node:assert';
import {readFileSync} from 'node:fs';
import {join} from 'node:path';
import {test} from 'node:test';

import {FRAGMENT_SHADER, MOTIONS, VERTEX_SHADER} from '../../web/element/class.js';
import * as geometry from '../../web/element/geometry.js';
import {fit, shapePlanes} from '../../web/element/shape.js';
import {SHAPER} from '../../web/element/shaper.js';

const native = JSON.parse(readFileSync(process.env.QUORVANE_NATIVE_BITS, 'utf8'));
const bytes = (hex) => Uint8Array.from(Buffer.from(hex, 'hex'));
const words = (hex) => new Uint32Array(bytes(hex).buffer);
const bitsOf = (floats) => new Uint32Array(Float32Array.from(floats).buffer);
const float = (bits) => new Float32Array(Uint32Array.of(bits).buffer)[0];

test('the shaders are the renderer\'s but for the blanks at the ends of lines', () => {
  const trimmed = (hex) => Buffer.from(hex, 'hex').toString().replace(/ +\n/g, '\n');
  assert.strictEqual(VERTEX_SHADER, trimmed(native.shaders[0]));
  assert.strictEqual(FRAGMENT_SHADER, trimmed(native.shaders[1]));
});

test('motions go where the program\'s go', () => {
  const rows = readFileSync(join(process.env.QUORVANE_WEB_MADE, 'motions.txt'), 'utf8').trim().split('\n')
      .map((row) => row.match(/^(\S+) +(.*?)   /)).filter(([, name]) => name !== 'still');
  assert.deepStrictEqual(rows.map(([, name]) => name), Object.keys(MOTIONS));
  for (const [, name, expression] of rows) {
    // Such as x=sin(1) y=-0.5cos(2): of the turn once, and of twice the turn.
    const place = {x: '0', y: '0', zoom: '1'};
    for (const word of expression.split(' ')) {
      const [axis, terms] = word.split('=');
      place[axis] = terms.replace(/([\d.]*)(sin|cos)\((\d+)\)/g,
          (all, factor, wave, times) => `${factor || 1} * Math.${wave}(${times} * turn)`);
    }
    const wanted = new Function('turn', `return [${place.x}, ${place.y}, ${place.zoom} - 1]`);
    for (let turn = 0; turn < 2 * Math.PI; turn += 0.1)
      MOTIONS[name](turn).forEach((at, i) => assert.ok(Math.abs(at - wanted(turn)[i]) < 1e-12, `${name} at ${turn}`));
  }
});

test('view positions, mesh widths and matrices have the renderer\'s bits', () => {
  assert.ok(native.views.length >= 2000);
  for (const view of native.views) {
    const [width, height] = view.size;
    const held = view.look.map((at, axis) => geometry.heldPosition(at, view.size[axis], view.params.border_deadzone));
    assert.deepStrictEqual([...bitsOf(held)], view.held, JSON.stringify(view));
    const half_width = geometry.halfWidth(width, height);
    assert.deepStrictEqual([...bitsOf([half_width])], [view.half_width], JSON.stringify(view));
    const matrix = geometry.viewMatrix({...geometry.DEFAULTS, ...view.params}, ...held, half_width);
    assert.deepStrictEqual(bitsOf(matrix), words(view.matrix), JSON.stringify(view));
  }
});

test('every triangle has the renderer\'s vertices, in its order', () => {
  for (const {columns, rows, half_width, vertices, indices} of native.meshes) {
    const theirs = words(vertices), their_corners = words(indices);
    const ours = bitsOf(geometry.vertices(columns, rows, float(half_width)));
    const our_corners = geometry.indices(columns, rows);
    assert.strictEqual(our_corners.length, their_corners.length);
    let different = 0;
    for (let i = 0; i < our_corners.length; ++i)
      for (let k = 0; k < 5; ++k) different += ours[5 * our_corners[i] + k] !== theirs[5 * their_corners[i] + k];
    assert.strictEqual(different, 0, `${columns} x ${rows}`);
  }
});

test('indices have 16 bits as long as they suffice', () => {
  assert.ok(geometry.indices(255, 255) instanceof Uint16Array);
  assert.ok(geometry.indices(256, 255) instanceof Uint32Array);
});

test('depth maps are shaped to the renderer\'s bytes', async () => {
  assert.ok(native.shapings.length >= 6);
  for (const {columns, rows, ratio, params, photo, depth, shaped} of native.shapings) {
    const ours = await shapePlanes({columns, rows, ratio}, bytes(photo), bytes(depth), params);
    assert.deepStrictEqual(ours, bytes(shaped), `${columns} x ${rows}, ${ratio} pixels a cell`);
  }
});

test('the grid is the finest of 100,000 triangles', () => {
  assert.deepStrictEqual(fit(768, 1024), {columns: 192, rows: 256, ratio: 4});
  assert.deepStrictEqual(fit(100, 50), {columns: 100, rows: 50, ratio: 1});
  assert.deepStrictEqual(fit(4032, 3024), {columns: 256, rows: 192, ratio: 8});  // of 2048 x 1536
});

test('the shaper imports nothing and takes 8 KB at most', async () => {
  const file = Buffer.from(SHAPER, 'base64');
  assert.deepStrictEqual(WebAssembly.Module.imports(await WebAssembly.compile(file)), []);
  assert.ok(file.length <= 8192, `${file.length} bytes`);
});
