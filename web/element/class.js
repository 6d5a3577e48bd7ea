import {DEFAULTS, halfWidth, heldPosition, indices, vertices, viewMatrix} from './geometry.js';

// The renderer's two shaders. A vertex slides along its line of sight: x / z and y / z stay as they are.
export const VERTEX_SHADER = `attribute vec4 vPosition;
attribute highp vec2 a_texCoord;
varying highp vec2 v_texCoord;
uniform mat4 mvp;
uniform sampler2D depthMap;
uniform float z_limit;
void main()
{
    float depthValue;
    float offset;
    vec4 new_position;
    v_texCoord = a_texCoord;
    depthValue = texture2D( depthMap, v_texCoord ).g;
    offset = 0.4*(depthValue*35.0-32.0);
    new_position = vPosition;
    new_position.xy += vPosition.xy*offset/vPosition.z;
    new_position.z += offset;
    gl_Position = mvp*(new_position);
}
`;
export const FRAGMENT_SHADER = `precision mediump float;
varying vec2 v_texCoord;
uniform sampler2D s_texture;
varying vec4 color;
void main()
{
    gl_FragColor = texture2D( s_texture, v_texCoord );
}
`;

const LONGEST_SIDE = 2048;       // of what is drawn, and of a photo's texture
const NEARBY = '200px';          // elements this close to the viewport are loaded
const SMOOTHING_SECONDS = 0.08;  // in which the view goes 63 % of its way
const AT_REST = 0.0005;          // of the way to the edge: less shows in no picture
const KEY_STEP = 0.2;
const IDLE_AFTER_SECONDS = 3;
const IDLE_PERIOD_SECONDS = 12;
const IDLE_SWING = 0.6;
const FULL_TILT_RADIANS = 15 * Math.PI / 180;
const RECENTRING_SECONDS = 5;
const FASTEST_TURN_RADIANS = 0.6;  // from one sample to the next; more is a jump of the angles

// Where the view stands after a turn: x, y, and how much more than once as large everything is drawn.
export const MOTIONS = {
  sway: (turn) => [Math.sin(turn), 0, 0],
  nod: (turn) => [0, Math.sin(turn), 0],
  circle: (turn) => [Math.sin(turn), -Math.cos(turn), 0],
  eight: (turn) => [Math.sin(turn), 0.5 * Math.sin(2 * turn), 0],
  orbit: (turn) => [0.85 * Math.sin(turn), -0.85 * Math.cos(turn), 0],
  zoom: (turn) => [0, 0, 0.125 - 0.125 * Math.cos(turn)],
};
const KEYS = {ArrowLeft: [-1, 0], ArrowRight: [1, 0], ArrowUp: [0, 1], ArrowDown: [0, -1]};
const ATTRIBUTES = ['src', 'depth', 'raw-depth', 'alt', 'loading', 'motion', 'amount', 'antialias', 'params'];
const DEFAULT_MOTION = 'pointer tilt keys';

const clamp = (value) => Math.max(-1, Math.min(1, value));
const prefersStillness = () => matchMedia('(prefers-reduced-motion: reduce)').matches;

// One WebGL context draws for all elements of a page, since browsers end the oldest of sixteen. Each element keeps its
// picture in a 2D canvas.
let stage;
const elements = new Set();  // those in the document

function openStage(antialias) {
  const canvas = document.createElement('canvas');
  const gl = canvas.getContext('webgl', {alpha: false, antialias});
  if (!gl || !gl.getParameter(gl.MAX_VERTEX_TEXTURE_IMAGE_UNITS)) return {};
  const opened = {canvas, gl, smooth: gl.getContextAttributes().antialias};
  canvas.addEventListener('webglcontextlost', (event) => {
    event.preventDefault();
    opened.lost = true;
    for (const element of elements) element._lose();
  });
  canvas.addEventListener('webglcontextrestored', () => {
    opened.lost = false;
    prepare(opened);
    for (const element of elements) element._wake();
  });
  prepare(opened);
  return opened;
}

