// The pair of records through which every zone or computed object is walked: CZInfo_s (what is
// to be shown: private copies of the style, the zone kind) and CZData_s (the data to show it
// from: dimensions, connectivity, skips, the field-data tables of every role at its native
// location, at the nodes and at the cells, and the blanking state arrays). The set-up builds both
// from a ZoneSetupInput_s, which carries what the frame gives a zone (its field map, the frame's
// style blocks, the axis variables), so that this layer reads no frame itself.
//
// Also here: the zone shape predicates, the reduced index skips of approximate plots, the value
// access of the walkers (a direct float or double pointer on the fast path, the field data's get
// function on the general path), and the blanking seam: the walkers ask CZBlankingHooks how
// blanked a cell, a subzone or a point is; until the blanking layer installs its tests the
// defaults read the state arrays.
// Relies on: dataset, fielddata, nodemap, face, derived (values at the other location),
// framestyle (the style records copied in), genbase (the approximation fraction).
#pragma once

#include <cstdint>

#include "base/data/dataset.h"
#include "base/plot/framestyle.h"

struct FrameZoneList_s;
struct ZoneOptInfo_s;

// ---- kinds ------------------------------------------------------------------------------

enum CZType_e : int16_t {
    CZType_Zone = 0,
    CZType_FEBoundaryCOB = 1,  // the boundary of an FE volume zone
    CZType_IsoSurfaceCOB = 2,
    CZType_SliceCOB = 3,
    CZType_StreamtraceCOB = 4,
    CZType_StreamtraceMarkerCOB = 5,
    CZType_StreamtraceArrowheadCOB = 6
};

// The shape of an ordered zone, tested in this order.
enum ZoneOrder_e : int16_t {
    ZoneOrder_I = 0,  // J = K = 1, a single point included
    ZoneOrder_J = 1,  // I = K = 1
    ZoneOrder_K = 2,  // I = J = 1
    ZoneOrder_IJ = 3,  // K = 1
    ZoneOrder_IK = 4,  // J = 1
    ZoneOrder_JK = 5,  // I = 1
    ZoneOrder_IJK = 6
};

enum SurfacesToPlot_e : int16_t {
    SurfacesToPlot_BoundaryFaces = 0,
    SurfacesToPlot_ExposedCellFaces = 1,
    SurfacesToPlot_IPlanes = 2,
    SurfacesToPlot_JPlanes = 3,
    SurfacesToPlot_KPlanes = 4,
    SurfacesToPlot_IJPlanes = 5,
    SurfacesToPlot_JKPlanes = 6,
    SurfacesToPlot_IKPlanes = 7,
    SurfacesToPlot_IJKPlanes = 8,
    SurfacesToPlot_All = 9
};

enum PointsToPlot_e : int16_t {
    PointsToPlot_SurfaceNodes = 0,
    PointsToPlot_AllNodes = 1,
    PointsToPlot_SurfaceCellCenters = 2,
    PointsToPlot_AllCellCenters = 3,
    PointsToPlot_AllConnected = 4
};

enum IJKPlanes_e : int16_t {
    IJKPlanes_I = 0,
    IJKPlanes_J = 1,
    IJKPlanes_K = 2,
    IJKPlanes_Volume = 8,  // the whole volume cell
    IJKPlanes_None = 9     // an FE cell, or a point with no plane
};

enum IJKLines_e : int16_t { IJKLines_I = 0, IJKLines_J = 1, IJKLines_K = 2 };

enum CellBlankedCond_e : int16_t {
    CellBlankedCond_NotBlanked = 0,
    CellBlankedCond_PartiallyBlanked = 1,
    CellBlankedCond_EntirelyBlanked = 2,
    CellBlankedCond_Uncertain = 3  // a subzone test without an answer: walk it cell by cell
};

enum IndexSkipMode_e : int16_t { IndexSkipMode_Points = 0, IndexSkipMode_Surfaces = 1 };

