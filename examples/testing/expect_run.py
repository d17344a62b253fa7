#!/usr/bin/env python3
"""Runs a program and compares what it does with what is expected, exactly.

expect_run.py [--exit STATUS] [--stdout FILE] [--stderr-line LINE]... [--vague PATTERN]
    -- PROGRAM [ARGUMENT...]

What matches PATTERN in the output is expected as three dots.
"""

import argparse
import difflib
import pathlib
import re
import subprocess
import sys


def differences(name, expected, actual):
    return list(
        difflib.unified_diff(
            expected.splitlines(keepends=True),
            actual.splitlines(keepends=True),
            f"expected {name}",
            f"actual {name}",
        )
    )


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--exit", type=int, default=0)
    parser.add_argument("--stdout", type=pathlib.Path)
    parser.add_argument("--stderr-line", action="append", default=[])
    parser.add_argument("--vague")
    separator = sys.argv.index("--")
    expected = parser.parse_args(sys.argv[1:separator])
    run = subprocess.run(sys.argv[separator + 1 :], capture_output=True, text=True, check=False)

    output = re.sub(expected.vague, "...", run.stdout) if expected.vague else run.stdout
    found = differences("output", expected.stdout.read_text() if expected.stdout else "", output)
    found += differences(
        "messages", "".join(line + "\n" for line in expected.stderr_line), run.stderr
    )
    if run.returncode != expected.exit:
        found.append(f"exit status {run.returncode}, expected {expected.exit}\n")
    sys.stdout.writelines(found)
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
