// Set-up of the walking pair, value access, reduced skips and the default blanking tests.
#include "base/field/setup.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>

#include "base/data/derived.h"
#include "base/kernel/alloc.h"
#include "base/kernel/genbase.h"
#include "base/kernel/orvassert.h"
#include "base/kernel/outofmem.h"

// ---- zone shape -----------------------------------------------------------------------------

ZoneOrder_e GetZoneOrder(LgIndex_t numI, LgIndex_t numJ, LgIndex_t numK) {
    if (numJ == 1 && numK == 1) return ZoneOrder_I;
    if (numI == 1 && numK == 1) return ZoneOrder_J;
    if (numI == 1 && numJ == 1) return ZoneOrder_K;
    if (numK == 1) return ZoneOrder_IJ;
    if (numJ == 1) return ZoneOrder_IK;
    if (numI == 1) return ZoneOrder_JK;
    return ZoneOrder_IJK;
}

bool IsLinearZone(const DataSet_s *dataSet, EntIndex_t zone) {
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    return !ZoneTypeIsFE(spec->Type) && (spec->NumPtsI > 1) + (spec->NumPtsJ > 1) + (spec->NumPtsK > 1) <= 1;
}

bool IsSurfaceZone(const DataSet_s *dataSet, EntIndex_t zone) {
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    return !ZoneTypeIsFE(spec->Type) && (spec->NumPtsI == 1) + (spec->NumPtsJ == 1) + (spec->NumPtsK == 1) == 1;
}

bool IsVolumeZone(const DataSet_s *dataSet, EntIndex_t zone) {
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    return !ZoneTypeIsFE(spec->Type) && spec->NumPtsI > 1 && spec->NumPtsJ > 1 && spec->NumPtsK > 1;
}

// ---- value access ---------------------------------------------------------------------------

FieldValueReader_s MakeFieldValueReader(FieldData_a fieldData) {
    FieldValueReader_s reader{nullptr, nullptr, fieldData};
    if (fieldData == nullptr || fieldData->Data == nullptr) return reader;
    // The two plain readers are chosen only for native, aligned, unfragmented arrays, so their
    // presence says the values may be indexed directly.
    if (fieldData->GetFunction == &GetFieldValueForFloat)
        reader.Floats = static_cast<const float *>(fieldData->Data);
    else if (fieldData->GetFunction == &GetFieldValueForDouble)
        reader.Doubles = static_cast<const double *>(fieldData->Data);
    return reader;
}

double GetCZNodalValue(const CZData_s *czData, CZVar_e role, LgIndex_t node) {
    REQUIRE(czData->Nodal[role] != nullptr && node >= 0 && node < czData->Nodal[role]->NumValues);
    return GetFieldValue(czData->Nodal[role], node);
}

double GetCZCellValue(const CZData_s *czData, CZVar_e role, LgIndex_t cell) {
    REQUIRE(czData->CC[role] != nullptr && cell >= 0 && cell < czData->CC[role]->NumValues);
    return GetFieldValue(czData->CC[role], cell);
}

// ---- connectivity and metrics ---------------------------------------------------------------

bool SetupCZData(DataSet_s *dataSet, EntIndex_t zone, const char *label, CZData_s **czData) {
    REQUIRE(dataSet != nullptr && czData != nullptr && IsZoneEnabled(dataSet, zone));
    *czData = nullptr;
    auto *data = static_cast<CZData_s *>(newmalloc(sizeof(CZData_s)));
    if (data == nullptr) {
        OutOfMemoryMsg();
        return false;
    }
    memset(static_cast<void *>(data), 0, sizeof(CZData_s));
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    const bool isFE = ZoneTypeIsFE(spec->Type);
    data->DataSet = dataSet;
    data->Zone = zone;
    data->NumIPts = spec->NumPtsI;
    data->NumJPts = spec->NumPtsJ;
    data->NumKPts = spec->NumPtsK;
    data->NumIJPts = spec->NumPtsI * spec->NumPtsJ;
    data->NumIJKPts = isFE ? spec->NumPtsI : data->NumIJPts * spec->NumPtsK;
    data->MaxICell = spec->NumPtsI - 1;
    data->MaxJCell = spec->NumPtsJ - 1;
    data->MaxKCell = spec->NumPtsK - 1;
    data->MaxIPlaneCell = spec->NumPtsI - 2;
    data->MaxJPlaneCell = spec->NumPtsJ - 2;
    data->MaxKPlaneCell = spec->NumPtsK - 2;
    if (isFE) {
        data->NumPoints = spec->NumPtsI;
        data->NumCells = spec->NumPtsJ;
    } else {
        data->NumPoints = data->NumIJKPts;
        data->NumCells = std::max(spec->NumPtsI - 1, 1) * std::max(spec->NumPtsJ - 1, 1) * std::max(spec->NumPtsK - 1, 1);
    }
    data->ISkip = data->JSkip = data->KSkip = 1;
    data->PointISkip = data->PointJSkip = data->PointKSkip = 1;
    data->VarList = zoneData->VarList;
    data->ElemStatePlane = IJKPlanes_None;

    bool isOk = true;
    {
        MutexLock zoneLock(zoneData->Mutex);
        if (isFE && zoneData->NodeMap != nullptr) {
            data->NodeMap = zoneData->NodeMap;
            data->NodeMap->RefCount++;
        }
        FaceNeighbor_a faceNeighbor = zoneData->FN;
        if (faceNeighbor != nullptr && !IsValidFaceNeighbor(faceNeighbor)) {
            isOk = VerifyUserDefFNIntegrity(dataSet, zone) &&
                   UpdateFaceNeighbor(true, faceNeighbor, isFE ? zoneData->NodeMap : nullptr,
                                      label != nullptr ? label : "");
        }
        if (isOk && faceNeighbor != nullptr) {
            data->FaceNeighbors = faceNeighbor;
            faceNeighbor->RefCount++;
        }
        if (isOk && zoneData->DataElementState != nullptr) {
            data->ElementState = zoneData->DataElementState;
            data->ElementState->RefCount++;
        }
    }
    if (!isOk) {
        ReleaseSetupData(&data);
        return false;
    }
    *czData = data;
    return true;
}

