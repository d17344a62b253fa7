# Warning flags of the project's own code. Never exported.
add_library(tree_warnings INTERFACE)
target_compile_options(tree_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                                               $<$<BOOL:${TREE_WARNINGS_AS_ERRORS}>:-Werror>)
# GCC 12 sees an overlap in the standard library's own "text" + std::string, where there is none.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(tree_warnings INTERFACE -Wno-restrict)
endif()
