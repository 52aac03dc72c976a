// The cell walkers: ProcessSurfaceCells visits the surface cells of an object (index planes of
// ordered zones, exposed faces, FE surface cells and the faces of FE volumes), in single cells or
// in strips of clean cells; ProcessVolumeCells visits volume cells. Both apply the index skips,
// subzones, blanking (through the blanking seam of setup.h), the collapse test and face
// obscuration, and stop when a callback returns false or the user interrupts.
// Relies on: setup (the walking pair, blanking seam), zoneopt (subzone ranges), face (obscuration,
// neighbours for strips), nodemap (face node order).
#pragma once

#include "base/field/setup.h"

// Flags of every walker.
constexpr int WalkFlag_SkipCollapsed = 1;
constexpr int WalkFlag_DepthBlanking = 2;
constexpr int WalkFlag_IJKBlanking = 8;
constexpr int WalkFlag_ValueBlanking = 16;

// One surface cell: corners N1..N4 (a triangle repeats a corner), the cell (its lowest corner in
// an ordered zone, the element in an FE zone), the plane, how blanked it is.
using SurfaceCellCallback_pf = bool (*)(CZInfo_s *czInfo, CZData_s *czData, LgIndex_t n1, LgIndex_t n2, LgIndex_t n3,
                                        LgIndex_t n4, LgIndex_t cell, IJKPlanes_e plane,
                                        CellBlankedCond_e blankedCond, long clientData);
// A row of clean cells of an ordered plane: cell n has its first corner at start + n x stride,
// the last cell ends at end; the other stride leads across the row. See
// GetCellInOrderedSurfaceCellStrip.
using OrderedSurfaceCellStripCallback_pf = bool (*)(CZInfo_s *czInfo, CZData_s *czData, LgIndex_t start,
                                                    LgIndex_t stride, LgIndex_t end, LgIndex_t otherStride,
                                                    long clientData);
// A strip of clean FE surface cells: count elements, and count + 2 nodes for triangles (triangle n
// is nodes n, n+1, n+2) or 2 x count + 2 for quadrilaterals (cell n is nodes 2n, 2n+1, 2n+3,
// 2n+2).
using FESurfaceCellStripCallback_pf = bool (*)(CZInfo_s *czInfo, CZData_s *czData, const LgIndex_t *elements,
                                               const LgIndex_t *nodes, LgIndex_t count, long clientData);
using VolumeCellCallback_pf = bool (*)(CZInfo_s *czInfo, CZData_s *czData, LgIndex_t cell, long clientData);

// Ordered surfaces and volumes use iSkip, jSkip and kSkip; FE objects use jSkip as the cell
// skip. A strip callback needs a cell callback for the cells that can't go in a strip. With no
// callback at all the walk only counts; count (may be null) receives the cells visited.
bool ProcessSurfaceCells(CZInfo_s *czInfo, CZData_s *czData, bool checkInterrupt, int flags, LgIndex_t iSkip,
                         LgIndex_t jSkip, LgIndex_t kSkip, SurfaceCellCallback_pf cellCallback,
                         OrderedSurfaceCellStripCallback_pf orderedStripCallback,
                         FESurfaceCellStripCallback_pf feStripCallback, long clientData, int *count = nullptr);

// Ordered volumes (cells over K, J, I in skip steps) and FE volumes (elements, jSkip the cell
// skip); other objects have no volume cells.
bool ProcessVolumeCells(CZInfo_s *czInfo, CZData_s *czData, bool checkInterrupt, int flags, LgIndex_t iSkip,
                        LgIndex_t jSkip, LgIndex_t kSkip, VolumeCellCallback_pf callback, long clientData,
                        int *count = nullptr);

// The corners of the n-th cell of an ordered strip.
void GetCellInOrderedSurfaceCellStrip(LgIndex_t start, LgIndex_t stride, LgIndex_t end, LgIndex_t otherStride,
                                      LgIndex_t n, LgIndex_t *n1, LgIndex_t *n2, LgIndex_t *n3, LgIndex_t *n4);

// The nodes of face `face` of an FE element in walking order. Brick: (0,3,7,4) (1,2,6,5)
// (0,1,5,4) (3,2,6,7) (0,1,2,3) (4,5,6,7); tetrahedron: (0,1,2,2) (0,1,3,0) (0,2,3,0) (1,2,3,1);
// triangle (0,1,2,0); quadrilateral (0,1,2,3); line segment (0,1,0,0).
void GetCellFaceNodes(NodeMap_a nodeMap, LgIndex_t element, int face, LgIndex_t *n1, LgIndex_t *n2, LgIndex_t *n3,
                      LgIndex_t *n4);

// The collapse of a cell judged on its coordinates (Z left out in 2D): 0 four distinct
// corners, 1 a point, 2 a line, 3 two distinct pairs none adjacent, 4 a triangle, 255 none of
// these. Triangle and tetrahedron cells use their first three corners. Without coordinates the
// node numbers are compared.
CollapsedStatus_e GetSurfaceCellCollapsedStatus(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t n1,
                                                LgIndex_t n2, LgIndex_t n3, LgIndex_t n4);

// How a face of a cell is covered (FaceObscuration_e); 0 without face neighbours.
int GetFaceObscuration(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t cell, int face);
