// The general style tree: every row of each major command of the general style can be set and
// read back in macro units (a sweep over the rows of each command, written out here independently
// of the tables); the tables agree with the kinds of the vocabulary; the input rules convert
// between macro and stored units; the assignment operators and their errors, range and
// enumeration checks, the typed setters, the factory and modern values, the numbered blocks of the
// colour maps and the old $!COLORMAP form.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "base/kernel/errors.h"
#include "base/kernel/genbase.h"
#include "base/kernel/globals.h"
#include "base/kernel/set.h"
#include "base/kernel/valparse.h"
#include "base/macro/genstyle.h"
#include "base/macro/macro1.h"
#include "base/macro/setvalue.h"
#include "base/macro/vocab.h"

namespace {

std::vector<std::string> messages;
MessageBoxReply_e captureMessage(const char *text, MessageBoxType_e) {
    messages.push_back(text);
    return MessageBoxReply_Ok;
}

class SetValue : public ::testing::Test {
  protected:
    void SetUp() override {
        saved = GeneralBase;
        savedFactory = GeneralFactoryDefaults;
        savedConfig = IsProcessingConfigFile;
        savedScales = ValueUnitScales;
        savedGraphics = GraphicsAreInitialized;
        savedBatch = InBatchMode;
        GeneralBase = GeneralBase_s();
        IsProcessingConfigFile = false;
        messages.clear();
        GraphicsAreInitialized = true;
        InBatchMode = false;
        MessageBoxRegisterCallback(&captureMessage);
    }
    void TearDown() override {
        MessageBoxRegisterCallback(nullptr);
        ClearPendingErrors();
        GeneralBase = saved;
        GeneralFactoryDefaults = savedFactory;
        IsProcessingConfigFile = savedConfig;
        ValueUnitScales = savedScales;
        GraphicsAreInitialized = savedGraphics;
        InBatchMode = savedBatch;
    }
    GeneralBase_s saved, savedFactory;
    bool savedConfig = false;
    ValueUnitScales_s savedScales{};
    bool savedGraphics = false;
    bool savedBatch = false;
};

// ---- paths ----------------------------------------------------------------------------------

struct Path {
    int rows[7] = {-1, -1, -1, -1, -1, -1, -1};
    int leaf = -1;  // the row of the value
    std::string text;
};

bool isNumber(const std::string &word) { return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos; }

// "PAPER PAPERSIZEINFO A4 WIDTH": row names, and numbers where a block takes one.
Path pathOf(const std::string &text) {
    Path path;
    path.text = text;
    std::istringstream words(text);
    std::string word;
    int depth = 0;
    while (words >> word) {
        EXPECT_LT(depth, 7) << text;
        if (depth >= 7) break;
        if (isNumber(word)) {
            path.rows[depth++] = std::stoi(word);
            continue;
        }
        MacroToken_e token;
        int row = -1;
        bool found = IdentifyMacroCommandString(word.c_str(), &token, &row) && token == MacroToken_SetValue;
        EXPECT_TRUE(found) << word << " in " << text;
        path.rows[depth++] = row;
        path.leaf = row;
    }
    return path;
}

// Expands a list of rows written in blocks, as in a macro: "A B {C D {E}} F" gives the paths A, B C,
// B D E and F behind the prefix. A word followed by a number takes the number into the path.
std::vector<std::string> expand(const std::string &prefix, const std::string &list) {
    std::vector<std::string> tokens;
    std::istringstream in(list);
    std::string token;
    while (in >> token) tokens.push_back(token);
    std::vector<std::string> paths;
    std::vector<std::string> parents{prefix};
    std::string pending;  // the last word, which a { makes a parent
    auto flush = [&] {
        if (!pending.empty()) paths.push_back(parents.back() + " " + pending);
        pending.clear();
    };
    for (size_t n = 0; n < tokens.size(); n++) {
        const std::string &t = tokens[n];
        if (t == "{") {
            EXPECT_FALSE(pending.empty()) << list;
            parents.push_back(parents.back() + " " + pending);
            pending.clear();
        } else if (t == "}") {
            flush();
            parents.pop_back();
        } else if (isNumber(t)) {
            pending += " " + t;
        } else {
            flush();
            pending = t;
        }
    }
    flush();
    return paths;
}

std::string repeatBlock(const std::string &names, const std::string &block) {
    std::istringstream in(names);
    std::string name, out;
    while (in >> name) out += name + " { " + block + " } ";
    return out;
}

// ---- the sweep ------------------------------------------------------------------------------

struct Reading {
    SetValueReturnCode_e code;
    double number = 0;
    ArbParam_t arg = 0;
};

Reading read(const Path &path) {
    Reading reading;
    reading.code = GetValue(&reading.number, &reading.arg, path.rows);
    return reading;
}

SetValueReturnCode_e setNumber(const Path &path, double value, AssignOp_e op = AssignOp_Equals) {
    int kind = GetSetValueKind(path.leaf);
    if (kind == SetValueKind_Double) return SetValue7(0, value, op, path.rows, false);
    return SetValue7(ArbParam_t(value), 0, op, path.rows, false);
}

SetValueReturnCode_e setText(const Path &path, const char *text) {
    return SetValue7(reinterpret_cast<ArbParam_t>(text), 0, AssignOp_Equals, path.rows, false);
}

// Sets the value at the path to something other than what it holds, reads it back, and sets it
// once more (which must change nothing). The style is put back afterwards.
void expectSettableAndReadable(const std::string &text) {
    SCOPED_TRACE(text);
    Path path = pathOf(text);
    GeneralBase_s before = GeneralBase;
    Reading current = read(path);
    ASSERT_EQ(current.code, SetValue_Ok) << "no value at " << text;
    int kind = GetSetValueKind(path.leaf);
    if (kind >= SetValueKind_FirstEnumSet) {
        int set = GetSetValueEnumSet(path.leaf);
        int wanted = int(current.arg);
        for (int row = GetEnumSetOffset(set); CommandEnumMap[row].Name != nullptr && CommandEnumMap[row].Set == set; row++)
            if (CommandEnumMap[row].Value != current.arg) {
                wanted = CommandEnumMap[row].Value;
                break;
            }
        ASSERT_NE(wanted, int(current.arg));
        EXPECT_EQ(setNumber(path, wanted), SetValue_Ok) << GetLastSetValueErrorString();
        EXPECT_EQ(read(path).arg, wanted);
        EXPECT_EQ(setNumber(path, wanted), SetValue_DuplicateValue);
    } else if (kind == SetValueKind_Text || kind == SetValueKind_Word) {
        std::string wanted = "/tmp/sweep-" + std::to_string(path.leaf);
        EXPECT_EQ(setText(path, wanted.c_str()), SetValue_Ok) << GetLastSetValueErrorString();
        EXPECT_EQ(std::string(reinterpret_cast<const char *>(read(path).arg)), wanted);
        EXPECT_EQ(setText(path, wanted.c_str()), SetValue_DuplicateValue);
    } else if (kind == SetValueKind_Double) {
        double c = current.number;
        bool done = false;
        for (double candidate : {c - 1, c + 1, std::floor(c / 2), c / 2, 0.5, 1.0, 2.0, 10.0}) {
            if (candidate == c || setNumber(path, candidate) != SetValue_Ok) continue;
            EXPECT_NEAR(read(path).number, candidate, 1e-9 * std::max(1.0, std::fabs(candidate)));
            EXPECT_EQ(setNumber(path, read(path).number), SetValue_DuplicateValue);
            done = true;
            break;
        }
        EXPECT_TRUE(done) << "no other value accepted";
    } else {
        ASSERT_TRUE(kind == SetValueKind_LgIndex || kind == SetValueKind_SmInteger || kind == SetValueKind_EntIndex ||
                    kind == SetValueKind_Color)
            << "kind " << kind;
        double c = double(current.arg);
        bool done = false;
        for (double candidate : {c - 1, c + 1, c + 2, 2 * c, 1.0, 2.0}) {
            if (candidate == c || setNumber(path, candidate) != SetValue_Ok) continue;
            EXPECT_EQ(double(read(path).arg), candidate);
            EXPECT_EQ(setNumber(path, candidate), SetValue_DuplicateValue);
            done = true;
            break;
        }
        EXPECT_TRUE(done) << "no other value accepted";
    }
    GeneralBase = before;
}

// The rows of each major command of the general style.
const char *const kInterfaceRows =
    "MINIMUMTIMEOUT USEAPPROXIMATEPLOTS PLOTAPPROXIMATIONMODE SHOWTEXTGEOMSINAPPROXVIEWS NUMPTSALLOWEDBEFOREAPPROX "
    "PERCENTAGEOFPOINTSTOKEEP SHOWSTATUSLINE SHOWCONTINUOUSSTATUS SHOWCOORDINATES SHOWCOORDINATESWITHSELECTORADJUSTOR "
    "USEOFFSCREENBITMAP FASTLINEPATTERNSONSCREEN USEDISPLAYLISTS CACHELIGHTDISPLAYLISTSONLY USEDOUBLEFORDISPLAYLISTS "
    "MINPIXELSFORDRAG AUTOREDRAWISACTIVE SIDEBARSIZING PICKHANDLEWIDTH RULERTHICKNESS RULERPADDING UNIXHELPBROWSERCMD "
    "XORCOLOR USEINDEPENDENTCOLORMAP BEEPONFRAMEINTERRUPT USEOPENGL SECURESPOOLCOMMANDS OKTOEXECUTESYSTEMCOMMAND "
    "SHOWWAITDIALOGS MAXNUMUNDOLEVELS NUMMOUSEBUTTONS QUICKCOLORMODE CONSERVEDERIVEDVARIABLESPACE "
    "COLLECTTIMESTATISTICS TRYTOUSEDOUBLEBUFFER NUMCOLORCELLSTORETURN SHOWFRAMEBORDERSWHENOFF BACKINGSTOREMODE "
    "USEMOD2MASKFORALTDETECTION PRINTDEBUG ENABLEDELAYS ENABLEPAUSES ENABLEWARNINGS ENABLEINTERRUPTS "
    "LOADADDONSUSINGLAZYRELOCATE USESTROKEFONTSONSCREEN USESTROKEFONTSFOR3DTEXT MAXCUSTOMCOLORSININTERFACE "
    "XPGONFILLOFFSET YPGONFILLOFFSET INITIALPLOTFIRSTZONEONLY INITIALPLOTTYPE USEINITIALPLOTDIALOG SHOWTOOLTIPS "
    "ALLOWDATAPOINTSELECT ALLOWDATAPOINTADJUST USEORVANEXPRINTDRIVERS "
    "TRANSLATION { STEPSIZE SMALLSTEP MEDIUMSTEP LARGESTEP } "
    "SCALE { STEPSIZE SMALLSTEP MEDIUMSTEP LARGESTEP ZOOMSCALEPERFRAMEUNIT } "
    "ROTATION { ROTATIONMODE CURRENTANGLE SMALLANGLE MEDIUMANGLE LARGEANGLE SHOWGEOMS } "
    "DATA { SMOOTHBNDRYCOND NUMSMOOTHPASSES VARIABLEDERIVATIONMETHOD VOLUMECELLINTERPOLATIONMODE SMOOTHWEIGHT "
    "INVDISTEXPONENT INVDISTMINRADIUS LINEARINTERPCONST LINEARINTERPMODE INTERPPTSELECTION INTERPNPOINTS KRIGRANGE "
    "KRIGZEROVALUE KRIGDRIFT DERIVATIVEBOUNDARY TRIANGLEKEEPFACTOR CONTLINECREATEMODE } "
    "INITIALFIELDPROBEDIALOGPAGE";
const char *const kMouseButtonRows = "BUTTONCLICK SIMPLEDRAG CONTROLLEDDRAG ALTEDDRAG SHIFTEDDRAG CONTROLALTEDDRAG "
                                     "CONTROLSHIFTEDDRAG ALTSHIFTEDDRAG CONTROLALTSHIFTEDDRAG";
const char *const kRenderingRows = "ADJUSTRECTANGLERIGHTANDBOTTOM DOEXTRADRAWFORLASTPIXEL STIPPLEALLLINES DEPTHBUFFERSIZE "
                                   "MAXSTRIPLENGTH MAXPRIMATIVESPERBLOCK MINBITSPERRGBPLANE POLYGONOFFSETEXTBIASFACTOR "
                                   "USETRIANGLESTRIPS USEQUADSTRIPS TRIANGULATEFILLEDPOLYGONS USEGLCOLORMATERIALFUNCTION "
                                   "CONSTANTLYUSESCISSORING MAXTEXTURESIZE";
const char *const kFileKinds = "INPUTDATAFILE OUTPUTASCIIDATAFILE OUTPUTBINARYDATAFILE LAYOUTFILE INPUTLAYOUTFILE "
                               "OUTPUTLAYOUTFILE OUTPUTLAYOUTPACKAGEFILE STYLEFILE MACROFILE EQUATIONFILE COLORMAPFILE "
                               "IMPORTIMAGEFILE";
const char *const kSizes = "TINY SMALL MEDIUM LARGE HUGE";
const char *const kPaperSizeRows = "WIDTH HEIGHT LEFTHARDCLIPOFFSET RIGHTHARDCLIPOFFSET TOPHARDCLIPOFFSET BOTTOMHARDCLIPOFFSET";
const char *const kPens = "BLACKPEN REDPEN GREENPEN BLUEPEN CYANPEN YELLOWPEN PURPLEPEN WHITEPEN CUSTOM1PEN CUSTOM2PEN "
                          "CUSTOM3PEN CUSTOM4PEN CUSTOM5PEN CUSTOM6PEN CUSTOM7PEN CUSTOM8PEN AXISPEN MAJGRIDLINEPEN "
                          "MINGRIDLINEPEN STREAMLINEPEN MULTICOLORLINEPEN BOUNDARYPEN LABELPEN";

std::vector<std::string> basicColorNames() {
    std::vector<std::string> names{"BLACK", "RED", "GREEN", "BLUE", "CYAN", "YELLOW", "PURPLE", "WHITE"};
    for (int n = 1; n <= 56; n++) names.push_back("CUSTOM" + std::to_string(n));
    return names;
}

void sweep(const std::vector<std::string> &paths) {
    EXPECT_FALSE(paths.empty());
    for (const std::string &path : paths) expectSettableAndReadable(path);
}

TEST_F(SetValue, PaperRowsAreSettableAndReadable) {
    sweep(expand("PAPER", "BACKGROUNDCOLOR ISTRANSPARENT ORIENTPORTRAIT SHOWGRID SHOWRULER SHOWPAPER PAPERSIZE "
                          "RULERSPACING PAPERGRIDSPACING REGIONINWORKAREA { X1 Y1 X2 Y2 } PAPERSIZEINFO { " +
                              repeatBlock("LETTER DOUBLE A3 A4 CUSTOM1 CUSTOM2", kPaperSizeRows) + "}"));
}

TEST_F(SetValue, PrintSetupRowsAreSettableAndReadable) {
    sweep(expand("PRINTSETUP",
                 std::string("SENDPRINTTOFILE PRECISION FORCEEXTRA3DSORTING NUMLIGHTSOURCESHADES PLOTTERUNITSPERINCH "
                             "PENSPEED RGBLEGENDOUTPUTRESOLUTION NUMHARDCOPYCOPIES LARGEPAPEROK DRIVER PALETTE "
                             "SPOOLER { HPGL2MONOSPOOLCMD HPGL2COLORSPOOLCMD HPGLSPOOLCMD PSMONOSPOOLCMD PSCOLORSPOOLCMD "
                             "LGSPOOLCMD } JOBCONTROL { HPGLMOPUPSTR HPGL2MOPUPSTR POSTMOPUPSTR LGMOPUPSTR HPGLSETUPSTR "
                             "HPGL2SETUPSTR POSTSETUPSTR LGSETUPSTR } USEISOLATIN1FONTSINPS PLOTTERPENMAP { ") +
                     kPens + " }"));
}

TEST_F(SetValue, ExportSetupRowsAreSettableAndReadable) {
    sweep(expand("EXPORTSETUP", "EXPORTFORMAT SUNRASTERFORMAT EXPORTREGION ANIMATIONSPEED CONVERTTO256COLORS "
                                "USEMULTIPLECOLORTABLES IMAGEWIDTH GRAYSCALEDEPTH TIFFBYTEORDER JPEGENCODING "
                                "FLASHIMAGETYPE FLASHCOMPRESSIONTYPE RESIZEFILTER QUALITY "
                                "EXPORTFNAME EPSPREVIEWIMAGE { IMAGETYPE IMAGEWIDTH IMAGEHEIGHT GRAYSCALEDEPTH } "
                                "USESUPERSAMPLEANTIALIASING SUPERSAMPLEFACTOR PRINTRENDERTYPE"));
}

TEST_F(SetValue, FileConfigRowsAreSettableAndReadable) {
    sweep(expand("FILECONFIG", std::string("TEMPFILEPATH LAYOUTCONFIG { USERELATIVEPATHS INCLUDEDATA INCLUDEPREVIEW "
                                           "USERELATIVEPATHSINLAYOUTS } FNAMEEXTENSION { ") +
                                   kFileKinds + " } FNAMEFILTER { " + kFileKinds +
                                   " } DATAFILEVARLOADMODE DOAUTOFNAMEEXTENSION DOAUTOFNAMEEXTENSIONWARNING "
                                   "USEMEMORYMAPPEDIO MEMORYMAPPEDIOSIZETHRESHOLD LOADONDEMAND { ALLOW UNLOADSTRATEGY "
                                   "DATASTORESTRATEGY } ASSIGNSTRANDIDS ADDZONESTOEXISTINGSTRANDS"));
}

TEST_F(SetValue, BasicColorRowsAreSettableAndReadable) {
    std::string list;
    for (const std::string &name : basicColorNames()) list += name + " { R G B } ";
    std::vector<std::string> paths = expand("BASICCOLOR", list);
    EXPECT_EQ(paths.size(), 64u * 3u);
    sweep(paths);
}

TEST_F(SetValue, InterfaceRowsAreSettableAndReadable) {
    std::string list = std::string(kInterfaceRows) + " MOUSEACTIONS { MIDDLEBUTTON { " + kMouseButtonRows +
                       " } RIGHTBUTTON { " + kMouseButtonRows + " } } OPENGLCONFIG { ALLOWHWACCELERATION "
                       "RUNDISPLAYLISTSAFTERBUILDING INCLUDEBACKBUFFERDURINGFRONTBUFFERDRAWS MAXIMAGEFILTERMAGNIFICATION "
                       "SCREENRENDERING { " + kRenderingRows + " } IMAGERENDERING { " + kRenderingRows + " } }";
    sweep(expand("INTERFACE", list));
}

TEST_F(SetValue, BasicSizeRowsAreSettableAndReadable) {
    sweep(expand("BASICSIZE", repeatBlock("LINETHICKNESSES TICKLENGTHS SYMBOLSIZES LINEPATLENGTHS ARROWHEADSIZES "
                                          "POINTTEXTSIZES FRAMETEXTSIZES",
                                          kSizes)));
}

TEST_F(SetValue, DefaultTextAndGeometryRowsAreSettableAndReadable) {
    sweep(expand("DEFAULTTEXT", "POSITIONCOORDSYS ZONE ATTACHTOZONE COLOR TEXTSHAPE { FONT SIZEUNITS HEIGHT } "
                                "BOX { BOXTYPE MARGIN LINETHICKNESS COLOR FILLCOLOR } ANGLE ANCHOR LINESPACING SCOPE "
                                "CLIPPING MACROFUNCTIONCOMMAND"));
    sweep(expand("DEFAULTGEOM", "GEOMTYPE POSITIONCOORDSYS ATTACHTOZONE ZONE COLOR ISFILLED FILLCOLOR LINEPATTERN "
                                "PATTERNLENGTH LINETHICKNESS SCOPE DRAWORDER CLIPPING MACROFUNCTIONCOMMAND ARROWHEADSTYLE "
                                "ARROWHEADATTACHMENT ARROWHEADSIZE ARROWHEADANGLE NUMELLIPSEPTS MAINTAINASPECTRATIO "
                                "RESIZEFILTER"));
}

TEST_F(SetValue, SmallGeneralBlocksAreSettableAndReadable) {
    sweep(expand("FONTADJUST", "INTERCHARSPACING SUBSUPFRACTION BOLDFACTOR STROKEFONTLINETHICKNESS"));
    sweep(expand("FRAMESETUP", "VECTMINLEN VECTDEFLEN ALIGNINGCONTOURLABELS DEFNUMLEVELS DEF3DNUMLEVELS INITIAL3DSCALE "
                               "FITINITIALFRAMETOWORKSPACE USECOMMONSORTSTACK DEFAULT2DSTREAMTRACE { STREAMTYPE DIRECTION } "
                               "DEFAULT3DSTREAMTRACE { STREAMTYPE DIRECTION } NUMSTREAMRAKEPOINTS RODRIBBONDEFLEN"));
    sweep(expand("DATASETUP", "SCRATCHDATAFIELDTYPE DERIVATIVEBOUNDARY VARIABLEDERIVATIONMETHOD"));
    sweep(expand("COMPATIBILITY", "ALLOWDATASHARING ALLOWOLDTEXTFORMATTING"));
    sweep(expand("GLOBALFRAME", "SNAPTOGRID SNAPTOPAPER FRAMEHEADERHEIGHT FRAMEHEADERFORMAT"));
    sweep(expand("GLOBALLINKING", "LINKCOLORMAPS"));
    IsProcessingConfigFile = true;
    sweep(expand("LIMITS", "MAXPTSINALINE MAXCHRSINTEXTLABELS MAXNUMCONTOURLEVELS MAXFENROWZONES MAXFENROWVARS "
                           "MAXNUMPICKOBJECTS MAXTHREADS MAXAVAILABLEPROCESSORS MAXUSABLEMEMORY LODTHRESHOLDMINFRACT "
                           "LODTHRESHOLDMAXFRACT IPCTIMEOUTSECONDS"));
}

TEST_F(SetValue, ColorMapRowsAreSettableAndReadableInEveryGroup) {
    // Each band's control points as the factory maps have them: 3, 5, 7, 8, 9 and 5.
    const std::vector<std::pair<std::string, int>> bands = {{"TWOCOLOR", 3},  {"SMRAINBOW", 5}, {"LGRAINBOW", 7},
                                                            {"MODERN", 8},    {"GRAYSCALE", 9}, {"USERDEFINED", 5}};
    for (const char *major : {"GLOBALCOLORMAP 1", "GLOBALCOLORMAP 2", "GLOBALCOLORMAP 3", "GLOBALCOLORMAP 4",
                                     "COLORMAP", "COLORSPECTRUM"}) {
        std::string list = "CONTOURCOLORMAP ";
        for (const auto &band : bands) {
            list += band.first + " { NUMCONTROLPOINTS ";
            for (int point = 1; point <= band.second; point++)
                list += "CONTROLPOINT " + std::to_string(point) + " { COLORMAPFRACTION LEADRGB { R G B } TRAILRGB { R G B } } ";
            list += "} ";
        }
        sweep(expand(major, list));
    }
}

// ---- the tables --------------------------------------------------------------------------------

// Walks a record's table, checking each row against the vocabulary.
void checkTable(const StyleRecord_s &record, const std::string &where, int *leaves) {
    for (size_t n = 0; n < record.NumFields; n++) {
        const StyleField_s &field = record.Fields[n];
        std::string name = SetValueCommandList[field.Row].Name;
        SCOPED_TRACE(where + " " + name);
        for (size_t m = n + 1; m < record.NumFields; m++) EXPECT_NE(record.Fields[m].Row, field.Row) << "twice";
        int kind = GetSetValueKind(field.Row);
        switch (field.Kind) {
            case StyleField_Block:
            case StyleField_NumberedBlock:
                EXPECT_EQ(kind, SetValueKind_Parent);
                ASSERT_NE(field.Sub, nullptr);
                checkTable(*field.Sub, where + " " + name, leaves);
                continue;
            case StyleField_Bool: EXPECT_EQ(kind, SetValueKind_FirstEnumSet) << "YES/NO"; break;
            case StyleField_Enum: EXPECT_GT(kind, SetValueKind_FirstEnumSet); break;
            case StyleField_Int:
            case StyleField_Long:
            case StyleField_EntIndex:
                EXPECT_TRUE(kind == SetValueKind_LgIndex || kind == SetValueKind_SmInteger ||
                            kind == SetValueKind_EntIndex || kind == SetValueKind_Color)
                    << kind;
                EXPECT_NE(field.Spec, nullptr);
                break;
            case StyleField_Double:
                EXPECT_EQ(kind, SetValueKind_Double);
                EXPECT_NE(field.Spec, nullptr);
                break;
            case StyleField_RGBComponent: EXPECT_EQ(kind, SetValueKind_Double); break;
            case StyleField_String:
            case StyleField_FileName: EXPECT_TRUE(kind == SetValueKind_Text || kind == SetValueKind_Word); break;
            case StyleField_Set: EXPECT_EQ(kind, SetValueKind_Set); break;
        }
        EXPECT_NE(field.Target, nullptr);
        (*leaves)++;
    }
}

TEST_F(SetValue, EveryTableRowHasTheKindOfItsVocabularyRow) {
    int leaves = 0;
    checkTable(GeneralStyle, "", &leaves);
    EXPECT_GT(leaves, 300);
    // One entry per major row of the general style, each categorised as general.
    for (size_t n = 0; n < GeneralStyle.NumFields; n++) {
        bool isFrame, isGeneral;
        CategorizeMajorCommand(GeneralStyle.Fields[n].Row, &isFrame, &isGeneral);
        EXPECT_TRUE(isGeneral && !isFrame) << SetValueCommandList[GeneralStyle.Fields[n].Row].Name;
        EXPECT_TRUE(SetValueCommandList[GeneralStyle.Fields[n].Row].IsMajor);
    }
}

// ---- input rules and operators -----------------------------------------------------------------

TEST_F(SetValue, FractionsArePercentInMacros) {
    Path keep = pathOf("INTERFACE PERCENTAGEOFPOINTSTOKEEP");
    EXPECT_EQ(setNumber(keep, 25), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.Interface.PercentageOfPointsToKeep, 0.25);
    EXPECT_DOUBLE_EQ(read(keep).number, 25);
    Path quality = pathOf("EXPORTSETUP QUALITY");
    EXPECT_DOUBLE_EQ(read(quality).number, 75);
    EXPECT_EQ(setNumber(quality, 90), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.ExportSetup.Quality, 0.9);
    EXPECT_EQ(setNumber(quality, 101), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"QUALITY\" must be between 0 and 100.");
    EXPECT_DOUBLE_EQ(GeneralBase.ExportSetup.Quality, 0.9);
    // Frame sizes likewise.
    Path tick = pathOf("BASICSIZE TICKLENGTHS LARGE");
    EXPECT_EQ(setNumber(tick, 4.5), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.BasicSize.TickLengths.Large, 0.045);
}

TEST_F(SetValue, AnglesAreDegreesInMacros) {
    Path small = pathOf("INTERFACE ROTATION SMALLANGLE");
    EXPECT_NEAR(read(small).number, 1.0, 1e-12);  // the factory step is one degree
    EXPECT_EQ(setNumber(small, 90), SetValue_Ok);
    EXPECT_NEAR(GeneralBase.Interface.Rotation.SmallAngle, M_PI / 2, 1e-15);
    EXPECT_NEAR(read(small).number, 90, 1e-12);
    Path arrow = pathOf("DEFAULTGEOM ARROWHEADANGLE");
    EXPECT_NEAR(read(arrow).number, 20, 1e-12);
    EXPECT_EQ(setNumber(arrow, 30), SetValue_Ok);
    EXPECT_NEAR(GeneralBase.DefaultGeom.ArrowheadAngle, M_PI / 6, 1e-15);
    // Four turns at most either way.
    EXPECT_EQ(setNumber(small, 721), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"SMALLANGLE\" must be between -720 and 720.");
    EXPECT_EQ(setNumber(small, -720), SetValue_Ok);
}

TEST_F(SetValue, EntityNumbersAreOneBasedInMacros) {
    Path zone = pathOf("DEFAULTTEXT ZONE");
    EXPECT_EQ(setNumber(zone, 3), SetValue_Ok);
    EXPECT_EQ(GeneralBase.DefaultText.Zone, 2);
    EXPECT_EQ(read(zone).arg, 3);
    // *= works on what the macro shows: zone 3 doubled is zone 6.
    EXPECT_EQ(setNumber(zone, 2, AssignOp_TimesEquals), SetValue_Ok);
    EXPECT_EQ(GeneralBase.DefaultText.Zone, 5);
    EXPECT_EQ(setNumber(zone, 1, AssignOp_PlusEquals), SetValue_Ok);
    EXPECT_EQ(read(zone).arg, 7);
    // Zero means none, stored as minus one; below that is out of range.
    EXPECT_EQ(setNumber(zone, 0), SetValue_Ok);
    EXPECT_EQ(GeneralBase.DefaultText.Zone, -1);
    EXPECT_EQ(setNumber(zone, -1), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"ZONE\" must be between 1 and 32700.");
    EXPECT_EQ(GeneralBase.DefaultText.Zone, -1);
}

TEST_F(SetValue, OperatorsWorkInMacroUnits) {
    Path keep = pathOf("INTERFACE PERCENTAGEOFPOINTSTOKEEP");  // 50 percent
    EXPECT_EQ(setNumber(keep, 10, AssignOp_PlusEquals), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.Interface.PercentageOfPointsToKeep, 0.6);
    EXPECT_EQ(setNumber(keep, 20, AssignOp_MinusEquals), SetValue_Ok);
    EXPECT_NEAR(read(keep).number, 40, 1e-12);
    EXPECT_EQ(setNumber(keep, 2, AssignOp_TimesEquals), SetValue_Ok);
    EXPECT_NEAR(read(keep).number, 80, 1e-12);
    EXPECT_EQ(setNumber(keep, 4, AssignOp_DivideEquals), SetValue_Ok);
    EXPECT_NEAR(read(keep).number, 20, 1e-12);
    EXPECT_EQ(setNumber(keep, 0, AssignOp_DivideEquals), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Divide by zero");
    EXPECT_NEAR(read(keep).number, 20, 1e-12);
    EXPECT_EQ(setNumber(keep, 6, AssignOp_TimesEquals), SetValue_ValueRangeError) << "120 percent";
    EXPECT_NEAR(read(keep).number, 20, 1e-12);

    Path width = pathOf("EXPORTSETUP IMAGEWIDTH");
    EXPECT_EQ(setNumber(width, 100, AssignOp_PlusEquals), SetValue_Ok);
    EXPECT_EQ(GeneralBase.ExportSetup.ImageWidth, 612);
    EXPECT_EQ(setNumber(width, 5, AssignOp_DivideEquals), SetValue_Ok);
    EXPECT_EQ(GeneralBase.ExportSetup.ImageWidth, 122) << "the fraction is cut";
    EXPECT_EQ(setNumber(width, 0, AssignOp_DivideEquals), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Divide by zero");

    Path channel = pathOf("BASICCOLOR CUSTOM5 G");
    GeneralBase.BasicColor[12].G = 100;
    EXPECT_EQ(setNumber(channel, 27.6, AssignOp_PlusEquals), SetValue_Ok);
    EXPECT_EQ(GeneralBase.BasicColor[12].G, 128) << "rounded";
    EXPECT_EQ(setNumber(channel, 2, AssignOp_TimesEquals), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"G\" must be between 0 and 255.");
}

TEST_F(SetValue, OperatorsThatDoNotApplyAreRefused) {
    EXPECT_EQ(setNumber(pathOf("PAPER SHOWGRID"), 0, AssignOp_PlusEquals), SetValue_AssignOpError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Assignment operator invalid in\n assignment to \"SHOWGRID\"");
    EXPECT_EQ(setNumber(pathOf("PAPER PAPERSIZE"), 1, AssignOp_PlusEquals), SetValue_AssignOpError);
    EXPECT_EQ(SetValue7(reinterpret_cast<ArbParam_t>("x"), 0, AssignOp_PlusEquals, pathOf("GLOBALFRAME FRAMEHEADERFORMAT").rows, false),
              SetValue_AssignOpError);
    // A unit suffix where the value takes none.
    EXPECT_EQ(setNumber(pathOf("INTERFACE PERCENTAGEOFPOINTSTOKEEP"), 2, AssignOp_ConvertFromCm), SetValue_AssignOpError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Not allowed to use suffix for \"PERCENTAGEOFPOINTSTOKEEP\"");
    EXPECT_EQ(setNumber(pathOf("EXPORTSETUP IMAGEWIDTH"), 2, AssignOp_ConvertFromIn), SetValue_AssignOpError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Not allowed to use suffix for \"IMAGEWIDTH\"");
    EXPECT_DOUBLE_EQ(GeneralBase.Interface.PercentageOfPointsToKeep, 0.5);
}

TEST_F(SetValue, UnitSuffixesConvertToPaperInches) {
    Path width = pathOf("PAPER PAPERSIZEINFO CUSTOM1 WIDTH");
    EXPECT_EQ(setNumber(width, 25.4, AssignOp_ConvertFromCm), SetValue_Ok);
    EXPECT_NEAR(GeneralBase.Paper.PaperSizeInfo[4].Width, 10.0, 1e-12);
    EXPECT_EQ(setNumber(width, 504, AssignOp_ConvertFromPt), SetValue_Ok);
    EXPECT_NEAR(read(width).number, 7.0, 1e-12);
    EXPECT_EQ(setNumber(width, 9, AssignOp_ConvertFromIn), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.Paper.PaperSizeInfo[4].Width, 9.0);
    EXPECT_EQ(setNumber(pathOf("GLOBALFRAME FRAMEHEADERHEIGHT"), 18, AssignOp_ConvertFromPt), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.GlobalFrame.FrameHeaderHeight, 0.25);
}

TEST_F(SetValue, UnitSuffixesConvertToFrameUnitsKeepingTheSign) {
    ValueUnitScales.PaperToFrameScale = 0.125;  // an 8-inch frame
    ValueUnitScales.FrameScale = 1.0;
    EXPECT_EQ(setNumber(pathOf("BASICSIZE LINETHICKNESSES MEDIUM"), 0.1, AssignOp_ConvertFromIn), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.BasicSize.LineThicknesses.Medium, 0.0125);
    EXPECT_NEAR(read(pathOf("BASICSIZE LINETHICKNESSES MEDIUM")).number, 1.25, 1e-12);
    // A text size converts through the Y direction and stays positive.
    EXPECT_EQ(setNumber(pathOf("BASICSIZE FRAMETEXTSIZES LARGE"), 36, AssignOp_ConvertFromPt), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.BasicSize.FrameTextSizes.Large, 0.0625);
    EXPECT_EQ(setNumber(pathOf("DEFAULTGEOM LINETHICKNESS"), 9, AssignOp_ConvertFromIn), SetValue_ValueRangeError)
        << "a whole frame at most";
}

TEST_F(SetValue, RangeErrorsKeepTheOldValue) {
    Path width = pathOf("EXPORTSETUP IMAGEWIDTH");
    EXPECT_EQ(setNumber(width, 0), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"IMAGEWIDTH\" must be between 1 and 32766.");
    EXPECT_EQ(setNumber(width, 32767), SetValue_ValueRangeError);
    EXPECT_EQ(GeneralBase.ExportSetup.ImageWidth, 512);
    EXPECT_EQ(setNumber(width, 32766), SetValue_Ok);
    EXPECT_EQ(setNumber(width, 1), SetValue_Ok);

    Path points = pathOf("GLOBALCOLORMAP 1 SMRAINBOW NUMCONTROLPOINTS");
    EXPECT_EQ(setNumber(points, 51), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"NUMCONTROLPOINTS\" must be between 2 and 50.");
    EXPECT_EQ(setNumber(points, 1), SetValue_ValueRangeError);
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].SmRainbow.NumControlPoints, 5);

    Path undo = pathOf("INTERFACE MAXNUMUNDOLEVELS");
    EXPECT_EQ(setNumber(undo, -1), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"MAXNUMUNDOLEVELS\" must be greater than or equal to 0.");
    EXPECT_EQ(GeneralBase.NumUndoLevels, 50);
}

TEST_F(SetValue, TheSameValueAgainIsADuplicate) {
    EXPECT_EQ(setNumber(pathOf("PAPER SHOWGRID"), 1), SetValue_DuplicateValue);  // the factory shows the grid
    EXPECT_EQ(setNumber(pathOf("PAPER SHOWGRID"), 0), SetValue_Ok);
    EXPECT_FALSE(GeneralBase.Paper.ShowGrid);
    EXPECT_EQ(setNumber(pathOf("EXPORTSETUP EXPORTFORMAT"), 13), SetValue_DuplicateValue);  // PNG
    EXPECT_EQ(setNumber(pathOf("EXPORTSETUP IMAGEWIDTH"), 512), SetValue_DuplicateValue);
    EXPECT_EQ(setNumber(pathOf("INTERFACE PERCENTAGEOFPOINTSTOKEEP"), 50), SetValue_DuplicateValue);
    EXPECT_EQ(setText(pathOf("GLOBALFRAME FRAMEHEADERFORMAT"), GeneralBase.GlobalFrame.FrameHeaderFormat.c_str()),
              SetValue_DuplicateValue);
    EXPECT_EQ(CombineSetValueReturnCodes(SetValue_DuplicateValue, SetValue_DuplicateValue), SetValue_DuplicateValue);
    EXPECT_EQ(CombineSetValueReturnCodes(SetValue_DuplicateValue, SetValue_Ok), SetValue_Ok);
    EXPECT_EQ(CombineSetValueReturnCodes(SetValue_Ok, SetValue_ValueRangeError), SetValue_ValueRangeError);
}

TEST_F(SetValue, EnumeratedValuesMustBeInTheRowsSet) {
    Path size = pathOf("PAPER PAPERSIZE");
    EXPECT_EQ(setNumber(size, 9), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Invalid Option for \"PAPERSIZE\"");
    EXPECT_EQ(setNumber(size, PaperSize_A3), SetValue_Ok);
    EXPECT_EQ(GeneralBase.Paper.PaperSize, PaperSize_A3);
    // Basic colours are 0 to 63 and the multi-colour codes; 64 is no colour name.
    EXPECT_EQ(setNumber(pathOf("PAPER BACKGROUNDCOLOR"), 64), SetValue_ValueRangeError);
    EXPECT_EQ(setNumber(pathOf("PAPER BACKGROUNDCOLOR"), 63), SetValue_Ok);
    // SUNVIEW and SUNRASTER share a value; both are accepted.
    EXPECT_EQ(setNumber(pathOf("EXPORTSETUP EXPORTFORMAT"), 3), SetValue_Ok);
    EXPECT_EQ(setNumber(pathOf("EXPORTSETUP EXPORTFORMAT"), 18), SetValue_ValueRangeError);
    EXPECT_EQ(GeneralBase.ExportSetup.ExportFormat, 3);
    EXPECT_EQ(CheckEnumValue(2, 2, MacroSetValue_PAPERSIZE), SetValue_DuplicateValue);
    EXPECT_EQ(CheckEnumValue(2, 5, MacroSetValue_PAPERSIZE), SetValue_Ok);
    EXPECT_EQ(CheckEnumValue(2, 6, MacroSetValue_PAPERSIZE), SetValue_ValueRangeError);
}

TEST_F(SetValue, PathsThatHoldNoValueAreRefused) {
    EXPECT_EQ(setNumber(pathOf("LIMITS PRINTDEBUG"), 1), SetValue_InvalidCommandOption);
    EXPECT_EQ(GetLastSetValueErrorString(), "Invalid option \"PRINTDEBUG\"\nfor command: \"LIMITS\"");
    EXPECT_EQ(setNumber(pathOf("PAPER PAPERSIZEINFO LETTER SHOWGRID"), 1), SetValue_InvalidCommandOption);
    EXPECT_EQ(GetLastSetValueErrorString(), "Invalid option \"SHOWGRID\"\nfor command: \"PAPER\"");
    EXPECT_EQ(setNumber(pathOf("PAPER PAPERSIZEINFO"), 1), SetValue_InvalidCommandOption) << "a block, no value";
    EXPECT_EQ(setNumber(pathOf("PAPER SHOWGRID SHOWRULER"), 1), SetValue_InvalidCommandOption);
    Reading reading = read(pathOf("PAPER PAPERSIZEINFO A4"));
    EXPECT_EQ(reading.code, SetValue_InvalidCommandOption);
    // Frame rows need a frame (none exists in this test).
    EXPECT_EQ(setNumber(pathOf("THREEDVIEW PSIANGLE"), 10), SetValue_ContextError);
    EXPECT_EQ(GetLastSetValueErrorString(), "There is no current frame.");
    EXPECT_TRUE(IsSetValueMajorAvailable(MacroSetValue_PAPER));
    EXPECT_TRUE(IsSetValueMajorAvailable(MacroSetValue_COLORSPECTRUM));
    EXPECT_TRUE(IsSetValueMajorAvailable(MacroSetValue_THREEDVIEW));
    EXPECT_TRUE(IsSetValueMajorAvailable(MacroSetValue_FIELDMAP));
}

TEST_F(SetValue, LimitsOutsideTheConfigurationFile) {
    Path points = pathOf("LIMITS MAXPTSINALINE");
    EXPECT_EQ(setNumber(points, 10), SetValue_LimitsOutsideConfig);
    EXPECT_EQ(GetLastSetValueErrorString(),
              "The $!LIMITS sub-command option is only allowed within the configuration file.");
    EXPECT_EQ(GeneralBase.MaxPtsInALine, 5000);
    IsProcessingConfigFile = true;
    EXPECT_EQ(setNumber(points, 10), SetValue_Ok);
    EXPECT_EQ(GeneralBase.MaxPtsInALine, 10);
    IsProcessingConfigFile = false;
    EXPECT_EQ(setNumber(pathOf("LIMITS LODTHRESHOLDMAXFRACT"), 0.9), SetValue_Ok) << "not limited to the file";
}

TEST_F(SetValue, TheLoadFractionsKeepTheirOrder) {
    Path low = pathOf("LIMITS LODTHRESHOLDMINFRACT"), high = pathOf("LIMITS LODTHRESHOLDMAXFRACT");
    EXPECT_EQ(setNumber(low, 2), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"LODTHRESHOLDMINFRACT\" must be between 0 and 1.");
    EXPECT_EQ(setNumber(low, 0.8), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"LODTHRESHOLDMINFRACT\" must be between 0 and 0.7.");
    EXPECT_EQ(setNumber(high, 0.2), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"LODTHRESHOLDMAXFRACT\" must be between 0.3 and 1.");
    EXPECT_EQ(setNumber(high, 0.9), SetValue_Ok);
    EXPECT_EQ(setNumber(low, 0.8), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.LODThresholdMinFract, 0.8);
}

TEST_F(SetValue, TextHeightFollowsItsSizeUnits) {
    Path height = pathOf("DEFAULTTEXT TEXTSHAPE HEIGHT"), units = pathOf("DEFAULTTEXT TEXTSHAPE SIZEUNITS");
    EXPECT_NEAR(read(height).number, 3, 1e-12);  // frame percent
    EXPECT_EQ(setNumber(height, 5), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.DefaultText.Height, 0.05);
    EXPECT_EQ(setNumber(units, 2), SetValue_Ok);  // POINT
    EXPECT_EQ(setNumber(height, 14), SetValue_Ok);
    EXPECT_DOUBLE_EQ(GeneralBase.DefaultText.Height, 14);
    EXPECT_EQ(setNumber(height, 3000), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"HEIGHT\" must be between 1E-150 and 2500.");
    EXPECT_EQ(setNumber(height, 0.2), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "\"HEIGHT\" must be between 0.5 and 2500.");
}

TEST_F(SetValue, DerivativeSettingsAreOneFieldUnderTwoCommands) {
    EXPECT_EQ(setNumber(pathOf("INTERFACE DATA DERIVATIVEBOUNDARY"), 1), SetValue_Ok);  // COMPLEX
    EXPECT_EQ(GeneralBase.DataSetup.DerivativeBoundary, 1);
    EXPECT_EQ(read(pathOf("DATASETUP DERIVATIVEBOUNDARY")).arg, 1);
    EXPECT_EQ(setNumber(pathOf("DATASETUP DERIVATIVEBOUNDARY"), 1), SetValue_DuplicateValue);
    EXPECT_EQ(setNumber(pathOf("DATASETUP VARIABLEDERIVATIONMETHOD"), 0), SetValue_Ok);  // FAST
    EXPECT_EQ(read(pathOf("INTERFACE DATA VARIABLEDERIVATIONMETHOD")).arg, 0);
    // USERELATIVEPATHSINLAYOUTS is USERELATIVEPATHS in other words.
    EXPECT_EQ(setNumber(pathOf("FILECONFIG USERELATIVEPATHSINLAYOUTS"), 0), SetValue_Ok);
    EXPECT_EQ(read(pathOf("FILECONFIG LAYOUTCONFIG USERELATIVEPATHS")).arg, 0);
}

TEST_F(SetValue, FileNamesMustNotBeEmpty) {
    Path name = pathOf("EXPORTSETUP EXPORTFNAME");
    GeneralBase.ExportFName = "/out/old.png";
    EXPECT_EQ(setText(name, ""), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Invalid file name string argument.");
    EXPECT_EQ(GeneralBase.ExportFName, "/out/old.png");
    std::string savedStart = StartupDirectory;
    StartupDirectory = "/work/start";
    EXPECT_EQ(setText(name, "plot.png"), SetValue_Ok);
    EXPECT_EQ(GeneralBase.ExportFName, "/work/start/plot.png");
    StartupDirectory = savedStart;
    // A plain string may be empty.
    EXPECT_EQ(setText(pathOf("FILECONFIG TEMPFILEPATH"), "/scratch"), SetValue_Ok);
    EXPECT_EQ(setText(pathOf("FILECONFIG TEMPFILEPATH"), ""), SetValue_Ok);
    EXPECT_EQ(GeneralBase.TempFilePath, "");
}

// ---- colour maps ---------------------------------------------------------------------------

TEST_F(SetValue, ColorMapGroupsAndControlPointsAreNumbered) {
    EXPECT_EQ(setNumber(pathOf("GLOBALCOLORMAP 2 SMRAINBOW CONTROLPOINT 3 LEADRGB R"), 7), SetValue_Ok);
    EXPECT_EQ(GeneralBase.ColorMapGroups[1].SmRainbow.ControlPoint[2].LeadRGB.R, 7);
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].SmRainbow.ControlPoint[2].LeadRGB.R, 0) << "group 1 untouched";
    EXPECT_EQ(setNumber(pathOf("GLOBALCOLORMAP 5 CONTOURCOLORMAP"), 1), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Invalid group number specified in $!GLOBALCOLORMAP command.");
    EXPECT_EQ(setNumber(pathOf("GLOBALCOLORMAP 1 SMRAINBOW CONTROLPOINT 6 COLORMAPFRACTION"), 0.5),
              SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Invalid color map control point");
    EXPECT_EQ(setNumber(pathOf("GLOBALCOLORMAP 1 SMRAINBOW NUMCONTROLPOINTS"), 6), SetValue_Ok);
    EXPECT_EQ(setNumber(pathOf("GLOBALCOLORMAP 1 SMRAINBOW CONTROLPOINT 6 COLORMAPFRACTION"), 0.5), SetValue_Ok);
    // The old forms address group 1.
    EXPECT_EQ(setNumber(pathOf("COLORMAP CONTOURCOLORMAP"), 2), SetValue_Ok);
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].ContourColorMap, 2);
    EXPECT_EQ(read(pathOf("COLORSPECTRUM CONTOURCOLORMAP")).arg, 2);
    EXPECT_EQ(setNumber(pathOf("COLORSPECTRUM MODERN CONTROLPOINT 8 TRAILRGB B"), 9), SetValue_Ok);
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].Modern.ControlPoint[7].TrailRGB.B, 9);
}

