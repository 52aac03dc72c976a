// The data-set actions called directly, as code and add-ons call them, without a macro: the zone
// creators and the journal, the checks that come before the ACTION line, the texts the reading
// actions give, and auxiliary data of zones, frames and line maps with the changes announced.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "base/kernel/arrlist.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/genbase.h"
#include "base/kernel/set.h"
#include "base/kernel/statechg.h"
#include "base/macro/dataactions.h"
#include "base/plot/linemap.h"
#include "data/data_fixture.h"

namespace {

// What a listener heard of auxiliary data changes, with the supplemental record.
struct Heard_s {
    StateChange_e Change;
    int32_t Location = -1;
    std::string Name;
    EntIndex_t Number = -1;
};
std::vector<Heard_s> heard;

void listen(StateChange_e change) {
    if (change != StateChange_AuxDataAdded && change != StateChange_AuxDataAltered &&
        change != StateChange_AuxDataDeleted)
        return;
    Heard_s h;
    h.Change = change;
    StateChangeSupplementalInfoGetArbEnum(&h.Location);
    const char *name = nullptr;
    if (StateChangeSupplementalInfoGetName(&name)) h.Name = name;
    if (!StateChangeSupplementalInfoGetZone(&h.Number) && !StateChangeSupplementalInfoGetVar(&h.Number))
        StateChangeSupplementalInfoGetMap(&h.Number);
    heard.push_back(h);
}

class DataActionsTest : public DataSetTest {
  protected:
    void SetUp() override {
        DataSetTest::SetUp();
        heard.clear();
    }
    void TearDown() override {
        UnregisterStateChangeCallback(listen);
        DataSetTest::TearDown();
    }
    // Runs f with the ACTION lines shown (PRINTDEBUG on) and returns all it printed.
    template <typename F>
    std::string logged(F f) {
        bool savedDebug = GeneralBase.Debug;
        FILE *savedStream = StdError;
        GeneralBase.Debug = true;
        StdError = stderr;
        std::string text = messagesOf(f);
        GeneralBase.Debug = savedDebug;
        StdError = savedStream;
        return text;
    }
    std::string journalItem(LgIndex_t n) const {
        return ArrayListGetItem(dataSet()->Journal.Commands, n).CharPtr;
    }
};

TEST_F(DataActionsTest, RectangularZonesStartADataSetAndKeepItsJournal) {
    ASSERT_EQ(dataSet(), nullptr);
    const char *command = "$!CREATERECTANGULARZONE IMAX = 3 JMAX = 2";
    std::string log = logged([&] {
        EXPECT_TRUE(Action_CreateRectangularZone(3, 2, 1, 0, 5, 0, 2, 6, 1, 0, 1, 2, FieldDataType_Float, command));
    });
    EXPECT_NE(log.find("ACTION: CREATERECTANGULARZONE\n"), std::string::npos) << log;
    ASSERT_NE(dataSet(), nullptr);
    ASSERT_EQ(dataSet()->NumZones, 1);
    EXPECT_EQ(dataSet()->NumVars, 2);
    // I runs fastest: X steps 0, 1, 2 along I; Y is 5 on the first J row and 6 on the second.
    for (LgIndex_t n = 0; n < 6; n++) {
        EXPECT_DOUBLE_EQ(value(0, 0, n), double(n % 3)) << n;
        EXPECT_DOUBLE_EQ(value(0, 1, n), 5.0 + double(n / 3)) << n;
    }
    // The work ran with marking suspended: the journal still rebuilds the data set, by the command.
    EXPECT_TRUE(dataSet()->Journal.IsValid);
    ASSERT_NE(dataSet()->Journal.Commands, nullptr);
    ASSERT_EQ(ArrayListGetCount(dataSet()->Journal.Commands), 1);
    EXPECT_EQ(journalItem(0), command);

    // Without a command to repeat it, the change leaves a journal that can no longer rebuild it.
    EXPECT_TRUE(Action_CreateRectangularZone(2, 2, 1, -1, -1, 0, 1, 1, 1, 0, 1, 2, FieldDataType_Double, nullptr));
    ASSERT_EQ(dataSet()->NumZones, 2);
    const double x[] = {-1, 1, -1, 1}, y[] = {-1, -1, 1, 1};
    for (LgIndex_t n = 0; n < 4; n++) {
        EXPECT_DOUBLE_EQ(value(1, 0, n), x[n]) << n;
        EXPECT_DOUBLE_EQ(value(1, 1, n), y[n]) << n;
    }
    EXPECT_FALSE(dataSet()->Journal.IsValid);

    // A zone of no points is refused and adds nothing.
    std::string messages = messagesOf([] {
        EXPECT_FALSE(Action_CreateRectangularZone(0, 2, 1, 0, 0, 0, 1, 1, 1, 0, 1, 2, FieldDataType_Float, nullptr));
    });
    EXPECT_TRUE(HoldsMessage(messages, "Invalid dimensions for rectangular zone creation.")) << messages;
    EXPECT_EQ(dataSet()->NumZones, 2);
}

TEST_F(DataActionsTest, DeletingZonesIsCheckedBeforeTheActionLine) {
    Set_a *zones = AllocSet(false);
    ASSERT_TRUE(AddToSet(zones, 0, false));
    std::string log = logged([&] { EXPECT_FALSE(Action_DeleteZones(zones)); });
    EXPECT_TRUE(HoldsMessage(log, "Cannot delete zone: The current frame does not have an attached data set")) << log;
    EXPECT_EQ(log.find("ACTION:"), std::string::npos) << log;

    makeDataSet(2, 3);
    Set_a *empty = AllocSet(false);
    log = logged([&] {
        EXPECT_FALSE(Action_DeleteZones(empty));
        EXPECT_FALSE(Action_DeleteZones(nullptr));
    });
    EXPECT_TRUE(HoldsMessage(log, "Invalid set of zones to delete")) << log;
    EXPECT_EQ(log.find("ACTION:"), std::string::npos) << log;
    EXPECT_EQ(dataSet()->NumZones, 3);

    // Zones 1 and 3 go; "Zone 2" is left, now the first.
    ASSERT_TRUE(AddToSet(zones, 2, false));
    log = logged([&] { EXPECT_TRUE(Action_DeleteZones(zones)); });
    EXPECT_NE(log.find("ACTION: DELETEZONES\n"), std::string::npos) << log;
    ASSERT_EQ(dataSet()->NumZones, 1);
    EXPECT_STREQ(GetZoneSpec(dataSet(), 0)->Name, "Zone 2");
    DeallocSet(&zones);
    DeallocSet(&empty);
}

TEST_F(DataActionsTest, ReadingActionsGiveTheTextsOfMacroVariables) {
    makeDataSet(2, 1);
    addTwoTriangles(1);
    std::string text = "unchanged";
    EXPECT_TRUE(Action_GetZoneType(0, &text));
    EXPECT_EQ(text, "ORDERED");
    EXPECT_TRUE(Action_GetZoneType(1, &text));
    EXPECT_EQ(text, "FETRIANGLE");
    // Element 2 of the triangles is nodes 2 1 3 (zero-based): its third corner is node 4.
    EXPECT_TRUE(Action_GetNodeIndex(1, 1, 2, &text));
    EXPECT_EQ(text, "4");
    EXPECT_TRUE(Action_GetVarLocation(0, 1, &text));
    EXPECT_EQ(text, "NODAL");
    EXPECT_TRUE(Action_GetVarOffsetByName("V2", &text));
    EXPECT_EQ(text, "2");
    EXPECT_TRUE(Action_GetCurFrameName(&text));
    EXPECT_EQ(text, "Frame 001");

    ASSERT_TRUE(Action_SetFieldValue(0, 1, 4, 2.5, false));
    EXPECT_DOUBLE_EQ(value(0, 1, 4), 2.5);
    EXPECT_TRUE(Action_GetFieldValue(0, 1, 4, &text));
    EXPECT_EQ(text, "2.5");

    text = "unchanged";
    std::string messages = messagesOf([&] {
        EXPECT_FALSE(Action_GetZoneType(5, &text));
        EXPECT_FALSE(Action_GetFieldValue(0, 0, 6, &text));
        EXPECT_FALSE(Action_GetNodeIndex(0, 0, 0, &text));
        EXPECT_FALSE(Action_GetNodeIndex(1, 2, 0, &text));
        EXPECT_FALSE(Action_GetVarOffsetByName("v2", &text));
        EXPECT_FALSE(Action_SetFieldValue(0, 2, 0, 1.0, false));
    });
    EXPECT_EQ(text, "unchanged");
    for (const char *message : {"Invalid zone number: 6.", "Index out of range for zone 1.", "Zone is not finite-element.",
                                "Element or corner out of range.", "Variable name not found in the data set.",
                                "Invalid variable number: 3."})
        EXPECT_TRUE(HoldsMessage(messages, message)) << message << "\n" << messages;
}

TEST_F(DataActionsTest, ZoneAuxiliaryDataRoundTripsAndIsAnnounced) {
    makeDataSet(2, 2);
    ASSERT_TRUE(RegisterStateChangeCallback(listen));
    ASSERT_TRUE(Action_SetAuxData(AuxDataLocation_Zone, 1, "Common.Note", "hi"));
    // Names match without regard to case: the second set replaces the item.
    ASSERT_TRUE(Action_SetAuxData(AuxDataLocation_Zone, 1, "common.note", "bye"));
    std::string text;
    EXPECT_TRUE(Action_GetAuxData(AuxDataLocation_Zone, 1, "COMMON.NOTE", &text));
    EXPECT_EQ(text, "bye");
    EXPECT_EQ(AuxDataGetNumItems(GetZoneSpec(dataSet(), 1)->AuxData), 1);
    ASSERT_TRUE(Action_DeleteAuxData(AuxDataLocation_Zone, 1, "Common.Note"));

    ASSERT_EQ(heard.size(), 3u);
    EXPECT_EQ(heard[0].Change, StateChange_AuxDataAdded);
    EXPECT_EQ(heard[1].Change, StateChange_AuxDataAltered);
    EXPECT_EQ(heard[2].Change, StateChange_AuxDataDeleted);
    for (const Heard_s &h : heard) {
        EXPECT_EQ(h.Location, 0);  // ZONE
        EXPECT_EQ(h.Number, 1);
    }
    EXPECT_EQ(heard[0].Name, "Common.Note");

    std::string messages = messagesOf([&] {
        EXPECT_FALSE(Action_GetAuxData(AuxDataLocation_Zone, 1, "Common.Note", &text));
        EXPECT_FALSE(Action_DeleteAuxData(AuxDataLocation_Zone, 0, "Common.Note"));
        EXPECT_FALSE(Action_SetAuxData(AuxDataLocation_Zone, 0, "1st", "x"));
        EXPECT_FALSE(Action_SetAuxData(AuxDataLocation_Zone, 2, "Fine", "x"));
        EXPECT_FALSE(Action_SetAuxData(AuxDataLocation_Var, -1, "Fine", "x"));
    });
    EXPECT_TRUE(HoldsMessage(messages, "Auxiliary data item Common.Note does not exist.")) << messages;
    EXPECT_TRUE(HoldsMessage(messages, "Invalid auxiliary data name.")) << messages;
    EXPECT_TRUE(HoldsMessage(messages, "Invalid zone number: 3.")) << messages;
    EXPECT_TRUE(HoldsMessage(messages, "Invalid variable number: 0.")) << messages;
    EXPECT_EQ(heard.size(), 3u);
}

TEST_F(DataActionsTest, FramesKeepAuxiliaryDataWithoutADataSetAndLineMapsCopyTheirs) {
    std::string text;
    ASSERT_TRUE(Action_SetAuxData(AuxDataLocation_Frame, -1, "Owner", "me"));
    EXPECT_TRUE(Action_GetAuxData(AuxDataLocation_Frame, -1, "Owner", &text));
    EXPECT_EQ(text, "me");
    std::string messages = messagesOf([] { EXPECT_FALSE(Action_SetAuxData(AuxDataLocation_DataSet, -1, "Run", "1")); });
    EXPECT_TRUE(HoldsMessage(messages, "Cannot use auxiliary data: The current frame does not have an attached data set"))
        << messages;

    makeDataSet(2, 2);
    ASSERT_EQ(AddNewLineMap(CurFrame, "first", true), 0);
    ASSERT_EQ(AddNewLineMap(CurFrame, "second", true), 1);
    ASSERT_TRUE(Action_SetAuxData(AuxDataLocation_LineMap, 0, "Unit", "m"));
    ASSERT_TRUE(Action_SetAuxData(AuxDataLocation_LineMap, 1, "Other", "o"));
    // Map 1 becomes a copy of map 0: its own item goes, map 0's comes; a new map 2 copies it too.
    ASSERT_TRUE(Action_DuplicateLineMap(0, 1));
    ASSERT_TRUE(Action_DuplicateLineMap(0, 2));
    messages = messagesOf([&] { EXPECT_FALSE(Action_GetAuxData(AuxDataLocation_LineMap, 1, "Other", &text)); });
    EXPECT_TRUE(HoldsMessage(messages, "Auxiliary data item Other does not exist.")) << messages;
    // The copies are their own: changing map 0 leaves them as they were.
    ASSERT_TRUE(Action_SetAuxData(AuxDataLocation_LineMap, 0, "Unit", "s"));
    for (EntIndex_t map : {1, 2}) {
        EXPECT_TRUE(Action_GetAuxData(AuxDataLocation_LineMap, map, "Unit", &text));
        EXPECT_EQ(text, "m") << map;
    }
    EXPECT_TRUE(Action_GetAuxData(AuxDataLocation_LineMap, 0, "Unit", &text));
    EXPECT_EQ(text, "s");
    messages = messagesOf([&] { EXPECT_FALSE(Action_SetAuxData(AuxDataLocation_LineMap, 7, "Unit", "x")); });
    EXPECT_TRUE(HoldsMessage(messages, "Invalid line map number: 8.")) << messages;
    // Deleting a map with its items, and the frame's items with the frame, leaks nothing.
    DeleteLineMap(CurFrame, 2);
    EXPECT_EQ(NumLineMaps(CurFrame), 2);
}

}  // namespace
