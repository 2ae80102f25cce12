// page.mjs MODULES PAGE FOLDER: uses the page as people do, on the files that run.sh put into FOLDER, and fails where it
// breaks a promise: it asks for nothing, says what the command says, shows names as text, survives a file that ends the
// module, works by keyboard, fits a phone, and has no serious finding of axe. Pictures of it stay in FOLDER.
import { createRequire } from "node:module";
import { existsSync, mkdirSync, readFileSync, readdirSync, rmSync } from "node:fs";
import { join, resolve } from "node:path";
import { pathToFileURL } from "node:url";
import { answered, drop, launch } from "../../browser/drive.mjs";

const [modules, file, given] = process.argv.slice(2);
const folder = resolve(given), saved = join(folder, "saved");
const axe = readFileSync(createRequire(resolve(modules, "node_modules") + "/").resolve("axe-core/axe.min.js"), "utf8");
const faults = [];
const expect = (isTrue, words, found = "") => {
  if (!isTrue) faults.push(words + (found === "" ? "" : ": " + JSON.stringify(found)));
};
const browser = await launch(modules);

async function open({ address = pathToFileURL(file).href, width = 1280, dark = false, bypass = false, isOld = false }, use) {
  const page = await browser.newPage();
  await page.setViewport({ width, height: 900 });
  await page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: dark ? "dark" : "light" }]);
  await page.setBypassCSP(bypass);
  page.on("request", (request) => {
    const url = request.url();
    const isOwn = url === address || /^(blob:|data:image\/|about:srcdoc)/.test(url);
    expect(isOwn, "the page asked for something", url.slice(0, 200));
  });
  page.on("console", (message) => expect(false, "the browser complained", message.text()));
  page.on("pageerror", (error) => expect(false, "the script failed", String(error)));
  if (isOld) await page.evaluateOnNewDocument(() => { delete window.DecompressionStream; });
  await page.goto(address);
  await use(page);
  await page.close();
}

const textOf = (page, selector) => page.$eval(selector, (element) => element.innerText);
const rowsOf = (page) => page.$$eval("#table tbody tr", (rows) => rows.map((row) => row.innerText.split("\t").map((cell) => cell.trim())));

// Clicks, and waits for the file that is saved then. @return its name and bytes
async function savedBy(page, selector) {
  rmSync(saved, { recursive: true, force: true });
  mkdirSync(saved);
  const client = await page.createCDPSession();
  await client.send("Browser.setDownloadBehavior", { behavior: "allow", downloadPath: saved });
  await page.$eval(selector, (button) => button.click());
  for (let i = 0; i < 300; ++i) {
    const [name] = readdirSync(saved).filter((each) => !each.endsWith(".crdownload") && !each.startsWith("."));
    if (name && existsSync(join(saved, name))) return { name, bytes: readFileSync(join(saved, name)) };
    await new Promise((done) => setTimeout(done, 100));
  }
  expect(false, "nothing was saved", selector);
  return { name: "", bytes: Buffer.alloc(0) };
}

