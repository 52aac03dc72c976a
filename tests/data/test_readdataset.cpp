// The data load flow: readers, the options of a load, name and position mapping, appends and
// replacements with their checks, and the promise that a failed load changes nothing.
#include <gtest/gtest.h>

#include <dirent.h>
#include <fstream>

#include "base/data/dataio.h"
#include "base/data/fenrow.h"
#include "base/data/readdataset.h"
#include "base/data/strand.h"
#include "base/kernel/auxdata.h"
#include "base/kernel/statechg.h"
#include "base/kernel/strlist.h"
#include "base/macro/actcmd.h"
#include "base/macro/macrocomp.h"
#include "base/macro/vocabtables.h"
#include "base/plot/draw0.h"
#include "base/plot/fieldmap.h"
#include "base/plot/solntime.h"
#include "data/data_fixture.h"

namespace {

struct SetFree {
    void operator()(Set_a *set) const { DeallocSet(&set); }
};
using OwnedSet = std::unique_ptr<Set_a, SetFree>;

OwnedSet setOf(std::initializer_list<SetIndex_t> members) {
    OwnedSet set(AllocSet(false));
    for (SetIndex_t m : members) AddToSet(set.get(), m, false);
    return set;
}

struct NameList {
    StringList_s *list = StringListAlloc();
    explicit NameList(std::initializer_list<const char *> names) {
        for (const char *name : names) StringListAppendString(list, name);
    }
    ~NameList() { StringListDealloc(&list); }
};

bool acceptingLoader(StringList_s *) { return true; }

// Messages are wrapped at 60 columns; compare the words.
void expectSaid(const std::string &actual, const std::string &expected) {
    EXPECT_EQ(Unwrapped(actual), Unwrapped(expected));
}

int conversions = 0;
bool countingConverter(const char *fileName, const char *tempFileName, char **errorText) {
    conversions++;
    return FenrowAsciiDatafile(fileName, tempFileName, errorText);
}

class ReadDataSetTest : public DataSetTest {
  protected:
    void SetUp() override {
        DataSetTest::SetUp();
        RegisterBuiltInDataSetReaders();
        InitReadDataSetArgs(&args);
    }
    void TearDown() override {
        MopupDataSetReaders();
        DataSetTest::TearDown();
    }
    std::string write(const std::string &name, const std::string &text) {
        std::string path = tempDir + "/" + name;
        std::ofstream(path) << text;
        return path;
    }
    // Loads the files with the current arguments; gives the messages printed.
    std::string load(std::initializer_list<std::string> files, bool *ok = nullptr) {
        args.FileNamesOrInstructions.assign(files.begin(), files.end());
        bool result = false;
        std::string messages = messagesOf([&] { result = Action_ReadDataSet(args); });
        if (ok != nullptr) *ok = result;
        return messages;
    }
    void loadOk(std::initializer_list<std::string> files) {
        bool ok = false;
        std::string messages = load(files, &ok);
        ASSERT_TRUE(ok) << messages;
    }
    // Files in the temporary directory apart from the scratch files of stored variables.
    int tempFileCount() const {
        int count = 0;
        if (DIR *dir = opendir(tempDir.c_str())) {
            while (dirent *entry = readdir(dir))
                if (entry->d_name[0] != '.') count++;
            closedir(dir);
        }
        return count;
    }
    std::string varName(EntIndex_t var) const { return GetVarName(dataSet(), var); }
    LgIndex_t numPoints(EntIndex_t zone) const { return ZoneGetNumPoints(dataSet(), zone); }

