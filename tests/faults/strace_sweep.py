#!/usr/bin/env python3
"""strace_sweep.py WORKLOAD_PROGRAM [ERROR...]

Every system call of every workload fails in turn, made to by strace: the sweep of SweepTest.cpp once more, by a tool
that knows nothing of it. Exit: 0 all is well, 1 not, 77 the machine does not allow tracing or has no strace.
"""
import collections
import itertools
import os
import re
import shutil
import subprocess
import sys
import tempfile

CALLS = ("openat", "newfstatat", "read", "pread64", "write", "lseek", "fsync", "close", "fchmod", "renameat")
WORKLOADS = ("save", "save_in_place", "reopen", "package", "profile_save", "profile_read")


def strace(program, name, directory, *options, env=None):
    log = directory + ".trace"
    command = ["strace", "-o", log, "-e", "trace=" + ",".join(CALLS) + ",getppid", *options, program, "run", name, directory]
    code = subprocess.run(command, env=env, stderr=subprocess.DEVNULL).returncode
    with open(log, encoding="utf-8", errors="replace") as lines:
        return code, [line.split("(")[0] for line in lines if re.match(r"\w+\(", line)]


def sweep(program, name, directory, errors):
    step = lambda *arguments: subprocess.run([program, *arguments], capture_output=True, text=True)
    step("prepare", name, directory)
    code, calls = strace(program, name, directory)
    if code != 0:
        sys.exit(f"{name}: {code} without a fault")
    begin, end = [i for i, call in enumerate(calls) if call == "getppid"]
    before, within = collections.Counter(calls[:begin]), collections.Counter(calls[begin:end])
    runs, wrong = 0, 0
    for call, error in itertools.product(CALLS, errors):
        for k, for_good in itertools.product(range(1, within[call] + 1), ("", "+")):
            step("prepare", name, directory)
            env = dict(os.environ, VELTRA_CLOSE_FAILS="1") if call == "close" else None
            when = f"inject={call}:error={error}:when={before[call] + k}{for_good}"
            code, _ = strace(program, name, directory, "-e", when, env=env)
            checked = step("check", name, directory, str(code))
            runs += 1
            if checked.returncode != 0 or code < 0:
                wrong += 1
                print(f"{name}, {when}: ended with {code}: {checked.stderr}")
    print(f"{name}: {runs} runs", flush=True)
    return wrong


if shutil.which("strace") is None or subprocess.run(["strace", "-o", "/dev/null", "true"], capture_output=True).returncode:
    print("no tracing here")
    sys.exit(77)
os.environ["TZ"] = "UTC0"
wanted = sys.argv[2:] or ["EIO", "ENOSPC", "EINTR", "EMFILE"]
with tempfile.TemporaryDirectory() as scratch:
    place = os.path.join(scratch, "d")
    os.mkdir(place)
    sys.exit(any([sweep(sys.argv[1], workload, place, wanted) for workload in WORKLOADS]))