void ReleaseSetupData(CZData_s **czData) {
    if (*czData == nullptr) return;
    CZData_s *data = *czData;
    DeallocNodeMapPtr(&data->NodeMap);
    FaceNeighborDealloc(&data->FaceNeighbors);
    DataElementStateDealloc(&data->ElementState);
    if (data->OwnsStateArrays) {
        newfree(data->PointState);
        newfree(data->ElemState);
    }
    newfree(data);
    *czData = nullptr;
}

bool CZDataAllocStateArrays(const CZInfo_s *czInfo, CZData_s *czData) {
    if (czData->OwnsStateArrays) {
        newfree(czData->PointState);
        newfree(czData->ElemState);
    }
    // An ordered zone's cells are addressed by their lowest corner, so the cell array has a slot
    // for every point.
    size_t numCellSlots = size_t(czInfo->IsFE ? czData->NumCells : czData->NumPoints);
    czData->PointState = static_cast<uint8_t *>(newmalloc(std::max<size_t>(1, size_t(czData->NumPoints))));
    czData->ElemState = static_cast<uint8_t *>(newmalloc(std::max<size_t>(1, numCellSlots)));
    czData->OwnsStateArrays = true;
    if (czData->PointState == nullptr || czData->ElemState == nullptr) {
        newfree(czData->PointState);
        newfree(czData->ElemState);
        czData->PointState = czData->ElemState = nullptr;
        czData->OwnsStateArrays = false;
        OutOfMemoryMsg();
        return false;
    }
    memset(czData->PointState, 0, std::max<size_t>(1, size_t(czData->NumPoints)));
    memset(czData->ElemState, 0, std::max<size_t>(1, numCellSlots));
    if (czInfo->IsFE) {
        czData->ElemStatePlane = IJKPlanes_None;
    } else {
        switch (czInfo->ZoneRank) {
        case 3: czData->ElemStatePlane = IJKPlanes_Volume; break;
        case 2: {
            ZoneOrder_e order = GetZoneOrder(czData->NumIPts, czData->NumJPts, czData->NumKPts);
            czData->ElemStatePlane = order == ZoneOrder_IJ ? IJKPlanes_K : order == ZoneOrder_IK ? IJKPlanes_J : IJKPlanes_I;
            break;
        }
        default: czData->ElemStatePlane = IJKPlanes_None; break;
        }
    }
    return true;
}

// ---- ranges and spans -----------------------------------------------------------------------

IndexRange_s GetZeroBasedIndexRange(IndexRange_s range, LgIndex_t dimension) {
    LgIndex_t last = std::max(dimension - 1, 0);
    LgIndex_t min = std::clamp(range.Min - 1, 0, last);
    LgIndex_t max = range.Max <= 0 ? dimension - 1 + range.Max : range.Max - 1;
    max = std::clamp(max, 0, last);
    return IndexRange_s{min, max, std::max(range.Skip, 1)};
}

void GetOrderedCellSpan(const CZData_s *czData, LgIndex_t i, LgIndex_t j, LgIndex_t k, LgIndex_t *dI, LgIndex_t *dJ,
                        LgIndex_t *dK) {
    auto span = [&](LgIndex_t index, LgIndex_t dimension, LgIndex_t skip) {
        if (dimension <= 1) return LgIndex_t(0);
        LgIndex_t step = czData->IsApprox ? std::max(skip, 1) : 1;
        // A point at the last index starts no cell in that direction.
        LgIndex_t last = dimension - 1;
        return index >= last ? LgIndex_t(0) : std::min(step, last - index);
    };
    *dI = span(i, czData->NumIPts, czData->ISkip);
    *dJ = span(j, czData->NumJPts, czData->JSkip);
    *dK = span(k, czData->NumKPts, czData->KSkip);
}

