#!/usr/bin/env python3
"""documents.py BUILD

Goes through every code block of every document: fenced, or indented by four spaces. Each must be known here: it is
compiled, run or parsed, or another test reads it from the page, which must name it. A block that is not known fails, so
that none goes stale unseen. BUILD is a tree with everything built."""
import fnmatch
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
BUILD = Path(sys.argv[1]).resolve()
scratch = Path(tempfile.mkdtemp())
PREFIX = scratch / "prefix"


class Block:
    def __init__(self, page, line, language, lines):
        self.page, self.line, self.language, self.lines = page, line, language, lines

    @property
    def text(self):
        return "\n".join(self.lines) + "\n"


def blocks_of(page):
    lines = (ROOT / page).read_text().splitlines() + [""]
    i, text_before = 0, False
    while i < len(lines):
        if fence := re.match(r"( *)```(.*)", lines[i]):
            end = next(k for k in range(i + 1, len(lines)) if lines[k].strip() == "```")
            yield Block(page, i + 1, fence[2].strip() or "plain", [x.removeprefix(fence[1]) for x in lines[i + 1:end]])
            i = end
        elif lines[i].startswith("    ") and not text_before:
            end = next(k for k in range(i, len(lines)) if not lines[k].startswith("    "))
            yield Block(page, i + 1, "indented", [x[4:] for x in lines[i:end]])
            i = end
        text_before = lines[i].strip() != ""
        i += 1


