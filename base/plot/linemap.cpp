// Line maps of a frame, and the actions that create, copy and delete them.
// Relies on: dataset (zones and variables that maps name), frame (the current frame), statechg.
#include "base/plot/linemap.h"

#include <memory>
#include <string>
#include <vector>

#include "base/data/dataset.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/errors.h"
#include "base/kernel/set.h"
#include "base/kernel/statechg.h"
#include "base/plot/frame.h"

namespace {

LineMapAttributes_s *lineMapOf(const Frame_s *frame, int map) {
    return IsValidLineMap(frame, map) ? frame->LineMapAttributes[size_t(map)].get() : nullptr;
}

bool varExists(const DataSet_s *dataSet, int var) { return var >= 0 && var < dataSet->NumVars; }

bool lineMapIsValid(const DataSet_s *dataSet, const LineMapStyle_s &style) {
    const LineMapAssign_s &assign = style.Assign;
    if (assign.Zone < 0 || assign.Zone >= dataSet->NumZones || !IsZoneEnabled(dataSet, EntIndex_t(assign.Zone)))
        return false;
    if (!varExists(dataSet, assign.XAxisVar) || !varExists(dataSet, assign.YAxisVar)) return false;
    if (assign.SortVar >= 0 && !varExists(dataSet, assign.SortVar)) return false;
    return style.ErrorBars.Var < 0 || varExists(dataSet, style.ErrorBars.Var);
}

void notifyLineMaps(StateChange_e change) { StateChanged(change, nullptr); }

}  // namespace

LineMapAttributes_s::~LineMapAttributes_s() { AuxDataDealloc(&AuxData); }

int NumLineMaps(const Frame_s *frame) { return frame != nullptr ? int(frame->LineMapAttributes.size()) : 0; }

bool IsValidLineMap(const Frame_s *frame, int map) { return map >= 0 && map < NumLineMaps(frame); }

int AddNewLineMap(Frame_s *frame, const char *name, bool quiet) {
    if (frame == nullptr || frame->DataSet == nullptr) {
        if (!quiet) ErrMsg("No data set. Cannot create new line map.");
        return -1;
    }
    auto attributes = std::make_unique<LineMapAttributes_s>();
    attributes->Style = frame->Style.LineMap;
    if (name != nullptr) attributes->Style.Name = name;
    attributes->UniqueID = GetNextUniqueID();
    frame->LineMapAttributes.push_back(std::move(attributes));
    return NumLineMaps(frame) - 1;
}

void DeleteLineMap(Frame_s *frame, int map) {
    if (!IsValidLineMap(frame, map)) return;
    frame->LineMapAttributes.erase(frame->LineMapAttributes.begin() + map);
    if (frame->ActiveLineMaps != nullptr) DeleteSetMember(frame->ActiveLineMaps, map);
}

void CopyLineMapAttributes(Frame_s *frame, int from, int to) {
    LineMapAttributes_s *source = lineMapOf(frame, from), *target = lineMapOf(frame, to);
    if (source != nullptr && target != nullptr && source != target) target->Style = source->Style;
}

void RemoveInvalidLineMaps(Frame_s *frame) {
    if (frame->DataSet == nullptr) return;
    for (int m = NumLineMaps(frame) - 1; m >= 0; m--)
        if (!lineMapIsValid(frame->DataSet, lineMapOf(frame, m)->Style)) DeleteLineMap(frame, m);
}

