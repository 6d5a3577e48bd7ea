/** What the renderer can be tuned by. README.md of the repository says what each does. */
export interface ParallaxParams {
  rotate_z_trans: number;
  rotate_x_boundary: number;
  rotate_y_boundary: number;
  trans_to_rotate_scale: number;
  far_offset_ext: number;
  guided_filter_rx: number;
  guided_filter_ry: number;
  guided_filter_eps: number;
  depth_contrast: number;
  border_deadzone: number;
  fov_scale: number;
}

/** Where the view stands: x from -1, the left, to 1, and y from -1, below, to 1. */
export interface ViewPosition {
  x: number;
  y: number;
}

/** What moved the view. */
export type ViewSource = 'load' | 'pointer' | 'tilt' | 'keys' | 'idle' | 'script';

export interface ParallaxPhotoEventMap extends HTMLElementEventMap {
  /** Each frame that shows another view. */
  view: CustomEvent<ViewPosition & {source: ViewSource}>;
  /** The first picture is there. */
  load: Event;
  /** It cannot be drawn; the photo stands still. `message` is one sentence. */
  error: ErrorEvent;
}

/** A photo that moves in depth. On a server the class can be imported, not constructed. */
export class ParallaxPhoto extends HTMLElement {
  /** The photo's address. Without it the slotted image is the photo. */
  src: string;
  /** The depth map's address: shaped as `quorvane shape` writes it, or any with `rawDepth`. Larger is nearer. */
  depth: string;
  /** "" or "inverted" (larger is farther): the depth map is shaped here. null: it is shaped already. */
  rawDepth: string | null;
  /** What the photo shows, for people who do not see it. */
  alt: string;
  /** lazy, the default: the photo is loaded when it comes near the viewport. */
  loading: 'lazy' | 'eager';
  /** What may move the view: words of "pointer tilt keys" and one of sway, nod, circle and eight for when nothing does. */
  motion: string;
  /** How far the view goes, 0 to 1. */
  amount: number;
  /**
   * How outlines are smoothed: auto as the browser does, and twice as large where it does not; none; 2, 3 or 4 times as
   * large, then averaged. A page has one context: its first element says whether the browser smooths.
   */
  get antialias(): 'auto' | 'none' | '2' | '3' | '4';
  set antialias(value: 'auto' | 'none' | '2' | '3' | '4' | 2 | 3 | 4);
  get params(): ParallaxParams;
  set params(values: Partial<ParallaxParams>);
  readonly view: ViewPosition;
  /** Turns the view to a position, softly unless the user prefers reduced motion. */
  lookAt(x: number, y: number): void;
  addEventListener<K extends keyof ParallaxPhotoEventMap>(
      type: K, listener: (this: ParallaxPhoto, event: ParallaxPhotoEventMap[K]) => unknown,
      options?: boolean | AddEventListenerOptions): void;
  addEventListener(
      type: string, listener: EventListenerOrEventListenerObject, options?: boolean | AddEventListenerOptions): void;
}
