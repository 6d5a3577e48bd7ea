// The depth that a portrait photo holds, found by the program's own reader, which is loaded only where a JPEG asks for it.

import {start} from './wasm.js';

const MIRRORED = 1, FLIPPED = 2, TRANSPOSED = 4;
const LEVELS = 256;
const MOST_LEVELS_DEEP = 64;

/**
 * The nodes of an XMP packet as the reader takes them: of each element and attribute the namespace, the name, the text and
 * the index behind its last descendant, each with a zero behind it. Null where it is no XML.
 */
function nodesOf(packet) {
  const xml = new DOMParser().parseFromString(packet, 'application/xml');
  if (xml.doctype || xml.querySelector('parsererror')) return null;
  const nodes = [];
  const add = (element, depth) => {
    if (depth > MOST_LEVELS_DEEP) throw new Error('XMP: more than 64 levels');
    const text = [...element.childNodes].filter((node) => node instanceof Text).map((node) => node.data).join('');
    const own = [element.namespaceURI, element.localName, text];
    nodes.push(own);
    for (const {namespaceURI, localName, value} of element.attributes)
      if (namespaceURI !== 'http://www.w3.org/2000/xmlns/')
        nodes.push([namespaceURI, localName, value, nodes.length + 1]);
    for (const child of element.children) add(child, depth + 1);
    own.push(nodes.length);
  };
  add(xml.documentElement, 1);
  return nodes.flat().map((field) => `${field ?? ''}\0`).join('');
}

async function openReader() {
  const {READER} = await import('./portrait_reader.js');
  const exports = await start(READER, {
    page: {
      readXmp(packet, size) {
        const nodes = nodesOf(new TextDecoder().decode(new Uint8Array(exports.memory.buffer, packet, size)));
        if (nodes === null) return 0;
        const coded = new TextEncoder().encode(nodes);
        const room = exports.roomForNodes(coded.length);
        new Uint8Array(exports.memory.buffer, room).set(coded);
        return 1;
      },
    },
  });
  return exports;
}

/** The plane's picture with its turn, upright, on a canvas. */
function upright(picture, turn) {
  const {width, height} = picture;
  const canvas = document.createElement('canvas');
  [canvas.width, canvas.height] = turn & TRANSPOSED ? [height, width] : [width, height];
  const context = canvas.getContext('2d', {willReadFrequently: true});
  const [across, left] = turn & MIRRORED ? [-1, width] : [1, 0];
  const [down, top] = turn & FLIPPED ? [-1, height] : [1, 0];
  if (turn & TRANSPOSED) context.setTransform(0, across, down, 0, top, left);
  else context.setTransform(across, 0, 0, down, left, top);
  context.drawImage(picture, 0, 0);
  return canvas;
}

/** A picture of bare samples. */
function ofSamples(samples, width, height) {
  const pixels = new ImageData(width, height);
  samples.forEach((sample, i) => pixels.data.set([sample, sample, sample, 255], 4 * i));
  return createImageBitmap(pixels);
}

/** Gives the levels of a canvas their nearness, spread from black for the farthest to white for the nearest. */
function spread(canvas, nearness) {
  const context = canvas.getContext('2d');
  const pixels = context.getImageData(0, 0, canvas.width, canvas.height);
  const present = new Set();
  for (let i = 0; i < pixels.data.length; i += 4) present.add(nearness[pixels.data[i]]);
  const far = Math.min(...present), near = Math.max(...present);
  const gray = Uint8ClampedArray.from(nearness, (level) => 255 * (level - far) / (near - far || 1));
  for (let i = 0; i < pixels.data.length; i += 4) pixels.data.fill(gray[pixels.data[i]], i, i + 3);
  context.putImageData(pixels, 0, 0);
}

/** The depth map inside a JPEG file, as a PNG file, upright and with its near end white. Null where there is none. */
export async function depthInside(file) {
  const bytes = new Uint8Array(await file.arrayBuffer());
  if (bytes[0] !== 0xff || bytes[1] !== 0xd8) return null;
  const reader = await openReader();
  const room = reader.roomForFile(bytes.length);
  new Uint8Array(reader.memory.buffer, room).set(bytes);
  const found = reader.look();
  if (!found) return null;
  const {buffer} = reader.memory;
  const nearness = new Float64Array(buffer, found, LEVELS);
  const [at, size, width, height, turn] = new Uint32Array(buffer, found + nearness.byteLength, 5);
  const plane = new Uint8Array(buffer, at, size);
  const picture = width ? await ofSamples(plane, width, height) :
                          await createImageBitmap(new Blob([plane]), {colorSpaceConversion: 'none'});
  const canvas = upright(picture, turn);
  spread(canvas, nearness);
  return new Promise((resolve) => canvas.toBlob(resolve, 'image/png'));
}
