'use strict';
// Builds the addon at the installation, with the system's compiler and without a network. It needs a C
// compiler, the headers of Node, and those of the library. CC, CPPFLAGS, CFLAGS and LDFLAGS are those of
// make, and replace what pkg-config says of the library where LDFLAGS names it.
const { spawnSync } = require('child_process');
const fs = require('fs');
const path = require('path');

const prefix = path.dirname(path.dirname(fs.realpathSync(process.execPath)));
const folders = [path.join(prefix, 'include/node'), '/usr/include/node', '/usr/include/nodejs/src'];

function fail(words) {
  console.error(`quor: ${words}`);
  process.exit(1);
}

const headers = folders.find((folder) => fs.existsSync(path.join(folder, 'node_api.h')));
if (!headers) fail(`no node_api.h in ${folders.join(', ')}: install the package libnode-dev`);

function wordsOf(variable) {
  return (process.env[variable] || '').split(/\s+/).filter(Boolean);
}

function linkFlags() {
  const given = wordsOf('LDFLAGS');
  if (given.includes('-lquor')) return given;
  const found = spawnSync('pkg-config', ['--cflags', '--libs', 'quor'], { encoding: 'utf8' });
  return [...given, ...(found.status === 0 ? found.stdout.trim().split(/\s+/) : ['-lquor'])];
}

const out = path.join(__dirname, 'build');
fs.mkdirSync(out, { recursive: true });
const words = ['-std=c11', '-O2', '-Wall', '-Wextra', ...wordsOf('CPPFLAGS'), ...wordsOf('CFLAGS'), '-fPIC', '-shared',
  '-fvisibility=hidden', `-I${headers}`, path.join(__dirname, 'addon.c'), ...linkFlags(),
  '-o', path.join(out, 'quor.node')];
const built = spawnSync(process.env.CC || 'cc', words, { encoding: 'utf8' });
if (built.error) fail(`${built.error.message}: install a C compiler`);
if (built.status !== 0) {
  const missing = /quor\/quor\.h|-lquor/.test(built.stderr) ? ': install the package libquor-dev' : '';
  fail(`the addon does not build${missing}\n${built.stderr}`);
}
