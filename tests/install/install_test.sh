#!/usr/bin/env bash
# The tests of what `cmake --install` gives, one per command. CTest runs them; see CMakeLists.txt.
#
# install_test.sh COMMAND; from the environment: SOURCE (the project), BUILD (a build of it), WORK
# (where to work), CXX (compiler), LIBDIR (the build's CMAKE_INSTALL_LIBDIR).
set -euo pipefail
: "${SOURCE:?}" "${BUILD:?}" "${WORK:?}" "${CXX:?}" "${LIBDIR:?}"

here=$SOURCE/tests/install
staged=$WORK/staged/usr

fail() {
  echo "$*" >&2
  exit 1
}

configure() {  # SOURCE BUILD [ARGUMENT...]
  cmake -G Ninja -S "$1" -B "$2" -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_BUILD_TYPE=Debug "${@:3}"
}

fresh_directory() {
  rm -rf "$1"
  mkdir -p "$1"
}

# Builds and runs the consumer as a CMake project: WORK PREFIX [ARGUMENT...]
consume_by_find_package() {
  fresh_directory "$1"
  configure "$here/consumer" "$1" -DCMAKE_PREFIX_PATH="$2"
  cmake --build "$1"
  "$1/consumer" "${@:3}"
}

# Builds and runs the consumer by a bare compiler: WORK PKGCONFIG_DIR [ARGUMENT...]
consume_by_pkg_config() {
  fresh_directory "$1"
  local flags directories
  flags=$(PKG_CONFIG_PATH=$2 pkg-config --cflags --libs tree)
  directories=$(PKG_CONFIG_PATH=$2 pkg-config --variable=libdir tree)
  echo "pkg-config: $flags"
  # shellcheck disable=SC2086  # the flags are words to be split
  "$CXX" -std=c++17 -Wall -Wextra -Wpedantic -Werror "$here/consumer/main.cc" $flags -o "$1/consumer"
  LD_LIBRARY_PATH=$directories:${LD_LIBRARY_PATH-} "$1/consumer" "${@:3}"
}

# As a distribution packages it: under a staging directory, for a prefix that is not there yet.
stage() {
  fresh_directory "$WORK/staged"
  DESTDIR=$WORK/staged cmake --install "$BUILD" --prefix /usr
  diff <({ cd "$SOURCE/include" && find . -name '*.h' &&
    cd "$SOURCE/grow/include" && find . -name '*.h' &&
    cd "$SOURCE/score/include" && find . -name '*.h'; } | sort) \
    <(cd "$staged/include" && find . -type f | sort) || fail 'not the public headers'
  if grep -rnE -e '-W[a-z]|tree_warnings' "$staged/$LIBDIR/cmake" "$staged/$LIBDIR/pkgconfig"; then
    fail 'warning flags are handed on'
  fi
  if grep -rnF -e "$SOURCE" -e "$BUILD" "$staged/$LIBDIR/cmake" "$staged/$LIBDIR/pkgconfig"; then
    fail 'paths of the build are handed on'
  fi
}

components() {
  local work=$WORK/components
  fresh_directory "$work"
  DESTDIR=$work/runtime cmake --install "$BUILD" --prefix /usr --component runtime
  DESTDIR=$work/development cmake --install "$BUILD" --prefix /usr --component development
  DESTDIR=$work/grow cmake --install "$BUILD" --prefix /usr --component grow-runtime
  local grow
  grow=$(cd "$work/grow" && find . -not -type d | sed -E 's/[0-9.]+$//; s|.*/||' | sort -u)
  [[ $grow == $'growtree\nlibtree-grow.so' ]] || fail "the runtime of the growers is $grow"
  DESTDIR=$work/grow cmake --install "$BUILD" --prefix /usr --component grow-development
  DESTDIR=$work/score cmake --install "$BUILD" --prefix /usr --component score-runtime
  local score
  score=$(cd "$work/score" && find . -not -type d | sed -E 's/[0-9.]+$//; s|.*/||' | sort -u)
  [[ $score == libtree-score.so ]] || fail "the runtime of the scorers is $score"
  DESTDIR=$work/score cmake --install "$BUILD" --prefix /usr --component score-development
  local runtime
  runtime=$(cd "$work/runtime" && find . -not -type d | sed -E 's/[0-9.]+$//; s|.*/||' | sort -u)
  [[ $runtime == $'libtree-support.so\nlibtree.so' ]] || fail "the runtime is $runtime"
  diff <(cd "$staged" && find . -not -type d | sort) \
    <(cd "$work" && { (cd runtime/usr && find . -not -type d) &&
      (cd development/usr && find . -not -type d) &&
      (cd grow/usr && find . -not -type d) &&
      (cd score/usr && find . -not -type d); } | sort) || fail 'the components are not all'
}

# The two libraries find each other wherever the whole is moved to.
origin() {
  fresh_directory "$WORK/moved"
  cp -a "$staged" "$WORK/moved/elsewhere"
  local library=$WORK/moved/elsewhere/$LIBDIR/libtree.so
  readelf -d "$library" | grep -F "runpath: [\$ORIGIN]" || fail "the run path is not \$ORIGIN"
  LD_LIBRARY_PATH='' ldd "$library" | grep -F "libtree-support.so.0 => $WORK/moved/elsewhere/" ||
    fail 'the support library is not found beside the library'
  consume_by_pkg_config "$WORK/moved/pkg_config" "$WORK/moved/elsewhere/$LIBDIR/pkgconfig"
  consume_by_find_package "$WORK/moved/find_package" "$WORK/moved/elsewhere"
}

