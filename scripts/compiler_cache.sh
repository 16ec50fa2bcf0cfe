# Sourced by the build scripts from the top of the checkout: compiles go through
# ccache with paths taken relative to the checkout, so that a second build tree
# of the same flags (the Debian package's) reuses the objects of the first.
if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER="${CMAKE_C_COMPILER_LAUNCHER:-ccache}"
  export CMAKE_CXX_COMPILER_LAUNCHER="${CMAKE_CXX_COMPILER_LAUNCHER:-ccache}"
  export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$PWD}" CCACHE_NOHASHDIR=1
fi
