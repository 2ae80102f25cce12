// browse.mjs MODULES PAGE NAMES: opens a page of `veltra report` as people do and fails where it breaks a promise: it asks
// for nothing, runs its own script alone, shows names as text, works by keyboard and without its script, needs no sideways
// scrolling on a phone, and has no serious finding of axe. NAMES is a file with a line for each name as the page shows it.
import { createRequire } from "node:module";
import { readFileSync } from "node:fs";
import { resolve } from "node:path";
import { pathToFileURL } from "node:url";

const [modules, file, namesFile] = process.argv.slice(2);
const require = createRequire(resolve(modules, "node_modules") + "/");
const puppeteer = await import(pathToFileURL(require.resolve("puppeteer-core")).href);
const axe = readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");
const address = pathToFileURL(file).href;
const names = readFileSync(namesFile, "utf8").split("\n").filter(Boolean);
const faults = [];
const expect = (isTrue, words, found = "") => {
  if (!isTrue) faults.push(words + (found === "" ? "" : ": " + JSON.stringify(found)));
};

const browser = await puppeteer.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox", "--disable-gpu"] });

/// Opens the page in a tab with these settings, calls `look` with it and closes it.
async function open({ width = 1280, dark = false, script = true, bypass = false }, look) {
  const page = await browser.newPage();
  await page.setViewport({ width, height: 900 });
  await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: dark ? "dark" : "light" }]);
  await page.setJavaScriptEnabled(script);
  await page.setBypassCSP(bypass);
  page.on("request", (request) => {
    const url = request.url();
    expect(url.split("#")[0] === address || url.startsWith("data:image/"), "the page asked for something", url.slice(0, 200));
  });
  page.on("console", (message) => expect(false, "the browser complained", message.text()));
  page.on("pageerror", (error) => expect(false, "the script failed", String(error)));
  page.on("dialog", (dialog) => (expect(false, "the page opened a dialog", dialog.message()), dialog.dismiss()));
  await page.goto(address);
  await look(page);
  await page.close();
}

