#!MC 1100
# The demonstration macro: run by `make demo` in batch mode over examples/channel.dat,
# a 21 x 11 channel with velocity U and pressure P.
