// Repositories to try the program on, in a temporary folder that goes with the tests.
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { after } from 'node:test';

// Path of the built program.
export const PROGRAM = process.env.CONTEXT_DELTA;
if (!PROGRAM) throw new Error('CONTEXT_DELTA must name the program');

export const folder = fs.realpathSync(fs.mkdtempSync(path.join(os.tmpdir(), 'context-delta-')));
after(() => fs.rmSync(folder, { recursive: true }));

function git(root, ...args) {
  const who = ['-c', 'user.name=Ada', '-c', 'user.email=ada@example.org'];
  return execFileSync('git', ['-C', root, ...who, ...args], { encoding: 'utf8' });
}

// A repository of `files` modules that call each other, whose branch changes the first ten.
export function makeRepository(name, files) {
  const root = path.join(folder, name);
  fs.mkdirSync(path.join(root, 'pkg'), { recursive: true });
  git(root, 'init', '-q', '-b', 'main');
  const write = (i, value) => {
    const functions = Array.from({ length: 30 }, (_, j) =>
      `def f${i}_${j}(a):\n    return g(a) + f${(i + 1) % files}_${j}(${value})\n`);
    const text = `from pkg.m${(i + 1) % files} import *\n${functions.join('\n')}`;
    fs.writeFileSync(path.join(root, 'pkg', `m${i}.py`), text);
  };
  for (let i = 0; i < files; ++i) write(i, 1);
  git(root, 'add', '-A');
  git(root, 'commit', '-qm', 'one');
  git(root, 'checkout', '-qb', 'work');
  for (let i = 0; i < Math.min(files, 10); ++i) write(i, 2);
  git(root, 'commit', '-qam', 'two');
  return root;
}

// The pack of the command line, as text; its last options are `args`.
export function cliPack(root, ...args) {
  const text = execFileSync(PROGRAM, ['delta', '-q', '-C', root, '--format', 'json', ...args],
    { encoding: 'utf8' });
  return text.trimEnd();
}

// The same over a new index of its own.
export function coldCliPack(root) {
  return cliPack(root, '--index', path.join(fs.mkdtempSync(path.join(folder, 'cold-')), 'i.sqlite'));
}

export const dropIndex = (root) =>
  fs.rmSync(path.join(root, '.git', 'context-delta'), { recursive: true, force: true });
