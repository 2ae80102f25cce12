// The page itself: what people drop and choose goes to the worker, and what it answers is shown. All that comes from
// files becomes text, never markup.
const get = (id) => document.getElementById(id);
const MOST_ROWS = 500;   // shown at first
const MOST_CARDS = 100;

// Headings of the table; a field that is not here has its own name.
const HEADINGS = { id: "ID", type: "Type", status: "Verdict", length: "Length (m)", headroom: "Headroom (dB)", time: "Time (UTC)",
  numPassTests: "Passed", numPassStarTests: "With a star", numFailTests: "Failed", file: "File" };
const COUNTS = { expected: "Expected", tested: "Tested", passed: "Passed", passedStar: "With a star", failed: "Failed",
  noVerdict: "No verdict", damaged: "Damaged", missing: "Missing", testedAgain: "Tested again" };
const TONES = { Pass: "good", "Pass star": "doubt", "Pass acceptable": "doubt", "Fail star": "doubt", Fail: "bad", passed: "good",
  "passed with a star": "doubt", failed: "bad", damaged: "bad", "no verdict": "doubt", missing: "doubt" };

let worker, waiting, last;
let dropped = [];         // {path, blob}
let unreadable = [];      // what is wrong with things that were dropped and are not among them
let typed = {};           // the job data in use that were typed in: description and logo
let isEdited = false;     // the form of job data has something that is not in use
let givenLogo = null;     // that job.json names: path, and its name there
let shown = { rows: [], fields: [], order: [], sort: null, most: MOST_ROWS };

// An element with texts and elements in it.
function make(tag, properties = {}, ...inside) {
  const made = Object.assign(document.createElement(tag), properties);
  made.append(...inside);
  return made;
}
// Text from a file: its direction does not reach beyond it.
const name = (text) => make("bdi", {}, text);
const counted = (count, one, many) => `${count} ${count === 1 ? one : many}`;

function ask(question, message = {}) {
  return new Promise((resolve, reject) => {
    waiting.set(++last, { resolve, reject });
    worker.postMessage({ id: last, question, ...message });
  });
}

const compiled = (async () => {
  if (!globalThis.DecompressionStream) throw new Error("This browser is too old for this page. Open it in a browser of 2023 or later.");
  const packed = Uint8Array.from(atob(get("module").textContent), (c) => c.charCodeAt(0));
  const stream = new Blob([packed]).stream().pipeThrough(new DecompressionStream("gzip"));
  return WebAssembly.compile(await new Response(stream).arrayBuffer());
})();

async function startWorker() {
  worker?.terminate();
  waiting = new Map();
  last = 0;
  const address = URL.createObjectURL(new Blob([get("worker").textContent], { type: "text/javascript" }));
  worker = new Worker(address);
  worker.onmessage = ({ data }) => {
    if (data.progress !== undefined) return showProgress(data.progress, data.of);
    const { resolve, reject } = waiting.get(data.id);
    waiting.delete(data.id);
    if (data.error === undefined) resolve(data.answer);
    else reject(new Error(data.error));
  };
  worker.onerror = () => {
    for (const { reject } of waiting.values()) reject(new Error("This page stopped working. Start again, with fewer files."));
  };
  const settings = { mostBytes: Number(document.body.dataset.memory) * 1024 * 1024, zone: Intl.DateTimeFormat().resolvedOptions().timeZone };
  await ask("start", { compiled: await compiled, settings });
  URL.revokeObjectURL(address);
}
let started = startWorker();
started.catch((error) => showFaults([error.message]));

function showProgress(done, all) {
  const bar = get("progress");
  bar.hidden = false;
  bar.max = all;
  bar.value = done;
  get("state").textContent = `${done} of ${all} files looked at`;
}

function showFaults(faults) {
  get("faults").replaceChildren(...faults.map((fault) => make("li", {}, name(fault))));
  get("faults").hidden = faults.length === 0;
}

// Adds what was dropped or chosen, each file or folder a list of {path, blob}. Things of one name stay apart.
async function add(things, faults = []) {
  const taken = new Set(dropped.map(({ path }) => path.split("/")[0]));
  const found = things.filter((entries) => entries.length > 0);
  unreadable.push(...faults);
  if (found.length === 0) {
    showFaults(faults.length > 0 ? faults : ["There are no files in what was dropped or chosen."]);
    return;
  }
  for (const entries of found) {
    const top = entries[0].path.split("/")[0], dot = entries[0].path === top ? top.lastIndexOf(".") : 0;
    const [stem, ending] = dot > 0 ? [top.slice(0, dot), top.slice(dot)] : [top, ""];
    let free = top === "-" ? "- (1)" : top;  // "-" alone is standard input
    for (let i = 2; taken.has(free); ++i) free = `${stem} (${i})${ending}`;
    taken.add(free);
    for (const { path, blob } of entries) dropped.push({ path: free + path.slice(top.length), blob });
  }
  await look();
}

