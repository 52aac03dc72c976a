// State-change delivery: which codes make the layout dirty, the order of listeners and how the
// lists may change during a walk, nested changes with their own supplemental records, what a V75
// listener is shown, the three call styles, the quitting and action filters, and the immediate
// work on the current data set for the variable and node-map codes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "base/kernel/globals.h"
#include "base/kernel/set.h"
#include "base/kernel/statechg.h"
#include "base/macro/vocabtables.h"
#include "data/data_fixture.h"

namespace {

// What the listeners heard, one entry per call, in call order.
std::vector<std::string> heard;

std::string setText(const Set_a *set) {
    std::string text = "{";
    for (SetIndex_t m = GetNextMember(set, -1); m != BADSETVALUE; m = GetNextMember(set, m))
        text += (text.size() > 1 ? "," : "") + std::to_string(m);
    return text + "}";
}

// The supplemental record of the delivery in progress, as the getters show it: only the fields
// that have a value, in a fixed order.
std::string recordText() {
    std::string text;
    LgIndex_t index;
    int32_t arbEnum;
    const char *name;
    EntIndex_t entity;
    const Set_a *set;
    ArbParam_t row;
    if (StateChangeSupplementalInfoGetIndex(&index)) text += " index=" + std::to_string(index);
    if (StateChangeSupplementalInfoGetArbEnum(&arbEnum)) text += " arb=" + std::to_string(arbEnum);
    if (StateChangeSupplementalInfoGetName(&name)) text += std::string(" name=") + name;
    if (StateChangeSupplementalInfoGetZone(&entity)) text += " zone=" + std::to_string(entity);
    if (StateChangeSupplementalInfoGetVar(&entity)) text += " var=" + std::to_string(entity);
    if (StateChangeSupplementalInfoGetMap(&entity)) text += " map=" + std::to_string(entity);
    if (StateChangeSupplementalInfoGetZoneSet(&set)) text += " zones=" + setText(set);
    if (StateChangeSupplementalInfoGetVarSet(&set)) text += " vars=" + setText(set);
    if (StateChangeSupplementalInfoGetFieldMapSet(&set)) text += " maps=" + setText(set);
    for (int p = 0; p < NumStateChangeStyleParams; p++)
        if (StateChangeSupplementalInfoGetStyleParam(p, &row)) text += " p" + std::to_string(p) + "=" + std::to_string(row);
    return text;
}

void hear(const char *who, StateChange_e change) { heard.push_back(std::string(who) + ":" + std::to_string(change)); }

void listenerA(StateChange_e change) { hear("A", change); }
void listenerB(StateChange_e change) { hear("B", change); }
void listenerC(StateChange_e change) { hear("C", change); }
void listenerD(StateChange_e change) { hear("D", change); }

void unregistersItself(StateChange_e change) {
    hear("S", change);
    EXPECT_TRUE(UnregisterStateChangeCallback(unregistersItself));
}

void unregistersC(StateChange_e change) {
    hear("U", change);
    UnregisterStateChangeCallback(listenerC);
}

void registersD(StateChange_e change) {
    hear("R", change);
    RegisterStateChangeCallback(listenerD);
}

void registersAddOnD(StateChange_e change) {
    hear("R", change);
    RegisterStateChangeCallback(listenerD, true);
}

// Says what it got and the record the getters show.
void describes(StateChange_e change) { heard.push_back("G:" + std::to_string(change) + recordText()); }

// On a style change raises a view change with a record of its own, then looks at the outer
// record again.
void raisesView(StateChange_e change) {
    heard.push_back("N:" + std::to_string(change) + recordText());
    if (change != StateChange_Style) return;
    StateChangeSupplementalInfoSetIndex(9);
    StateChangeSupplementalInfoSetName("inner");
    StateChanged(StateChange_View);
    heard.push_back("N-after" + recordText());
}

// Fills the record of a change it never raises.
void fillsWithoutRaising(StateChange_e change) {
    if (change == StateChange_ColorMap) StateChangeSupplementalInfoSetArbEnum(42);
}

void inContext(StateChange_e change) {
    heard.push_back(std::string("ctx:") + std::to_string(change) + (StateChangeInCallbackContext() ? "=yes" : "=no"));
}

struct ClassicCall {
    StateChange_e change;
    ArbParam_t value;
};
std::vector<ClassicCall> classicCalls, clientCalls;

void classicListener(StateChange_e change, ArbParam_t value) { classicCalls.push_back({change, value}); }
void clientListener(StateChange_e change, ArbParam_t clientData) { clientCalls.push_back({change, clientData}); }

const StateChangeOnlyCallback_pf AllOnlyListeners[] = {listenerA,    listenerB,       listenerC, listenerD,
                                                       unregistersItself, unregistersC, registersD,
                                                       registersAddOnD, describes,   raisesView, inContext, fillsWithoutRaising};
const StateChangeClassicCallback_pf AllTwoValueListeners[] = {classicListener, clientListener};

void resetStateChange() {
    for (StateChangeOnlyCallback_pf listener : AllOnlyListeners) UnregisterStateChangeCallback(listener);
    for (StateChangeClassicCallback_pf listener : AllTwoValueListeners) UnregisterStateChangeCallback(listener);
    while (IsInterfaceSuspended()) UnsuspendInterface();
    StateChangeSetStateChangedAction(StateChangedAction_Deliver);
    SetIsLayoutDirty(false);
    heard.clear();
    classicCalls.clear();
    clientCalls.clear();
}

using Heard = std::vector<std::string>;

// Owns a set for the length of a test.
struct SetGuard {
    Set_a *set;
    explicit SetGuard(std::initializer_list<SetIndex_t> members) : set(AllocSet(false)) {
        for (SetIndex_t member : members) AddToSet(set, member, false);
    }
    ~SetGuard() { DeallocSet(&set); }
    SetGuard(const SetGuard &) = delete;
    SetGuard &operator=(const SetGuard &) = delete;
};

class StateChangeTest : public ::testing::Test {
  protected:
    void SetUp() override { resetStateChange(); }
    void TearDown() override { resetStateChange(); }
};

// A data set of three variables and two ordered zones on the current frame.
class StateChangeDataTest : public DataSetTest {
  protected:
    void SetUp() override {
        DataSetTest::SetUp();
        resetStateChange();
        makeDataSet(3, 2);
    }
    void TearDown() override {
        resetStateChange();
        DataSetTest::TearDown();
    }
    FieldData_a fieldData(EntIndex_t zone, EntIndex_t var) { return GetReadableNativeFieldDataPtr(dataSet(), zone, var); }
};

}  // namespace

