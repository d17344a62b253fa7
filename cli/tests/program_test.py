#!/usr/bin/env python3
"""Runs growtree as its users do: what it writes where, and how it ends.

program_test.py PROGRAM DATA_FOLDER
"""

import contextlib
import fcntl
import html
import os
import pathlib
import pty
import re
import select
import shlex
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time
import unittest
import xml.etree.ElementTree

PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())
DATA = pathlib.Path(sys.argv[2]).resolve()
FOLDER = pathlib.Path(__file__).resolve().parent
PROJECT = FOLDER.parent.parent
PATIENCE = 60  # seconds, after which something is wrong


def run(*arguments, **options):
    return subprocess.run(
        [PROGRAM, *arguments], capture_output=True, text=True, timeout=PATIENCE, **options
    )


class Feeder(threading.Thread):
    """Writes cases without end to a pipe, at leisure, until the reader is gone."""

    def __init__(self, pipe):
        super().__init__(daemon=True)
        self.pipe = pipe

    def run(self):
        rows = b"1,2\n" * 50000
        with contextlib.suppress(BrokenPipeError), self.pipe:
            self.pipe.write(b"x,y\n")
            while True:
                self.pipe.write(rows)
                self.pipe.flush()
                time.sleep(0.02)


def demo_trees():
    """Name of the data, method and options of each tree that ./dev demo grows."""
    script = (PROJECT / "dev").read_text().replace("\\\n", " ")
    demo = re.search(r"^demo\(\) \{$(.*?)^\}$", script, re.M | re.S)[1]
    grades = shlex.split(re.search(r"\bgrades=\((.*?)\)$", demo, re.M | re.S)[1])
    for line in re.findall(r"^  grow (.*)$", demo, re.M):
        name, method, *options = shlex.split(line)
        place = options.index("${grades[@]}") if "${grades[@]}" in options else None
        if place is not None:
            options[place : place + 1] = grades
        yield name, method, options


def without_spaces(text):
    return re.sub(r"\s", "", text)


def parts_of_drawing(drawing):
    """What is written at each node and edge, and the bar there, as colours and widths."""
    parts = {}
    for title, label in re.findall(r"^  (\w+(?: -> \w+)?) \[label=<(.*)>\];$", drawing, re.M):
        bar = re.findall(r'width="(\d+)" height="9" bgcolor="(#\w+)"', label)
        text = html.unescape(re.sub(r"<[^>]*>", "", label))
        parts[without_spaces(title)] = without_spaces(text), [(c, int(width)) for width, c in bar]
    return parts


def parts_of_picture(picture):
    """The same of what Graphviz has made of a drawing."""
    parts = {}
    for group in xml.etree.ElementTree.fromstring(picture).iterfind(".//{*}g"):
        if group.get("class") not in ("node", "edge"):
            continue
        bar = []
        for polygon in group.iterfind(".//{*}polygon"):
            points = [pair.split(",") for pair in polygon.get("points").split()]
            xs, ys = ([float(number) for number in numbers] for numbers in zip(*points))
            if max(ys) - min(ys) == 9 and group.get("class") == "node":
                bar.append((polygon.get("fill"), round(max(xs) - min(xs))))
        text = "".join(each.text for each in group.iterfind(".//{*}text"))
        parts[group.find("{*}title").text] = without_spaces(text), bar
    return parts


def sizes_in_drawing(drawing):
    """Of each node, how many cases it has, and whether it is a terminal one."""
    return {
        number: (re.search(r"<td>(\S+) cases, ", label)[1], "<hr/>" not in label)
        for number, label in re.findall(r"^  n(\d+) \[label=<(.*)>\];$", drawing, re.M)
    }


def sizes_in_print(printed):
    """The same of a printed tree."""
    lines = re.findall(r"^ *(\d+)\) \S.*?  (\d+)  .*?(\*?)$", printed, re.M)
    return {number: (size, star == "*") for number, size, star in lines}


