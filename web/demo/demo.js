// Makes a share page out of a photo and a depth map, or a portrait photo that holds one, all in this page.
import '../element/parallax-photo.js';
import {compose, within} from './compose.js';
import {depthInside} from './portrait.js';

const PHOTO_QUALITY = 0.85;
const find = (id) => document.getElementById(id);

const images = {};  // photo and depth
let chosen = {};    // what somebody has set; the rest is found anew for each picture
let composed;
let isSample = false;  // these are the page's own
let depthIsThePhotos = false;  // found inside it

function say(text) {
  find('said').textContent = text;
}

const motion = () => `pointer tilt keys ${find('motion').value}`;

async function show() {
  find('choices').disabled = true;
  find('findings').textContent = '';
  if (!images.photo || !images.depth) return find('picture').replaceChildren();
  try {
    composed = await compose(images.photo, images.depth, {
      inside: depthIsThePhotos,
      near: depthIsThePhotos ? 'larger' : 'unknown',
      ...chosen,
    });
  } catch (error) {
    find('picture').replaceChildren();
    return say(error.message);
  }
  find('inverted').checked = composed.inverted;
  find('findings').textContent = composed.findings.join('; ');
  find('frame').value = composed.params.fov_scale;
  find('pivot').value = composed.params.rotate_z_trans;
  const element = document.createElement('parallax-photo');
  element.loading = 'eager';
  // The whole picture, as the page will show it.
  element.style.width = `min(100%, calc(75vh * ${images.photo.naturalWidth} / ${images.photo.naturalHeight}))`;
  element.alt = find('alt').value;
  element.motion = motion();
  element.params = composed.params;
  element.amount = composed.amount;
  element.src = images.photo.src;
  element.depth = depthPicture(composed);
  element.addEventListener('error', (event) => element.isConnected && say(event.message));
  element.addEventListener('load', () => {
    if (!element.isConnected) return;
    say('');
    find('choices').disabled = false;
  });
  find('picture').replaceChildren(element);
}

async function set(role, picture) {
  const image = new Image();
  image.src = URL.createObjectURL(picture);
  await image.decode();
  if (isSample) for (const name of ['photo', 'depth']) delete images[name];
  isSample = false;
  if (images[role]) URL.revokeObjectURL(images[role].src);
  images[role] = image;
}

/** The depth map that a portrait photo holds; null for other pictures, and where nothing can read it. */
const depthOf = (file) => depthInside(file).catch(() => null);

let work = Promise.resolve();
/** Files are taken one after the other, however fast they come. */
const inTurn = (task) => work = work.then(task);

async function take(file, role) {
  try {
    await set(role, file);
  } catch {
    return say(`${file.name}: this browser cannot read it as a picture`);
  }
  if (role === 'photo') {
    const depth = await depthOf(file);
    if (depth) {
      await set('depth', depth);
    } else if (depthIsThePhotos) {
      delete images.depth;
    }
    depthIsThePhotos = !!depth;
  } else {
    depthIsThePhotos = false;
  }
  say(images.photo && images.depth ? '' : `${file.name}: and its ${role === 'photo' ? 'depth map' : 'photo'}?`);
  chosen = {};
  await show();
}

/** Whether a picture is gray, as depth maps are, from a small copy of it. */
async function isGray(file) {
  const picture = await createImageBitmap(file, {resizeWidth: 32, resizeHeight: 32});
  const canvas = Object.assign(document.createElement('canvas'), {width: 32, height: 32});
  const context = canvas.getContext('2d');
  context.drawImage(picture, 0, 0);
  const {data} = context.getImageData(0, 0, 32, 32);
  let colour = 0;
  for (let i = 0; i < data.length; i += 4)
    colour += Math.max(Math.abs(data[i] - data[i + 1]), Math.abs(data[i + 1] - data[i + 2]));
  return colour / (data.length / 4) < 4;
}

async function drop(files) {
  const maps = [];
  for (const file of files) {
    try {
      // Portraits may be black and white.
      if ((await isGray(file)) && !(await depthOf(file))) maps.push(file);
      else await take(file, 'photo');
    } catch {
      say(`${file.name}: this browser cannot read it as a picture`);
    }
  }
  for (const map of maps) await take(map, 'depth');
}

