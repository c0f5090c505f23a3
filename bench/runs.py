#!/usr/bin/env python3
"""Whole runs of setup beside what a user would run instead, on a tmpfs.

usage: runs.py SETUP [--pairs N] [--megabytes N] [--files N] [--markdown FILE]

Each comparison runs A B A B ... and gives the median of the pairwise ratios, so that a machine
whose speed drifts slows both sides alike.  The trees are compared afterwards.  Nothing is judged
by the exit status: the bars stand beside the figures.
"""
import argparse, filecmp, os, platform, re, shutil, statistics, subprocess, sys, tempfile, time

HEADER = """SetupVersion 1
ProductName Bench
ProductVersion 1
ProductDirectory p
LogFile
NoChestRC
"""
TREES = ("/usr/include", "/usr/share/doc", "/usr/share", "/usr/lib")
SMALL = 60_000           # most files of a medium are smaller than this
OWN = {"Setup", "SetupFiles", "cdinst.dat"}  # what a run adds to the tree itself


def machine_files():
    """Paths and sizes of plain files that need no quoting, in a fixed order."""
    for tree in TREES:
        for folder, folders, names in os.walk(tree):
            folders.sort()
            for name in sorted(names):
                path = os.path.join(folder, name)
                if re.fullmatch(r"[\w./+@:,=-]+", path) and os.path.isfile(path) \
                        and not os.path.islink(path) and os.path.getsize(path):
                    yield path, os.path.getsize(path)


def make_payload(place, files, size):
    """Copies `files` small files and then large ones until there are `size` bytes."""
    count = total = 0
    large, seen = [], set()
    for path, length in machine_files():
        if path in seen:
            continue
        seen.add(path)
        if length >= SMALL:
            large.append((path, length))
        elif count < files:
            target = place + path
            os.makedirs(os.path.dirname(target), exist_ok=True)
            shutil.copyfile(path, target)
            count, total = count + 1, total + length
    for number, (path, length) in enumerate(sorted(large, key=lambda item: -item[1])):
        if total >= size:
            break
        if length > size // 10:
            continue
        os.makedirs(place + "/large", exist_ok=True)
        shutil.copyfile(path, f"{place}/large/{number}")
        count, total = count + 1, total + length
    return count, total


def listing(place):
    for folder, folders, names in os.walk(place):
        folders.sort()
        for name in sorted(names):
            path = os.path.join(folder, name)
            yield os.path.relpath(path, place), os.path.getsize(path)


def describe(medium, lines):
    os.makedirs(medium, exist_ok=True)
    with open(f"{medium}/cdinst.dat", "w") as out:
        out.write(HEADER + "\n".join(lines) + "\n")


def one_suite(operations):
    return ['Package "all" "All"', *operations, 'Suite "Base" all', "ConfigBegin",
            '3 CusDlg "All" "" "" 1 4', '4 Suite "Base" "" "" 1', "ConfigEnd"]