// The roles of the field-data tables of CZData_s. Every table has every slot; a slot a table
// does not serve stays null (node labels are nodal, cell labels cell-centred, the drawing
// coordinates are not native).
enum CZVar_e : int16_t {
    CZVar_X = 0,
    CZVar_Y = 1,
    CZVar_Z = 2,
    CZVar_BlankA = 3,   // eight first operands of the value-blanking constraints
    CZVar_BlankB = 11,  // eight second operands
    CZVar_Contour = 19, // four contour groups
    CZVar_U = 23,
    CZVar_V = 24,
    CZVar_W = 25,
    CZVar_ScatterSize = 26,
    CZVar_NodeLabel = 27,
    CZVar_CellLabel = 28,
    CZVar_R = 29,
    CZVar_G = 30,
    CZVar_B = 31,
    CZVar_DrawX = 32,  // coordinates for drawing
    CZVar_DrawY = 33,
    CZVar_DrawZ = 34,
    NumCZVars = 35
};

// ---- the records --------------------------------------------------------------------------

// The eight show switches of the field layers, in their fixed order.
struct FieldPlotTypes_s {
    bool ShowMesh, ShowContour, ShowVector, ShowScatter, ShowShade, ShowEdge, UseLightingEffect, UseTranslucency;
};

constexpr int16_t MultiColorMark = -255;  // colour by a contour group
constexpr int16_t ColorNotDrawn = -2;

struct CZColors_s {
    int16_t MeshColor = MultiColorMark;
    int16_t FillColor = MultiColorMark;
    uint8_t UseLighting = 0;
    bool ValueBlankConstraintIsActive[MaxBlankingConstraints] = {};
    bool AnyValueBlankConstraintIsActive = false;
};

// What is to be shown of one object. Style blocks are private copies, so a style change does not
// reach a walk in progress. Made by a set-up, released by ReleaseSetupZoneOrCOB.
struct CZInfo_s {
    CZType_e CZType = CZType_Zone;
    FieldPlotTypes_s *FieldPlotTypes = nullptr;  // null: not given (blanking queries)
    FieldMapStyle_s *FieldMap = nullptr;         // null: not given
    GlobalVector_s Vector3D, Vector2D;
    GlobalScatter_s GlobalScatter;
    Blanking_s Blanking;
    bool IsIJKBlankZone = false;
    ZoneType_e ZoneType = ZoneType_Ordered;
    int16_t ZoneRank = -1;
    bool IsFE = false;
    ZoneOptInfo_s *OptInfo = nullptr;  // lent by the owner of the zone's optimisation data
    CZColors_s Colors;
    // What the frame decides for the walk.
    bool Is3D = false;                   // a 3D frame: Z takes part in coordinate comparisons
    const Set_a *ActiveZones = nullptr;  // neighbours in zones outside it count as blanked
    int StripSize = 250;                 // the device's strip size
    LgIndex_t SubZone = -1;              // a single subzone asked for, or -1
};

// The data one object is shown from. Made by SetupCZData, released by ReleaseSetupData.
struct CZData_s {
    DataSet_s *DataSet;
    EntIndex_t Zone;
    NodeMap_a NodeMap;            // a reference; null for ordered data
    FaceNeighbor_a FaceNeighbors; // a reference, or null
    DataElementState_a ElementState;
    LgIndex_t NumIPts, NumJPts, NumKPts, NumIJPts, NumIJKPts;
    LgIndex_t MaxICell, MaxJCell, MaxKCell;                 // dimension - 1
    LgIndex_t MaxIPlaneCell, MaxJPlaneCell, MaxKPlaneCell;  // dimension - 2: the last cell index
    LgIndex_t NumPoints, NumCells;
    LgIndex_t ISkip, JSkip, KSkip;            // surface skips; FE: node skip, cell skip
    LgIndex_t PointISkip, PointJSkip, PointKSkip;
    bool IsApprox;
    ArrayList_s *VarList;
    FieldData_a Native[NumCZVars], Nodal[NumCZVars], CC[NumCZVars];
    bool BlankingActive;      // value or IJK blanking is on and the state arrays may be read
    bool NormalsAvailable;
    uint8_t *PointState;      // per point: bit 0 value blanked, bit 1 IJK blanked
    uint8_t *ElemState;       // per cell: bits 0-1 CellBlankedCond_e, bit 2 IJK blanked, bits 3-6 creased edges
    IJKPlanes_e ElemStatePlane;  // the plane whose cells ElemState describes
    bool OwnsStateArrays;
    void *NormalCache;        // the node normal cache in use, or null
};