    ReadDataSetArgs_s args;
};

const char *kTwoZones =
    "TITLE = \"two zones\"\nVARIABLES = X Y\n"
    "ZONE T=\"a\" I=3\n1 10\n2 20\n3 30\n"
    "ZONE T=\"b\" I=2\n4 40\n5 50\n";

// ---- readers ------------------------------------------------------------------------------

TEST_F(ReadDataSetTest, ReaderTableRefusesBadRegistrations) {
    expectSaid(messagesOf([] { EXPECT_FALSE(RegisterDataSetReader(nullptr, nullptr, "X", nullptr, nullptr, "x",
                                                                  DataSetReaderKind_AddOn)); }),
              "Err: Attempt to register invalid DataSet Converter\n");
    expectSaid(messagesOf([] { EXPECT_FALSE(RegisterDataSetReader(countingConverter, acceptingLoader,
                                                                  "X", nullptr, nullptr, "x", DataSetReaderKind_AddOn)); }),
              "Err: Attempt to register invalid DataSet Converter\n");
    expectSaid(messagesOf([] { EXPECT_FALSE(RegisterDataSetReader(nullptr, acceptingLoader, "L",
                                                                  nullptr, nullptr, "x", DataSetReaderKind_AddOn)); }),
              "Err: Invalid LoaderSelectionCallback in attempt to register a data set loader\n");
    expectSaid(messagesOf([] { EXPECT_FALSE(RegisterDataSetReader(countingConverter, nullptr, "orvanex", nullptr, nullptr,
                                                                  "x", DataSetReaderKind_AddOn)); }),
              "Err: Duplicate DataSetReaders: orvanex                       \n");
    int added = 0;
    while (NumDataSetReaders < MaxDataSetReaders)
        ASSERT_TRUE(RegisterDataSetReader(countingConverter, nullptr, ("R" + std::to_string(added++)).c_str(), nullptr,
                                          nullptr, "x", DataSetReaderKind_AddOn));
    expectSaid(messagesOf([] { EXPECT_FALSE(RegisterDataSetReader(countingConverter, nullptr, "one too many", nullptr,
                                                                  nullptr, "x", DataSetReaderKind_AddOn)); }),
              "Err: Too many data set converters and loaders\n");
    EXPECT_EQ(GetDataSetReaderByName("Orvanex Data Loader"), 0);
    expectSaid(messagesOf([] { EXPECT_EQ(GetDataSetReaderByName("NOPE"), -1); }),
              "Err: Unknown DataSet Reader: NOPE                          \n");
}

TEST_F(ReadDataSetTest, UnknownReaderAndSkipListChangeNothing) {
    makeDataSet(2, 1);
    DataSet_s *before = dataSet();
    args.DataSetReader = "NOPE";
    expectSaid(load({"a.plt"}), "Err: Unknown DataSet Reader: NOPE                          \n");
    args.DataSetReader = OrvanexBaseDataSetReaderName;
    expectSaid(load({"data.SKIP.plt", write("a.dat", kTwoZones)}), "Err: No files were selected\n");
    expectSaid(load({"  "}), "Err: No files were selected\n");
    EXPECT_EQ(dataSet(), before);
    EXPECT_EQ(dataSet()->NumZones, 1);
}

// ---- converting and reading ---------------------------------------------------------------

TEST_F(ReadDataSetTest, TextFilesConvertThroughTemporaryFilesThatGo) {
    ASSERT_TRUE(RegisterDataSetReader(countingConverter, nullptr, "COUNTING", nullptr, nullptr, "dat",
                                      DataSetReaderKind_AddOn));
    std::string text1 = write("one.dat", kTwoZones);
    std::string text2 = write("two.dat", "VARIABLES = X Y\nZONE I=1\n7 70\n");
    int before = tempFileCount();
    args.DataSetReader = "COUNTING";
    conversions = 0;
    loadOk({text1, text2});
    EXPECT_EQ(conversions, 2);
    EXPECT_EQ(tempFileCount(), before);  // both temporary binary files are gone
    ASSERT_EQ(dataSet()->NumZones, 3);
    EXPECT_EQ(value(2, 1, 0), 70.0);
    EXPECT_STREQ(GetZoneName(dataSet(), 1), "b");

    // A binary file beside a text file: only the text file is converted.
    std::string binary = tempDir + "/three.plt";
    ASSERT_TRUE(GoWriteDataSet(dataSet(), nullptr, binary.c_str(), WriteDataSetOptions_s()));
    conversions = 0;
    loadOk({binary, text2});
    EXPECT_EQ(conversions, 1);
    EXPECT_EQ(dataSet()->NumZones, 4);
    EXPECT_EQ(DataSetReaders[GetDataSetReaderByName("COUNTING")].LastFileNames,
              (std::vector<std::string>{binary, text2}));
}

TEST_F(ReadDataSetTest, ConverterFailureLeavesFrameAndTempDirectoryAsTheyWere) {
    makeDataSet(2, 1);
    DataSet_s *before = dataSet();
    std::string good = write("good.dat", kTwoZones);
    std::string bad = write("bad.dat", "VARIABLES = X Y\nZONE I=2\n1 2\n3 x\n");
    int files = tempFileCount();
    bool ok = true;
    std::string messages = load({good, bad}, &ok);
    EXPECT_FALSE(ok);
    EXPECT_NE(messages.find("Expecting a value after location I,J,K,Var = 2,1,1,2"), std::string::npos) << messages;
    EXPECT_EQ(dataSet(), before);
    EXPECT_EQ(tempFileCount(), files);
    EXPECT_TRUE(HoldsMessage(load({tempDir + "/missing.plt"}, &ok), "Err: Filename Error: File does not exist."));
    EXPECT_EQ(dataSet(), before);
}

TEST_F(ReadDataSetTest, TruncatedSecondFileLeavesDataSetExactlyAsBefore) {
    std::string first = write("first.dat", kTwoZones);
    loadOk({first});
    std::string binary = tempDir + "/whole.plt";
    ASSERT_TRUE(GoWriteDataSet(dataSet(), nullptr, binary.c_str(), WriteDataSetOptions_s()));
    std::ifstream in(binary, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string cut = tempDir + "/cut.plt";
    std::ofstream(cut, std::ios::binary) << bytes.substr(0, bytes.size() - 12);

    DataSet_s *before = dataSet();
    for (ReadDataOption_e option : {ReadDataOption_Append, ReadDataOption_Replace, ReadDataOption_New}) {
        args.ReadDataOption = option;
        bool ok = true;
        std::string messages = load({binary, cut}, &ok);
        EXPECT_FALSE(ok) << option;
        EXPECT_EQ(messages, "Err: Data file appears to be truncated.\n") << option;
        EXPECT_EQ(dataSet(), before);
        EXPECT_EQ(dataSet()->NumZones, 2);
        EXPECT_EQ(dataSet()->NumVars, 2);
        EXPECT_EQ(value(1, 1, 1), 50.0);
    }
}

TEST_F(ReadDataSetTest, TitlesJoinAndAreCutAtTheLongestTitle) {
    loadOk({write("a.dat", kTwoZones), write("b.dat", "TITLE = \"second\"\nVARIABLES = X Y\nZONE I=1\n0 0\n")});
    EXPECT_STREQ(dataSet()->DataSetTitle, "two zones | second");
    std::string longTitle(250, 't');
    loadOk({write("c.dat", "TITLE = \"" + longTitle + "\"\nVARIABLES = X Y\nZONE I=1\n0 0\n"),
            write("d.dat", "TITLE = \"tail end\"\nVARIABLES = X Y\nZONE I=1\n0 0\n")});
    EXPECT_EQ(std::string(dataSet()->DataSetTitle), longTitle + " | tai");
}

// ---- options of the load ------------------------------------------------------------------

TEST_F(ReadDataSetTest, IndexSkipKeepsTheLastIndex) {
    // Two variables so that the one-variable expansion stays out of the way.
    std::string file = write("line.dat", "VARIABLES = V W\nZONE I=10\n0 0\n10 1\n20 2\n30 3\n40 4\n50 5\n60 6\n70 7\n"
                                         "80 8\n90 9\nZONE I=1\n5 5\n");
    args.IJKSkip.I = 4;
    loadOk({file});
    ASSERT_EQ(numPoints(0), 4);
    EXPECT_EQ(value(0, 0, 0), 0.0);
    EXPECT_EQ(value(0, 0, 1), 40.0);
    EXPECT_EQ(value(0, 0, 2), 80.0);
    EXPECT_EQ(value(0, 0, 3), 90.0);
    EXPECT_EQ(numPoints(1), 1);
    EXPECT_EQ(value(1, 1, 0), 5.0);
    args.IJKSkip.I = 0;
    bool ok = true;
    expectSaid(load({file}, &ok), "Err: Index skip values must be 1 or greater.\n");
    EXPECT_FALSE(ok);
}

TEST_F(ReadDataSetTest, ZoneListKeepsNumbersUnlessCollapsed) {
    std::string text = "VARIABLES = X Y\n";
    for (int z = 1; z <= 6; z++) text += "ZONE T=\"z" + std::to_string(z) + "\" I=1\n" + std::to_string(z) + " 0\n";
    std::string file = write("six.dat", text);
    OwnedSet zones = setOf({1, 4});  // zones 2 and 5
    args.ZonesToLoad = zones.get();
    loadOk({file});
    EXPECT_EQ(dataSet()->NumZones, 5);  // zone 6 and beyond are never read
    EXPECT_EQ(MemberCount(dataSet()->EnabledZones), 2);
    EXPECT_STREQ(GetZoneName(dataSet(), 1), "z2");
    EXPECT_STREQ(GetZoneName(dataSet(), 4), "z5");
    EXPECT_EQ(value(4, 0, 0), 5.0);
    args.CollapseZonesAndVars = true;
    loadOk({file});
    EXPECT_EQ(dataSet()->NumZones, 2);
    EXPECT_STREQ(GetZoneName(dataSet(), 0), "z2");
    EXPECT_STREQ(GetZoneName(dataSet(), 1), "z5");
}

TEST_F(ReadDataSetTest, VariablesByPositionListAndCollapse) {
    std::string file = write("abc.dat", "VARIABLES = A B C\nZONE I=2\n1 2 3\n4 5 6\n");
    OwnedSet vars = setOf({0, 2});
    args.VarPositionList = vars.get();
    loadOk({file});
    EXPECT_EQ(dataSet()->NumVars, 3);
    EXPECT_FALSE(IsVarEnabled(dataSet(), 1));
    EXPECT_EQ(value(0, 2, 1), 6.0);
    args.CollapseZonesAndVars = true;
    loadOk({file});
    EXPECT_EQ(dataSet()->NumVars, 2);
    EXPECT_EQ(varName(1), "C");
    EXPECT_EQ(value(0, 1, 0), 3.0);

    // Positions beyond an explicit name list do not exist.
    NameList names{"A", "B"};
    args.VarNameList = names.list;
    OwnedSet beyond = setOf({0, 2});
    args.VarPositionList = beyond.get();
    bool ok = true;
    expectSaid(load({file}, &ok), "Err: Variable 3 does not exist in the data file.\n");
    EXPECT_FALSE(ok);
}

TEST_F(ReadDataSetTest, DefaultNamesByPositionTakeTheFewestVariables) {
    loadOk({write("three.dat", "VARIABLES = A B C\nZONE I=1\n1 2 3\n"),
            write("two.dat", "VARIABLES = P Q\nZONE I=1\n4 5\n")});
    EXPECT_EQ(dataSet()->NumVars, 2);
    EXPECT_EQ(varName(1), "B");
    EXPECT_EQ(value(1, 1, 0), 5.0);
}

TEST_F(ReadDataSetTest, ByNameMatchesAliasesAndMissingVariablesArePassive) {
    args.VarLoadMode = VarLoadMode_ByName;
    loadOk({write("xy.dat", "VARIABLES = X Y\nZONE I=2\n1 2\n3 4\n"),
            write("yx.dat", "VARIABLES = y x P\nZONE I=1\n20 10 7\n")});
    // Default list: names of the first file found in every other file.
    ASSERT_EQ(dataSet()->NumVars, 2);
    EXPECT_EQ(value(1, 0, 0), 10.0);
    EXPECT_EQ(value(1, 1, 0), 20.0);

    NameList names{"X", "Pressure\nP"};
    args.VarNameList = names.list;
    loadOk({write("xp.dat", "VARIABLES = X P\nZONE I=1\n1 9\n"), write("x.dat", "VARIABLES = X\nZONE I=2\n5\n6\n")});
    EXPECT_EQ(varName(1), "Pressure");
    EXPECT_EQ(value(0, 1, 0), 9.0);
    EXPECT_TRUE(IsVarPassive(dataSet(), 1, 1));
    EXPECT_EQ(value(1, 1, 1), 0.0);
    EXPECT_EQ(value(1, 0, 1), 6.0);
}

TEST_F(ReadDataSetTest, ByNameRefusesDoublesAndUnmatchedFiles) {
    args.VarLoadMode = VarLoadMode_ByName;
    std::string file = write("xy.dat", "VARIABLES = X Y\nZONE I=1\n1 2\n");
    NameList doubled{"X", "Z\nx"};
    args.VarNameList = doubled.list;
    bool ok = true;
    std::string messages = load({file}, &ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(HoldsMessage(messages, "Err: Invalid variable name list, the variable: \"x\" is referenced more than once."))
        << messages;
    args.VarNameList = nullptr;
    expectSaid(load({file, write("ab.dat", "VARIABLES = A B\nZONE I=1\n1 2\n")}, &ok),
              "Err: The specified data files have no matching variable names. Please reload the files using the "
              "Load Data File Options dialog to associate variable names.\n");
    EXPECT_EQ(CurFrame->DataSet, nullptr);
}

// ---- append and replace -------------------------------------------------------------------

TEST_F(ReadDataSetTest, AppendByNameChecksTheNamesAndAddsNewOnes) {
    loadOk({write("xy.dat", "VARIABLES = X Y\nZONE I=2\n1 2\n3 4\n")});
    DataSet_s *present = dataSet();
    args.ReadDataOption = ReadDataOption_Append;
    args.VarLoadMode = VarLoadMode_ByName;
    std::string more = write("xyp.dat", "VARIABLES = X Y P\nZONE I=1\n5 6 7\n");
    NameList few{"X"};
    args.VarNameList = few.list;
    bool ok = true;
    expectSaid(load({more}, &ok),
              "Err: Cannot append data set: Not enough variable names supplied in instructions for appended data set\n");
    NameList wrong{"X", "Q"};
    args.VarNameList = wrong.list;
    expectSaid(load({more}, &ok),
              "Err: Cannot append data set: Variable names supplied for variable 2 are not a superset of the existing "
              "names\n");
    // "Y" is part of "YY" but not one of its aliases.
    NameList partOfName{"X", "YY"};
    args.VarNameList = partOfName.list;
    EXPECT_FALSE(load({more}, &ok).empty());
    EXPECT_EQ(present->NumVars, 2);

    NameList extra{"X", "Q\nY", "P"};
    args.VarNameList = extra.list;
    loadOk({more});
    EXPECT_EQ(dataSet(), present);
    ASSERT_EQ(dataSet()->NumZones, 2);
    ASSERT_EQ(dataSet()->NumVars, 3);
    EXPECT_EQ(varName(1), "Y");  // the present names win
    EXPECT_EQ(varName(2), "P");
    EXPECT_TRUE(IsVarPassive(dataSet(), 0, 2));
    EXPECT_EQ(value(0, 2, 1), 0.0);
    EXPECT_EQ(value(1, 2, 0), 7.0);
    EXPECT_EQ(value(1, 1, 0), 6.0);
}

TEST_F(ReadDataSetTest, AppendByPositionEvensOutTheVariables) {
    std::string abc = write("abc.dat", "VARIABLES = A B C\nZONE I=1\n1 2 3\n");
    OwnedSet first = setOf({0, 1});
    args.VarPositionList = first.get();
    loadOk({abc});
    args.ReadDataOption = ReadDataOption_Append;
    OwnedSet second = setOf({0, 2});
    args.VarPositionList = second.get();
    loadOk({write("pqr.dat", "VARIABLES = P Q R\nZONE I=1\n4 5 6\n")});
    ASSERT_EQ(dataSet()->NumZones, 2);
    EXPECT_EQ(dataSet()->NumVars, 3);
    EXPECT_EQ(varName(2), "R");
    EXPECT_TRUE(IsVarPassive(dataSet(), 0, 2));
    EXPECT_TRUE(IsVarPassive(dataSet(), 1, 1));
    EXPECT_EQ(value(1, 2, 0), 6.0);
    EXPECT_EQ(varName(0), "A");
}

TEST_F(ReadDataSetTest, TextOnlyFileLeavesTheZonesAsTheyWere) {
    loadOk({write("a.dat", kTwoZones)});
    DataSet_s *present = dataSet();
    args.ReadDataOption = ReadDataOption_Append;
    loadOk({write("text.dat", "TEXT X=10 Y=20 T=\"note\"\n")});
    EXPECT_EQ(dataSet(), present);
    EXPECT_EQ(dataSet()->NumZones, 2);
    ASSERT_EQ(CurFrame->Texts.size(), 1u);
    EXPECT_EQ(CurFrame->Texts[0].Text, "note");
    args.IncludeText = false;
    loadOk({write("text2.dat", "TEXT X=10 Y=20 T=\"more\"\n")});
    EXPECT_EQ(CurFrame->Texts.size(), 1u);
}

TEST_F(ReadDataSetTest, ReplaceReachesEveryFrameOfTheOldDataSetNewOnlyThisOne) {
    loadOk({write("a.dat", kTwoZones)});
    DataSet_s *shared = dataSet();
    ASSERT_TRUE(CreateNewFrame());
    ASSERT_TRUE(AttachDataSetToCurFrame(shared));
    std::string other = write("b.dat", "VARIABLES = X Y\nZONE I=1\n1 1\n");
    args.ReadDataOption = ReadDataOption_New;
    loadOk({other});
    EXPECT_EQ(FrameStackGet(0)->DataSet, shared);  // the frame below keeps the old set
    EXPECT_NE(dataSet(), shared);
    ASSERT_TRUE(AttachDataSetToCurFrame(shared));  // the new set had only this frame and goes
    args.ReadDataOption = ReadDataOption_Replace;
    loadOk({other});
    EXPECT_EQ(FrameStackGet(0)->DataSet, FrameStackGet(1)->DataSet);
    EXPECT_EQ(DataSetReferenceCount(dataSet()), 2);
    EXPECT_EQ(dataSet()->NumZones, 1);
}

TEST_F(ReadDataSetTest, LocksRefuseNewLoadsAndStopAppendsAtTheirFirstAddition) {
    loadOk({write("a.dat", kTwoZones)});
    ASSERT_TRUE(DataSetLockOn(dataSet(), "tester"));
    std::string file = write("b.dat", "VARIABLES = X Y\nZONE I=1\n1 1\n");
    bool ok = true;
    expectSaid(load({file}, &ok), "Err: Cannot read a data set: The current data set is locked.\n");
    args.ReadDataOption = ReadDataOption_Append;
    expectSaid(load({file}, &ok), "Err: Cannot add a variable: The current data set is locked.\n");
    EXPECT_FALSE(ok);
    EXPECT_EQ(dataSet()->NumZones, 2);
    ASSERT_TRUE(DataSetLockOff(dataSet(), "tester"));
}

TEST_F(ReadDataSetTest, JournalHoldsTheCommandThatRepeatsTheLoad) {
    std::string file = write("a.dat", kTwoZones);
    args.ReadDataOption = ReadDataOption_Replace;
    OwnedSet zones = setOf({0});
    args.ZonesToLoad = zones.get();
    loadOk({file});
    ASSERT_NE(dataSet()->Journal.Commands, nullptr);
    ASSERT_EQ(ArrayListGetCount(dataSet()->Journal.Commands), 1);
    const char *compressed = ArrayListGetItem(dataSet()->Journal.Commands, 0).CharPtr;
    ASSERT_TRUE(IsCompressedCommand(compressed));
    std::string command;
    ASSERT_TRUE(UncompressMacroCommand(compressed, &command, 120000, nullptr, true));
    EXPECT_EQ(command.rfind("$!READDATASET '\"" + file + "\"'\n  READDATAOPTION = REPLACE\n", 0), 0u) << command;
    EXPECT_NE(command.find("  ZONELIST = [1]\n"), std::string::npos) << command;
    EXPECT_NE(command.find("  VARLOADMODE = BYPOSITION"), std::string::npos) << command;
    std::vector<std::string> names;
    ASSERT_TRUE(ExtractFileNamesFromLoadCommand(compressed, &names));
    EXPECT_EQ(names, std::vector<std::string>{file});
}

// ---- one-variable files -------------------------------------------------------------------

TEST_F(ReadDataSetTest, OneVariableFileGetsIndexCoordinates) {
    std::string text = "VARIABLES = P\nZONE I=300\n";
    for (int n = 0; n < 300; n++) text += std::to_string(n * 2) + "\n";
    loadOk({write("p.dat", text)});
    ASSERT_EQ(dataSet()->NumVars, 2);
    EXPECT_EQ(MemberCount(dataSet()->EnabledVars), 2);
    EXPECT_EQ(varName(0), "I");
    EXPECT_EQ(varName(1), "P");
    EXPECT_EQ(GetNativeFieldDataPtr(dataSet(), 0, 0)->Type, FieldDataType_ShortInt);
    EXPECT_EQ(value(0, 0, 0), 1.0);
    EXPECT_EQ(value(0, 0, 299), 300.0);
    EXPECT_EQ(value(0, 1, 299), 598.0);

    loadOk({write("ij.dat", "VARIABLES = P\nZONE I=2 J=3\n1\n2\n3\n4\n5\n6\n")});
    ASSERT_EQ(dataSet()->NumVars, 3);
    EXPECT_EQ(GetNativeFieldDataPtr(dataSet(), 0, 1)->Type, FieldDataType_Byte);
    EXPECT_EQ(value(0, 0, 3), 2.0);  // point (2, 2)
    EXPECT_EQ(value(0, 1, 3), 2.0);
    EXPECT_EQ(value(0, 1, 5), 3.0);
    EXPECT_EQ(value(0, 2, 5), 6.0);
}

TEST_F(ReadDataSetTest, OneVariableChosenByPositionStandsBehindItsIndex) {
    // Only the third variable of three: it moves up behind I, with no empty slot between.
    OwnedSet third = setOf({2});
    args.VarPositionList = third.get();
    loadOk({write("abc.dat", "VARIABLES = A B C\nZONE I=3\n1 2 3\n4 5 6\n7 8 9\n")});
    ASSERT_EQ(dataSet()->NumVars, 2);
    EXPECT_EQ(MemberCount(dataSet()->EnabledVars), 2);
    EXPECT_EQ(varName(0), "I");
    EXPECT_EQ(varName(1), "C");
    EXPECT_EQ(value(0, 0, 2), 3.0);
    EXPECT_EQ(value(0, 1, 2), 9.0);
}

TEST_F(ReadDataSetTest, OneVariableFilesThatCannotBeExpanded) {
    bool ok = true;
    expectSaid(load({write("i1.dat", "VARIABLES = P\nZONE I=1 J=2\n1\n2\n")}, &ok),
              "Err: Cannot expand 1-Variable datafile.\nIMax = 1 for one of the zones.\n");
    EXPECT_FALSE(ok);
    expectSaid(load({write("mixed.dat", "VARIABLES = P\nZONE I=2\n1\n2\nZONE I=2 J=2\n1\n2\n3\n4\n")}, &ok),
              "Err: Cannot expand 1-variable datafile.\nZones must be all I-Ordered, all IJ-Ordered, or all "
              "IJK-Ordered.\n");
    expectSaid(load({write("k.dat", "VARIABLES = P\nZONE I=2 J=1 K=2\n1\n2\n3\n4\n")}, &ok),
              "Err: KMax cannot be > 1 if JMax == 1 in a one variable data set\n");
    EXPECT_EQ(CurFrame->DataSet, nullptr);
    std::string messages = load({write("fe.dat", "VARIABLES = P\nZONE N=3 E=1 ZONETYPE=FETRIANGLE\n1\n2\n3\n1 2 3\n")}, &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(messages, "Warning: Unusual DataFile - One variable with FE Structure\n");
    EXPECT_EQ(dataSet()->NumVars, 1);
}

// ---- strands ------------------------------------------------------------------------------

std::string timedZones(std::initializer_list<double> times, const std::string &extra = "") {
    std::string text = "VARIABLES = X Y\n";
    int n = 0;
    for (double t : times) {
        char zone[160];
        n++;
        snprintf(zone, sizeof(zone), "ZONE T=\"z%d\" I=1 SOLUTIONTIME=%.17g%s\n%d 0\n", n, t, extra.c_str(), n);
        text += zone;
    }
    return text;
}

std::vector<int32_t> strandsOf(const DataSet_s *dataSet) {
    std::vector<int32_t> strands;
    for (EntIndex_t z = 0; z < dataSet->NumZones; z++) strands.push_back(GetZoneSpec(dataSet, z)->StrandID);
    return strands;
}

TEST_F(ReadDataSetTest, StrandsFormFromTheNthZoneOfEachTime) {
    loadOk({write("t.dat", timedZones({1, 1, 2, 2, 3}))});
    EXPECT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 1, 0, 1, 0}));
    EXPECT_EQ(GetNumValidStrandsInDataSet(dataSet()), 2);
    UpdateStrandInfoFlags(dataSet(), 1);
    EXPECT_TRUE(GetStrandInfo(dataSet(), 1)->HasUniqueTimes);
    EXPECT_EQ(CurFrame->TimeSteps, (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(CurFrame->SolutionTime, 1.0);

    // Times closer than a millionth of the range are one time.
    loadOk({write("near.dat", timedZones({0, 1, 1 + 1e-8, 2}))});
    EXPECT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 0, 1, 0}));
    EXPECT_EQ(CurFrame->TimeSteps.size(), 3u);

