"""Scores cases by the tree of this library with a package of Python.

score_python_peer.py PACKAGE FILE CASES DEPTH
PACKAGE: sklearn (the core of its trees, `tree_.apply`, on floats) or xgboost (`predict` on its own
matrix, and `inplace_predict`). FILE.tree and FILE.ids are what `score_peer tree` wrote: a model of
the package is made, its tree replaced by that one, and the nodes in which cases end compared. Prints
lines of a name and nanoseconds per case on one thread, the smallest of several runs. FILE is described
in score_peer.cc: NaN is a missing value. sklearn knows none; it gets a number below all others, which
may send a case another way, so that its nodes are compared where none is missing.
"""

import json
import sys
import time

import numpy

RUNS = 5
IDENTIFIER, PREDICTOR, CUT, BELOW, ABOVE, MISSING_ABOVE, PREDICTION = range(7)


def smallest(work, cases):
    """Nanoseconds per case of the fastest run."""
    taken = []
    for _ in range(RUNS):
        start = time.perf_counter_ns()
        work()
        taken.append(time.perf_counter_ns() - start)
    return min(taken) / cases


def compare(positions, nodes, ids):
    """Ends the program unless all cases end in the nodes in which they should."""
    if not numpy.array_equal(nodes[positions, IDENTIFIER].astype(numpy.uint32), ids):
        sys.exit("cases end in other nodes")


def score_sklearn(x, nodes, ids, depth):
    from sklearn.tree import DecisionTreeClassifier
    from sklearn.tree._tree import Tree

    any_missing = numpy.isnan(x).any()
    x = numpy.nan_to_num(x, nan=-1e30)
    sample = DecisionTreeClassifier(max_depth=2).fit(x[:100], numpy.arange(100) % 2).tree_
    state = sample.__getstate__()
    made = numpy.zeros(len(nodes), dtype=state["nodes"].dtype)
    inner = nodes[:, BELOW] >= 0
    made["left_child"] = nodes[:, BELOW]
    made["right_child"] = nodes[:, ABOVE]
    made["feature"] = numpy.where(inner, nodes[:, PREDICTOR], -2)
    made["threshold"] = numpy.where(inner, nodes[:, CUT], -2.0)
    made["n_node_samples"] = made["weighted_n_node_samples"] = 1
    state.update(max_depth=depth, node_count=len(nodes), nodes=made,
                 values=numpy.zeros((len(nodes), 1, 2)))
    tree = Tree(x.shape[1], numpy.array([2], dtype=numpy.intp), 1)
    tree.__setstate__(state)
    if not any_missing:
        compare(tree.apply(x), nodes, ids)
    print(f"apply_float {smallest(lambda: tree.apply(x), len(x)):.2f}")
    doubles = x.astype(numpy.float64)

    def apply_doubles():
        tree.apply(doubles.astype(numpy.float32))

    print(f"apply_double {smallest(apply_doubles, len(x)):.2f}")
    rows = [x[i:i + 1] for i in range(5000)]
    print(f"one_float {smallest(lambda: [tree.apply(row) for row in rows], len(rows)):.2f}")


def next_float(cuts):
    """The smallest floats above the cuts: xgboost sends what is below its condition to the left."""
    floats = cuts.astype(numpy.float32)
    above = numpy.nextafter(floats, numpy.float32(numpy.inf))
    return numpy.where(floats.astype(numpy.float64) > cuts, floats, above)


def score_xgboost(x, nodes, ids, depth):
    import xgboost

    options = {"objective": "reg:squarederror", "max_depth": 2, "nthread": 1}
    sample = xgboost.DMatrix(x[:100], label=numpy.arange(100) % 2, nthread=1)
    model = xgboost.train(options, sample, num_boost_round=1)
    saved = json.loads(model.save_raw("json"))
    inner = nodes[:, BELOW] >= 0
    parents = numpy.full(len(nodes), 2147483647)
    for child in (BELOW, ABOVE):
        parents[nodes[inner, child].astype(int)] = numpy.flatnonzero(inner)
    conditions = numpy.where(inner, next_float(nodes[:, CUT]), nodes[:, PREDICTION])
    zeros = [0.0] * len(nodes)
    tree = saved["learner"]["gradient_booster"]["model"]["trees"][0]
    tree["tree_param"]["num_nodes"] = str(len(nodes))
    tree.update({
        "base_weights": zeros,
        "loss_changes": zeros,
        "sum_hessian": zeros,
        "default_left": (1 - nodes[:, MISSING_ABOVE]).astype(int).tolist(),
        "left_children": nodes[:, BELOW].astype(int).tolist(),
        "right_children": nodes[:, ABOVE].astype(int).tolist(),
        "parents": parents.tolist(),
        "split_conditions": [float(number) for number in conditions],
        "split_indices": numpy.where(inner, nodes[:, PREDICTOR], 0).astype(int).tolist(),
        "split_type": [0] * len(nodes),
    })
    model = xgboost.Booster({"nthread": 1})
    model.load_model(bytearray(json.dumps(saved), "utf-8"))
    compare(model.predict(xgboost.DMatrix(x, nthread=1), pred_leaf=True).astype(int), nodes, ids)

    def predict():
        # Made anew, since predictions of a matrix are kept.
        model.predict(fresh.pop(), output_margin=True)

    fresh = [xgboost.DMatrix(x, nthread=1) for _ in range(RUNS)]
    doubles = x.astype(numpy.float64)
    print(f"predict_float {smallest(predict, len(x)):.2f}")
    print(f"inplace_float {smallest(lambda: model.inplace_predict(x), len(x)):.2f}")
    print(f"inplace_double {smallest(lambda: model.inplace_predict(doubles), len(x)):.2f}")


def main():
    package, path, cases, depth = sys.argv[1:]
    data = numpy.fromfile(path).reshape(21, int(cases))
    x = numpy.ascontiguousarray(data[:20].T, dtype=numpy.float32)
    nodes = numpy.fromfile(path + ".tree").reshape(-1, 7)
    ids = numpy.fromfile(path + ".ids", dtype=numpy.uint32)
    score = {"sklearn": score_sklearn, "xgboost": score_xgboost}[package]
    score(x, nodes, ids, int(depth))


if __name__ == "__main__":
    main()