// Runs one command as a macro would; false after an error (then in messages).
bool run(const std::string &command) {
    messages.clear();
    return ExecuteSingleMacroCommand(command.c_str(), MacroVersionCurrent);
}

std::string onlyError() {
    EXPECT_EQ(messages.size(), 1u);
    if (messages.empty()) return "(none)";
    std::string text = messages.back();
    return text.substr(0, text.find("\n\nError occurred in $! command"));
}

TEST_F(SetValue, ColorMapCommandsReadTheirNumbers) {
    EXPECT_TRUE(run("$!GLOBALCOLORMAP 3 SMRAINBOW { CONTROLPOINT 2 { LEADRGB { R = 11 G = 12 } COLORMAPFRACTION = 0.3 } }"));
    EXPECT_EQ(GeneralBase.ColorMapGroups[2].SmRainbow.ControlPoint[1].LeadRGB.R, 11);
    EXPECT_EQ(GeneralBase.ColorMapGroups[2].SmRainbow.ControlPoint[1].LeadRGB.G, 12);
    EXPECT_DOUBLE_EQ(GeneralBase.ColorMapGroups[2].SmRainbow.ControlPoint[1].Location, 0.3);
    EXPECT_TRUE(run("$!GLOBALCOLORMAP CONTOURCOLORMAP = GRAYSCALE")) << "group 1 without a number";
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].ContourColorMap, 3);
    EXPECT_FALSE(run("$!GLOBALCOLORMAP 5 CONTOURCOLORMAP = MODERN"));
    EXPECT_EQ(onlyError(), "Invalid group number specified in $!GLOBALCOLORMAP command.");
    EXPECT_FALSE(run("$!GLOBALCOLORMAP 1 SMRAINBOW { CONTROLPOINT 0 { COLORMAPFRACTION = 0.1 } }"));
    EXPECT_EQ(onlyError(), "Invalid color map control point");
    EXPECT_FALSE(run("$!GLOBALCOLORMAP 1 SMRAINBOW { CONTROLPOINT 9 { COLORMAPFRACTION = 0.1 } }"));
    EXPECT_EQ(onlyError(), "Invalid color map control point");
    // The old form: group 1 runs, any other group is passed over without a look inside.
    EXPECT_TRUE(run("$!COLORMAP 2 TWOCOLOR { NUMCONTROLPOINTS = 99 }"));
    EXPECT_TRUE(messages.empty());
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].TwoColor.NumControlPoints, 3);
    EXPECT_TRUE(run("$!COLORSPECTRUM 1 CONTOURCOLORMAP = LGRAINBOW"));
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].ContourColorMap, 1);
    EXPECT_TRUE(run("$!COLORMAP TWOCOLOR { CONTROLPOINT 1 { TRAILRGB { B = 200 } } }"));
    EXPECT_EQ(GeneralBase.ColorMapGroups[0].TwoColor.ControlPoint[0].TrailRGB.B, 200);
    EXPECT_FALSE(run("$!COLORMAP 1 TWOCOLOR { NUMCONTROLPOINTS = 99 }"));
    EXPECT_EQ(onlyError(), "\"NUMCONTROLPOINTS\" must be between 2 and 50.");
}

