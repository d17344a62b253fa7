#!/usr/bin/env python3
"""Checks that the project explains itself: no file sends its reader to a link, to a path of
somebody's machine, or to a numbered part of a text that is not in the project.

self_contained.py PROJECT_DIRECTORY
"""

import pathlib
import re
import sys

RULES = {
    "a link": re.compile(r"\b(?:https?|ftp)://"),
    "a path of some machine": re.compile(r"(?<![\w.$}/>*-])/(?:home|root|Users|work|mnt|media|srv)/"),
    "a numbered part of another text": re.compile(r"\bparts? \d+\.\d", re.I),
    "a number in a tracker": re.compile(r"\b(?:issue|ticket|bug) ?#?\d+", re.I),
}
SKIPPED_FOLDERS = {".git", "build", ".cache"}
# Pictures have to name their format; this file has to name what it looks for.
EXEMPT = re.compile(r'<!DOCTYPE svg [^>]*>|xmlns(?::\w+)?="[^"]*"')
SELF = pathlib.Path(__file__).resolve()


def text_files(project):
    for path in sorted(project.rglob("*")):
        folders = path.relative_to(project).parts[:-1]
        if SKIPPED_FOLDERS.intersection(folders) or not path.is_file() or path.resolve() == SELF:
            continue
        if any(folder == "corpus" for folder in folders):  # bytes, not text
            continue
        try:
            yield path, path.read_text()
        except UnicodeDecodeError:
            continue


def main():
    project = pathlib.Path(sys.argv[1]).resolve()
    found = []
    count = 0
    for path, text in text_files(project):
        count += 1
        text = EXEMPT.sub(lambda match: "\n" * match[0].count("\n"), text)
        for number, line in enumerate(text.splitlines(), 1):
            for what, pattern in RULES.items():
                if pattern.search(line):
                    found.append(f"{path.relative_to(project)}:{number}: {what}: {line.strip()}")
    if count == 0:
        sys.exit(f"no files in {project}")
    print("\n".join(found) if found else f"{count} files stand on their own")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
