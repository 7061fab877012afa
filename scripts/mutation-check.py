#!/usr/bin/env python3
"""Plants the faults of scripts/mutations.txt one at a time and tells which ones the native tests catch.

Each fault is planted in the source tree, the unit-test programs are rebuilt in their own build tree
(build/mutation, native settings, through the compiler cache) and run under a time limit; a failing,
crashing or hanging run has caught the fault. The file is always restored, also on Ctrl-C; a run that
was killed outright leaves a note that the next run restores first.
"""
import argparse
import fcntl
import fnmatch
import os
import signal
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
# The unit tests first; the slower reliability sweeps are built and run only for a fault the unit tests
# let through. The simulator's own tests do not use src/ and the fuzz and soak runs are too slow.
STAGES = [("rx9400_unit_tests", "bin/rx9400_unit_tests"),
          ("rx9400_reliability_tests", "bin/rx9400_reliability_tests")]


class Fault:
    def __init__(self, ident, line):
        self.ident, self.line = ident, line
        self.file = self.find = self.replace = self.means = None


def unescape(text):
    return text.replace("\\n", "\n").replace("\\t", "\t")


def read_list(path):
    """Blocks of `[id]` followed by `file:`, `find:`, `replace:`, `means:` lines; `#` starts a comment."""
    faults, current = [], None
    with open(path, encoding="utf-8") as handle:
        for number, raw in enumerate(handle, 1):
            line = raw.rstrip("\n")
            if not line.strip() or line.lstrip().startswith("#"):
                continue
            if line.startswith("[") and line.rstrip().endswith("]"):
                current = Fault(line.strip()[1:-1], number)
                faults.append(current)
                continue
            key, sep, value = line.partition(":")
            key = key.strip()
            if current is None or not sep or key not in ("file", "find", "replace", "means"):
                sys.exit(f"{path}:{number}: expected [id], file:, find:, replace: or means:")
            value = value[1:] if value.startswith(" ") else value
            setattr(current, key, unescape(value) if key in ("find", "replace") else value.strip())
    for fault in faults:
        for key in ("file", "find", "replace", "means"):
            if getattr(fault, key) is None:
                sys.exit(f"{path}:{fault.line}: [{fault.ident}] has no {key}:")
    idents = [fault.ident for fault in faults]
    doubled = {i for i in idents if idents.count(i) > 1}
    if doubled:
        sys.exit(f"{path}: ids used twice: {', '.join(sorted(doubled))}")
    return faults


def check_texts(faults):
    """Every exact text must occur once in its file, so that the list never goes stale silently."""
    bad = []
    for fault in faults:
        path = os.path.join(ROOT, fault.file)
        if not os.path.isfile(path):
            bad.append(f"[{fault.ident}] {fault.file}: no such file")
            continue
        with open(path, encoding="utf-8") as handle:
            found = handle.read().count(fault.find)
        if found != 1:
            what = "not found" if found == 0 else f"found {found} times"
            bad.append(f"[{fault.ident}] {fault.file}: text {what}: {fault.find!r}")
    if bad:
        sys.exit("stale fault list:\n  " + "\n  ".join(bad))


class Planter:
    """Plants one fault at a time and always puts the original back."""

    def __init__(self, note):
        self.note, self.path, self.original = note, None, None

    def recover(self):
        if not os.path.exists(self.note):
            return
        with open(self.note, "rb") as handle:
            path, _, original = handle.read().partition(b"\0")
        with open(path.decode(), "wb") as handle:
            handle.write(original)
        os.remove(self.note)
        print(f"restored {path.decode()} from an interrupted run")

    def plant(self, fault):
        self.path = os.path.join(ROOT, fault.file)
        with open(self.path, "rb") as handle:
            self.original = handle.read()
        with open(self.note, "wb") as handle:
            handle.write(self.path.encode() + b"\0" + self.original)
        text = self.original.decode("utf-8").replace(fault.find, fault.replace, 1)
        with open(self.path, "wb") as handle:
            handle.write(text.encode("utf-8"))

    def restore(self):
        if self.path is None:
            return
        with open(self.path, "wb") as handle:
            handle.write(self.original)
        if os.path.exists(self.note):
            os.remove(self.note)
        self.path = None


def build(build_dir, jobs, timeout, targets):
    command = ["cmake", "--build", build_dir, "-j", str(jobs), "--target", *targets]
    try:
        result = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=timeout)
    except subprocess.TimeoutExpired:
        return False, "build timed out"
    return result.returncode == 0, result.stdout.decode(errors="replace")[-3000:]