// ---- layout dirty -------------------------------------------------------------------------

TEST_F(StateChangeTest, LayoutDirtyStyleRowsOutsideTheLayoutLeaveItClean) {
    for (int16_t row : {MacroSetValue_INTERFACE, MacroSetValue_FILECONFIG, MacroSetValue_EXPORTSETUP,
                        MacroSetValue_PRINTSETUP}) {
        StateChangeSupplementalInfoSetStyleParam(0, row);
        StateChanged(StateChange_Style);
        EXPECT_FALSE(IsLayoutDirty()) << SetValueCommandList[row].Name;
    }
}

TEST_F(StateChangeTest, LayoutDirtyStyleRowOfThePlotDirtiesIt) {
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_GLOBALCONTOUR);
    StateChanged(StateChange_Style);
    EXPECT_TRUE(IsLayoutDirty());
}

TEST_F(StateChangeTest, LayoutDirtyOnlyTheFirstStyleRowCounts) {
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_GLOBALCONTOUR);
    StateChangeSupplementalInfoSetStyleParam(1, MacroSetValue_INTERFACE);
    StateChanged(StateChange_Style);
    EXPECT_TRUE(IsLayoutDirty());
    SetIsLayoutDirty(false);
    StateChangeSupplementalInfoSetStyleParam(1, MacroSetValue_GLOBALCONTOUR);
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_PRINTSETUP);
    StateChanged(StateChange_Style);
    EXPECT_FALSE(IsLayoutDirty());
}

TEST_F(StateChangeTest, LayoutDirtyStyleChangeWithoutRowDirtiesIt) {
    StateChanged(StateChange_Style);
    EXPECT_TRUE(IsLayoutDirty());
}

TEST_F(StateChangeTest, LayoutDirtyDataCodesDirtyItOthersDoNot) {
    const std::vector<int> dirtying = {0, 1, 2, 3, 4, 8, 35, 36, 44};
    for (int code = 0; code <= StateChange_VariableLockOff; code++) {
        if (code == StateChange_Style) continue;
        SetIsLayoutDirty(false);
        StateChanged(static_cast<StateChange_e>(code));
        bool expected = std::find(dirtying.begin(), dirtying.end(), code) != dirtying.end();
        EXPECT_EQ(IsLayoutDirty(), expected) << "code " << code;
    }
    // The suspension codes raised by the counters are not layout changes either.
    SetIsLayoutDirty(false);
    SuspendInterface();
    UnsuspendInterface();
    EXPECT_FALSE(IsLayoutDirty());
}

