"""Does the same work with this library and with its peers, on one machine in one run.

run.py FOLDER [CASES]
FOLDER: a build with the programs that the files beside this one speak of. CASES: 1000000 unless told
otherwise. Peers that are not installed are left out. Each tree is grown, and each file read, by each
program in a process of its own, on one thread; of ours the smaller of two runs counts, and a peer is
run once.
"""

import os
import pathlib
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent
PYTHON = "/usr/bin/python3"
PEERS = ("rpart", "sklearn", "xgboost")
OUT = 30  # levels of a tree that is grown out
ENVIRONMENT = dict(os.environ, OMP_NUM_THREADS="1", OPENBLAS_NUM_THREADS="1")


def measure(command, runs=2):
    """The smallest seconds of the runs, with what else the program prints; None if it cannot run."""
    best = None
    for _ in range(runs):
        done = subprocess.run([str(part) for part in command], capture_output=True, text=True,
                              env=ENVIRONMENT)
        if done.returncode != 0:
            last = (done.stderr.strip().splitlines() or ["no message"])[-1]
            print(f"# {pathlib.Path(str(command[0])).name} failed: {last}", file=sys.stderr)
            return None
        numbers = [float(text) for text in done.stdout.split()]
        if best is None or numbers[0] < best[0]:
            best = numbers
    return best


def run_peer(peer, path, cases, nominal, kind, depth, surrogates, competitors):
    if kind == "quest":
        return None
    if peer == "rpart":
        return measure(["Rscript", HERE / "rpart_peer.R", path, cases, nominal, kind, depth, 50,
                        surrogates, competitors], 1)
    if nominal or surrogates or competitors:
        return None  # which they do not have
    return measure([PYTHON, HERE / "python_peer.py", peer, path, cases, nominal, kind, depth, 50], 1)


def text_of(numbers, own):
    if numbers is None:
        return "-"
    return f"{numbers[0]:.2f} s, {numbers[0] / own[0]:.1f}x ({numbers[1]:.0f})"


def print_head(title, *columns):
    print(f"\n{title}\n")
    print("| " + " | ".join(columns) + " |")
    print("|---" * len(columns) + "|", flush=True)


def grow_trees(program, cases, folder):
    megabytes = int(cases) * 21 * 8 / 1024 / 1024
    trees = [(nominal, kind, depth, 0, 0) for nominal in (0, 5) for kind in ("class", "number")
             for depth in (5, OUT)]
    trees += [(0, kind, 5, 5, 4) for kind in ("class", "number")]
    trees += [(nominal, "quest", depth, 0, 0) for nominal in (0, 5) for depth in (5, OUT)]
    trees += [(0, kind, depth, 5, 0) for depth in (5, OUT) for kind in ("class", "quest")]
    print_head(f"CART and QUEST, {cases} cases x 20 predictors, 50 cases a leaf; seconds, times ours, "
               "(terminal nodes)", "tree", "ours", "memory beyond the data", "ours, 2 threads",
               *PEERS)
    paths = {}
    for nominal in (0, 5):
        paths[nominal] = folder / f"data{nominal}.bin"
        subprocess.run([program, "data", paths[nominal], cases, str(nominal)], check=True)
    for nominal, kind, depth, surrogates, competitors in trees:
        path = paths[nominal]

        def grow(threads):
            return measure([program, "grow", path, cases, nominal, kind, depth, 50, threads,
                            surrogates, competitors])

        own, two = grow(1), grow(2)
        name = f"{kind}, " + ("grown out" if depth == OUT else f"depth {depth}")
        if nominal:
            name += f", {nominal} nominal"
        if surrogates:
            name += f", {surrogates} surrogates"
        if competitors:
            name += f", {competitors} competitors"
        cells = [name, f"{own[0]:.2f} s ({own[1]:.0f})", f"{own[2] / megabytes:.2f}x",
                 f"{two[0]:.2f} s, {own[0] / two[0]:.2f}x faster"]
        cells += [text_of(run_peer(peer, path, cases, nominal, kind, depth, surrogates,
                                   competitors), own) for peer in PEERS]
        print("| " + " | ".join(cells) + " |", flush=True)