bool InitializeLineMapAttrValues(Frame_s *frame) {
    const DataSet_s *dataSet = frame->DataSet;
    if (dataSet == nullptr || NumLineMaps(frame) > 0) return true;
    if (frame->ActiveLineMaps == nullptr && (frame->ActiveLineMaps = AllocSet(false)) == nullptr) return false;
    for (SetIndex_t z = GetNextMember(dataSet->EnabledZones, -1); z >= 0; z = GetNextMember(dataSet->EnabledZones, z)) {
        int map = AddNewLineMap(frame, nullptr, true);
        if (map < 0) return false;
        LineMapStyle_s &style = lineMapOf(frame, map)->Style;
        style.Assign.Zone = int(z);
        style.Assign.XAxisVar = 0;
        style.Assign.YAxisVar = dataSet->NumVars > 1 ? 1 : 0;
        int color = GetZoneSpec(dataSet, EntIndex_t(z))->ZoneColor;
        if (color == -2) color = map % 6 + 1;
        style.Lines.Color = style.Symbols.Color = style.Symbols.FillColor = style.BarCharts.Color =
            style.BarCharts.FillColor = style.ErrorBars.Color = color;
    }
    if (NumLineMaps(frame) > 0 && !AddToSet(frame->ActiveLineMaps, 0, false)) return false;
    return true;
}

Set_a *GetZonesFromActiveLineMaps(const Frame_s *frame) {
    Set_a *zones = AllocSet(false);
    const Set_a *active = frame->ActiveLineMaps;
    for (SetIndex_t m = zones != nullptr && active != nullptr ? GetNextMember(active, -1) : -1; m >= 0;
         m = GetNextMember(active, m)) {
        const LineMapAttributes_s *map = lineMapOf(frame, int(m));
        if (map != nullptr && map->Style.Assign.Zone >= 0 && !AddToSet(zones, map->Style.Assign.Zone, false))
            DeallocSet(&zones);
    }
    return zones;
}

bool SetActiveLineMaps(Frame_s *frame, const Set_a *maps) {
    Set_a *shown = AllocSet(false);
    if (shown == nullptr) return false;
    for (SetIndex_t m = GetNextMember(maps, -1); m >= 0; m = GetNextMember(maps, m))
        if (IsValidLineMap(frame, int(m)) && !AddToSet(shown, m, false)) {
            DeallocSet(&shown);
            return false;
        }
    DeallocSet(&frame->ActiveLineMaps);
    frame->ActiveLineMaps = shown;
    return true;
}

void LineMapsClear(Frame_s *frame) {
    frame->LineMapAttributes.clear();
    DeallocSet(&frame->ActiveLineMaps);
}

void IncorporateZoneIntoLineMaps(Frame_s *, EntIndex_t) {
    // Zone numbers are slots: a new zone moves no other, so maps keep their zones.
}

void FrameStyleDeleteZoneFromLineMaps(Frame_s *frame, EntIndex_t zone) {
    for (int m = NumLineMaps(frame) - 1; m >= 0; m--) {
        LineMapAssign_s &assign = lineMapOf(frame, m)->Style.Assign;
        if (assign.Zone == zone)
            DeleteLineMap(frame, m);
        else if (assign.Zone > zone)
            assign.Zone--;
    }
}

void FrameStyleDeleteVarFromLineMaps(Frame_s *frame, EntIndex_t var) {
    auto shift = [var](int *number) {
        if (*number > var) (*number)--;
    };
    for (int m = NumLineMaps(frame) - 1; m >= 0; m--) {
        LineMapStyle_s &style = lineMapOf(frame, m)->Style;
        if (style.Assign.XAxisVar == var || style.Assign.YAxisVar == var) {
            DeleteLineMap(frame, m);
            continue;
        }
        if (style.Assign.SortVar == var) style.Assign.SortVar = -1;
        if (style.ErrorBars.Var == var) style.ErrorBars.Var = -1;
        if (style.Curves.WeightVar == var) style.Curves.WeightVar = -1;
        shift(&style.Assign.XAxisVar);
        shift(&style.Assign.YAxisVar);
        shift(&style.Assign.SortVar);
        shift(&style.ErrorBars.Var);
        shift(&style.Curves.WeightVar);
    }
}