TEST_F(StateChangeTest, LayoutDirtyFlagStaysUntilCleared) {
    StateChanged(StateChange_ZonesAdded);
    StateChanged(StateChange_NewTopFrame);
    EXPECT_TRUE(IsLayoutDirty());
    SetIsLayoutDirty(false);
    EXPECT_FALSE(IsLayoutDirty());
}

// ---- registration and order ---------------------------------------------------------------

TEST_F(StateChangeTest, RegistrationInternalListenersBeforeAddOnsEachInOrder) {
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA, true));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerB));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerC, true));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerD));
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard, (Heard{"B:21", "D:21", "A:21", "C:21"}));
}

TEST_F(StateChangeTest, RegistrationTwiceIsRefusedAndUnregisterForgets) {
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    EXPECT_FALSE(RegisterStateChangeCallback(listenerA));
    EXPECT_FALSE(RegisterStateChangeCallback(listenerA, true));
    EXPECT_TRUE(IsStateChangeCallbackRegistered(listenerA));
    EXPECT_FALSE(IsStateChangeCallbackRegistered(listenerB));
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard, (Heard{"A:21"}));

    EXPECT_TRUE(UnregisterStateChangeCallback(listenerA));
    EXPECT_FALSE(IsStateChangeCallbackRegistered(listenerA));
    EXPECT_FALSE(UnregisterStateChangeCallback(listenerA));
    EXPECT_FALSE(StateChangeSetMode(listenerA, StateChangeMode_V75));
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard.size(), 1u);
    // Registered anew, it goes behind those registered meanwhile.
    ASSERT_TRUE(RegisterStateChangeCallback(listenerB));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    StateChanged(StateChange_ContourVar);
    EXPECT_EQ(heard, (Heard{"A:21", "B:22", "A:22"}));
}

TEST_F(StateChangeTest, RegistrationSameFunctionAsClassicAndWithClientIsOneListener) {
    ASSERT_TRUE(RegisterStateChangeCallback(classicListener));
    EXPECT_FALSE(RegisterStateChangePlusClientCallback(classicListener, 5));
    StateChanged(StateChange_ColorMap);
    ASSERT_EQ(classicCalls.size(), 1u);
    EXPECT_EQ(classicCalls[0].value, 0);  // the CLASSIC value of code 21, not the client data
}

TEST_F(StateChangeTest, RegistrationListenerUnregisteringItselfDuringDelivery) {
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    ASSERT_TRUE(RegisterStateChangeCallback(unregistersItself));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerB));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerC, true));
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard, (Heard{"A:21", "S:21", "B:21", "C:21"}));
    EXPECT_FALSE(IsStateChangeCallbackRegistered(unregistersItself));
    heard.clear();
    StateChanged(StateChange_ContourVar);
    EXPECT_EQ(heard, (Heard{"A:22", "B:22", "C:22"}));
}

TEST_F(StateChangeTest, RegistrationListenerUnregisteringOneNotYetCalled) {
    ASSERT_TRUE(RegisterStateChangeCallback(unregistersC));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerC));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerB));
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard, (Heard{"U:21", "A:21", "B:21"}));
}

TEST_F(StateChangeTest, RegistrationDuringDeliveryBehindTheWalkIsReachedAtOnce) {
    ASSERT_TRUE(RegisterStateChangeCallback(registersD));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerB, true));
    StateChanged(StateChange_ColorMap);
    // D went to the end of the internal list: after A, before the add-on B.
    EXPECT_EQ(heard, (Heard{"R:21", "A:21", "D:21", "B:21"}));
    heard.clear();
    StateChanged(StateChange_ContourVar);
    EXPECT_EQ(heard, (Heard{"R:22", "A:22", "D:22", "B:22"}));
}

TEST_F(StateChangeTest, RegistrationOfAnAddOnDuringTheInternalWalkIsReachedAtOnce) {
    ASSERT_TRUE(RegisterStateChangeCallback(registersAddOnD));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA, true));
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard, (Heard{"R:21", "A:21", "D:21"}));
}

TEST_F(StateChangeTest, RegistrationOfAnInternalListenerDuringTheAddOnWalkWaitsForTheNextChange) {
    // The internal list has been walked already when the add-on registers D there.
    ASSERT_TRUE(RegisterStateChangeCallback(registersD, true));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard, (Heard{"A:21", "R:21"}));
    heard.clear();
    StateChanged(StateChange_ContourVar);
    EXPECT_EQ(heard, (Heard{"A:22", "D:22", "R:22"}));
}

// ---- nesting and the record ---------------------------------------------------------------

