// bundle.mjs OUT: puts the page together: the viewer with all it needs, one style sheet, and the licence of every package that
// went in.  What the tool fills in for a panorama stays as @@NAME@@.
import { createHash } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";
import { build } from "esbuild";

const result = await build({
  entryPoints: ["src/main.js"],
  bundle: true,
  minify: true,
  format: "iife",
  target: ["es2022"],
  legalComments: "none", // the whole licences are on the page
  charset: "utf8",
  metafile: true,
  write: false,
  outdir: "out",
  logLevel: "warning",
});

const output = (extension) => result.outputFiles.find((file) => file.path.endsWith(extension)).text.trim();
const escapeHtml = (text) => text.replaceAll("&", "&amp;").replaceAll("<", "&lt;").replaceAll(">", "&gt;");

function licences() {
  const names = Object.keys(result.metafile.inputs).map((path) => path.match(/^node_modules\/((?:@[^/]+\/)?[^/]+)/)?.[1]);
  return [...new Set(names.filter(Boolean))].sort().map((name) => {
    const { version, license } = JSON.parse(readFileSync(`node_modules/${name}/package.json`, "utf8"));
    const text = readFileSync(`node_modules/${name}/LICENSE`, "utf8").trim();
    return `<h3>${name} ${version} (${license})</h3>\n<pre>${escapeHtml(text)}</pre>`;
  });
}

// An end tag within the script would end its element.
const script = output(".js").replaceAll("</script", "<\\/script");
const parts = {
  SCRIPT_HASH: `sha256-${createHash("sha256").update(script).digest("base64")}`,
  STYLE: output(".css"),
  LICENCES: licences().join("\n"),
  SCRIPT: script,
};
const page = readFileSync("page.html", "utf8").replaceAll(/@@([A-Z_]+)@@/g, (marker, name) => parts[name] ?? marker);
writeFileSync(process.argv[2], page);
