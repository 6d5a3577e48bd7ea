// A picture as the program composes it: edges, pivot and frame, by the same code.
import {fit, LONGEST_SIDE} from '../element/shape.js';
import {COMPOSER} from './composer.js';
import {start} from './wasm.js';

const PREVIEW_SIDE = 1024;  // of the photo that a depth map is compared with
const NEAR = {larger: 0, smaller: 1, unknown: 2};

/** The image's size, scaled so that no side is longer than `longest`. */
export function within({naturalWidth, naturalHeight}, longest = LONGEST_SIDE) {
  const scale = Math.min(1, longest / Math.max(naturalWidth, naturalHeight));
  return [naturalWidth, naturalHeight].map((side) => Math.max(1, Math.round(side * scale)));
}

/** The first `channels` of each pixel's four, of an image at that size. */
function levels(image, width, height, channels, into) {
  const canvas = Object.assign(document.createElement('canvas'), {width, height});
  const context = canvas.getContext('2d', {alpha: false, willReadFrequently: true});
  context.imageSmoothingQuality = 'high';
  context.drawImage(image, 0, 0, width, height);
  const {data} = context.getImageData(0, 0, width, height);
  for (let i = 0; i < width * height; ++i)
    for (let c = 0; c < channels; ++c) into[channels * i + c] = data[4 * i + c];
}

let composer;

/**
 * Composes a photo and its depth map, both images; `inside`: they come from one file. `near` says which of its levels are
 * the near ones: larger, smaller or unknown. `frame` and `pivot` are parameters that somebody has chosen, or undefined.
 * Returns the shaped depth, what the element draws it with, whether larger levels were farther, and a line for each thing
 * that was amiss.
 */
export async function compose(photo, depth, {inside = false, near = 'unknown', frame, pivot} = {}) {
  const exported = await (composer ??= start(COMPOSER));
  const floats = (at, count) => new Float32Array(exported.memory.buffer, at, count);
  const bytes = (at, count) => new Uint8Array(exported.memory.buffer, at, count);
  const [preview_width, preview_height] = within(photo, PREVIEW_SIDE), [depth_width, depth_height] = within(depth);
  const preview = exported.roomForPhoto(preview_width, preview_height);
  levels(photo, preview_width, preview_height, 3, bytes(preview, 3 * preview_width * preview_height));
  const plane = exported.roomForDepth(depth_width, depth_height);
  levels(depth, depth_width, depth_height, 1, floats(plane, depth_width * depth_height));

  const {columns, rows, ratio} = fit(photo.naturalWidth, photo.naturalHeight);
  const found = exported.compose(columns, rows, ratio, ...within(photo), inside, NEAR[near], frame ?? 0, pivot ?? 0);
  if (!found) throw new Error('these two cannot be composed');
  const {buffer} = exported.memory;
  const [fov_scale, rotate_z_trans, swing] = new Float64Array(buffer, found, 3);
  const [shaped, findings, inverted] = new Uint32Array(buffer, found + 3 * 8, 3);
  const text = bytes(findings, buffer.byteLength - findings);
  return {
    width: columns,
    height: rows,
    samples: bytes(shaped, columns * rows).slice(),
    params: {fov_scale, rotate_z_trans},
    amount: swing,
    inverted: !!inverted,
    findings: new TextDecoder().decode(text.subarray(0, text.indexOf(0))).trimEnd().split('\n').filter(Boolean),
  };
}