TEST_F(StateChangeTest, NestingInnerChangeIsDeliveredAtOnceWithItsOwnRecord) {
    ASSERT_TRUE(RegisterStateChangeCallback(raisesView));
    ASSERT_TRUE(RegisterStateChangeCallback(describes));
    StateChangeSupplementalInfoSetIndex(3);
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_GLOBALCONTOUR);
    StateChanged(StateChange_Style);
    const std::string row = std::to_string(MacroSetValue_GLOBALCONTOUR);
    EXPECT_EQ(heard, (Heard{"N:7 index=3 p0=" + row, "N:20 index=9 name=inner", "G:20 index=9 name=inner",
                            "N-after index=3 p0=" + row, "G:7 index=3 p0=" + row}));
}

TEST_F(StateChangeTest, NestingRecordLivesOnlyDuringTheCall) {
    ASSERT_TRUE(RegisterStateChangeCallback(describes));
    StateChangeSupplementalInfoSetIndex(4);
    StateChangeSupplementalInfoSetName("first");
    StateChanged(StateChange_ZoneName);
    StateChanged(StateChange_ZoneName);
    EXPECT_EQ(heard, (Heard{"G:16 index=4 name=first", "G:16"}));
}

TEST_F(StateChangeTest, NestingRecordFilledByAListenerWithoutRaisingDiesWithTheDelivery) {
    ASSERT_TRUE(RegisterStateChangeCallback(fillsWithoutRaising));
    ASSERT_TRUE(RegisterStateChangeCallback(raisesView));
    StateChanged(StateChange_ColorMap);
    heard.clear();
    // The view change raised inside the next delivery lies at the depth that was filled.
    StateChanged(StateChange_Style);
    EXPECT_EQ(heard, (Heard{"N:7", "N:20 index=9 name=inner", "N-after"}));
}

TEST_F(StateChangeTest, NestingCallbackContextOnlyWhileListenersRun) {
    EXPECT_FALSE(StateChangeInCallbackContext());
    ASSERT_TRUE(RegisterStateChangeCallback(inContext));
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard, (Heard{"ctx:21=yes"}));
    EXPECT_FALSE(StateChangeInCallbackContext());
}

TEST_F(StateChangeTest, RecordGettersFalseOutsideADelivery) {
    // The setters fill the record of the coming call; no delivery is in progress to read it.
    StateChangeSupplementalInfoSetIndex(1);
    StateChangeSupplementalInfoSetArbEnum(2);
    StateChangeSupplementalInfoSetName("n");
    StateChangeSupplementalInfoSetZone(1);
    StateChangeSupplementalInfoSetStyleParam(0, 5);
    EXPECT_EQ(recordText(), "");
    ArbParam_t value = 77;
    GetOldV1PrimaryStateChangeCallData(StateChange_Style, &value);
    EXPECT_EQ(value, 0);
    StateChanged(StateChange_ColorMap);  // uses the record up
}

TEST_F(StateChangeTest, RecordEveryFieldReadBackAndUnsetFieldsFalse) {
    ASSERT_TRUE(RegisterStateChangeCallback(describes));
    SetGuard zones{2, 5}, vars{0}, maps{1, 3};
    StateChangeSupplementalInfoSetIndex(11);
    StateChangeSupplementalInfoSetArbEnum(-4);
    StateChangeSupplementalInfoSetName("lock owner");
    StateChangeSupplementalInfoSetZone(2);
    StateChangeSupplementalInfoSetVar(6);
    StateChangeSupplementalInfoSetMap(8);
    StateChangeSupplementalInfoSetZoneSet(zones.set);
    StateChangeSupplementalInfoSetVarSet(vars.set);
    StateChangeSupplementalInfoSetFieldMapSet(maps.set);
    StateChangeSupplementalInfoSetStyleParam(0, 100);
    StateChangeSupplementalInfoSetStyleParam(6, 106);
    StateChanged(StateChange_ColorMap);
    StateChangeSupplementalInfoSetVar(0);  // zero is a value
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard, (Heard{"G:21 index=11 arb=-4 name=lock owner zone=2 var=6 map=8 zones={2,5} vars={0} maps={1,3} "
                            "p0=100 p6=106",
                            "G:21 var=0"}));
}

TEST_F(StateChangeTest, RecordFilledFromTheInfoRecord) {
    ASSERT_TRUE(RegisterStateChangeCallback(describes));
    SetGuard zones{1};
    StateChangeInfo_s info;
    info.ZoneSet = zones.set;
    info.Index = 0;
    info.ArbEnum = 0;
    StateChangeSupplementalInfoSetName("owner");
    StateChanged(StateChange_VariableLockOn, &info);
    StateChangeInfo_s empty;
    StateChanged(StateChange_VariableLockOff, &empty);
    EXPECT_EQ(heard, (Heard{"G:47 index=0 arb=0 name=owner zones={1}", "G:48"}));
}

