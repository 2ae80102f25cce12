// check.mjs MODULES ROOT: reads vectors and records with docs/veltra.ksy, and compares with what the library answers.
import fs from 'node:fs';
import {createRequire} from 'node:module';
import path from 'node:path';

const [modules, root] = process.argv.slice(2);
const require = createRequire(path.resolve(modules, 'here'));
const description = require('yaml').parse(fs.readFileSync(path.join(root, 'docs/veltra.ksy'), 'utf8'));
const KaitaiStream = require('kaitai-struct/KaitaiStream');
const sources = await require('kaitai-struct-compiler').compile('javascript', description, null, false);
// Taken for other languages, too; Python has the most reserved words.
for (const language of ['cpp_stl', 'csharp', 'go', 'java', 'lua', 'perl', 'php', 'python', 'ruby', 'rust']) {
  const made = await require('kaitai-struct-compiler').compile(language, description, null, false);
  if (language === 'python') fs.writeFileSync(path.resolve(modules, 'veltra.py'), made['veltra.py']);
}
const compiled = path.resolve(modules, 'Veltra.js');
fs.writeFileSync(compiled, sources['Veltra.js']);
const {Veltra} = require(compiled);

let checks = 0, failures = 0;
function expect(holds, what, ...found) {
  ++checks;
  if (!holds) {
    ++failures;
    console.log(what, ...found);
  }
}
const same = (a, b) => Object.is(a, b) || (typeof a === 'bigint' ? Number(a) === b : false);
const read = (...names) => fs.readFileSync(path.join(root, ...names));
const stream = (bytes) => new KaitaiStream(new Uint8Array(bytes).buffer);
const CRCS = Uint32Array.from({length: 256}, (_, byte) => {
  for (let bit = 0; bit < 8; ++bit) byte = byte & 1 ? (byte >>> 1) ^ 0xEDB88320 : byte >>> 1;
  return byte;
});
const crcOf = (data) => ~data.reduce((crc, byte) => CRCS[(crc ^ byte) & 255] ^ (crc >>> 8), -1) >>> 0;
const camel = (name) => name.replace(/_([a-z0-9])/g, (_, c) => c.toUpperCase()).replace('Dns', 'DNS');

// Of a file: whether the description takes it with all it holds, whether the CRCs it names are right, and its parts.
function readFile(bytes) {
  const file = {taken: false, intact: false, sections: []};
  try {
    const container = new Veltra(stream(bytes));
    const head = container.fileHeader;
    file.intact = head.hdrCrc === crcOf(bytes.subarray(0, 16)) && head.dataCrc === crcOf(bytes.subarray(20, 20 + head.dataSize));
    let at = 20 + head.dataSize;
    for (const section of container.body.sections) {
      file.sections.push({at, section});
      file.intact &&= section.hdrCrc === crcOf(bytes.subarray(at, at + 16)) && section.dataCrc === crcOf(section.payload.stored);
      at += 20 + section.dataSize;
    }
    file.taken = true;
    for (const {section} of file.sections) {
      try {
        section.record = section.content.record;
      } catch (error) {
        file.taken = false;
        file.why = error;
      }
    }
  } catch (error) {
    file.why = error;
  }
  return file;
}

