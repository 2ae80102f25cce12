#!/usr/bin/env python3
"""strace_sweep.py WORKLOAD_PROGRAM [--errors EIO,...]

Every system call of every workload fails in turn, made to by strace: the sweep of SweepTest.cpp once more, by a tool
that knows nothing of it. Exit: 0 all is well, 1 not, 77 the machine does not allow tracing or has no strace.
"""
import argparse
import collections
import os
import re
import shutil
import subprocess
import sys
import tempfile

CALLS = ("openat", "newfstatat", "read", "pread64", "write", "lseek", "fsync", "close")
WORKLOADS = ("save", "save-in-place", "reopen", "package", "profile-save", "profile-read")
HANGS_AFTER_SECONDS = 60


def strace(program, name, directory, *options, env=None):
    log = directory + ".trace"
    command = ["strace", "-o", log, "-e", "trace=" + ",".join(CALLS) + ",getppid", *options, program, "run", name, directory]
    code = subprocess.run(command, env=env, stderr=subprocess.DEVNULL, timeout=HANGS_AFTER_SECONDS).returncode
    with open(log, encoding="utf-8", errors="replace") as lines:
        return code, [line.split("(")[0] for line in lines if re.match(r"\w+\(", line)]


def counted(calls):
    """How many calls of each kind come before the workload, and within it."""
    marks = [i for i, call in enumerate(calls) if call == "getppid"]
    before, within = collections.Counter(calls[: marks[0]]), collections.Counter(calls[marks[0] : marks[1]])
    return before, within


def sweep(program, name, directory, errors):
    step = lambda *arguments: subprocess.run([program, *arguments], capture_output=True, text=True, timeout=60)
    step("prepare", name, directory)
    code, calls = strace(program, name, directory)
    if code != 0:
        sys.exit(f"{name}: {code} without a fault")
    before, within = counted(calls)
    runs, wrong = 0, 0
    for call in CALLS:
        for error in errors:
            for k in range(1, within[call] + 1):
                for forGood in ("", "+"):
                    step("prepare", name, directory)
                    env = dict(os.environ, VELTRA_CLOSE_FAILS="1") if call == "close" else None
                    when = f"inject={call}:error={error}:when={before[call] + k}{forGood}"
                    code, _ = strace(program, name, directory, "-e", when, env=env)
                    checked = step("check", name, directory, str(code))
                    runs += 1
                    if checked.returncode != 0 or code < 0:
                        wrong += 1
                        print(f"{name}, {when}: ended with {code}: {checked.stderr}")
    print(f"{name}: {runs} runs", flush=True)
    return wrong


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--errors", default="EIO,ENOSPC,EINTR,EMFILE")
    arguments = parser.parse_args()
    if shutil.which("strace") is None or subprocess.run(["strace", "-o", "/dev/null", "true"], capture_output=True).returncode:
        print("no tracing here")
        sys.exit(77)
    os.environ["TZ"] = "UTC0"
    with tempfile.TemporaryDirectory() as scratch:
        directory = os.path.join(scratch, "d")
        os.mkdir(directory)
        wrong = sum(sweep(arguments.program, name, directory, arguments.errors.split(",")) for name in WORKLOADS)
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