async function look() {
  get("clear").hidden = false;
  get("state").textContent = "Looking at the files";
  try {
    await started;
    const { opened, settled, attention, counts } = await ask("open", { entries: dropped, ...typed });
    get("progress").hidden = true;
    if (!settled) throw new Error("These files are more than this page has memory for.");
    const others = settled.otherFiles > 0 ? ", " + counted(settled.otherFiles, "other file", "other files") : "";
    get("state").textContent = counted(settled.results.length, "result", "results") +
      `; ${counts.damaged} damaged, ${counts.doubtful} with warnings, ${counts.unread} not read${others}`;
    showFaults([...(opened.error ? [opened.error] : []), ...opened.faults, ...unreadable]);
    showJob(settled.status);
    showAttention(attention, counts);
    showResults(opened.fields, settled.results);
    showData(opened, settled);
    get("reportPart").hidden = settled.isEmpty && !settled.status;
    get("page").hidden = true;
    get("print").disabled = true;
    get("answers").hidden = false;
  } catch (error) {
    get("progress").hidden = true;
    get("state").textContent = "";
    get("answers").hidden = true;  // its questions would find nothing
    showFaults([error.message]);
    started = startWorker();
    started.catch(() => {});  // the next look says why
  }
}

function showJob(status) {
  get("job").hidden = !status;
  if (!status) return;
  const all = status.all, open = all.expected - all.passed - all.passedStar;
  get("verdict").className = open === 0 ? "good" : "bad";
  get("verdict").textContent = open === 0 ? `All ${all.expected} expected IDs passed.`
    : `${open} of ${all.expected} expected IDs ${open === 1 ? "needs" : "need"} work.`;
  const keys = Object.keys(COUNTS);
  const cells = (counts) => keys.map((key) => make("td", { className: "number" }, String(counts[key])));
  get("ranges").tHead.replaceChildren(make("tr", {}, make("th", {}, "IDs"), ...keys.map((key) => make("th", { className: "number" }, COUNTS[key]))));
  get("ranges").tBodies[0].replaceChildren(...status.ranges.map((range) => make("tr", {}, make("td", {}, name(range.range)), ...cells(range))));
  get("workPart").hidden = status.work.length === 0;
  get("work").tBodies[0].replaceChildren(...status.work.map((item) => make("tr", {}, make("td", {}, name(item.id)),
    make("td", { className: TONES[item.why] ?? "" }, item.why), make("td", {}, name(item.file ?? "-")))));
  get("notes").replaceChildren(...status.notes.map((note) => make("li", {}, name(note + "."))));
}

// A sentence for each thing that is wrong, what to do, and behind a button what support wants to know.
function cardOf(file) {
  const words = new Set(file.findings.map((finding) => finding.words)), advice = new Set(file.findings.map((finding) => finding.advice));
  if (advice.size > 1) advice.delete("Nothing needs to be done.");
  const card = make("article", { className: "card" }, make("h3", {}, name(file.file)));
  if (file.error) card.append(make("p", {}, make("span", { className: "bad" }, "Not read: "), name(file.error)));
  if (words.size > 0) {
    if (!file.error) card.append(make("p", { className: file.isDamaged ? "bad" : "doubt" }, file.isDamaged ? "Damaged" : "Can be used, with a remark"));
    card.append(make("ul", {}, ...Array.from(words, (each) => make("li", {}, each))), make("p", {}, Array.from(advice).join(" ")));
  }
  if (file.canRecover) {
    const told = make("span", { role: "status" });
    const button = make("button", { type: "button" }, "Save a recovered copy");
    button.onclick = () => recover(file, told);
    card.append(make("p", { className: "buttons" }, button, told));
  }
  if (file.findings.length > 0) {
    const lines = file.findings.map((f) => make("li", {}, name(`${f.code} ${f.meaning}, at byte ${f.offset}: expected ${f.wanted}, found ${f.found}`)));
    if (file.leftOut > 0) lines.push(make("li", {}, `and ${file.leftOut} more`));
    card.append(make("details", {}, make("summary", {}, "For support"), make("ul", {}, ...lines)));
  }
  return card;
}

function showAttention(attention, counts) {
  get("attention").hidden = attention.length === 0;
  get("cards").replaceChildren(...attention.slice(0, MOST_CARDS).map(cardOf));
  const left = counts.damaged + counts.doubtful + counts.unread - Math.min(attention.length, MOST_CARDS);
  get("moreCards").hidden = left <= 0;
  get("moreCards").textContent = `and ${counted(left, "more file", "more files")}`;
}

