// Simple averages between locations. Nodal from cell-centred: a node takes the mean of the cells
// around it (FE: of the elements that hold it, a repeated node counting once per element).
// Cell-centred from nodal: a cell takes the mean of its distinct corners. Ordered cell values
// stand at their lowest corner (the ghost layout), so both directions index cells by i + j*I + k*I*J.
#include "base/data/derived.h"

#include <algorithm>

#include "base/data/dataload.h"
#include "base/kernel/errors.h"
#include "base/kernel/orvassert.h"

namespace {

FieldDataType_e derivedType(FieldDataType_e native) {
    return native == FieldDataType_Double || native == FieldDataType_LongInt ? FieldDataType_Double
                                                                             : FieldDataType_Float;
}

DerivedVarSlot_s *slotOf(const FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var) {
    if (list == nullptr || zone < 0 || size_t(zone) >= list->Zones.size()) return nullptr;
    auto &row = const_cast<std::vector<DerivedVarSlot_s> &>(list->Zones[size_t(zone)]);
    return var >= 0 && size_t(var) < row.size() ? &row[size_t(var)] : nullptr;
}

void releaseSlot(DerivedVarSlot_s &slot) {
    FieldDataDealloc(&slot.FieldData, false);
    Thread_FreeMutex(&slot.Mutex);
}

// The distinct nodes of an element (a collapsed element repeats nodes).
int distinctNodes(NodeMap_a nodeMap, LgIndex_t element, LgIndex_t nodes[8]) {
    int count = 0;
    for (int c = 0; c < nodeMap->NodesPerElement; c++) {
        LgIndex_t node = NodeMapGetNode(nodeMap, element, c);
        if (std::find(nodes, nodes + count, node) == nodes + count) nodes[count++] = node;
    }
    return count;
}

}  // namespace

FrameZoneList_s *FrameZoneListAlloc() { return new FrameZoneList_s(); }

void FrameZoneListDealloc(FrameZoneList_s **list) {
    if (*list == nullptr) return;
    for (auto &row : (*list)->Zones)
        for (auto &slot : row) releaseSlot(slot);
    delete *list;
    *list = nullptr;
}

void FrameZoneListEnsureSize(FrameZoneList_s *list, EntIndex_t numZones, EntIndex_t numVars) {
    if (list->Zones.size() < size_t(numZones)) list->Zones.resize(size_t(numZones));
    for (auto &row : list->Zones)
        if (row.size() < size_t(numVars)) row.resize(size_t(numVars));
}

void FrameZoneListDeleteZone(FrameZoneList_s *list, EntIndex_t zone) {
    if (size_t(zone) >= list->Zones.size()) return;
    for (auto &slot : list->Zones[size_t(zone)]) releaseSlot(slot);
    list->Zones.erase(list->Zones.begin() + zone);
}

void FrameZoneListDeleteVar(FrameZoneList_s *list, EntIndex_t var) {
    for (auto &row : list->Zones) {
        if (size_t(var) >= row.size()) continue;
        releaseSlot(row[size_t(var)]);
        row.erase(row.begin() + var);
    }
}

void FrameZoneListInvalidate(FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var) {
    if (list == nullptr || size_t(zone) >= list->Zones.size()) return;
    auto &row = list->Zones[size_t(zone)];
    for (size_t v = 0; v < row.size(); v++)
        if (var < 0 || v == size_t(var)) FieldDataDealloc(&row[v].FieldData, false);
}

FieldData_a GetDerivedFieldDataPtr(const FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var) {
    DerivedVarSlot_s *slot = slotOf(list, zone, var);
    return slot != nullptr ? slot->FieldData : nullptr;
}

void SetDerivedFieldDataPtr(FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var, FieldData_a fieldData) {
    DerivedVarSlot_s *slot = slotOf(list, zone, var);
    REQUIRE(slot != nullptr);
    FieldDataDealloc(&slot->FieldData, false);
    slot->FieldData = fieldData;
}