def count_for_chaid(program, cases):
    """CHAID beside a program that only counts and merges: the smallest of three runs of each."""
    done = subprocess.run([program, cases], capture_output=True, text=True, check=True)
    seconds = {}
    leaves = {}
    for line in done.stdout.splitlines():
        name, taken, leaves[name] = line.split()
        seconds[name] = min(float(taken), seconds.get(name, float("inf")))
    print_head(f"CHAID, {cases} cases x 20 predictors of 10 categories, 3 levels", "",
               "terminal nodes", "seconds", "times the bare program")
    for name, taken in seconds.items():
        print(f"| {name} | {leaves[name]} | {taken:.3f} | {taken / seconds['bare']:.1f}x |")


def lines_of(command):
    """The numbers that a program prints, by name; none if it cannot run."""
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True,
                          env=ENVIRONMENT)
    if done.returncode != 0:
        last = (done.stderr.strip().splitlines() or ["no message"])[-1]
        print(f"# {pathlib.Path(str(command[0])).name} failed: {last}", file=sys.stderr)
        return {}
    return {name: float(text) for name, text in map(str.split, done.stdout.splitlines())}


def peers_of(program, path, cases, depth, leaf, missing, surrogates):
    """What peers take. Packages of Python get our tree; rpart grows its own, with its surrogates."""
    found = {}
    if not surrogates:
        subprocess.run([program, "tree", path, cases, str(depth), str(leaf)], check=True)
        for package in ("sklearn", "xgboost"):
            own = lines_of([PYTHON, HERE / "score_python_peer.py", package, path, cases, depth])
            found.update({f"{package}:{name}": taken for name, taken in own.items()})
        for suffix in (".tree", ".ids"):
            pathlib.Path(f"{path}{suffix}").unlink()
    if surrogates or not missing:
        rpart_cases = 20000  # of which it takes as long as others of all
        own = lines_of(["Rscript", HERE / "score_rpart_peer.R", path, cases, depth, leaf,
                        surrogates, rpart_cases])
        found.update({f"rpart:{name}": taken for name, taken in own.items()})
    return found


