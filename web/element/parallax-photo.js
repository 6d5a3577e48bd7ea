import {ParallaxPhoto} from './class.js';

export {ParallaxPhoto};

if (globalThis.customElements && !customElements.get('parallax-photo'))
  customElements.define('parallax-photo', ParallaxPhoto);
