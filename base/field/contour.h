// Contour lines, flood and labels on the surface cells of a zone. Lines are traced level by level
// through the cells an edge crossing marks, and assembled into polylines of index-fract points
// (a point on the edge between two nodes, at a fraction from the first); where the topology is
// not at hand they are cut cell by cell. Flood fills each cell in the colour of its band, cutting
// cells that cross levels into band polygons, or lets the device blend node colours. Auto labels
// are placed along the lines and kept per frame and group. Contour-line extraction turns the
// same traced lines into zones.
// Relies on: setup, proccell (the walkers), contlevel (the colour of a value or band), frame
// (the levels of the groups), vdi and grhw (drawing), view (the maps), datautil (new zones).
#pragma once

#include <string>
#include <vector>

#include "base/field/setup.h"
#include "base/macro/dataactions.h"
#include "base/plot/devtypes.h"

struct Frame_s;

// ---- edges ------------------------------------------------------------------------------------

// An edge with end values a and b is crossed by level v when one end is at or above v and the
// other below it: a node exactly on the level counts as above. Values that are not numbers
// never cross.
inline bool ContourEdgeIsCrossed(double a, double b, double v) {
    return (a - v >= 0 && b - v < 0) || (b - v >= 0 && a - v < 0);
}
// Where v lies between a (fraction 0) and b (fraction 1): 0.5 when a = b; an end exactly at v is
// first moved up by max(1e-150, |a - b| x 0.0001), so a crossing never lands on a node.
double ContourEdgeFraction(double v, double a, double b);

// The node forms: values of var at nodes n1 and n2, less those of varOffset when given.
void GetCellEdgeFraction(double value, LgIndex_t n1, LgIndex_t n2, FieldData_a var, FieldData_a varOffset,
                         double *fract);
bool IsCellEdgeIntersected(double value, LgIndex_t n1, LgIndex_t n2, FieldData_a var, FieldData_a varOffset,
                           double *fract);

// ---- level lines ------------------------------------------------------------------------------

// A line of count index-fract points: point n lies between nodes i0[n] and i1[n] at fract[n],
// found in cell cells[n] (-1 for the last point of a line that left the object). Segments of
// the cell-local path are lines of two points. level is the level's number, value its value.
using ContourLineCallback_pf = bool (*)(CZInfo_s *czInfo, CZData_s *czData, const LgIndex_t *cells, const LgIndex_t *i0,
                                        const LgIndex_t *i1, const double *fract, LgIndex_t count, IJKPlanes_e plane,
                                        int level, double value, long clientData);

// The polylines of one level through the surface cells of an FE triangle or quadrilateral
// object: open lines (from an edge with no neighbour or a wholly blanked one) first, then closed
// ones. A line keeps at most MAXPTSINALINE points. False when the callback stopped the walk or
// on out of memory (with the message).
bool ProcessFELevelLine(CZInfo_s *czInfo, CZData_s *czData, int level, double value, FieldData_a var,
                        FieldData_a varOffset, ContourLineCallback_pf callback, long clientData);
// The same through the planes an ordered object shows (for a volume, the planes surfaces-to-plot
// names). In a plane of node strides A and B (K planes 1 and I, J planes 1 and I x J, I planes I
// and I x J) cell edge 0 joins c+A and c+A+B, edge 1 c+B and c+B+A, edge 2 c+B and c, edge 3
// c+A and c.
bool ProcessOrderedLevelLine(CZInfo_s *czInfo, CZData_s *czData, int level, double value, FieldData_a var,
                             FieldData_a varOffset, ContourLineCallback_pf callback, long clientData);
// Cell-local segments of every level of the object's line group, cell by cell through
// ProcessSurfaceCells; a saddle cell (all four edges crossed) gives the segments that cut off
// corners N1 and N3.
bool ProcessContLinesOnSurfCells(CZInfo_s *czInfo, CZData_s *czData, ContourLineCallback_pf segmentCallback,
                                 long clientData);

// Every level of the line group through the walkers: assembled polylines, or the cell-local
// path for approximate ordered objects and FE volumes. False when interrupted.
bool DrawContourLinesAndDefineLabels(CZInfo_s *czInfo, CZData_s *czData, ContourLineCallback_pf callback,
                                     long clientData);

// The corner values of a cell for contouring by the group (nodal values): corners repeated round
// the cell (triangles, collapsed quadrilaterals) are dropped from nodes, leaving numNodes (3 or
// 4) of them with their values, min and max. False when the group has no nodal variable.
bool GetNodeContourLevelValues(const CZData_s *czData, LgIndex_t nodes[4], int group, double values[4], int *numNodes,
                               double *min, double *max);

// The pattern of the lines of a level: USEZONELINETYPE the field map's; SKIPTOSOLID solid on
// every (LINESKIP + 1)-th level from 0 and dashed between; DASHNEGATIVE dashed below 0. The
// pattern length is in frame units.
void GetContourLinePattern(const ContourLayer_s &layer, const ContourLineStyle_s &lineStyle, double value, int level,
                           LinePattern_e *pattern, double *patternLength);

// ---- flood ------------------------------------------------------------------------------------

