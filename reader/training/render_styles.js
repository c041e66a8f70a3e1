// Renders CSL-JSON items in CSL styles with citeproc-js: one JSON line per
// item and style, {"id", "style", "text"}.
//   node render.js ITEMS.json STYLE_DIR LOCALE_DIR STYLE...
const fs = require("fs");
const path = require("path");
const CSL = require("citeproc");

const [itemsPath, styleDir, localeDir, ...styles] = process.argv.slice(2);
const items = JSON.parse(fs.readFileSync(itemsPath, "utf8"));
const byId = Object.fromEntries(items.map((it) => [it.id, it]));
const locales = {};
function retrieveLocale(lang) {
  if (!(lang in locales)) {
    const file = path.join(localeDir, `locales-${lang}.xml`);
    locales[lang] = fs.existsSync(file) ? fs.readFileSync(file, "utf8") : false;
  }
  return locales[lang];
}
for (const style of styles) {
  const xml = fs.readFileSync(path.join(styleDir, style + ".csl"), "utf8");
  let engine;
  try {
    engine = new CSL.Engine({ retrieveLocale, retrieveItem: (id) => byId[id] }, xml, "en-US", true);
  } catch (e) {
    process.stderr.write(`${style}: ${e.message}\n`);
    continue;
  }
  engine.setOutputFormat("text");
  for (const item of items) {
    engine.updateItems([item.id]);
    const bib = engine.makeBibliography();
    if (!bib) continue;
    const text = bib[1].join("").replace(/\s+/g, " ").trim();
    process.stdout.write(JSON.stringify({ id: item.id, style, text }) + "\n");
  }
}
