// How the tool server starts and ends, as a process.
import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { once } from 'node:events';
import { createInterface } from 'node:readline';
import { test } from 'node:test';

import { PROGRAM, cliPack, coldCliPack, dropIndex, folder, makeRepository } from './repositories.mjs';

const root = makeRepository('repository', 120);
const expected = coldCliPack(root);

const META = {
  'io.modelcontextprotocol/protocolVersion': '2026-07-28',
  'io.modelcontextprotocol/clientCapabilities': {},
};
const call = (id, progressToken) => JSON.stringify({
  jsonrpc: '2.0', id, method: 'tools/call',
  params: { name: 'context', arguments: {}, _meta: { ...META, progressToken } },
}) + '\n';

// A server on a fresh index, once it is in the middle of indexing.
async function indexing() {
  dropIndex(root);
  const server = spawn(PROGRAM, ['serve', '-C', root], { stdio: ['pipe', 'pipe', 'pipe'] });
  let errors = '';
  server.stderr.on('data', (text) => { errors += text; });
  server.lines = createInterface({ input: server.stdout });
  server.stdin.write(call(1, 'p'));
  const [line] = await once(server.lines, 'line');
  assert.equal(JSON.parse(line).method, 'notifications/progress');
  server.ended = once(server, 'exit').then(([code, signal]) => ({ code, signal, errors }));
  return server;
}

const ENDS = {
  'its input is closed': (server) => server.stdin.end(),
  'nobody reads its output': (server) => server.stdout.destroy(),
  'SIGTERM comes': (server) => server.kill('SIGTERM'),
  'SIGINT comes': (server) => server.kill('SIGINT'),
};
for (const [name, end] of Object.entries(ENDS)) {
  test(`ends in good order when ${name}`, async () => {
    const server = await indexing();
    const later = [];
    server.lines.on('line', (line) => later.push(JSON.parse(line)));
    end(server);
    assert.deepEqual(await server.ended, { code: 0, signal: null, errors: '' });
    assert.ok(later.every((line) => line.method === 'notifications/progress'));
    assert.equal(cliPack(root), expected);
  });
}

test('ends in good order when SIGTERM comes and nobody reads', async () => {
  const server = spawn(PROGRAM, ['serve', '-C', root], { stdio: ['pipe', 'pipe', 'inherit'] });
  const list = JSON.stringify({ jsonrpc: '2.0', id: 1, method: 'tools/list', params: { _meta: META } });
  await new Promise((done) => server.stdin.write(`${list}\n`.repeat(200), done));
  await once(server.stdout, 'readable');  // it has started; nothing is taken from what is there
  server.kill('SIGTERM');
  assert.deepEqual(await once(server, 'exit'), [0, null]);
});

test('leaves a whole index when it is killed', async () => {
  const server = await indexing();
  server.kill('SIGKILL');
  await server.ended;
  assert.equal(cliPack(root), expected);
});

test('writes nothing but messages, whatever it is told to log', () => {
  const input = ['garbage', call('x'), call('y').replace('context"', 'contexts"'), ''].join('\n');
  const { status, stdout, stderr } = spawnSync(PROGRAM, ['serve', '-v', '--root', root],
    { input, encoding: 'utf8' });
  assert.equal(status, 0);
  for (const line of stdout.trimEnd().split('\n')) assert.equal(JSON.parse(line).jsonrpc, '2.0');
  assert.match(stderr, /^context-delta: refused: /);
});

test('says why it does not start', () => {
  const start = (...args) => {
    const { status, stdout, stderr } = spawnSync(PROGRAM, ['serve', ...args],
      { cwd: folder, input: '', encoding: 'utf8' });
    assert.equal(stdout, '');
    return `${status} ${stderr}`;
  };
  assert.match(start(), /^3 context-delta: not a git repository: /);
  assert.match(start('--root', 'none'), /^2 context-delta: --root takes a folder, not /);
  assert.match(start('--root', 'repository', '--index', 'x'), /^2 .*--index does not belong to 'serve'/);
  assert.equal(start('--root', 'repository', '--root', '.', '-q'), '0 ');
});
