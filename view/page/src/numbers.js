// The numbers of the answer: the sentence, the legend, the table, and the text that is copied.

/** Returns the shortest decimal that reads back as the same double. */
export const textOf = (number) => String(number + 0);
const vectorText = (vector) => `(${vector.map(textOf).join(', ')})`;

const UNITS = 'Lengths are in the units of the files.';

function kindInWords(kind, relation) {
  if (kind === 'overlap') return 'they share a point';
  if (kind === 'inside') return 'one is inside the other';
  return kind.replace('-', relation);
}

/** Returns a file name without its folders. */
const lastPart = (name) => name.split('/').pop() || name;

/** Returns what happens, without the direction. */
export function headlineOf({ question, answer }) {
  const within = question.clearance > 0 ? `ithin ${textOf(question.clearance)}` : null;
  const limit = question.max_distance === null ? '' : ` up to a travel of ${textOf(question.max_distance)}`;
  if (answer.status === 'none') return (within ? `Not w${within}` : 'No contact') + limit;
  if (answer.status === 'start') {
    if (within) return `W${within} from the start`;
    return question.last ? 'Last contact at the start' : 'In contact from the start';
  }
  const after = ` after ${textOf(answer.travel)}`;
  if (within) return `W${within}${after}`;
  return (question.last ? 'Last contact' : 'Contact') + after;
}

function summaryOf({ question, answer }) {
  const along = `Along ${vectorText(answer.direction)}`;
  const kind = answer.kind ? `: ${kindInWords(answer.kind, question.clearance > 0 ? ' to ' : ' on ')}` : '';
  let more = '';
  if (answer.status === 'start' && question.rule === 'solid') {
    more = answer.overlaps_at_start
      ? ' The solids overlap before any travel.'
      : ' The solids overlap at every small positive travel.';
  }
  if (answer.status === 'none') more = ' The slider ends where the body is past the others, or at the greatest travel.';
  return `${along}${kind}.${more} ${UNITS}`;
}

function bodyLines(body, place, isAround) {
  const lines = [body.name];
  if (place) lines.push(`triangle ${place.triangle} of ${body.triangles}`, `at ${vectorText(place.point)}`);
  else lines.push(`${body.triangles} ${body.triangles === 1 ? 'triangle' : 'triangles'}${isAround ? ', around the other body' : ''}`);
  const skipped = body.triangles - body.drawn;
  if (skipped > 0) {
    lines.push(skipped === 1 ? '1 triangle with a NaN or infinite corner is left out' : `${skipped} triangles with a NaN or infinite corner are left out`);
  }
  return lines;
}

/** Returns rows of a name and lines. */
function rowsOf(scene) {
  const { question, answer, patch, moving, fixed } = scene;
  const isInside = answer.kind === 'inside';
  const rows = [
    ['status', [answer.status]],
    ['travel', [answer.travel === null ? 'none' : textOf(answer.travel)]],
  ];
  if (answer.error_bound > 0) {
    const what = answer.status === 'start' ? 'each coordinate is' : 'the travel and each coordinate are';
    rows.push(['error', [`not exact: ${what} off by at most ${textOf(answer.error_bound)}`]]);
  }
  rows.push(['direction', [vectorText(answer.direction)]]);
  if (answer.kind) rows.push(['kind', [answer.kind]]);
  if (answer.normal) rows.push(['normal', [vectorText(answer.normal)]]);
  const movingLines = bodyLines(moving, answer.moving, isInside && !answer.moving);
  if (scene.changes) movingLines.splice(1, 0, scene.changes);
  rows.push(['moving', movingLines]);
  fixed.forEach((body, k) => {
    const isMet = answer.fixed_body === k;
    const name = fixed.length > 1 ? `fixed ${k}${isMet ? ', met' : ''}` : 'fixed';
    rows.push([name, bodyLines(body, isMet ? answer.fixed : null, isMet && isInside && !answer.fixed)]);
  });
  if (patch) {
    const shown = patch.listed < patch.count ? `, the first ${patch.listed} are shown` : '';
    rows.push(['patch', [`${patch.count} ${patch.count === 1 ? 'pair' : 'pairs'} of triangles${shown}`]]);
  }
  rows.push(['rule', [question.rule + (question.one_sided ? ', one-sided' : '') + (question.last ? ', last' : '')]]);
  if (question.clearance > 0) rows.push(['clearance', [textOf(question.clearance)]]);
  if (question.max_distance !== null) rows.push(['greatest travel', [textOf(question.max_distance)]]);
  rows.push(['version', [scene.version]]);
  return rows;
}

const make = (tag, text) => Object.assign(document.createElement(tag), { textContent: text });

export function showLegend(scene, setVisible) {
  const legend = document.getElementById('legend');
  for (const body of [scene.moving, ...scene.fixed]) {
    const role = body === scene.moving ? 'moving' : 'fixed';
    const box = Object.assign(document.createElement('input'), { type: 'checkbox', checked: true });
    box.addEventListener('change', () => setVisible(body.id, box.checked));
    const swatch = Object.assign(document.createElement('span'), { className: `swatch ${role}` });
    const label = document.createElement('label');
    label.append(box, swatch, make('span', `${role}: ${lastPart(body.name)}`));
    label.title = body.name;
    const item = document.createElement('li');
    item.append(label);
    legend.append(item);
  }
}

/** Copies a text also where the clipboard is not offered to pages. */
async function copy(text) {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    const area = make('textarea', text);
    document.body.append(area);
    area.select();
    const isCopied = document.execCommand('copy');
    area.remove();
    return isCopied;
  }
}

/** Shows the numbers of the scene, in place of those that are shown. */
export function showNumbers(scene) {
  const headline = headlineOf(scene);
  const rows = rowsOf(scene);
  document.title = `${headline}: ${lastPart(scene.moving.name)}`;
  document.getElementById('headline').textContent = headline;
  document.getElementById('summary').textContent = summaryOf(scene);
  const body = document.querySelector('#numbers tbody');
  body.replaceChildren();
  for (const [name, lines] of rows) {
    const row = document.createElement('tr');
    const cell = document.createElement('td');
    cell.append(...lines.map((line) => make('span', line)));
    const head = make('th', name);
    head.scope = 'row';
    row.append(head, cell);
    body.append(row);
  }
  document.getElementById('copied').textContent = '';
  return [headline, UNITS, ...rows.map(([name, lines]) => `${name}: ${lines.join(', ')}`)].join('\n');
}

/** Lets the button copy what `textOfNow` returns. */
export function useCopying(textOfNow) {
  const button = document.getElementById('copy');
  button.addEventListener('click', async () => {
    const isCopied = await copy(`${textOfNow()}\n`);
    document.getElementById('copied').textContent = isCopied ? 'Copied.' : 'The browser refused to copy.';
    button.focus();
  });
}