// A vertex of a band polygon: node I0 itself (Fract 0, I1 = I0), or the point at Fract from I0
// towards I1, where the value is Value.
struct FloodPoint_s {
    LgIndex_t I0, I1;
    double Fract;
    double Value;
};
// One band polygon of a cell; band b holds the values in (levels[b-1], levels[b]], band 0 those
// up to levels[0] and band numLevels those above the last.
using FloodBandCallback_pf = bool (*)(const FloodPoint_s *points, int count, int band, void *clientData);

// Cuts a cell of 3 or 4 corners at the levels (ascending) into one polygon per band it touches,
// vertices in boundary order: each corner inside the band, and each crossing of the band's
// bounds on the edge to the next corner. A quadrilateral whose corner bands form three or more
// runs round the cell is split first into two triangles at the third change. A crossing on an
// edge is computed from the lower node number, so neighbouring cells share it exactly. False
// when the callback said stop.
bool CutCellIntoBands(const LgIndex_t *corners, const double *values, int numCorners, const double *levels,
                      int numLevels, FloodBandCallback_pf callback, void *clientData);

// The band levels of the object's flood: none for AVERAGECELL and CORNERCELL and for a
// continuous group with fast colouring; a banded group's levels; for a continuous group without
// it, one level per control point of the colour map in each cycle of CMIN..CMAX (the cycle start
// when the map's first point is not at 0; the last point, when at 1, only in the last cycle).
// banded tells whether levels are the group's own.
void SetupLevelsForContourFlooding(const CZInfo_s *czInfo, std::vector<double> *levels, bool *banded);

// Fills the cells of the object by its flood (or its shade or hidden-line fill): per-vertex
// device blending for continuous fast colouring and per-cell colours for AVERAGECELL and
// CORNERCELL, band polygons for banded groups; vector output takes the exact cut always, with a
// continuous group coloured cell by cell from its average. False when interrupted.
bool Draw2DShadeOrContourFlooding(CZInfo_s *czInfo, CZData_s *czData);
// The lines and auto labels of the object's line group. False when interrupted.
bool Draw2DContourLinesAndDefLabels(CZInfo_s *czInfo, CZData_s *czData);
// 3D twins drawn through the frame's view: cells back to front within the object (until panels
// are sorted across objects), lines over them.
bool Draw3DShadeOrContourFloodingInSoftware(CZInfo_s *czInfo, CZData_s *czData);
bool Draw3DContLinesAndDefLabelsInSoftware(CZInfo_s *czInfo, CZData_s *czData);

// The group whose levels draw the object's lines and the group that floods it (-1 for RGB or none).
int GetContourGroupForZoneLineContours(const CZInfo_s *czInfo);
int GetContourGroupForZoneFloodColoring(const CZInfo_s *czInfo);
bool ZoneOrCOBHasContourLineStyle(const CZInfo_s *czInfo);
bool ZoneOrCOBHasContourFloodStyle(const CZInfo_s *czInfo);

// ---- labels -----------------------------------------------------------------------------------

// A contour label of a frame's group: position in grid coordinates, its level and value, aligned
// with the line or level, made by auto generation or by hand.
struct ContourLabel_s {
    double X = 0.0, Y = 0.0, Z = 0.0;
    bool IsAligned = false;
    bool IsAuto = true;
    int Level = 0;
    double Value = 0.0;
};

void AddContourLabel(const Frame_s *frame, int group, const ContourLabel_s &label);
// group -1: every group.
void DeleteContourLabels(const Frame_s *frame, int group);
void DeleteAllAutoContourLabels(const Frame_s *frame);
// The labels of a group in the order they were added (empty when none).
const std::vector<ContourLabel_s> &GetContourLabels(const Frame_s *frame, int group);
// Restarts the sequence that places the first label of each line, so a redraw places labels as
// the last one did.
void ResetContourLabelPlacement();
// The format the group's labels use: RANGEBESTFLOAT settles on one format for all its levels.
ValueFormat_s GetFinalContourLabelValueFormat(int group);
// The text of a label: its value (or level number + 1 without LABELWITHVALUE) in the format.
std::string GetContourLabelText(int group, const ContourLabel_s &label);
// A number in a format: INTEGER, FIXEDFLOAT, EXPONENTIAL, BESTFLOAT, SUPERSCRIPT and
// LOGSUPERSCRIPT; the sign, leading zeros, decimals on whole numbers and the prefixes and
// suffixes as the format asks. Custom and dynamic labels fall back to BESTFLOAT.
std::string EncodeContourLabelValue(double value, const ValueFormat_s &format);

// ---- extraction -------------------------------------------------------------------------------

enum ContLineCreateMode_e : int16_t {
    ContLineCreateMode_OneZonePerContourLevel = 0,
    ContLineCreateMode_OneZonePerIndependentPolyline = 1
};

// The lines of the group's levels through the zones of zoneSet that draw lines with this group,
// as FE line-segment zones, one per level ("Contour line: C=<value>"), or as one I-ordered zone
// per connected polyline. Every variable is interpolated to the line's points. False with a
// message when nothing could be made.
bool ExtractZonesFromContourLines(int group, ContLineCreateMode_e mode, const Set_a *zoneSet);
// The action: the current frame's group 1, over its active zones.
bool Action_CreateContourLineZones(ContLineCreateMode_e mode);

// The macro handler of a contour-line action (CREATECONTOURLINEZONES), or null.
ActionHandler_pf FindContourLineActionHandler(int action);
