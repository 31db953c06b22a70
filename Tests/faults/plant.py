"""Plants faults in a copy of the tree and runs the tests against each. See scripts/plant-faults."""
import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import xml.etree.ElementTree as ElementTree

TREE = pathlib.Path(__file__).parent.parent.parent
FOLDERS = ("Importer", "Common", "Source", "Platform", "Tools")
SUFFIXES = (".cpp", ".h", ".mm")
VARIABLE = "VELMORA_PLANTED_FAULT"
QUICK = 0.5  # seconds; longer tests run only where no quick one fails

# In front of every file with a fault. The number is read once a process. Warnings are switched off here, not for the whole
# build, so that the objects of files without faults can come from a compiler cache.
SWITCH = "".join('#pragma GCC diagnostic ignored "-W%s"\n' % name for name in (
    "conversion", "sign-compare", "unused-variable", "unused-function", "unused-parameter", "unused-const-variable",
    "unused-but-set-variable", "type-limits", "extra", "parentheses")) + """#include <cstdlib>
#ifndef PLANTED_FAULT
#define PLANTED_FAULT
inline bool PlantedFault(int number)
{
    static const char* const sText = getenv("%s");
    static const int sNumber = sText != nullptr ? atoi(sText) : 0;
    return sNumber == number;
}
#endif
#line 1
""" % VARIABLE

# Test programs by the folder of the fault, the most likely first; all others follow. The last ones take longest.
ORDER = {
    "Importer": ["test-importer"],
    "Common": ["common-tests", "document-tests", "stock-tests", "geometry-tests", "list-tests", "document-memory-tests"],
    "Source/Layouts": ["document-tests", "list-tests", "geometry-tests", "document-memory-tests", "query-tests"],
    "Source/Layers": ["document-tests", "list-tests"],
    "Source/BuildingBlocks": ["geometry-tests", "document-tests", "list-tests"],
    "Source/Utilities": ["geometry-tests", "rendering-tests"],
    "Source/Elements/Rendering": ["rendering-tests"],
    "Source/Elements": ["query-tests", "geometry-tests", "list-tests"],
    "Source/Checks": ["check-tests"],
    "Source/TrackLibraries": ["library-tests", "stock-tests"],
    "Source/Stock": ["stock-tests", "geometry-tests", "list-tests"],
    "Source/Preferences": ["common-tests"],
    "Platform/Linux/Jail": ["platform-jail-test", "sandbox-tests"],
    "Platform": ["test-core-foundation", "platform-functions-test", "platform-fonts-test", "document-tests"],
    "Tools": ["tools-tests", "sandbox-tests"],
}
LAST = ["rendering-tests", "samples-tests", "sandbox-tests", "tools-tests"]


class Fault:
    def __init__(self, number, name, path, what, pattern, replacement):
        self.number = number
        self.name = name
        self.path = path
        self.what = what
        before, original, behind = re.split("[«»]", pattern)
        self.original = original
        self.replacement = replacement
        # Line breaks and indentation are the formatter's business.
        parts = [r"\s+".join(re.escape(word) for word in part.split()) for part in (before, original, behind)]
        glue = [r"\s*" if text[:1].isspace() or other[-1:].isspace() else ""
                for text, other in ((original, before), (behind, original))]
        self.pattern = re.compile("(%s)%s(%s)(?=%s%s)" % (parts[0], glue[0], parts[1], glue[1], parts[2]))

    def planted(self, original):
        if re.search(r"[;}]\s*$", self.original):
            return "if (PlantedFault(%d)) { %s } else { %s }" % (self.number, self.replacement, original)
        return "(PlantedFault(%d) ? (%s) : (%s))" % (self.number, self.replacement, original)


def read_faults(tree):
    faults = []
    lines = [line for line in (tree / "Tests/faults/planted.txt").read_text(encoding="utf-8").splitlines()
             if line and not line.startswith("#")]
    at = 0
    while at < len(lines):
        name, path, what = (field.strip() for field in lines[at].split("|"))
        body = [line.strip() for line in lines[at + 1:at + 3]]
        replacement = "" if body[1] == "(nothing)" else body[1]
        faults.append(Fault(len(faults) + 1, name, path, what, body[0], replacement))
        at += 3
    names = [fault.name for fault in faults]
    if len(set(names)) != len(names):
        sys.exit("a name stands twice in the list of faults")
    return faults


def sources():
    files = {}
    for folder in FOLDERS:
        for path in sorted((TREE / folder).rglob("*")):
            if path.suffix in SUFFIXES:
                files[str(path.relative_to(TREE))] = path.read_text(encoding="utf-8")
    return files


