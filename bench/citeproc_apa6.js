// Times citeproc-js formatting CSL-JSON items in a CSL style, as a measure
// to hold quillpaper refs against: one item at a time (a bibliography made
// for each) and the whole list as one bibliography. Prints
// "one-at-a-time ITEMS/S" and "whole-list ITEMS/S".
//   node citeproc_apa6.js ITEMS.json STYLE.csl LOCALE_DIR ROUNDS
const fs = require("fs");
const path = require("path");
const CSL = require("citeproc");

const [itemsPath, stylePath, localeDir, roundsText] = process.argv.slice(2);
const rounds = Number(roundsText || 10);
const items = JSON.parse(fs.readFileSync(itemsPath, "utf8"));
const byId = Object.fromEntries(items.map((it) => [it.id, it]));
const xml = fs.readFileSync(stylePath, "utf8");
const retrieveLocale = (lang) => {
  const file = path.join(localeDir, `locales-${lang}.xml`);
  return fs.existsSync(file) ? fs.readFileSync(file, "utf8") : false;
};
const engine = () => {
  const e = new CSL.Engine({ retrieveLocale, retrieveItem: (id) => byId[id] }, xml, "en-US", true);
  e.setOutputFormat("text");
  return e;
};

// The engine is made (its style read) outside the time measured: only the
// formatting counts, which favours citeproc.
function rate(label, run) {
  run(engine());  // warm up
  let n = 0;
  let seconds = 0;
  for (let r = 0; r < rounds; ++r) {
    const e = engine();
    const start = process.hrtime.bigint();
    n += run(e);
    seconds += Number(process.hrtime.bigint() - start) / 1e9;
  }
  console.log(`${label} ${(n / seconds).toFixed(0)}`);
}

rate("one-at-a-time", (e) => {
  for (const item of items) {
    e.updateItems([item.id]);
    e.makeBibliography();
  }
  return items.length;
});
rate("whole-list", (e) => {
  e.updateItems(items.map((it) => it.id));
  return e.makeBibliography()[1].length;
});