// ---- variable roles -------------------------------------------------------------------------

namespace {

ValueLocation_e nativeLocation(const DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var) {
    FieldData_a fieldData = GetNativeFieldDataPtr(dataSet, zone, var);
    return fieldData != nullptr ? fieldData->Location : ValueLocation_Invalid;
}

bool isUsableVar(const DataSet_s *dataSet, EntIndex_t zone, int var) {
    return var >= 0 && var < dataSet->NumVars && IsVarEnabled(dataSet, EntIndex_t(var)) &&
           GetNativeFieldDataPtr(dataSet, zone, EntIndex_t(var)) != nullptr;
}

}  // namespace

bool SetupAndAssignNativeAndDerivedVar(DataSet_s *dataSet, FrameZoneList_s *derivedList, EntIndex_t zone,
                                       EntIndex_t var, bool needNodal, bool needCC, FieldData_a *native,
                                       FieldData_a *nodal, FieldData_a *cc, Set_a *neededVars) {
    *native = *nodal = *cc = nullptr;
    if (var < 0 || (!needNodal && !needCC) || !isUsableVar(dataSet, zone, var)) return true;
    if (neededVars != nullptr) return AddToSet(neededVars, var, true);
    FieldData_a fieldData = GetReadableNativeFieldDataPtr(dataSet, zone, var);
    if (fieldData == nullptr) return false;
    *native = fieldData;
    const bool isNodal = fieldData->Location == ValueLocation_Nodal;
    FieldData_a derived = nullptr;
    if ((isNodal && needCC) || (!isNodal && needNodal)) {
        if (derivedList != nullptr) {
            FrameZoneListEnsureSize(derivedList, dataSet->NumZones, dataSet->NumVars);
            derived = isNodal ? GetReadableCCFieldDataPtr(dataSet, derivedList, zone, var)
                              : GetReadableNLFieldDataPtr(dataSet, derivedList, zone, var);
            if (derived == nullptr) return false;
        }
    }
    *nodal = isNodal ? fieldData : derived;
    *cc = isNodal ? derived : fieldData;
    return true;
}

