// compare.mjs MODULE VELTRA FOLDER...: asks the module and the command about the same files and fails on any difference:
// findings, rows, the status of the job, reports of both editions, and recovered copies.
import { spawnSync } from "node:child_process";
import { closeSync, existsSync, mkdtempSync, openSync, readFileSync, readSync, readdirSync, rmSync, statSync } from "node:fs";
import { tmpdir } from "node:os";
import { basename, dirname, join, resolve } from "node:path";
import { isDeepStrictEqual } from "node:util";
import { Files, Session } from "../../browser/page/session.mjs";

const [moduleFile, veltra, ...folders] = process.argv.slice(2);
const compiled = new WebAssembly.Module(readFileSync(moduleFile));
const zone = "Europe/Berlin";
const scratch = mkdtempSync(join(tmpdir(), "veltra-"));
const faults = [];
let compared = 0;

const fileOf = (path) => ({
  size: statSync(path).size,
  read(offset, size) {
    const descriptor = openSync(path);
    const bytes = new Uint8Array(size);
    const got = readSync(descriptor, bytes, 0, size, offset);
    closeSync(descriptor);
    return bytes.subarray(0, got);
  },
});

function addTo(files, parent, name) {
  for (const entry of readdirSync(join(parent, name), { withFileTypes: true })) {
    const path = name + "/" + entry.name;
    if (entry.isDirectory()) addTo(files, parent, path);
    else files.add(path, fileOf(join(parent, path)));
  }
}

const asked = (folder, ...words) => {
  const run = spawnSync(veltra, words, { cwd: folder, env: { TZ: zone, PATH: process.env.PATH }, maxBuffer: 1 << 30 });
  return run.stdout.toString();
};

function expectEqual(what, found, wanted) {
  ++compared;
  if (isDeepStrictEqual(found, wanted)) return;
  const short = (value) => JSON.stringify(value)?.slice(0, 400);
  faults.push(`${what}: the module says\n  ${short(found)}\nand the command\n  ${short(wanted)}`);
}

// What differs of two lists, element by element.
function expectEach(what, found, wanted, nameOf) {
  expectEqual(what + ", how many", found.length, wanted.length);
  wanted.forEach((each, i) => expectEqual(`${what}, ${nameOf(each)}`, found[i], each));
}

for (const given of folders) {
  const parent = dirname(resolve(given)), name = basename(given);
  const files = new Files();
  addTo(files, parent, name);
  const session = new Session(compiled, files, { mostBytes: 512 << 20, zone });
  const looks = [];
  const settled = session.run({ paths: [name] }, (_, answer) => looks.push(answer));
  if (session.ended.length > 0) faults.push(`${name}: the module ended with ${session.ended}`);

  const doctor = JSON.parse(asked(parent, "doctor", "-r", "-f", "json", name));
  const ours = looks.filter((look) => look.state !== "not a container" && look.state !== undefined).map((look) => ({
    file: look.file, damaged: look.damaged, findingsLeftOut: look.findingsLeftOut,
    findings: look.findings.map(({ words, advice, damage, ...finding }) => finding),
  }));
  expectEach(name + ": doctor", ours, doctor.files, (each) => each.file);

  const summary = JSON.parse(asked(parent, "summary", "-r", "-f", "json", name) || '{"results": []}');
  expectEach(name + ": summary", settled.results.map((result) => result.row), summary.results, (each) => each.file);

  const status = asked(parent, "job", "status", "-f", "json", name);
  const { schema, ...wanted } = status === "" ? { schema: 1 } : JSON.parse(status);
  expectEqual(name + ": job status", settled.status, status === "" ? null : wanted);

  for (const edition of ["customer", "technician"]) {
    const page = join(scratch, "page.html");
    const run = asked(parent, "report", "-q", name, "-o", page, "--force", "--edition", edition);
    if (run === "") continue;
    expectEqual(`${name}: report for the ${edition}`, Buffer.concat(session.report({ edition, title: "", details: false })).toString(),
      readFileSync(page, "utf8"));
  }

  looks.forEach((look, i) => {
    if (!look.canRecover) return;
    const copy = join(scratch, "copy");
    rmSync(copy, { force: true });
    asked(parent, "recover", "-q", look.file, "-o", copy);
    const recovered = session.recover(i), source = fileOf(join(parent, look.file));
    const parts = [Buffer.from(recovered.header)];
    for (let at = 0; at < recovered.parts.length; at += 2) parts.push(source.read(recovered.parts[at], recovered.parts[at + 1]));
    expectEqual(look.file + ": recovered copy", recovered.isNothing ? "" : Buffer.concat(parts).toString("hex"),
      existsSync(copy) ? readFileSync(copy, "hex") : "");
  });
  console.log(`${name}: ${looks.length} files, ${looks.filter((look) => look.damaged).length} damaged, ${settled.results.length} results`);
}
rmSync(scratch, { recursive: true });
for (const fault of faults.slice(0, 20)) console.error("compare: " + fault);
console.log(`${compared} answers compared, ${faults.length} differ`);
process.exit(faults.length === 0 && compared > 0 ? 0 : 1);