function compareSummary(fields, wanted, name) {
  const word = (e, value) => Object.keys(e).find((key) => e[key] === value);
  const spelt = (text) => text.toUpperCase().replace(/'/g, '').replace(/ /g, '_');
  const title = fields.resultName.value, end = title.indexOf('\uFFFD');   // what stands for bytes that are no text differs
  expect(end < 0 ? title === wanted.resultName : wanted.resultName.startsWith(title.slice(0, end)), name, 'resultName', title);
  for (const [member, e] of [['resultType', Veltra.ResultType], ['status', Veltra.Status]]) {
    const found = word(e, fields[member]) ?? '';
    expect(found.replace(/^[0-9]+$/, '').replace('PASSED', 'PASS') === spelt(wanted[member] ?? ''), name, member, found, wanted[member]);
  }
  const time = new Date(Number(fields.timeStamp) * 1000).toISOString().replace('.000', '');
  expect(time === wanted.timeStamp, name, 'timeStamp', time, wanted.timeStamp);
  const flags = [...Array(32).keys()].filter((i) => (fields.testFlags >>> i) & 1).map((i) => 1 << i);
  expect(JSON.stringify(flags) === JSON.stringify(wanted.testFlags), name, 'testFlags', flags);
  for (const member of ['numPassTests', 'numPassStarTests', 'numFailTests']) expect(fields[member] === wanted[member], name, member);
  for (const member of ['length', 'headroom']) {
    const type = Veltra.DisplayType;
    const relations = {[type.VALUE]: '=', [type.GREATER_THAN]: '>', [type.LESS_THAN]: '<', [type.NOT_APPLICABLE]: 'none'};
    const relation = relations[fields[member].type] ?? 'n/a';
    const number = /[=<>]/.test(relation) ? fields[member].value.value ?? null : null;
    expect(relation === wanted[member].relation, name, member, relation, wanted[member]);
    expect(number === null ? wanted[member].value == null : Math.abs(number - wanted[member].value) < 1e-9 * Math.abs(number), name,
      member, number, wanted[member]);
  }
}

// Of the damage that doctor finds: what a description can see, and what takes a CRC-32 or knowledge beyond the bytes.
const SEEN = ['E01', 'E02', 'E05', 'E06', 'E07', 'E08', 'E09'];
const CRC_ONLY = ['E03', 'E04'];
// A total length below that of the file header: readers take it and read nothing, the description refuses it.
const STRICTER = ['length-tiny'];
const crcAlone = [];
let vectors = 0;
for (const name of fs.readdirSync(path.join(root, 'tests/vectors')).filter((file) => file.endsWith('.json')).map((file) => file.slice(0, -5))) {
  ++vectors;
  const wanted = JSON.parse(read('tests/vectors', name + '.json'));
  const bytes = read('tests/vectors', name + '.vres');
  const file = readFile(bytes);
  const codes = wanted.findings.map((finding) => finding.code);
  const isSeen = codes.some((code) => SEEN.includes(code)) || STRICTER.includes(name);
  const isCrcWrong = codes.some((code) => CRC_ONLY.includes(code));
  if (isSeen) expect(!file.taken, name, 'is taken');
  else if (isCrcWrong) expect(!file.taken || !file.intact, name, 'is taken with right CRCs');
  else expect(file.taken && file.intact, name, 'is refused', file.why);
  if (isCrcWrong && file.taken) crcAlone.push(name);
  if (isSeen || isCrcWrong) continue;
  // What the total length counts, as a memory reader; a walk to the end of the file may find more.
  const listed = wanted.sections.slice(1).filter((section) => section.offset < new DataView(bytes.buffer, bytes.byteOffset).getUint32(20, true));
  expect(file.sections.length === listed.length, name, 'sections', file.sections.length);
  file.sections.forEach(({at, section}, i) => {
    const found = {offset: at, magic: section.magic, type: section.type, version: section.version, flags: section.flags,
      stored: section.dataSize, original: section.content.bytes.length, crc: crcOf(section.content.bytes)};
    for (const member in found) expect(found[member] === listed[i][member], name, member, found[member], listed[i][member]);
  });
  const first = file.sections[0]?.section;
  if (wanted.summary && first) compareSummary(first.record.fields, wanted.summary, name);
}
const documented = read('docs/format.md').toString().match(/need\s+their\s+CRC-32\s+compared: (.*?)\./s)?.[1].match(/[\w-]+/g) ?? [];
expect(JSON.stringify(documented) === JSON.stringify(crcAlone), 'docs/format.md names others than those taken but for a CRC-32:', crcAlone);

// Of a record: whether the description takes bytes as it.
const HOLDS = {folder_metadata: (record) => record.isWhole};
function take(type, bytes) {
  try {
    const record = new Veltra[camel('_' + type)](stream(bytes));
    return !HOLDS[type] || HOLDS[type](record) ? record : null;
  } catch {
    return null;
  }
}
// Compares every member of the JSON form whose value is a number, a bool or a text in both.
function compareMembers(fields, wanted, name) {
  let compared = 0;
  for (const [member, value] of Object.entries(fields)) {
    if (!(member in wanted) || typeof wanted[member] === 'object') continue;
    const found = value?.value ?? value;
    const isText = value instanceof Veltra.Text, isBool = typeof wanted[member] === 'boolean';
    if (!isText && !isBool && typeof wanted[member] === 'string') continue;
    expect(isBool ? (found !== 0) === wanted[member] : same(found, wanted[member]), name, member, found, wanted[member]);
    ++compared;
  }
  return compared;
}
let records = 0, members = 0;
for (const file of fs.readdirSync(path.join(root, 'tests/data/good')).filter((name) => name.endsWith('.bin'))) {
  const type = file.replace(/(_v[0-9]+)?\.bin$/, '');
  if (['limit_package', 'pfile_header', 'tweak_values'].includes(type)) continue;   // a container, a part of one, loose values
  expect(type in description.types, type, 'is not described');
  ++records;
  const good = read('tests/data/good', file);
  const record = take(type, good);
  expect(record && record._io.isEof(), file, 'is not taken whole');
  if (record?.header) {
    const content = new Veltra.Content(stream(good), null, null, 31000);
    expect(content.record?.record?.header, file, 'is not found at the beginning of a section');
  }
  const page = path.join(root, 'tests/data/good', file.replace('.bin', '.txt'));
  if (!record || !fs.existsSync(page)) continue;
  const lines = fs.readFileSync(page, 'utf8').split('\n');
  const json = lines[lines.findIndex((line) => /^levels .*JSON:$/.test(line)) + 1];
  let document = json?.startsWith('{') ? JSON.parse(json) : {};
  while (Object.keys(document).length === 1 && typeof Object.values(document)[0] === 'object') document = Object.values(document)[0];
  if (record.fields) members += compareMembers(record.fields, document, file);
  // The page says how the library reads the record cut and changed at each byte: a line where the answer changes.
  const changes = {'cut at': (at) => good.subarray(0, at), 'a zero at': (at) => Buffer.from(good).fill(0, at, at + 1)};
  for (const bits of [1, 128, 255]) {
    changes[`bits ${bits} flipped at`] = (at) => { const copy = Buffer.from(good); copy[at] ^= bits; return copy; };
  }
  for (const [what, change] of Object.entries(changes)) {
    let answer = null;
    for (let at = 0; at < good.length; ++at) {
      answer = lines.find((line) => line.startsWith(`${what} ${at}: `))?.slice(`${what} ${at}: `.length) ?? answer;
      if (type === 'orbel_settings' && at >= 16 && what !== 'cut at') break;   // what is wrong with JSON is not told here
      expect((take(type, change(at)) !== null) === answer.startsWith('0'), file, what, at, 'library:', answer);
    }
  }
}
for (const version of [1, 2]) {
  const settings = take('instrument_settings', read(`tests/data/good/instrument_settings_v${version}.bin`)).fields;
  const unit = take('equipment_information', read(`tests/data/good/equipment_information_v${version}.bin`)).fields;
  expect((settings.timeZone !== undefined) === version > 1 && settings.hostName === undefined, 'settings of version', version);
  expect((unit.liaId !== undefined) === version > 1 && unit.moduleFirstUseDate === undefined, 'equipment of version', version);
}

// The tables of the page have the same fields in the same order, of the same kinds and from the same versions, and their
// offsets are the sums of what stands before.
const KINDS = {bool: ['u1'], u8: ['u1'], i8: ['s1', 'u1'], u16: ['u2'], i16: ['s2'], u32: ['u4'], i32: ['s4'], i64: ['s8'], float: ['f4'],
  string: ['text'], 'counted text': ['text'], '4 counted texts': ['text'], 'counted text with a terminator': ['terminated']};
const BYTES = {u1: 1, s1: 1, u2: 2, s2: 2, u4: 4, s4: 4, s8: 8, f4: 4, scaled_int: 6, display_meas: 7, record_header: 12, database_version: 20};
const bare = (type) => String(type ?? '').replace(/\(.*/, '');
function fieldsOf(type) {
  const fields = [];
  for (const {id, type: of, if: condition} of description.types[type].seq) {
    if (id === 'fields') fields.push(...fieldsOf(bare(of)));
    else if (of === undefined && fields.at(-1)?.id === id + '_length') Object.assign(fields.at(-1), {id, type: 'terminated'});
    else if (id !== fields.at(-1)?.id + '_end') fields.push({id, type: bare(of), from: Number(condition?.match(/class_version > (\d)/)?.[1] ?? 0) + 1});
  }
  return fields;
}
let tables = 0;
for (const [, heading, text] of read('docs/format.md').toString().matchAll(/^###? (.+)\n([^]*?)(?=^##)/gm)) {
  const type = heading === 'Section header' ? 'section' : heading.replace(/ /g, '_').replace(/(?<=[a-z])([A-Z])/g, '_$1').toLowerCase();
  const rows = [...text.matchAll(/^\| *(\d*) *\| *([^|]+?) *\| *([^|]+?) *\|(?: *([^|\n]*?) *\|)?/gm)].map((match) => match.slice(1))
    .filter(([, field, kind]) => field !== 'Field' && !/^-+$/.test(kind));
  if (!(type in description.types) || rows.length === 0 || ['orbel_settings', 'file_header'].includes(type)) continue;
  ++tables;
  const fields = fieldsOf(type).filter((field) => field.id !== 'payload');
  expect(fields.length === rows.length, heading, 'has', rows.length, 'rows for', fields.length, 'fields');
  let at = 0;
  rows.slice(0, fields.length).forEach(([offset, cell, kind, version], i) => {
    const {id, type: of, from} = fields[i];
    const name = cell.match(/[A-Za-z]\w*( \w+)?/)[0].replace(/\d? to$/, '').replace(/DNS1$/, 'DNS').replace(/ (\w)/, (_, c) => c.toUpperCase());
    expect([id, id.replace(/s$/, '')].some((x) => camel(x) === name), heading, 'row', cell, 'is', id);
    const link = kind.match(/^\[([^\]]+)\]/)?.[1].replace(/ /g, '_').replace(/(?<=[a-z])([A-Z])/g, '_$1').toLowerCase();
    expect(link ? link === of : KINDS[kind.replace(/`/g, '')]?.includes(of), heading, 'row', cell, 'of kind', kind, 'is', of);
    expect(offset === '' || Number(offset) === at, heading, 'row', cell, 'at', offset, 'begins at', at);
    if (/^\d$/.test(version ?? '')) expect(Number(version) === from, heading, 'row', cell, 'since', version, 'is since', from);
    at += BYTES[of] ?? NaN;
  });
}

// Types and choices are those of the page and the headers.
const ids = [...read('docs/section-types.md').toString().matchAll(/^\| (\d+) \|/gm)].map((match) => Number(match[1]));
const named = Object.keys(description.enums.section_type).map(Number).filter((id) => id !== 1);
expect(JSON.stringify(named) === JSON.stringify(ids), 'section types', named);
const headers = fs.readdirSync(path.join(root, 'libcrossplatform/common')).filter((name) => name.endsWith('.h'))
  .map((name) => read('libcrossplatform/common', name).toString()).join('');
let choices = 0;
for (const [name, body] of [...headers.matchAll(/^enum (\w+) : int32_t \{(.*?)^\};/gms)].map((match) => match.slice(1))) {
  const ours = description.enums[name.replace(/Type$/, (t) => ['LocaleType'].includes(name) ? '' : t)
    .replace(/IPA/, 'IpA').replace(/(?!^)([A-Z])/g, '_$1').toLowerCase()];
  if (!ours) continue;
  ++choices;
  const theirs = [...body.matchAll(/^ *([A-Z0-9_]+) = (\d+)/gm)].map((match) => [match[2], match[1]]);
  expect(theirs.length === Object.keys(ours).length && theirs.every(([value, id]) =>
    id.endsWith((ours[value] ?? '?').toUpperCase().replace(/^(AFTER|CLOCK|MAINS)_/, '').replace('PASSED', 'PASS'))), 'choices of', name, ours);
}
expect(choices === Object.keys(description.enums).length - 2, 'enumerations without a header', choices);
expect(records >= 20 && members >= 25 && vectors >= 95 && tables >= 18, 'too little was compared:', records, members, vectors, tables);

if (failures > 0) console.log(`${failures} of ${checks} checks failed`);
else console.log(`${vectors} vectors, ${records} records, ${tables} tables, ${checks} checks`);
process.exit(failures > 0 ? 1 : 0);