bool Action_CreateLineMap() {
    if (CurFrame == nullptr || CurFrame->DataSet == nullptr) {
        ErrMsg("No data set. Cannot create new line map.");
        return false;
    }
    LogAction("CREATELINEMAP");
    if (AddNewLineMap(CurFrame, nullptr, false) < 0) return false;
    notifyLineMaps(StateChange_LineMapAssign);
    return true;
}

bool Action_DeleteLineMaps(const Set_a *maps) {
    if (CurFrame == nullptr) return false;
    LogAction("DELETELINEMAPS");
    // From the highest number down, so the numbers still to go stay put.
    for (SetIndex_t m = maps != nullptr ? GetPrevMember(maps, -1) : -1; m >= 0; m = GetPrevMember(maps, m))
        DeleteLineMap(CurFrame, int(m));
    if (maps == nullptr) LineMapsClear(CurFrame);
    notifyLineMaps(StateChange_LineMapAssign);
    return true;
}

bool Action_DuplicateLineMap(int source, int destination) {
    if (CurFrame == nullptr || !IsValidLineMap(CurFrame, source)) {
        ErrMsg("Invalid source line map.");
        return false;
    }
    if (destination < 0 || destination > NumLineMaps(CurFrame)) {
        ErrMsg("Invalid destination line map.");
        return false;
    }
    LogAction("DUPLICATELINEMAP");
    if (destination == NumLineMaps(CurFrame) && AddNewLineMap(CurFrame, nullptr, false) < 0) return false;
    CopyLineMapAttributes(CurFrame, source, destination);
    // The copy takes the source's auxiliary data too, in place of its own.
    LineMapAttributes_s *from = lineMapOf(CurFrame, source), *to = lineMapOf(CurFrame, destination);
    if (from != to) {
        AuxDataDealloc(&to->AuxData);
        if (from->AuxData != nullptr && (to->AuxData = AuxDataCopy(from->AuxData, false)) == nullptr) return false;
    }
    notifyLineMaps(StateChange_LineMapAssign);
    return true;
}

namespace {

bool shiftLineMaps(const Set_a *maps, bool toTop) {
    if (CurFrame == nullptr || maps == nullptr) return false;
    int count = NumLineMaps(CurFrame);
    for (SetIndex_t m = GetNextMember(maps, -1); m >= 0; m = GetNextMember(maps, m))
        if (m >= count) {
            ErrMsg("Invalid line map number: %d.", int(m + 1));
            return false;
        }
    LogAction(toTop ? "SHIFTLINEMAPSTOTOP" : "SHIFTLINEMAPSTOBOTTOM");
    // The new order as old map numbers: the chosen maps first (or last), each group in its order.
    std::vector<int> order;
    for (int pass = 0; pass < 2; pass++)
        for (int m = 0; m < count; m++) {
            bool inFirstGroup = InSet(maps, m) == toTop;
            if (inFirstGroup == (pass == 0)) order.push_back(m);
        }
    std::vector<std::unique_ptr<LineMapAttributes_s>> moved;
    moved.resize(size_t(count));
    Set_a *active = AllocSet(false);
    for (int n = 0; n < count; n++) {
        moved[size_t(n)] = std::move(CurFrame->LineMapAttributes[size_t(order[size_t(n)])]);
        if (CurFrame->ActiveLineMaps != nullptr && InSet(CurFrame->ActiveLineMaps, order[size_t(n)])) AddToSet(active, n, false);
    }
    CurFrame->LineMapAttributes = std::move(moved);
    if (CurFrame->ActiveLineMaps != nullptr) CopySet(CurFrame->ActiveLineMaps, active, false);
    DeallocSet(&active);
    notifyLineMaps(StateChange_LineMapAssign);
    return true;
}

}  // namespace

bool Action_ShiftLineMapsToTop(const Set_a *maps) { return shiftLineMaps(maps, true); }

bool Action_ShiftLineMapsToBottom(const Set_a *maps) { return shiftLineMaps(maps, false); }
