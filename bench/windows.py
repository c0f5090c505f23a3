#!/usr/bin/env python3
"""What the dialogs cost: the installing process of a run with windows beside that of an unattended
run of the same medium, and how soon Cancel is answered while a large file is copied.

usage: windows.py SETUP [--pairs N] [--gigabytes N] [--markdown FILE]

The runs take turns, unattended, with windows, unattended ..., on a display of their own and on a
tmpfs; the figure is the median of the pairwise ratios.
"""
import argparse, os, shutil, statistics, subprocess, sys, tempfile, time

HEADER = """SetupVersion 1
ProductName Bench
ProductVersion 1
ProductDirectory p
LogFile
NoChestRC
NoDisplayLog
"""
COPIES, MEMBERS = 2000, 8000


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as out:
        out.write(text)


def describe(medium, operations):
    """The first page has a button, the unattended run a list, and both the same suite."""
    write(f"{medium}/cdinst.dat", HEADER + "\n".join(
        ['Package "all" "All"', *operations, 'Suite "Base" all', "ConfigBegin",
         '1 MainDlg "Page" "" "" 4', '2 CusDlg "List" "" "" 0 5', '3 CusDlg "All" "" "" 1 6',
         *(f'{n} Suite "Base" "" "" {int(n != 5)}' for n in (4, 5, 6)), "ConfigEnd"]) + "\n")
    write(f"{medium}/SetupFiles/eula.txt", "Use it.\n")


def mixed_medium(medium):
    operations = []
    for n in range(COPIES):
        write(f"{medium}/copies/{n // 100}/{n}", "x" * (500 + n))
        operations.append(f'Copy "copies/{n // 100}/{n}" "" {500 + n} 0644')
    for n in range(MEMBERS):
        write(f"{medium}/tree/share/{n // 100}/{n}", "y" * (200 + n % 3000))
    subprocess.run(["tar", "-cf", f"{medium}/a.tar", "-C", f"{medium}/tree", "share"], check=True)
    shutil.rmtree(f"{medium}/tree")
    members = " ".join(f'"share/{n // 100}/{n}" {200 + n % 3000}' for n in range(MEMBERS))
    describe(medium, operations + [f'Untar "a.tar" 1 {members}'])


def large_medium(medium, gigabytes):
    os.makedirs(medium)
    block = os.urandom(1 << 20)
    with open(f"{medium}/large", "wb") as out:
        for _ in range(gigabytes << 10):
            out.write(block)
    describe(medium, [f'Copy "large" "" {gigabytes << 30} 0644'])


class Desk:
    def __init__(self, place):
        read, write_end = os.pipe()
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x1024x24", "-noreset",
             "-nolisten", "tcp"], pass_fds=[write_end], stderr=subprocess.DEVNULL)
        os.close(write_end)
        self.environment = {**os.environ, "DISPLAY": f":{os.read(read, 16).decode().strip()}",
                            "HOME": place}

    def do(self, *words):
        return subprocess.run(["xdotool", *map(str, words)], env=self.environment, check=True,
                              capture_output=True, text=True).stdout

    def window(self, shell):
        return self.do("search", "--sync", "--onlyvisible", "--classname", f"^{shell}$").split()[0]

    def press_default(self, shell):
        window = self.window(shell)
        time.sleep(0.2)  # until it is drawn and takes keys
        self.do("windowfocus", window, "key", "Return")


def child_of(process):
    with open(f"/proc/{process.pid}/task/{process.pid}/children") as children:
        return children.read().split()


def seconds_of_child(process):
    """How long the installing process lives."""
    while not child_of(process):
        if process.poll() is not None:
            sys.exit("setup ended without installing")
        time.sleep(0.001)
    start, child = time.perf_counter(), child_of(process)[0]
    while True:
        try:
            with open(f"/proc/{child}/stat") as stat:
                if stat.read().rsplit(")", 1)[1].split()[0] == "Z":
                    break
        except FileNotFoundError:
            break
        time.sleep(0.001)
    return time.perf_counter() - start


class Runs:
    def __init__(self, setup, place, desk):
        self.setup, self.place, self.desk = setup, place, desk

    def start(self, medium, *more):
        shutil.rmtree(f"{self.place}/out", ignore_errors=True)
        return subprocess.Popen(
            [self.setup, "-noroot", "-from", f"{medium}/cdinst.dat", "-dest", f"{self.place}/out",
             *more], env=self.desk.environment, stdout=subprocess.DEVNULL)

    def unattended(self, medium):
        process = self.start(medium, "-cmdline")
        seconds = seconds_of_child(process)
        process.wait()
        return seconds

    def first_page(self, medium):
        """As far as the first page's button, which has the keyboard."""
        process = self.start(medium)
        for shell in ("dsWelcome", "dsEULA", "dsChangeDestination"):
            self.desk.press_default(shell)
        window = self.desk.window("dsMainDlg")
        time.sleep(0.2)
        self.desk.do("windowfocus", window, "key", "space")
        return process

    def windows(self, medium):
        process = self.first_page(medium)
        seconds = seconds_of_child(process)
        self.desk.press_default("Orvane Message")
        if process.wait() != 0:
            sys.exit("the run with windows failed")
        return seconds

    def cancel(self, medium):
        """Seconds from the key on Cancel to the question on the screen, xdotool's own included."""
        process = self.first_page(medium)
        window = self.desk.window("dsProgress")
        time.sleep(0.3)
        self.desk.do("windowfocus", window)
        start = time.perf_counter()
        self.desk.do("key", "Return", "search", "--sync", "--onlyvisible", "--classname",
                     "^Orvane Message$")
        seconds = time.perf_counter() - start
        process.kill()
        process.wait()
        return seconds


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("setup")
    parser.add_argument("--pairs", type=int, default=7)
    parser.add_argument("--gigabytes", type=int, default=1)
    parser.add_argument("--markdown")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(dir="/dev/shm") as place:
        desk = Desk(place)
        try:
            rows = measure(options, place, Runs(os.path.realpath(options.setup), place, desk))
        finally:
            desk.server.kill()
            desk.server.wait()
    for row in rows:
        print("  ".join(row), flush=True)
    if options.markdown:
        with open(options.markdown, "a") as out:
            out.write("\n| what | measured | bar | |\n|---|---|---|---|\n")
            out.writelines("| " + " | ".join(row) + " |\n" for row in rows)


def measure(options, place, runs):
    mixed_medium(f"{place}/mixed")
    pairs = [(runs.unattended(f"{place}/mixed"), runs.windows(f"{place}/mixed"))
             for _ in range(options.pairs)]
    ratios = sorted(b / a for a, b in pairs)
    alone, shown = (statistics.median(column) for column in zip(*pairs))
    large_medium(f"{place}/large", options.gigabytes)
    answers = sorted(runs.cancel(f"{place}/large") for _ in range(5))
    return [(f"with windows against unattended, {COPIES} copies and {MEMBERS} members",
             f"{statistics.median(ratios):.2f} ({ratios[0]:.2f} to {ratios[-1]:.2f})", "1.1",
             f"{shown:.2f} s against {alone:.2f} s"),
            (f"Cancel while {options.gigabytes} GB is copied", f"{statistics.median(answers):.2f} s",
             "at once", f"at most {answers[-1]:.2f} s, from the key to the question")]


main()