function prepare(opened) {
  const {gl} = opened;
  const program = gl.createProgram();
  for (const [type, source] of [[gl.VERTEX_SHADER, VERTEX_SHADER], [gl.FRAGMENT_SHADER, FRAGMENT_SHADER]]) {
    const shader = gl.createShader(type);
    gl.shaderSource(shader, source);
    gl.compileShader(shader);
    gl.attachShader(program, shader);
    gl.deleteShader(shader);
  }
  gl.bindAttribLocation(program, 0, 'vPosition');
  gl.bindAttribLocation(program, 1, 'a_texCoord');
  gl.linkProgram(program);
  gl.useProgram(program);
  gl.uniform1i(gl.getUniformLocation(program, 's_texture'), 1);
  gl.uniform1i(gl.getUniformLocation(program, 'depthMap'), 2);
  opened.mvp = gl.getUniformLocation(program, 'mvp');
  gl.enableVertexAttribArray(0);
  gl.enableVertexAttribArray(1);
  gl.enable(gl.DEPTH_TEST);
  gl.depthFunc(gl.LEQUAL);
  gl.clearColor(0, 0, 0, 1);
  gl.pixelStorei(gl.UNPACK_ALIGNMENT, 1);
  opened.wide = gl.getExtension('OES_element_index_uint');
  opened.largest = gl.getParameter(gl.MAX_TEXTURE_SIZE);
}

function texture(format, source, plane) {
  const {gl} = stage;
  const name = gl.createTexture();
  gl.bindTexture(gl.TEXTURE_2D, name);
  for (const wrap of [gl.TEXTURE_WRAP_S, gl.TEXTURE_WRAP_T]) gl.texParameteri(gl.TEXTURE_2D, wrap, gl.CLAMP_TO_EDGE);
  for (const filter of [gl.TEXTURE_MIN_FILTER, gl.TEXTURE_MAG_FILTER])
    gl.texParameteri(gl.TEXTURE_2D, filter, gl.LINEAR);
  // A photo's colours go into what the page shows; depths stay the numbers that they are.
  gl.pixelStorei(gl.UNPACK_COLORSPACE_CONVERSION_WEBGL, plane ? gl.NONE : gl.BROWSER_DEFAULT_WEBGL);
  if (plane && plane.samples)
    gl.texImage2D(gl.TEXTURE_2D, 0, format, plane.width, plane.height, 0, format, gl.UNSIGNED_BYTE, plane.samples);
  else
    gl.texImage2D(gl.TEXTURE_2D, 0, format, format, gl.UNSIGNED_BYTE, source);
  return name;
}

function buffer(target, contents) {
  const {gl} = stage;
  const name = gl.createBuffer();
  gl.bindBuffer(target, name);
  gl.bufferData(target, contents, gl.STATIC_DRAW);
  return name;
}

async function loaded(image, what) {
  try {
    await image.decode();
  } catch {
    throw new Error(`${what}: ${image.currentSrc || image.getAttribute('src') ? 'cannot be loaded' : 'none is given'}`);
  }
  return image;
}

function imageAt(address, what) {
  const image = new Image();
  image.crossOrigin = 'anonymous';
  image.src = address;
  return loaded(image, what);
}

/** The picture scaled so that no side is longer than `longest`. */
function shrunk(image, longest) {
  const scale = longest / Math.max(image.naturalWidth, image.naturalHeight);
  if (scale >= 1) return image;
  const canvas = document.createElement('canvas');
  canvas.width = Math.max(1, Math.round(image.naturalWidth * scale));
  canvas.height = Math.max(1, Math.round(image.naturalHeight * scale));
  const context = canvas.getContext('2d');
  context.imageSmoothingQuality = 'high';
  context.drawImage(image, 0, 0, canvas.width, canvas.height);
  return canvas;
}

// Tilt. What counts is the turn from one sample to the next in the axes of the screen, so that it works alike upright,
// flat and overhead. A tilt that is held counts less and less, and one beyond full swing moves the rest position along.
let tilt;