TEST_F(SetValue, MacroCommandsReachEveryLevel) {
    EXPECT_TRUE(run("$!PAPER PAPERSIZEINFO { A4 { WIDTH = 8 HEIGHT = 11.5 } } REGIONINWORKAREA { X2 = 12 }"));
    EXPECT_DOUBLE_EQ(GeneralBase.Paper.PaperSizeInfo[3].Width, 8);  // A4 is stored fourth
    EXPECT_DOUBLE_EQ(GeneralBase.Paper.PaperSizeInfo[3].Height, 11.5);
    EXPECT_DOUBLE_EQ(GeneralBase.Paper.RegionInWorkArea.X2, 12);
    EXPECT_TRUE(run("$!INTERFACE MOUSEACTIONS { RIGHTBUTTON { ALTSHIFTEDDRAG = ZROTATEDATA } } "
                    "OPENGLCONFIG { IMAGERENDERING { MAXTEXTURESIZE = 4096 } }"));
    EXPECT_EQ(GeneralBase.Interface.RightButton.AltShiftedDrag, 9);
    EXPECT_EQ(GeneralBase.Interface.OpenGLConfig.ImageRendering.MaxTextureSize, 4096);
    EXPECT_EQ(GeneralBase.Interface.OpenGLConfig.ScreenRendering.MaxTextureSize, 2048);
    EXPECT_TRUE(run("$!BASICCOLOR CUSTOM3 { R = 1 G = 2 B = 3 }"));
    EXPECT_EQ(GeneralBase.BasicColor[10].R, 1);
    EXPECT_EQ(GeneralBase.BasicColor[10].B, 3);
    EXPECT_TRUE(run("$!BASICSIZE POINTTEXTSIZES { HUGE = 36 }"));
    EXPECT_DOUBLE_EQ(GeneralBase.BasicSize.PointTextSizes.Huge, 36);
    EXPECT_TRUE(run("$!PRINTSETUP SPOOLER { PSCOLORSPOOLCMD = \"lp -d colour @\" } PLOTTERPENMAP { LABELPEN = 4 }"));
    EXPECT_EQ(GeneralBase.PrintSetup.PSColorSpoolCmd, "lp -d colour @");
    EXPECT_EQ(GeneralBase.PrintSetup.PlotterPenMap[22], 4);
    EXPECT_FALSE(run("$!EXPORTSETUP IMAGEWIDTH = 40000"));
    EXPECT_EQ(onlyError(), "\"IMAGEWIDTH\" must be between 1 and 32766.");
}