def passes(build_dir, program, timeout, test_filter):
    """True when the program passes within the time limit; a crash or a hang is a failure."""
    env = dict(os.environ, GTEST_FAIL_FAST="1", GTEST_BRIEF="1")
    command = [os.path.join(build_dir, program)]
    if test_filter:
        command.append(f"--gtest_filter={test_filter}")
    try:
        result = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                timeout=timeout, env=env, cwd=build_dir)
    except subprocess.TimeoutExpired:
        return False
    return result.returncode == 0


def judge(args):
    """(built, caught): stage by stage, stopping at the first stage that catches the fault."""
    for target, program in STAGES:
        built, _ = build(args.build_dir, args.jobs, args.build_timeout, [target])
        if not built:
            return False, False
        if not passes(args.build_dir, program, args.timeout, args.gtest_filter):
            return True, True
    return True, False


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--list", default=os.path.join(ROOT, "scripts", "mutations.txt"))
    parser.add_argument("--id", action="append", default=[], help="fault ids to plant (glob; repeatable)")
    parser.add_argument("--file", action="append", default=[], help="only faults in files matching (glob)")
    parser.add_argument("--build-dir", default=os.path.join(ROOT, "build", "mutation"))
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--timeout", type=int, default=120, help="seconds for each test program")
    parser.add_argument("--build-timeout", type=int, default=900)
    parser.add_argument("--gtest-filter", default="", help="run only these tests (a quicker, weaker check)")
    parser.add_argument("--no-baseline", action="store_true", help="skip the run without a fault")
    parser.add_argument("--check", action="store_true", help="only check that the list is current")
    args = parser.parse_args()

    faults = read_list(args.list)
    if args.id:
        faults = [f for f in faults if any(fnmatch.fnmatch(f.ident, pattern) for pattern in args.id)]
    if args.file:
        faults = [f for f in faults if any(fnmatch.fnmatch(f.file, f"*{p}*") for p in args.file)]
    if args.check:
        check_texts(faults)
        print(f"{len(faults)} faults, every text found once")
        return 0
    os.makedirs(args.build_dir, exist_ok=True)
    # One run at a time: a second one would plant into the first one's files.
    lock = open(os.path.join(args.build_dir, "mutation-check.lock"), "w")
    try:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
    except BlockingIOError:
        sys.exit(f"another mutation check is running in {args.build_dir}")
    planter = Planter(os.path.join(args.build_dir, "planted-fault"))
    planter.recover()
    check_texts(faults)
    if not faults:
        sys.exit("no fault matches")

    if not os.path.exists(os.path.join(args.build_dir, "CMakeCache.txt")):
        subprocess.run(["cmake", "--preset", "native", "-B", args.build_dir], cwd=ROOT, check=True,
                       stdout=subprocess.DEVNULL)
    if not args.no_baseline:
        built, log = build(args.build_dir, args.jobs, args.build_timeout, [t for t, _ in STAGES])
        if not built:
            sys.exit("the tree does not build without a fault:\n" + log)
        if not all(passes(args.build_dir, p, args.timeout, args.gtest_filter) for _, p in STAGES):
            sys.exit("the tests fail without a fault: fix them first")

    def stop(signum, _frame):
        raise KeyboardInterrupt(f"signal {signum}")

    signal.signal(signal.SIGTERM, stop)
    signal.signal(signal.SIGHUP, stop)
    killed, survived, broken = [], [], []
    try:
        for fault in faults:
            started = time.monotonic()
            planter.plant(fault)
            try:
                built, caught = judge(args)
            finally:
                planter.restore()
            seconds = time.monotonic() - started
            if not built:
                broken.append(fault)
                verdict = "NO-BUILD"
            elif caught:
                killed.append(fault)
                verdict = "killed"
            else:
                survived.append(fault)
                verdict = "SURVIVED"
            print(f"{verdict:8} {fault.ident:32} {fault.file}  ({seconds:.0f} s)  {fault.means}", flush=True)
    except KeyboardInterrupt:
        planter.restore()
        print("interrupted; the source is restored", file=sys.stderr)
        return 130
    print(f"{len(killed)} killed, {len(survived)} survived" +
          (f", {len(broken)} did not build (fix their entries)" if broken else ""))
    return 1 if survived or broken else 0


if __name__ == "__main__":
    sys.exit(main())