// A folder is dropped: table, job, findings, reports and a recovered copy are those of the command.
await open({}, async (page) => {
  await drop(page, [join(folder, "job")]);
  const wanted = JSON.parse(readFileSync(join(folder, "summary.json"), "utf8")).results;
  const rows = await rowsOf(page);
  expect(JSON.stringify(rows.map((row) => [row[0], row[9]])) === JSON.stringify(wanted.map((row) => [row.id, row.file])), "the table has other rows", rows);
  expect((await textOf(page, "#verdict")).startsWith("3 of 16"), "the job has another status", await textOf(page, "#verdict"));
  const card = await textOf(page, "#cards");
  expect(card.includes("job/A-011.vres") && card.includes("The end of the file is missing") && !card.includes("veltra "), "the card of a damaged file", card);
  await page.screenshot({ path: join(folder, "wide.png"), fullPage: true });
  const copy = await savedBy(page, "#cards button");
  expect(copy.name === "A-011.recovered.vres" && copy.bytes.equals(readFileSync(join(folder, "recovered.vres"))), "a recovered copy is not that of the command", copy.name);
  for (const edition of ["customer", "technician"]) {
    await page.select("#report select", edition);
    const { bytes } = await savedBy(page, "#save");
    expect(bytes.equals(readFileSync(join(folder, edition + ".html"))), "a report is not that of the command", edition);
  }
  await page.$eval("#report button", (button) => button.click());
  await page.waitForFunction(() => !document.getElementById("print").disabled, { timeout: 20000 });
  const report = await page.$eval("#page", (frame) => frame.contentDocument.body.innerText);
  expect(report.includes("Links that need work"), "the report is not shown", report.slice(0, 200));

  // Sorted and filtered as asked, by keyboard.
  await page.focus("#table thead th:nth-child(5) button");
  await page.keyboard.press("Enter");
  await page.waitForSelector("th[aria-sort=ascending]");
  const headrooms = (await rowsOf(page)).map((row) => Number(row[4]));
  expect(headrooms.every((value, i) => i === 0 || headrooms[i - 1] <= value), "the table is not sorted", headrooms);
  await page.select("#status", "Fail");
  expect((await rowsOf(page)).length === 2, "the table is not filtered", await rowsOf(page));

  // Job data that are typed in.
  await page.evaluate(() => {
    const fields = document.getElementById("description").elements;
    document.getElementById("data").open = true;
    document.getElementById("description").reset();
    fields.title.value = "</script>\u2028typed";
    fields.expected.value = "A-001..A-013";
    fields.logo.value = "";
    document.getElementById("description").requestSubmit();
  });
  await page.waitForFunction(() => document.getElementById("verdict").textContent.includes("of 13"), { timeout: 20000 })
    .catch(() => expect(false, "typed job data are not used"));
  await page.select("#report select", "customer");
  const typed = await savedBy(page, "#save");
  expect(typed.bytes.equals(readFileSync(join(folder, "typed.html"))), "a report with typed data is not that of the command");

  // A fault in typed data loses nothing of them; the next job begins without them.
  const fields = () => page.$eval("#description", (form) => [form.elements.title.value, form.elements.expected.value, form.elements.logo.files.length]);
  await (await page.$("#description [name=logo]")).uploadFile(join(folder, "typed.json"));
  await page.type("#description textarea", "A-1..A-001\n");
  const before = JSON.stringify(await fields());
  await page.$eval("#description", (form) => form.requestSubmit());
  await page.waitForSelector("#faults:not([hidden])", { timeout: 20000 });
  expect(JSON.stringify(await fields()) === before && before.includes("A-1.."), "a fault in typed data loses them", await fields());
  await page.$eval("#clear", (button) => button.click());
  expect(JSON.stringify(await fields()) === '["","",0]', "job data stay for the next job", await fields());
});

// Nothing to look at, or no browser to do it in, is said.
for (const isOld of [false, true]) {
  await open({ isOld }, async (page) => {
    if (!isOld) await drop(page, [join(folder, "empty")], "#faults:not([hidden])");
    await page.waitForSelector("#faults:not([hidden])", { timeout: 20000 });
    expect((await textOf(page, "#faults")).includes(isOld ? "too old" : "no files"), "nothing is said of what cannot be shown", await textOf(page, "#faults"));
  });
}

// Files and a folder are chosen; more files are added to those there are.
await open({}, async (page) => {
  await (await page.$("#files")).uploadFile(join(folder, "job/A-001.vres"), join(folder, "job/A-002.vres"));
  await answered(page);
  expect((await rowsOf(page)).length === 2, "chosen files are not shown", await rowsOf(page));
  await page.$eval("#state", (state) => (state.textContent = ""));
  await (await page.$("#files")).uploadFile(join(folder, "job/A-001.vres"));
  await answered(page);
  expect((await rowsOf(page)).map((row) => row[9]).includes("A-001 (2).vres"), "a file of the same name lost its ending", await rowsOf(page));
  await page.$eval("#state", (state) => (state.textContent = ""));
  await (await page.$("#folder")).uploadFile(join(folder, "job"));
  await answered(page);
  expect((await rowsOf(page)).length === 19, "a chosen folder is not shown", (await rowsOf(page)).length);
});

