// The general style as tables of the set-value machinery: one entry per major command of the
// general style ($!PAPER ... $!GLOBALLINKING, $!GLOBALCOLORMAP n), each a block whose table
// names the rows below it and where GeneralBase keeps them.
// Relies on: setvalue (the machinery), genbase (the record).
#pragma once

#include "base/macro/setvalue.h"

// The root table; the record it describes is a GeneralBase_s.
extern const StyleRecord_s GeneralStyle;

// A value of GeneralBase at a path whose first entry is a general major row ($!COLORMAP and
// $!COLORSPECTRUM already turned into $!GLOBALCOLORMAP 1).
SetValueReturnCode_e GeneralState_s_SetValue(const int path[7], ArbParam_t argValue, double doubleValue,
                                             AssignOp_e assignOp);
SetValueReturnCode_e GeneralState_s_GetValue(const int path[7], double *doubleOut, ArbParam_t *argOut);

// The records of a text style and a geometry style ($!DEFAULTTEXT, $!DEFAULTGEOM); frames keep
// records of the same kind as their BASETEXT and BASEGEOM.
const StyleRecord_s &GetTextStyleRecord();
const StyleRecord_s &GetGeomStyleRecord();