// ---- typed setters -----------------------------------------------------------------------------

TEST_F(SetValue, SetValuesFollowTheOperator) {
    Set_a *target = nullptr;
    Set_a *value = AllocSet(false);
    ASSERT_NE(value, nullptr);
    for (SetIndex_t member : {1, 3, 9}) AddToSet(value, member, false);
    // = on no set makes one, members at or above the limit left out.
    EXPECT_EQ(SetSetValue(MacroSetValue_ACTIVEFIELDMAPS, &target, value, 5, AssignOp_Equals), SetValue_Ok);
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(MemberCount(target), 2);
    EXPECT_TRUE(InSet(target, 1) && InSet(target, 3) && !InSet(target, 9));
    EXPECT_EQ(SetSetValue(MacroSetValue_ACTIVEFIELDMAPS, &target, value, 5, AssignOp_Equals), SetValue_DuplicateValue);
    ClearSet(value);
    AddToSet(value, 0, false);
    AddToSet(value, 3, false);
    EXPECT_EQ(SetSetValue(MacroSetValue_ACTIVEFIELDMAPS, &target, value, 5, AssignOp_PlusEquals), SetValue_Ok);
    EXPECT_EQ(MemberCount(target), 3);
    EXPECT_EQ(SetSetValue(MacroSetValue_ACTIVEFIELDMAPS, &target, value, 5, AssignOp_MinusEquals), SetValue_Ok);
    EXPECT_EQ(MemberCount(target), 1);
    EXPECT_TRUE(InSet(target, 1));
    EXPECT_EQ(SetSetValue(MacroSetValue_ACTIVEFIELDMAPS, &target, value, 5, AssignOp_MinusEquals), SetValue_DuplicateValue);
    EXPECT_EQ(SetSetValue(MacroSetValue_ACTIVEFIELDMAPS, &target, value, 5, AssignOp_TimesEquals), SetValue_AssignOpError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Assignment operator invalid in\nSET assignment for \"ACTIVEFIELDMAPS\"");
    EXPECT_EQ(MemberCount(target), 1);
    // = replaces.
    EXPECT_EQ(SetSetValue(MacroSetValue_ACTIVEFIELDMAPS, &target, value, 5, AssignOp_Equals), SetValue_Ok);
    EXPECT_TRUE(InSet(target, 0) && InSet(target, 3) && !InSet(target, 1));
    DeallocSet(&target);
    DeallocSet(&value);
}

