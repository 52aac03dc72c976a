// The frame style records: every row of the frame style tree can be set and read back through
// the tables, and changes only its own value; values are converted between macro units and the
// store (percentages, degrees, one-based numbers, unit suffixes, the frame rectangle); group
// numbers and numbered blocks are checked with their messages; a repeated value is reported as
// such; enumerated values are checked against their set; the factory and the modernised
// templates, and the copy a new frame takes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "base/macro/macrocomp.h"
#include "base/macro/setvalue.h"
#include "base/macro/vocab.h"
#include "base/plot/frame.h"
#include "base/plot/framestyle.h"

namespace {

// ---- the tree as the rows are listed for the frame style ----------------------------------

const std::string TextShape = " TEXTSHAPE {FONT SIZEUNITS HEIGHT} ";
const std::string TextBoxRows = " BOXTYPE MARGIN LINETHICKNESS COLOR FILLCOLOR ";
const std::string NumFormat =
    " NUMFORMAT {FORMATTING CUSTOMLABEL PRECISION SHOWDECIMALSONWHOLENUMBERS REMOVELEADINGZEROS SHOWNEGATIVESIGN "
    "DYNAMICLABELNAME POSITIVEPREFIX POSITIVESUFFIX NEGATIVEPREFIX NEGATIVESUFFIX ZEROPREFIX ZEROSUFFIX} ";
const std::string IndexRangeRows = " {MIN MAX SKIP} ";
const std::string SymbolShapeRows = " ISASCII GEOMSHAPE ASCIISHAPE {USEBASEFONT FONTOVERRIDE ASCIICHAR} ";
const std::string EffectsRows = " LIGHTINGEFFECT SURFACETRANSLUCENCY USETRANSLUCENCY USEVALUEBLANKING ";
const std::string MeshRows = " SHOW MESHTYPE COLOR LINEPATTERN PATTERNLENGTH LINETHICKNESS ";
const std::string ContourRows =
    " SHOW CONTOURTYPE LINECONTOURGROUP FLOODCOLORING COLOR LINEPATTERN PATTERNLENGTH LINETHICKNESS "
    "USELIGHTINGEFFECT ";
const std::string VectorRows =
    " SHOW VECTORTYPE ARROWHEADSTYLE COLOR ISTANGENT LINEPATTERN PATTERNLENGTH LINETHICKNESS ";
const std::string ShadeRows = " SHOW COLOR USELIGHTINGEFFECT ";
const std::string EdgeRows = " SHOW EDGETYPE IBORDER JBORDER KBORDER COLOR LINETHICKNESS ";
const std::string GridAreaRows =
    " DRAWBORDER COLOR LINETHICKNESS ISFILLED FILLCOLOR USELIGHTSOURCETOFILL DRAWGRIDLAST ";
const std::string XYPos = " XYPOS {X Y} ";
const std::string DataLabels =
    " DATALABELS {SHOWNODELABELS SHOWCELLLABELS COLORBYZONEMAP COLOR" + TextShape + NumFormat +
    "INCLUDEBOX NODELABELTYPE NODELABELVAR CELLLABELTYPE CELLLABELVAR SKIPMODE DISTANCESKIP INDEXSKIP} ";
const std::string MapLegend =
    " LEGEND {SHOW SHOWTEXT" + TextShape + "TEXTCOLOR BOX {" + TextBoxRows + "} ROWSPACING" + XYPos +
    "ANCHORALIGNMENT} ";
const std::string GridLines = " {SHOW COLOR LINEPATTERN PATTERNLENGTH LINETHICKNESS CUTOFF} ";
const std::string AxisDetail =
    " {SHOWAXIS COORDSCALE RANGEMIN RANGEMAX ISREVERSED CLIPDATA VALUEATORIGIN AUTOGRID GRSPACING GRANCHOR VARNUM "
    "TICKS {SHOWONAXISLINE SHOWONOPPOSITEEDGE SHOWONGRIDBORDERMIN SHOWONGRIDBORDERMAX SHOWONALLAXES TICKDIRECTION "
    "LENGTH LINETHICKNESS NUMMINORTICKS MINORLENGTH MINORLINETHICKNESS} "
    "TICKLABEL {SHOWONAXISLINE SHOWONOPPOSITEEDGE SHOWONGRIDBORDERMIN SHOWONGRIDBORDERMAX SHOWONALLAXES "
    "SHOWATAXISINTERSECTION ERASEBEHINDLABELS SKIP COLOR" + TextShape + NumFormat + "OFFSET LABELALIGNMENT ANGLE} "
    "GRIDLINES" + GridLines + "MINORGRIDLINES" + GridLines +
    "TITLE {SHOWONAXISLINE SHOWONOPPOSITEEDGE SHOWONGRIDBORDERMIN SHOWONGRIDBORDERMAX SHOWONALLAXES TITLEMODE TEXT "
    "COLOR" + TextShape + "OFFSET PERCENTALONGLINE} "
    "AXISLINE {SHOW SHOWOPPOSITEEDGE COLOR LINETHICKNESS AXISALIGNMENT OPPOSINGAXISVALUE POSITION ANGLE OFFSET "
    "SHOWBOTHDIRECTIONS SHOWPERPENDICULAR EDGE}} ";
const std::string TwoDGrid =
    " PRESERVEAXISSCALE AUTOADJUSTRANGESTONICEVALUES AXISMODE DEPXTOYRATIO GRIDAREA {" + GridAreaRows +
    "} VIEWPORTPOSITION {X1 Y1 X2 Y2} VIEWPORTNICEFITBUFFER VIEWPORTTOPSNAPTARGET VIEWPORTTOPSNAPTOLERANCE "
    "PRECISEGRID {INCLUDE SIZE COLOR} ";
const std::string SlicePosition = " {X Y Z I J K} ";

std::string isoSurfaceGroup(const std::string &major, int group) {
    return major + " " + std::to_string(group) +
           " {OBEYSOURCEZONEBLANKING SHOWGROUP DEFINITIONCONTOURGROUP ISOSURFACESELECTION ISOVALUE1 ISOVALUE2 "
           "ISOVALUE3 MARCHINGCUBEALGORITHM MESH {" + MeshRows + "} CONTOUR {" + ContourRows + "} SHADE {" +
           ShadeRows + "} EFFECTS {" + EffectsRows + "}} ";
}

std::string sliceGroup(const std::string &major, int group) {
    return major + " " + std::to_string(group) +
           " {OBEYSOURCEZONEBLANKING SHOWGROUP SLICESURFACE SHOWPRIMARYSLICE PRIMARYPOSITION" + SlicePosition +
           "SHOWSTARTENDSLICE STARTPOSITION" + SlicePosition + "ENDPOSITION" + SlicePosition +
           "SHOWINTERMEDIATESLICES NUMINTERMEDIATESLICES MESH {" + MeshRows + "} CONTOUR {" + ContourRows +
           "} VECTOR {" + VectorRows + "} SHADE {" + ShadeRows + "} EDGELAYER {" + EdgeRows + "} EFFECTS {" +
           EffectsRows + "}} ";
}

std::string contourGroup(int group) {
    return "GLOBALCONTOUR " + std::to_string(group) +
           " {VAR DEFNUMLEVELS LABELS {SHOW GENERATEAUTOLABELS ALIGNAUTOLABELS LABELWITHVALUE AUTOLEVELSKIP "
           "AUTOLABELSPACING" + TextShape + "COLOR ISFILLED FILLCOLOR MARGIN" + NumFormat + "} "
           // The legend's text shapes are its header and its numbers.
           "LEGEND {SHOW SHOWHEADER ROWSPACING" + XYPos + "ANCHORALIGNMENT ISVERTICAL OVERLAYBARGRID "
           "HEADERTEXTSHAPE {FONT SIZEUNITS HEIGHT} NUMBERTEXTSHAPE {FONT SIZEUNITS HEIGHT} TEXTCOLOR BOX {" +
           TextBoxRows + "} INCLUDECUTOFFLEVELS AUTORESIZE AUTOSIZEMAXLIMIT LABELLOCATION LABELINCREMENT} "
           "COLORCUTOFF {RANGEMIN RANGEMAX INCLUDEMIN INCLUDEMAX} "
           "COLORMAPFILTER {COLORMAPDISTRIBUTION CONTINUOUSCOLOR {CMIN CMAX} REVERSECOLORMAP ZEBRA {INCLUDE "
           "ISTRANSPARENT COLOR} COLORMAPCYCLES USEFASTAPPROXCONTINUOUSFLOOD COLORMAPOVERRIDEACTIVE "
           "COLORMAPOVERRIDE 1 {INCLUDE COLOR STARTLEVEL ENDLEVEL} COLORMAPOVERRIDE 16 {INCLUDE COLOR STARTLEVEL "
           "ENDLEVEL}} CONTOURLINESTYLE {CONTOURLINEMODE LINESKIP PATTERNLENGTH}} ";
}

std::string vectorBlock(const std::string &major) {
    return major +
           " {UVAR VVAR WVAR RELATIVELENGTH UNIFORMLENGTH USERELATIVE RELATIVELENGTHINGRIDUNITS HEADSIZEASFRACTION "
           "HEADSIZEINFRAMEUNITS SIZEHEADBYFRACTION ARROWHEADANGLE REFVECTOR {SHOW COLOR" + XYPos +
           "MAGNITUDE ANGLE LINETHICKNESS MAGNITUDELABEL {SHOW TEXTCOLOR" + TextShape + NumFormat + "OFFSET}}} ";
}

std::string frameStyleTree() {
    std::string blanking =
        "BLANKING {IJK {INCLUDE IJKBLANKMODE IMINFRACT JMINFRACT KMINFRACT IMAXFRACT JMAXFRACT KMAXFRACT ZONE} "
        "VALUE {INCLUDE BLANKENTIRECELL VALUEBLANKCELLMODE ";
    for (int m : {1, 8})
        blanking += "CONSTRAINT " + std::to_string(m) +
                    " {INCLUDE RELOP CONSTRAINTOP2MODE VALUECUTOFF VARA VARB SHOW COLOR LINEPATTERN PATTERNLENGTH "
                    "LINETHICKNESS} ";
    blanking += "} DEPTH {INCLUDE FROMFRONT FROMBACK}} ";

    std::string field = "FIELDMAP 1 {MESH {" + MeshRows + "} CONTOUR {" + ContourRows + "} VECTOR {" + VectorRows +
                        "} SHADE {" + ShadeRows + "} EDGELAYER {" + EdgeRows + "} SCATTER {SHOW SYMBOLSHAPE {" +
                        SymbolShapeRows +
                        "} COLOR FILLMODE FILLCOLOR SIZEBYVARIABLE FRAMESIZE LINETHICKNESS} POINTS {POINTSTOPLOT "
                        "IJKSKIP {I J K}} SURFACES {SURFACESTOPLOT IRANGE" + IndexRangeRows + "JRANGE" +
                        IndexRangeRows + "KRANGE" + IndexRangeRows +
                        "} VOLUMEMODE {VOLUMEOBJECTSTOPLOT {SHOWISOSURFACES SHOWSLICES SHOWSTREAMTRACES}} EFFECTS {" +
                        EffectsRows + "} GROUP} ";
    std::string lineMap =
        "LINEMAP 1 {NAME ASSIGN {ZONE THETAAXISVAR XAXISVAR YAXISVAR XAXIS FUNCTIONDEPENDENCY SHOWINLEGEND SORTVAR "
        "SORT} LINES {SHOW COLOR LINEPATTERN PATTERNLENGTH LINETHICKNESS} CURVES {CURVETYPE NUMPTS POLYORDER "
        "WEIGHTVAR USEWEIGHTVAR INDVARMIN INDVARMAX USEINDVARRANGE CLAMPSPLINE SPLINEDERIVATIVEATSTART "
        "SPLINEDERIVATIVEATEND EXTENDEDNAME EXTENDEDSETTINGS} SYMBOLS {SHOW SYMBOLSHAPE {" + SymbolShapeRows +
        "} COLOR FILLMODE FILLCOLOR SIZE LINETHICKNESS SKIPMODE SKIPPING} BARCHARTS {SHOW COLOR FILLMODE FILLCOLOR "
        "SIZE LINETHICKNESS} ERRORBARS {VAR SHOW BARTYPE COLOR LINETHICKNESS SKIPMODE SKIPPING SIZE} INDICES "
        "{IJKLINES IRANGE" + IndexRangeRows + "JRANGE" + IndexRangeRows + "KRANGE" + IndexRangeRows + "}} ";

    std::string tree;
    for (const char *major : {"LINKING", "FRAMELINKING"})
        tree += std::string(major) +
                " {WITHINFRAME {LINKAXISSTYLE LINKGRIDLINESTYLE LINKLAYERLINECOLOR LINKLAYERLINEPATTERN} "
                "BETWEENFRAMES {LINKGROUP LINKCONTOURLEVELS LINKFRAMESIZEANDPOSITION LINKXAXISRANGE LINKYAXISRANGE "
                "LINK3DVIEW LINKPOLARVIEW LINKAXISPOSITION LINKVALUEBLANKING LINKSLICEPOSITIONS "
                "LINKISOSURFACEVALUES}} ";
    tree += "FRAMELAYOUT {SHOWBORDER SHOWHEADER ISTRANSPARENT BACKGROUNDCOLOR HEADERCOLOR HEADERFONT BORDERTHICKNESS" +
            XYPos + "WIDTH HEIGHT} ";
    tree += "GLOBALTIME {SOLUTIONTIME} GLOBALEDGE {MINCREASEANGLE} ";
    tree += "GLOBALRGB {RGBMODE REDCHANNELVAR GREENCHANNELVAR BLUECHANNELVAR RANGEMIN RANGEMAX LEGEND {SHOW "
            "SHOWLABELS HEIGHT" + XYPos + "ANCHORALIGNMENT FONT SIZEUNITS TEXTCOLOR BOX {" + TextBoxRows +
            "} USEREDVARNAME REDCHANNELLABEL USEGREENVARNAME GREENCHANNELLABEL USEBLUEVARNAME BLUECHANNELLABEL "
            "RGBLEGENDORIENTATION}} ";
    tree += contourGroup(1) + contourGroup(4);
    tree += vectorBlock("GLOBALTWODVECTOR") + vectorBlock("GLOBALTHREEDVECTOR");
    tree += "GLOBALSCATTER {VAR RELATIVESIZE RELATIVESIZEINGRIDUNITS BASEFONT SPHERESCATTERRENDERQUALITY" + MapLegend +
            "REFSCATSYMBOL {SHOW COLOR LINETHICKNESS ISFILLED FILLCOLOR" + XYPos + "MAGNITUDE SYMBOLSHAPE {" +
            SymbolShapeRows + "}}" + DataLabels + "} ";
    for (const char *major : {"GLOBALXY", "GLOBALLINEPLOT"})
        tree += std::string(major) + " {" + DataLabels + MapLegend + "} ";
    tree += "GLOBALPOLAR {DRAWSTRAIGHTLINES ANGLE} ";
    tree += blanking + field + lineMap;
    tree += "FIELDLAYERS {TWODDRAWORDER SHOWMESH SHOWCONTOUR SHOWVECTOR SHOWSCATTER SHOWSHADE SHOWEDGE "
            "USETRANSLUCENCY USELIGHTINGEFFECT} ";
    for (const char *major : {"LINEPLOTLAYERS", "XYLAYERS"})
        tree += std::string(major) + " {SHOWLINES SHOWSYMBOLS SHOWBARCHARTS SHOWERRORBARS} ";
    tree += "ISOSURFACELAYERS {SHOW SHOWMESH SHOWCONTOUR SHOWSHADE USETRANSLUCENCY USELIGHTINGEFFECT} ";
    tree += "SLICELAYERS {SHOW SHOWMESH SHOWCONTOUR SHOWSHADE USETRANSLUCENCY USELIGHTINGEFFECT SHOWVECTOR SHOWEDGE} ";
    tree += "STREAMTRACELAYERS {SHOW SHOWPATHS SHOWDASHES SHOWARROWHEADS SHOWMESH SHOWCONTOUR SHOWSHADE SHOWMARKERS "
            "USETRANSLUCENCY USELIGHTINGEFFECT} ";
    tree += "THREEDAXIS {AXISMODE XYDEPXTOYRATIO DEPXTOYRATIO DEPXTOZRATIO GRIDAREA {" + GridAreaRows +
            "} EDGEAUTORESET PRESERVEAXISSCALE FRAMEAXIS {SHOW SIZE LINETHICKNESS COLOR" + XYPos +
            "} ASPECTRATIOLIMIT ASPECTRATIORESET BOXASPECTRATIOLIMIT BOXASPECTRATIORESET XDETAIL" + AxisDetail +
            "YDETAIL" + AxisDetail + "ZDETAIL" + AxisDetail + "} ";
    for (const char *major : {"TWODAXIS", "SKETCHAXIS"})
        tree += std::string(major) + " {" + TwoDGrid + "XDETAIL" + AxisDetail + "YDETAIL" + AxisDetail + "} ";
    tree += "XYLINEAXIS {" + TwoDGrid + "XDETAIL 1" + AxisDetail + "YDETAIL 5" + AxisDetail + "} ";
    tree += "XYAXIS {" + TwoDGrid + "XDETAIL 5" + AxisDetail + "YDETAIL 1" + AxisDetail + "} ";
    tree += "POLARAXIS {PRESERVEAXISSCALE THETAMODE THETAPERIOD GRIDAREA {" + GridAreaRows +
            "} VIEWPORTPOSITION {X1 Y1 X2 Y2} VIEWPORTSTYLE {" + GridAreaRows +
            "} PRECISEGRID {INCLUDE SIZE COLOR} THETADETAIL" + AxisDetail + "RDETAIL" + AxisDetail + "} ";
    tree += isoSurfaceGroup("GLOBALISOSURFACE", 1) + isoSurfaceGroup("ISOSURFACEATTRIBUTES", 4);
    tree += sliceGroup("GLOBALSLICE", 1) + sliceGroup("SLICEATTRIBUTES", 3);
    for (const char *major : {"GLOBALSTREAM", "STREAMATTRIBUTES"})
        tree += std::string(major) +
                " {OBEYSOURCEZONEBLANKING SHOWPATHS TERMLINE {SHOW ISACTIVE COLOR LINEPATTERN PATTERNLENGTH "
                "LINETHICKNESS} STREAMTIMING {SHOWMARKERS SHOWDASHES MARKCOLOR MARKSIZE TIMESTART TIMEEND TIMEDELTA "
                "TIMEANCHOR MARKSYMBOL {" + SymbolShapeRows + "}} DASHSKIP RODRIBBON {WIDTH NUMRODPOINTS MESH {" +
                MeshRows + "} CONTOUR {" + ContourRows + "} SHADE {" + ShadeRows + "} EFFECTS {" + EffectsRows +
                "}} ADDARROWS CELLFRACTION MINCELLFRACTION ARROWHEADSIZE MAXSTEPS ARROWHEADSPACING} ";
    tree += "GLOBALTHREED {PERFORMEXTRA3DSORTING AXISBOXPADDING AXISSCALEFACT {X Y Z} ROTATEORIGIN {X Y Z} "
            "LIGHTSOURCE {XYZDIRECTION {X Y Z} INTENSITY BACKGROUNDLIGHT SURFACECOLORCONTRAST INCLUDESPECULAR "
            "SPECULARINTENSITY SPECULARSHININESS} FORCEGOURAUDFOR3DCONTFLOOD FORCEPANELEDFOR3DCELLFLOOD "
            "LINELIFTFRACTION SYMBOLLIFTFRACTION VECTORLIFTFRACTION SLICE {ORIGIN {X Y Z} NORMAL {X Y Z}}} ";
    tree += "THREEDVIEW {DRAWINPERSPECTIVE PSIANGLE THETAANGLE ALPHAANGLE VIEWERPOSITION {X Y Z}} ";
    tree += "POLARVIEW {EXTENTS {X1 Y1 X2 Y2}} ";
    return tree;
}

// Expands "A {B C {D}} E" into the leaf paths A B, A C D and E. Numbers right behind a name stay
// with it: a group number or the number of a numbered block.
std::vector<std::vector<std::string>> expandTree(const std::string &text) {
    std::vector<std::string> tokens;
    std::string spaced;
    for (char c : text) {
        if (c == '{' || c == '}') {
            spaced += ' ';
            spaced += c;
            spaced += ' ';
        } else {
            spaced += c;
        }
    }
    std::istringstream in(spaced);
    for (std::string token; in >> token;) tokens.push_back(token);
    std::vector<std::vector<std::string>> leaves;
    size_t at = 0;
    std::function<void(const std::vector<std::string> &)> walk = [&](const std::vector<std::string> &prefix) {
        while (at < tokens.size() && tokens[at] != "}") {
            std::vector<std::string> entry = prefix;
            entry.push_back(tokens[at++]);
            while (at < tokens.size() && std::isdigit(static_cast<unsigned char>(tokens[at][0])))
                entry.push_back(tokens[at++]);
            if (at < tokens.size() && tokens[at] == "{") {
                at++;
                walk(entry);
                at++;  // the closing brace
            } else {
                leaves.push_back(entry);
            }
        }
    };
    walk({});
    return leaves;
}

std::string joined(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

// The path of a list of names and numbers; false if a name is not a set-value row.
bool toPath(const std::vector<std::string> &words, int path[7]) {
    for (int n = 0; n < 7; n++) path[n] = -1;
    if (words.size() > 7) return false;
    for (size_t n = 0; n < words.size(); n++) {
        if (std::isdigit(static_cast<unsigned char>(words[n][0]))) {
            path[n] = std::stoi(words[n]);
            continue;
        }
        MacroToken_e token;
        int index;
        if (!IdentifyMacroCommandString(words[n].c_str(), &token, &index) || token != MacroToken_SetValue)
            return false;
        path[n] = index;
    }
    return true;
}

int leafRow(const int path[7]) {
    int last = 0;
    while (last + 1 < 7 && path[last + 1] >= 0) last++;
    return path[last];
}

bool isStringKind(int kind) {
    return kind == SetValueKind_Word || kind == SetValueKind_Char || kind == SetValueKind_Text;
}

bool isIntegerKind(int kind) {
    return kind == SetValueKind_LgIndex || kind == SetValueKind_SmInteger || kind == SetValueKind_EntIndex;
}

// What a path reads as, in a form that compares across copies of the style.
struct Reading {
    int Code;
    double Double;
    ArbParam_t Arg;
    std::string Text;
    bool operator==(const Reading &other) const {
        return Code == other.Code && Double == other.Double && Arg == other.Arg && Text == other.Text;
    }
};

Reading readPath(const FrameStyle_s *style, const int path[7]) {
    double value = 0;
    ArbParam_t arg = 0;
    int code = FrameStyleGetValue(style, path, &value, &arg);
    Reading reading{code, value, arg, ""};
    if (code == FrameStyle_Ok && isStringKind(GetSetValueKind(leafRow(path)))) {
        reading.Text = reinterpret_cast<const char *>(arg);
        reading.Arg = 0;
    }
    return reading;
}

// The other values of an enumerated set than `current`.
std::vector<int> otherEnumValues(int set, int current) {
    std::vector<int> values;
    for (int n = GetEnumSetOffset(set); n >= 0 && n < NumEnumValues && CommandEnumMap[n].Set == set; n++)
        if (CommandEnumMap[n].Value != current) values.push_back(CommandEnumMap[n].Value);
    return values;
}

// Sets the value at the path to another one that the row accepts and reads it back. Returns an
// empty string, or what went wrong.
std::string changeAndReadBack(FrameStyle_s *style, const int path[7]) {
    int kind = GetSetValueKind(leafRow(path));
    double current = 0;
    ArbParam_t currentArg = 0;
    if (FrameStyleGetValue(style, path, &current, &currentArg) != FrameStyle_Ok) return "cannot be read";
    std::string error;
    if (kind == SetValueKind_Double) {
        std::vector<double> candidates = {current * 0.5, current + 1, current - 1, 0.5, 1, 50};
        for (double candidate : candidates) {
            if (candidate == current) continue;
            int code = FrameStyleSetValue(style, path, 0, candidate, AssignOp_Equals, &error);
            if (code != FrameStyle_Ok) continue;
            double back = 0;
            ArbParam_t unused = 0;
            FrameStyleGetValue(style, path, &back, &unused);
            if (std::fabs(back - candidate) > 1e-9 * std::max(1.0, std::fabs(candidate)))
                return "set " + std::to_string(candidate) + ", read " + std::to_string(back);
            return "";
        }
        return "no double value was taken (" + error + ")";
    }
    if (isIntegerKind(kind)) {
        for (ArbParam_t candidate : {currentArg + 1, currentArg - 1, ArbParam_t(1), ArbParam_t(2)}) {
            if (candidate == currentArg) continue;
            if (FrameStyleSetValue(style, path, candidate, 0, AssignOp_Equals, &error) != FrameStyle_Ok) continue;
            double unused = 0;
            ArbParam_t back = 0;
            FrameStyleGetValue(style, path, &unused, &back);
            if (back != candidate) return "set " + std::to_string(candidate) + ", read " + std::to_string(back);
            return "";
        }
        return "no integer value was taken (" + error + ")";
    }
    if (isStringKind(kind)) {
        const char *wanted = "Q";
        int code = FrameStyleSetValue(style, path, reinterpret_cast<ArbParam_t>(wanted), 0, AssignOp_Equals, &error);
        if (code != FrameStyle_Ok) return "string refused: " + error;
        double unused = 0;
        ArbParam_t back = 0;
        FrameStyleGetValue(style, path, &unused, &back);
        return std::strcmp(reinterpret_cast<const char *>(back), wanted) == 0 ? "" : "string not read back";
    }
    if (kind >= SetValueKind_FirstEnumSet) {
        std::vector<int> others = otherEnumValues(kind, int(currentArg));
        if (others.empty()) return "set has no other value";
        int code = FrameStyleSetValue(style, path, others.front(), 0, AssignOp_Equals, &error);
        if (code != FrameStyle_Ok) return "enumerated value refused: " + error;
        double unused = 0;
        ArbParam_t back = 0;
        FrameStyleGetValue(style, path, &unused, &back);
        return back == others.front() ? "" : "enumerated value not read back";
    }
    return "row of kind " + std::to_string(kind) + " holds no value";
}

// Paths that name one stored value twice: the polar names of the line map variables.
bool sameValue(const std::vector<std::string> &a, const std::vector<std::string> &b) {
    auto last = [](const std::vector<std::string> &words) { return words.back(); };
    std::vector<std::string> stemA(a.begin(), a.end() - 1), stemB(b.begin(), b.end() - 1);
    if (stemA != stemB) return false;
    auto pair = [&](const char *x, const char *y) {
        return (last(a) == x && last(b) == y) || (last(a) == y && last(b) == x);
    };
    return pair("XAXISVAR", "THETAAXISVAR");
}

// A change of the units a text shape is sized in changes how its height reads.
bool readingFollows(const std::vector<std::string> &changed, const std::vector<std::string> &other) {
    if (changed.back() != "SIZEUNITS" || other.back() != "HEIGHT") return false;
    return std::vector<std::string>(changed.begin(), changed.end() - 1) ==
           std::vector<std::string>(other.begin(), other.end() - 1);
}

std::string rootOf(const std::vector<std::string> &words) {
    std::string root = words[0];
    if (words.size() > 1 && std::isdigit(static_cast<unsigned char>(words[1][0]))) root += " " + words[1];
    return root;
}

class FrameStyleTest : public ::testing::Test {
  protected:
    void SetUp() override {
        InitMacroVocabulary();
        InitializeFrameFactoryDefaults();
        style = std::make_unique<FrameStyle_s>(FrameFactoryDefaults);
    }

    // The path of names and numbers separated by blanks.
    int path(const std::string &text, int out[7]) {
        std::istringstream in(text);
        std::vector<std::string> words;
        for (std::string word; in >> word;) words.push_back(word);
        bool ok = toPath(words, out);
        EXPECT_TRUE(ok) << text;
        return ok;
    }
    int set(const std::string &text, double value, int op = AssignOp_Equals) {
        int p[7];
        path(text, p);
        return FrameStyleSetValue(style.get(), p, 0, value, op, &error);
    }
    int setArg(const std::string &text, ArbParam_t value, int op = AssignOp_Equals) {
        int p[7];
        path(text, p);
        return FrameStyleSetValue(style.get(), p, value, 0, op, &error);
    }
    double getDouble(const std::string &text) {
        int p[7];
        path(text, p);
        double value = -12345;
        ArbParam_t arg = 0;
        EXPECT_EQ(FrameStyleGetValue(style.get(), p, &value, &arg), FrameStyle_Ok) << text;
        return value;
    }
    ArbParam_t getArg(const std::string &text) {
        int p[7];
        path(text, p);
        double value = 0;
        ArbParam_t arg = -12345;
        EXPECT_EQ(FrameStyleGetValue(style.get(), p, &value, &arg), FrameStyle_Ok) << text;
        return arg;
    }

    std::unique_ptr<FrameStyle_s> style;
    std::string error;
};

// ---- completeness -----------------------------------------------------------------------------

TEST_F(FrameStyleTest, EveryListedPathIsReadableAndSettable) {
    std::vector<std::vector<std::string>> leaves = expandTree(frameStyleTree());
    ASSERT_GT(leaves.size(), 1000u);
    for (const auto &words : leaves) {
        int p[7];
        ASSERT_TRUE(toPath(words, p)) << joined(words);
        auto copy = std::make_unique<FrameStyle_s>(FrameFactoryDefaults);
        EXPECT_EQ(readPath(copy.get(), p).Code, FrameStyle_Ok) << joined(words);
        std::string problem = changeAndReadBack(copy.get(), p);
        EXPECT_EQ(problem, "") << joined(words);
    }
}

TEST_F(FrameStyleTest, EachPathChangesOnlyItsOwnValue) {
    std::vector<std::vector<std::string>> leaves = expandTree(frameStyleTree());
    std::map<std::string, std::vector<size_t>> byRoot;
    for (size_t n = 0; n < leaves.size(); n++) byRoot[rootOf(leaves[n])].push_back(n);
    std::vector<Reading> factory(leaves.size());
    std::vector<std::array<int, 7>> paths(leaves.size());
    for (size_t n = 0; n < leaves.size(); n++) {
        ASSERT_TRUE(toPath(leaves[n], paths[n].data()));
        factory[n] = readPath(&FrameFactoryDefaults, paths[n].data());
    }
    for (const auto &[root, members] : byRoot) {
        for (size_t changed : members) {
            auto copy = std::make_unique<FrameStyle_s>(FrameFactoryDefaults);
            ASSERT_EQ(changeAndReadBack(copy.get(), paths[changed].data()), "") << joined(leaves[changed]);
            for (size_t other : members) {
                if (other == changed || sameValue(leaves[changed], leaves[other]) ||
                    readingFollows(leaves[changed], leaves[other]))
                    continue;
                EXPECT_TRUE(readPath(copy.get(), paths[other].data()) == factory[other])
                    << "setting " << joined(leaves[changed]) << " also changed " << joined(leaves[other]);
            }
        }
    }
}

TEST_F(FrameStyleTest, GroupsAndAliasesAddressTheirOwnRecords) {
    ASSERT_EQ(set("GLOBALCONTOUR 3 LEGEND XYPOS X", 40), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->GlobalContour[2].Legend.XYPos.X, 0.4);
    for (int group : {0, 1, 3}) EXPECT_DOUBLE_EQ(style->GlobalContour[group].Legend.XYPos.X, 0.95);

    ASSERT_EQ(set("ISOSURFACEATTRIBUTES 2 ISOVALUE1", 7.5), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(getDouble("GLOBALISOSURFACE 2 ISOVALUE1"), 7.5);
    EXPECT_DOUBLE_EQ(style->IsoSurfaceAttributes[1].IsoValue1, 7.5);
    EXPECT_DOUBLE_EQ(style->IsoSurfaceAttributes[0].IsoValue1, 0.0);

    ASSERT_EQ(set("SLICEATTRIBUTES 4 PRIMARYPOSITION Z", -2), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->SliceAttributes[3].PrimaryPosition.Z, -2);
    EXPECT_DOUBLE_EQ(getDouble("GLOBALSLICE 4 PRIMARYPOSITION Z"), -2);

    ASSERT_EQ(set("STREAMATTRIBUTES CELLFRACTION", 0.5), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(getDouble("GLOBALSTREAM CELLFRACTION"), 0.5);
    ASSERT_EQ(setArg("XYLAYERS SHOWSYMBOLS", 1), FrameStyle_Ok) << error;
    EXPECT_TRUE(style->LinePlotLayers.ShowSymbols);
    ASSERT_EQ(setArg("GLOBALXY LEGEND SHOW", 1), FrameStyle_Ok) << error;
    EXPECT_EQ(getArg("GLOBALLINEPLOT LEGEND SHOW"), 1);
    ASSERT_EQ(setArg("FRAMELINKING BETWEENFRAMES LINKGROUP", 7), FrameStyle_Ok) << error;
    EXPECT_EQ(style->Linking.LinkGroup, 7);

    // The two vectors blocks are separate records.
    ASSERT_EQ(set("GLOBALTHREEDVECTOR RELATIVELENGTH", 3), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->GlobalThreeDVector.RelativeLength, 3);
    EXPECT_DOUBLE_EQ(style->GlobalTwoDVector.RelativeLength, 1);
    // The sketch axes are not the 2D axes.
    ASSERT_EQ(set("SKETCHAXIS XDETAIL RANGEMAX", 9), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->SketchAxis.XDetail.RangeMax, 9);
    EXPECT_DOUBLE_EQ(style->TwoDAxis.XDetail.RangeMax, 1);
}

// ---- conversions --------------------------------------------------------------------------------

TEST_F(FrameStyleTest, PercentagesAreStoredAsFractions) {
    ASSERT_EQ(set("GLOBALSCATTER REFSCATSYMBOL LINETHICKNESS", 0.2), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->GlobalScatter.RefScatSymbol.LineThickness, 0.002);
    EXPECT_DOUBLE_EQ(getDouble("GLOBALSCATTER REFSCATSYMBOL LINETHICKNESS"), 0.2);

    ASSERT_EQ(set("BLANKING IJK IMAXFRACT", 75), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->Blanking.IJK.IMaxFract, 0.75);
    ASSERT_EQ(set("GLOBALRGB LEGEND XYPOS Y", 12.5), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->GlobalRGB.Legend.XYPos.Y, 0.125);
}

TEST_F(FrameStyleTest, AnglesAreGivenInDegreesAndStoredInRadians) {
    ASSERT_EQ(set("THREEDVIEW PSIANGLE", 90), FrameStyle_Ok) << error;
    EXPECT_NEAR(style->ThreeDView.PsiAngle, M_PI / 2, 1e-12);
    EXPECT_NEAR(getDouble("THREEDVIEW PSIANGLE"), 90, 1e-9);
    ASSERT_EQ(set("GLOBALTWODVECTOR ARROWHEADANGLE", 30), FrameStyle_Ok) << error;
    EXPECT_NEAR(style->GlobalTwoDVector.ArrowheadAngle, M_PI / 6, 1e-12);
    // Factory 3D view: psi 60, theta -120 degrees.
    EXPECT_NEAR(FrameFactoryDefaults.ThreeDView.PsiAngle * 180 / M_PI, 60, 1e-9);

    // A text angle lies within one turn either way.
    EXPECT_EQ(set("TWODAXIS XDETAIL TICKLABEL ANGLE", 400), FrameStyle_ValueRangeError);
    EXPECT_EQ(error, "\"ANGLE\" must be between -360 and 360.");
    EXPECT_DOUBLE_EQ(style->TwoDAxis.XDetail.TickLabel.Angle, 0);
    EXPECT_EQ(set("TWODAXIS XDETAIL TICKLABEL ANGLE", -360), FrameStyle_Ok) << error;
    EXPECT_NEAR(style->TwoDAxis.XDetail.TickLabel.Angle, -2 * M_PI, 1e-12);
}

TEST_F(FrameStyleTest, EntityNumbersAreOneBasedInMacros) {
    ASSERT_EQ(setArg("GLOBALCONTOUR 1 VAR", 3), FrameStyle_Ok) << error;
    EXPECT_EQ(style->GlobalContour[0].Var, 2);
    EXPECT_EQ(getArg("GLOBALCONTOUR 1 VAR"), 3);
    // 0 leaves the group without a variable.
    ASSERT_EQ(setArg("GLOBALCONTOUR 1 VAR", 0), FrameStyle_Ok) << error;
    EXPECT_EQ(style->GlobalContour[0].Var, -1);
    EXPECT_EQ(setArg("GLOBALCONTOUR 1 VAR", -1), FrameStyle_ValueRangeError);
    EXPECT_EQ(error, "\"VAR\" must be between 0 and 32700.");

    // A contour group given from 1 is stored from 0.
    ASSERT_EQ(setArg("FIELDMAP 1 CONTOUR LINECONTOURGROUP", 4), FrameStyle_Ok) << error;
    EXPECT_EQ(style->FieldMap.Contour.LineContourGroup, 3);
    EXPECT_EQ(setArg("FIELDMAP 1 CONTOUR LINECONTOURGROUP", 5), FrameStyle_ValueRangeError);
    EXPECT_EQ(error, "\"LINECONTOURGROUP\" must be between 1 and 4.");

    // A count is stored as given.
    ASSERT_EQ(setArg("GLOBALSTREAM MAXSTEPS", 250), FrameStyle_Ok) << error;
    EXPECT_EQ(style->StreamAttributes.MaxSteps, 250);
    EXPECT_EQ(setArg("GLOBALSTREAM MAXSTEPS", 0), FrameStyle_ValueRangeError);
    EXPECT_EQ(error, "\"MAXSTEPS\" must be greater than or equal to 1.");
}

TEST_F(FrameStyleTest, OperatorsWorkOnTheValueAsShown) {
    // 0.1 percent doubled is 0.2 percent, and 0.3 percent more is 0.5 percent.
    ASSERT_EQ(set("FRAMELAYOUT BORDERTHICKNESS", 2, AssignOp_TimesEquals), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->FrameLayout.BorderThickness, 0.002);
    ASSERT_EQ(set("FRAMELAYOUT BORDERTHICKNESS", 0.3, AssignOp_PlusEquals), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->FrameLayout.BorderThickness, 0.005);
    ASSERT_EQ(set("FRAMELAYOUT BORDERTHICKNESS", 0.1, AssignOp_MinusEquals), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->FrameLayout.BorderThickness, 0.004);
    ASSERT_EQ(set("FRAMELAYOUT BORDERTHICKNESS", 4, AssignOp_DivideEquals), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->FrameLayout.BorderThickness, 0.001);

    EXPECT_EQ(set("FRAMELAYOUT BORDERTHICKNESS", 0, AssignOp_DivideEquals), FrameStyle_ValueRangeError);
    EXPECT_EQ(error, "Divide by zero");
    EXPECT_DOUBLE_EQ(style->FrameLayout.BorderThickness, 0.001);

    // On a one-based number += counts in the numbers the user sees.
    ASSERT_EQ(setArg("BLANKING IJK ZONE", 2, AssignOp_PlusEquals), FrameStyle_Ok) << error;
    EXPECT_EQ(style->Blanking.IJK.Zone, 2);
    EXPECT_EQ(getArg("BLANKING IJK ZONE"), 3);
    ASSERT_EQ(setArg("BLANKING IJK ZONE", 3, AssignOp_TimesEquals), FrameStyle_Ok) << error;
    EXPECT_EQ(getArg("BLANKING IJK ZONE"), 9);

    // Only = on enumerated, boolean and text rows.
    EXPECT_EQ(setArg("FRAMELAYOUT HEADERCOLOR", 2, AssignOp_PlusEquals), FrameStyle_AssignOpError);
    EXPECT_EQ(error, "Assignment operator invalid in\n assignment to \"HEADERCOLOR\"");
    EXPECT_EQ(setArg("FRAMELAYOUT SHOWBORDER", 0, AssignOp_MinusEquals), FrameStyle_AssignOpError);
    EXPECT_EQ(setArg("LINEMAP 1 NAME", reinterpret_cast<ArbParam_t>("a"), AssignOp_PlusEquals),
              FrameStyle_AssignOpError);
    EXPECT_TRUE(style->FrameLayout.ShowBorder);
    // No operator past the unit conversions.
    EXPECT_EQ(set("FRAMELAYOUT BORDERTHICKNESS", 1, AssignOp_ConvertFromPix + 1), FrameStyle_AssignOpError);
    EXPECT_DOUBLE_EQ(style->FrameLayout.BorderThickness, 0.001);
}

TEST_F(FrameStyleTest, UnitSuffixesUseTheFrameSize) {
    // The factory frame is 9 inches wide and 8 high.
    ASSERT_EQ(set("FIELDMAP 1 MESH LINETHICKNESS", 2, AssignOp_ConvertFromPt), FrameStyle_Ok) << error;
    EXPECT_NEAR(style->FieldMap.Mesh.LineThickness, 2.0 / 72 / 8, 1e-15);
    ASSERT_EQ(set("GLOBALCONTOUR 2 LEGEND XYPOS X", 2.54, AssignOp_ConvertFromCm), FrameStyle_Ok) << error;
    EXPECT_NEAR(style->GlobalContour[1].Legend.XYPos.X, 1.0 / 9, 1e-15);
    ASSERT_EQ(set("GLOBALCONTOUR 2 LEGEND XYPOS Y", 2, AssignOp_ConvertFromIn), FrameStyle_Ok) << error;
    EXPECT_NEAR(style->GlobalContour[2 - 1].Legend.XYPos.Y, 2.0 / 8, 1e-15);
    ASSERT_EQ(set("GLOBALCONTOUR 2 LEGEND XYPOS Y", 96, AssignOp_ConvertFromPix), FrameStyle_Ok) << error;
    EXPECT_NEAR(style->GlobalContour[1].Legend.XYPos.Y, 1.0 / 8, 1e-15);

    // A smaller frame makes the same thickness a larger fraction.
    ASSERT_EQ(set("FRAMELAYOUT HEIGHT", 4), FrameStyle_Ok) << error;
    ASSERT_EQ(set("FIELDMAP 1 MESH LINETHICKNESS", 2, AssignOp_ConvertFromPt), FrameStyle_Ok) << error;
    EXPECT_NEAR(style->FieldMap.Mesh.LineThickness, 2.0 / 72 / 4, 1e-15);

    // The frame's own size is in inches.
    ASSERT_EQ(set("FRAMELAYOUT WIDTH", 12.7, AssignOp_ConvertFromCm), FrameStyle_Ok) << error;
    EXPECT_NEAR(style->FrameLayout.Rect.X2 - style->FrameLayout.Rect.X1, 5, 1e-12);

    // Rows without a unit refuse a suffix.
    EXPECT_EQ(set("BLANKING IJK IMINFRACT", 1, AssignOp_ConvertFromIn), FrameStyle_AssignOpError);
    EXPECT_EQ(error, "Not allowed to use suffix for \"IMINFRACT\"");
    EXPECT_EQ(setArg("GLOBALSTREAM MAXSTEPS", 1, AssignOp_ConvertFromCm), FrameStyle_AssignOpError);
    EXPECT_EQ(error, "Not allowed to use suffix for \"MAXSTEPS\"");
}

TEST_F(FrameStyleTest, TextHeightFollowsItsUnits) {
    ASSERT_EQ(set("GLOBALSCATTER LEGEND TEXTSHAPE HEIGHT", 5), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->GlobalScatter.Legend.TextShape.Height, 0.05);
    ASSERT_EQ(setArg("GLOBALSCATTER LEGEND TEXTSHAPE SIZEUNITS", 2), FrameStyle_Ok) << error;  // POINT
    ASSERT_EQ(set("GLOBALSCATTER LEGEND TEXTSHAPE HEIGHT", 14), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->GlobalScatter.Legend.TextShape.Height, 14);
    EXPECT_DOUBLE_EQ(getDouble("GLOBALSCATTER LEGEND TEXTSHAPE HEIGHT"), 14);
    EXPECT_EQ(set("GLOBALSCATTER LEGEND TEXTSHAPE HEIGHT", 3000), FrameStyle_ValueRangeError);
    EXPECT_EQ(set("GLOBALSCATTER LEGEND TEXTSHAPE HEIGHT", 1, AssignOp_ConvertFromIn), FrameStyle_AssignOpError);

    // The RGB legend's font, units and height stand in the legend block itself.
    ASSERT_EQ(set("GLOBALRGB LEGEND HEIGHT", 4), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->GlobalRGB.Legend.TextShape.Height, 0.04);
    ASSERT_EQ(setArg("GLOBALRGB LEGEND FONT", 9), FrameStyle_Ok) << error;  // COURIER
    EXPECT_EQ(style->GlobalRGB.Legend.TextShape.Font, 9);
}

// ---- the frame rectangle --------------------------------------------------------------------

TEST_F(FrameStyleTest, FactoryRectangleReadsAsPositionAndSize) {
    const Rect_s &rect = FrameFactoryDefaults.FrameLayout.Rect;
    EXPECT_EQ(rect.X1, 1.0);
    EXPECT_EQ(rect.Y1, 8.25);
    EXPECT_EQ(rect.X2, 10.0);
    EXPECT_EQ(rect.Y2, 0.25);
    EXPECT_DOUBLE_EQ(getDouble("FRAMELAYOUT XYPOS X"), 1.0);
    EXPECT_DOUBLE_EQ(getDouble("FRAMELAYOUT XYPOS Y"), 0.25);
    EXPECT_DOUBLE_EQ(getDouble("FRAMELAYOUT WIDTH"), 9.0);
    EXPECT_DOUBLE_EQ(getDouble("FRAMELAYOUT HEIGHT"), 8.0);
}

TEST_F(FrameStyleTest, PositionMovesBothCornersAndSizeMovesOne) {
    ASSERT_EQ(set("FRAMELAYOUT XYPOS X", 2), FrameStyle_Ok) << error;
    EXPECT_EQ(style->FrameLayout.Rect.X1, 2.0);
    EXPECT_EQ(style->FrameLayout.Rect.X2, 11.0);
    EXPECT_DOUBLE_EQ(getDouble("FRAMELAYOUT WIDTH"), 9.0);

    ASSERT_EQ(set("FRAMELAYOUT XYPOS Y", 1), FrameStyle_Ok) << error;
    EXPECT_EQ(style->FrameLayout.Rect.Y2, 1.0);
    EXPECT_EQ(style->FrameLayout.Rect.Y1, 9.0);
    EXPECT_DOUBLE_EQ(getDouble("FRAMELAYOUT HEIGHT"), 8.0);

    ASSERT_EQ(set("FRAMELAYOUT WIDTH", 4), FrameStyle_Ok) << error;
    EXPECT_EQ(style->FrameLayout.Rect.X1, 2.0);
    EXPECT_EQ(style->FrameLayout.Rect.X2, 6.0);
    ASSERT_EQ(set("FRAMELAYOUT HEIGHT", 3), FrameStyle_Ok) << error;
    EXPECT_EQ(style->FrameLayout.Rect.Y2, 1.0);
    EXPECT_EQ(style->FrameLayout.Rect.Y1, 4.0);
    EXPECT_DOUBLE_EQ(getDouble("FRAMELAYOUT XYPOS Y"), 1.0);

    // A frame narrower than a tenth of an inch, or one pushed off the paper range, is refused
    // and stays where it was.
    EXPECT_EQ(set("FRAMELAYOUT WIDTH", 0.05), FrameStyle_ValueRangeError);
    EXPECT_EQ(error, "\"WIDTH\" must be between 0.1 and 1000.");
    EXPECT_EQ(set("FRAMELAYOUT XYPOS X", 498), FrameStyle_ValueRangeError);
    EXPECT_EQ(style->FrameLayout.Rect.X1, 2.0);
    EXPECT_EQ(style->FrameLayout.Rect.X2, 6.0);
    EXPECT_EQ(set("FRAMELAYOUT XYPOS X", 2), FrameStyle_DuplicateValue);
}

// ---- groups and numbered blocks -------------------------------------------------------------

TEST_F(FrameStyleTest, GroupNumbersOutsideOneToFourAreRefused) {
    for (int group : {0, 5, -1}) {
        int p[7] = {MacroSetValue_GLOBALCONTOUR, group, MacroSetValue_VAR, -1, -1, -1, -1};
        EXPECT_EQ(FrameStyleSetValue(style.get(), p, 1, 0, AssignOp_Equals, &error), FrameStyle_ValueRangeError);
        EXPECT_EQ(error, "Invalid value global contour index");
        double value;
        ArbParam_t arg;
        EXPECT_EQ(FrameStyleGetValue(style.get(), p, &value, &arg), FrameStyle_InvalidCommandOption);
    }
    for (int major : {MacroSetValue_GLOBALISOSURFACE, MacroSetValue_ISOSURFACEATTRIBUTES}) {
        int p[7] = {major, 5, MacroSetValue_SHOWGROUP, -1, -1, -1, -1};
        EXPECT_EQ(FrameStyleSetValue(style.get(), p, 1, 0, AssignOp_Equals, &error), FrameStyle_ValueRangeError);
        EXPECT_EQ(error, "Invalid group number specified.");
    }
    for (int major : {MacroSetValue_GLOBALSLICE, MacroSetValue_SLICEATTRIBUTES}) {
        int p[7] = {major, 0, MacroSetValue_SHOWGROUP, -1, -1, -1, -1};
        EXPECT_EQ(FrameStyleSetValue(style.get(), p, 1, 0, AssignOp_Equals, &error), FrameStyle_ValueRangeError);
        EXPECT_EQ(error, "Invalid group number specified.");
    }
    // Group 4 is the last one.
    EXPECT_EQ(setArg("GLOBALSLICE 4 SHOWGROUP", 1), FrameStyle_Ok) << error;
    EXPECT_TRUE(style->SliceAttributes[3].ShowGroup);
}

TEST_F(FrameStyleTest, NumberedBlocksTakeTheirNumber) {
    ASSERT_EQ(setArg("GLOBALCONTOUR 2 COLORMAPFILTER COLORMAPOVERRIDE 16 COLOR", 3), FrameStyle_Ok) << error;
    EXPECT_EQ(style->GlobalContour[1].ColorMapFilter.ColorMapOverride[15].Color, 3);
    ASSERT_EQ(setArg("GLOBALCONTOUR 2 COLORMAPFILTER COLORMAPOVERRIDE 1 ENDLEVEL", 5), FrameStyle_Ok) << error;
    EXPECT_EQ(style->GlobalContour[1].ColorMapFilter.ColorMapOverride[0].EndLevel, 4);
    for (int number : {0, 17}) {
        int p[7] = {MacroSetValue_GLOBALCONTOUR, 2, MacroSetValue_COLORMAPFILTER, MacroSetValue_COLORMAPOVERRIDE,
                    number, MacroSetValue_COLOR, -1};
        EXPECT_EQ(FrameStyleSetValue(style.get(), p, 3, 0, AssignOp_Equals, &error), FrameStyle_ValueRangeError);
        EXPECT_EQ(error, "Invalid ColorMap Override number");
    }

    ASSERT_EQ(setArg("BLANKING VALUE CONSTRAINT 8 VARA", 4), FrameStyle_Ok) << error;
    EXPECT_EQ(style->Blanking.Value.Constraint[7].VarA, 3);
    ASSERT_EQ(setArg("BLANKING VALUE CONSTRAINT 3 RELOP", 3), FrameStyle_Ok) << error;  // GREATERTHAN
    EXPECT_EQ(style->Blanking.Value.Constraint[2].RelOp, 3);
    {
        int p[7] = {MacroSetValue_BLANKING, MacroSetValue_VALUE, MacroSetValue_CONSTRAINT, 9, MacroSetValue_INCLUDE,
                    -1, -1};
        EXPECT_EQ(FrameStyleSetValue(style.get(), p, 1, 0, AssignOp_Equals, &error), FrameStyle_ValueRangeError);
        EXPECT_EQ(error, "Invalid Value Blanking Constraint number");
    }

    ASSERT_EQ(set("XYLINEAXIS XDETAIL 5 RANGEMAX", 42), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->XYLineAxis.XDetail[4].RangeMax, 42);
    ASSERT_EQ(set("XYAXIS YDETAIL 2 GRSPACING", 0.5), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->XYLineAxis.YDetail[1].GrSpacing, 0.5);
    {
        int p[7] = {MacroSetValue_XYLINEAXIS, MacroSetValue_YDETAIL, 6, MacroSetValue_RANGEMAX, -1, -1, -1};
        EXPECT_EQ(FrameStyleSetValue(style.get(), p, 0, 1, AssignOp_Equals, &error), FrameStyle_ValueRangeError);
        EXPECT_EQ(error, "Invalid Axis Number for X- or Y-Axis Detail");
    }
    // The 2D axes take no number: what follows XDETAIL is a row.
    ASSERT_EQ(set("TWODAXIS XDETAIL RANGEMAX", 5), FrameStyle_Ok) << error;
    EXPECT_DOUBLE_EQ(style->TwoDAxis.XDetail.RangeMax, 5);
    {
        int p[7] = {MacroSetValue_TWODAXIS, MacroSetValue_XDETAIL, 1, MacroSetValue_RANGEMAX, -1, -1, -1};
        EXPECT_EQ(FrameStyleSetValue(style.get(), p, 0, 1, AssignOp_Equals, &error), FrameStyle_InvalidCommandOption);
    }
}

// ---- results ----------------------------------------------------------------------------------

TEST_F(FrameStyleTest, SettingTheSameValueAgainReportsADuplicate) {
    EXPECT_EQ(setArg("FRAMELAYOUT SHOWBORDER", 1), FrameStyle_DuplicateValue);
    EXPECT_EQ(setArg("FRAMELAYOUT SHOWBORDER", 7), FrameStyle_DuplicateValue);  // any non-zero is true
    EXPECT_EQ(setArg("FRAMELAYOUT BACKGROUNDCOLOR", 7), FrameStyle_DuplicateValue);
    EXPECT_EQ(set("GLOBALSTREAM CELLFRACTION", 0.25), FrameStyle_DuplicateValue);
    EXPECT_EQ(set("GLOBALSTREAM CELLFRACTION", 1, AssignOp_TimesEquals), FrameStyle_DuplicateValue);
    EXPECT_EQ(setArg("GLOBALSTREAM MAXSTEPS", 500), FrameStyle_DuplicateValue);
    EXPECT_EQ(setArg("LINEMAP 1 NAME", reinterpret_cast<ArbParam_t>("&ZN&: &DV&")), FrameStyle_DuplicateValue);
    EXPECT_EQ(set("THREEDVIEW PSIANGLE", 60), FrameStyle_DuplicateValue);

    ASSERT_EQ(setArg("GLOBALSTREAM MAXSTEPS", 600), FrameStyle_Ok);
    EXPECT_EQ(setArg("GLOBALSTREAM MAXSTEPS", 600), FrameStyle_DuplicateValue);
    EXPECT_EQ(style->StreamAttributes.MaxSteps, 600);
}

TEST_F(FrameStyleTest, EnumeratedValuesMustBeInTheRowsSet) {
    EXPECT_EQ(setArg("GLOBALCONTOUR 1 LEGEND ANCHORALIGNMENT", 9), FrameStyle_ValueRangeError);
    EXPECT_EQ(error, "Invalid Option for \"ANCHORALIGNMENT\"");
    EXPECT_EQ(style->GlobalContour[0].Legend.AnchorAlignment, 2);
    EXPECT_EQ(setArg("GLOBALCONTOUR 1 LEGEND ANCHORALIGNMENT", 8), FrameStyle_Ok);  // BOTTOMRIGHT

    // Colours: the basic and custom colours and the multi-colour codes, nothing else.
    EXPECT_EQ(setArg("FIELDMAP 1 MESH COLOR", 64), FrameStyle_ValueRangeError);
    EXPECT_EQ(setArg("FIELDMAP 1 MESH COLOR", -2), FrameStyle_ValueRangeError);
    EXPECT_EQ(setArg("FIELDMAP 1 MESH COLOR", -3), FrameStyle_Ok);  // MULTI2
    EXPECT_EQ(style->FieldMap.Mesh.Color, -3);

    // Sets with gaps: the lighting effect has no 3.
    EXPECT_EQ(setArg("FIELDMAP 1 EFFECTS LIGHTINGEFFECT", 3), FrameStyle_ValueRangeError);
    EXPECT_EQ(setArg("FIELDMAP 1 EFFECTS LIGHTINGEFFECT", 2), FrameStyle_Ok);  // NONE
    EXPECT_EQ(setArg("THREEDAXIS AXISMODE", 3), FrameStyle_ValueRangeError);
    EXPECT_EQ(setArg("THREEDAXIS AXISMODE", 1 << 20), FrameStyle_ValueRangeError);
}

TEST_F(FrameStyleTest, PathsThatNameNoValueAreRefused) {
    int p[7];
    // A row that the record does not have.
    path("FRAMELAYOUT SHOWMESH", p);
    EXPECT_EQ(FrameStyleSetValue(style.get(), p, 1, 0, AssignOp_Equals, &error), FrameStyle_InvalidCommandOption);
    EXPECT_EQ(error, "Invalid option \"SHOWMESH\"\nfor command: \"FRAMELAYOUT\"");
    // A path that stops at a parent.
    path("GLOBALCONTOUR 1 LEGEND", p);
    EXPECT_EQ(FrameStyleSetValue(style.get(), p, 1, 0, AssignOp_Equals, &error), FrameStyle_InvalidCommandOption);
    EXPECT_EQ(error, "Invalid option \"LEGEND\"\nfor command: \"GLOBALCONTOUR\"");
    // More behind a value.
    int longer[7] = {MacroSetValue_FRAMELAYOUT, MacroSetValue_SHOWBORDER, MacroSetValue_COLOR, -1, -1, -1, -1};
    EXPECT_EQ(FrameStyleSetValue(style.get(), longer, 1, 0, AssignOp_Equals, &error), FrameStyle_InvalidCommandOption);
    double value;
    ArbParam_t arg;
    EXPECT_EQ(FrameStyleGetValue(style.get(), longer, &value, &arg), FrameStyle_InvalidCommandOption);
    // Frame rows the set command keeps for itself, and rows that are not frame rows.
    int plotType[7] = {MacroSetValue_PLOTTYPE, -1, -1, -1, -1, -1, -1};
    EXPECT_EQ(FrameStyleSetValue(style.get(), plotType, 2, 0, AssignOp_Equals, &error),
              FrameStyle_InvalidCommandOption);
    EXPECT_EQ(error, "Invalid Major Command (505)");
    int limits[7] = {MacroSetValue_LIMITS, MacroSetValue_MAXPTSINALINE, -1, -1, -1, -1, -1};
    EXPECT_EQ(FrameStyleGetValue(style.get(), limits, &value, &arg), FrameStyle_InvalidCommandOption);
    // Nothing changed on the way.
    auto factory = std::make_unique<FrameStyle_s>(FrameFactoryDefaults);
    EXPECT_EQ(style->FrameLayout.ShowBorder, factory->FrameLayout.ShowBorder);
}

TEST_F(FrameStyleTest, MajorRowsOfTheFrame) {
    std::vector<int> frameRows = {139, 140, 1208, 552, 553, 554, 555, 521};
    for (int row = 504; row <= 516; row++) frameRows.push_back(row);
    for (int row = 525; row <= 529; row++) frameRows.push_back(row);
    for (int row = 533; row <= 540; row++) frameRows.push_back(row);
    for (int row = 542; row <= 550; row++) frameRows.push_back(row);
    for (int row = 396; row <= 400; row++) frameRows.push_back(row);
    for (int row = 0; row < SetValueCommandListItemCount; row++) {
        bool listed = std::find(frameRows.begin(), frameRows.end(), row) != frameRows.end();
        EXPECT_EQ(IsFrameStyleMajorRow(row), listed) << row;
    }
    // All but the rows the set command handles itself name a record of the frame style.
    std::vector<int> elsewhere = {MacroSetValue_FRAMEMODE,        MacroSetValue_PLOTTYPE,
                                  MacroSetValue_FRAMENAME,        MacroSetValue_ACTIVEFIELDZONES,
                                  MacroSetValue_ACTIVEFIELDMAPS,  MacroSetValue_ACTIVEXYMAPS,
                                  MacroSetValue_ACTIVELINEMAPS};
    for (int row : frameRows) {
        int p[7] = {row, -1, -1, -1, -1, -1, -1};
        FrameStyleSetValue(style.get(), p, 0, 0, AssignOp_Equals, &error);
        bool handledHere = error.rfind("Invalid Major Command", 0) != 0;
        bool isElsewhere = std::find(elsewhere.begin(), elsewhere.end(), row) != elsewhere.end();
        EXPECT_EQ(handledHere, !isElsewhere) << SetValueCommandList[row].Name;
    }
}

// ---- templates ----------------------------------------------------------------------------------

TEST_F(FrameStyleTest, ModernisingRaisesMaxStepsInTheBaseOnly) {
    int p[7];
    path("GLOBALSTREAM MAXSTEPS", p);
    double value;
    ArbParam_t arg = 0;
    ASSERT_EQ(FrameStyleGetValue(&FrameFactoryDefaults, p, &value, &arg), FrameStyle_Ok);
    EXPECT_EQ(arg, 500);
    ASSERT_EQ(FrameStyleGetValue(&FrameBase, p, &value, &arg), FrameStyle_Ok);
    EXPECT_EQ(arg, 500);
    ModernizeFrameDefaults();
    ASSERT_EQ(FrameStyleGetValue(&FrameBase, p, &value, &arg), FrameStyle_Ok);
    EXPECT_EQ(arg, 10000);
    EXPECT_EQ(FrameFactoryDefaults.StreamAttributes.MaxSteps, 500);
    EXPECT_EQ(&GetFrameTemplate(true), &FrameFactoryDefaults);
    EXPECT_EQ(&GetFrameTemplate(false), &FrameBase);
    InitializeFrameFactoryDefaults();
    EXPECT_EQ(FrameBase.StreamAttributes.MaxSteps, 500);
}

TEST_F(FrameStyleTest, FactoryValuesDifferWhereThePlotTypeSaysSo) {
    const FrameStyle_s &factory = FrameFactoryDefaults;
    EXPECT_TRUE(factory.TwoDAxis.XDetail.ShowAxis);
    EXPECT_FALSE(factory.SketchAxis.XDetail.ShowAxis);
    EXPECT_EQ(factory.SketchAxis.YDetail.Title.TitleMode, 2);  // USETEXT
    EXPECT_EQ(factory.PolarAxis.ThetaDetail.RangeMax, 360.0);
    EXPECT_EQ(factory.PolarAxis.ThetaDetail.GrSpacing, 15.0);
    EXPECT_EQ(factory.PolarAxis.RDetail.RangeMax, 1.0);
    EXPECT_EQ(factory.ThreeDAxis.ZDetail.TickLabel.TextShape.SizeUnits, 4);  // AXISPERCENTAGE
    EXPECT_EQ(factory.ThreeDAxis.ZDetail.VarNum, 2);
    EXPECT_EQ(factory.TwoDAxis.YDetail.Title.Offset, 0.06);
    EXPECT_EQ(factory.ThreeDAxis.YDetail.Title.Offset, 0.08);
    EXPECT_TRUE(factory.ThreeDAxis.XDetail.Gridlines.Show);
    EXPECT_FALSE(factory.TwoDAxis.XDetail.Gridlines.Show);
    EXPECT_EQ(factory.XYLineAxis.YDetail[4].MinorGridlines.LinePattern, 3);  // DOTTED
    EXPECT_TRUE(factory.IsoSurfaceAttributes[0].ShowGroup);
    EXPECT_FALSE(factory.IsoSurfaceAttributes[1].ShowGroup);
    EXPECT_EQ(factory.Linking.LinkGroup, 1);
    // Tick marks: length 2 percent, thickness 0.4 percent, four minor ticks.
    EXPECT_DOUBLE_EQ(getDouble("TWODAXIS XDETAIL TICKS LENGTH"), 2);
    EXPECT_DOUBLE_EQ(getDouble("TWODAXIS XDETAIL TICKS LINETHICKNESS"), 0.4);
    EXPECT_EQ(getArg("TWODAXIS XDETAIL TICKS NUMMINORTICKS"), 4);
}

TEST_F(FrameStyleTest, NewFramesCopyTheTemplateOfTheStyleBase) {
    ModernizeFrameDefaults();
    FrameBase.FrameLayout.HeaderFont = 9;
    StyleBase_e savedBase = FrameStyleBase;

    ASSERT_TRUE(CreateNewFrame());
    EXPECT_EQ(CurFrame->Style.StreamAttributes.MaxSteps, 10000);
    EXPECT_EQ(CurFrame->Style.FrameLayout.HeaderFont, 9);

    FrameStyleBase = StyleBase_Factory;
    ASSERT_TRUE(CreateNewFrame());
    EXPECT_EQ(CurFrame->Style.StreamAttributes.MaxSteps, 500);
    EXPECT_EQ(CurFrame->Style.FrameLayout.HeaderFont, 1);

    // A frame's style is its own copy.
    CurFrame->Style.FrameLayout.HeaderFont = 5;
    EXPECT_EQ(FrameFactoryDefaults.FrameLayout.HeaderFont, 1);

    FrameStyleBase = savedBase;
    DeleteAllFrames();
    InitializeFrameFactoryDefaults();
}

// ---- map records ------------------------------------------------------------------------------

TEST_F(FrameStyleTest, MapRecordsAreSetThroughTheMapTables) {
    // The frame's template behind FIELDMAP and FIELD, whatever set stands in the path.
    ASSERT_EQ(setArg("FIELD 1 SURFACES SURFACESTOPLOT", 8), FrameStyle_Ok) << error;  // IJKPLANES
    EXPECT_EQ(style->FieldMap.Surfaces.SurfacesToPlot, 8);
    EXPECT_EQ(getArg("FIELDMAP 99 SURFACES SURFACESTOPLOT"), 8);

    // One map's own record, with the same path.
    FieldMapStyle_s map;
    int p[7];
    path("FIELDMAP 1 POINTS IJKSKIP J", p);
    ASSERT_EQ(FieldMapStyleSetValue(&map, style->FrameLayout.Rect, p, 3, 0, AssignOp_Equals, &error), FrameStyle_Ok);
    EXPECT_EQ(map.Points.JSkip, 3);
    EXPECT_EQ(style->FieldMap.Points.JSkip, 1);
    EXPECT_EQ(FieldMapStyleSetValue(&map, style->FrameLayout.Rect, p, 0, 0, AssignOp_Equals, &error),
              FrameStyle_ValueRangeError);
    double value;
    ArbParam_t arg = 0;
    ASSERT_EQ(FieldMapStyleGetValue(&map, p, &value, &arg), FrameStyle_Ok);
    EXPECT_EQ(arg, 3);
    path("FIELDMAP 1 SCATTER FRAMESIZE", p);
    ASSERT_EQ(FieldMapStyleSetValue(&map, Rect_s{0, 4, 2, 0}, p, 0, 1, AssignOp_ConvertFromIn, &error), FrameStyle_Ok);
    EXPECT_DOUBLE_EQ(map.Scatter.FrameSize, 0.25);  // 1 inch of a 4 inch frame

    LineMapStyle_s lineMap;
    path("LINEMAP 1 ASSIGN THETAAXISVAR", p);
    ASSERT_EQ(LineMapStyleSetValue(&lineMap, style->FrameLayout.Rect, p, 4, 0, AssignOp_Equals, &error),
              FrameStyle_Ok);
    EXPECT_EQ(lineMap.Assign.XAxisVar, 3);
    path("XYMAP 1 ASSIGN RAXISVAR", p);
    ASSERT_EQ(LineMapStyleSetValue(&lineMap, style->FrameLayout.Rect, p, 5, 0, AssignOp_Equals, &error),
              FrameStyle_Ok);
    EXPECT_EQ(lineMap.Assign.YAxisVar, 4);
    path("LINEMAP 1 INDICIES IRANGE SKIP", p);  // the old spelling of INDICES
    ASSERT_EQ(LineMapStyleSetValue(&lineMap, style->FrameLayout.Rect, p, 2, 0, AssignOp_Equals, &error),
              FrameStyle_Ok);
    EXPECT_EQ(lineMap.Indices.IRange.Skip, 2);
    path("LINEMAP 1 ASSIGN YAXIS", p);
    ASSERT_EQ(LineMapStyleSetValue(&lineMap, style->FrameLayout.Rect, p, 5, 0, AssignOp_Equals, &error),
              FrameStyle_Ok);
    EXPECT_EQ(lineMap.Assign.YAxis, 4);
    EXPECT_EQ(LineMapStyleSetValue(&lineMap, style->FrameLayout.Rect, p, 6, 0, AssignOp_Equals, &error),
              FrameStyle_ValueRangeError);
    EXPECT_EQ(error, "\"YAXIS\" must be between 1 and 5.");
    ASSERT_EQ(LineMapStyleGetValue(&lineMap, p, &value, &arg), FrameStyle_Ok);
    EXPECT_EQ(arg, 5);
}

}  // namespace

TEST_F(FrameStyleTest, BaseTextAndGeomAreTheFramesOwn) {
    ASSERT_EQ(setArg("BASETEXT COLOR", 1), FrameStyle_Ok) << error;  // RED
    EXPECT_EQ(style->BaseText.Color, 1);
    ASSERT_EQ(setArg("BASEGEOM LINEPATTERN", 2), FrameStyle_Ok) << error;  // DOTTED
    EXPECT_EQ(style->BaseGeom.LinePattern, 2);
    EXPECT_EQ(getArg("BASETEXT COLOR"), 1);
    // The general defaults of text and geometries are other records.
    EXPECT_EQ(GeneralBase.DefaultText.Color, 0);
    EXPECT_EQ(GeneralBase.DefaultGeom.LinePattern, 0);
    EXPECT_EQ(setArg("BASETEXT MAXSTEPS", 1), FrameStyle_InvalidCommandOption);
}