namespace {

struct RoleNeeds {
    bool Nodal, CC;
};

bool assignRole(const ZoneSetupInput_s *input, CZData_s *czData, CZVar_e role, int var, RoleNeeds needs) {
    if (var < 0) return true;
    return SetupAndAssignNativeAndDerivedVar(input->DataSet, input->DerivedList, input->Zone, EntIndex_t(var),
                                             needs.Nodal, needs.CC, &czData->Native[role], &czData->Nodal[role],
                                             &czData->CC[role], input->NeededVars);
}

bool isMultiColorCode(int color) {
    return color == 65535 || color == 65533 || color == 65532 || color == 65531 || color == 65530;
}

// The field map's surfaces-to-plot as each kind of object can show it.
void normaliseSurfacesToPlot(CZInfo_s *czInfo, const CZData_s *czData) {
    if (czInfo->FieldMap == nullptr) return;
    int &surfaces = czInfo->FieldMap->Surfaces.SurfacesToPlot;
    if (czInfo->CZType == CZType_FEBoundaryCOB || (czInfo->IsFE && IsFEVolumeType(czInfo->ZoneType))) {
        if (surfaces != SurfacesToPlot_BoundaryFaces && surfaces != SurfacesToPlot_ExposedCellFaces &&
            surfaces != SurfacesToPlot_All)
            surfaces = SurfacesToPlot_ExposedCellFaces;
    } else if (czInfo->IsFE) {
        surfaces = SurfacesToPlot_KPlanes;
    } else if (czInfo->ZoneRank != 3) {
        if (surfaces == SurfacesToPlot_BoundaryFaces || surfaces == SurfacesToPlot_ExposedCellFaces ||
            surfaces == SurfacesToPlot_All) {
            ZoneOrder_e order = GetZoneOrder(czData->NumIPts, czData->NumJPts, czData->NumKPts);
            surfaces = order == ZoneOrder_IK   ? SurfacesToPlot_JPlanes
                       : order == ZoneOrder_JK ? SurfacesToPlot_IPlanes
                                               : SurfacesToPlot_KPlanes;
        }
    }
}

void setupColors(const ZoneSetupInput_s *input, CZInfo_s *czInfo, const CZData_s *czData) {
    CZColors_s &colors = czInfo->Colors;
    colors = CZColors_s{};
    const FieldMapStyle_s *fieldMap = czInfo->FieldMap;
    const FieldPlotTypes_s *plotTypes = czInfo->FieldPlotTypes;
    if (fieldMap != nullptr && plotTypes != nullptr) {
        bool hasMesh = plotTypes->ShowMesh && fieldMap->Mesh.Show;
        colors.MeshColor = !hasMesh                            ? ColorNotDrawn
                           : isMultiColorCode(fieldMap->Mesh.Color) ? MultiColorMark
                                                                  : int16_t(fieldMap->Mesh.Color);
        bool lighting = fieldMap->Shade.UseLightingEffect;
        if (plotTypes->ShowShade && fieldMap->Shade.Show) {
            colors.FillColor = int16_t(fieldMap->Shade.Color);
            colors.UseLighting = lighting;
        } else if (hasMesh && fieldMap->Mesh.MeshType == 2) {  // hidden line: fill with the background
            colors.FillColor = int16_t(input->BackgroundColor);
            colors.UseLighting = 0;
        } else {
            colors.FillColor = ColorNotDrawn;
            colors.UseLighting = lighting;
        }
    }
    // Constraints whose variables are nodal, for the primary-value cell mode.
    if (fieldMap == nullptr || fieldMap->Effects.UseValueBlanking) {
        const ValueBlanking_s &value = czInfo->Blanking.Value;
        for (int m = 0; m < MaxBlankingConstraints; m++) {
            const BlankingConstraint_s &constraint = value.Constraint[m];
            if (!value.Include || !constraint.Include) continue;
            bool usesVarB = constraint.ConstraintOp2Mode == 0;
            bool isNodal = nativeLocation(czData->DataSet, czData->Zone, EntIndex_t(constraint.VarA)) ==
                               ValueLocation_Nodal &&
                           (!usesVarB || nativeLocation(czData->DataSet, czData->Zone, EntIndex_t(constraint.VarB)) ==
                                             ValueLocation_Nodal);
            colors.ValueBlankConstraintIsActive[m] = isNodal;
            colors.AnyValueBlankConstraintIsActive = colors.AnyValueBlankConstraintIsActive || isNodal;
        }
    }
}

// Every role, in the fixed order: spatial, blanking, scatter size, contour groups, node label,
// cell label, RGB, vector. Which view a role needs follows from the style copies.
bool assignVariables(const ZoneSetupInput_s *input, CZInfo_s *czInfo, CZData_s *czData) {
    DataSet_s *dataSet = input->DataSet;
    EntIndex_t zone = input->Zone;
    const FieldMapStyle_s *fieldMap = czInfo->FieldMap;
    const FieldPlotTypes_s *plotTypes = czInfo->FieldPlotTypes;
    const bool isVolume = czInfo->ZoneRank == 3 || (czInfo->IsFE && IsFEVolumeType(czInfo->ZoneType));
    const int pointsToPlot = fieldMap != nullptr ? fieldMap->Points.PointsToPlot : PointsToPlot_SurfaceNodes;
    const bool atCellCenters =
        pointsToPlot == PointsToPlot_SurfaceCellCenters || pointsToPlot == PointsToPlot_AllCellCenters;
    const bool hasStyle = fieldMap != nullptr && plotTypes != nullptr;
    const bool scatterShown = hasStyle && plotTypes->ShowScatter && fieldMap->Scatter.Show;
    const bool vectorShown = hasStyle && plotTypes->ShowVector && fieldMap->Vector.Show;
    const bool contourShown = hasStyle && plotTypes->ShowContour && fieldMap->Contour.Show && czInfo->ZoneRank != 1;
    const DataLabels_s &labels = czInfo->GlobalScatter.DataLabels;
    const bool cellLabelShown = plotTypes != nullptr && labels.ShowCellLabels && labels.CellLabelType != 0;
    const bool nodeLabelShown = plotTypes != nullptr && labels.ShowNodeLabels && labels.NodeLabelType != 0;

    // Spatial.
    bool spatialCC = isVolume && (scatterShown || vectorShown || cellLabelShown) &&
                     pointsToPlot == PointsToPlot_AllCellCenters;
    const int spatialVars[3] = {input->XVar, input->YVar, input->ZVar};
    for (int axis = 0; axis < 3; axis++) {
        if (!assignRole(input, czData, CZVar_e(CZVar_X + axis), spatialVars[axis], {true, spatialCC})) return false;
        czData->Nodal[CZVar_DrawX + axis] = czData->Nodal[CZVar_X + axis];
        czData->CC[CZVar_DrawX + axis] = czData->CC[CZVar_X + axis];
    }

    // Value-blanking operands, at their own location.
    if (IsZoneOrCOBValueBlankingActive(czInfo)) {
        for (int m = 0; m < MaxBlankingConstraints; m++) {
            const BlankingConstraint_s &constraint = czInfo->Blanking.Value.Constraint[m];
            if (!constraint.Include) continue;
            int operands[2] = {constraint.VarA, constraint.ConstraintOp2Mode == 0 ? constraint.VarB : -1};
            for (int n = 0; n < 2; n++) {
                if (!isUsableVar(dataSet, zone, operands[n])) continue;
                bool isNodal = nativeLocation(dataSet, zone, EntIndex_t(operands[n])) == ValueLocation_Nodal;
                CZVar_e role = CZVar_e((n == 0 ? CZVar_BlankA : CZVar_BlankB) + m);
                if (!assignRole(input, czData, role, operands[n], {isNodal, !isNodal})) return false;
            }
        }
    }

    if (scatterShown && fieldMap->Scatter.SizeByVariable &&
        !assignRole(input, czData, CZVar_ScatterSize, czInfo->GlobalScatter.Var, {!atCellCenters, atCellCenters}))
        return false;

    // Contour groups: a group is used by the lines or the flood of this map.
    if (contourShown && input->GlobalContour != nullptr) {
        const ContourLayer_s &contour = fieldMap->Contour;
        const bool hasLines = contour.ContourType == 0 || contour.ContourType == 2;
        const bool hasFlood = contour.ContourType != 0;
        for (int group = 0; group < MaxContourGroups; group++) {
            bool used = (hasLines && contour.LineContourGroup == group) || (hasFlood && contour.FloodColoring == group + 1);
            int var = input->GlobalContour[group].Var;
            if (!used || !isUsableVar(dataSet, zone, var)) continue;
            bool isNodal = nativeLocation(dataSet, zone, EntIndex_t(var)) == ValueLocation_Nodal;
            bool needCC = ((scatterShown || vectorShown) && atCellCenters) ||
                          (hasFlood && contour.ContourType == 4 && isNodal);
            if (!assignRole(input, czData, CZVar_e(CZVar_Contour + group), var, {true, needCC})) return false;
        }
    }

    if (nodeLabelShown && !assignRole(input, czData, CZVar_NodeLabel, labels.NodeLabelVar, {true, false}))
        return false;
    if (cellLabelShown) {
        if (!assignRole(input, czData, CZVar_CellLabel, labels.CellLabelVar, {false, true})) return false;
        czData->Nodal[CZVar_CellLabel] = nullptr;  // a cell label is read at cells only
    }

    if (contourShown && fieldMap->Contour.FloodColoring == 0 && fieldMap->Contour.ContourType != 0) {
        for (int channel = 0; channel < 3; channel++)
            if (!assignRole(input, czData, CZVar_e(CZVar_R + channel), input->RGBVars[channel], {true, false}))
                return false;
    }

    if (vectorShown) {
        const GlobalVector_s &vector = czInfo->Is3D ? czInfo->Vector3D : czInfo->Vector2D;
        bool atNodes = pointsToPlot == PointsToPlot_SurfaceNodes || pointsToPlot == PointsToPlot_AllNodes ||
                       pointsToPlot == PointsToPlot_AllConnected;
        const int components[3] = {vector.UVar, vector.VVar, czInfo->Is3D ? vector.WVar : -1};
        for (int c = 0; c < 3; c++)
            if (!assignRole(input, czData, CZVar_e(CZVar_U + c), components[c], {atNodes, atCellCenters}))
                return false;
    }
    return true;
}

void applyApproximateSkips(const CZInfo_s *czInfo, CZData_s *czData) {
    const int pointsToPlot =
        czInfo->FieldMap != nullptr ? czInfo->FieldMap->Points.PointsToPlot : PointsToPlot_SurfaceNodes;
    if (!czInfo->IsFE) {
        GetReducedIndexSkipByRatio(czInfo, czData->NumIPts, czData->NumJPts, czData->NumKPts, IndexSkipMode_Surfaces,
                                   &czData->ISkip, &czData->JSkip, &czData->KSkip);
        if (pointsToPlot == PointsToPlot_SurfaceNodes || pointsToPlot == PointsToPlot_AllNodes ||
            pointsToPlot == PointsToPlot_AllCellCenters) {
            GetReducedIndexSkipByRatio(czInfo, czData->NumIPts, czData->NumJPts, czData->NumKPts,
                                       IndexSkipMode_Points, &czData->PointISkip, &czData->PointJSkip,
                                       &czData->PointKSkip);
        } else {
            czData->PointISkip = czData->ISkip;
            czData->PointJSkip = czData->JSkip;
            czData->PointKSkip = czData->KSkip;
        }
    } else if (IsFEVolumeType(czInfo->ZoneType)) {
        LgIndex_t unused1, unused2;
        GetReducedIndexSkipByRatio(czInfo, czData->NumPoints, 1, 1, IndexSkipMode_Points, &czData->ISkip, &unused1,
                                   &unused2);
        GetReducedIndexSkipByRatio(czInfo, czData->NumCells, 1, 1, IndexSkipMode_Points, &czData->JSkip, &unused1,
                                   &unused2);
        czData->PointISkip = czData->ISkip;
        czData->PointJSkip = czData->JSkip;
    } else {
        // A surface whose cells all stand alone gives the reduction nothing to merge: plain skips.
        // Every other FE surface waits for the surface approximation and keeps all its cells.
        const FaceNeighbor_s *faceNeighbor = czData->FaceNeighbors;
        int facesPerElement = GetFacesPerElement(czInfo->ZoneType, 0, 0, 0);
        if (faceNeighbor != nullptr && faceNeighbor->AutoGen != nullptr &&
            int64_t(faceNeighbor->AutoGen->NumBoundaryFaces) == int64_t(czData->NumCells) * facesPerElement) {
            double fraction = GeneralBase.Interface.PercentageOfPointsToKeep;
            LgIndex_t skip = fraction > 0.0 ? LgIndex_t(std::max(1.0, std::ceil(1.0 / fraction))) : 1;
            czData->ISkip = czData->JSkip = skip;
            czData->KSkip = 1;
            czData->PointISkip = czData->PointJSkip = skip;
            czData->PointKSkip = 1;
        }
    }
}

}  // namespace

