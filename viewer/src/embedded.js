// The model and the manifest that stand in the page itself.

// A multiple of four, so that each piece is whole base64; small enough for the stack of no engine
// to matter.
const PIECE = 1 << 20;

/** Bytes of base64 text; white space is passed over. Throws a DOMException on other text. */
export function bytesOfBase64(text) {
  const clean = /\s/.test(text) ? text.replace(/\s+/g, '') : text;
  const padding = clean.endsWith('==') ? 2 : clean.endsWith('=') ? 1 : 0;
  const bytes = new Uint8Array((clean.length / 4) * 3 - padding);
  let at = 0;
  // In pieces: a string of the whole model would cost twice its size again.
  for (let start = 0; start < clean.length; start += PIECE) {
    const piece = atob(clean.slice(start, start + PIECE));
    for (let n = 0; n < piece.length; n++) bytes[at++] = piece.charCodeAt(n);
  }
  return bytes;
}

async function inflate(bytes) {
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream('deflate'));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

/**
 * What the page holds: the bytes of the .glb, which stand there in zlib's format as base64, or null;
 * and the manifest, empty when there is none. The text of the model leaves the document. Throws when
 * the bytes are damaged.
 */
export async function takeEmbedded(document) {
  const model = document.getElementById('veltrum-model');
  const text = model.textContent.trim();
  model.textContent = '';
  const manifest = document.getElementById('veltrum-manifest').textContent.trim();
  return {
    bytes: text ? await inflate(bytesOfBase64(text)) : null,
    manifest: manifest ? JSON.parse(manifest) : {},
  };
}
