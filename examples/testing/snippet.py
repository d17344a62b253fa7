#!/usr/bin/env python3
"""Holds the blocks of a document against the example that they are cut from.

snippet.py DOCUMENT SOURCE... [--output FILE]

A source marks a region by two lines `// [NAME]`, indented or not; the document has a line
`<!-- NAME -->` directly above the code block, which is the region without its common indentation.
Every C++ block of the document is such a region, and every region stands in the document. With
--output, every text block of the document stands in that file, as whole lines.
"""

import argparse
import pathlib
import re
import sys
import textwrap


def regions_of(source):
    regions = re.findall(
        r"^ *// \[([^\n]+)\]\n(.*?)^ *// \[\1\]\n", source.read_text(), re.MULTILINE | re.DOTALL
    )
    if not regions:
        sys.exit(f"{source}: no marked region")
    return {name: textwrap.dedent(region) for name, region in regions}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("document", type=pathlib.Path)
    parser.add_argument("sources", type=pathlib.Path, nargs="+")
    parser.add_argument("--output", type=pathlib.Path)
    arguments = parser.parse_args()

    blocks = re.findall(
        r"^(?:<!-- ([^\n]+) -->\n)?```(\w*)\n(.*?)^```$",
        arguments.document.read_text(),
        re.MULTILINE | re.DOTALL,
    )
    snippets = [(name, text) for name, language, text in blocks if language == "cpp"]
    found = []
    for source in arguments.sources:
        for name, region in regions_of(source).items():
            texts = [text for snippet, text in snippets if snippet == name]
            if not texts:
                found.append(f'{arguments.document}: no code block marked "{name}"')
            elif any(text != region for text in texts):
                found.append(f'{arguments.document}: block "{name}" differs from {source}')
            else:
                print(f'"{name}": {len(region.splitlines())} lines, the same')
            snippets = [snippet for snippet in snippets if snippet[0] != name]
    for name, text in snippets:
        found.append(f'{arguments.document}: no region "{name}" for "{text.splitlines()[0]}" ...')

    if arguments.output is not None:
        output = "\n" + arguments.output.read_text()
        for _, language, text in blocks:
            if language == "text" and "\n" + text not in output:
                found.append(f'{arguments.document}: not in the output: "{text.splitlines()[0]}" ...')
    if found:
        sys.exit("\n".join(found))


if __name__ == "__main__":
    main()