bool SetupZone(const ZoneSetupInput_s *input, bool applySkip, bool forHardware, CZInfo_s **czInfo,
               CZData_s **czData) {
    REQUIRE(input != nullptr && input->DataSet != nullptr && czInfo != nullptr && czData != nullptr);
    (void)forHardware;  // hardware and software walks share one set-up until the device layer differs
    *czInfo = nullptr;
    *czData = nullptr;
    DataSet_s *dataSet = input->DataSet;
    const EntIndex_t zone = input->Zone;
    CZInfo_s *info = new (std::nothrow) CZInfo_s;
    if (info == nullptr) {
        OutOfMemoryMsg();
        return false;
    }
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    info->CZType = CZType_Zone;
    if (input->FieldLayers != nullptr) {
        const FieldLayers_s &layers = *input->FieldLayers;
        info->FieldPlotTypes = new (std::nothrow) FieldPlotTypes_s{
            layers.ShowMesh, layers.ShowContour, layers.ShowVector, layers.ShowScatter,
            layers.ShowShade, layers.ShowEdge,   layers.UseLightingEffect, layers.UseTranslucency};
    }
    if (input->FieldMap != nullptr) info->FieldMap = new (std::nothrow) FieldMapStyle_s(*input->FieldMap);
    CZData_s *data = nullptr;
    if ((input->FieldLayers != nullptr && info->FieldPlotTypes == nullptr) ||
        (input->FieldMap != nullptr && info->FieldMap == nullptr)) {
        OutOfMemoryMsg();
        ReleaseSetupZoneOrCOB(&info, &data);
        return false;
    }
    if (input->Vector2D != nullptr) info->Vector2D = *input->Vector2D;
    if (input->Vector3D != nullptr) info->Vector3D = *input->Vector3D;
    if (input->GlobalScatter != nullptr) info->GlobalScatter = *input->GlobalScatter;
    if (input->Blanking != nullptr) info->Blanking = *input->Blanking;
    info->IsIJKBlankZone = info->Blanking.IJK.Zone == zone;
    info->ZoneType = spec->Type;
    info->ZoneRank = int16_t(GetZoneRank(dataSet, zone));
    info->IsFE = info->ZoneRank == 0;
    info->OptInfo = input->OptInfo;
    info->Is3D = input->Is3D;
    info->ActiveZones = input->ActiveZones;
    info->StripSize = input->StripSize;

    char label[64];
    snprintf(label, sizeof label, "zone %d's", zone + 1);
    if (!SetupCZData(dataSet, zone, label, &data)) {
        ReleaseSetupZoneOrCOB(&info, &data);
        return false;
    }
    normaliseSurfacesToPlot(info, data);
    if (!assignVariables(input, info, data)) {
        ReleaseSetupZoneOrCOB(&info, &data);
        return false;
    }
    setupColors(input, info, data);

    // State arrays, when some blanking that they record is on and a blanking layer fills them.
    bool wantsStates = IsZoneOrCOBValueBlankingActive(info) || IsZoneOrCOBIJKBlankingActive(info);
    if (wantsStates && input->NeededVars == nullptr && CZBlankingHooks.UpdateZoneOrCOBBlankedStates != nullptr) {
        ZoneData_s *zoneData = GetZoneData(dataSet, zone);
        bool isOk;
        {
            MutexLock zoneLock(zoneData->Mutex);
            isOk = CZDataAllocStateArrays(info, data);
        }
        isOk = isOk && CZBlankingHooks.UpdateZoneOrCOBBlankedStates(info, data);
        if (!isOk) {
            ReleaseSetupZoneOrCOB(&info, &data);
            return false;
        }
        data->BlankingActive = true;
    }

    if (applySkip) {
        applyApproximateSkips(info, data);
        data->IsApprox = true;
    }
    // The state arrays describe single cells; a skipped ordered walk can't use them.
    if (!info->IsFE && (data->ISkip != 1 || data->JSkip != 1 || data->KSkip != 1)) data->BlankingActive = false;

    *czInfo = info;
    *czData = data;
    return true;
}

