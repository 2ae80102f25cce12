// What was dropped, looked at by a module, and by another where one ended: the file it ended with is said to need more
// than there is, and the others are not touched by that.
import { Files, Inspector } from "./files.mjs";

const TOO_MUCH = "could not be examined: it needs more memory than this page has, or is not as any result is";
const MOST_ENDS = 100;  // modules that may end with one report

class Session {
  constructor(compiled, files, { mostBytes, zone }) {
    this.make = () => new Inspector(compiled, files, mostBytes, zone);
    this.files = files;
    this.ended = [];  // paths of the files that ended a module
    this.inspector = this.make();
  }

  // Asks again of a new module, which first gets to where the old one was. @return undefined if that ended, too
  retry(ask) {
    for (let i = 0; i < MOST_ENDS; ++i) {
      this.files.last = null;
      try {
        return ask();
      } catch (error) {
        if (!(error instanceof WebAssembly.RuntimeError || error instanceof RangeError)) throw error;
        this.inspector = this.make();
        const path = this.files.last;
        if (path === null || this.files.failing.has(path)) return undefined;
        this.leaveOut(path);
        this.reopen();
      }
    }
    return undefined;
  }

  leaveOut(path) {
    this.files.failing.add(path);
    this.ended.push(path);
  }

  // Brings a new module to where the old one was.
  reopen() {
    this.inspector.answer("open", this.question);
    this.opened.files.forEach((_, i) => this.inspector.ask("look", i));
    if (this.isSettled) this.inspector.ask("settle");
  }

  // @param question  for the module's open()
  // @param onFile    called with each file's number and answer
  run(question, onFile) {
    this.question = question;
    this.isSettled = false;
    this.opened = this.openedWith(question);
    let hasEnded = false;
    for (let i = 0; i < this.opened.files.length; ++i) {
      const path = this.opened.files[i];
      try {
        onFile(i, this.inspector.answer("look", i));
      } catch (error) {
        if (!(error instanceof WebAssembly.RuntimeError || error instanceof RangeError)) throw error;
        hasEnded = true;
        this.leaveOut(path);
        onFile(i, { file: path, error: TOO_MUCH, findings: [] });
        this.inspector = this.make();
        this.inspector.ask("open", this.question);
      }
    }
    if (hasEnded) {  // the last module knows only the files after the last end
      this.inspector = this.make();
      this.reopen();
    }
    const settled = this.retry(() => this.inspector.answer("settle"));
    this.isSettled = true;
    return settled;
  }

  // A description or a logo that ends the module is an error of the job, whose files are looked at without it.
  openedWith(question) {
    try {
      return this.inspector.answer("open", question);
    } catch (error) {
      if (!(error instanceof WebAssembly.RuntimeError || error instanceof RangeError)) throw error;
      const path = this.files.last;
      this.inspector = this.make();
      this.question = { ...question, description: "{}", logo: "" };
      const opened = this.inspector.answer("open", this.question);
      return { ...opened, error: (path === null ? "" : path + ": ") + "cannot be used as job data or logo" };
    }
  }

  order(field, descending) {
    return this.retry(() => this.inspector.answer("order", { field, descending }));
  }

  // @return pieces of HTML; undefined if there is no memory for it
  report(form) {
    return this.retry(() => this.inspector.ask("report", form));
  }

  recover(number) {
    return this.retry(() => this.inspector.answer("recover", number));
  }
}

export { Files, Session };