def score_cases(program, cases, folder):
    """Scoring by a tree of each depth, beside a bare loop and beside peers."""
    leaf = 10
    rows = []
    for missing, surrogates in ((0, 0), (10, 0), (5, 5)):
        path = folder / "scored.bin"
        subprocess.run([program, "data", path, cases, str(missing)], check=True)
        for depth in (5, 10, 20):
            own = lines_of([program, "score", path, cases, depth, leaf, surrogates])
            peers = peers_of(program, path, cases, depth, leaf, missing, surrogates)
            rows.append((f"{depth}, {missing} %, {surrogates}", own, peers))
        path.unlink()

    def cell(own, name, bound=None):
        """Nanoseconds, and how many times the bound they are."""
        if name not in own:
            return "-"
        times = f", {own[name] / own[bound]:.2f}x" if bound in own else ""
        return f"{own[name]:.1f}{times}"

    print_head(f"Scoring {cases} cases of 20 predictors, nanoseconds a case, times the bare loop",
               "depth, missing, surrogates", "nodes", "bytes a node, without classes",
               "from node to node", "bare loop, floats", "rows, floats", "columns, floats",
               "bare loop, doubles", "rows, doubles", "columns, doubles",
               "bare, one row of floats a call", "one row of floats a call",
               "bare, one of doubles", "one of doubles", "two threads: rows, columns of floats",
               "of doubles")
    for name, own, _ in rows:
        # A header of 112 bytes, and 8 bytes for each class of an end.
        num_ends = (own["nodes"] + 1) / 2
        size = (own["bytes"] - 112 - 8 * own["classes"] * num_ends) / own["nodes"]
        cells = [name, f"{own['nodes']:.0f}", f"{size:.1f}"]
        cells += [cell(own, "walk"), cell(own, "bare_float"),
                  cell(own, "rows_float", "bare_float"),
                  cell(own, "columns_float", "bare_float"), cell(own, "bare_double"),
                  cell(own, "rows_double", "bare_double"),
                  cell(own, "columns_double", "bare_double")]
        for kind in ("float", "double"):
            cells += [cell(own, f"bare_one_{kind}"), cell(own, f"one_{kind}", f"bare_one_{kind}")]
        for kind in ("float", "double"):
            faster = [own[f"{way}_{kind}"] / own[f"{way}_{kind}_2threads"]
                      for way in ("rows", "columns")]
            cells.append(", ".join(f"{times:.2f}x faster" for times in faster))
        print("| " + " | ".join(cells) + " |", flush=True)

    print_head(f"Scoring a selection of all {cases} cases, nanoseconds a case, times the bare loop",
               "depth, missing, surrogates", "all in order: rows, floats", "columns, floats",
               "rows, doubles", "columns, doubles", "all shuffled: rows, floats",
               "columns, floats", "rows, doubles", "columns, doubles")
    for name, own, _ in rows:
        cells = [name] + [cell(own, f"{order}_{way}_{kind}", f"bare_{kind}")
                          for order in ("picked", "shuffled") for kind in ("float", "double")
                          for way in ("rows", "columns")]
        print("| " + " | ".join(cells) + " |", flush=True)

    def peer(own, peers, name, ours):
        """Nanoseconds, and how many times ours they are."""
        if name not in peers:
            return "-"
        return f"{peers[name]:.0f}, {peers[name] / own[ours]:.1f}x"

    print_head(f"Scoring {cases} cases by peers, nanoseconds a case, times ours",
               "depth, missing, surrogates", "floats: sklearn apply", "xgboost predict",
               "xgboost inplace", "doubles: sklearn apply", "xgboost inplace", "rpart predict",
               "one row: sklearn apply")
    for name, own, peers in rows:
        cells = [name]
        cells += [peer(own, peers, f"{package}:{way}_float", "rows_float")
                  for package, way in (("sklearn", "apply"), ("xgboost", "predict"),
                                       ("xgboost", "inplace"))]
        cells += [peer(own, peers, f"{package}_double", "rows_double")
                  for package in ("sklearn:apply", "xgboost:inplace", "rpart:predict")]
        cells.append(peer(own, peers, "sklearn:one_float", "one_float"))
        print("| " + " | ".join(cells) + " |", flush=True)


def read_files(program, cases, folder):
    print_head(f"CSV, {cases} rows x 21 columns", "file", "MB", "ours", "pandas")
    for nominal in (0, 5):
        path = folder / f"data{nominal}.csv"
        subprocess.run([program, "write-csv", path, cases, str(nominal)], check=True)
        own = measure([program, "read-csv", path])
        peer = measure([PYTHON, HERE / "python_peer.py", "pandas", path])
        print(f"| {21 - nominal} numbers, {nominal} texts | {path.stat().st_size / 1e6:.0f} | "
              f"{own[0]:.2f} s | {text_of(peer, own)} |", flush=True)
        path.unlink()


def main():
    build = pathlib.Path(sys.argv[1])
    programs = build / "benchmarks"
    cases = sys.argv[2] if len(sys.argv) > 2 else "1000000"
    with tempfile.TemporaryDirectory() as folder:
        read_files(programs / "tree_grow_peer", cases, pathlib.Path(folder))
        count_for_chaid(programs / "tree_chaid_peer", cases)
        score_cases(build / "score/benchmarks/tree_score_peer", cases, pathlib.Path(folder))
        grow_trees(programs / "tree_grow_peer", cases, pathlib.Path(folder))


if __name__ == "__main__":
    main()