void ReleaseSetupZoneOrCOB(CZInfo_s **czInfo, CZData_s **czData) {
    if (czData != nullptr) ReleaseSetupData(czData);
    if (czInfo != nullptr && *czInfo != nullptr) {
        delete (*czInfo)->FieldPlotTypes;
        delete (*czInfo)->FieldMap;
        delete *czInfo;
        *czInfo = nullptr;
    }
}

// ---- approximate skips ------------------------------------------------------------------------

void GetReducedIndexSkipByRatio(const CZInfo_s *czInfo, LgIndex_t numI, LgIndex_t numJ, LgIndex_t numK,
                                IndexSkipMode_e mode, LgIndex_t *iSkip, LgIndex_t *jSkip, LgIndex_t *kSkip) {
    double fraction = GeneralBase.Interface.PercentageOfPointsToKeep;
    double base = fraction > 0.0 ? 1.0 / fraction : 1.0;
    // Integer thirds: a direction of three points or fewer is never skipped.
    LgIndex_t limits[3] = {(numI - 1) / 3, (numJ - 1) / 3, (numK - 1) / 3};
    double dims[3] = {double(numI), double(numJ), double(numK)};

    if (mode == IndexSkipMode_Surfaces && numI > 1 && numJ > 1 && numK >= 2) {
        // Rank by the points the drawn planes hold: a direction whose planes are many weighs more.
        double planes[3] = {2, 2, 2};
        int surfaces = czInfo != nullptr && czInfo->FieldMap != nullptr ? czInfo->FieldMap->Surfaces.SurfacesToPlot
                                                                        : SurfacesToPlot_BoundaryFaces;
        if (surfaces == SurfacesToPlot_All) {
            planes[0] = numI;
            planes[1] = numJ;
            planes[2] = numK;
        } else if (surfaces >= SurfacesToPlot_IPlanes && surfaces <= SurfacesToPlot_IJKPlanes) {
            static constexpr bool uses[7][3] = {{true, false, false}, {false, true, false}, {false, false, true},
                                                {true, true, false},  {false, true, true},  {true, false, true},
                                                {true, true, true}};
            const IndexRange_s *ranges[3] = {&czInfo->FieldMap->Surfaces.IRange, &czInfo->FieldMap->Surfaces.JRange,
                                             &czInfo->FieldMap->Surfaces.KRange};
            const LgIndex_t counts[3] = {numI, numJ, numK};
            for (int d = 0; d < 3; d++) {
                planes[d] = 0;
                if (!uses[surfaces - SurfacesToPlot_IPlanes][d]) continue;
                IndexRange_s range = GetZeroBasedIndexRange(*ranges[d], counts[d]);
                planes[d] = (range.Max - range.Min) / range.Skip + 1;
            }
        }
        double ranked[3] = {numI * (planes[2] + planes[1]), numJ * (planes[2] + planes[0]),
                            numK * (planes[0] + planes[1])};
        for (int d = 0; d < 3; d++) {
            dims[d] = std::max(ranked[d], 1.0);
            limits[d] = LgIndex_t(std::min<double>(limits[d], dims[d]));
        }
    }

    // Smallest first; among equals K, then J, then I.
    int order[3] = {2, 1, 0};
    std::stable_sort(order, order + 3, [&](int a, int b) { return dims[a] < dims[b]; });
    double skips[3];
    auto clampSkip = [](double wanted, LgIndex_t limit) { return std::trunc(std::max(1.0, std::min(wanted, double(limit)))); };
    skips[order[0]] = clampSkip(std::cbrt(base), limits[order[0]]);
    skips[order[1]] = clampSkip(std::sqrt(base / skips[order[0]]), limits[order[1]]);
    skips[order[2]] = clampSkip(base / (skips[order[0]] * skips[order[1]]), limits[order[2]]);
    *iSkip = LgIndex_t(skips[0]);
    *jSkip = LgIndex_t(skips[1]);
    *kSkip = LgIndex_t(skips[2]);
}

