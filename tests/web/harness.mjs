// A browser and a server for the tests. Paths come in environment variables, see tests/checks/web.
import {createReadStream} from 'node:fs';
import {createServer} from 'node:http';
import {extname, join, normalize} from 'node:path';
import {fileURLToPath} from 'node:url';

export const repository = fileURLToPath(new URL('../../', import.meta.url));
export const made = process.env.QUORVANE_WEB_MADE;  // what the stage has made for the tests
const {chromium} = await import(join(made, 'node_modules/playwright-core/index.mjs'));

export const openBrowser = () => chromium.launch({
  executablePath: process.env.QUORVANE_CHROMIUM || '/usr/bin/chromium',
  args: ['--no-sandbox', '--use-gl=angle', '--use-angle=swiftshader', '--enable-unsafe-swiftshader'],
});

const TYPES = {
  '.html': 'text/html',
  '.js': 'text/javascript',
  '.wasm': 'application/wasm',
  '.png': 'image/png',
  '.jpg': 'image/jpeg',
  '.json': 'application/json',
};

/** Serves the repository, under /made/ what the stage has made, and as /page what `server.page` holds. */
function serve() {
  const server = createServer((request, response) => {
    const path = normalize(decodeURIComponent(new URL(request.url, 'http://x').pathname));
    if (path === '/page') return response.setHeader('Content-Type', 'text/html').end(server.page);
    const file = path.startsWith('/made/') ? join(made, path.slice(6)) : join(repository, path);
    response.setHeader('Content-Type', TYPES[extname(file)] ?? 'application/octet-stream');
    createReadStream(file).on('error', () => response.writeHead(404).end()).pipe(response);
  });
  return new Promise((resolve) => server.listen(0, '127.0.0.1', () => resolve(server)));
}

/** A browser, and what `serve` gives with the address that it is reached at. */
export async function openServed() {
  const browser = await openBrowser();
  const server = await serve();
  return {browser, server, base: `http://127.0.0.1:${server.address().port}`};
}

/** Also where opening failed. */
export async function closeServed({browser, server}) {
  await browser?.close();
  server?.close();
}

/** Role and name of each node that assistive technology meets, but for those that only hold others. */
export async function accessibleNodes(page) {
  const session = await page.context().newCDPSession(page);
  const {nodes} = await session.send('Accessibility.getFullAXTree');
  return nodes.filter((node) => !node.ignored && !['RootWebArea', 'none', 'generic'].includes(node.role.value))
      .map((node) => `${node.role.value} ${node.name?.value ?? ''}`.trim());
}

/** Calls `question` until it says yes. Software rendering on a busy machine takes its time. */
export async function until(what, question, seconds = 60) {
  const end = Date.now() + seconds * 1000;
  while (!(await question())) {
    if (Date.now() > end) throw new Error(`still not after ${seconds} s: ${what}`);
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
}
