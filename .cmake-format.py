with section("format"):
    line_width = 100

with section("parse"):
    additional_commands = {
        "tree_add_unit_test": {"pargs": 1, "kwargs": {"SOURCES": "*", "LABELS": "*"}},
    }

with section("markup"):
    # Comments are wrapped by their authors.
    enable_markup = False
