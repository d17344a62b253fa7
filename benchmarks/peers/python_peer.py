"""Grows one tree with a package of Python, or reads a file.

python_peer.py PACKAGE FILE CASES NOMINAL KIND DEPTH LEAF
python_peer.py pandas FILE
PACKAGE: sklearn (its best splitter) or xgboost (one tree, exact method). Prints seconds and
terminal nodes, or rows. The files are described in grow_peer.cc.
"""

import sys
import time

import numpy


def grow_sklearn(x, y, kind, depth, leaf):
    from sklearn.tree import DecisionTreeClassifier, DecisionTreeRegressor

    make = DecisionTreeClassifier if kind == "class" else DecisionTreeRegressor
    model = make(max_depth=depth, min_samples_leaf=leaf, min_samples_split=2 * leaf, random_state=0)
    start = time.perf_counter()
    model.fit(x, y)
    return time.perf_counter() - start, model.get_n_leaves()


def grow_xgboost(x, y, kind, depth, leaf):
    import xgboost

    # The hessian of a case is 1 for squared errors and 1/4 for the logistic loss at its start.
    weight = leaf if kind == "number" else leaf / 4
    options = {
        "objective": "reg:squarederror" if kind == "number" else "binary:logistic",
        "tree_method": "exact",
        "max_depth": depth,
        "min_child_weight": weight,
        "eta": 1,
        "lambda": 0,
        "nthread": 1,
    }
    start = time.perf_counter()
    model = xgboost.train(options, xgboost.DMatrix(x, label=y, nthread=1), num_boost_round=1)
    taken = time.perf_counter() - start
    return taken, sum(line.count("leaf=") for line in model.get_dump())


def read_csv(path):
    import pandas

    start = time.perf_counter()
    frame = pandas.read_csv(path)
    return time.perf_counter() - start, len(frame)


def main():
    if sys.argv[1] == "pandas":
        print("{:.3f} {}".format(*read_csv(sys.argv[2])))
        return
    package, path, cases, nominal, kind, depth, leaf = sys.argv[1:]
    data = numpy.fromfile(path).reshape(21, int(cases))
    x = numpy.ascontiguousarray(data[:20].T)
    y = data[20] if kind == "number" else (data[20] > 0).astype(int)
    grow = {"sklearn": grow_sklearn, "xgboost": grow_xgboost}[package]
    taken, leaves = grow(x, y, kind, int(depth), int(leaf))
    print(f"{taken:.3f} {leaves}")


if __name__ == "__main__":
    main()