async function recover(file, told) {
  const found = await ask("recover", { number: file.number }).catch(({ message }) => ({ error: message }));
  if (found.error || found.isNothing) {
    told.textContent = found.error ?? "Nothing of it is intact. Copy the file from the instrument again, or test again.";
    return;
  }
  const lost = found.lostBytes + found.missing;
  told.textContent = `${counted(found.kept, "part", "parts")} kept, ${lost === 0 ? "nothing lost" : counted(lost, "byte", "bytes") + " lost"}` +
    (found.isSummaryLost ? "; the ID and the verdict are lost" : "");
  const last = file.file.split("/").pop(), dot = last.lastIndexOf(".");
  save(found.blob, dot > 0 ? last.slice(0, dot) + ".recovered" + last.slice(dot) : last + ".recovered");
}

function save(blob, fileName) {
  const address = URL.createObjectURL(blob);
  make("a", { href: address, download: fileName }).click();
  setTimeout(() => URL.revokeObjectURL(address), 60000);
}

function showResults(fields, rows) {
  get("results").hidden = rows.length === 0;
  const places = fields.map((field, i) => ({ ...field, at: i }));
  places.push(places.shift());  // the file, which may be long, is the last one
  shown = { rows, fields: places, order: rows.map((_, i) => i), sort: null, most: MOST_ROWS };
  const statusAt = fields.findIndex((field) => field.name === "status");
  const verdicts = Array.from(new Set(rows.map((row) => row.texts[statusAt]))).sort();
  get("status").replaceChildren(new Option("all", ""), ...verdicts.map((verdict) => new Option(verdict || "none", verdict || " ")));
  get("find").value = "";
  get("table").tHead.replaceChildren(make("tr", {}, ...places.map((field) => {
    const button = make("button", { type: "button" }, HEADINGS[field.name] ?? field.name);
    button.onclick = () => sort(field.name);
    return make("th", { className: field.isNumber ? "number" : "", scope: "col" }, button);
  })));
  showRows();
}

async function sort(field) {
  const descending = shown.sort?.field === field && !shown.sort.descending;
  const order = await ask("order", { field, descending });
  if (order) shown.order = order;  // of what is shown by now
  shown.sort = { field, descending };
  showRows();
}

function showRows() {
  const { rows, fields, order, sort: sorted } = shown;
  const wanted = get("find").value.toLowerCase(), verdict = get("status").value.trim(), anyVerdict = get("status").value === "";
  const statusAt = fields.find((field) => field.name === "status")?.at;
  const found = order.filter((i) => (anyVerdict || rows[i].texts[statusAt] === verdict) &&
    (wanted === "" || rows[i].texts.some((text) => text.toLowerCase().includes(wanted))));
  fields.forEach((field, i) => {
    const cell = get("table").tHead.rows[0].cells[i];
    if (sorted?.field === field.name) cell.setAttribute("aria-sort", sorted.descending ? "descending" : "ascending");
    else cell.removeAttribute("aria-sort");
  });
  get("table").tBodies[0].replaceChildren(...found.slice(0, shown.most).map((i) => make("tr", {}, ...fields.map((field) => {
    const text = rows[i].texts[field.at];
    const tone = field.name === "status" ? TONES[text] ?? "" : field.isNumber ? "number" : field.name === "id" ? "name" : "";
    const cell = make("td", { className: tone }, name(text));
    if (field.name === "file" && rows[i].damaged) cell.append(" ", make("span", { className: "bad" }, "damaged"));
    return cell;
  }))));
  get("count").textContent = found.length === rows.length ? "" : `${found.length} of ${rows.length}`;
  get("all").hidden = found.length <= shown.most;
  get("all").textContent = `Show all ${found.length}`;
}

function showData(opened, settled) {
  const description = JSON.parse(opened.description), form = get("description");
  if (opened.job !== null) {
    const folder = opened.job.slice(0, opened.job.lastIndexOf("/") + 1), path = description.logo;
    givenLogo = path && path.startsWith(folder) ? { path, name: path.slice(folder.length) } : null;
  }
  if (isEdited && !opened.error && typedDescription() === typed.description) isEdited = false;
  if (!isEdited) {
    for (const key of ["title", "customer", "site", "operator", "reference"]) form.elements[key].value = description[key];
    form.elements.expected.value = description.expected.join("\n");
  }
  const guess = settled.guess ?? [];
  get("guess").hidden = guess.length === 0;
  get("guess").onclick = () => {
    form.elements.expected.value = guess.join("\n");
    isEdited = true;
  };
}

function typedDescription() {
  const fields = get("description").elements, description = {};
  for (const key of ["title", "customer", "site", "operator", "reference"]) description[key] = fields[key].value;
  const logo = fields.logo.files[0]?.name ?? givenLogo?.name;
  if (logo) description.logo = logo;
  description.expected = fields.expected.value.split("\n").map((line) => line.trim()).filter(Boolean);
  return JSON.stringify(description, null, 2) + "\n";
}