def run(command, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode != 0:
        raise ValueError(f"{command}: exit {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


def flags():
    """What a caller of the installed library compiles with."""
    return run(["pkg-config", "--cflags", "veltracommon"], env=dict(os.environ, PKG_CONFIG_PATH=str(PREFIX / "lib/pkgconfig"))).split()


# --- what is done with a block

def in_test(test, needle=None):
    """Another test reads the block from the page: it must name the page, or what the page names."""
    def check(block):
        wanted = needle(block) if needle else Path(block.page).name
        if wanted not in (ROOT / test).read_text():
            raise ValueError(f"{test} has no {wanted!r}")
    return check


def compiled(*preamble):
    """A program as it stands, or a fragment of a function after what it takes for granted."""
    def check(block):
        source = block.text
        if "int main(" not in source:
            *includes, given = preamble
            source = "".join(f"#include <libcrossplatform/common/{x}>\n" for x in includes) + "void f() {\n" + given + source + "}\n"
        run(["c++", "-std=c++17", "-fsyntax-only", "-Wall", "-Wextra", "-Werror", "-Wno-unused", *flags(), "-x", "c++", "-"], input=source)
    return check


def compiled_c(block):
    run(["cc", "-std=c11", "-fsyntax-only", "-Wall", "-Wextra", "-Werror", *flags(), "-x", "c", "-"], input=block.text)


def configured(block):
    """CMake of a caller, whole or for its program, with the library as it is installed or as a part of its tree."""
    folder = Path(tempfile.mkdtemp(dir=scratch))
    text = block.text
    if "project(" not in text:
        text = "cmake_minimum_required(VERSION 3.25)\nproject(caller CXX)\nadd_executable(program program.cpp)\n" + text
    (folder / "CMakeLists.txt").write_text(text)
    (folder / "program.cpp").symlink_to(scratch / "program.cpp")
    (folder / "veltracommon").symlink_to(ROOT)
    run(["cmake", "-S", str(folder), "-B", str(folder / "build"), f"-DCMAKE_PREFIX_PATH={PREFIX}"])


def parsed(block):
    json.loads(block.text)


def job_file(block):
    parsed(block)
    (scratch / "given.json").write_text(block.text)
    run_lines("veltra job status -q --job given.json job || [[ $? == 1 ]]")


def run_lines(lines):
    environment = dict(os.environ, PATH=f"{BUILD}/tools:{os.environ['PATH']}", CPATH=str(ROOT), LD_RUN_PATH=str(BUILD / "libcrossplatform"),
                       LIBRARY_PATH=str(BUILD / "libcrossplatform"))
    return run(["bash", "-euo", "pipefail", "-c", lines], cwd=scratch, env=environment)


def shell(**replaced):
    """Runs the lines. `then`: what must hold afterwards, as lines too; other names stand for a word of the page."""
    def check(block):
        lines = block.text
        for name, value in replaced.items():
            if name not in ("then", "answers"):
                word = {"prefix": "/opt/veltra", "folder": "FOLDER", "source": "-S ."}[name]
                if word not in lines:
                    raise ValueError(f"no {word} in it")
                lines = lines.replace(word, str(value))
        if "answers" in replaced:   # the answer of some is no
            lines = "".join(f"{line.split('  #')[0]} || [[ $? == 1 ]]\n" for line in lines.splitlines())
        run_lines(lines + replaced.get("then", ""))
    return check


CMAKE_FILES = "".join((ROOT / p).read_text() for p in run(["git", "ls-files", "*CMakeLists.txt", "*.cmake"], cwd=ROOT).split())
PRESETS = {p["name"] for p in json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]}
STAGES = set(re.findall(r'run_stages .*?"([^"]*)" "\$@"', (ROOT / "scripts/check-all").read_text() + (ROOT / "scripts/test").read_text())[0].split())


def names(block):
    """Builds, tests and scripts of this tree: too long to run here, but every name in them must exist."""
    text = re.sub(r"\s+#.*", "", block.text).replace("\\\n", " ").replace("&&", "\n")
    for line in text.splitlines():
        words = shlex.split(line)
        command, options = words[0], words[1:]
        for option, value in zip(options, options[1:] + [""]):
            if option == "--preset" and value not in PRESETS:
                raise ValueError(f"no preset {value}")
            if (define := re.match(r"-D(\w+)=", option)) and not define[1].startswith("CMAKE_") and define[1] not in CMAKE_FILES:
                raise ValueError(f"no setting {define[1]}")
        if command == "cmake" and "--target" in options:
            for target in options[options.index("--target") + 1:]:
                made = target.removeprefix("replay_")   # of a fuzz target, named after its source
                if not re.search(rf"\b{target}\b", CMAKE_FILES) and not (made != target and (ROOT / f"fuzz/{made}Fuzz.cpp").exists()):
                    raise ValueError(f"no target {target}")
        if command == "ctest" and "-L" in options:
            for label in options[options.index("-L") + 1].split("|"):
                if not re.search(r"LABELS (\w+ )*%s\b" % label, CMAKE_FILES):
                    raise ValueError(f"no label {label}")
        if command.startswith("scripts/"):
            if not os.access(ROOT / command, os.X_OK):
                raise ValueError(f"no {command}")
            if command in ("scripts/test", "scripts/check-all") and not set(options) <= STAGES:
                raise ValueError(f"no such stage: {options}")
        elif command not in ("cmake", "ctest"):
            raise ValueError(f"{command} is not known here: run it, or say what to compare it with")


def build_lines(block):
    """As names(), but for the last line, which starts an interpreter."""
    *lines, last = block.lines
    if not re.fullmatch(r"PYTHONPATH=build/package/python /usr/bin/python3", last):
        raise ValueError(f"{last} is not known here")
    names(Block(block.page, block.line, block.language, lines))


def rooms(block):
    """Arrows between rooms, as scripts/arrows has them."""
    if block.text.splitlines()[0] != "logging <- serialization <- common <- libinspect <- tools, python, browser":
        raise ValueError("another order of the rooms")
    for room in re.findall(r"\w+", block.text.splitlines()[1].split(":")[1]):
        if f'"libinspect/{room}"' not in (ROOT / "scripts/arrows").read_text():
            raise ValueError(f"no room {room}")


TEMPORARY = ".0123456789abcdef.tmp"
# Page, language, beginning: what is done with it. The first row that fits counts.
RULES = [
    ("README.md", "plain", "$ ", in_test("tests/cli/pages.sh", lambda b: b.lines[0].removeprefix("$ ").split(".")[0])),
    ("README.md", "cpp", "", compiled(
        "PFileSafeWriter.h", "ResultFile.h", "PFileSectionTypes.h", "const char* path = \"\"; Veltra::ResultSummary summary; PFile::Section raw;\n"
        "#pragma GCC diagnostic ignored \"-Wunused-result\"\n")),   # the page says that the codes are left out
    ("README.md", "cmake", "", configured),
    ("README.md", "python", "", in_test("tests/python/test_writing.py")),
    ("docs/many-results.md", "python", "", in_test("tests/fleet/test_fleet.py")),
    ("README.md", "indented", "scripts/install-packages build python", build_lines),
    ("README.md", "indented", "sudo apt-get install", in_test("scripts/packages.txt", lambda b: b.lines[0].split()[-1])),
    ("README.md", "*", "export PKG_CONFIG_PATH", shell(prefix=PREFIX, then="[[ -x a.out || -x program || -x package_builder ]]")),
    ("docs/c-interface.md", "c", "", compiled_c),
    ("docs/c-interface.md", "indented", "cc ", shell(then="./package_builder built.pkg && veltra manifest show built.pkg")),
    ("docs/format.md", "hex *", "", in_test("tests/common/FormatPageTest.cpp", lambda b: f'bytesOnPage("{b.language.split()[1]}")')),
    ("docs/reader-behaviour.md", "cpp", "PFile::Section section;", compiled(
        "PFileReader.h", "PFile::FileReader reader;\n")),
    ("docs/reader-behaviour.md", "cpp", "const bool printable", compiled("ResultSummary.h", "Veltra::ResultSummary summary;\n")),
    ("docs/reader-behaviour.md", "indented", "find FOLDER", shell(
        folder="folder", then=f"[[ ! -e folder/a.vres{TEMPORARY} && -e folder/a.vres && -e folder/b.tmp ]]")),
    ("docs/many-results.md", "indented", "veltra ", shell(answers=True, then="[[ -s job.db && -s job.xlsx && -s results.db ]]")),
    ("docs/many-results.md", "sql", "", in_test("tests/cli/tables.sh")),
    ("docs/many-results.md", "text", "", in_test("tests/cli/tables.sh")),
    ("docs/findings.md", "indented", "lot/", in_test("tests/cli/pages.sh")),
    ("docs/jobs.md", "json", "{", job_file),
    ("docs/architecture.md", "indented", "logging <-", rooms),
    ("docs/credentials.md", "indented", "(umask", shell(
        source=f"-S {ROOT} -DVELTRA_TOOLS=OFF -DVELTRA_EXAMPLES=OFF", then="[[ $(stat -c '%s %a' credential-key) == '33 600' ]]")),
    ("*", "json", "", parsed),
    ("*", "indented", "cmake ", names),
    ("*", "indented", "ctest ", names),
    ("*", "indented", "scripts/", names),
]


def main():
    pages = run(["git", "ls-files", "*.md"], cwd=ROOT).split()
    run(["cmake", "--install", str(BUILD), "--prefix", str(PREFIX)])
    pc = next(PREFIX.rglob("veltracommon.pc")).parent
    if pc != PREFIX / "lib/pkgconfig":
        (PREFIX / "lib").mkdir(exist_ok=True)
        (PREFIX / "lib/pkgconfig").symlink_to(pc)
    run([str(ROOT / "examples/make_job"), str(BUILD / "tools/veltra"), str(scratch / "job"), "12", "4"])
    (scratch / "results").symlink_to(scratch / "job")
    for name in ("package_builder.c", "save_and_reopen.cpp"):
        (scratch / name).write_text((ROOT / "examples" / name).read_text())
    (scratch / "save_and_reopen.cpp").rename(scratch / "program.cpp")
    (scratch / "folder").mkdir()
    for name in (f"a.vres{TEMPORARY}", "a.vres", "b.tmp"):
        (scratch / "folder" / name).touch()

    known = faults = 0
    used = set()
    for page in pages:
        for block in blocks_of(page):
            rule = next((i for i, (p, language, begin, _) in enumerate(RULES) if fnmatch.fnmatch(page, p) and
                         fnmatch.fnmatch(block.language, language) and block.text.startswith(begin)), None)
            try:
                if rule is None:
                    raise ValueError(f"a block of {block.language!r} that no test knows: {block.lines[0]!r}")
                used.add(rule)
                RULES[rule][3](block)
                known += 1
            except ValueError as fault:
                faults += 1
                print(f"{page}:{block.line}: {fault}")
    for i in set(range(len(RULES))) - used:
        if RULES[i][0] != "*":
            faults += 1
            print(f"no block is left of {RULES[i][:3]}")
    print(f"{len(pages)} pages, {known} blocks")
    return 1 if faults else 0


try:
    sys.exit(main())
finally:
    subprocess.run(["rm", "-rf", str(scratch)], check=True)