TEST_F(SetValue, RecordTablesServeAnyRecord) {
    // A record of a set and a numbered block, as the frame's tables will have them.
    struct Item {
        int Count = 0;
    };
    struct Sample {
        Set_a *Members = nullptr;
        Item Items[3];
    };
    static const InputSpecs_s limit{InputSpecType_LgIndex, 0, 9, 1, nullptr};
    static const StyleField_s itemFields[] = {
        {MacroSetValue_NUMPTS, StyleField_Int, &AboveZeroLgIndexInputSpec,
         [](void *r) -> void * { return &static_cast<Item *>(r)->Count; }, nullptr, nullptr, nullptr, 0, nullptr, nullptr},
    };
    static const StyleRecord_s itemRecord{itemFields, 1};
    static const StyleField_s sampleFields[] = {
        {MacroSetValue_ZONESET, StyleField_Set, &limit, [](void *r) -> void * { return &static_cast<Sample *>(r)->Members; },
         nullptr, nullptr, nullptr, 0, nullptr, nullptr},
        {MacroSetValue_CONSTRAINT, StyleField_NumberedBlock, nullptr, nullptr, &itemRecord,
         [](void *r, int n) -> void * { return n >= 1 && n <= 3 ? &static_cast<Sample *>(r)->Items[n - 1] : nullptr; },
         "Invalid Value Blanking Constraint number", 0, nullptr, nullptr},
    };
    static const StyleRecord_s sampleRecord{sampleFields, 2};
    Sample sample;
    Set_a *value = AllocSet(false);
    AddToSet(value, 4, false);
    AddToSet(value, 12, false);
    int setPath[7] = {MacroSetValue_FIELD, MacroSetValue_ZONESET, -1, -1, -1, -1, -1};
    EXPECT_EQ(SetStyleRecordValue(sampleRecord, &sample, setPath, 1, reinterpret_cast<ArbParam_t>(value), 0, AssignOp_Equals),
              SetValue_Ok);
    ASSERT_NE(sample.Members, nullptr);
    EXPECT_EQ(MemberCount(sample.Members), 1) << "12 is beyond the limit";
    double number = 0;
    ArbParam_t arg = 0;
    EXPECT_EQ(GetStyleRecordValue(sampleRecord, &sample, setPath, 1, &number, &arg), SetValue_Ok);
    EXPECT_EQ(reinterpret_cast<Set_a *>(arg), sample.Members);

    int itemPath[7] = {MacroSetValue_FIELD, MacroSetValue_CONSTRAINT, 2, MacroSetValue_NUMPTS, -1, -1, -1};
    EXPECT_EQ(SetStyleRecordValue(sampleRecord, &sample, itemPath, 1, 17, 0, AssignOp_Equals), SetValue_Ok);
    EXPECT_EQ(sample.Items[1].Count, 17);
    itemPath[2] = 4;
    EXPECT_EQ(SetStyleRecordValue(sampleRecord, &sample, itemPath, 1, 17, 0, AssignOp_Equals), SetValue_ValueRangeError);
    EXPECT_EQ(GetLastSetValueErrorString(), "Invalid Value Blanking Constraint number");
    DeallocSet(&value);
    DeallocSet(&sample.Members);
}