get("description").oninput = () => { isEdited = true; };
get("description").onsubmit = (event) => {
  event.preventDefault();
  isEdited = true;  // until the data turn out to be without a fault
  const [blob] = get("description").elements.logo.files;
  typed = { description: typedDescription(), logo: blob ? { path: ".logo/" + blob.name, blob } : givenLogo };
  look();
};
get("saveJob").onclick = () => save(new Blob([typedDescription()], { type: "application/json" }), "job.json");

async function makeReport() {
  const { title, edition, details } = get("report").elements;
  get("state").textContent = "Making the report";
  const { blob, ended } = await ask("report", { title: title.value, edition: edition.value, details: details.checked })
    .catch(() => ({ ended: [] }));
  get("state").textContent = blob ? "The report is made." : "";
  if (ended.length > 0) showFaults(ended.map((file) => file + ": could not be examined, and counts as not read"));
  if (!blob) showFaults(["The report needs more memory than this page has."]);
  return blob;
}
get("report").onsubmit = async (event) => {
  event.preventDefault();
  const blob = await makeReport();
  if (!blob) return;
  const page = get("page");
  page.hidden = false;
  page.onload = () => { get("print").disabled = false; };
  page.srcdoc = (await blob.text()).replace(/<script>[^]*<\/script>/, "");  // its own filter does not run in here
};
get("print").onclick = () => get("page").contentWindow.print();
get("save").onclick = async () => {
  const blob = await makeReport();
  if (blob) save(blob, "report.html");
};

get("find").oninput = get("status").oninput = showRows;
get("all").onclick = () => { shown.most = Infinity; showRows(); };
get("pickFiles").onclick = () => get("files").click();
get("pickFolder").onclick = () => get("folder").click();
for (const id of ["files", "folder"]) {
  get(id).onchange = () => {
    const entries = Array.from(get(id).files, (blob) => ({ path: blob.webkitRelativePath || blob.name, blob }));
    get(id).value = "";
    add(id === "folder" ? [entries] : entries.map((entry) => [entry]));
  };
}
get("clear").onclick = () => {
  dropped = [];
  unreadable = [];
  typed = {};
  isEdited = false;
  givenLogo = null;
  for (const id of ["description", "report"]) get(id).reset();  // a logo or a headline is that of one job
  started = startWorker();
  started.catch((error) => showFaults([error.message]));
  for (const id of ["clear", "answers", "faults", "progress"]) get(id).hidden = true;
  get("state").textContent = "";
  get("pickFiles").focus();
};

// The files of what was dropped, with their paths; what cannot be read is a fault, and the rest is there without it.
const orFault = (path, faults, work) => work().catch((error) => (faults.push(`${path}: cannot be read: ${error.message}`), []));
async function entriesOf(handle, path, faults) {
  if (handle.kind === "file") return [{ path, blob: await handle.getFile() }];
  const found = [];
  for await (const [child, inside] of handle.entries()) {
    const below = path + "/" + child;
    found.push(...(await orFault(below, faults, () => entriesOf(inside, below, faults))));
  }
  return found;
}
// The same of browsers without such handles.
async function olderEntriesOf(entry, path, faults) {
  if (entry.isFile) return [{ path, blob: await new Promise((resolve, reject) => entry.file(resolve, reject)) }];
  const reader = entry.createReader(), found = [];
  for (;;) {
    const part = await new Promise((resolve, reject) => reader.readEntries(resolve, reject));
    if (part.length === 0) return found;
    for (const inside of part) {
      const below = path + "/" + inside.name;
      found.push(...(await orFault(below, faults, () => olderEntriesOf(inside, below, faults))));
    }
  }
}

const zone = get("drop");
addEventListener("dragover", (event) => { event.preventDefault(); zone.classList.add("over"); });
addEventListener("dragleave", (event) => { if (!event.relatedTarget) zone.classList.remove("over"); });
addEventListener("drop", async (event) => {
  event.preventDefault();
  zone.classList.remove("over");
  // All are taken before the first wait: after it the items are gone.
  const items = Array.from(event.dataTransfer.items).filter((item) => item.kind === "file");
  const faults = [];
  const taken = items.map((item) => {
    const { name: top } = item.getAsFile() ?? { name: "dropped" };
    if (!item.getAsFileSystemHandle) {
      const entry = item.webkitGetAsEntry();
      return orFault(top, faults, async () => olderEntriesOf(entry, entry.name, faults));
    }
    const handle = item.getAsFileSystemHandle();
    return orFault(top, faults, async () => entriesOf(await handle, (await handle).name, faults));
  });
  if (taken.length > 0) add(await Promise.all(taken), faults);
});
