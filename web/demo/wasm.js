/** Starts WebAssembly that a build script has put into a text as base64; returns what it exports. */
export async function start(base64, imports = {}) {
  const bytes = Uint8Array.from(atob(base64), (digit) => digit.charCodeAt(0));
  const {instance: {exports}} = await WebAssembly.instantiate(bytes, {
    env: {emscripten_notify_memory_growth() {}},
    // The compiler's library asks for them: there is no environment, and nothing exits.
    wasi_snapshot_preview1: {proc_exit() {}, environ_sizes_get: () => 0, environ_get: () => 0},
    ...imports,
  });
  exports._initialize();
  return exports;
}