// ---- factory and modern values ----------------------------------------------------------------

TEST_F(SetValue, FactoryValuesOfTheGeneralStyle) {
    const GeneralBase_s factory{};
    EXPECT_EQ(factory.Paper.BackgroundColor, 7);
    EXPECT_TRUE(factory.Paper.IsTransparent);
    EXPECT_FALSE(factory.Paper.OrientPortrait);
    EXPECT_TRUE(factory.Paper.ShowGrid && factory.Paper.ShowPaper && factory.Paper.ShowRuler);
    EXPECT_EQ(factory.Paper.RulerSpacing, 5);      // ONEINCH
    EXPECT_EQ(factory.Paper.PaperGridSpacing, 4);  // HALFINCH
    const PaperSizeInfo_s &a4 = factory.Paper.PaperSizeInfo[PaperSizeInfoSlot(PaperSize_A4)];
    EXPECT_DOUBLE_EQ(a4.Width, 8.26771654);
    EXPECT_DOUBLE_EQ(a4.Height, 11.69291339);
    const PaperSizeInfo_s &a3 = factory.Paper.PaperSizeInfo[PaperSizeInfoSlot(PaperSize_A3)];
    EXPECT_DOUBLE_EQ(a3.Height, 16.53543307);
    const PaperSizeInfo_s &custom2 = factory.Paper.PaperSizeInfo[PaperSizeInfoSlot(PaperSize_Custom2)];
    EXPECT_DOUBLE_EQ(custom2.Width, 8);
    EXPECT_DOUBLE_EQ(custom2.BottomHardClipOffset, 0.2);
    EXPECT_EQ(PaperSizeInfoSlot(PaperSize_A4), 3);
    EXPECT_EQ(PaperSizeInfoSlot(PaperSize_A3), 2);
    EXPECT_EQ(PaperSizeInfoSlot(6), -1);
    EXPECT_EQ(factory.ExportSetup.ExportFormat, 13);  // PNG
    EXPECT_EQ(factory.ExportSetup.ExportRegion, 0);   // CURRENTFRAME
    EXPECT_EQ(factory.ExportSetup.ImageWidth, 512);
    EXPECT_DOUBLE_EQ(factory.FontAdjust.SubSupFraction, 0.6);
    EXPECT_DOUBLE_EQ(factory.FontAdjust.BoldFactor, 2.5);
    EXPECT_TRUE(factory.LinkColorMaps);
    EXPECT_EQ(factory.GlobalFrame.FrameHeaderFormat, "&(FrameName) <math>=</math> &(Date) <math>=</math> &(DataSetTitle)");
    EXPECT_EQ(factory.MaxPtsInALine, 5000);
    EXPECT_EQ(factory.MaxChrsInTextLabels, 1023);
    EXPECT_DOUBLE_EQ(factory.LODThresholdMinFract, 0.3);
    EXPECT_DOUBLE_EQ(factory.LODThresholdMaxFract, 0.7);
    EXPECT_EQ(factory.IPCTimeoutSeconds, 45);
    // The named colours, and the customs in eight hues from red.
    EXPECT_EQ(factory.BasicColor[5].R, 255);
    EXPECT_EQ(factory.BasicColor[5].G, 255);
    EXPECT_EQ(factory.BasicColor[5].B, 0);
    EXPECT_EQ(factory.BasicColor[6].G, 0);  // PURPLE
    const RGB_s &custom17 = factory.BasicColor[8 + 16];  // third row, red: the full colour
    EXPECT_EQ(custom17.R, 255);
    EXPECT_EQ(custom17.G, 0);
    const RGB_s &custom11 = factory.BasicColor[8 + 10];  // second row, 90 degrees: three quarters of yellow-green
    EXPECT_EQ(custom11.R, 96);
    EXPECT_EQ(custom11.G, 191);
    EXPECT_EQ(custom11.B, 0);
}

TEST_F(SetValue, ModernValuesMoveOnlyTheLiveStyle) {
    GeneralFactoryDefaults = GeneralBase_s();
    GeneralBase = GeneralFactoryDefaults;
    ModernizeGeneralBaseDefaults();
    EXPECT_EQ(GeneralBase.MaxPtsInALine, 20000);
    EXPECT_DOUBLE_EQ(GeneralBase.GlobalFrame.FrameHeaderHeight, 0.2);
    EXPECT_EQ(GeneralFactoryDefaults.MaxPtsInALine, 5000);
    EXPECT_DOUBLE_EQ(GeneralFactoryDefaults.GlobalFrame.FrameHeaderHeight, 0.12);
    EXPECT_DOUBLE_EQ(read(pathOf("GLOBALFRAME FRAMEHEADERHEIGHT")).number, 0.2);
}

}  // namespace
