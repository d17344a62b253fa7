with section("format"):
    line_width = 100

with section("parse"):
    additional_commands = {
        "tree_add_example_test": {
            "pargs": 1,
            "kwargs": {"COMMAND": "+", "EXIT": 1, "STDOUT": 1, "STDERR": "+", "DIRECTORY": 1},
        },
        "tree_add_unit_test": {"pargs": 1, "kwargs": {"SOURCES": "*", "LABELS": "*"}},
    }

with section("markup"):
    # Comments are wrapped by their authors.
    enable_markup = False
