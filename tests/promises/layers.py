#!/usr/bin/env python3
"""Holds every #include of the library against the table of its layers.

layers.py PROJECT_DIRECTORY
"""

import pathlib
import re
import sys

# What each folder of src/ may use besides itself.
USES = {
    "foundation": [],
    "values": [],
    "split": ["foundation", "values"],
    "model": ["foundation", "values", "split"],
    "misclass": ["foundation"],
    "settings": ["foundation", "values", "misclass"],
    "results": ["model", "settings"],
}

# The layer that each public header belongs to.
HEADERS = {
    "containers.h": "foundation",
    "values.h": "values",
    "split_rules.h": "split",
    "nodes.h": "model",
    "misclassification.h": "misclass",
    "settings.h": "settings",
    "results.h": "results",
}
EVERYWHERE = {"assertions.h", "export.h", "support.h"}  # of no layer, and without classes
UMBRELLA = "tree.h"  # for users: includes all and is included by none

# Streams are the caller's, and only assertions print (in debug builds).
BANNED = {"iostream", "fstream", "cstdio", "stdio.h", "cstdlib", "stdlib.h", "cassert", "assert.h"}
MAY_PRINT = "include/tree/assertions.h"

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def layer_of_target(target, including, project):
    """The layer that an included file belongs to; None when it is of no layer."""
    if target.startswith("tree/"):
        name = target.removeprefix("tree/")
        if name in EVERYWHERE:
            return None
        if name not in HEADERS:
            raise ValueError(f"includes {target}, which belongs to no layer")
        return HEADERS[name]
    if (including.parent / target).is_file():
        return including.parent.name
    if (project / "src" / target).is_file():
        return target.split("/")[0]
    raise ValueError(f"includes {target}, which is not in the project")


def complaints(path, project):
    relative = path.relative_to(project).as_posix()
    if relative.startswith("src/"):
        layer = path.parent.name
        if layer not in USES:
            yield f"{relative}: its folder is not in the table of layers"
            return
    elif path.name == UMBRELLA:
        missing = set(HEADERS) - {pathlib.Path(t).name for _, t in INCLUDE.findall(path.read_text())}
        for name in sorted(n for n in missing if (path.parent / n).exists()):
            yield f"{relative}: does not include {name}"
        return
    elif path.name in EVERYWHERE:
        layer = None
    elif path.name in HEADERS:
        layer = HEADERS[path.name]
    else:
        yield f"{relative}: belongs to no layer"
        return

    for bracket, target in INCLUDE.findall(path.read_text()):
        if bracket == "<":
            if target in BANNED and relative != MAY_PRINT:
                yield f"{relative}: includes <{target}>"
            continue
        try:
            used = layer_of_target(target, path, project)
        except ValueError as error:
            yield f"{relative}: {error}"
            continue
        if used is not None and used != layer and used not in USES.get(layer, []):
            yield f"{relative}: includes {target} of layer {used}, which {layer} does not use"


def main():
    project = pathlib.Path(sys.argv[1]).resolve()
    files = sorted(
        path
        for folder in ("include", "src")
        for path in (project / folder).rglob("*")
        if path.suffix in (".h", ".cc")
    )
    if not files:
        sys.exit(f"no sources in {project}")
    found = [complaint for path in files for complaint in complaints(path, project)]
    print("\n".join(found) if found else f"{len(files)} files keep to their layers")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
