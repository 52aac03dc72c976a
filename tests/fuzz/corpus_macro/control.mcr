#!MC 1100
$!VARSET |A| = 3
$!LOOP |A|
  $!VARSET |B| += (|A| * 2 ^ -1)
$!ENDLOOP
$!IF "|B|" == "abc"
  $!RUNMACROFUNCTION "F" (1, "a)")
$!ENDIF