    // One time for all: the tolerance is 0 and all zones share the one bin.
    loadOk({write("same.dat", timedZones({5, 5, 5}))});
    EXPECT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 1, 2}));
}

TEST_F(ReadDataSetTest, ExplicitStrandsStayAndAssignmentCanBeOff) {
    std::string text = "VARIABLES = X Y\nZONE I=1 STRANDID=1 SOLUTIONTIME=1\n0 0\nZONE I=1 STRANDID=1 SOLUTIONTIME=2\n"
                       "0 0\nZONE I=1 SOLUTIONTIME=1\n0 0\nZONE I=1 SOLUTIONTIME=2\n0 0\n";
    std::string file = write("mixed.dat", text);
    loadOk({file});
    EXPECT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 0, 1, 1}));
    args.AssignStrandIDs = false;
    loadOk({file});
    EXPECT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 0, -1, -1}));
    EXPECT_EQ(GetNumValidStrandsInDataSet(dataSet()), 1);
}

TEST_F(ReadDataSetTest, AppendedStrandsFollowAddZonesToExistingStrands) {
    std::string first = write("first.dat", timedZones({1, 2}));
    std::string second = write("second.dat", timedZones({3, 4}));
    loadOk({first});
    args.ReadDataOption = ReadDataOption_Append;
    loadOk({second});
    EXPECT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 0, 1, 1}));
    args.ReadDataOption = ReadDataOption_New;
    loadOk({first});
    args.ReadDataOption = ReadDataOption_Append;
    args.AddZonesToExistingStrands = true;
    loadOk({second});
    EXPECT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 0, 0, 0}));
    EXPECT_EQ(CurFrame->TimeSteps, (std::vector<double>{1, 2, 3, 4}));
}