/** The shaped depth as a PNG file's address. */
function depthPicture({width, height, samples}) {
  const pixels = new ImageData(width, height);
  samples.forEach((sample, i) => pixels.data.set([sample, sample, sample, 255], 4 * i));
  return coded(width, height, (context) => context.putImageData(pixels, 0, 0), 'image/png');
}

function coded(width, height, draw, type, quality) {
  const canvas = Object.assign(document.createElement('canvas'), {width, height});
  draw(canvas.getContext('2d', {alpha: false}));
  return canvas.toDataURL(type, quality);
}

const escaped = (text) => String(text).replace(
    /[&<>"]/g, (character) => ({'&': '&amp;', '<': '&lt;', '>': '&gt;', '"': '&quot;'})[character]);

/** The element's modules as one script. */
async function elementScript() {
  const modules = await Promise.all(['geometry', 'class', 'parallax-photo'].map(
      async (name) => (await fetch(`../element/${name}.js`)).text()));
  return modules.join('\n').replace(/^(import|export) \{.*$/gm, '').replace(/^export /gm, '')
      .replace(/^ *(\/\/|\/?\*).*\n/gm, '').replace(/^\s+/gm, '');
}

async function sharePage() {
  const [width, height] = within(images.photo);
  const [template, script] =
      await Promise.all([fetch('../share/page.html').then((answer) => answer.text()), elementScript()]);
  const digest = new Uint8Array(await crypto.subtle.digest('SHA-256', new TextEncoder().encode(script)));
  const parts = {
    'script-source': `'sha256-${btoa(String.fromCharCode(...digest))}'`,
    title: escaped(find('alt').value),
    alt: escaped(find('alt').value),
    width,
    height,
    motion: motion(),
    attributes: `amount="${composed.amount}" params="${escaped(JSON.stringify(composed.params))}"`,
    depth: depthPicture(composed),
    photo: coded(width, height, (context) => {
      context.imageSmoothingQuality = 'high';
      context.drawImage(images.photo, 0, 0, width, height);
    }, 'image/jpeg', PHOTO_QUALITY),
    script,
  };
  return template.replace(/\{\{([a-z-]+)\}\}/g, (whole, name) => parts[name]);
}

for (const role of ['photo', 'depth'])
  find(role).addEventListener('change', (event) => {
    const [file] = event.target.files;
    if (file) inTurn(() => take(file, role));
  });
for (const id of ['frame', 'pivot'])
  find(id).addEventListener('change', () => {
    chosen[id] = +find(id).value;
    inTurn(show);
  });
find('inverted').addEventListener('change', () => {
  chosen = {near: find('inverted').checked ? 'smaller' : 'larger'};
  inTurn(show);
});
find('motion').addEventListener('change', () => {
  for (const element of find('picture').children) element.motion = motion();
});
for (const type of ['dragenter', 'dragover'])
  document.addEventListener(type, (event) => {
    event.preventDefault();
    find('drop').classList.add('over');
  });
document.addEventListener('dragleave', () => find('drop').classList.remove('over'));
document.addEventListener('drop', (event) => {
  event.preventDefault();
  find('drop').classList.remove('over');
  // The event's own list empties once it is over.
  const files = [...event.dataTransfer.files];
  inTurn(() => drop(files));
});
inTurn(async () => {
  for (const [role, file] of [['photo', 'photo.jpg'], ['depth', 'depth.png']]) {
    images[role] = Object.assign(new Image(), {src: `sample/${file}`});
    await images[role].decode();
  }
  isSample = true;
  await show();
});
find('save').addEventListener('click', async () => {
  let page;
  try {
    page = await sharePage();
  } catch (error) {
    return say(`the page cannot be made: ${error.message}`);
  }
  say('');
  const link = document.createElement('a');
  link.href = URL.createObjectURL(new Blob([page], {type: 'text/html'}));
  link.download = 'share.html';
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 60000);
});
