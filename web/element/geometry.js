// What the renderer computes on the CPU for each picture: the mesh and the matrix. Math.fround stands wherever the
// renderer rounds to single precision, so that both come out bit by bit as it computes them.
const f = Math.fround;
const DEGREE = 3.1415926;  // over 180: hosts tuned their angles with this value
const TWICE_TAN_30 = 1.1547005145615656;
const BASELINE = f(2.4);
const HALF_HEIGHT = 18.5;
const DISTANCE = 32;

/** The parameters that the element knows, with the renderer's defaults. */
export const DEFAULTS = {
  rotate_z_trans: 40,
  rotate_x_boundary: 12,
  rotate_y_boundary: 12,
  trans_to_rotate_scale: 0.6,
  far_offset_ext: 100,
  guided_filter_rx: 2,
  guided_filter_ry: 2,
  guided_filter_eps: 1e-6,
  depth_contrast: 24,
  border_deadzone: 64,
  fov_scale: 0.81,
};

/** Half the mesh's width, in object units, for a picture of width x height pixels. */
export function halfWidth(width, height) {
  const unit = Math.trunc(width / (f(width / height) * TWICE_TAN_30));
  const disparity = Math.trunc(BASELINE * 0.03125 * unit);
  const shift = Math.trunc(disparity - unit * (BASELINE * 0.015625));
  return f(f(f(HALF_HEIGHT * width) / height) + DISTANCE * f(shift / unit));
}

/** The mesh's vertices, x y z u v, row by row from the photo's first one: (columns + 1) * (rows + 1). */
export function vertices(columns, rows, half_width) {
  const out = new Float32Array(5 * (columns + 1) * (rows + 1));
  const step_x = f((2 * half_width) / columns), step_u = f(1 / columns);
  const step_y = f((2 * HALF_HEIGHT) / rows), step_v = f(1 / rows);
  let i = 0, y = -HALF_HEIGHT, v = 0;
  for (let row = 0; row <= rows; ++row, y = f(y + step_y), v = f(v + step_v)) {
    let x = -half_width, u = 0;
    for (let column = 0; column <= columns; ++column, x = f(x + step_x), u = f(u + step_u)) {
      out[i++] = x;
      out[i++] = y;
      out[i++] = -DISTANCE;
      out[i++] = u;
      out[i++] = v;
    }
  }
  return out;
}

/** Two triangles a cell, in the renderer's order; 16 bits an index where they suffice. */
export function indices(columns, rows) {
  const width = columns + 1;
  const Indices = width * (rows + 1) > 65536 ? Uint32Array : Uint16Array;
  const out = new Indices(6 * columns * rows);
  let i = 0;
  for (let row = 0; row < rows; ++row)
    for (let a = row * width; a < row * width + columns; ++a)
      for (const corner of [0, width, 1, 1, width, width + 1]) out[i++] = a + corner;
  return out;
}

/** Where the renderer stands on an axis of `extent` pixels when it is asked to look from `position`, -1..1. */
export function heldPosition(position, extent, deadzone) {
  const border = f(extent / f(deadzone));
  const clamped = f(Math.max(-1, Math.min(1, position)));
  let place = f(f(f(clamped * 0.5) + 0.5) * extent);
  if (place < border) place = border;
  if (place > f(extent - 1 - border)) place = f(extent - 1 - border);
  return f(f(place - f(extent * 0.5)) / f(extent * 0.5));
}

// Matrices are 16 numbers, a[4 * i + j] what the renderer has in mat[i][j].
const identity = () => [1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1];

/** The sum of the products of four numbers each. */
const dot = (a, b, c, d, e, g, h, k) => f(f(f(f(a * b) + f(c * d)) + f(e * g)) + f(h * k));

function product(a, b) {
  const out = identity();
  for (let i = 0; i < 16; i += 4)
    for (let j = 0; j < 4; ++j)
      out[i + j] = dot(a[i], b[j], a[i + 1], b[4 + j], a[i + 2], b[8 + j], a[i + 3], b[12 + j]);
  return out;
}

function translate(m, z) {
  for (let j = 0; j < 4; ++j) m[12 + j] = f(m[12 + j] + f(f(f(m[j] * 0) + f(m[4 + j] * 0)) + f(m[8 + j] * z)));
}

function rotated(m, angle, x, y, z) {
  const radians = (angle * DEGREE) / 180;
  const s = Math.sin(radians), c = Math.cos(radians), t = 1 - c;
  const r = identity();
  r[0] = f(t * x * x + c);
  r[1] = f(t * y * x + s * z);
  r[2] = f(t * z * x - s * y);
  r[4] = f(t * x * y - s * z);
  r[5] = f(t * y * y + c);
  r[6] = f(t * z * y + s * x);
  r[8] = f(t * x * z + s * y);
  r[9] = f(t * y * z - s * x);
  r[10] = f(t * z * z + c);
  return product(r, m);
}

function frustum(x, y, near, far) {
  const depth = f(far - near);
  const m = identity();
  m[0] = f(f(2 * near) / f(x + x));
  m[5] = f(f(2 * near) / f(y + y));
  m[10] = f(-f(far + near) / depth);
  m[11] = -1;
  m[14] = f(f(f(-2 * far) * near) / depth);
  m[15] = 0;
  return product(m, identity());
}

/**
 * The model-view-projection matrix for a view position, whose axes heldPosition gives. Its pictures have the photo's
 * first row at the bottom.
 */
export function viewMatrix(params, x, y, half_width) {
  const gain = f(params.trans_to_rotate_scale), pivot = f(params.rotate_z_trans);
  const about_y = f(f(f(x) * gain) * f(params.rotate_x_boundary));
  const about_x = f(f(f(y) * gain) * f(params.rotate_y_boundary));
  const rotation = rotated(rotated(identity(), -about_y, 0, 1, 0), -about_x, 1, 0, 0);
  let modelview = identity();
  translate(modelview, -pivot);
  modelview = product(rotation, modelview);
  translate(modelview, pivot);
  const scale = f((f(params.fov_scale) * 12) / DISTANCE);
  const far = f(f(params.far_offset_ext) + 64);
  return product(modelview, frustum(f(half_width * scale), f(HALF_HEIGHT * scale), 12, far));
}