TEST_F(ReadDataSetTest, RaggedStrandShowsItsLastZoneAtOrBeforeTheTime) {
    // Times 1, 1, 2, 3, 3: strand 0 is z1 z3 z4, strand 1 (no zone at time 2) is z2 z5.
    loadOk({write("ragged.dat", timedZones({1, 1, 2, 3, 3}))});
    ASSERT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 1, 0, 0, 1}));
    auto relevant = [&](int32_t strand, double time) {
        OwnedSet zones(GetStrandRelevantZones(CurFrame, strand, time));
        std::vector<SetIndex_t> members;
        for (SetIndex_t z = zones ? GetNextMember(zones.get(), -1) : -1; z >= 0; z = GetNextMember(zones.get(), z))
            members.push_back(z);
        return members;
    };
    EXPECT_EQ(relevant(1, 2.0), (std::vector<SetIndex_t>{1}));  // still the zone of time 1
    EXPECT_EQ(relevant(1, 2.9), (std::vector<SetIndex_t>{1}));
    EXPECT_EQ(relevant(1, 3.0), (std::vector<SetIndex_t>{4}));
    EXPECT_EQ(relevant(0, 2.0), (std::vector<SetIndex_t>{2}));
    EXPECT_TRUE(relevant(0, 0.5).empty());  // before the strand starts
    EXPECT_TRUE(relevant(0, 3.5).empty());
    CurFrame->SolutionTime = 0.5;
    EXPECT_EQ(GetStrandCandidateZone(CurFrame, 0), 0);
    EXPECT_FALSE(StrandIsInContext(CurFrame, 0));
    CurFrame->SolutionTime = 7;
    EXPECT_EQ(GetStrandCandidateZone(CurFrame, 1), 4);
    SetFrameSolutionTime(CurFrame, 2.0);
    // As a field plot the frame shows both strands' maps.
    ASSERT_TRUE(SetNewPlotType(PlotType_Cartesian2D, false, false));
    DeallocSet(&CurFrame->ActiveRelevantZones);
    const Set_a *active = GetActiveRelevantZones(CurFrame);
    EXPECT_TRUE(InSet(active, 1) && InSet(active, 2));
    EXPECT_EQ(MemberCount(active), 2);

    Set_a *first = nullptr, *last = nullptr;
    ASSERT_TRUE(GetStrandZonesAtFirstAndLastTimeSteps(CurFrame, 1, &first, &last));
    EXPECT_TRUE(InSet(first, 1) && MemberCount(first) == 1);
    EXPECT_TRUE(InSet(last, 4) && MemberCount(last) == 1);
    DeallocSet(&first);
    DeallocSet(&last);
}