// Point and element state bits.
constexpr uint8_t PointState_ValueBlanked = 1;
constexpr uint8_t PointState_IJKBlanked = 2;
constexpr uint8_t ElemState_CondMask = 3;
constexpr uint8_t ElemState_IJKBlanked = 4;

// ---- zone shape ---------------------------------------------------------------------------

ZoneOrder_e GetZoneOrder(LgIndex_t numI, LgIndex_t numJ, LgIndex_t numK);
bool IsLinearZone(const DataSet_s *dataSet, EntIndex_t zone);
bool IsSurfaceZone(const DataSet_s *dataSet, EntIndex_t zone);  // ordered, exactly one of I, J, K is 1
bool IsVolumeZone(const DataSet_s *dataSet, EntIndex_t zone);
inline bool IsFEVolumeType(ZoneType_e type) { return type == ZoneType_FETetra || type == ZoneType_FEBrick; }
inline bool IsCZOrderedVolume(const CZInfo_s *czInfo) { return !czInfo->IsFE && czInfo->ZoneRank == 3; }

// ---- value access -----------------------------------------------------------------------

// One variable's values for a hot loop: Floats or Doubles is set when the values lie in memory
// as a plain native aligned array of that type, else reads go through the get function.
struct FieldValueReader_s {
    const float *Floats;
    const double *Doubles;
    FieldData_a FieldData;
};
FieldValueReader_s MakeFieldValueReader(FieldData_a fieldData);
inline double ReadFieldValue(const FieldValueReader_s &reader, LgIndex_t index) {
    if (reader.Floats != nullptr) return reader.Floats[index];
    if (reader.Doubles != nullptr) return reader.Doubles[index];
    return GetFieldValue(reader.FieldData, index);
}

// The general path: one value of a role at a node or a cell. The role must have a table entry.
double GetCZNodalValue(const CZData_s *czData, CZVar_e role, LgIndex_t node);
double GetCZCellValue(const CZData_s *czData, CZVar_e role, LgIndex_t cell);

// ---- set-up -------------------------------------------------------------------------------

// What the frame gives the set-up of one zone. Pointers may be null where the frame has nothing
// (no field map, no blanking); variables are zero-based with -1 for none.
struct ZoneSetupInput_s {
    DataSet_s *DataSet = nullptr;
    FrameZoneList_s *DerivedList = nullptr;  // values at the other location; null: native only
    EntIndex_t Zone = 0;
    bool Is3D = false;
    const FieldMapStyle_s *FieldMap = nullptr;
    const FieldLayers_s *FieldLayers = nullptr;
    const GlobalVector_s *Vector2D = nullptr, *Vector3D = nullptr;
    const GlobalScatter_s *GlobalScatter = nullptr;
    const GlobalContour_s *GlobalContour = nullptr;  // MaxContourGroups records
    const Blanking_s *Blanking = nullptr;
    EntIndex_t XVar = 0, YVar = 1, ZVar = 2;
    EntIndex_t RGBVars[3] = {-1, -1, -1};
    const Set_a *ActiveZones = nullptr;
    ZoneOptInfo_s *OptInfo = nullptr;
    int StripSize = 250;
    int BackgroundColor = 7;  // for hidden-line fill
    Set_a *NeededVars = nullptr;  // dry run: collect the variables drawing would read, load nothing
};

// The metric and connectivity part alone. Under the zone's mutex takes references to the node
// map, face neighbours (rebuilt when invalid, after the integrity check of user neighbours) and
// the element state. label names the zone in the status text. False, with nothing left
// allocated, on failure.
bool SetupCZData(DataSet_s *dataSet, EntIndex_t zone, const char *label, CZData_s **czData);
void ReleaseSetupData(CZData_s **czData);

