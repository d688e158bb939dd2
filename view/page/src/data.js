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

/** Returns the 32-bit numbers of a block, which are little-endian. */
function numbersOf(id, Type) {
  const bytes = bytesOf(take(id));
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  if (new Uint8Array(new Uint32Array([1]).buffer)[0] === 0) {
    for (let k = 0; k < bytes.length; k += 4) view.setUint32(k, view.getUint32(k, true), false);
  }
  return new Type(bytes.buffer, bytes.byteOffset, bytes.byteLength / 4);
}

function withArrays(body) {
  return {
    ...body,
    vertices: numbersOf(`${body.id}-vertices`, Float32Array),
    corners: numbersOf(`${body.id}-triangles`, Uint32Array),
    patch: numbersOf(`${body.id}-patch`, Uint32Array),
    points: numbersOf(`${body.id}-points`, Float32Array),
  };
}

/** Returns the scene with the arrays of its bodies. */
export function readScene() {
  const scene = JSON.parse(take('scene'));
  scene.moving = withArrays(scene.moving);
  scene.fixed = scene.fixed.map(withArrays);
  return scene;
}