await open({}, async (page) => {
  const found = await page.evaluate(() => ({
    scripts: document.scripts.length,
    handlers: Array.from(document.querySelectorAll("*")).flatMap((e) => e.getAttributeNames()).filter((n) => n.startsWith("on")),
    foreign: Object.keys(window).filter((name) => name.startsWith("foreign")),
    elements: Array.from(document.querySelectorAll("b, i, img, a"), (e) => e.id).filter((id) => id.startsWith("foreign")),
    ids: Array.from(document.querySelectorAll("[id]"), (e) => e.id),
    links: Array.from(document.querySelectorAll("a"), (a) => a.getAttribute("href")),
    texts: Array.from(document.querySelectorAll("bdi"), (e) => e.textContent),
    isFiltered: document.getElementById("filter").hidden,
  }));
  expect(found.scripts === 1, "there are other scripts", found.scripts);
  expect(found.handlers.length + found.foreign.length + found.elements.length === 0, "a name became markup", found);
  expect(new Set(found.ids).size === found.ids.length, "two elements have one address");
  for (const link of found.links) expect(found.ids.includes(link.slice(1)), "a link leads nowhere", link);
  for (const name of names) expect(found.texts.includes(name), "a name is not shown as text", name);
  expect(!found.isFiltered, "the page's own script did not run");
  const broken = await page.evaluate(() => Promise.all(Array.from(document.images, (image) => {
    image.loading = "eager";
    return image.decode().then(() => "", String);
  })));
  expect(broken.every((fault) => fault === ""), "a picture is broken", broken);

  // A link of the grid opens its block, also without a mouse.
  await page.focus("#links .ids a");
  await page.keyboard.press("Enter");
  await page.waitForFunction(() => document.querySelector("#blocks details").open, { timeout: 5000 })
    .catch(() => expect(false, "the grid does not lead to the block of a link"));
  await page.evaluate(() => document.querySelector("#table thead button").focus());
  const reached = new Set();
  for (let i = 0; i < 400; ++i) {
    reached.add(await page.evaluate(() => document.activeElement.tagName));
    await page.keyboard.press("Tab");
  }
  for (const tag of ["BUTTON", "A", "SUMMARY"]) expect(reached.has(tag), "the keyboard does not reach", tag);

  // Headrooms from the least to the greatest, those without one last; then failures alone.
  await page.evaluate(() => document.querySelectorAll("#table thead button")[4].click());
  const order = await page.evaluate(() => Array.from(document.querySelectorAll("td.headroom"), (cell) => {
    const value = parseFloat(cell.textContent.replace(/^[<>] /, ""));
    return Number.isNaN(value) ? Infinity : value;
  }).map(String));
  expect(order.every((value, i) => i === 0 || Number(order[i - 1]) <= Number(value)), "the table is not sorted", order);
  await page.select("select[name=verdict]", "fail");
  await page.waitForFunction(() => document.querySelector("#filter .shown").textContent !== "", { timeout: 5000 })
    .catch(() => expect(false, "nothing is filtered"));
  // What is there, whether it is shown, and whether it failed: rows, the grid and the blocks.
  const parts = () => page.evaluate(() => [
    ...Array.from(document.querySelectorAll("#table tbody tr"), (row) => ["row", row, row.dataset.verdict === "fail"]),
    ...Array.from(document.querySelectorAll("#links .ids li"), (cell) => ["cell", cell, cell.firstElementChild.matches(".fail")]),
    ...Array.from(document.querySelectorAll("#blocks details"), (block) => ["block", block, block.querySelector("summary b").matches(".fail")]),
  ].map(([kind, part, hasFailed]) => [kind, part.getClientRects().length > 0, hasFailed]));
  for (const kind of ["row", "cell", "block"]) {
    const found = (await parts()).filter(([other]) => other === kind);
    expect(found.some(([, isShown]) => isShown), "the filter hides every", kind);
    expect(found.every(([, isShown, hasFailed]) => isShown === hasFailed), "the filter shows another than failures", kind);
  }
  await page.emulateMediaType("print");
  await page.evaluate(() => document.querySelectorAll("details").forEach((block) => (block.open = true)));
  expect((await parts()).every(([, isShown]) => isShown), "what is filtered is not printed");
  await page.emulateMediaType("screen");
  // The address of a link that is hidden leads there all the same.
  const isThere = await page.evaluate(async () => {
    location.hash = document.querySelector("#blocks details[hidden] > div").id;
    await new Promise((resolve) => setTimeout(resolve, 500));
    return !document.querySelector("#blocks [hidden], #table [hidden]") && document.querySelector(":target").getClientRects().length > 0;
  });
  expect(isThere, "the address of a hidden link leads nowhere");
  // Also when it is the address already.
  await page.click(".work a");
  await page.select("select[name=verdict]", "pass");
  await page.$eval(".work a", (link) => link.scrollIntoView());  // what is not seen cannot be clicked
  await new Promise((resolve) => setTimeout(resolve, 500));
  await page.click(".work a");
  expect(await page.$("#blocks [hidden]") === null, "a second click on a link leads nowhere");

  // The text filter knows the words of verdicts and looks at each cell by itself.
  const shownBy = (text) => page.evaluate(async (words) => {
    document.getElementById("filter").elements.text.value = words;
    document.getElementById("filter").dispatchEvent(new Event("input"));
    await new Promise((resolve) => setTimeout(resolve, 500));
    return Array.from(document.querySelectorAll("#table tbody tr:not([hidden])"), (row) => row.dataset.verdict);
  }, text);
  const failed = await shownBy("failed");
  expect(failed.length > 0 && failed.every((verdict) => verdict === "fail"), "the text \"failed\" finds others", failed);
  const numbers = await page.$$eval("#table tbody tr:not([hidden]) .number", (cells) => cells.slice(0, 5).map((cell) => cell.textContent));
  expect((await shownBy(numbers.join(""))).length === 0, "the text filter takes several cells for one", numbers);
  await shownBy("");
  const times = () => page.evaluate(() => {
    document.querySelectorAll("#table thead button")[8].click();
    return Array.from(document.querySelectorAll("td.time"), (cell) => cell.textContent);
  });
  for (const sorted of [await times(), await times()]) {
    const isLast = sorted.indexOf("-") > 0 && sorted.slice(sorted.indexOf("-")).every((time) => time === "-" || time === "");
    expect(isLast, "rows without a time do not come last", sorted);
  }
});

