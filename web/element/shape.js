import {SHAPER} from './shaper.js';

const DEPTH_PIXELS = 4;  // a cell's, on each axis
const LARGEST_RATIO = 32;
const MOST_TRIANGLES = 100000;  // what a page draws in time
export const LONGEST_SIDE = 2048;  // of a picture

let shaper;

async function open() {
  const bytes = Uint8Array.from(atob(SHAPER), (digit) => digit.charCodeAt(0));
  const {instance} = await WebAssembly.instantiate(bytes);
  instance.exports._initialize();
  return instance.exports;
}

/** The finest grid that is drawn in time, with the fewest pixels of a photo for a cell. */
export function fit(width, height) {
  const scale = Math.min(1, LONGEST_SIDE / Math.max(width, height));
  for (let ratio = 1;; ratio *= 2) {
    const [columns, rows] = [width, height].map((side) => Math.ceil(Math.round(side * scale) / ratio));
    if (ratio === LARGEST_RATIO || 2 * columns * rows <= MOST_TRIANGLES) return {columns, rows, ratio};
  }
}

/**
 * Shapes a depth map as the renderer does: `photo` has 3 bytes for each of ratio x ratio pixels a cell, `depth` a byte for
 * each of 4 x 4. Returns a byte a cell.
 */
export async function shapePlanes({columns, rows, ratio}, photo, depth, params) {
  // Where it cannot start, as for want of memory, the next picture tries again.
  shaper ??= open().catch((error) => {
    shaper = null;
    throw error;
  });
  const {memory, ...exported} = await shaper;
  const at = exported.prepare(columns, rows, ratio);
  if (!at) throw new Error('depth: there is no memory to shape it in');
  new Uint8Array(memory.buffer, at).set(photo);
  new Uint8Array(memory.buffer, exported.depth()).set(depth);
  const shaped = exported.shape(
      params.guided_filter_rx, params.guided_filter_ry, params.guided_filter_eps, params.depth_contrast);
  return new Uint8Array(memory.buffer, shaped, columns * rows).slice();
}

/** The pixels of an image at another size, R G B A. */
function pixels(image, width, height) {
  const canvas = document.createElement('canvas');
  canvas.width = width;
  canvas.height = height;
  const context = canvas.getContext('2d', {willReadFrequently: true});
  context.imageSmoothingQuality = 'high';
  context.drawImage(image, 0, 0, width, height);
  return context.getImageData(0, 0, width, height).data;
}

/** Shapes the depth map of a photo, both images, for the element. */
export async function shape(photo, depth, params, inverted) {
  const grid = fit(photo.naturalWidth, photo.naturalHeight);
  const {columns, rows, ratio} = grid;
  const colours = pixels(photo, columns * ratio, rows * ratio);
  const rgb = new Uint8Array(colours.length / 4 * 3);
  for (let i = 0, j = 0; j < rgb.length; i += 4, j += 3) {
    rgb[j] = colours[i];
    rgb[j + 1] = colours[i + 1];
    rgb[j + 2] = colours[i + 2];
  }
  const levels = pixels(depth, columns * DEPTH_PIXELS, rows * DEPTH_PIXELS);
  const plane = new Uint8Array(levels.length / 4);
  for (let i = 0; i < plane.length; ++i) plane[i] = inverted ? 255 - levels[4 * i] : levels[4 * i];
  return {width: columns, height: rows, samples: await shapePlanes(grid, rgb, plane, params)};
}