class Bench:
    def __init__(self, setup, place):
        self.setup, self.place, self.rows = setup, place, []

    def install(self, medium):
        return [self.setup, "-cmdline", "-noroot", "-from", f"{medium}/cdinst.dat", "-dest",
                f"{self.place}/out"]

    def timed(self, command, decompressor="bunzip2"):
        """Seconds of one run into a fresh directory."""
        shutil.rmtree(f"{self.place}/out", ignore_errors=True)
        os.makedirs(f"{self.place}/out/p")
        start = time.perf_counter()
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                   env={**os.environ, "HOME": self.place,
                                        "OVINST_BUNZIP2": decompressor})
        errors = process.stderr.read()
        status = process.wait()
        seconds = time.perf_counter() - start
        if status or errors:
            sys.exit(f"{command[0]} failed ({status}): {errors[:300]}")
        return seconds

    def compare_trees(self, wanted):
        def differences(pair):
            yield from pair.left_only
            yield from (n for n in pair.right_only if n not in OWN or pair is top)
            _, wrong, odd = filecmp.cmpfiles(pair.left, pair.right, pair.common_files, False)
            yield from wrong + odd
            for below in pair.subdirs.values():
                yield from differences(below)
        top = filecmp.dircmp(wanted, f"{self.place}/out/p", ignore=list(OWN))
        found = list(differences(top))
        if found:
            sys.exit(f"the trees differ: {found[:5]}")

    def against(self, name, bar, medium, other, payload, pairs, decompressor="bunzip2"):
        ratios, seconds = [], []
        for _ in range(pairs):
            a = self.timed(self.install(medium), decompressor)
            self.compare_trees(payload)
            b = self.timed(other)
            self.compare_trees(payload)
            ratios.append(a / b)
            seconds.append((a, b))
        mine, theirs = (statistics.median(column) for column in zip(*seconds))
        spread = f"{min(ratios):.2f} to {max(ratios):.2f}"
        self.row(name, f"{statistics.median(ratios):.2f} ({spread})", bar,
                 f"{mine:.2f} s against {theirs:.2f} s")

    def to_start(self, medium, runs=5):
        """Seconds until the child's first record arrives: the description is read and weighed."""
        best = None
        for _ in range(runs):
            shutil.rmtree(f"{self.place}/out", ignore_errors=True)
            start = time.perf_counter()
            process = subprocess.Popen(self.install(medium), stdout=subprocess.PIPE,
                                       stderr=subprocess.DEVNULL,
                                       env={**os.environ, "HOME": self.place})
            text = b""
            while b"Status:" not in text:
                piece = os.read(process.stdout.fileno(), 65536)
                if not piece:
                    sys.exit(f"no status from {medium}: {text[-300:]}")
                text = text[-16:] + piece
            seconds = time.perf_counter() - start
            process.kill()
            process.stdout.close()
            process.wait()
            best = seconds if best is None else min(best, seconds)
        return best

    def growth(self, name, make, size):
        make(f"{self.place}/whole", size)
        make(f"{self.place}/tenth", size // 10)
        whole, tenth = self.to_start(f"{self.place}/whole"), self.to_start(f"{self.place}/tenth")
        self.row(name, f"{whole:.3f} s", "0.5 s", "to the first record")
        self.row(name + ", against a tenth of it", f"{whole / tenth:.1f} times", "12 times",
                 f"{tenth:.3f} s for the tenth")

    def memory(self, name, medium):
        report = f"{self.place}/peak"
        # A process started from here would count this interpreter's memory as its own.
        self.timed(["/usr/bin/time", "-q", "-f", "%M", "-o", report, *self.install(medium)])
        self.row(name, f"{int(open(report).read()) / 1024:.1f} MB", "20 MB",
                 "largest process of the run")

    def row(self, *columns):
        self.rows.append(columns)
        print("  ".join(columns), flush=True)

    def checks(self, name, medium):
        """The author's check of a medium that has only a description, which it says."""
        command = [os.path.join(os.path.dirname(self.setup), "ovmedium"), "check", medium]
        best = None
        for _ in range(5):
            start = time.perf_counter()
            done = subprocess.run(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
            seconds = time.perf_counter() - start
            if done.returncode > 1 or done.stderr:
                sys.exit(f"{command} failed ({done.returncode}): {done.stderr[:300]}")
            best = seconds if best is None else min(best, seconds)
        self.row(name, f"{best:.2f} s", "1 s", "ovmedium check")


def description_of(lines):
    """A medium of that many lines, a fifth of them packages, spread over 200 suites."""
    def make(medium, count):
        packages = count // 5
        suites = 200
        body = []
        for number in range(packages):
            body.append(f'Package "p{number}" "Package {number}"')
            body += [f'Mkdir "dir{number}/{k}" 0755' for k in range(4)]
        for suite in range(suites):
            members = " ".join(f"p{n}" for n in range(suite, packages, suites))
            body.append(f'Suite "s{suite}" {members}')
        ids = " ".join(str(4 + k) for k in range(suites))
        body += ["ConfigBegin", f'3 CusDlg "All" "" "" 1 {ids}']
        body += [f'{4 + k} Suite "s{k}" "" "" 1' for k in range(suites)]
        describe(medium, body + ["ConfigEnd"])
    return make, lines


def archive_of(medium, members):
    pairs = " ".join(f'"share/folder{n // 100}/member{n}" {n}' for n in range(members))
    describe(medium, one_suite([f'Untar "missing.tar" 1 {pairs}']))


def big_copies(place, megabytes):
    medium = f"{place}/big{megabytes}"
    os.makedirs(medium, exist_ok=True)
    with open(f"{medium}/file", "wb") as out:
        for _ in range(megabytes):
            out.write(os.urandom(1024) * 1024)
    describe(medium, one_suite([f'Copy "file" "" {megabytes << 20} 0644']))
    return medium


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("setup")
    parser.add_argument("--pairs", type=int, default=9)
    parser.add_argument("--megabytes", type=int, default=200)
    parser.add_argument("--files", type=int, default=8000)
    parser.add_argument("--markdown")
    options = parser.parse_args()
    options.setup = os.path.realpath(options.setup)
    with tempfile.TemporaryDirectory(dir="/dev/shm") as place:
        run(options, place)


def run(options, place):
    bench = Bench(options.setup, place)
    payload = f"{place}/payload"
    count, total = make_payload(payload, options.files, options.megabytes * 1_000_000)
    print(f"payload: {count} files, {total / 1e6:.0f} MB", flush=True)
    subprocess.run(["tar", "-cf", f"{place}/a.tar", "-C", payload, "."], check=True)
    subprocess.run(["bzip2", "-k", f"{place}/a.tar"], check=True)

    members = " ".join(f'"./{name}" {size}' for name, size in listing(payload))
    for medium, archive, kind in (("plain", "a.tar", "Untar"), ("packed", "a.tar.bz2", "UntarZ")):
        describe(f"{place}/{medium}", one_suite([f'{kind} "{archive}" 1 {members}']))
        os.symlink(f"../{archive}", f"{place}/{medium}/{archive}")
    describe(f"{place}/loose", one_suite(
        [f'Copy "payload/{name}" "{name}" {size} 0644' for name, size in listing(payload)]))
    os.symlink("../payload", f"{place}/loose/payload")

    bench.against("copies against cp -r", "1.4", f"{place}/loose",
                  ["cp", "-r", f"{payload}/.", f"{place}/out/p"], payload, options.pairs)
    bench.against("plain archive against tar -xf", "1.1", f"{place}/plain",
                  ["tar", "-xf", f"{place}/a.tar", "-C", f"{place}/out/p"], payload, options.pairs)
    for name, bar, decompressor in (
            ("compressed archive against tar -xjf", "1.05", "bunzip2"),
            ("compressed archive, all processors, against tar -xjf", "0.65", "lbunzip2")):
        bench.against(name, bar, f"{place}/packed",
                      ["tar", "-xjf", f"{place}/a.tar.bz2", "-C", f"{place}/out/p"], payload,
                      max(3, options.pairs // 3), decompressor)
    bench.growth("description of 100,000 lines, 20,000 packages", *description_of(100_000))
    bench.checks("the same description, checked", f"{place}/whole")
    bench.growth("archive of 100,000 members", archive_of, 100_000)
    bench.memory("peak memory, 8,000 copies", f"{place}/loose")
    bench.memory("peak memory, compressed archive", f"{place}/packed")
    bench.memory("peak memory, one copy of 20 MB", big_copies(place, 20))
    bench.memory("peak memory, one copy of 400 MB", big_copies(place, 400))
    if options.markdown:
        write_table(options.markdown, bench.rows)


def write_table(path, rows):
    with open(path, "w") as out:
        out.write("| what | measured | bar | |\n|---|---|---|---|\n")
        out.writelines("| " + " | ".join(columns) + " |\n" for columns in rows)
        out.write(f"\nMeasured on {os.cpu_count()} cores ({platform.machine()}), on a tmpfs.\n")


main()