// Names of values stay words, however long the text is that stands beside them.
for (const [width, media] of [[320, "screen"], [390, "screen"], [1280, "screen"], [700, "print"]]) {
  await open({ width }, async (page) => {
    await page.emulateMediaType(media);
    const found = await page.evaluate(() => {
      document.querySelectorAll("details").forEach((block) => (block.open = true));
      return Array.from(document.querySelectorAll(".values th"), (cell) => {
        const range = document.createRange();
        range.selectNodeContents(cell);
        const lines = new Set(Array.from(range.getClientRects(), (box) => Math.round(box.top))).size;
        return [cell.textContent, cell.getBoundingClientRect().width, lines];
      }).filter(([name]) => name === "measuredHeadroomOfPair");
    });
    const heights = await page.$$eval(".result img", (images) => Promise.all(images.map((image) => {
      image.loading = "eager";
      return image.decode().then(() => image.getBoundingClientRect().height);
    })));
    expect(media === "screen" || heights.every((height) => height > 0 && height < 720), "a picture with its caption does not fit a sheet", heights);
    expect(found.length > 0 && found.every(([, , lines]) => lines <= 3), "the name of a value breaks into letters", [width, media, found[0]]);
  });
}

for (const width of [390, 720, 970]) {
  await open({ width }, async (page) => {
    const found = await page.evaluate(() => {
      const later = Array.from(document.querySelectorAll("*")).filter((e) => getComputedStyle(e).contentVisibility === "auto");
      const heights = () => later.map((element) => element.getBoundingClientRect().height);
      const before = heights();
      const style = document.createElement("style");  // all is laid out, not what is on the screen
      style.textContent = "* { content-visibility: visible !important; }";
      document.head.append(style);
      const after = heights();
      document.querySelectorAll("details").forEach((block) => (block.open = true));
      const edge = document.documentElement.clientWidth;
      const isCut = (element) => {
        const box = element.getBoundingClientRect();
        const isSqueezed = box.height > 8 * box.width && element.textContent.length > 3;
        return box.width > 0 && (isSqueezed || box.left < -1 || box.right > edge + 1 ||
          element.clientWidth > 0 && element.scrollWidth > element.clientWidth + 1);
      };
      return {
        wide: document.documentElement.scrollWidth - edge,
        isFirst: (document.getElementById("work").compareDocumentPosition(document.getElementById("links")) & 4) !== 0,
        cut: Array.from(document.querySelectorAll("main td, main th, main li, main p, dd, summary, caption, img, label"))
          .filter((e) => !e.closest("svg") && isCut(e)).map((e) => e.outerHTML.slice(0, 120)),
        placeholders: later.map((e, i) => [e.tagName + "." + e.className, before[i], after[i]])
          .filter(([, one, other]) => Math.max(one, other) > 3 * Math.min(one, other)),
      };
    });
    expect(found.wide <= 0, "a phone has to scroll sideways", found.wide);
    expect(found.isFirst, "failures do not come before the grid");
    expect(found.cut.length === 0, "something is cut off at the edge of the screen", [width, ...found.cut.slice(0, 5)]);
    expect(found.placeholders.length === 0, "what is laid out later was taken for another height", [width, ...found.placeholders.slice(0, 5)]);
  });
}

await open({ script: false }, async (page) => {
  const text = await page.$eval("body", (body) => body.innerText);
  for (const name of names) expect(text.includes(name), "a name is not there without the script", name);
  expect(!text.includes("all\nPassed"), "the filter is there without the script");
});

for (const settings of [{}, { dark: true }, { width: 390 }]) {
  await open({ ...settings, bypass: true }, async (page) => {
    await page.evaluate(() => {
      const style = document.createElement("style");  // everything is looked at, not what is on the screen
      style.textContent = "* { content-visibility: visible !important; }";
      document.head.append(style);
      document.querySelectorAll("details").forEach((block) => (block.open = true));
    });
    await page.evaluate(axe);
    const results = await page.evaluate(() => window.axe.run());
    for (const { id, impact, nodes } of results.violations) {
      const words = `axe: ${id} (${impact}), ${nodes.length} times, first ${nodes[0].html.slice(0, 160)}`;
      console.log(words);
      expect(impact !== "serious" && impact !== "critical", words);
    }
  });
}
await browser.close();
for (const fault of faults) console.error("browse: " + fault);
process.exit(faults.length === 0 ? 0 : 1);
