"""Scores cases by one tree with a package of Python.

score_python_peer.py PACKAGE FILE CASES DEPTH LEAF
PACKAGE: sklearn (the core of its trees, `tree_.apply`, on floats) or xgboost (one tree; `predict` on
its own matrix, and `inplace_predict` on the floats). The tree is grown on the cases first. Prints
lines of a name and nanoseconds per case on one thread, the smallest of several runs; the first ones say
how large the tree is. The file is described in score_peer.cc: NaN is a missing value, which sklearn
gets as a number below all others.
"""

import sys
import time

import numpy

RUNS = 5


def smallest(work, cases):
    """Nanoseconds per case of the fastest run."""
    taken = []
    for _ in range(RUNS):
        start = time.perf_counter_ns()
        work()
        taken.append(time.perf_counter_ns() - start)
    return min(taken) / cases


def score_sklearn(x, y, depth, leaf):
    from sklearn.tree import DecisionTreeClassifier

    x = numpy.nan_to_num(x, nan=-1e30)
    model = DecisionTreeClassifier(max_depth=depth, min_samples_leaf=leaf,
                                   min_samples_split=2 * leaf, random_state=0)
    model.fit(x, y)
    print("nodes", model.tree_.node_count)
    print("depth", model.tree_.max_depth)
    print(f"apply_float {smallest(lambda: model.tree_.apply(x), len(x)):.2f}")
    rows = [x[i:i + 1] for i in range(5000)]
    print(f"one_float {smallest(lambda: [model.tree_.apply(row) for row in rows], len(rows)):.2f}")


def score_xgboost(x, y, depth, leaf):
    import xgboost

    options = {
        "objective": "binary:logistic",
        "tree_method": "hist",
        "max_depth": depth,
        "min_child_weight": leaf / 4,  # the hessian of a case is 1/4 at the start
        "eta": 1,
        "lambda": 0,
        "nthread": 1,
    }
    matrix = xgboost.DMatrix(x, label=y, nthread=1)
    model = xgboost.train(options, matrix, num_boost_round=1)
    print("nodes", len(model.trees_to_dataframe()))
    print("depth", depth)

    def predict():
        # Made anew, since predictions of a matrix are kept.
        model.predict(fresh.pop(), output_margin=True)

    fresh = [xgboost.DMatrix(x, nthread=1) for _ in range(RUNS)]
    print(f"predict_float {smallest(predict, len(x)):.2f}")
    print(f"inplace_float {smallest(lambda: model.inplace_predict(x), len(x)):.2f}")


def main():
    package, path, cases, depth, leaf = sys.argv[1:]
    data = numpy.fromfile(path).reshape(21, int(cases))
    x = numpy.ascontiguousarray(data[:20].T, dtype=numpy.float32)
    y = (data[20] > 0).astype(int)
    score = {"sklearn": score_sklearn, "xgboost": score_xgboost}[package]
    score(x, y, int(depth), int(leaf))


if __name__ == "__main__":
    main()