// ---- blanking seam ----------------------------------------------------------------------------

bool IsZoneOrCOBValueBlankingActive(const CZInfo_s *czInfo) {
    const ValueBlanking_s &value = czInfo->Blanking.Value;
    if (!value.Include) return false;
    if (czInfo->FieldMap != nullptr && !czInfo->FieldMap->Effects.UseValueBlanking) return false;
    for (const BlankingConstraint_s &constraint : value.Constraint)
        if (constraint.Include) return true;
    return false;
}

bool IsZoneOrCOBIJKBlankingActive(const CZInfo_s *czInfo) {
    return czInfo->Blanking.IJK.Include && czInfo->IsIJKBlankZone && !czInfo->IsFE;
}

bool IsZoneOrCOBDepthBlankingActive(const CZInfo_s *czInfo) { return czInfo->Blanking.Depth.Include && czInfo->Is3D; }

namespace {

// The corners of a cell as a plane or a whole cell: up to eight.
int cellCorners(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t cell, IJKPlanes_e plane,
                LgIndex_t corners[8]) {
    if (czInfo->IsFE) {
        int count = czData->NodeMap->NodesPerElement;
        for (int c = 0; c < count; c++) corners[c] = NodeMapGetNode(czData->NodeMap, cell, c);
        return count;
    }
    LgIndex_t i = cell % czData->NumIPts, j = (cell / czData->NumIPts) % czData->NumJPts, k = cell / czData->NumIJPts;
    LgIndex_t dI, dJ, dK;
    GetOrderedCellSpan(czData, i, j, k, &dI, &dJ, &dK);
    LgIndex_t sJ = czData->NumIPts, sK = czData->NumIJPts;
    LgIndex_t a, b;  // the two in-plane offsets
    switch (plane) {
    case IJKPlanes_I: a = dJ * sJ, b = dK * sK; break;
    case IJKPlanes_J: a = dI, b = dK * sK; break;
    case IJKPlanes_K: a = dI, b = dJ * sJ; break;
    default: {
        LgIndex_t offsets[3] = {dI, dJ * sJ, dK * sK};
        for (int c = 0; c < 8; c++)
            corners[c] = cell + ((c & 1) ? offsets[0] : 0) + ((c & 2) ? offsets[1] : 0) + ((c & 4) ? offsets[2] : 0);
        return 8;
    }
    }
    corners[0] = cell;
    corners[1] = cell + a;
    corners[2] = cell + a + b;
    corners[3] = cell + b;
    return 4;
}

CellBlankedCond_e condFromCorners(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t cell, IJKPlanes_e plane,
                                  bool useValue, bool useIJK, bool useDepth) {
    LgIndex_t corners[8];
    int count = cellCorners(czInfo, czData, cell, plane, corners);
    uint8_t mask = uint8_t((useValue ? PointState_ValueBlanked : 0) | (useIJK ? PointState_IJKBlanked : 0));
    int blanked = 0;
    for (int c = 0; c < count; c++) {
        bool isBlanked = czData->PointState != nullptr && (czData->PointState[corners[c]] & mask) != 0;
        if (!isBlanked && useDepth) isBlanked = CZBlankingHooks.IsPointDepthBlanked(czInfo, czData, corners[c]);
        blanked += isBlanked;
    }
    return blanked == 0       ? CellBlankedCond_NotBlanked
           : blanked == count ? CellBlankedCond_EntirelyBlanked
                              : CellBlankedCond_PartiallyBlanked;
}

CellBlankedCond_e defaultCellCond(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t cell, IJKPlanes_e plane,
                                  bool useValue, bool useIJK, bool useDepth) {
    if (!czData->BlankingActive) {
        useValue = useIJK = false;
        if (!useDepth) return CellBlankedCond_NotBlanked;
    }
    bool described = czData->ElemState != nullptr && plane == czData->ElemStatePlane &&
                     (czInfo->IsFE ? plane == IJKPlanes_None : plane != IJKPlanes_None);
    if (described) {
        uint8_t state = czData->ElemState[cell];
        int cond = 0;
        if (useValue) cond = state & ElemState_CondMask;
        if (cond < 2 && useIJK && (state & ElemState_IJKBlanked) != 0) cond = 2;
        if (cond < 2 && useDepth && condFromCorners(czInfo, czData, cell, plane, false, false, true) != 0) cond = 2;
        return CellBlankedCond_e(cond);
    }
    return condFromCorners(czInfo, czData, cell, plane, useValue, useIJK, useDepth);
}

CellBlankedCond_e defaultSurfaceCellCond(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t cell,
                                         IJKPlanes_e plane, bool useValue, bool useIJK, bool useDepth) {
    return defaultCellCond(czInfo, czData, cell, plane, useValue, useIJK, useDepth);
}

CellBlankedCond_e defaultVolumeCellCond(const CZInfo_s *czInfo, const CZData_s *czData, LgIndex_t cell, bool useValue,
                                        bool useIJK, bool useDepth) {
    return defaultCellCond(czInfo, czData, cell, czInfo->IsFE ? IJKPlanes_None : IJKPlanes_Volume, useValue, useIJK,
                           useDepth);
}

CellBlankedCond_e defaultSubZoneCond(const CZInfo_s *, const CZData_s *, LgIndex_t, bool useValue, bool useIJK,
                                     bool useDepth) {
    return useValue || useIJK || useDepth ? CellBlankedCond_Uncertain : CellBlankedCond_NotBlanked;
}

bool defaultIsPointDepthBlanked(const CZInfo_s *, const CZData_s *, LgIndex_t) { return false; }

}  // namespace

CZBlankingHooks_s CZBlankingHooks = {defaultSurfaceCellCond, defaultVolumeCellCond, defaultSubZoneCond,
                                     defaultIsPointDepthBlanked, nullptr};

void ResetCZBlankingHooks() {
    CZBlankingHooks = CZBlankingHooks_s{defaultSurfaceCellCond, defaultVolumeCellCond, defaultSubZoneCond,
                                        defaultIsPointDepthBlanked, nullptr};
}
