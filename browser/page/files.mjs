// The files that the module sees, as a system of the interface "wasi_snapshot_preview1": a tree of folders and of files
// that are only read. A file is an object with its `size` and `read(offset, bytes)`, which gives a Uint8Array of so many
// bytes or fewer, and throws where it cannot.
const OK = 0, BADF = 8, INVAL = 28, IO = 29, ISDIR = 31, NOENT = 44, NOTDIR = 54, NOTSUP = 58;
const DIRECTORY = 3, REGULAR = 4;
const ROOT = 3;  // the descriptor that all paths begin at
const PIECE = 1024 * 1024;  // a file is read ahead by so much

class Files {
  constructor() {
    this.root = new Map();
    this.inodes = new Map();  // of each file and folder
    this.last = null;         // the path that was opened last
    this.failing = new Set();  // paths that answer with a read error
    this.reset();
  }

  // Forgets what a module had open.
  reset() {
    this.open = new Map([[ROOT, { entry: this.root, path: "" }]]);
    this.next = ROOT + 1;
  }

  // Adds a file under a path like "job/A-001.vres".
  add(path, file) {
    const names = path.split("/").filter((name) => name !== "" && name !== "." && name !== "..");
    let folder = this.root;
    for (const name of names.slice(0, -1)) {
      if (!(folder.get(name) instanceof Map)) folder.set(name, new Map());
      folder = folder.get(name);
    }
    folder.set(names.at(-1), file);
  }

  find(path) {
    let entry = this.root;
    for (const name of path.split("/")) {
      if (name === "" || name === ".") continue;
      if (!(entry instanceof Map)) return null;
      entry = entry.get(name);
      if (entry === undefined) return null;
    }
    return entry;
  }

  inode(entry) {
    if (!this.inodes.has(entry)) this.inodes.set(entry, BigInt(this.inodes.size + 1));
    return this.inodes.get(entry);
  }