TEST_F(ReadDataSetTest, TimeStepsAndChangingAZonesTime) {
    std::string text = timedZones({1, 2, 3}) + "ZONE T=\"static\" I=1\n0 0\n";
    loadOk({write("steps.dat", text)});
    EXPECT_EQ(GetNumSolutionTimeTimeSteps(CurFrame), 3);
    EXPECT_EQ(GetSolutionTimeAtTimeStep(CurFrame, 2), 3.0);
    EXPECT_EQ(GetTimeStepValueAtSolutionTime(2.0), 1);
    EXPECT_EQ(GetTimeStepValueAtSolutionTime(2.5), 1);
    EXPECT_EQ(GetTimeStepValueAtSolutionTime(0.5), 0);
    EXPECT_EQ(GetTimeStepValueAtSolutionTime(9.0), 2);
    EXPECT_DOUBLE_EQ(GetSolutionTimeTolerance(CurFrame), 2.0e-6);

    // A static zone keeps no strand: its new time is stored and the answer is false.
    EXPECT_FALSE(SetZoneSolutionTime(CurFrame, 3, 10.0));
    EXPECT_EQ(GetZoneSpec(dataSet(), 3)->SolutionTime, 10.0);
    EXPECT_EQ(CurFrame->TimeSteps, (std::vector<double>{1, 2, 3}));
    EXPECT_TRUE(SetZoneSolutionTime(CurFrame, 2, 5.0));
    EXPECT_EQ(CurFrame->TimeSteps, (std::vector<double>{1, 2, 5}));
    EXPECT_EQ(CurFrame->AnimEndTime, 5.0);
    double min, max;
    ASSERT_TRUE(GetStrandSolutionTimeMinMax(dataSet(), 0, &min, &max));
    EXPECT_EQ(max, 5.0);
}

