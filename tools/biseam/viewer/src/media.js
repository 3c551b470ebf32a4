// Where the page's picture, video and seams are.  In a file they follow the settings in script elements of base64, each a
// whole number of bytes, since one string could not hold a long video; a served page names addresses instead.

const bytesOf = (text) => Uint8Array.fromBase64?.(text) ?? Uint8Array.from(atob(text), (c) => c.charCodeAt(0));

const nextTask = () => new Promise((resolve) => setTimeout(resolve));

// Every element is removed once it is decoded, so that a long video is not held twice.
async function decode(name) {
  const parts = [];
  for (const element of document.querySelectorAll(`script[data-of="${name}"]`)) {
    parts.push(bytesOf(element.textContent));
    element.remove();
    await nextTask();
  }
  return parts;
}

export const settings = JSON.parse(document.getElementById("settings").textContent);

// An address to load from, or undefined where the page has none of this name.
export async function address(name) {
  const file = settings[name];
  if (!file) return undefined;
  if (file.address) return file.address;
  return URL.createObjectURL(new Blob(await decode(name), { type: file.type }));
}
