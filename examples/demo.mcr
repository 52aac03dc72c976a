#!MC 1100
# The demonstration macro: run by `make demo` in batch mode over examples/channel.dat,
# a 21 x 11 channel with velocity U and pressure P.
# The demo reports what it loaded, works out a small table, and draws the channel's velocity as a
# flooded contour plot with lines to a PNG.
$!INTERNAL "ECHO Loaded |NUMZONES| zone(s), |NUMVARS| variables: |VARNAME[1]|, |VARNAME[2]|, |VARNAME[3]|, |VARNAME[4]|"
$!INTERNAL "ECHO Title: |DATASETTITLE|, pressure from |MINVAR[4]%.3f| to |MAXVAR[4]%.3f|"
$!MACROFUNCTION NAME = "Row"
  $!INTERNAL "ECHO   |1%3d|  |2%10.4f|"
$!ENDMACROFUNCTION
$!LOOP 5
  $!VARSET |ROOT| = (|LOOP| ^ 0.5)
  $!RUNMACROFUNCTION "Row" (|LOOP|, |ROOT|)
$!ENDLOOP
$!WRITEDATASET "channel-copy.plt"
$!INTERNAL "ECHO Wrote channel-copy.plt"
$!GLOBALCONTOUR 1 VAR = 3
$!CONTOURLEVELS RESETTONICE APPROXNUMVALUES = 12
$!FIELDLAYERS SHOWCONTOUR = YES SHOWMESH = NO
$!FIELDMAP [1] CONTOUR { CONTOURTYPE = BOTHLINESANDFLOOD }
$!EXPORTSETUP EXPORTFORMAT = PNG IMAGEWIDTH = 800 EXPORTFNAME = "channel.png"
$!EXPORT
$!INTERNAL "ECHO Wrote channel.png"