// ---- a failed append changes nothing ------------------------------------------------------

std::string labelled(const std::string &vars, const std::string &values, int labelSets) {
    std::string text = "VARIABLES = " + vars + "\n";
    for (int n = 0; n < labelSets; n++) text += "CUSTOMLABELS \"a" + std::to_string(n) + "\" \"b\"\n";
    return text + "ZONE I=1\n" + values + "\n";
}

TEST_F(ReadDataSetTest, AppendRefusedAtTheJoinTakesBackTheAddedVariables) {
    // Six label sets each: the join refuses twelve, after the variables were matched.
    loadOk({write("xy.dat", labelled("X Y", "1 2", 6))});
    DataSet_s *present = dataSet();
    std::string xyp = write("xyp.dat", labelled("X Y P", "3 4 5", 6));
    const std::string refused =
        "Err: Invalid data sets for concatenation.  The total number of custom label sets exceeds the maximum.\n";
    auto expectAsBefore = [&](EntIndex_t numVars, std::vector<SetIndex_t> enabled) {
        EXPECT_EQ(dataSet(), present);
        EXPECT_EQ(present->NumVars, numVars);
        std::vector<SetIndex_t> members;
        for (SetIndex_t v = GetNextMember(present->EnabledVars, -1); v >= 0; v = GetNextMember(present->EnabledVars, v))
            members.push_back(v);
        EXPECT_EQ(members, enabled);
        EXPECT_EQ(present->NumZones, 1);
        EXPECT_EQ(present->NumCustomLabelSets, 6);
        EXPECT_EQ(StringListCount(present->VarNames), numVars);
        EXPECT_EQ(value(0, 1, 0), 2.0);
    };
    args.ReadDataOption = ReadDataOption_Append;
    bool ok = true;
    // By position P is added to the present data set before the join.
    expectSaid(load({xyp}, &ok), refused);
    EXPECT_FALSE(ok);
    expectAsBefore(2, {0, 1});
    // By name the extra name is added the same way.
    args.VarLoadMode = VarLoadMode_ByName;
    NameList names{"X", "Y", "P"};
    args.VarNameList = names.list;
    expectSaid(load({xyp}, &ok), refused);
    expectAsBefore(2, {0, 1});
    // Without the labels the same append goes through: the refusal was the join's alone.
    args.IncludeCustomLabels = false;
    loadOk({xyp});
    EXPECT_EQ(present->NumVars, 3);
    EXPECT_EQ(value(1, 2, 0), 5.0);
}

TEST_F(ReadDataSetTest, AppendRefusedAtTheJoinEmptiesAFilledGapAgain) {
    // A B C by positions 1 and 3: B is a gap that an append by position fills.
    OwnedSet ends = setOf({0, 2});
    args.VarPositionList = ends.get();
    loadOk({write("abc.dat", labelled("A B C", "1 2 3", 6))});
    DataSet_s *present = dataSet();
    ASSERT_EQ(present->NumVars, 3);
    ASSERT_FALSE(IsVarEnabled(present, 1));
    args.VarPositionList = nullptr;
    args.ReadDataOption = ReadDataOption_Append;
    bool ok = true;
    expectSaid(load({write("pqr.dat", labelled("P Q R", "4 5 6", 5))}, &ok),
               "Err: Invalid data sets for concatenation.  The total number of custom label sets exceeds the maximum.\n");
    EXPECT_FALSE(ok);
    EXPECT_EQ(present->NumVars, 3);
    EXPECT_FALSE(IsVarEnabled(present, 1));
    EXPECT_EQ(GetNativeFieldDataPtr(present, 0, 1), nullptr);
    EXPECT_EQ(value(0, 2, 0), 3.0);
}

// ---- every file's header is read ----------------------------------------------------------

TEST_F(ReadDataSetTest, ZoneListStopsZonesButNotTheLaterFilesHeaders) {
    std::string first = write("first.dat", "TITLE = \"t\"\nVARIABLES = X Y\nZONE I=1\n1 10\nZONE I=1\n2 20\n");
    std::string second = write("second.dat", "TITLE = \"second\"\nVARIABLES = X Y\nDATASETAUXDATA Owner=\"me\"\n"
                                              "CUSTOMLABELS \"Mon\" \"Tue\"\nTEXT X=1 Y=2 T=\"note\"\n"
                                              "ZONE I=1\n3 30\nZONE I=1\n4 40\n");
    OwnedSet firstZone = setOf({0});
    args.ZonesToLoad = firstZone.get();
    loadOk({first, second});
    EXPECT_STREQ(dataSet()->DataSetTitle, "t | second");
    EXPECT_EQ(dataSet()->NumZones, 1);
    EXPECT_EQ(dataSet()->NumCustomLabelSets, 1);
    ASSERT_EQ(CurFrame->Texts.size(), 1u);
    EXPECT_EQ(CurFrame->Texts[0].Text, "note");
    ArbParam_t owner = 0;
    AuxDataType_e type;
    bool retain;
    ASSERT_NE(dataSet()->AuxData, nullptr);
    ASSERT_TRUE(AuxDataGetItemByName(dataSet()->AuxData, "Owner", &owner, &type, &retain));
    EXPECT_STREQ(reinterpret_cast<const char *>(owner), "me");

    // Zone 3 is the second file's first zone; the two before it are gaps.
    OwnedSet third = setOf({2});
    args.ZonesToLoad = third.get();
    loadOk({first, second});
    ASSERT_EQ(dataSet()->NumZones, 3);
    EXPECT_EQ(MemberCount(dataSet()->EnabledZones), 1);
    EXPECT_EQ(value(2, 1, 0), 30.0);
}

