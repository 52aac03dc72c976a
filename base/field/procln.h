// The line walker for mesh drawing: ordered objects go out as index runs (start, stride, end),
// split where blanked cells or obscured faces interrupt them; FE line-segment zones are joined
// into polylines of nodes and segment elements.
// Relies on: setup, proccell (flags, cell tests), nodemap (element map).
#pragma once

#include "base/field/setup.h"

// A run of points start, start + stride, ... below end, then end itself, so that a run whose
// length is no multiple of the stride still ends at end.
using OrderedLineCallback_pf = bool (*)(CZInfo_s *czInfo, CZData_s *czData, LgIndex_t start, LgIndex_t stride,
                                        LgIndex_t end, long clientData);
// A polyline of count nodes; elements holds the count - 1 segments between them.
using FELineChainCallback_pf = bool (*)(CZInfo_s *czInfo, CZData_s *czData, const LgIndex_t *nodes,
                                        const LgIndex_t *elements, LgIndex_t count, long clientData);

// Ordered objects: a linear object is one run (split at blanked segments); other objects draw,
// for the I, J and K planes that surfaces-to-plot asks for, the two line directions of each
// plane at the skip steps. FE line-segment zones: chains of at most maxChainPoints nodes (at
// least 2). Other FE objects have no lines here (their mesh is drawn from surface cells). count
// (may be null) receives the runs or chains handed over.
bool ProcessLines(CZInfo_s *czInfo, CZData_s *czData, bool checkInterrupt, int flags, LgIndex_t iSkip,
                  LgIndex_t jSkip, LgIndex_t kSkip, OrderedLineCallback_pf orderedCallback,
                  FELineChainCallback_pf feCallback, long clientData, LgIndex_t maxChainPoints, int *count = nullptr);