class Program(unittest.TestCase):
    def test_help_is_as_it_stands_in_the_file(self):
        done = run("--help")
        self.assertEqual(done.stdout, (FOLDER / "help.txt").read_text())
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_grows_a_tree_of_a_file(self):
        done = run("--target", "species", "penguins.csv", cwd=DATA)
        self.assertTrue(
            done.stdout.startswith("Classification tree of species on 344 cases of penguins.csv")
        )
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_prints_the_tree_that_the_readme_shows(self):
        block = re.search(r"```\n(0\) root .*?)```", (FOLDER.parent / "README.md").read_text(), re.S)
        done = run("--target", "species", "--max-depth", "2", DATA / "penguins.csv")
        self.assertIn(block[1], done.stdout)

    def test_grows_the_trees_of_the_demo_that_the_pictures_show(self):
        pictures = PROJECT / "docs" / "pictures" / "trees"
        shown = set()
        for name, method, options in demo_trees():
            with self.subTest(data=name, method=method), tempfile.TemporaryDirectory() as folder:
                dot = pathlib.Path(folder) / "tree.dot"
                picture = pictures / f"{name}-{method}.svg"
                shown.add(picture)
                done = run("--method", method, *options, "--dot", dot, DATA / f"{name}.csv")
                self.assertEqual(done.returncode, 0, done.stderr)
                drawing = dot.read_text()
                self.assertEqual(parts_of_drawing(drawing), parts_of_picture(picture.read_bytes()))
                self.assertEqual(sizes_in_print(done.stdout), sizes_in_drawing(drawing))
        self.assertEqual(shown, set(pictures.iterdir()))

    def test_writes_predictions_that_standard_output_can_be_sent_to(self):
        done = run("--quiet", "--target", "body_mass_g", "--predictions", "-", DATA / "penguins.csv")
        self.assertEqual(len(done.stdout.splitlines()), 345)
        self.assertEqual(done.returncode, 0)

    def test_ends_with_1_for_a_file_that_is_not_there(self):
        done = run("--target", "x", "none.csv")
        self.assertEqual(
            done.stderr, "growtree: none.csv: cannot be read: No such file or directory\n"
        )
        self.assertEqual((done.returncode, done.stdout), (1, ""))

    def test_ends_with_1_when_standard_output_is_full(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            done = subprocess.run(
                [PROGRAM, "--help"], stdout=full, stderr=subprocess.PIPE, text=True, check=False
            )
        self.assertEqual(done.stderr, "growtree: standard output cannot be written\n")
        self.assertEqual(done.returncode, 1)

    def test_ends_with_2_for_arguments_without_sense(self):
        done = run("--sideways")
        self.assertTrue(done.stderr.startswith("growtree: "))
        self.assertEqual(len(done.stderr.splitlines()), 1)
        self.assertEqual((done.returncode, done.stdout), (2, ""))

    def open_terminal(self):
        try:
            return pty.openpty()
        except OSError as error:
            self.skipTest(f"no terminal can be had: {error}")

    def test_shows_progress_on_a_terminal_and_ends_when_interrupted(self):
        for number, columns in ((signal.SIGINT, 0), (signal.SIGTERM, 20)):
            with self.subTest(signal=number.name), tempfile.TemporaryDirectory() as folder:
                ours, theirs = self.open_terminal()
                fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
                process = subprocess.Popen(
                    [PROGRAM, "--target", "y", "--predictions", f"{folder}/p.csv", "-"],
                    stdin=subprocess.PIPE,
                    stdout=subprocess.PIPE,
                    stderr=theirs,
                    env={**os.environ, "TERM": "xterm"},
                )
                os.close(theirs)
                feeder = Feeder(process.stdin)
                feeder.start()
                shown = b""
                while b"reading the data" not in shown:
                    self.assertTrue(select.select([ours], [], [], PATIENCE)[0], "no progress")
                    shown += os.read(ours, 1000)
                process.send_signal(number)
                self.assertEqual(process.wait(PATIENCE), 128 + number)
                process.stdout.close()
                feeder.join(PATIENCE)
                self.assertEqual(os.listdir(folder), [])
                os.set_blocking(ours, False)
                try:
                    while more := os.read(ours, 1000):
                        shown += more
                except OSError:  # all is read
                    pass
                os.close(ours)
                self.assertTrue(shown.endswith(b"\r\x1b[K"), shown)

    def test_knows_terminals_that_cannot_show_progress(self):
        for environment in ({"TERM": "dumb"}, {"TERM": "xterm"}):
            ours, theirs = self.open_terminal()
            with self.subTest(**environment):
                done = subprocess.run(
                    [PROGRAM, "--version"],
                    stdout=subprocess.PIPE,
                    stderr=theirs,
                    env={**os.environ, **environment},
                    check=False,
                )
                self.assertEqual(done.returncode, 0)
                self.assertFalse(select.select([ours], [], [], 0)[0])
            os.close(theirs)
            os.close(ours)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