TEST_F(ReadDataSetTest, VariableAuxDataOfLaterFilesIsAppended) {
    loadOk({write("a.dat", "VARIABLES = X Y\nVARAUXDATA 1 Unit=\"m\"\nVARAUXDATA 1 Kind=\"length\"\nZONE I=1\n1 2\n"),
            write("b.dat", "VARIABLES = X Y\nVARAUXDATA 1 Kind=\"position\"\nVARAUXDATA 1 Source=\"probe\"\n"
                           "VARAUXDATA 2 Unit=\"s\"\nZONE I=1\n3 4\n")});
    auto item = [&](EntIndex_t var, const char *name) {
        const AuxData_s *aux = GetVarSpec(dataSet(), var)->AuxData;
        ArbParam_t value = 0;
        AuxDataType_e type;
        bool retain;
        return aux != nullptr && AuxDataGetItemByName(aux, name, &value, &type, &retain)
                   ? std::string(reinterpret_cast<const char *>(value))
                   : std::string("(none)");
    };
    // The first file's items stay, a later item of the same name takes its place, new ones join.
    EXPECT_EQ(AuxDataGetNumItems(GetVarSpec(dataSet(), 0)->AuxData), 3);
    EXPECT_EQ(item(0, "Unit"), "m");
    EXPECT_EQ(item(0, "Kind"), "position");
    EXPECT_EQ(item(0, "Source"), "probe");
    EXPECT_EQ(item(1, "Unit"), "s");
}

// ---- index skip ---------------------------------------------------------------------------

TEST_F(ReadDataSetTest, IndexSkipOnJAndKKeepsTheLastPlanes) {
    // V = i + 10 j + 100 k over 3 x 5 x 4 points.
    std::string text = "VARIABLES = V W\nZONE I=3 J=5 K=4\n";
    for (int k = 0; k < 4; k++)
        for (int j = 0; j < 5; j++)
            for (int i = 0; i < 3; i++) text += std::to_string(i + 10 * j + 100 * k) + " 0\n";
    std::string file = write("ijk.dat", text);
    args.IJKSkip.J = 2;  // J 0 2 4
    args.IJKSkip.K = 3;  // K 0 3
    loadOk({file});
    const ZoneSpec_s *spec = GetZoneSpec(dataSet(), 0);
    ASSERT_EQ(spec->NumPtsI, 3);
    ASSERT_EQ(spec->NumPtsJ, 3);
    ASSERT_EQ(spec->NumPtsK, 2);
    const int js[] = {0, 2, 4}, ks[] = {0, 3};
    LgIndex_t n = 0;
    for (int k : ks)
        for (int j : js)
            for (int i = 0; i < 3; i++, n++) EXPECT_EQ(value(0, 0, n), double(i + 10 * j + 100 * k)) << n;

    // A skip near the largest index keeps the first and the last point.
    args.IJKSkip = IJKSkip_s{2147483646, 2147483646, 1};
    loadOk({file});
    spec = GetZoneSpec(dataSet(), 0);
    EXPECT_EQ(spec->NumPtsI, 2);
    EXPECT_EQ(spec->NumPtsJ, 2);
    EXPECT_EQ(spec->NumPtsK, 4);
    EXPECT_EQ(value(0, 0, 3), 42.0);  // i 2, j 4, k 0
    EXPECT_EQ(value(0, 0, 15), 342.0);  // i 2, j 4, k 3
}

// ---- after the read ----------------------------------------------------------------------

bool acceptingReplaceLoader(StringList_s *) { return true; }

TEST_F(ReadDataSetTest, SuccessfulReplaceDamagesEveryFrameOfTheDataSet) {
    loadOk({write("a.dat", kTwoZones)});
    DataSet_s *shared = dataSet();
    Frame_s *first = CurFrame;
    ASSERT_TRUE(CreateNewFrame());
    ASSERT_TRUE(AttachDataSetToCurFrame(shared));
    ASSERT_TRUE(RegisterDataSetReader(nullptr, acceptingReplaceLoader, "KEEPS", nullptr, nullptr, "x",
                                      DataSetReaderKind_BuiltIn));
    auto drawn = [](Frame_s *frame) {
        frame->DrawState.NeedsUpdate[0] = frame->DrawState.NeedsUpdate[1] = false;
        for (bool &slot : frame->DrawState.SlotValid[0]) slot = true;
        for (bool &slot : frame->DrawState.SlotValid[1]) slot = true;
    };
    args.DataSetReader = "KEEPS";
    args.ReadDataOption = ReadDataOption_New;
    drawn(first);
    drawn(CurFrame);
    loadOk({"instructions"});
    EXPECT_FALSE(FrameNeedsScreenUpdate(first));
    EXPECT_FALSE(FrameNeedsScreenUpdate(CurFrame));
    args.ReadDataOption = ReadDataOption_Replace;
    loadOk({"instructions"});
    EXPECT_TRUE(FrameNeedsScreenUpdate(first));
    EXPECT_TRUE(FrameNeedsScreenUpdate(CurFrame));
}

// ---- strands ------------------------------------------------------------------------------

TEST_F(ReadDataSetTest, NearEqualTimesChainNoFurtherThanABinsFirstTime) {
    // Range 0..1: tolerance 1e-6. 0.5 + 0.6e-6 is within it of 0.5; 0.5 + 1.2e-6 is within it of
    // its neighbour but not of 0.5, so it starts a time of its own.
    loadOk({write("chain.dat", timedZones({0, 0.5, 0.5 + 0.6e-6, 0.5 + 1.2e-6, 1}))});
    EXPECT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 0, 1, 0, 0}));
    EXPECT_EQ(CurFrame->TimeSteps.size(), 4u);
    // In the other order the first zone of the chain sets the bin's time the same way.
    loadOk({write("back.dat", timedZones({0, 0.5 + 1.2e-6, 0.5 + 0.6e-6, 0.5, 1}))});
    EXPECT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 0, 1, 0, 0}));
}