// Job data that are typed over those of job.json keep its logo.
await open({}, async (page) => {
  await drop(page, [join(folder, "logo")]);
  await page.$eval("#description", (form) => {
    form.elements.title.value = "typed";
    form.requestSubmit();
  });
  const report = (await savedBy(page, "#save")).bytes.toString();
  expect(report.includes("typed") && report.includes("data:image/png"), "typed data lose the logo", report.slice(0, 300));
  const { title, logo } = JSON.parse((await savedBy(page, "#saveJob")).bytes.toString());
  expect(title === "typed" && logo === "mark.png", "a saved job.json loses the logo", logo);
});

// Names that are made to be more than text.
await open({}, async (page) => {
  await (await page.$("#folder")).uploadFile(join(folder, "hostile"));
  await answered(page);
  const names = readFileSync(join(folder, "names.txt"), "utf8").split("\n").filter(Boolean);
  const found = await page.evaluate(() => ({
    texts: Array.from(document.querySelectorAll("bdi"), (each) => each.textContent),
    elements: document.querySelectorAll("main img, main b, main i, main a, main script").length,
    foreign: Object.keys(window).filter((name) => name.startsWith("foreign")),
  }));
  expect(found.elements === 0 && found.foreign.length === 0, "a name became markup", found);
  for (const name of names) expect(found.texts.includes(name), "a name is not shown as text", name);
});

// With little memory one file ends the module; the others are answered all the same, and so is the report.
await open({ address: pathToFileURL(join(folder, "small.html")).href }, async (page) => {
  await drop(page, [join(folder, "ending")]);
  const card = await textOf(page, "#cards");
  expect(card.includes("ending/B-ends.vres") && card.includes("more memory"), "nothing is said of the file that ends the module", card);
  expect((await rowsOf(page)).length === 2, "the other files are not shown", await rowsOf(page));
  const { bytes } = await savedBy(page, "#save");
  expect(bytes.toString().includes("A-001") && bytes.toString().includes("A-002"), "there is no report of the other files");
});

await open({ width: 390 }, async (page) => {
  await drop(page, [join(folder, "job")]);
  await page.screenshot({ path: join(folder, "phone.png"), fullPage: true });
  const wide = await page.evaluate(() => document.documentElement.scrollWidth - document.documentElement.clientWidth);
  expect(wide <= 0, "a phone has to scroll sideways", wide);
  await page.setViewport({ width: 700, height: 900 });  // a sheet of A4
  await page.emulateMediaType("print");
  const cut = await page.$$eval(".wide, #drop, #save", (each) => each.filter((one) => one.className === "wide" ? one.scrollWidth > one.clientWidth : one.offsetHeight > 0).length);
  expect(cut === 0, "on paper columns are cut off, or there are buttons", cut);
});

for (const settings of [{}, { dark: true }, { width: 390 }]) {
  await open({ ...settings, bypass: true }, async (page) => {
    await drop(page, [join(folder, "job")]);
    await page.$eval("#data", (data) => (data.open = true));
    if (settings.dark) await page.screenshot({ path: join(folder, "dark.png"), fullPage: true });
    await page.evaluate(axe);
    for (const { id, impact, nodes } of (await page.evaluate(() => window.axe.run())).violations) {
      const words = `axe: ${id} (${impact}), ${nodes.length} times, first ${nodes[0].html.slice(0, 160)}`;
      console.log(words);
      expect(impact !== "serious" && impact !== "critical", words);
    }
  });
}
await browser.close();
for (const fault of faults) console.error("page: " + fault);
process.exit(faults.length === 0 ? 0 : 1);