/** The matrix that turns a device's axes into the world's, from the three angles of a sample. */
function attitude(event) {
  const [a, b, c] = [event.alpha || 0, event.beta, event.gamma].map((degrees) => degrees * Math.PI / 180);
  const sa = Math.sin(a), ca = Math.cos(a), sb = Math.sin(b), cb = Math.cos(b), sc = Math.sin(c), cc = Math.cos(c);
  return [
    ca * cc - sa * sb * sc, -sa * cb, ca * sc + sa * sb * cc,
    sa * cc + ca * sb * sc, ca * cb, sa * sc - ca * sb * cc,
    -cb * sc, sb, cb * cc,
  ];
}

function takeTilt(event) {
  if (event.beta === null || event.gamma === null) return;
  const now = attitude(event), last = tilt.last || now;
  const seconds = Math.min(0.5, Math.max(0, (event.timeStamp - (tilt.time || event.timeStamp)) / 1000));
  tilt.last = now;
  tilt.time = event.timeStamp;
  // The turn between both, in the device's axes: the odd part of last^T now.
  const at = (i, j) => last[i] * now[j] + last[3 + i] * now[3 + j] + last[6 + i] * now[6 + j];
  const about_x = (at(2, 1) - at(1, 2)) / 2, about_y = (at(0, 2) - at(2, 0)) / 2;
  if (Math.hypot(about_x, about_y) > FASTEST_TURN_RADIANS) return;
  const angle = ((screen.orientation || {}).angle || 0) * Math.PI / 180;
  const s = Math.sin(angle), c = Math.cos(angle);
  const kept = Math.exp(-seconds / RECENTRING_SECONDS);
  tilt.x = clamp(tilt.x * kept - (about_x * s + about_y * c) / FULL_TILT_RADIANS);
  tilt.y = clamp(tilt.y * kept + (about_x * c - about_y * s) / FULL_TILT_RADIANS);
  for (const element of elements) if (element._moves('tilt')) element._aim(tilt.x, tilt.y, 'tilt');
}

/** Asks for the sensors. Some phones grant them only in a click; then the elements show a button. */
async function askForTilt() {
  const sensor = globalThis.DeviceOrientationEvent;
  if (!sensor || (tilt && tilt.granted)) return;
  tilt = tilt || {x: 0, y: 0};
  try {
    tilt.granted = !sensor.requestPermission || (await sensor.requestPermission()) === 'granted';
  } catch {
    tilt.granted = false;
  }
  if (tilt.granted) addEventListener('deviceorientation', takeTilt);
  for (const element of elements) element._offerTilt();
}

const STYLE = `
:host { display: block; position: relative; overflow: hidden; touch-action: pan-y;
  aspect-ratio: var(--parallax-photo-aspect); }
:host([hidden]) { display: none; }
[part=poster] { height: 100%; transform-origin: center; }
img, ::slotted(img) { display: block; width: 100%; height: 100%; object-fit: cover; }
img[hidden] { display: none; }
canvas { position: absolute; inset: 0; width: 100%; height: 100%; object-fit: cover; visibility: hidden; }
:host([ready]) canvas { visibility: visible; }
:host([ready]) [part=poster] { visibility: hidden; }
button { position: absolute; right: 8px; bottom: 8px; padding: 6px 12px; border: 0; border-radius: 16px;
  color: #fff; background: #000a; font: 14px sans-serif; }
button[hidden] { display: none; }
`;

// Servers import this too, and have no elements.
const Base = globalThis.HTMLElement ?? class {};

export class ParallaxPhoto extends Base {
  static observedAttributes = ATTRIBUTES;

  #internals = this.attachInternals?.() ?? {};  // older browsers have none
  #canvas;
  #poster;    // the box around the poster
  #fallback;  // the image in it where the page slots none
  #button;
  #begun;     // the image that the last load began with
  #photo;     // what the textures are made from
  #depth;
  #gpu;       // textures and buffers
  #load = 0;  // counts the loads, of which the last one counts
  #failed = false;
  #near = false;
  #frame = 0;
  #time = 0;
  #idle_timer;
  #idle_since;
  #at = [0, 0, 0];  // as a motion gives it
  #target = [0, 0, 0];
  #source = 'load';
  #params = DEFAULTS;
  #box = [0, 0];  // device pixels
  #watch_place;
  #watch_size;

