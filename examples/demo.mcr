#!MC 1100
# The demonstration macro: run by `make demo` in batch mode.
