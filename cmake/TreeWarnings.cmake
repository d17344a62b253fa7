# Warning flags of the project's own code. Never exported.
add_library(tree_warnings INTERFACE)
target_compile_options(
  tree_warnings
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wconversion
            -Wshadow
            $<$<BOOL:${TREE_WARNINGS_AS_ERRORS}>:-Werror>)