// ---- call styles --------------------------------------------------------------------------

TEST_F(StateChangeTest, CallStyleChangeOnlyGetsTheCode) {
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    StateChangeSupplementalInfoSetArbEnum(3);
    StateChanged(StateChange_MouseMode);
    EXPECT_EQ(heard, (Heard{"A:25"}));
}

TEST_F(StateChangeTest, CallStylePlusClientGetsItsClientData) {
    ASSERT_TRUE(RegisterStateChangePlusClientCallback(clientListener, 0x5eed, true));
    StateChangeSupplementalInfoSetArbEnum(3);
    StateChanged(StateChange_MouseMode);
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_GLOBALCONTOUR);
    StateChanged(StateChange_Style);
    ASSERT_EQ(clientCalls.size(), 2u);
    EXPECT_EQ(clientCalls[0].change, StateChange_MouseMode);
    EXPECT_EQ(clientCalls[0].value, 0x5eed);
    EXPECT_EQ(clientCalls[1].change, StateChange_Style);
    EXPECT_EQ(clientCalls[1].value, 0x5eed);
}

TEST_F(StateChangeTest, CallStyleClassicGetsArbEnumForItsCodes) {
    ASSERT_TRUE(RegisterStateChangeCallback(classicListener));
    for (StateChange_e code : {StateChange_View, StateChange_Streamtrace, StateChange_MouseMode, StateChange_AuxDataAdded,
                               StateChange_AuxDataDeleted, StateChange_AuxDataAltered, StateChange_VariableLockOn}) {
        classicCalls.clear();
        StateChangeSupplementalInfoSetArbEnum(40 + code);
        StateChangeSupplementalInfoSetIndex(900);
        StateChanged(code);
        ASSERT_EQ(classicCalls.size(), 1u);
        EXPECT_EQ(classicCalls[0].change, code);
        // Code 47 carries an ArbEnum too, but a CLASSIC listener gets nothing for it.
        EXPECT_EQ(classicCalls[0].value, code == StateChange_VariableLockOn ? 0 : 40 + code) << "code " << code;
    }
}

TEST_F(StateChangeTest, CallStyleClassicGetsFirstStyleRowInternallyAndItsNameAsAddOn) {
    ASSERT_TRUE(RegisterStateChangeCallback(classicListener));
    ASSERT_TRUE(RegisterStateChangePlusClientCallback(clientListener, 1));
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_GLOBALCONTOUR);
    StateChangeSupplementalInfoSetStyleParam(1, 3);
    StateChanged(StateChange_Style);
    ASSERT_EQ(classicCalls.size(), 1u);
    EXPECT_EQ(classicCalls[0].value, MacroSetValue_GLOBALCONTOUR);

    ASSERT_TRUE(UnregisterStateChangeCallback(classicListener));
    ASSERT_TRUE(RegisterStateChangeCallback(classicListener, true));
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_GLOBALCONTOUR);
    StateChanged(StateChange_Style);
    ASSERT_EQ(classicCalls.size(), 2u);
    ASSERT_NE(classicCalls[1].value, 0);
    EXPECT_STREQ(reinterpret_cast<const char *>(classicCalls[1].value), "GLOBALCONTOUR");
    // A style change without a row gives 0 to both.
    StateChanged(StateChange_Style);
    ASSERT_EQ(classicCalls.size(), 3u);
    EXPECT_EQ(classicCalls[2].value, 0);
}

TEST_F(StateChangeTest, CallStyleClassicGetsZeroForOtherCodes) {
    ASSERT_TRUE(RegisterStateChangeCallback(classicListener));
    SetGuard set{1};
    for (StateChange_e code : {StateChange_ZonesAdded, StateChange_VarsDeleted, StateChange_Quit,
                               StateChange_DataSetLockOn, StateChange_Text}) {
        StateChangeSupplementalInfoSetZoneSet(set.set);
        StateChangeSupplementalInfoSetVarSet(set.set);
        StateChangeSupplementalInfoSetIndex(2);
        StateChangeSupplementalInfoSetArbEnum(2);
        StateChangeSupplementalInfoSetName("x");
        StateChanged(code);
    }
    ASSERT_EQ(classicCalls.size(), 5u);
    for (const ClassicCall &call : classicCalls) EXPECT_EQ(call.value, 0) << "code " << call.change;
}

// ---- the V75 protocol ---------------------------------------------------------------------

