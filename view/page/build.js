// Bundles src/main.js and what it imports to viewer.js, the same bytes on every machine.

import { build } from 'esbuild';
import { readFileSync } from 'node:fs';

const licence = readFileSync('node_modules/three/LICENSE', 'utf8').replaceAll('\u00a9', '(c)').trim();

await build({
  entryPoints: ['src/main.js'],
  outfile: 'viewer.js',
  bundle: true,
  format: 'iife',
  target: 'es2021',
  minify: true,
  lineLimit: 120,
  charset: 'ascii',
  legalComments: 'none',
  banner: { js: `/*\nThis script contains three.js.\n\n${licence}\n*/` },
});
