#!/usr/bin/env python3
"""Checks what the shared library exports, imports and links.

symbols.py exports LIBRARY LIST INCLUDE_DIRECTORY [--update]
    The exported symbols are those of LIST, and each belongs to something that a public header
    marks as TREE_API. With --update LIST is written anew.
symbols.py imports LIBRARY
    The library never stops the program, touches no standard stream, file or environment variable,
    and links nothing but the C++ runtime and the support library.
"""

import pathlib
import re
import subprocess
import sys

MAY_LINK = re.compile(
    r"lib(tree-support|stdc\+\+|m|gcc_s|c)\.so\.\d+|ld-linux[-\w]*\.so\.\d+"
)

# Functions and objects of the C and C++ runtime that a data model has no business with. How the
# C++ runtime ends a program whose exception finds no handler (std::terminate) is not among them.
MUST_NOT_IMPORT = {
    "stops the program": r"_*(abort|exit|_exit|_Exit|quick_exit|raise|kill|assert\w*|signal)"
    r"|std::__glibcxx_assert\w*",
    "uses a standard stream": r"v?f?w?printf|_*v?f?printf_chk|puts|putchar|fputs|fputc|putc|perror"
    r"|_?IO_\w+|stdin|stdout|stderr|std::w?(cout|cerr|clog|cin)|std::ios_base::Init::\W?Init\(\)",
    "opens or writes files": r"f?write|f?read|f?open(64|at)?|close|std::basic_[io]?f(stream|ilebuf)\W.*",
    "reads the environment": r"(secure_)?getenv|setlocale|system|popen|time|clock_gettime|rand",
}

# Where in a demangled symbol its class or function is named.
OWNER = re.compile(
    r"(?:(?:vtable|VTT|typeinfo|typeinfo name) for |(?:non-)?virtual thunk to )?"
    r"(?:(?:tree|MCTree)::(?P<nested>operator\W+?(?=\()|\w+)|(?P<container>TArray|TMatrix)(?=<))"
)
EXPORTED_CLASS = re.compile(r"^\s*(?:class|struct)\s+TREE_API\s+(\w+)", re.MULTILINE)
EXPORTED_FUNCTION = re.compile(r"^TREE_API\s[^;(]*?(\w+|operator\W+)\(", re.MULTILINE)


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def symbols(library, which):
    """Demangled names of the dynamic symbols, without their versions."""
    names = set()
    for line in run("nm", "--dynamic", "--demangle", which, library).splitlines():
        name = re.sub(r"^[0-9a-f]*\s*\S ", "", line)
        names.add(re.sub(r"@.*", "", name))
    return names


def public_names(include_directory):
    names = set()
    for header in pathlib.Path(include_directory).rglob("*.h"):
        text = header.read_text()
        names.update(EXPORTED_CLASS.findall(text), EXPORTED_FUNCTION.findall(text))
    return names


def check_exports(library, list_file, include_directory, update):
    exported = symbols(library, "--defined-only")
    public = public_names(include_directory)
    if not exported or not public:
        return [f"no symbols in {library}, or no public names in {include_directory}"]

    found = []
    for name in sorted(exported):
        owner = OWNER.match(name)
        if not owner or (owner["nested"] or owner["container"]) not in public:
            found.append(f"exported, but not marked TREE_API in a public header: {name}")

    if update:
        if not found:
            pathlib.Path(list_file).write_text("".join(f"{name}\n" for name in sorted(exported)))
        return found
    recorded = set(pathlib.Path(list_file).read_text().splitlines())
    found += [f"exported, but not recorded: {name}" for name in sorted(exported - recorded)]
    found += [f"recorded, but no longer exported: {name}" for name in sorted(recorded - exported)]
    if found:
        found.append("An intended change is recorded by `./dev abi --update`.")
    return found


def check_imports(library):
    found = []
    for name in sorted(symbols(library, "--undefined-only")):
        for offence, pattern in MUST_NOT_IMPORT.items():
            if re.fullmatch(pattern, name):
                found.append(f"{offence}: imports {name}")
    linked = re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "--dynamic", library))
    if not linked:
        found.append(f"{library} links nothing: not a shared library?")
    found += [f"links {name}" for name in linked if not MAY_LINK.fullmatch(name)]
    return found


def main():
    arguments = [argument for argument in sys.argv[1:] if argument != "--update"]
    if arguments[:1] == ["exports"] and len(arguments) == 4:
        found = check_exports(*arguments[1:], update="--update" in sys.argv)
    elif arguments[:1] == ["imports"] and len(arguments) == 2:
        found = check_imports(arguments[1])
    else:
        sys.exit(__doc__)
    print("\n".join(found) if found else "as promised")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