def find_places(faults):
    """Where each fault goes: in the file that it names, or else wherever else in the product its text stands once."""
    files = sources()
    places = {}
    moved = []
    for fault in faults:
        found = [(path, match) for path in ([fault.path] if fault.path in files else [])
                 for match in fault.pattern.finditer(files[path])]
        if not found:
            found = [(path, match) for path, text in files.items() for match in fault.pattern.finditer(text)]
        if len(found) != 1:
            moved.append("%s: moved (%d places): %s" % (fault.name, len(found), fault.original))
            continue
        path, match = found[0]
        fault.path = path
        places.setdefault(path, []).append((match.start(2), match.end(2), fault))
    return files, places, moved


def plant(files, places, target):
    for path, spots in places.items():
        text = files[path]
        spots.sort(key=lambda spot: (spot[0], -spot[1]))
        while spots:  # from the last to the first; one may lie within another
            start, end, fault = spots.pop()
            planted = fault.planted(text[start:end])
            text = text[:start] + planted + text[end:]
            spots = [(first, last + len(planted) - (end - start) if last >= end else last, other)
                     for first, last, other in spots]
        file = target / path
        marked = SWITCH + text
        if path.endswith(".h"):  # the guard stays the first line
            marked = text.replace("#pragma once", "#pragma once\n" + SWITCH.replace("#line 1\n", ""), 1)
        if not file.exists() or file.read_text(encoding="utf-8") != marked:
            file.write_text(marked, encoding="utf-8")


def copy_tree(target, planted):
    """A copy whose unchanged files keep their times, so that a second build is a short one."""
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=TREE, check=True,
                            capture_output=True).stdout.decode().split("\0")
    for name in filter(None, listed):
        source = TREE / name
        file = target / name
        if name in planted or not source.is_file():
            continue
        if file.is_file() and file.read_bytes() == source.read_bytes():
            continue
        file.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(source, file)
        shutil.copymode(source, file)
    for name in planted:
        (target / name).parent.mkdir(parents=True, exist_ok=True)


