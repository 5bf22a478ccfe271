# Sourced by the build scripts: compile through ccache when it is installed
# (nothing installs it; a developer may). Paths are hashed relative to the
# checkout, so another clone of the project hits the same cache.
KIB_LAUNCHER=()
if command -v ccache > /dev/null; then
  KIB_LAUNCHER=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache -DCMAKE_C_COMPILER_LAUNCHER=ccache)
  export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$PWD}" CCACHE_NOHASHDIR=true
fi
