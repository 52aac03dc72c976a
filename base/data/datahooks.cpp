#include "base/data/datahooks.h"

#include "base/kernel/globals.h"

namespace {

DataSet_s *noDataSet() { return nullptr; }
bool refuseAttach(DataSet_s *, bool) { return false; }
void noFrames(bool (*)(DataSet_s *, void *), void *) {}
bool acceptZone(DataSet_s *, EntIndex_t) { return true; }
void ignoreZone(DataSet_s *, EntIndex_t) {}
void ignoreDataSet(DataSet_s *) {}
void ignoreVar(DataSet_s *, EntIndex_t) {}
void ignoreZoneVar(DataSet_s *, EntIndex_t, EntIndex_t) {}
void ignoreAdjust(DataSet_s *, EntIndex_t, int) {}
// Until frames assign axis variables, the first three variables are the axes.
int firstThreeVars(EntIndex_t vars[3]) {
    vars[0] = 0;
    vars[1] = 1;
    vars[2] = 2;
    return 3;
}
bool no() { return false; }
bool processingLayout() { return IsProcessingLayout; }

}  // namespace

DataSetHooks_s DataSetHooks;

void ResetDataSetHooks() {
    DataSetHooks.CurrentDataSet = noDataSet;
    DataSetHooks.AttachDataSetToCurFrame = refuseAttach;
    DataSetHooks.VisitFrameDataSets = noFrames;
    DataSetHooks.IncorporateZoneIntoFrameStyle = acceptZone;
    DataSetHooks.FrameStyleDeleteZone = ignoreZone;
    DataSetHooks.FrameStyleDeleteVar = ignoreVar;
    DataSetHooks.ActivateFieldMapsForNewZonesAdded = ignoreDataSet;
    DataSetHooks.ResetScratchFlagsOnDataSetChange = ignoreDataSet;
    DataSetHooks.InvalidateCOBsOnZoneChange = ignoreZone;
    DataSetHooks.InvalidateCOBsOnVarChange = ignoreDataSet;
    DataSetHooks.InvalidateDerivedVar = ignoreZoneVar;
    DataSetHooks.BranchNodeNormalCache = ignoreZone;
    DataSetHooks.PickZoneDeleted = ignoreZone;
    DataSetHooks.FaceNeighborAdjustUserDefAfterZoneAdjustment = ignoreAdjust;
    DataSetHooks.GetAxisVars = firstThreeVars;
    DataSetHooks.PlotTypeIs3D = no;
    DataSetHooks.IsDataSetMarkingSuspendedByAddOn = no;
    DataSetHooks.IsDisruptiveAddOnCallRunning = no;
    DataSetHooks.IsProcessingLayout = processingLayout;
}

// The hooks hold their defaults from the start, before any code runs.
static const bool hooksReady = (ResetDataSetHooks(), true);