TEST_F(StateChangeTest, TranslateV75AndNewerModes) {
    struct Case {
        StateChangeMode_e mode;
        StateChange_e in, out;
    };
    const Case cases[] = {
        {StateChangeMode_V75, StateChange_UnsuspendInterface, StateChange_InterfaceRefresh},
        {StateChangeMode_V75, StateChange_Text, StateChange_Style},
        {StateChangeMode_V75, StateChange_Geom, StateChange_Style},
        {StateChangeMode_V75, StateChange_ZonesAdded, StateChange_ZonesAdded},
        {StateChangeMode_V80, StateChange_UnsuspendInterface, StateChange_UnsuspendInterface},
        {StateChangeMode_V80, StateChange_Text, StateChange_Text},
        {StateChangeMode_V100, StateChange_Geom, StateChange_Geom},
    };
    for (const Case &c : cases) {
        StateChange_e change = c.in;
        bool deliver = false;
        TranslateStateChange(c.mode, &change, &deliver);
        EXPECT_TRUE(deliver);
        EXPECT_EQ(change, c.out) << "mode " << c.mode << " code " << c.in;
    }
}

TEST_F(StateChangeTest, TranslateV75SeesNothingButQuitWhileSuspended) {
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerB));
    ASSERT_TRUE(StateChangeSetMode(listenerA, StateChangeMode_V75));
    ASSERT_TRUE(StateChangeSetMode(listenerB, StateChangeMode_V80));
    SuspendInterface();
    SuspendInterface();
    EXPECT_TRUE(IsInterfaceSuspended());
    StateChanged(StateChange_ZonesAdded);
    StateChanged(StateChange_Text);
    StateChanged(StateChange_Quit);
    UnsuspendInterface();  // still suspended once
    UnsuspendInterface();
    EXPECT_FALSE(IsInterfaceSuspended());
    StateChanged(StateChange_Text);
    StateChanged(StateChange_Geom);
    EXPECT_EQ(heard, (Heard{"B:32", "B:32", "B:3", "B:35", "A:15", "B:15", "B:31", "A:10", "B:31", "A:7", "B:35",
                            "A:7", "B:36"}));
}

TEST_F(StateChangeTest, TranslateV75SeesInterfaceRefreshOnceWhenUnsuspended) {
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    ASSERT_TRUE(StateChangeSetMode(listenerA, StateChangeMode_V75));
    SuspendInterface();
    SuspendInterface();
    SuspendInterface();
    UnsuspendInterface();
    UnsuspendInterface();
    UnsuspendInterface();
    EXPECT_EQ(heard, (Heard{"A:10"}));
}

TEST_F(StateChangeTest, TranslateV75StyleRowsShownInTheirOldNames) {
    ASSERT_TRUE(RegisterStateChangeCallback(describes));
    ASSERT_TRUE(StateChangeSetMode(describes, StateChangeMode_V75));
    ASSERT_TRUE(RegisterStateChangeCallback(classicListener));
    ASSERT_TRUE(StateChangeSetMode(classicListener, StateChangeMode_V75));
    const std::string plotType = std::to_string(MacroSetValue_PLOTTYPE);
    const std::string frameMode = std::to_string(MacroSetValue_FRAMEMODE);
    const std::string lineMap = std::to_string(MacroSetValue_LINEMAP);
    const std::string xyMap = std::to_string(MacroSetValue_XYMAP);

    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_PLOTTYPE);
    StateChangeSupplementalInfoSetStyleParam(1, MacroSetValue_PLOTTYPE);  // only position 0 is renamed
    StateChanged(StateChange_Style);
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_LINEMAP);
    StateChanged(StateChange_Style);
    StateChanged(StateChange_Text);
    EXPECT_EQ(heard, (Heard{"G:7 p0=" + frameMode + " p1=" + plotType, "G:7 p0=" + xyMap, "G:7 p0=0"}));
    ASSERT_EQ(classicCalls.size(), 3u);
    EXPECT_EQ(classicCalls[0].value, MacroSetValue_FRAMEMODE);
    EXPECT_EQ(classicCalls[1].value, MacroSetValue_XYMAP);
    EXPECT_EQ(classicCalls[2].change, StateChange_Style);
    EXPECT_EQ(classicCalls[2].value, 0);

    // The same changes as a V100 listener sees them.
    heard.clear();
    ASSERT_TRUE(StateChangeSetMode(describes, StateChangeMode_V100));
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_PLOTTYPE);
    StateChanged(StateChange_Style);
    StateChangeSupplementalInfoSetStyleParam(0, MacroSetValue_LINEMAP);
    StateChanged(StateChange_Style);
    StateChanged(StateChange_Text);
    EXPECT_EQ(heard, (Heard{"G:7 p0=" + plotType, "G:7 p0=" + lineMap, "G:35"}));
}

