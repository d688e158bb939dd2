// The data of the page: the numbers of the question and the answer, and the surfaces.

/** Returns the text of a block of data, and gives its memory back. */
function take(id) {
  const element = document.getElementById(id);
  const text = element.textContent;
  element.remove();
  return text;
}

/** Returns the bytes of base64 in lines. */
export function bytesOf(text) {
  if (Uint8Array.fromBase64) return Uint8Array.fromBase64(text);
  const binary = atob(text);
  const bytes = new Uint8Array(binary.length);
  for (let k = 0; k < binary.length; ++k) bytes[k] = binary.charCodeAt(k);
  return bytes;
}

/** Returns the numbers of a block, which are little-endian. */
function numbersOf(id, Type) {
  const bytes = bytesOf(take(id));
  const size = Type.BYTES_PER_ELEMENT;
  if (new Uint8Array(new Uint32Array([1]).buffer)[0] === 0) {
    for (let k = 0; k < bytes.length; k += size) bytes.subarray(k, k + size).reverse();
  }
  return new Type(bytes.buffer, bytes.byteOffset, bytes.byteLength / size);
}

function withArrays(body) {
  return {
    ...body,
    vertices: numbersOf(`${body.id}-vertices`, Float32Array),
    corners: numbersOf(`${body.id}-triangles`, Uint32Array),
    patch: numbersOf(`${body.id}-patch`, Uint32Array),
    points: numbersOf(`${body.id}-points`, Float32Array),
    leftOut: numbersOf(`${body.id}-left-out`, Uint32Array),
  };
}

function withAnswers(sphere) {
  return {
    ...sphere,
    directions: numbersOf('sphere-directions', Float64Array),
    codes: numbersOf('sphere-codes', Uint32Array),
    contacts: numbersOf('sphere-contacts', Float64Array),
    triangles: numbersOf('sphere-triangles', Uint32Array),
  };
}

/** Returns the number among the drawn triangles of a triangle of a body. */
export function drawnNumber(body, triangle) {
  let before = 0;
  for (const other of body.leftOut) before += other < triangle ? 1 : 0;
  return triangle - before;
}

/** Returns the scene with the arrays of its bodies, and of its sphere if it has one. */
export function readScene() {
  const scene = JSON.parse(take('scene'));
  scene.moving = withArrays(scene.moving);
  scene.fixed = scene.fixed.map(withArrays);
  if (scene.sphere) scene.sphere = withAnswers(scene.sphere);
  return scene;
}
