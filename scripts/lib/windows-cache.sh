# Sourced. The folder outside of the tree for what Windows programs are made from and tested with.

cache=$(realpath -m "${VORLYN_WINDOWS_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/vorlyn-windows}")
export VORLYN_WINDOWS_CACHE=$cache
