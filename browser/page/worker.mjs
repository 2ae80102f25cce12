// The worker of the page: looks at files, so that the page stays awake. Messages have a number, and so has the answer.
import { Files, Session } from "./session.mjs";

const MOST_SHOWN = 20;      // findings of a file
const MOST_ATTENTION = 1000;  // files with findings

const reader = new FileReaderSync();
let compiled, settings, session, blobs, looks;

// @param blob  File or Blob; only the part that is asked for is read
const fileOf = (blob) => ({
  size: blob.size,
  read: (offset, size) => new Uint8Array(reader.readAsArrayBuffer(blob.slice(offset, offset + size))),
});

const shown = (look, number) => ({
  number,
  file: look.file,
  error: look.error,
  isDamaged: look.damaged === true,
  canRecover: look.canRecover === true,
  findings: look.findings.slice(0, MOST_SHOWN),
  leftOut: Math.max(0, look.findings.length - MOST_SHOWN) + (look.findingsLeftOut ?? 0),
});

const handlers = {
  start(message) {
    compiled = message.compiled;
    settings = message.settings;
  },

  open({ entries, description, logo }) {
    const files = new Files();
    blobs = new Map();
    for (const { path, blob } of entries) {
      files.add(path, fileOf(blob));
      blobs.set(path, blob);
    }
    if (logo?.blob) files.add(logo.path, fileOf(logo.blob));
    session = new Session(compiled, files, settings);
    looks = [];
    const attention = [], counts = { damaged: 0, doubtful: 0, unread: 0 };
    let told = 0;
    const paths = Array.from(new Set(entries.map(({ path }) => path.split("/")[0])));
    const settled = session.run({ paths, description, logo: logo?.path }, (i, look) => {
      looks.push(look.canRecover === true);
      if (look.error) ++counts.unread;
      else if (look.state === "damaged") ++counts.damaged;
      else if (look.state === "intact" && look.findings.length > 0) ++counts.doubtful;
      const needsWords = look.error || (look.findings.length > 0 && look.state !== "not a container");
      if (needsWords && attention.length < MOST_ATTENTION) attention.push(shown(look, i));
      if (performance.now() - told < 50) return;
      told = performance.now();
      postMessage({ progress: i + 1, of: session.opened.files.length });
    });
    return { opened: { ...session.opened, files: session.opened.files.length }, settled, attention, counts };
  },

  order: ({ field, descending }) => session.order(field, descending),

  report(form) {
    const pieces = session.report(form);
    return { blob: pieces && new Blob(pieces, { type: "text/html" }), ended: session.ended };
  },

  recover({ number }) {
    const path = session.opened.files[number], blob = blobs.get(path), found = session.recover(number);
    if (!found) return { error: path + ": could not be recovered: it needs more memory than this page has" };
    if (found.error || found.isNothing) return found;
    const parts = [new Uint8Array(found.header)];
    for (let at = 0; at < found.parts.length; at += 2) {
      parts.push(blob.slice(found.parts[at], found.parts[at] + found.parts[at + 1]));
    }
    return { ...found, parts: undefined, blob: new Blob(parts) };
  },
};

onmessage = ({ data: { id, question, ...message } }) => {
  try {
    postMessage({ id, answer: handlers[question](message) });
  } catch (error) {
    const isTooMuch = error instanceof WebAssembly.RuntimeError || error instanceof RangeError;
    postMessage({ id, error: isTooMuch ? "These files are more than this page has memory for." : String(error) });
  }
};
