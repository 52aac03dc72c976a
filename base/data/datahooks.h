// The data set's calls into the layers above it (frames, computed objects, picks, face
// neighbours, derived variables, state changes). Each is a function pointer with a default that
// does nothing (or answers as if nothing above existed); the layer that owns the work replaces it
// when it starts. This keeps the data layer free of includes of higher layers.
#pragma once

#include "base/kernel/types.h"

struct DataSet_s;
struct Set_a;

struct DataSetHooks_s {
    // The data set of the current frame, or null.
    DataSet_s *(*CurrentDataSet)();
    // Attaches a new data set to the current frame (making it the frame's data set).
    bool (*AttachDataSetToCurFrame)(DataSet_s *dataSet, bool resetStyle);
    // Visits the data sets of the frames in stack order, once per frame that has one; stops
    // when the visitor returns false.
    void (*VisitFrameDataSets)(bool (*visitor)(DataSet_s *dataSet, void *clientData), void *clientData);
    // Every frame with this data set takes a new zone into its style; all or nothing.
    bool (*IncorporateZoneIntoFrameStyle)(DataSet_s *dataSet, EntIndex_t zone);
    // Every frame with this data set drops a zone from its style (field maps, time steps).
    void (*FrameStyleDeleteZone)(DataSet_s *dataSet, EntIndex_t zone);
    // Every frame with this data set drops a variable (its derived values and assignments).
    void (*FrameStyleDeleteVar)(DataSet_s *dataSet, EntIndex_t var);
    void (*ActivateFieldMapsForNewZonesAdded)(DataSet_s *dataSet);
    void (*ResetScratchFlagsOnDataSetChange)(DataSet_s *dataSet);
    void (*InvalidateCOBsOnZoneChange)(DataSet_s *dataSet, EntIndex_t zone);
    void (*InvalidateCOBsOnVarChange)(DataSet_s *dataSet);
    void (*InvalidateDerivedVar)(DataSet_s *dataSet, EntIndex_t zone, EntIndex_t var);
    void (*BranchNodeNormalCache)(DataSet_s *dataSet, EntIndex_t zone);
    // Picked objects of a zone are unpicked and higher zone numbers lowered.
    void (*PickZoneDeleted)(DataSet_s *dataSet, EntIndex_t zone);
    void (*FaceNeighborAdjustUserDefAfterZoneAdjustment)(DataSet_s *dataSet, EntIndex_t zone, int delta);
    // The frame's axis variables (X, Y and, in 3D, Z); returns how many.
    int (*GetAxisVars)(EntIndex_t vars[3]);
    bool (*PlotTypeIs3D)();
    bool (*IsDataSetMarkingSuspendedByAddOn)();
    bool (*IsDisruptiveAddOnCallRunning)();
    bool (*IsProcessingLayout)();
};

extern DataSetHooks_s DataSetHooks;

// Puts every hook back to its default.
void ResetDataSetHooks();