void DeriveNodalFromCellCentered(const ZoneSpec_s *spec, NodeMap_a nodeMap, FieldData_a cellCentered,
                                 FieldData_a nodal) {
    if (ZoneTypeIsFE(spec->Type)) {
        std::vector<double> sums(size_t(nodal->NumValues), 0.0);
        std::vector<int32_t> counts(size_t(nodal->NumValues), 0);
        LgIndex_t nodes[8];
        for (LgIndex_t e = 0; nodeMap != nullptr && e < nodeMap->NumElements; e++) {
            double value = GetFieldValue(cellCentered, e);
            int count = distinctNodes(nodeMap, e, nodes);
            for (int n = 0; n < count; n++) {
                if (nodes[n] < 0 || nodes[n] >= nodal->NumValues) continue;
                sums[size_t(nodes[n])] += value;
                counts[size_t(nodes[n])]++;
            }
        }
        for (LgIndex_t n = 0; n < nodal->NumValues; n++)
            SetFieldValue(nodal, n, counts[size_t(n)] > 0 ? sums[size_t(n)] / counts[size_t(n)] : 0.0);
        return;
    }
    LgIndex_t dims[3] = {spec->NumPtsI, spec->NumPtsJ, spec->NumPtsK};
    // Cells touching node index p in a direction of dimension d: p-1 and p, within 0..max(d-2, 0).
    auto cellsAt = [](LgIndex_t p, LgIndex_t d, LgIndex_t cells[2]) {
        int count = 0;
        LgIndex_t last = std::max(d - 2, 0);
        if (p - 1 >= 0 && p - 1 <= last) cells[count++] = p - 1;
        if (p <= last && (count == 0 || cells[0] != p)) cells[count++] = p;
        return count;
    };
    int64_t strideJ = dims[0], strideK = int64_t(dims[0]) * dims[1];
    LgIndex_t n = 0;
    for (LgIndex_t k = 0; k < dims[2]; k++)
        for (LgIndex_t j = 0; j < dims[1]; j++)
            for (LgIndex_t i = 0; i < dims[0]; i++, n++) {
                LgIndex_t ci[2], cj[2], ck[2];
                int ni = cellsAt(i, dims[0], ci), nj = cellsAt(j, dims[1], cj), nk = cellsAt(k, dims[2], ck);
                double sum = 0.0;
                for (int a = 0; a < ni; a++)
                    for (int b = 0; b < nj; b++)
                        for (int c = 0; c < nk; c++)
                            sum += GetFieldValue(cellCentered, LgIndex_t(ci[a] + cj[b] * strideJ + ck[c] * strideK));
                SetFieldValue(nodal, n, sum / (ni * nj * nk));
            }
}

void DeriveCellCenteredFromNodal(const ZoneSpec_s *spec, NodeMap_a nodeMap, FieldData_a nodal,
                                 FieldData_a cellCentered) {
    if (ZoneTypeIsFE(spec->Type)) {
        LgIndex_t nodes[8];
        for (LgIndex_t e = 0; nodeMap != nullptr && e < nodeMap->NumElements && e < cellCentered->NumValues; e++) {
            int count = distinctNodes(nodeMap, e, nodes);
            double sum = 0.0;
            for (int n = 0; n < count; n++) sum += GetFieldValue(nodal, nodes[n]);
            SetFieldValue(cellCentered, e, count > 0 ? sum / count : 0.0);
        }
        return;
    }
    LgIndex_t dims[3] = {spec->NumPtsI, spec->NumPtsJ, spec->NumPtsK};
    LgIndex_t cells[3] = {std::max(dims[0] - 1, 1), std::max(dims[1] - 1, 1), std::max(dims[2] - 1, 1)};
    int64_t strideJ = dims[0], strideK = int64_t(dims[0]) * dims[1];
    // In a direction with one point the cell is a single plane: one corner, not two.
    int corners[3] = {dims[0] > 1 ? 2 : 1, dims[1] > 1 ? 2 : 1, dims[2] > 1 ? 2 : 1};
    for (LgIndex_t k = 0; k < cells[2]; k++)
        for (LgIndex_t j = 0; j < cells[1]; j++)
            for (LgIndex_t i = 0; i < cells[0]; i++) {
                int64_t index = i + j * strideJ + k * strideK;
                if (index >= cellCentered->NumValues) continue;
                double sum = 0.0;
                for (int c = 0; c < corners[2]; c++)
                    for (int b = 0; b < corners[1]; b++)
                        for (int a = 0; a < corners[0]; a++)
                            sum += GetFieldValue(nodal, LgIndex_t(index + a + b * strideJ + c * strideK));
                SetFieldValue(cellCentered, LgIndex_t(index), sum / (corners[0] * corners[1] * corners[2]));
            }
}

