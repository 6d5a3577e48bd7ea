import {ParallaxPhoto} from './class.js';

export * from './class.js';

declare global {
  interface HTMLElementTagNameMap {
    'parallax-photo': ParallaxPhoto;
  }
}