  // The calls, on the memory that `memory()` gives.
  imports(memory, environment) {
    const view = () => new DataView(memory().buffer);
    const bytes = (at, size) => new Uint8Array(memory().buffer, at, size);
    const text = (at, size) => new TextDecoder().decode(bytes(at, size).slice());
    const entries = environment.map((each) => new TextEncoder().encode(each + "\0"));
    const at = (descriptor) => this.open.get(descriptor);

    const stat = (entry, to) => {
      const out = view();
      const isFolder = entry instanceof Map;
      out.setBigUint64(to, 1n, true);
      out.setBigUint64(to + 8, this.inode(entry), true);
      out.setBigUint64(to + 16, BigInt(isFolder ? DIRECTORY : REGULAR), true);
      out.setBigUint64(to + 24, 1n, true);
      out.setBigUint64(to + 32, BigInt(isFolder ? 0 : entry.size), true);
      for (const time of [40, 48, 56]) out.setBigUint64(to + time, 0n, true);
      return OK;
    };

    // Up to `size` bytes of an open file; what is read ahead is kept with it.
    const readAt = (file, offset, size) => {
      const ahead = file.ahead;
      if (!ahead || offset < ahead.offset || offset >= ahead.offset + ahead.bytes.length) {
        if (offset >= file.entry.size) return new Uint8Array();
        file.ahead = { offset, bytes: file.entry.read(offset, Math.min(PIECE, file.entry.size - offset)) };
        if (file.ahead.bytes.length === 0) return file.ahead.bytes;
      }
      const begin = offset - file.ahead.offset;
      return file.ahead.bytes.subarray(begin, begin + size);
    };

    const read = (descriptor, vectors, count, offset, done) => {
      const file = at(descriptor);
      if (!file) return BADF;
      if (file.entry instanceof Map) return ISDIR;
      if (this.failing.has(file.path)) return IO;
      let total = 0;
      try {
        for (let i = 0; i < count; ++i) {
          const to = view().getUint32(vectors + 8 * i, true), size = view().getUint32(vectors + 8 * i + 4, true);
          const got = readAt(file, offset + total, size);
          bytes(to, got.length).set(got);
          total += got.length;
          if (got.length < size) break;
        }
      } catch {
        return IO;
      }
      view().setUint32(done, total, true);
      return OK;
    };

    return {
      environ_sizes_get: (count, size) => {
        view().setUint32(count, entries.length, true);
        view().setUint32(size, entries.reduce((sum, each) => sum + each.length, 0), true);
        return OK;
      },
      environ_get: (places, to) => {
        for (const each of entries) {
          view().setUint32(places, to, true);
          bytes(to, each.length).set(each);
          places += 4;
          to += each.length;
        }
        return OK;
      },
      fd_prestat_get: (descriptor, to) => {
        if (descriptor !== ROOT) return BADF;
        view().setUint32(to, 0, true);
        view().setUint32(to + 4, 1, true);
        return OK;
      },
      fd_prestat_dir_name: (descriptor, to, size) => {
        if (descriptor !== ROOT || size < 1) return BADF;
        bytes(to, 1)[0] = 0x2F;  // "/", where relative paths begin, too
        return OK;
      },
      fd_fdstat_get: (descriptor, to) => {
        if (!at(descriptor)) return BADF;
        bytes(to, 24).fill(0);
        view().setUint8(to, at(descriptor).entry instanceof Map ? DIRECTORY : REGULAR);
        view().setBigUint64(to + 8, ~0n & 0xFFFFFFFFFFFFFFFFn, true);
        view().setBigUint64(to + 16, ~0n & 0xFFFFFFFFFFFFFFFFn, true);
        return OK;
      },
      fd_fdstat_set_flags: () => OK,
      fd_filestat_get: (descriptor, to) => (at(descriptor) ? stat(at(descriptor).entry, to) : BADF),
      path_filestat_get: (descriptor, flags, path, size, to) => {
        const entry = this.find(text(path, size));
        return entry ? stat(entry, to) : NOENT;
      },
      path_open: (descriptor, lookup, path, size, how, rights, inherited, flags, to) => {
        const name = text(path, size);
        const entry = this.find(name);
        if (!entry) return NOENT;
        const wantsFolder = (how & 2) !== 0;
        if (wantsFolder && !(entry instanceof Map)) return NOTDIR;
        if (!(entry instanceof Map)) this.last = name;
        this.open.set(this.next, { entry, path: name, offset: 0 });
        view().setUint32(to, this.next++, true);
        return OK;
      },
      fd_close: (descriptor) => (this.open.delete(descriptor) ? OK : BADF),
      fd_pread: (descriptor, vectors, count, offset, done) => read(descriptor, vectors, count, Number(offset), done),
      fd_read: (descriptor, vectors, count, done) => {
        const file = at(descriptor);
        const answer = read(descriptor, vectors, count, file ? file.offset : 0, done);
        if (answer === OK) file.offset += view().getUint32(done, true);
        return answer;
      },
      fd_seek: (descriptor, offset, whence, to) => {
        const file = at(descriptor);
        if (!file || file.entry instanceof Map) return BADF;
        const found = Number(offset) + [0, file.offset, file.entry.size][whence];
        if (found < 0) return INVAL;
        file.offset = found;
        view().setBigUint64(to, BigInt(found), true);
        return OK;
      },
      fd_readdir: (descriptor, to, size, cookie, used) => {
        const folder = at(descriptor)?.entry;
        if (!(folder instanceof Map)) return NOTDIR;
        folder.names ??= Array.from(folder, ([name, entry]) => [new TextEncoder().encode(name), entry]);
        let done = 0;
        for (let i = Number(cookie); i < folder.names.length && done < size; ++i) {
          const [name, entry] = folder.names[i];
          const record = new Uint8Array(24 + name.length), fields = new DataView(record.buffer);
          fields.setBigUint64(0, BigInt(i + 1), true);
          fields.setBigUint64(8, this.inode(entry), true);
          fields.setUint32(16, name.length, true);
          fields.setUint8(20, entry instanceof Map ? DIRECTORY : REGULAR);
          record.set(name, 24);
          const part = record.subarray(0, Math.min(record.length, size - done));
          bytes(to + done, part.length).set(part);
          done += part.length;
        }
        view().setUint32(used, done, true);
        return OK;
      },
      fd_write: (descriptor, vectors, count, done) => {  // what the library logs: the answers have it, too
        let total = 0;
        for (let i = 0; i < count; ++i) total += view().getUint32(vectors + 8 * i + 4, true);
        view().setUint32(done, total, true);
        return OK;
      },
      proc_exit: (code) => {
        throw new WebAssembly.RuntimeError("exit " + code);
      },
    };
  }
}

// One instance of the module. A method that throws has ended it: nothing may be asked of it any more.
class Inspector {
  // @param compiled   WebAssembly.Module
  // @param mostBytes  of memory
  constructor(compiled, files, mostBytes, zone) {
    const PAGE = 65536;
    files.reset();
    this.memory = new WebAssembly.Memory({ initial: 64, maximum: mostBytes / PAGE });
    this.pieces = [];
    const offset = (seconds) => -new Date(seconds * 1000).getTimezoneOffset() * 60 || 0;
    const { exports } = new WebAssembly.Instance(compiled, {
      env: { memory: this.memory },
      veltra: {
        give: (at, size) => this.pieces.push(new Uint8Array(this.memory.buffer, at, size).slice()),
        ahead: offset,
      },
      wasi_snapshot_preview1: files.imports(() => this.memory, ["TZ=" + zone]),
    });
    this.exports = exports;
    exports._initialize();
  }

  // The pieces of an answer. `argument` is given as JSON, or as it is where it is a number.
  ask(question, argument) {
    this.pieces = [];
    if (typeof argument === "object") {
      const bytes = new TextEncoder().encode(JSON.stringify(argument));
      const at = this.exports.room(bytes.length);
      new Uint8Array(this.memory.buffer, at, bytes.length).set(bytes);
      this.exports[question]();
    } else {
      this.exports[question](argument);
    }
    return this.pieces;
  }

  answer(question, argument) {
    const decoder = new TextDecoder();
    return JSON.parse(this.ask(question, argument).map((piece) => decoder.decode(piece, { stream: true })).join("") + decoder.decode());
  }
}

export { Files, Inspector };