bool UpdateDerivedVar(DataSet_s *dataSet, FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var) {
    DerivedVarSlot_s *slot = slotOf(list, zone, var);
    REQUIRE(slot != nullptr);
    ZoneData_s *zoneData = GetZoneData(dataSet, zone);
    {
        // The zone's mutex guards only the making of the slot's own mutex.
        MutexLock zoneLock(zoneData->Mutex);
        if (slot->Mutex == nullptr && !Thread_InitMutex(&slot->Mutex)) return false;
    }
    MutexLock slotLock(slot->Mutex);
    if (slot->FieldData != nullptr) return true;
    FieldData_a native = GetReadableNativeFieldDataPtr(dataSet, zone, var);
    if (native == nullptr) return false;
    const ZoneSpec_s *spec = GetZoneSpec(dataSet, zone);
    bool toNodal = native->Location == ValueLocation_CellCentered;
    ValueLocation_e location = toNodal ? ValueLocation_Nodal : ValueLocation_CellCentered;
    FieldData_a derived = FieldDataAlloc();
    bool ok = derived != nullptr &&
              FieldDataDefineData(derived, LgIndex_t(CalcNumValuesNeededAt(spec, location)), derivedType(native->Type),
                                  location) &&
              FieldDataAllocData(derived, false);
    if (!ok) {
        FieldDataDealloc(&derived, false);
        if (toNodal)
            ErrMsg("Not enough memory is available to derive node located values for variable %d of zone %d.",
                   var + 1, zone + 1);
        else
            ErrMsg("Not enough memory is available to derive values for variable %d of zone %d.", var + 1, zone + 1);
        return false;
    }
    FieldDataZeroNewStorage(derived);
    if (toNodal)
        DeriveNodalFromCellCentered(spec, zoneData->NodeMap, native, derived);
    else
        DeriveCellCenteredFromNodal(spec, zoneData->NodeMap, native, derived);
    slot->FieldData = derived;
    return true;
}

FieldData_a GetNLFieldDataPtr(const DataSet_s *dataSet, const FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var) {
    FieldData_a native = GetNativeFieldDataPtr(dataSet, zone, var);
    if (native != nullptr && native->Location == ValueLocation_Nodal) return native;
    return GetDerivedFieldDataPtr(list, zone, var);
}

FieldData_a GetCCFieldDataPtr(const DataSet_s *dataSet, const FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var) {
    FieldData_a native = GetNativeFieldDataPtr(dataSet, zone, var);
    if (native != nullptr && native->Location == ValueLocation_CellCentered) return native;
    return GetDerivedFieldDataPtr(list, zone, var);
}

static FieldData_a readableAt(DataSet_s *dataSet, FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var,
                              ValueLocation_e location) {
    FieldData_a native = GetNativeFieldDataPtr(dataSet, zone, var);
    if (native == nullptr) return nullptr;
    if (native->Location == location) return GetReadableNativeFieldDataPtr(dataSet, zone, var);
    if (!UpdateDerivedVar(dataSet, list, zone, var)) return nullptr;
    FieldData_a derived = GetDerivedFieldDataPtr(list, zone, var);
    derived->LoadGeneration = DataLoadGetCurrentGeneration();
    return FieldDataMakeReadable(derived) ? derived : nullptr;
}

FieldData_a GetReadableNLFieldDataPtr(DataSet_s *dataSet, FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var) {
    return readableAt(dataSet, list, zone, var, ValueLocation_Nodal);
}

FieldData_a GetReadableCCFieldDataPtr(DataSet_s *dataSet, FrameZoneList_s *list, EntIndex_t zone, EntIndex_t var) {
    return readableAt(dataSet, list, zone, var, ValueLocation_CellCentered);
}
