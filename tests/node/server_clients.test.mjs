// The tool server against the official clients of its protocol, in both of its eras.
// CONTEXT_DELTA: path of the built program.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import { after, before, describe, test } from 'node:test';

import { Client as HandshakeClient } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport as HandshakeTransport } from '@modelcontextprotocol/sdk/client/stdio.js';
import { Client } from '@modelcontextprotocol/client';
import { StdioClientTransport } from '@modelcontextprotocol/client/stdio';

import { PROGRAM, cliPack, coldCliPack, dropIndex, folder, makeRepository } from './repositories.mjs';

const KINDS = {
  'sdk, handshake': async (args) => {
    const client = new HandshakeClient({ name: 'test', version: '1' });
    await client.connect(new HandshakeTransport({ command: PROGRAM, args }));
    const call = (params, options) => client.callTool(params, undefined, options);
    return { client, call };
  },
  'client, handshake': (args) => connected(args, 'legacy', 'legacy'),
  'client, probing': (args) => connected(args, 'auto', 'modern'),
  'client, stateless': (args) => connected(args, { pin: '2026-07-28' }, 'modern'),
};

async function connected(args, mode, era) {
  const client = new Client({ name: 'test', version: '1' }, { versionNegotiation: { mode } });
  await client.connect(new StdioClientTransport({ command: PROGRAM, args }));
  assert.equal(client.getProtocolEra(), era);
  return { client, call: (params, options) => client.callTool(params, options) };
}

const delta = (args = {}) => ({ name: 'context', arguments: { action: 'delta', ...args } });

const small = makeRepository('small', 12);
const large = makeRepository('large', 200);

for (const [kind, connect] of Object.entries(KINDS)) {
  describe(kind, () => {
    let server;
    before(async () => { server = await connect(['serve', '--root', folder]); });
    after(() => server.client.close());

    test('lists one tool with schemas that the client can compile', async () => {
      const { tools } = await server.client.listTools();
      assert.deepEqual(tools.map((tool) => tool.name), ['context']);
      const [{ inputSchema, outputSchema, annotations }] = tools;
      assert.equal(inputSchema.properties.token_budget.default, 4000);
      assert.deepEqual(inputSchema.properties.action.enum, ['delta']);
      assert.equal(outputSchema.type, 'object');
      assert.equal(annotations.readOnlyHint, true);
      const instructions = server.client.getInstructions();
      assert.match(instructions, /context/);
    });

    test('gives the packs of the command line in both halves, all valid', async () => {
      await server.client.listTools();  // clients check results against what they know
      const cases = [
        [{}, []],
        [{ include_snippets: true, source_only: false, token_budget: 900 },
          ['--snippets', '--all-files', '--budget', '900']],
        [{ base_branch: 'main', target_branch: 'main', include_call_graph: false },
          ['--base', 'main', '--target', 'main', '--no-call-graph']],
        [{ target_branch: 'main', base_branch: 'HEAD' }, ['--target', 'main', '--base', 'HEAD']],
      ];
      for (const [args, options] of cases) {
        const result = await server.call(delta({ repo_root: small, ...args }));
        const expected = cliPack(small, ...options);
        assert.equal(result.content[0].text, expected);
        assert.deepEqual(result.structuredContent, JSON.parse(expected));
        assert.ok(!result.isError);
      }
      const error = await server.call(delta({ repo_root: small, base_branch: 'mian' }));
      assert.equal(error.isError, true);
      assert.match(error.structuredContent.error, /mian.*main/);
      const wrong = await server.call(delta({ repo_root: '/' }));
      assert.equal(wrong.isError, true);
      assert.match(wrong.content[0].text, /outside/);
    });

    test('tells its progress while it indexes', async () => {
      dropIndex(large);
      const steps = [];
      const onprogress = (step) => steps.push(step);
      const result = await server.call(delta({ repo_root: large }), { onprogress });
      assert.ok(!result.isError);
      assert.ok(steps.length >= 2, `${steps.length} steps`);
      for (let i = 1; i < steps.length; ++i) assert.ok(steps[i].progress > steps[i - 1].progress);
    });

    test('leaves a whole index when it is cancelled on the way', async () => {
      const expected = coldCliPack(large);
      const isCancelledWhile = async (phase) => {
        dropIndex(large);
        const abort = new AbortController();
        const onprogress = ({ message }) => { if (message.startsWith(phase)) abort.abort(); };
        const call = server.call(delta({ repo_root: large }), { onprogress, signal: abort.signal });
        return call.then(() => false, () => true);
      };
      for (const phase of ['parsing', 'resolving']) {
        // The answer may be faster than the wish to have none.
        let tries = 1;
        while (!await isCancelledWhile(phase)) assert.ok(++tries <= 10, phase);
        assert.equal((await server.call(delta({ repo_root: small }))).isError, false);
        assert.equal((await server.call(delta({ repo_root: large }))).content[0].text, expected);
      }
    });

    test('answers several calls at once, on a fresh index too', async () => {
      dropIndex(small);
      const budgets = [100, 500, 1000, 2000, 3000, 4000, 5000, 6000];
      const results = await Promise.all(budgets.map((token_budget) =>
        server.call(delta({ repo_root: small, token_budget }))));
      budgets.forEach((budget, i) =>
        assert.equal(results[i].content[0].text, cliPack(small, '--budget', `${budget}`)));
    });
  });
}

test('leads nowhere outside of its roots', async () => {
  const root = path.join(folder, 'root');
  fs.mkdirSync(root);
  fs.symlinkSync(small, path.join(root, 'link'));
  const { client, call } = await KINDS['client, stateless'](['serve', '--root', root]);
  for (const repo_root of [path.join(root, 'link'), 'link', small, `${root}/../small`, '../small']) {
    const result = await call(delta({ repo_root }));
    assert.equal(result.isError, true);
    assert.match(result.content[0].text, /outside/, repo_root);
  }
  await client.close();
});

test('serves the repository it is started in', async () => {
  const client = new Client({ name: 'test', version: '1' });
  await client.connect(new StdioClientTransport({ command: PROGRAM, args: ['serve'], cwd: small }));
  assert.equal((await client.callTool(delta())).content[0].text, cliPack(small));
  await client.close();
});