// The whole pair for a zone: style copies, surfaces-to-plot normalised, connectivity, every
// variable role, the state arrays when blanking is on, and with applySkip the approximate skips.
bool SetupZone(const ZoneSetupInput_s *input, bool applySkip, bool forHardware, CZInfo_s **czInfo,
               CZData_s **czData);
void ReleaseSetupZoneOrCOB(CZInfo_s **czInfo, CZData_s **czData);

// Fetches one role of a variable: the native object, and the nodal and cell-centred views that
// are needed (deriving the other location when asked for). With neededVars given only records
// the variable. False when a load or derivation failed.
bool SetupAndAssignNativeAndDerivedVar(DataSet_s *dataSet, FrameZoneList_s *derivedList, EntIndex_t zone,
                                       EntIndex_t var, bool needNodal, bool needCC, FieldData_a *native,
                                       FieldData_a *nodal, FieldData_a *cc, Set_a *neededVars);

// Gives CZData_s point and element state arrays of its own (all zero), for the blanking layer to
// fill; ElemStatePlane is the plane its cells stand for (by rank). False on out of memory.
bool CZDataAllocStateArrays(const CZInfo_s *czInfo, CZData_s *czData);

// Three skips whose product is about 1 / the general style's point fraction. Each direction is
// limited to a third of its cells; in surface mode a volume's directions are ranked by the
// points of the planes drawn. The smallest direction takes the cube root, the middle the square
// root of what is left, the largest the rest; every skip is at least 1.
void GetReducedIndexSkipByRatio(const CZInfo_s *czInfo, LgIndex_t numI, LgIndex_t numJ, LgIndex_t numK,
                                IndexSkipMode_e mode, LgIndex_t *iSkip, LgIndex_t *jSkip, LgIndex_t *kSkip);

// An index range of a field map (one-based, Max 0 the last index, negative Max counting back)
// made zero-based against a dimension and clipped to it; skip at least 1.
IndexRange_s GetZeroBasedIndexRange(IndexRange_s range, LgIndex_t dimension);

// The extent of an ordered cell from point index (i, j, k): in each direction one step (the
// skip when IsApprox) clipped to the zone's last index; 0 in a direction of one point.
void GetOrderedCellSpan(const CZData_s *czData, LgIndex_t i, LgIndex_t j, LgIndex_t k, LgIndex_t *dI, LgIndex_t *dJ,
                        LgIndex_t *dK);

// ---- blanking seam ----------------------------------------------------------------------

// Whether a kind of blanking applies to the object (the frame's block and the object's own
// switches, as copied into CZInfo_s).
bool IsZoneOrCOBValueBlankingActive(const CZInfo_s *czInfo);
bool IsZoneOrCOBIJKBlankingActive(const CZInfo_s *czInfo);
bool IsZoneOrCOBDepthBlankingActive(const CZInfo_s *czInfo);

// The tests the walkers ask. The blanking layer installs its own; the defaults read the state
// arrays: a cell the element state describes has its stored condition, any other cell is wholly
// blanked when every corner is blanked and partly when some are; subzones are uncertain; no
// point is depth blanked.
struct CZBlankingHooks_s {
    CellBlankedCond_e (*GetSurfaceCellBlankedCondition)(const CZInfo_s *czInfo, const CZData_s *czData,
                                                        LgIndex_t cell, IJKPlanes_e plane, bool useValue,
                                                        bool useIJK, bool useDepth);
    CellBlankedCond_e (*GetVolumeCellBlankedCondition)(const CZInfo_s *czInfo, const CZData_s *czData,
                                                       LgIndex_t cell, bool useValue, bool useIJK, bool useDepth);
    CellBlankedCond_e (*GetSubZoneBlankedCondition)(const CZInfo_s *czInfo, const CZData_s *czData,
                                                    LgIndex_t subZone, bool useValue, bool useIJK, bool useDepth);
    bool (*IsPointDepthBlanked)(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t point);
    // Fills the state arrays after the set-up allocated them; false on interrupt.
    bool (*UpdateZoneOrCOBBlankedStates)(CZInfo_s *czInfo, CZData_s *czData);
};
extern CZBlankingHooks_s CZBlankingHooks;
// Puts the default tests back.
void ResetCZBlankingHooks();