def build(target, jobs, arguments):
    folder = target / "build"
    if not (folder / "build.ninja").exists():
        subprocess.run(["cmake", "-S", str(target), "-B", str(folder), "-G", "Ninja",
                        "-DVELMORA_BENCHMARKS=OFF", *arguments], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(["ninja", "-C", str(folder), "-j", str(jobs)], check=True, stdout=sys.stderr)
    return folder


def programs(folder):
    """Name and path of each test program, with those in front that start nothing else."""
    found = {path.name: path for path in (folder / "tests").iterdir()
             if path.is_file() and os.access(path, os.X_OK) and path.name != "velmora-refuse-calls"}
    names = sorted(name for name in found if name not in LAST and "cocoa" not in name)  # which needs a display
    return {name: found[name] for name in names + [name for name in LAST if name in found]}


def run(path, folder, number, seconds, only, first=False):
    """Runs some tests of a program, all for None, with a fault on; ends after the first failure if that is asked for.
    @return the failed tests, where a process that does not end or dies counts as one, and the seconds of each test"""
    with tempfile.TemporaryDirectory() as private:
        os.chmod(private, 0o755)  # some tests act as another user
        report = pathlib.Path(private) / "report.xml"
        environment = dict(os.environ, **{VARIABLE: str(number), "TMPDIR": private})
        arguments = [str(path), "--gtest_output=xml:%s" % report]
        if first:
            arguments.append("--gtest_fail_fast")
        if only is not None:
            arguments.append("--gtest_filter=" + ":".join(only))
        process = subprocess.Popen(arguments, cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
        try:
            output = process.communicate(timeout=seconds)[0].decode(errors="replace")
            ending = "ended with %d" % process.returncode
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            output = process.communicate()[0].decode(errors="replace")
            ending = "did not end"
        try:
            os.killpg(process.pid, signal.SIGKILL)  # what it left behind
        except ProcessLookupError:
            pass
        failed = []
        times = {}
        if report.exists():
            # Messages may show bytes that no XML can hold, and gtest writes them as they are.
            text = re.sub("[^\t\n\r -\ud7ff\ue000-\ufffd\U00010000-\U0010ffff]", "?",
                          report.read_bytes().decode(errors="replace"))
            for case in ElementTree.fromstring(text.encode()).iter("testcase"):
                name = "%s.%s" % (case.get("classname"), case.get("name"))
                times[name] = float(case.get("time", 0))
                if case.find("failure") is not None:
                    failed.append(name)
        if not failed and process.returncode != 0:
            started = re.findall(r"^\[ RUN      \] (\S+)", output, re.MULTILINE)
            failed = ["%s %s%s" % (path.name, ending, " in " + started[-1] if started else "")]
        return failed, times


def first_choice(path):
    """The programs that may know most about a file."""
    longest = max((folder for folder in ORDER if path.startswith(folder + "/")), key=len)
    return ORDER[longest]


def read_table(path):
    caught = {}
    for line in pathlib.Path(path).read_text(encoding="utf-8").splitlines():
        fields = line.split("\t")
        if len(fields) >= 2:
            caught[fields[0]] = fields[1] != "survived"
    return caught


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", type=pathlib.Path, help="keep the copy and its build here")
    parser.add_argument("--only", default="", help="names of faults, with commas")
    parser.add_argument("--against", help="a table of an earlier run")
    parser.add_argument("--write", help="where the table goes, besides standard output")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--look", action="store_true", help="build and run nothing")
    parser.add_argument("--built", action="store_true", help="run what --build holds from an earlier run")
    parser.add_argument("arguments", nargs="*", help="for cmake")
    options = parser.parse_args()
    if options.built:
        return run_all(read_faults(options.build), options.build.resolve() / "build", options)
    faults = read_faults(TREE)
    files, places, moved = find_places(faults)
    for line in moved:
        print(line)
    if options.look or moved:
        print("%d faults, %d moved" % (len(faults), len(moved)))
        return 1 if moved else 0
    with tempfile.TemporaryDirectory() as temporary:
        target = (options.build or pathlib.Path(temporary)).resolve()
        target.mkdir(parents=True, exist_ok=True)
        copy_tree(target, set(places))
        plant(files, places, target)
        return run_all(faults, build(target, options.jobs, options.arguments), options)


class Program:
    """A test program and what its tests take without a fault, found out when it is first needed and kept in the build
    folder. Tests that fail without a fault are left out."""

    def __init__(self, path, folder):
        self.path = path
        self.folder = folder
        self.lock = threading.Lock()
        self.times = None

    def measure(self):
        with self.lock:
            kept = self.folder / ("times-%s.json" % self.path.name)
            if self.times is None and kept.exists() and kept.stat().st_mtime > self.path.stat().st_mtime:
                self.times = json.loads(kept.read_text())
            if self.times is None:
                failed, times = run(self.path, self.folder, 0, 3600, None)
                for test in failed:
                    print("fails without a fault, left out: %s" % test, file=sys.stderr)
                self.times = {test: times[test] for test in times if test not in failed}
                kept.write_text(json.dumps(self.times))
        return self.times

    def catch(self, fault, slow):
        """The tests that fail with a fault: all the quick ones, or the first of the slow ones. A test of processes and
        clocks may fail on a busy machine: those count that fail once more, and not without the fault."""
        times = self.measure()
        tests = [test for test, seconds in times.items() if (seconds > QUICK) == slow]
        failed = self.run_some(fault.number, tests, slow)
        again = [test for test in failed if test in times]
        if again:
            without = self.run_some(0, again)
            failed = [test for test in self.run_some(fault.number, again) if test not in without]
        return failed

    def run_some(self, number, tests, first=False):
        if not tests:
            return []
        seconds = 5 * sum(self.times[test] for test in tests) + 60
        return run(self.path, self.folder, number, seconds, tests, first)[0]


def run_all(faults, folder, options):
    wanted = set(filter(None, options.only.split(",")))
    faults = [fault for fault in faults if not wanted or fault.name in wanted]
    known = {name: Program(path, folder) for name, path in programs(folder).items()}
    caught = {}
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for likely, slow in ((True, False), (True, True), (False, False), (False, True)):
            def look(fault, likely=likely, slow=slow):
                first = first_choice(fault.path)
                for name in first if likely else [name for name in known if name not in first]:
                    failed = known[name].catch(fault, slow) if name in known else []
                    if failed:
                        return fault, failed  # a fault that one program catches is caught
                return fault, []

            tasks = [pool.submit(look, fault) for fault in faults if not caught.get(fault.name)]
            for task in concurrent.futures.as_completed(tasks):
                fault, failed = task.result()
                caught[fault.name] = failed
                if failed:
                    print("%s\t%s" % (fault.name, ", ".join(failed[:3])), flush=True)
                if options.write:
                    pathlib.Path(options.write).write_text(table(faults, caught), encoding="utf-8")
            print("# %d left" % sum(1 for failed in caught.values() if not failed), flush=True)
    print(table(faults, caught).splitlines()[-1])
    before = read_table(options.against) if options.against else {}
    lost = [fault.name for fault in faults if not caught[fault.name] and before.get(fault.name)]
    for name in lost:
        print("was caught before: %s" % name)
    return 1 if lost else 0


def table(faults, caught):
    """Name, number of tests, three of them."""
    lines = ["%s\t%s\t%s\n" % (fault.name, len(caught[fault.name]) or "survived", ", ".join(caught[fault.name][:3]))
             for fault in faults if fault.name in caught]
    count = sum(1 for failed in caught.values() if failed)
    return "".join(lines) + "# %d of %d faults caught\n" % (count, len(lines))


sys.exit(main())