// ---- filters ------------------------------------------------------------------------------

TEST_F(StateChangeTest, FilterWhileQuittingOnlyModalDialogCodesArrive) {
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerB, true));
    bool wasQuitting = OrvanexIsQuitting;
    OrvanexIsQuitting = true;
    StateChanged(StateChange_Style);
    StateChanged(StateChange_ModalDialogLaunch);
    StateChanged(StateChange_ZonesAdded);
    StateChanged(StateChange_Quit);
    StateChanged(StateChange_ModalDialogDismiss);
    bool dirty = IsLayoutDirty();
    OrvanexIsQuitting = wasQuitting;
    EXPECT_EQ(heard, (Heard{"A:13", "B:13", "A:14", "B:14"}));
    EXPECT_FALSE(dirty);
}

TEST_F(StateChangeTest, FilterIgnoreAllButModalDropsTheRecordToo) {
    ASSERT_TRUE(RegisterStateChangeCallback(describes));
    StateChangeSetStateChangedAction(StateChangedAction_IgnoreAllButModal);
    EXPECT_EQ(StateChangeGetStateChangedAction(), StateChangedAction_IgnoreAllButModal);
    StateChangeSupplementalInfoSetIndex(5);
    StateChanged(StateChange_ZonesAdded);
    StateChangeSupplementalInfoSetName("dialog");
    StateChanged(StateChange_ModalDialogLaunch);
    StateChanged(StateChange_Style);
    EXPECT_FALSE(IsLayoutDirty());
    StateChangeSetStateChangedAction(StateChangedAction_Deliver);
    StateChanged(StateChange_ColorMap);
    EXPECT_EQ(heard, (Heard{"G:13 name=dialog", "G:21"}));
}

TEST_F(StateChangeTest, FilterInternalWorkOnlyCallsNoListener) {
    ASSERT_TRUE(RegisterStateChangeCallback(listenerA));
    ASSERT_TRUE(RegisterStateChangeCallback(listenerB, true));
    StateChangeSetStateChangedAction(StateChangedAction_InternalWorkOnly);
    StateChanged(StateChange_ZonesAdded);
    EXPECT_TRUE(IsLayoutDirty());
    StateChanged(StateChange_ModalDialogDismiss);
    EXPECT_EQ(heard, (Heard{"A:14", "B:14"}));
}

// ---- immediate work on the data set -------------------------------------------------------

TEST_F(StateChangeDataTest, DataVarsAlteredInvalidatesRangesOfTheVariableInTheZones) {
    for (EntIndex_t zone = 0; zone < 2; zone++)
        for (EntIndex_t var = 0; var < 3; var++) FieldDataSetMinMax(fieldData(zone, var), 0.0, 1.0);
    dataSet()->Journal.IsValid = true;
    SetGuard zones{1}, vars{2};
    StateChangeSupplementalInfoSetZoneSet(zones.set);
    StateChangeSupplementalInfoSetVarSet(vars.set);
    StateChanged(StateChange_VarsAltered);
    for (EntIndex_t zone = 0; zone < 2; zone++)
        for (EntIndex_t var = 0; var < 3; var++)
            EXPECT_EQ(IsFieldDataMinMaxValid(fieldData(zone, var)), !(zone == 1 && var == 2))
                << "zone " << zone << " var " << var;
    EXPECT_FALSE(dataSet()->Journal.IsValid);
}

TEST_F(StateChangeDataTest, DataVarsAlteredSuspendedIgnoresTheData) {
    FieldDataSetMinMax(fieldData(0, 0), 0.0, 1.0);
    dataSet()->Journal.IsValid = true;
    StateChangeSetStateChangedAction(StateChangedAction_IgnoreAllButModal);
    StateChanged(StateChange_VarsAltered);
    EXPECT_TRUE(IsFieldDataMinMaxValid(fieldData(0, 0)));
    EXPECT_TRUE(dataSet()->Journal.IsValid);
    // Action 1 still does the internal work.
    StateChangeSetStateChangedAction(StateChangedAction_InternalWorkOnly);
    StateChanged(StateChange_VarsAltered);
    EXPECT_FALSE(IsFieldDataMinMaxValid(fieldData(0, 0)));
    EXPECT_FALSE(dataSet()->Journal.IsValid);
}