TEST_F(ReadDataSetTest, StrandFlagsCompareTypeIJKAndTimes) {
    auto strandOf = [&](const std::string &zones) {
        loadOk({write("s.dat", "VARIABLES = X Y\n" + zones)});
        MarkStrandInfoAsInvalid(dataSet(), 0);
        UpdateStrandInfoFlags(dataSet(), 0);
        return GetStrandInfo(dataSet(), 0);
    };
    const char *twoByTwo = "ZONE I=2 J=2 STRANDID=1 SOLUTIONTIME=%g\n1 1\n2 2\n3 3\n4 4\n";
    char a[200], b[200];
    snprintf(a, sizeof(a), twoByTwo, 1.0);
    snprintf(b, sizeof(b), twoByTwo, 2.0);
    StrandInfo_s *same = strandOf(std::string(a) + b);
    EXPECT_TRUE(same->HasUniformStructure);
    EXPECT_TRUE(same->HasUniqueTimes);
    // Only J differs: 2 x 2 against 2 x 3.
    StrandInfo_s *otherJ = strandOf(std::string(a) + "ZONE I=2 J=3 STRANDID=1 SOLUTIONTIME=2\n1 1\n2 2\n3 3\n4 4\n5 5\n6 6\n");
    EXPECT_FALSE(otherJ->HasUniformStructure);
    EXPECT_FALSE(otherJ->HasUniqueTimes);
    // Same shape, one time twice.
    StrandInfo_s *twice = strandOf(std::string(a) + a);
    EXPECT_TRUE(twice->HasUniformStructure);
    EXPECT_FALSE(twice->HasUniqueTimes);
}

TEST_F(ReadDataSetTest, DeletingZonesShiftsStrandsAndEmptiesTheirSlots) {
    // Times 1, 1, 2, 2 and a static zone: strand 0 is zones 0 and 2, strand 1 zones 1 and 3.
    loadOk({write("st.dat", timedZones({1, 1, 2, 2}) + "ZONE T=\"static\" I=1\n0 0\n")});
    ASSERT_EQ(strandsOf(dataSet()), (std::vector<int32_t>{0, 1, 0, 1, -1}));
    auto members = [&](int32_t strand) {
        std::vector<SetIndex_t> zones;
        StrandInfo_s *info = GetStrandInfo(dataSet(), strand);
        for (SetIndex_t z = info != nullptr ? GetNextMember(info->ZoneMembers, -1) : -1; z >= 0;
             z = GetNextMember(info->ZoneMembers, z))
            zones.push_back(z);
        return zones;
    };
    OwnedSet first = setOf({0});
    ASSERT_TRUE(DeleteZones(dataSet(), first.get()));
    EXPECT_EQ(members(0), (std::vector<SetIndex_t>{1}));
    EXPECT_EQ(members(1), (std::vector<SetIndex_t>{0, 2}));
    OwnedSet strandZero = setOf({1});
    ASSERT_TRUE(DeleteZones(dataSet(), strandZero.get()));
    EXPECT_EQ(GetStrandInfo(dataSet(), 0), nullptr);
    EXPECT_EQ(GetNumValidStrandsInDataSet(dataSet()), 1);
    double min = -1, max = -1;
    EXPECT_FALSE(GetStrandSolutionTimeMinMax(dataSet(), 0, &min, &max));
    GetDataSetStrandSolutionTimeMinMax(dataSet(), &min, &max);
    EXPECT_EQ(min, 1.0);
    EXPECT_EQ(max, 2.0);
    OwnedSet rest = setOf({0, 1});
    ASSERT_TRUE(DeleteZones(dataSet(), rest.get()));
    EXPECT_EQ(GetNumValidStrandsInDataSet(dataSet()), 0);
    GetDataSetStrandSolutionTimeMinMax(dataSet(), &min, &max);
    EXPECT_EQ(min, 0.0);
    EXPECT_EQ(max, 0.0);
    EXPECT_FALSE(AnyActiveStrands(CurFrame));
    // With no strand left a load may keep the style.
    args.ResetStyle = false;
    loadOk({write("stat.dat", "VARIABLES = X Y\nZONE I=1\n5 5\n")});
    EXPECT_EQ(dataSet()->NumZones, 1);
}

TEST_F(ReadDataSetTest, FieldMapOfAStrand) {
    loadOk({write("maps.dat", timedZones({1, 1, 2, 2}) + "ZONE T=\"static\" I=1\n0 0\n")});
    ASSERT_TRUE(SetNewPlotType(PlotType_Cartesian2D, true, false));
    for (int32_t strand : {0, 1}) {
        int map = GetFieldMapForStrandID(CurFrame, strand);
        ASSERT_GE(map, 0) << strand;
        EXPECT_EQ(CurFrame->FieldAttributes[size_t(map)]->StrandID, strand);
        EXPECT_FALSE(CurFrame->FieldAttributes[size_t(map)]->MapsZones);
        EXPECT_EQ(GetFieldMapForZone(CurFrame, EntIndex_t(strand)), map);      // first time step
        EXPECT_EQ(GetFieldMapForZone(CurFrame, EntIndex_t(strand + 2)), map);  // second
    }
    EXPECT_NE(GetFieldMapForStrandID(CurFrame, 0), GetFieldMapForStrandID(CurFrame, 1));
    EXPECT_EQ(GetFieldMapForStrandID(CurFrame, 2), -1);
    EXPECT_EQ(GetFieldMapForStrandID(CurFrame, -1), -1);  // the static zone's map is no strand's
}

StateChange_e heardChange = StateChange_e(-1);
ArbParam_t heardRows[2] = {-1, -1};
EntIndex_t heardZone = -1;
void hearStyleChange(StateChange_e change) {
    heardChange = change;
    if (!StateChangeSupplementalInfoGetStyleParam(0, &heardRows[0])) heardRows[0] = -1;
    if (!StateChangeSupplementalInfoGetStyleParam(1, &heardRows[1])) heardRows[1] = -1;
    if (!StateChangeSupplementalInfoGetZone(&heardZone)) heardZone = -1;
}

TEST_F(ReadDataSetTest, ChangingAZonesTimeReportsTheSolutionTimeStyle) {
    loadOk({write("steps.dat", timedZones({1, 2, 3}))});
    ASSERT_TRUE(RegisterStateChangeCallback(hearStyleChange));
    heardChange = StateChange_e(-1);
    EXPECT_TRUE(SetZoneSolutionTime(CurFrame, 1, 2.5));
    UnregisterStateChangeCallback(hearStyleChange);
    EXPECT_EQ(heardChange, StateChange_Style);
    EXPECT_EQ(heardRows[0], ArbParam_t(MacroSetValue_GLOBALTIME));
    EXPECT_EQ(heardRows[1], ArbParam_t(MacroSetValue_SOLUTIONTIME));
    EXPECT_EQ(heardZone, 1);
}

}  // namespace
