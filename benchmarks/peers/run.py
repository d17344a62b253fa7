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
            name += f", {surrogates} surrogates, {competitors} competitors"
        cells = [name, f"{own[0]:.2f} s ({own[1]:.0f})", f"{own[2] / megabytes:.2f}x",
                 f"{two[0]:.2f} s, {own[0] / two[0]:.2f}x faster"]
        cells += [text_of(run_peer(peer, path, cases, nominal, kind, depth, surrogates,
                                   competitors), own) for peer in PEERS]
        print("| " + " | ".join(cells) + " |", flush=True)


def count_for_chaid(program, cases):
    """CHAID beside a program that only counts and merges: the smallest of three runs of each."""
    done = subprocess.run([program, cases], capture_output=True, text=True, check=True)
    seconds = {}
    for line in done.stdout.splitlines():
        name, taken, _ = line.split()
        seconds[name] = min(float(taken), seconds.get(name, float("inf")))
    print_head(f"CHAID, {cases} cases x 20 predictors of 10 categories, 3 levels", "", "seconds",
               "times the bare program")
    for name, taken in seconds.items():
        print(f"| {name} | {taken:.3f} | {taken / seconds['bare']:.1f}x |")


def lines_of(command):
    """The numbers that a program prints, by name; none if it cannot run."""
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True,
                          env=ENVIRONMENT)
    if done.returncode != 0:
        last = (done.stderr.strip().splitlines() or ["no message"])[-1]
        print(f"# {pathlib.Path(str(command[0])).name} failed: {last}", file=sys.stderr)
        return {}
    return {name: float(text) for name, text in map(str.split, done.stdout.splitlines())}


def score_cases(program, cases, folder):
    """Scoring by a tree of each depth, with what peers take for trees of the same depth."""
    leaf = 10
    rpart_cases = 20000  # of which it takes as long as others of all
    print_head(f"Scoring {cases} cases of 20 predictors, nanoseconds a case",
               "depth, missing, surrogates", "nodes", "from node to node", "bare loop, floats",
               "rows, floats", "columns, floats", "bare loop, doubles", "rows, doubles",
               "columns, doubles", "rows, floats, 2 threads", "bare, one row a call",
               "one row a call", "sklearn apply", "sklearn, one row", "xgboost predict",
               "xgboost inplace", "rpart predict")
    for missing, surrogates in ((0, 0), (10, 0), (5, 5)):
        path = folder / "scored.bin"
        subprocess.run([program, "data", path, cases, str(missing)], check=True)
        for depth in (5, 10, 20):
            own = lines_of([program, "score", path, cases, depth, leaf, surrogates])
            peers = {}
            if not surrogates:
                for package in ("sklearn", "xgboost"):
                    found = lines_of([PYTHON, HERE / "score_python_peer.py", package, path, cases,
                                      depth, leaf])
                    peers.update({f"{package}:{name}": taken for name, taken in found.items()})
            if surrogates or not missing:
                found = lines_of(["Rscript", HERE / "score_rpart_peer.R", path, cases, depth, leaf,
                                  surrogates, rpart_cases])
                peers.update({f"rpart:{name}": taken for name, taken in found.items()})

            def own_of(name):
                return f"{own[name]:.1f}" if name in own else "-"

            def peer_of(name, ours):
                if name not in peers:
                    return "-"
                return f"{peers[name]:.0f}, {peers[name] / own[ours]:.1f}x"

            cells = [f"{depth}, {missing} %, {surrogates}", f"{own['nodes']:.0f}"]
            cells += [own_of(name) for name in
                      ("walk", "bare_float", "rows_float", "columns_float", "bare_double",
                       "rows_double", "columns_double", "rows_float_2threads", "bare_one_float",
                       "one_float")]
            cells += [peer_of("sklearn:apply_float", "rows_float"),
                      peer_of("sklearn:one_float", "one_float"),
                      peer_of("xgboost:predict_float", "rows_float"),
                      peer_of("xgboost:inplace_float", "rows_float"),
                      peer_of("rpart:predict_double", "rows_double")]
            print("| " + " | ".join(cells) + " |", flush=True)
        path.unlink()


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