TEST_F(StateChangeDataTest, DataVarAlteredStateChangedNamesOneVariableAndPoint) {
    ASSERT_TRUE(RegisterStateChangeCallback(describes));
    ASSERT_TRUE(RegisterStateChangeCallback(classicListener));
    for (EntIndex_t var = 0; var < 3; var++) FieldDataSetMinMax(fieldData(0, var), 0.0, 1.0);
    SetGuard zones{0};
    VarAlteredStateChanged(zones.set, 1, 4);
    VarAlteredStateChanged(zones.set, 2, MAXINDEX);
    EXPECT_EQ(heard, (Heard{"G:0 index=4 zones={0} vars={1}", "G:0 zones={0} vars={2}"}));
    EXPECT_TRUE(IsFieldDataMinMaxValid(fieldData(0, 0)));
    EXPECT_FALSE(IsFieldDataMinMaxValid(fieldData(0, 1)));
    EXPECT_FALSE(IsFieldDataMinMaxValid(fieldData(0, 2)));
    // The CLASSIC value of code 0 is the variable set: non-null for each call.
    ASSERT_EQ(classicCalls.size(), 2u);
    EXPECT_NE(classicCalls[0].value, 0);
    EXPECT_NE(classicCalls[1].value, 0);
}

TEST_F(StateChangeDataTest, DataClassicGetsTheSetsOfItsCodes) {
    ASSERT_TRUE(RegisterStateChangeCallback(classicListener));
    SetGuard zones{0}, vars{1};
    for (StateChange_e code : {StateChange_VarsAltered, StateChange_ZonesDeleted, StateChange_NodeMapsAltered,
                               StateChange_VarsAdded}) {
        StateChangeSupplementalInfoSetZoneSet(zones.set);
        StateChangeSupplementalInfoSetVarSet(vars.set);
        StateChanged(code);
    }
    ASSERT_EQ(classicCalls.size(), 4u);
    EXPECT_EQ(classicCalls[0].value, reinterpret_cast<ArbParam_t>(vars.set));
    EXPECT_EQ(classicCalls[1].value, reinterpret_cast<ArbParam_t>(zones.set));
    EXPECT_EQ(classicCalls[2].value, reinterpret_cast<ArbParam_t>(zones.set));
    EXPECT_EQ(classicCalls[3].value, 0);  // code 1 carries a VarSet, but a CLASSIC listener gets 0
}

TEST_F(StateChangeDataTest, DataVarsAddedMarksTheDataSetChanged) {
    dataSet()->Journal.IsValid = true;
    StateChanged(StateChange_VarName);
    EXPECT_TRUE(dataSet()->Journal.IsValid);
    StateChanged(StateChange_VarsAdded);
    EXPECT_FALSE(dataSet()->Journal.IsValid);
}

TEST_F(StateChangeDataTest, DataNodeMapsAlteredResetsFaceNeighboursOfTheZonesOnly) {
    for (EntIndex_t zone = 0; zone < 2; zone++) {
        ASSERT_NE(GetZoneData(dataSet(), zone)->FN, nullptr);
        GetZoneSpec(dataSet(), zone)->AutoAssignFN = false;
        GetZoneSpec(dataSet(), zone)->FNNumBndryConns = 4;
        FieldDataSetMinMax(fieldData(zone, 0), 0.0, 1.0);
    }
    dataSet()->Journal.IsValid = true;
    SetGuard zones{1};
    StateChangeSupplementalInfoSetZoneSet(zones.set);
    StateChanged(StateChange_NodeMapsAltered);
    EXPECT_FALSE(GetZoneSpec(dataSet(), 0)->AutoAssignFN);
    EXPECT_EQ(GetZoneSpec(dataSet(), 0)->FNNumBndryConns, 4);
    EXPECT_TRUE(GetZoneSpec(dataSet(), 1)->AutoAssignFN);
    EXPECT_EQ(GetZoneSpec(dataSet(), 1)->FNNumBndryConns, 0);
    EXPECT_FALSE(dataSet()->Journal.IsValid);
    // The connectivity changed, not the values: their ranges stand.
    EXPECT_TRUE(IsFieldDataMinMaxValid(fieldData(1, 0)));
}

TEST_F(StateChangeDataTest, DataNodeMapsAlteredWithoutSetResetsEveryZone) {
    for (EntIndex_t zone = 0; zone < 2; zone++) GetZoneSpec(dataSet(), zone)->AutoAssignFN = false;
    StateChanged(StateChange_NodeMapsAltered);
    EXPECT_TRUE(GetZoneSpec(dataSet(), 0)->AutoAssignFN);
    EXPECT_TRUE(GetZoneSpec(dataSet(), 1)->AutoAssignFN);
}