  constructor() {
    super();
    const root = this.attachShadow({mode: 'open'});
    root.innerHTML = `<style>${STYLE}</style><div part="poster"><slot><img alt="" hidden></slot></div>
      <canvas part="canvas" aria-hidden="true"></canvas>
      <button part="tilt-button" type="button" tabindex="-1" aria-hidden="true" hidden>Tilt to look around</button>`;
    this.#poster = root.querySelector('div');
    this.#fallback = root.querySelector('img');
    this.#button = root.querySelector('button');
    this.#canvas = root.querySelector('canvas');
    this.#button.addEventListener('click', askForTilt);
    root.querySelector('slot').addEventListener('slotchange', () => {
      if (this.#begun && this.#begun !== this.#image()) this.#reload();
    });
    this.#canvas.addEventListener('contextrestored', () => this._wake());
    for (const type of ['pointerdown', 'pointermove'])
      this.addEventListener(type, (event) => this.#follow(event));
    for (const type of ['pointerleave', 'pointercancel'])
      this.addEventListener(type, () => this._moves('pointer') && this._aim(0, 0, 'pointer'));
    this.addEventListener('keydown', (event) => this.#key(event));
    this.#frame_poster();
  }

  connectedCallback() {
    // What was set before the class was there stands in the way of the class's own.
    for (const name of ['src', 'depth', 'rawDepth', 'alt', 'loading', 'motion', 'amount', 'antialias', 'params'])
      if (Object.hasOwn(this, name)) {
        const value = this[name];
        delete this[name];
        this[name] = value;
      }
    elements.add(this);
    this.#watch_place = new IntersectionObserver(([place]) => {
      this.#near = place.isIntersecting;
      this._wake();
    }, {rootMargin: NEARBY});
    this.#watch_place.observe(this);
    this.#watch_size = new ResizeObserver(([entry]) => this.#resize(entry));
    try {
      this.#watch_size.observe(this, {box: 'device-pixel-content-box'});
    } catch {
      this.#watch_size.observe(this);
    }
    if (this._moves('tilt')) askForTilt();
    if (this._moves('keys') && !this.hasAttribute('tabindex')) this.tabIndex = 0;
    this.#name();
    this.#rest();
    this._wake();
  }

  disconnectedCallback() {
    elements.delete(this);
    this.#watch_place.disconnect();
    this.#watch_size.disconnect();
    clearTimeout(this.#idle_timer);
    cancelAnimationFrame(this.#frame);
    this.#frame = 0;
    this.#near = false;
    this.#release();
  }

  attributeChangedCallback(name) {
    if (name === 'params') this.#readParams();
    if (name === 'alt') this.#name();
    if (name === 'motion') this.#rest();
    if (name === 'src' || name === 'depth' || name === 'raw-depth') this.#reload();
    else this.#redraw();
  }

  /** The view position now: x from -1, the left, to 1, y from -1, below, to 1. */
  get view() {
    return {x: this.#at[0], y: this.#at[1]};
  }

  /** Turns the view to a position. */
  lookAt(x, y) {
    if (!Number.isFinite(x) || !Number.isFinite(y)) throw new TypeError('lookAt: two finite numbers are wanted');
    this._aim(x, y, 'script');
  }

  get params() {
    return {...this.#params};
  }
  set params(values) {
    this.setAttribute('params', JSON.stringify(values));
  }
  get amount() {
    const amount = parseFloat(this.getAttribute('amount') ?? 1);
    return amount >= 0 && amount <= 1 ? amount : 1;
  }
  set amount(value) {
    this.setAttribute('amount', value);
  }
  get antialias() {
    const antialias = this.getAttribute('antialias');
    return ['none', '2', '3', '4'].includes(antialias) ? antialias : 'auto';
  }
  set antialias(value) {
    this.setAttribute('antialias', value);
  }
  get motion() {
    return this.getAttribute('motion') ?? DEFAULT_MOTION;
  }
  set motion(value) {
    this.setAttribute('motion', value);
  }
  get loading() {
    return this.getAttribute('loading') === 'eager' ? 'eager' : 'lazy';
  }
  set loading(value) {
    this.setAttribute('loading', value);
  }
  get rawDepth() {
    return this.getAttribute('raw-depth');
  }
  set rawDepth(value) {
    if (value === null || value === false) this.removeAttribute('raw-depth');
    else this.setAttribute('raw-depth', value === true ? '' : value);
  }

  _moves(how) {
    return this.motion.split(/\s+/).includes(how);
  }

  /** Sends the view on its way. */
  _aim(x, y, source) {
    if (source === 'tilt' && prefersStillness()) return;
    this.#target = [clamp(x), clamp(y), 0];
    this.#source = source;
    this.#rest();
    this._wake();
  }

  /** Has a frame drawn, where one is to be seen. */
  _wake() {
    if (this.#failed || (!this.#near && this.loading !== 'eager') || !elements.has(this)) return;
    if (!this.#photo) return this.#begin();
    if (this.#frame || !this.#near) return;
    this.#time = 0;
    this.#frame = requestAnimationFrame((now) => this.#step(now));
  }

  _lose() {
    this.#gpu = null;
    this.removeAttribute('ready');
  }

  _offerTilt() {
    this.#button.hidden = !(tilt && tilt.granted === false && this._moves('tilt') && !prefersStillness());
  }

  #image() {
    return this.querySelector('img') ?? this.#fallback;
  }

  /** The element is the one picture that assistive technology meets. */
  #name() {
    const image = this.querySelector('img');
    const alt = this.getAttribute('alt') ?? image?.alt ?? '';
    if (!('role' in this.#internals)) return;
    this.#internals.role = alt ? 'img' : 'presentation';
    this.#internals.ariaLabel = alt;
    image?.setAttribute('aria-hidden', 'true');
  }

  #readParams() {
    try {
      const values = JSON.parse(this.getAttribute('params') ?? '{}');
      for (const [name, value] of Object.entries(values))
        if (!(name in DEFAULTS) || !Number.isFinite(value)) throw new Error(`${name} is no parameter with a number`);
      this.#params = {...DEFAULTS, ...values};
    } catch (error) {
      this.#fail(`params: ${error.message}`);
    }
    this.#frame_poster();
    if (this.hasAttribute('raw-depth')) this.#reload();
  }

  /** Shows of the poster what the first picture will show, so that nothing jumps. */
  #frame_poster() {
    this.#poster.style.transform = `scale(${1 / this.#params.fov_scale})`;
  }

  async #begin() {
    const load = ++this.#load;
    const fallback = this.#fallback, source = this.getAttribute('src');
    this.#photo = 'awaited';
    this.#name();
    try {
      stage = stage ?? openStage(this.antialias === 'auto');
      const image = this.#begun = this.#image();
      if (image === fallback && source !== null) {
        fallback.crossOrigin = 'anonymous';
        fallback.src = source;
        fallback.hidden = false;
      }
      if (!stage.gl) throw new Error('this browser has no WebGL; the photo stands still');
      const raw = this.getAttribute('raw-depth');
      const [photo, depth] = await Promise.all([
        image === fallback || source === null ? loaded(image, 'src') : imageAt(source, 'src'),
        imageAt(this.getAttribute('depth') ?? '', 'depth'),
      ]);
      const plane = raw === null
          ? {width: depth.naturalWidth, height: depth.naturalHeight}
          : await (await import('./shape.js')).shape(photo, depth, this.#params, raw === 'inverted');
      if (load !== this.#load) return;
      if (!stage.wide && (plane.width + 1) * (plane.height + 1) > 65536)
        throw new Error(`depth: a grid of ${plane.width} x ${plane.height} is more than this browser draws`);
      this.#photo = photo;
      this.#depth = {...plane, image: depth};
      this._wake();
    } catch (error) {
      if (load === this.#load) this.#fail(error.message);
    }
  }

  #fail(message) {
    this.#failed = true;
    this.#lose_picture();
    this.#poster.style.transform = '';
    this.dispatchEvent(new ErrorEvent('error', {message}));
  }

  #lose_picture() {
    ++this.#load;
    this.#release();
    this.#photo = this.#depth = null;
  }

  #reload() {
    this.#lose_picture();
    this.#failed = false;
    this._wake();
  }

  #redraw() {
    this.#source = 'script';
    if (this.#gpu) this.#gpu.drawn = false;
    this._wake();
  }

  #release() {
    const {gl, lost} = stage ?? {};
    if (this.#gpu && !lost) {
      for (const name of this.#gpu.textures) gl.deleteTexture(name);
      for (const name of this.#gpu.buffers) gl.deleteBuffer(name);
    }
    this._lose();
  }

  #resize(entry) {
    const [device] = entry.devicePixelContentBoxSize ?? [];
    const {width, height} = entry.contentRect;
    this.#box = device ? [device.inlineSize, device.blockSize] :
                         [width * devicePixelRatio, height * devicePixelRatio];
    this.#redraw();
  }

  /** The size that covers the element, of the photo's aspect. */
  #size() {
    const aspect = this.#photo.naturalWidth / this.#photo.naturalHeight;
    let width = Math.max(this.#box[0], this.#box[1] * aspect);
    width *= Math.min(1, LONGEST_SIDE / Math.max(width, width / aspect));
    return [Math.max(1, Math.round(width)), Math.max(1, Math.round(width / aspect))];
  }

  /** How many times as large it is drawn on each axis, before that is averaged. */
  #scale(width, height) {
    const {antialias} = this;
    const wanted = +antialias || (antialias === 'auto' && !stage.smooth ? 2 : 1);
    return Math.max(1, Math.min(wanted, Math.floor(stage.largest / Math.max(width, height))));
  }

  /** Brings textures and mesh to what a picture of width x height needs. */
  #upload(width, height) {
    const {gl, largest} = stage;
    const need = Math.max(width, height) / this.#params.fov_scale;
    const side = Math.min(LONGEST_SIDE, largest, 2 ** Math.ceil(Math.log2(need)));
    const half_width = halfWidth(width, height);
    if (this.#gpu && this.#gpu.side === side && this.#gpu.half_width === half_width) return;
    this.#release();
    const {width: columns, height: rows} = this.#depth;
    const cells = indices(columns, rows);
    this.#gpu = {
      side,
      half_width,
      textures: [
        texture(gl.RGB, shrunk(this.#photo, side)),
        texture(gl.LUMINANCE, this.#depth.image, this.#depth),
      ],
      buffers: [
        buffer(gl.ARRAY_BUFFER, vertices(columns, rows, half_width)),
        buffer(gl.ELEMENT_ARRAY_BUFFER, cells),
      ],
      count: cells.length,
      type: cells instanceof Uint16Array ? gl.UNSIGNED_SHORT : gl.UNSIGNED_INT,
    };
  }

  #draw() {
    const {gl, canvas} = stage;
    const [width, height] = this.#size();
    const scale = this.#scale(width, height);
    const drawn_width = scale * width, drawn_height = scale * height;
    try {
      this.#upload(drawn_width, drawn_height);
    } catch (error) {
      return this.#fail(`photo: ${error.message}`);
    }
    if (canvas.width < drawn_width) canvas.width = drawn_width;
    if (canvas.height < drawn_height) canvas.height = drawn_height;
    const {textures, buffers, count, type, half_width} = this.#gpu;
    const amount = this.amount, {border_deadzone} = this.#params;
    const params = {...this.#params, fov_scale: this.#params.fov_scale / (1 + amount * this.#at[2])};
    const matrix = viewMatrix(params, heldPosition(amount * this.#at[0], drawn_width, border_deadzone),
                              heldPosition(amount * this.#at[1], drawn_height, border_deadzone), half_width);
    // The matrix puts the photo's first row at the bottom; here it is at the top.
    for (let i = 1; i < 16; i += 4) matrix[i] = -matrix[i];
    gl.viewport(0, 0, drawn_width, drawn_height);
    gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT);
    gl.uniformMatrix4fv(stage.mvp, false, matrix);
    textures.forEach((name, i) => {
      gl.activeTexture(gl.TEXTURE1 + i);
      gl.bindTexture(gl.TEXTURE_2D, name);
    });
    gl.bindBuffer(gl.ARRAY_BUFFER, buffers[0]);
    gl.bindBuffer(gl.ELEMENT_ARRAY_BUFFER, buffers[1]);
    gl.vertexAttribPointer(0, 3, gl.FLOAT, false, 20, 0);
    gl.vertexAttribPointer(1, 2, gl.FLOAT, false, 20, 12);
    gl.drawElements(gl.TRIANGLES, count, type, 0);
    const context = this.#canvas.getContext('2d', {alpha: false});
    if (this.#canvas.width !== width) this.#canvas.width = width;
    if (this.#canvas.height !== height) this.#canvas.height = height;
    context.imageSmoothingQuality = 'high';
    context.drawImage(
        canvas, 0, canvas.height - drawn_height, drawn_width, drawn_height, 0, 0, width, height);
    this.#gpu.drawn = true;
    if (!this.hasAttribute('ready')) {
      this.setAttribute('ready', '');
      this.dispatchEvent(new Event('load'));
    }
  }

  #step(now) {
    this.#frame = 0;
    if (!this.#near || !this.#depth || stage.lost || !this.#box[0] || !this.#box[1]) return;
    const seconds = this.#time ? Math.min(0.1, (now - this.#time) / 1000) : 1 / 60;
    this.#time = now;
    const idle = this.#idle_since !== undefined;
    if (idle) {
      this.#idle_since = this.#idle_since || now;
      const turn = (now - this.#idle_since) / 1000 * 2 * Math.PI / IDLE_PERIOD_SECONDS;
      // A motion that starts off the middle is reached softly.
      const swing = IDLE_SWING * Math.min(1, turn);
      const places = this.#idleMotions().map((name) => MOTIONS[name](turn));
      this.#target = [0, 1, 2].map((i) => clamp(places.reduce((sum, place) => sum + swing * place[i], 0)));
      this.#source = 'idle';
    }
    const left = this.#target.map((target, i) => target - this.#at[i]);
    const rests = Math.hypot(...left) < AT_REST;
    const part = rests || prefersStillness() ? 1 : 1 - Math.exp(-seconds / SMOOTHING_SECONDS);
    if (left.some((way) => way) || !this.#gpu?.drawn) {
      this.#at = this.#at.map((at, i) => at + part * left[i]);
      if (part === 1) this.#at = [...this.#target];
      this.#draw();
      const [x, y] = this.#at;
      this.dispatchEvent(new CustomEvent('view', {detail: {x, y, source: this.#source}}));
    }
    if ((idle || part < 1) && !this.#failed) {
      this.#frame = requestAnimationFrame((next) => this.#step(next));
    }
  }

  #idleMotions() {
    return this.motion.split(/\s+/).filter((word) => Object.hasOwn(MOTIONS, word));
  }

  /** Ends the idle motion, and starts it again when nothing moves the view for a while. */
  #rest() {
    clearTimeout(this.#idle_timer);
    this.#idle_since = undefined;
    if (!this.#idleMotions().length || !this.isConnected) return;
    this.#idle_timer = setTimeout(() => {
      if (prefersStillness()) return;
      this.#idle_since = 0;
      this._wake();
    }, IDLE_AFTER_SECONDS * 1000);
  }

  #follow(event) {
    if (!this._moves('pointer')) return;
    const box = this.getBoundingClientRect();
    this._aim(2 * (event.clientX - box.left) / box.width - 1, 1 - 2 * (event.clientY - box.top) / box.height,
              'pointer');
  }

  #key(event) {
    if (!this._moves('keys') || event.ctrlKey || event.altKey || event.metaKey) return;
    const step = KEYS[event.key];
    if (event.key === 'Escape') {
      // People must be able to stop what moves by itself.
      this._aim(this.#target[0], this.#target[1], 'keys');
      clearTimeout(this.#idle_timer);
      return;
    }
    if (!step && event.key !== 'Home') return;
    event.preventDefault();
    const [x, y] = step ? [this.#target[0] + KEY_STEP * step[0], this.#target[1] + KEY_STEP * step[1]] : [0, 0];
    this._aim(x, y, 'keys');
  }
}

for (const name of ['src', 'depth', 'alt'])
  Object.defineProperty(ParallaxPhoto.prototype, name, {
    configurable: true,
    enumerable: true,
    get() {
      return this.getAttribute(name) ?? '';
    },
    set(value) {
      this.setAttribute(name, value);
    },
  });