included() {
  fresh_directory "$WORK/included"
  configure "$here/included" "$WORK/included" -DTREE_SOURCE_DIR="$SOURCE"
  cmake --build "$WORK/included"
  "$WORK/included/consumer"
  DESTDIR=$WORK/included/installed cmake --install "$WORK/included" --prefix /usr
  [[ ! -e $WORK/included/installed ]] || fail 'the library is installed by the including project'
}

# The growers are found as a component, and their program where everything was moved to.
grow() {
  fresh_directory "$WORK/grow"
  cp -a "$staged" "$WORK/grow/elsewhere"
  configure "$here/grow_consumer" "$WORK/grow/build" -DCMAKE_PREFIX_PATH="$WORK/grow/elsewhere"
  cmake --build "$WORK/grow/build"
  "$WORK/grow/build/consumer"
  printf 'y,x\na,1\na,2\nb,3\nb,4\n' |
    LD_LIBRARY_PATH='' "$WORK/grow/elsewhere/bin/growtree" --target y --min-node 2 --min-child 1 - |
    grep -F 'x <= 2.5' || fail 'growtree does not grow where it is moved to'
}

score() {
  fresh_directory "$WORK/score"
  configure "$here/score_consumer" "$WORK/score" -DCMAKE_PREFIX_PATH="$staged"
  cmake --build "$WORK/score"
  "$WORK/score/consumer"
}

# Static libraries, a library directory of several levels, and one given by its absolute path.
libdirs() {
  local work=$WORK/libdirs libdir
  fresh_directory "$work"
  for libdir in lib/one/two "$work/absolute/lib"; do
    configure "$SOURCE" "$work/build" -DBUILD_SHARED_LIBS=OFF -DTREE_BUILD_TESTS=OFF \
      -DTREE_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_LIBDIR="$libdir" \
      -DCMAKE_INSTALL_PREFIX="$work/installed"
    cmake --build "$work/build"
    cmake --install "$work/build"
    [[ $libdir == /* ]] || libdir=$work/installed/$libdir
    consume_by_pkg_config "$work/pkg_config" "$libdir/pkgconfig"
    fresh_directory "$work/find_package"
    configure "$here/consumer" "$work/find_package" -Dtree_DIR="$libdir/cmake/tree"
    cmake --build "$work/find_package"
    "$work/find_package/consumer"
    rm -rf "$work/installed"
  done
}

# The library linked with another support library, named by its file and then by a target.
other_support() {
  local work=$WORK/other_support
  fresh_directory "$work"
  configure "$here/other_support" "$work/support"
  cmake --build "$work/support"
  cmake --install "$work/support" --prefix "$work/other"

  local by
  for by in file target; do
    local arguments=(-DTREE_SUPPORT_LIBRARY="$work/other/lib/libother_support.so")
    if [[ $by == target ]]; then
      arguments=(-DTREE_SUPPORT_LIBRARY=other::support -DTREE_SUPPORT_PACKAGE=OtherSupport
        -DCMAKE_PREFIX_PATH="$work/other")
    fi
    configure "$SOURCE" "$work/build" -DTREE_BUILD_TESTS=OFF -DTREE_BUILD_EXAMPLES=OFF \
      -DCMAKE_INSTALL_LIBDIR=lib "${arguments[@]}"
    cmake --build "$work/build"
    local defined
    defined=$(nm -DC --defined-only "$work/build/libtree.so")
    if grep -E 'systemMissingValue|GetInfinity' <<<"$defined"; then
      fail 'the library defines what it should import'
    fi
    cmake --install "$work/build" --prefix "$work/installed"
    [[ -z $(find "$work/installed" -name 'libtree-support*') ]] || fail 'the stand-in is installed'
    consume_by_find_package "$work/find_package" "$work/installed;$work/other" -999
    LD_LIBRARY_PATH=$work/other/lib \
      consume_by_pkg_config "$work/pkg_config" "$work/installed/lib/pkgconfig" -999
    if "$work/find_package/consumer" >/dev/null; then
      fail 'the consumer does not tell the support libraries apart'
    fi
    rm -rf "$work/installed"
  done

  # A support library that is gone is named.
  mv "$work/other" "$work/gone"
  if configure "$here/consumer" "$work/without" -Dtree_DIR="$work/build/packaging" \
    2>"$work/message"; then
    fail 'the package is found without its support library'
  fi
  grep -F 'OtherSupport' "$work/message" || fail 'the missing support library is not named'
}

case ${1-} in
  stage | components | origin | grow | score | included | libdirs | other_support) "$1" ;;
  find_package) consume_by_find_package "$WORK/find_package" "$staged" ;;
  pkg_config) consume_by_pkg_config "$WORK/pkg_config" "$staged/$LIBDIR/pkgconfig" ;;
  *) fail "unknown command: ${1-}" ;;
esac
