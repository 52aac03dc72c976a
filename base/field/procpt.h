// The point walker: every point of the object that the point style, the point skips and
// blanking let through, in ascending order, with the plane each one lies on.
// Relies on: setup, proccell (the surface walk that finds surface points), set.
#pragma once

#include "base/field/setup.h"

using PointCallback_pf = bool (*)(CZInfo_s *czInfo, CZData_s *czData, LgIndex_t point, IJKPlanes_e plane,
                                  long clientData);

// Linear objects and "ALLNODES" take every point; other point styles take the corners of the
// surface cells the field map shows. A point passes when its indices are multiples of the skips
// (FE: the node number a multiple of iSkip) and no blanking in flags blanks it. count (may be
// null) receives the points visited.
bool ProcessPoints(CZInfo_s *czInfo, CZData_s *czData, bool checkInterrupt, int flags, LgIndex_t iSkip,
                   LgIndex_t jSkip, LgIndex_t kSkip, PointCallback_pf callback, long clientData,
                   int *count = nullptr);

// The nodes some element uses; null (with the message) on out of memory.
Set_a *BuildConnectedNodeSet(NodeMap_a nodeMap, LgIndex_t numPoints);
