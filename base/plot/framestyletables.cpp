// The tables of the frame style records: one per record, each row with its input check and the
// place of its value, and the major rows with the records they address. The walk over them is in
// framestyle.cpp.
// Relies on: framestyletables, vocab (row numbers).
#include "base/plot/framestyletables.h"

#include <iterator>

#include "base/macro/vocab.h"

namespace {

// ---- input checks ---------------------------------------------------------------------------

constexpr double DegreesPerRadian = 57.29577951308232;
constexpr double Pi = 3.141592653589793;

constexpr FrameStyleValueSpec_s DoubleSpec{false, -1e150, 1e150, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s AboveZeroDoubleSpec{false, 1e-150, 1e150, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s ZeroAndAboveDoubleSpec{false, 0, 1e150, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s AngleSpec{false, -4 * Pi, 4 * Pi, DegreesPerRadian, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s TextAngleSpec{false, -2 * Pi, 2 * Pi, DegreesPerRadian, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s CreaseAngleSpec{false, 0, Pi, DegreesPerRadian, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s FieldOfViewSpec{false, 1e-6, Pi, DegreesPerRadian, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s XFrameCoordSpec{false, 0, 1, 100, FrameStyleUnit_FrameX};
constexpr FrameStyleValueSpec_s YFrameCoordSpec{false, 0, 1, 100, FrameStyleUnit_FrameY};
constexpr FrameStyleValueSpec_s LineThicknessSpec{false, 1e-6, 1, 100, FrameStyleUnit_FrameY};
constexpr FrameStyleValueSpec_s FrameTextSizeSpec{false, 1e-150, 2, 100, FrameStyleUnit_FrameY};
constexpr FrameStyleValueSpec_s PointTextSizeSpec{false, 1e-150, 2500, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s AxisTextSizeSpec{false, 1e-150, 2, 100, FrameStyleUnit_None};
// Sizes, lengths and spacings in frame units, and offsets that may point either way.
constexpr FrameStyleValueSpec_s FrameSizeSpec{false, 0, 10, 100, FrameStyleUnit_FrameY};
constexpr FrameStyleValueSpec_s FrameOffsetSpec{false, -10, 10, 100, FrameStyleUnit_FrameY};
constexpr FrameStyleValueSpec_s PercentageSpec{false, 0, 1, 100, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s PercentNumberSpec{false, 0, 100, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s MarginSpec{false, 0, 10, 100, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s PaperCoordSpec{false, -500, 500, 1, FrameStyleUnit_Paper};
constexpr FrameStyleValueSpec_s PaperSizeSpec{false, 0.1, 1000, 1, FrameStyleUnit_Paper};

constexpr FrameStyleValueSpec_s ZeroAndAboveLgIndexSpec{true, 0, MAXINDEX, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s AboveZeroLgIndexSpec{true, 1, MAXINDEX, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s ZeroAndAboveSmIntegerSpec{true, 0, 32767, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s AboveZeroSmIntegerSpec{true, 1, 32767, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s EntIndexSpec{true, 0, 32699, 1, FrameStyleUnit_None};
// A variable, given from 1; 0 in a macro (stored -1) leaves the row without one.
constexpr FrameStyleValueSpec_s VarOrNoneSpec{true, -1, 32699, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s OneBasedIndexSpec{true, 0, MAXINDEX - 1, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s ContourGroupSpec{true, 0, 3, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s ContourLevelSpec{true, 0, 32699, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s CustomLabelSpec{true, 0, 9, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s ValuePrecisionSpec{true, 1, 18, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s NumMinorTicksSpec{true, 0, 100, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s NumberOfRodPointsSpec{true, 3, 100, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s MaxLinkGroupsSpec{true, 1, 20, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s TranslucencySpec{true, 1, 99, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s PolyOrderSpec{true, 1, 10, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s CurvePointsSpec{true, 2, MAXINDEX, 0, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s XYAxisNumberSpec{true, 0, MaxXYLineAxes - 1, 1, FrameStyleUnit_None};
constexpr FrameStyleValueSpec_s AxisEdgeSpec{true, 0, 3, 0, FrameStyleUnit_None};

// ---- tables ---------------------------------------------------------------------------------

// The locator of a row whose value, or whose block, is the record itself.
void *self(void *record, int) { return record; }

#define LOC(member) [](void *record, int) -> void * { return &static_cast<REC *>(record)->member; }
#define LOCN(member) [](void *record, int n) -> void * { return &static_cast<REC *>(record)->member[n]; }
#define BOOLROW(row, member) {MacroSetValue_##row, FrameStyleRowKind_Bool, nullptr, LOC(member), nullptr, 0, nullptr}
#define ENUMROW(row, member) {MacroSetValue_##row, FrameStyleRowKind_Enum, nullptr, LOC(member), nullptr, 0, nullptr}
#define INTROW(row, rules, member) {MacroSetValue_##row, FrameStyleRowKind_Int, &rules, LOC(member), nullptr, 0, nullptr}
#define DBLROW(row, rules, member) \
    {MacroSetValue_##row, FrameStyleRowKind_Double, &rules, LOC(member), nullptr, 0, nullptr}
#define STRROW(row, member) {MacroSetValue_##row, FrameStyleRowKind_String, nullptr, LOC(member), nullptr, 0, nullptr}
#define RECTROW(row, kind, rules, rect) {MacroSetValue_##row, kind, &rules, LOC(rect), nullptr, 0, nullptr}
#define SUBROW(row, member, table) \
    {MacroSetValue_##row, FrameStyleRowKind_Sub, nullptr, LOC(member), &table, 0, nullptr}
#define NUMSUBROW(row, member, table, count, message) \
    {MacroSetValue_##row, FrameStyleRowKind_Sub, nullptr, LOCN(member), &table, count, message}
#define SPLICEROW(member, table) {-1, FrameStyleRowKind_Splice, nullptr, LOC(member), &table, 0, nullptr}
#define TABLE(name) const FrameStyleTable_s name##Table{name##Rows, std::size(name##Rows)}

// -- shared sub-records --

#define REC TextShape_s
const FrameStyleRow_s TextShapeRows[] = {
    ENUMROW(FONT, Font),
    ENUMROW(SIZEUNITS, SizeUnits),
    {MacroSetValue_HEIGHT, FrameStyleRowKind_TextHeight, nullptr, self, nullptr, 0, nullptr},
};
TABLE(TextShape);
#undef REC

#define REC TextBox_s
const FrameStyleRow_s TextBoxRows[] = {
    ENUMROW(BOXTYPE, BoxType),
    DBLROW(MARGIN, MarginSpec, Margin),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    ENUMROW(COLOR, Color),
    ENUMROW(FILLCOLOR, FillColor),
};
TABLE(TextBox);
#undef REC

#define REC ValueFormat_s
const FrameStyleRow_s ValueFormatRows[] = {
    ENUMROW(FORMATTING, Formatting),
    INTROW(CUSTOMLABEL, CustomLabelSpec, CustomLabel),
    INTROW(PRECISION, ValuePrecisionSpec, Precision),
    BOOLROW(SHOWDECIMALSONWHOLENUMBERS, ShowDecimalsOnWholeNumbers),
    BOOLROW(REMOVELEADINGZEROS, RemoveLeadingZeros),
    BOOLROW(SHOWNEGATIVESIGN, ShowNegativeSign),
    STRROW(DYNAMICLABELNAME, DynamicLabelName),
    STRROW(POSITIVEPREFIX, PositivePrefix),
    STRROW(POSITIVESUFFIX, PositiveSuffix),
    STRROW(NEGATIVEPREFIX, NegativePrefix),
    STRROW(NEGATIVESUFFIX, NegativeSuffix),
    STRROW(ZEROPREFIX, ZeroPrefix),
    STRROW(ZEROSUFFIX, ZeroSuffix),
};
TABLE(ValueFormat);
#undef REC

#define REC IndexRange_s
const FrameStyleRow_s IndexRangeRows[] = {
    INTROW(MIN, ZeroAndAboveLgIndexSpec, Min),
    INTROW(MAX, ZeroAndAboveLgIndexSpec, Max),
    INTROW(SKIP, AboveZeroLgIndexSpec, Skip),
};
TABLE(IndexRange);
#undef REC

#define REC AsciiShape_s
const FrameStyleRow_s AsciiShapeRows[] = {
    BOOLROW(USEBASEFONT, UseBaseFont),
    ENUMROW(FONTOVERRIDE, FontOverride),
    STRROW(ASCIICHAR, AsciiChar),
};
TABLE(AsciiShape);
#undef REC

#define REC SymbolShape_s
const FrameStyleRow_s SymbolShapeRows[] = {
    BOOLROW(ISASCII, IsAscii),
    ENUMROW(GEOMSHAPE, GeomShape),
    SUBROW(ASCIISHAPE, AsciiShape, AsciiShapeTable),
};
TABLE(SymbolShape);
#undef REC

#define REC Effects_s
const FrameStyleRow_s EffectsRows[] = {
    ENUMROW(LIGHTINGEFFECT, LightingEffect),
    INTROW(SURFACETRANSLUCENCY, TranslucencySpec, SurfaceTranslucency),
    BOOLROW(USETRANSLUCENCY, UseTranslucency),
    BOOLROW(USEVALUEBLANKING, UseValueBlanking),
};
TABLE(Effects);
#undef REC

#define REC MeshLayer_s
const FrameStyleRow_s MeshLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(MESHTYPE, MeshType),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameSizeSpec, PatternLength),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
};
TABLE(MeshLayer);
#undef REC

#define REC ContourLayer_s
const FrameStyleRow_s ContourLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(CONTOURTYPE, ContourType),
    INTROW(LINECONTOURGROUP, ContourGroupSpec, LineContourGroup),
    ENUMROW(FLOODCOLORING, FloodColoring),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameSizeSpec, PatternLength),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    BOOLROW(USELIGHTINGEFFECT, UseLightingEffect),
};
TABLE(ContourLayer);
#undef REC

#define REC VectorLayer_s
const FrameStyleRow_s VectorLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(VECTORTYPE, VectorType),
    ENUMROW(ARROWHEADSTYLE, ArrowheadStyle),
    ENUMROW(COLOR, Color),
    BOOLROW(ISTANGENT, IsTangent),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameSizeSpec, PatternLength),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
};
TABLE(VectorLayer);
#undef REC

#define REC ShadeLayer_s
const FrameStyleRow_s ShadeLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    BOOLROW(USELIGHTINGEFFECT, UseLightingEffect),
};
TABLE(ShadeLayer);
#undef REC

#define REC EdgeLayer_s
const FrameStyleRow_s EdgeLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(EDGETYPE, EdgeType),
    ENUMROW(IBORDER, IBorder),
    ENUMROW(JBORDER, JBorder),
    ENUMROW(KBORDER, KBorder),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
};
TABLE(EdgeLayer);
#undef REC

#define REC GridArea_s
const FrameStyleRow_s GridAreaRows[] = {
    BOOLROW(DRAWBORDER, DrawBorder),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    BOOLROW(ISFILLED, IsFilled),
    ENUMROW(FILLCOLOR, FillColor),
    BOOLROW(USELIGHTSOURCETOFILL, UseLightSourceToFill),
    BOOLROW(DRAWGRIDLAST, DrawGridLast),
};
TABLE(GridArea);
#undef REC

// A position in the frame (XYPOS of legends, reference objects, the 3D frame axis).
#define REC XY_s
const FrameStyleRow_s FramePositionRows[] = {
    DBLROW(X, XFrameCoordSpec, X),
    DBLROW(Y, YFrameCoordSpec, Y),
};
TABLE(FramePosition);
#undef REC

// A point or direction in grid units.
#define REC XYZ_s
const FrameStyleRow_s GridXYZRows[] = {
    DBLROW(X, DoubleSpec, X),
    DBLROW(Y, DoubleSpec, Y),
    DBLROW(Z, DoubleSpec, Z),
};
TABLE(GridXYZ);
const FrameStyleRow_s ScaleXYZRows[] = {
    DBLROW(X, AboveZeroDoubleSpec, X),
    DBLROW(Y, AboveZeroDoubleSpec, Y),
    DBLROW(Z, AboveZeroDoubleSpec, Z),
};
TABLE(ScaleXYZ);
#undef REC

// A viewport in frame fractions, and the polar view's extents in grid units.
#define REC Rect_s
const FrameStyleRow_s ViewportRectRows[] = {
    DBLROW(X1, XFrameCoordSpec, X1),
    DBLROW(Y1, YFrameCoordSpec, Y1),
    DBLROW(X2, XFrameCoordSpec, X2),
    DBLROW(Y2, YFrameCoordSpec, Y2),
};
TABLE(ViewportRect);
const FrameStyleRow_s GridRectRows[] = {
    DBLROW(X1, DoubleSpec, X1),
    DBLROW(Y1, DoubleSpec, Y1),
    DBLROW(X2, DoubleSpec, X2),
    DBLROW(Y2, DoubleSpec, Y2),
};
TABLE(GridRect);
// The frame's own position: X and Y move the rectangle.
const FrameStyleRow_s FrameRectPositionRows[] = {
    {MacroSetValue_X, FrameStyleRowKind_RectX, &PaperCoordSpec, self, nullptr, 0, nullptr},
    {MacroSetValue_Y, FrameStyleRowKind_RectY, &PaperCoordSpec, self, nullptr, 0, nullptr},
};
TABLE(FrameRectPosition);
#undef REC

// -- frame-wide blocks --

#define REC FrameLayout_s
const FrameStyleRow_s FrameLayoutRows[] = {
    BOOLROW(SHOWBORDER, ShowBorder),
    BOOLROW(SHOWHEADER, ShowHeader),
    BOOLROW(ISTRANSPARENT, IsTransparent),
    ENUMROW(BACKGROUNDCOLOR, BackgroundColor),
    ENUMROW(HEADERCOLOR, HeaderColor),
    ENUMROW(HEADERFONT, HeaderFont),
    DBLROW(BORDERTHICKNESS, LineThicknessSpec, BorderThickness),
    SUBROW(XYPOS, Rect, FrameRectPositionTable),
    RECTROW(WIDTH, FrameStyleRowKind_RectWidth, PaperSizeSpec, Rect),
    RECTROW(HEIGHT, FrameStyleRowKind_RectHeight, PaperSizeSpec, Rect),
};
TABLE(FrameLayout);
#undef REC

#define REC Linking_s
const FrameStyleRow_s WithinFrameRows[] = {
    BOOLROW(LINKAXISSTYLE, LinkAxisStyle),
    BOOLROW(LINKGRIDLINESTYLE, LinkGridlineStyle),
    BOOLROW(LINKLAYERLINECOLOR, LinkLayerLineColor),
    BOOLROW(LINKLAYERLINEPATTERN, LinkLayerLinePattern),
};
TABLE(WithinFrame);
const FrameStyleRow_s BetweenFramesRows[] = {
    INTROW(LINKGROUP, MaxLinkGroupsSpec, LinkGroup),
    BOOLROW(LINKCONTOURLEVELS, LinkContourLevels),
    BOOLROW(LINKFRAMESIZEANDPOSITION, LinkFrameSizeAndPosition),
    BOOLROW(LINKXAXISRANGE, LinkXAxisRange),
    BOOLROW(LINKYAXISRANGE, LinkYAxisRange),
    BOOLROW(LINK3DVIEW, Link3DView),
    BOOLROW(LINKPOLARVIEW, LinkPolarView),
    BOOLROW(LINKAXISPOSITION, LinkAxisPosition),
    BOOLROW(LINKVALUEBLANKING, LinkValueBlanking),
    BOOLROW(LINKSLICEPOSITIONS, LinkSlicePositions),
    BOOLROW(LINKISOSURFACEVALUES, LinkIsoSurfaceValues),
};
TABLE(BetweenFrames);
// Both blocks address the one record: the flags are grouped only in the language.
const FrameStyleRow_s LinkingRows[] = {
    {MacroSetValue_WITHINFRAME, FrameStyleRowKind_Sub, nullptr, self, &WithinFrameTable, 0, nullptr},
    {MacroSetValue_BETWEENFRAMES, FrameStyleRowKind_Sub, nullptr, self, &BetweenFramesTable, 0, nullptr},
};
TABLE(Linking);
#undef REC

#define REC GlobalTime_s
const FrameStyleRow_s GlobalTimeRows[] = {
    DBLROW(SOLUTIONTIME, DoubleSpec, SolutionTime),
};
TABLE(GlobalTime);
#undef REC

#define REC GlobalEdge_s
const FrameStyleRow_s GlobalEdgeRows[] = {
    DBLROW(MINCREASEANGLE, CreaseAngleSpec, MinCreaseAngle),
};
TABLE(GlobalEdge);
#undef REC

#define REC RGBLegend_s
const FrameStyleRow_s RGBLegendRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWLABELS, ShowLabels),
    SPLICEROW(TextShape, TextShapeTable),
    SUBROW(XYPOS, XYPos, FramePositionTable),
    ENUMROW(ANCHORALIGNMENT, AnchorAlignment),
    ENUMROW(TEXTCOLOR, TextColor),
    SUBROW(BOX, Box, TextBoxTable),
    BOOLROW(USEREDVARNAME, UseRedVarName),
    STRROW(REDCHANNELLABEL, RedChannelLabel),
    BOOLROW(USEGREENVARNAME, UseGreenVarName),
    STRROW(GREENCHANNELLABEL, GreenChannelLabel),
    BOOLROW(USEBLUEVARNAME, UseBlueVarName),
    STRROW(BLUECHANNELLABEL, BlueChannelLabel),
    ENUMROW(RGBLEGENDORIENTATION, RGBLegendOrientation),
};
TABLE(RGBLegend);
#undef REC

#define REC GlobalRGB_s
const FrameStyleRow_s GlobalRGBRows[] = {
    ENUMROW(RGBMODE, RGBMode),
    INTROW(REDCHANNELVAR, VarOrNoneSpec, RedChannelVar),
    INTROW(GREENCHANNELVAR, VarOrNoneSpec, GreenChannelVar),
    INTROW(BLUECHANNELVAR, VarOrNoneSpec, BlueChannelVar),
    DBLROW(RANGEMIN, DoubleSpec, RangeMin),
    DBLROW(RANGEMAX, DoubleSpec, RangeMax),
    SUBROW(LEGEND, Legend, RGBLegendTable),
};
TABLE(GlobalRGB);
#undef REC

#define REC ContourLabels_s
const FrameStyleRow_s ContourLabelsRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(GENERATEAUTOLABELS, GenerateAutoLabels),
    BOOLROW(ALIGNAUTOLABELS, AlignAutoLabels),
    BOOLROW(LABELWITHVALUE, LabelWithValue),
    INTROW(AUTOLEVELSKIP, AboveZeroSmIntegerSpec, AutoLevelSkip),
    DBLROW(AUTOLABELSPACING, FrameSizeSpec, AutoLabelSpacing),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    ENUMROW(COLOR, Color),
    BOOLROW(ISFILLED, IsFilled),
    ENUMROW(FILLCOLOR, FillColor),
    DBLROW(MARGIN, MarginSpec, Margin),
    SUBROW(NUMFORMAT, NumFormat, ValueFormatTable),
};
TABLE(ContourLabels);
#undef REC

#define REC ContourLegend_s
const FrameStyleRow_s ContourLegendRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWHEADER, ShowHeader),
    DBLROW(ROWSPACING, ZeroAndAboveDoubleSpec, RowSpacing),
    SUBROW(XYPOS, XYPos, FramePositionTable),
    ENUMROW(ANCHORALIGNMENT, AnchorAlignment),
    BOOLROW(ISVERTICAL, IsVertical),
    BOOLROW(OVERLAYBARGRID, OverlayBarGrid),
    SUBROW(HEADERTEXTSHAPE, HeaderTextShape, TextShapeTable),
    SUBROW(NUMBERTEXTSHAPE, NumberTextShape, TextShapeTable),
    ENUMROW(TEXTCOLOR, TextColor),
    SUBROW(BOX, Box, TextBoxTable),
    BOOLROW(INCLUDECUTOFFLEVELS, IncludeCutoffLevels),
    BOOLROW(AUTORESIZE, AutoResize),
    DBLROW(AUTOSIZEMAXLIMIT, FrameSizeSpec, AutoSizeMaxLimit),
    ENUMROW(LABELLOCATION, LabelLocation),
    DBLROW(LABELINCREMENT, AboveZeroDoubleSpec, LabelIncrement),
};
TABLE(ContourLegend);
#undef REC

#define REC ColorCutoff_s
const FrameStyleRow_s ColorCutoffRows[] = {
    DBLROW(RANGEMIN, DoubleSpec, RangeMin),
    DBLROW(RANGEMAX, DoubleSpec, RangeMax),
    BOOLROW(INCLUDEMIN, IncludeMin),
    BOOLROW(INCLUDEMAX, IncludeMax),
};
TABLE(ColorCutoff);
#undef REC

#define REC Zebra_s
const FrameStyleRow_s ZebraRows[] = {
    BOOLROW(INCLUDE, Include),
    BOOLROW(ISTRANSPARENT, IsTransparent),
    ENUMROW(COLOR, Color),
};
TABLE(Zebra);
#undef REC

#define REC ColorMapOverride_s
const FrameStyleRow_s ColorMapOverrideRows[] = {
    BOOLROW(INCLUDE, Include),
    ENUMROW(COLOR, Color),
    INTROW(STARTLEVEL, ContourLevelSpec, StartLevel),
    INTROW(ENDLEVEL, ContourLevelSpec, EndLevel),
};
TABLE(ColorMapOverride);
#undef REC

#define REC ColorMapFilter_s
const FrameStyleRow_s ContinuousColorRows[] = {
    DBLROW(CMIN, DoubleSpec, CMin),
    DBLROW(CMAX, DoubleSpec, CMax),
};
TABLE(ContinuousColor);
const FrameStyleRow_s ColorMapFilterRows[] = {
    ENUMROW(COLORMAPDISTRIBUTION, ColorMapDistribution),
    {MacroSetValue_CONTINUOUSCOLOR, FrameStyleRowKind_Sub, nullptr, self, &ContinuousColorTable, 0, nullptr},
    BOOLROW(REVERSECOLORMAP, ReverseColorMap),
    SUBROW(ZEBRA, Zebra, ZebraTable),
    INTROW(COLORMAPCYCLES, AboveZeroSmIntegerSpec, ColorMapCycles),
    BOOLROW(USEFASTAPPROXCONTINUOUSFLOOD, UseFastApproxContinuousFlood),
    BOOLROW(COLORMAPOVERRIDEACTIVE, ColorMapOverrideActive),
    NUMSUBROW(COLORMAPOVERRIDE, ColorMapOverride, ColorMapOverrideTable, MaxColorMapOverrides,
              "Invalid ColorMap Override number"),
};
TABLE(ColorMapFilter);
#undef REC

#define REC ContourLineStyle_s
const FrameStyleRow_s ContourLineStyleRows[] = {
    ENUMROW(CONTOURLINEMODE, ContourLineMode),
    INTROW(LINESKIP, ZeroAndAboveSmIntegerSpec, LineSkip),
    DBLROW(PATTERNLENGTH, FrameSizeSpec, PatternLength),
};
TABLE(ContourLineStyle);
#undef REC

#define REC GlobalContour_s
const FrameStyleRow_s GlobalContourRows[] = {
    INTROW(VAR, VarOrNoneSpec, Var),
    INTROW(DEFNUMLEVELS, AboveZeroSmIntegerSpec, DefNumLevels),
    SUBROW(LABELS, Labels, ContourLabelsTable),
    SUBROW(LEGEND, Legend, ContourLegendTable),
    SUBROW(COLORCUTOFF, ColorCutoff, ColorCutoffTable),
    SUBROW(COLORMAPFILTER, ColorMapFilter, ColorMapFilterTable),
    SUBROW(CONTOURLINESTYLE, ContourLineStyle, ContourLineStyleTable),
};
TABLE(GlobalContour);
#undef REC

#define REC MagnitudeLabel_s
const FrameStyleRow_s MagnitudeLabelRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(TEXTCOLOR, TextColor),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    SUBROW(NUMFORMAT, NumFormat, ValueFormatTable),
    DBLROW(OFFSET, FrameOffsetSpec, Offset),
};
TABLE(MagnitudeLabel);
#undef REC

#define REC RefVector_s
const FrameStyleRow_s RefVectorRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    SUBROW(XYPOS, XYPos, FramePositionTable),
    DBLROW(MAGNITUDE, AboveZeroDoubleSpec, Magnitude),
    DBLROW(ANGLE, AngleSpec, Angle),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    SUBROW(MAGNITUDELABEL, MagnitudeLabel, MagnitudeLabelTable),
};
TABLE(RefVector);
#undef REC

#define REC GlobalVector_s
const FrameStyleRow_s GlobalVectorRows[] = {
    INTROW(UVAR, VarOrNoneSpec, UVar),
    INTROW(VVAR, VarOrNoneSpec, VVar),
    INTROW(WVAR, VarOrNoneSpec, WVar),
    DBLROW(RELATIVELENGTH, ZeroAndAboveDoubleSpec, RelativeLength),
    DBLROW(UNIFORMLENGTH, FrameSizeSpec, UniformLength),
    BOOLROW(USERELATIVE, UseRelative),
    BOOLROW(RELATIVELENGTHINGRIDUNITS, RelativeLengthInGridUnits),
    DBLROW(HEADSIZEASFRACTION, PercentageSpec, HeadSizeAsFraction),
    DBLROW(HEADSIZEINFRAMEUNITS, FrameSizeSpec, HeadSizeInFrameUnits),
    BOOLROW(SIZEHEADBYFRACTION, SizeHeadByFraction),
    DBLROW(ARROWHEADANGLE, AngleSpec, ArrowheadAngle),
    SUBROW(REFVECTOR, RefVector, RefVectorTable),
};
TABLE(GlobalVector);
#undef REC

#define REC MapLegend_s
const FrameStyleRow_s MapLegendRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWTEXT, ShowText),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    ENUMROW(TEXTCOLOR, TextColor),
    SUBROW(BOX, Box, TextBoxTable),
    DBLROW(ROWSPACING, ZeroAndAboveDoubleSpec, RowSpacing),
    SUBROW(XYPOS, XYPos, FramePositionTable),
    ENUMROW(ANCHORALIGNMENT, AnchorAlignment),
};
TABLE(MapLegend);
#undef REC

#define REC DataLabels_s
const FrameStyleRow_s DataLabelsRows[] = {
    BOOLROW(SHOWNODELABELS, ShowNodeLabels),
    BOOLROW(SHOWCELLLABELS, ShowCellLabels),
    BOOLROW(COLORBYZONEMAP, ColorByZoneMap),
    ENUMROW(COLOR, Color),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    SUBROW(NUMFORMAT, NumFormat, ValueFormatTable),
    BOOLROW(INCLUDEBOX, IncludeBox),
    ENUMROW(NODELABELTYPE, NodeLabelType),
    INTROW(NODELABELVAR, VarOrNoneSpec, NodeLabelVar),
    ENUMROW(CELLLABELTYPE, CellLabelType),
    INTROW(CELLLABELVAR, VarOrNoneSpec, CellLabelVar),
    ENUMROW(SKIPMODE, SkipMode),
    DBLROW(DISTANCESKIP, FrameSizeSpec, DistanceSkip),
    INTROW(INDEXSKIP, AboveZeroLgIndexSpec, IndexSkip),
};
TABLE(DataLabels);
#undef REC

#define REC RefScatSymbol_s
const FrameStyleRow_s RefScatSymbolRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    BOOLROW(ISFILLED, IsFilled),
    ENUMROW(FILLCOLOR, FillColor),
    SUBROW(XYPOS, XYPos, FramePositionTable),
    DBLROW(MAGNITUDE, AboveZeroDoubleSpec, Magnitude),
    SUBROW(SYMBOLSHAPE, SymbolShape, SymbolShapeTable),
};
TABLE(RefScatSymbol);
#undef REC

#define REC GlobalScatter_s
const FrameStyleRow_s GlobalScatterRows[] = {
    INTROW(VAR, VarOrNoneSpec, Var),
    DBLROW(RELATIVESIZE, ZeroAndAboveDoubleSpec, RelativeSize),
    BOOLROW(RELATIVESIZEINGRIDUNITS, RelativeSizeInGridUnits),
    ENUMROW(BASEFONT, BaseFont),
    ENUMROW(SPHERESCATTERRENDERQUALITY, SphereScatterRenderQuality),
    SUBROW(LEGEND, Legend, MapLegendTable),
    SUBROW(REFSCATSYMBOL, RefScatSymbol, RefScatSymbolTable),
    SUBROW(DATALABELS, DataLabels, DataLabelsTable),
};
TABLE(GlobalScatter);
#undef REC

#define REC GlobalLinePlot_s
const FrameStyleRow_s GlobalLinePlotRows[] = {
    SUBROW(DATALABELS, DataLabels, DataLabelsTable),
    SUBROW(LEGEND, Legend, MapLegendTable),
};
TABLE(GlobalLinePlot);
#undef REC

#define REC GlobalPolar_s
const FrameStyleRow_s GlobalPolarRows[] = {
    BOOLROW(DRAWSTRAIGHTLINES, DrawStraightLines),
    DBLROW(ANGLE, AngleSpec, Angle),
};
TABLE(GlobalPolar);
#undef REC

#define REC IJKBlanking_s
const FrameStyleRow_s IJKBlankingRows[] = {
    BOOLROW(INCLUDE, Include),
    ENUMROW(IJKBLANKMODE, IJKBlankMode),
    DBLROW(IMINFRACT, PercentageSpec, IMinFract),
    DBLROW(JMINFRACT, PercentageSpec, JMinFract),
    DBLROW(KMINFRACT, PercentageSpec, KMinFract),
    DBLROW(IMAXFRACT, PercentageSpec, IMaxFract),
    DBLROW(JMAXFRACT, PercentageSpec, JMaxFract),
    DBLROW(KMAXFRACT, PercentageSpec, KMaxFract),
    INTROW(ZONE, EntIndexSpec, Zone),
};
TABLE(IJKBlanking);
#undef REC

#define REC BlankingConstraint_s
const FrameStyleRow_s BlankingConstraintRows[] = {
    BOOLROW(INCLUDE, Include),
    ENUMROW(RELOP, RelOp),
    ENUMROW(CONSTRAINTOP2MODE, ConstraintOp2Mode),
    DBLROW(VALUECUTOFF, DoubleSpec, ValueCutoff),
    INTROW(VARA, VarOrNoneSpec, VarA),
    INTROW(VARB, VarOrNoneSpec, VarB),
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameSizeSpec, PatternLength),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
};
TABLE(BlankingConstraint);
#undef REC

#define REC ValueBlanking_s
const FrameStyleRow_s ValueBlankingRows[] = {
    BOOLROW(INCLUDE, Include),
    BOOLROW(BLANKENTIRECELL, BlankEntireCell),
    ENUMROW(VALUEBLANKCELLMODE, ValueBlankCellMode),
    NUMSUBROW(CONSTRAINT, Constraint, BlankingConstraintTable, MaxBlankingConstraints,
              "Invalid Value Blanking Constraint number"),
};
TABLE(ValueBlanking);
#undef REC

#define REC DepthBlanking_s
const FrameStyleRow_s DepthBlankingRows[] = {
    BOOLROW(INCLUDE, Include),
    DBLROW(FROMFRONT, PercentageSpec, FromFront),
    DBLROW(FROMBACK, PercentageSpec, FromBack),
};
TABLE(DepthBlanking);
#undef REC

#define REC Blanking_s
const FrameStyleRow_s BlankingRows[] = {
    SUBROW(IJK, IJK, IJKBlankingTable),
    SUBROW(VALUE, Value, ValueBlankingTable),
    SUBROW(DEPTH, Depth, DepthBlankingTable),
};
TABLE(Blanking);
#undef REC

// -- layer show flags --

#define REC FieldLayers_s
const FrameStyleRow_s FieldLayersRows[] = {
    ENUMROW(TWODDRAWORDER, TwoDDrawOrder),
    BOOLROW(SHOWMESH, ShowMesh),
    BOOLROW(SHOWCONTOUR, ShowContour),
    BOOLROW(SHOWVECTOR, ShowVector),
    BOOLROW(SHOWSCATTER, ShowScatter),
    BOOLROW(SHOWSHADE, ShowShade),
    BOOLROW(SHOWEDGE, ShowEdge),
    BOOLROW(USETRANSLUCENCY, UseTranslucency),
    BOOLROW(USELIGHTINGEFFECT, UseLightingEffect),
};
TABLE(FieldLayers);
#undef REC

#define REC LinePlotLayers_s
const FrameStyleRow_s LinePlotLayersRows[] = {
    BOOLROW(SHOWLINES, ShowLines),
    BOOLROW(SHOWSYMBOLS, ShowSymbols),
    BOOLROW(SHOWBARCHARTS, ShowBarCharts),
    BOOLROW(SHOWERRORBARS, ShowErrorBars),
};
TABLE(LinePlotLayers);
#undef REC

#define REC IsoSurfaceLayers_s
const FrameStyleRow_s IsoSurfaceLayersRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWMESH, ShowMesh),
    BOOLROW(SHOWCONTOUR, ShowContour),
    BOOLROW(SHOWSHADE, ShowShade),
    BOOLROW(USETRANSLUCENCY, UseTranslucency),
    BOOLROW(USELIGHTINGEFFECT, UseLightingEffect),
};
TABLE(IsoSurfaceLayers);
#undef REC

#define REC SliceLayers_s
const FrameStyleRow_s SliceLayersRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWMESH, ShowMesh),
    BOOLROW(SHOWCONTOUR, ShowContour),
    BOOLROW(SHOWVECTOR, ShowVector),
    BOOLROW(SHOWSHADE, ShowShade),
    BOOLROW(SHOWEDGE, ShowEdge),
    BOOLROW(USETRANSLUCENCY, UseTranslucency),
    BOOLROW(USELIGHTINGEFFECT, UseLightingEffect),
};
TABLE(SliceLayers);
#undef REC

#define REC StreamtraceLayers_s
const FrameStyleRow_s StreamtraceLayersRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWPATHS, ShowPaths),
    BOOLROW(SHOWDASHES, ShowDashes),
    BOOLROW(SHOWARROWHEADS, ShowArrowheads),
    BOOLROW(SHOWMESH, ShowMesh),
    BOOLROW(SHOWCONTOUR, ShowContour),
    BOOLROW(SHOWSHADE, ShowShade),
    BOOLROW(SHOWMARKERS, ShowMarkers),
    BOOLROW(USETRANSLUCENCY, UseTranslucency),
    BOOLROW(USELIGHTINGEFFECT, UseLightingEffect),
};
TABLE(StreamtraceLayers);
#undef REC

// -- axes --

#define REC AxisTicks_s
const FrameStyleRow_s AxisTicksRows[] = {
    BOOLROW(SHOWONAXISLINE, ShowOnAxisLine),
    BOOLROW(SHOWONOPPOSITEEDGE, ShowOnOppositeEdge),
    BOOLROW(SHOWONGRIDBORDERMIN, ShowOnGridBorderMin),
    BOOLROW(SHOWONGRIDBORDERMAX, ShowOnGridBorderMax),
    BOOLROW(SHOWONALLAXES, ShowOnAllAxes),
    ENUMROW(TICKDIRECTION, TickDirection),
    DBLROW(LENGTH, FrameSizeSpec, Length),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    INTROW(NUMMINORTICKS, NumMinorTicksSpec, NumMinorTicks),
    DBLROW(MINORLENGTH, FrameSizeSpec, MinorLength),
    DBLROW(MINORLINETHICKNESS, LineThicknessSpec, MinorLineThickness),
};
TABLE(AxisTicks);
#undef REC

#define REC AxisTickLabel_s
const FrameStyleRow_s AxisTickLabelRows[] = {
    BOOLROW(SHOWONAXISLINE, ShowOnAxisLine),
    BOOLROW(SHOWONOPPOSITEEDGE, ShowOnOppositeEdge),
    BOOLROW(SHOWONGRIDBORDERMIN, ShowOnGridBorderMin),
    BOOLROW(SHOWONGRIDBORDERMAX, ShowOnGridBorderMax),
    BOOLROW(SHOWONALLAXES, ShowOnAllAxes),
    BOOLROW(SHOWATAXISINTERSECTION, ShowAtAxisIntersection),
    BOOLROW(ERASEBEHINDLABELS, EraseBehindLabels),
    INTROW(SKIP, AboveZeroSmIntegerSpec, Skip),
    ENUMROW(COLOR, Color),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    SUBROW(NUMFORMAT, NumFormat, ValueFormatTable),
    DBLROW(OFFSET, FrameOffsetSpec, Offset),
    ENUMROW(LABELALIGNMENT, LabelAlignment),
    DBLROW(ANGLE, TextAngleSpec, Angle),
};
TABLE(AxisTickLabel);
#undef REC

#define REC AxisGridlines_s
const FrameStyleRow_s AxisGridlinesRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameSizeSpec, PatternLength),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    DBLROW(CUTOFF, PercentageSpec, Cutoff),
};
TABLE(AxisGridlines);
#undef REC

#define REC AxisTitle_s
const FrameStyleRow_s AxisTitleRows[] = {
    BOOLROW(SHOWONAXISLINE, ShowOnAxisLine),
    BOOLROW(SHOWONOPPOSITEEDGE, ShowOnOppositeEdge),
    BOOLROW(SHOWONGRIDBORDERMIN, ShowOnGridBorderMin),
    BOOLROW(SHOWONGRIDBORDERMAX, ShowOnGridBorderMax),
    BOOLROW(SHOWONALLAXES, ShowOnAllAxes),
    ENUMROW(TITLEMODE, TitleMode),
    STRROW(TEXT, Text),
    ENUMROW(COLOR, Color),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    DBLROW(OFFSET, FrameOffsetSpec, Offset),
    DBLROW(PERCENTALONGLINE, PercentageSpec, PercentAlongLine),
};
TABLE(AxisTitle);
#undef REC

#define REC AxisLine_s
const FrameStyleRow_s AxisLineRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWOPPOSITEEDGE, ShowOppositeEdge),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    ENUMROW(AXISALIGNMENT, AxisAlignment),
    DBLROW(OPPOSINGAXISVALUE, DoubleSpec, OpposingAxisValue),
    DBLROW(POSITION, PercentageSpec, Position),
    DBLROW(ANGLE, AngleSpec, Angle),
    DBLROW(OFFSET, FrameOffsetSpec, Offset),
    BOOLROW(SHOWBOTHDIRECTIONS, ShowBothDirections),
    BOOLROW(SHOWPERPENDICULAR, ShowPerpendicular),
    INTROW(EDGE, AxisEdgeSpec, Edge),
};
TABLE(AxisLine);
#undef REC

#define REC AxisDetail_s
const FrameStyleRow_s AxisDetailRows[] = {
    BOOLROW(SHOWAXIS, ShowAxis),
    ENUMROW(COORDSCALE, CoordScale),
    DBLROW(RANGEMIN, DoubleSpec, RangeMin),
    DBLROW(RANGEMAX, DoubleSpec, RangeMax),
    BOOLROW(ISREVERSED, IsReversed),
    BOOLROW(CLIPDATA, ClipData),
    DBLROW(VALUEATORIGIN, DoubleSpec, ValueAtOrigin),
    BOOLROW(AUTOGRID, AutoGrid),
    DBLROW(GRSPACING, AboveZeroDoubleSpec, GrSpacing),
    DBLROW(GRANCHOR, DoubleSpec, GrAnchor),
    INTROW(VARNUM, EntIndexSpec, VarNum),
    SUBROW(TICKS, Ticks, AxisTicksTable),
    SUBROW(TICKLABEL, TickLabel, AxisTickLabelTable),
    SUBROW(GRIDLINES, Gridlines, AxisGridlinesTable),
    SUBROW(MINORGRIDLINES, MinorGridlines, AxisGridlinesTable),
    SUBROW(TITLE, Title, AxisTitleTable),
    SUBROW(AXISLINE, AxisLine, AxisLineTable),
};
TABLE(AxisDetail);
#undef REC

#define REC PreciseGrid_s
const FrameStyleRow_s PreciseGridRows[] = {
    BOOLROW(INCLUDE, Include),
    DBLROW(SIZE, FrameSizeSpec, Size),
    ENUMROW(COLOR, Color),
};
TABLE(PreciseGrid);
#undef REC

#define REC AxisGrid_s
const FrameStyleRow_s AxisGridRows[] = {
    BOOLROW(PRESERVEAXISSCALE, PreserveAxisScale),
    BOOLROW(AUTOADJUSTRANGESTONICEVALUES, AutoAdjustRangesToNiceValues),
    ENUMROW(AXISMODE, AxisMode),
    DBLROW(DEPXTOYRATIO, AboveZeroDoubleSpec, DepXToYRatio),
    SUBROW(GRIDAREA, GridArea, GridAreaTable),
    SUBROW(VIEWPORTPOSITION, ViewportPosition, ViewportRectTable),
    DBLROW(VIEWPORTNICEFITBUFFER, PercentageSpec, ViewportNiceFitBuffer),
    DBLROW(VIEWPORTTOPSNAPTARGET, PercentageSpec, ViewportTopSnapTarget),
    DBLROW(VIEWPORTTOPSNAPTOLERANCE, PercentageSpec, ViewportTopSnapTolerance),
    SUBROW(PRECISEGRID, PreciseGrid, PreciseGridTable),
};
TABLE(AxisGrid);
#undef REC

#define REC TwoDAxis_s
const FrameStyleRow_s TwoDAxisRows[] = {
    SPLICEROW(Grid, AxisGridTable),
    SUBROW(XDETAIL, XDetail, AxisDetailTable),
    SUBROW(YDETAIL, YDetail, AxisDetailTable),
};
TABLE(TwoDAxis);
#undef REC

#define REC XYLineAxis_s
const FrameStyleRow_s XYLineAxisRows[] = {
    SPLICEROW(Grid, AxisGridTable),
    NUMSUBROW(XDETAIL, XDetail, AxisDetailTable, MaxXYLineAxes, "Invalid Axis Number for X- or Y-Axis Detail"),
    NUMSUBROW(YDETAIL, YDetail, AxisDetailTable, MaxXYLineAxes, "Invalid Axis Number for X- or Y-Axis Detail"),
};
TABLE(XYLineAxis);
#undef REC

#define REC FrameAxis_s
const FrameStyleRow_s FrameAxisRows[] = {
    BOOLROW(SHOW, Show),
    DBLROW(SIZE, FrameSizeSpec, Size),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    ENUMROW(COLOR, Color),
    SUBROW(XYPOS, XYPos, FramePositionTable),
};
TABLE(FrameAxis);
#undef REC

#define REC ThreeDAxis_s
const FrameStyleRow_s ThreeDAxisRows[] = {
    ENUMROW(AXISMODE, AxisMode),
    DBLROW(XYDEPXTOYRATIO, AboveZeroDoubleSpec, XYDepXToYRatio),
    DBLROW(DEPXTOYRATIO, AboveZeroDoubleSpec, DepXToYRatio),
    DBLROW(DEPXTOZRATIO, AboveZeroDoubleSpec, DepXToZRatio),
    SUBROW(GRIDAREA, GridArea, GridAreaTable),
    BOOLROW(EDGEAUTORESET, EdgeAutoReset),
    BOOLROW(PRESERVEAXISSCALE, PreserveAxisScale),
    SUBROW(FRAMEAXIS, FrameAxis, FrameAxisTable),
    DBLROW(ASPECTRATIOLIMIT, AboveZeroDoubleSpec, AspectRatioLimit),
    DBLROW(ASPECTRATIORESET, AboveZeroDoubleSpec, AspectRatioReset),
    DBLROW(BOXASPECTRATIOLIMIT, AboveZeroDoubleSpec, BoxAspectRatioLimit),
    DBLROW(BOXASPECTRATIORESET, AboveZeroDoubleSpec, BoxAspectRatioReset),
    SUBROW(XDETAIL, XDetail, AxisDetailTable),
    SUBROW(YDETAIL, YDetail, AxisDetailTable),
    SUBROW(ZDETAIL, ZDetail, AxisDetailTable),
};
TABLE(ThreeDAxis);
#undef REC

#define REC PolarAxis_s
const FrameStyleRow_s PolarAxisRows[] = {
    BOOLROW(PRESERVEAXISSCALE, PreserveAxisScale),
    ENUMROW(THETAMODE, ThetaMode),
    DBLROW(THETAPERIOD, AboveZeroDoubleSpec, ThetaPeriod),
    SUBROW(GRIDAREA, GridArea, GridAreaTable),
    SUBROW(VIEWPORTPOSITION, ViewportPosition, ViewportRectTable),
    SUBROW(VIEWPORTSTYLE, ViewportStyle, GridAreaTable),
    SUBROW(PRECISEGRID, PreciseGrid, PreciseGridTable),
    SUBROW(THETADETAIL, ThetaDetail, AxisDetailTable),
    SUBROW(RDETAIL, RDetail, AxisDetailTable),
};
TABLE(PolarAxis);
#undef REC

// -- computed objects --

#define REC IsoSurfaceAttributes_s
const FrameStyleRow_s IsoSurfaceAttributesRows[] = {
    BOOLROW(OBEYSOURCEZONEBLANKING, ObeySourceZoneBlanking),
    BOOLROW(SHOWGROUP, ShowGroup),
    INTROW(DEFINITIONCONTOURGROUP, ContourGroupSpec, DefinitionContourGroup),
    ENUMROW(ISOSURFACESELECTION, IsoSurfaceSelection),
    DBLROW(ISOVALUE1, DoubleSpec, IsoValue1),
    DBLROW(ISOVALUE2, DoubleSpec, IsoValue2),
    DBLROW(ISOVALUE3, DoubleSpec, IsoValue3),
    ENUMROW(MARCHINGCUBEALGORITHM, MarchingCubeAlgorithm),
    SUBROW(MESH, Mesh, MeshLayerTable),
    SUBROW(CONTOUR, Contour, ContourLayerTable),
    SUBROW(SHADE, Shade, ShadeLayerTable),
    SUBROW(EFFECTS, Effects, EffectsTable),
};
TABLE(IsoSurfaceAttributes);
#undef REC

#define REC SlicePosition_s
const FrameStyleRow_s SlicePositionRows[] = {
    DBLROW(X, DoubleSpec, X),
    DBLROW(Y, DoubleSpec, Y),
    DBLROW(Z, DoubleSpec, Z),
    INTROW(I, OneBasedIndexSpec, I),
    INTROW(J, OneBasedIndexSpec, J),
    INTROW(K, OneBasedIndexSpec, K),
};
TABLE(SlicePosition);
#undef REC

#define REC SliceAttributes_s
const FrameStyleRow_s SliceAttributesRows[] = {
    BOOLROW(OBEYSOURCEZONEBLANKING, ObeySourceZoneBlanking),
    BOOLROW(SHOWGROUP, ShowGroup),
    ENUMROW(SLICESURFACE, SliceSurface),
    BOOLROW(SHOWPRIMARYSLICE, ShowPrimarySlice),
    SUBROW(PRIMARYPOSITION, PrimaryPosition, SlicePositionTable),
    BOOLROW(SHOWSTARTENDSLICE, ShowStartEndSlice),
    SUBROW(STARTPOSITION, StartPosition, SlicePositionTable),
    SUBROW(ENDPOSITION, EndPosition, SlicePositionTable),
    BOOLROW(SHOWINTERMEDIATESLICES, ShowIntermediateSlices),
    INTROW(NUMINTERMEDIATESLICES, AboveZeroSmIntegerSpec, NumIntermediateSlices),
    SUBROW(MESH, Mesh, MeshLayerTable),
    SUBROW(CONTOUR, Contour, ContourLayerTable),
    SUBROW(VECTOR, Vector, VectorLayerTable),
    SUBROW(SHADE, Shade, ShadeLayerTable),
    SUBROW(EDGELAYER, EdgeLayer, EdgeLayerTable),
    SUBROW(EFFECTS, Effects, EffectsTable),
};
TABLE(SliceAttributes);
#undef REC

#define REC StreamTermLine_s
const FrameStyleRow_s StreamTermLineRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(ISACTIVE, IsActive),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameSizeSpec, PatternLength),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
};
TABLE(StreamTermLine);
#undef REC

#define REC StreamTiming_s
const FrameStyleRow_s StreamTimingRows[] = {
    BOOLROW(SHOWMARKERS, ShowMarkers),
    BOOLROW(SHOWDASHES, ShowDashes),
    ENUMROW(MARKCOLOR, MarkColor),
    DBLROW(MARKSIZE, FrameSizeSpec, MarkSize),
    DBLROW(TIMESTART, DoubleSpec, TimeStart),
    DBLROW(TIMEEND, DoubleSpec, TimeEnd),
    DBLROW(TIMEDELTA, DoubleSpec, TimeDelta),
    DBLROW(TIMEANCHOR, DoubleSpec, TimeAnchor),
    SUBROW(MARKSYMBOL, MarkSymbol, SymbolShapeTable),
};
TABLE(StreamTiming);
#undef REC

#define REC RodRibbon_s
const FrameStyleRow_s RodRibbonRows[] = {
    DBLROW(WIDTH, ZeroAndAboveDoubleSpec, Width),
    INTROW(NUMRODPOINTS, NumberOfRodPointsSpec, NumRodPoints),
    SUBROW(MESH, Mesh, MeshLayerTable),
    SUBROW(CONTOUR, Contour, ContourLayerTable),
    SUBROW(SHADE, Shade, ShadeLayerTable),
    SUBROW(EFFECTS, Effects, EffectsTable),
};
TABLE(RodRibbon);
#undef REC

#define REC StreamAttributes_s
const FrameStyleRow_s StreamAttributesRows[] = {
    BOOLROW(OBEYSOURCEZONEBLANKING, ObeySourceZoneBlanking),
    BOOLROW(SHOWPATHS, ShowPaths),
    SUBROW(TERMLINE, TermLine, StreamTermLineTable),
    SUBROW(STREAMTIMING, StreamTiming, StreamTimingTable),
    INTROW(DASHSKIP, AboveZeroLgIndexSpec, DashSkip),
    SUBROW(RODRIBBON, RodRibbon, RodRibbonTable),
    BOOLROW(ADDARROWS, AddArrows),
    DBLROW(CELLFRACTION, AboveZeroDoubleSpec, CellFraction),
    DBLROW(MINCELLFRACTION, AboveZeroDoubleSpec, MinCellFraction),
    DBLROW(ARROWHEADSIZE, FrameSizeSpec, ArrowheadSize),
    INTROW(MAXSTEPS, AboveZeroLgIndexSpec, MaxSteps),
    DBLROW(ARROWHEADSPACING, FrameSizeSpec, ArrowheadSpacing),
};
TABLE(StreamAttributes);
#undef REC

// -- 3D and polar state --

#define REC LightSource_s
const FrameStyleRow_s LightSourceRows[] = {
    SUBROW(XYZDIRECTION, XYZDirection, GridXYZTable),
    DBLROW(INTENSITY, PercentNumberSpec, Intensity),
    DBLROW(BACKGROUNDLIGHT, PercentNumberSpec, BackgroundLight),
    DBLROW(SURFACECOLORCONTRAST, PercentNumberSpec, SurfaceColorContrast),
    BOOLROW(INCLUDESPECULAR, IncludeSpecular),
    DBLROW(SPECULARINTENSITY, PercentNumberSpec, SpecularIntensity),
    DBLROW(SPECULARSHININESS, PercentNumberSpec, SpecularShininess),
};
TABLE(LightSource);
#undef REC

#define REC SlicePlane_s
const FrameStyleRow_s SlicePlaneRows[] = {
    SUBROW(ORIGIN, Origin, GridXYZTable),
    SUBROW(NORMAL, Normal, GridXYZTable),
};
TABLE(SlicePlane);
#undef REC

#define REC GlobalThreeD_s
const FrameStyleRow_s GlobalThreeDRows[] = {
    BOOLROW(PERFORMEXTRA3DSORTING, PerformExtra3DSorting),
    DBLROW(AXISBOXPADDING, ZeroAndAboveDoubleSpec, AxisBoxPadding),
    SUBROW(AXISSCALEFACT, AxisScaleFact, ScaleXYZTable),
    SUBROW(ROTATEORIGIN, RotateOrigin, GridXYZTable),
    SUBROW(LIGHTSOURCE, LightSource, LightSourceTable),
    BOOLROW(FORCEGOURAUDFOR3DCONTFLOOD, ForceGouraudFor3DContFlood),
    BOOLROW(FORCEPANELEDFOR3DCELLFLOOD, ForcePaneledFor3DCellFlood),
    DBLROW(LINELIFTFRACTION, PercentageSpec, LineLiftFraction),
    DBLROW(SYMBOLLIFTFRACTION, PercentageSpec, SymbolLiftFraction),
    DBLROW(VECTORLIFTFRACTION, PercentageSpec, VectorLiftFraction),
    SUBROW(SLICE, Slice, SlicePlaneTable),
};
TABLE(GlobalThreeD);
#undef REC

#define REC ThreeDView_s
const FrameStyleRow_s ThreeDViewRows[] = {
    BOOLROW(DRAWINPERSPECTIVE, DrawInPerspective),
    DBLROW(PSIANGLE, AngleSpec, PsiAngle),
    DBLROW(THETAANGLE, AngleSpec, ThetaAngle),
    DBLROW(ALPHAANGLE, AngleSpec, AlphaAngle),
    SUBROW(VIEWERPOSITION, ViewerPosition, GridXYZTable),
    DBLROW(FIELDOFVIEW, FieldOfViewSpec, FieldOfView),
    DBLROW(VIEWWIDTH, AboveZeroDoubleSpec, ViewWidth),
};
TABLE(ThreeDView);
#undef REC

#define REC PolarView_s
const FrameStyleRow_s PolarViewRows[] = {
    SUBROW(EXTENTS, Extents, GridRectTable),
};
TABLE(PolarView);
#undef REC

// -- map templates --

#define REC FieldScatter_s
const FrameStyleRow_s FieldScatterRows[] = {
    BOOLROW(SHOW, Show),
    SUBROW(SYMBOLSHAPE, SymbolShape, SymbolShapeTable),
    ENUMROW(COLOR, Color),
    ENUMROW(FILLMODE, FillMode),
    ENUMROW(FILLCOLOR, FillColor),
    BOOLROW(SIZEBYVARIABLE, SizeByVariable),
    DBLROW(FRAMESIZE, FrameSizeSpec, FrameSize),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
};
TABLE(FieldScatter);
#undef REC

#define REC FieldPoints_s
const FrameStyleRow_s IJKSkipRows[] = {
    INTROW(I, AboveZeroLgIndexSpec, ISkip),
    INTROW(J, AboveZeroLgIndexSpec, JSkip),
    INTROW(K, AboveZeroLgIndexSpec, KSkip),
};
TABLE(IJKSkip);
const FrameStyleRow_s FieldPointsRows[] = {
    ENUMROW(POINTSTOPLOT, PointsToPlot),
    {MacroSetValue_IJKSKIP, FrameStyleRowKind_Sub, nullptr, self, &IJKSkipTable, 0, nullptr},
};
TABLE(FieldPoints);
#undef REC

#define REC FieldSurfaces_s
const FrameStyleRow_s FieldSurfacesRows[] = {
    ENUMROW(SURFACESTOPLOT, SurfacesToPlot),
    SUBROW(IRANGE, IRange, IndexRangeTable),
    SUBROW(JRANGE, JRange, IndexRangeTable),
    SUBROW(KRANGE, KRange, IndexRangeTable),
};
TABLE(FieldSurfaces);
#undef REC

#define REC FieldVolumeMode_s
const FrameStyleRow_s VolumeObjectsToPlotRows[] = {
    BOOLROW(SHOWISOSURFACES, ShowIsoSurfaces),
    BOOLROW(SHOWSLICES, ShowSlices),
    BOOLROW(SHOWSTREAMTRACES, ShowStreamtraces),
};
TABLE(VolumeObjectsToPlot);
const FrameStyleRow_s FieldVolumeModeRows[] = {
    {MacroSetValue_VOLUMEOBJECTSTOPLOT, FrameStyleRowKind_Sub, nullptr, self, &VolumeObjectsToPlotTable, 0, nullptr},
};
TABLE(FieldVolumeMode);
#undef REC

#define REC FieldMapStyle_s
const FrameStyleRow_s FieldMapStyleRows[] = {
    SUBROW(MESH, Mesh, MeshLayerTable),
    SUBROW(CONTOUR, Contour, ContourLayerTable),
    SUBROW(VECTOR, Vector, VectorLayerTable),
    SUBROW(SHADE, Shade, ShadeLayerTable),
    SUBROW(EDGELAYER, EdgeLayer, EdgeLayerTable),
    SUBROW(SCATTER, Scatter, FieldScatterTable),
    SUBROW(POINTS, Points, FieldPointsTable),
    SUBROW(SURFACES, Surfaces, FieldSurfacesTable),
    SUBROW(VOLUMEMODE, VolumeMode, FieldVolumeModeTable),
    SUBROW(EFFECTS, Effects, EffectsTable),
    INTROW(GROUP, AboveZeroLgIndexSpec, Group),
};
TABLE(FieldMapStyle);
#undef REC

#define REC LineMapAssign_s
const FrameStyleRow_s LineMapAssignRows[] = {
    INTROW(ZONE, EntIndexSpec, Zone),
    INTROW(XAXISVAR, EntIndexSpec, XAxisVar),
    INTROW(YAXISVAR, EntIndexSpec, YAxisVar),
    INTROW(THETAAXISVAR, EntIndexSpec, XAxisVar),
    INTROW(RAXISVAR, EntIndexSpec, YAxisVar),
    INTROW(XAXIS, XYAxisNumberSpec, XAxis),
    INTROW(YAXIS, XYAxisNumberSpec, YAxis),
    ENUMROW(FUNCTIONDEPENDENCY, FunctionDependency),
    ENUMROW(SHOWINLEGEND, ShowInLegend),
    ENUMROW(SORT, Sort),
    INTROW(SORTVAR, VarOrNoneSpec, SortVar),
};
TABLE(LineMapAssign);
#undef REC

#define REC LineMapLines_s
const FrameStyleRow_s LineMapLinesRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameSizeSpec, PatternLength),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
};
TABLE(LineMapLines);
#undef REC

#define REC LineMapCurves_s
const FrameStyleRow_s LineMapCurvesRows[] = {
    ENUMROW(CURVETYPE, CurveType),
    INTROW(NUMPTS, CurvePointsSpec, NumPts),
    INTROW(POLYORDER, PolyOrderSpec, PolyOrder),
    INTROW(WEIGHTVAR, VarOrNoneSpec, WeightVar),
    BOOLROW(USEWEIGHTVAR, UseWeightVar),
    DBLROW(INDVARMIN, DoubleSpec, IndVarMin),
    DBLROW(INDVARMAX, DoubleSpec, IndVarMax),
    BOOLROW(USEINDVARRANGE, UseIndVarRange),
    BOOLROW(CLAMPSPLINE, ClampSpline),
    DBLROW(SPLINEDERIVATIVEATSTART, DoubleSpec, SplineDerivativeAtStart),
    DBLROW(SPLINEDERIVATIVEATEND, DoubleSpec, SplineDerivativeAtEnd),
    STRROW(EXTENDEDNAME, ExtendedName),
    STRROW(EXTENDEDSETTINGS, ExtendedSettings),
};
TABLE(LineMapCurves);
#undef REC

#define REC LineMapSymbols_s
const FrameStyleRow_s LineMapSymbolsRows[] = {
    BOOLROW(SHOW, Show),
    SUBROW(SYMBOLSHAPE, SymbolShape, SymbolShapeTable),
    ENUMROW(COLOR, Color),
    ENUMROW(FILLMODE, FillMode),
    ENUMROW(FILLCOLOR, FillColor),
    DBLROW(SIZE, FrameSizeSpec, Size),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    ENUMROW(SKIPMODE, SkipMode),
    DBLROW(SKIPPING, ZeroAndAboveDoubleSpec, Skipping),
};
TABLE(LineMapSymbols);
#undef REC

#define REC LineMapBarCharts_s
const FrameStyleRow_s LineMapBarChartsRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    ENUMROW(FILLMODE, FillMode),
    ENUMROW(FILLCOLOR, FillColor),
    DBLROW(SIZE, FrameSizeSpec, Size),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
};
TABLE(LineMapBarCharts);
#undef REC

#define REC LineMapErrorBars_s
const FrameStyleRow_s LineMapErrorBarsRows[] = {
    INTROW(VAR, VarOrNoneSpec, Var),
    BOOLROW(SHOW, Show),
    ENUMROW(BARTYPE, BarType),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, LineThicknessSpec, LineThickness),
    ENUMROW(SKIPMODE, SkipMode),
    DBLROW(SKIPPING, ZeroAndAboveDoubleSpec, Skipping),
    DBLROW(SIZE, FrameSizeSpec, Size),
};
TABLE(LineMapErrorBars);
#undef REC

#define REC LineMapIndices_s
const FrameStyleRow_s LineMapIndicesRows[] = {
    ENUMROW(IJKLINES, IJKLines),
    SUBROW(IRANGE, IRange, IndexRangeTable),
    SUBROW(JRANGE, JRange, IndexRangeTable),
    SUBROW(KRANGE, KRange, IndexRangeTable),
};
TABLE(LineMapIndices);
#undef REC

#define REC LineMapStyle_s
const FrameStyleRow_s LineMapStyleRows[] = {
    STRROW(NAME, Name),
    SUBROW(ASSIGN, Assign, LineMapAssignTable),
    SUBROW(LINES, Lines, LineMapLinesTable),
    SUBROW(CURVES, Curves, LineMapCurvesTable),
    SUBROW(SYMBOLS, Symbols, LineMapSymbolsTable),
    SUBROW(BARCHARTS, BarCharts, LineMapBarChartsTable),
    SUBROW(ERRORBARS, ErrorBars, LineMapErrorBarsTable),
    SUBROW(INDICES, Indices, LineMapIndicesTable),
    SUBROW(INDICIES, Indices, LineMapIndicesTable),  // the old spelling
};
TABLE(LineMapStyle);
#undef REC

// -- the major rows --


#define REC FrameStyle_s
#define MAJOR(row, member, table) \
    {MacroSetValue_##row, &table, [](FrameStyle_s *style, int) -> void * { return &style->member; }, 0, nullptr, false}
#define GROUPMAJOR(row, member, table, message) \
    {MacroSetValue_##row, &table, [](FrameStyle_s *style, int n) -> void * { return &style->member[n]; }, 4, message, \
     false}
#define MAPMAJOR(row, member, table) \
    {MacroSetValue_##row, &table, [](FrameStyle_s *style, int) -> void * { return &style->member; }, 0, nullptr, true}

const char *const IsoSliceGroupError = "Invalid group number specified.";

const FrameStyleMajor_s FrameMajors[] = {
    MAJOR(LINKING, Linking, LinkingTable),
    MAJOR(FRAMELINKING, Linking, LinkingTable),
    MAJOR(FRAMELAYOUT, FrameLayout, FrameLayoutTable),
    MAJOR(GLOBALTIME, GlobalTime, GlobalTimeTable),
    MAJOR(GLOBALEDGE, GlobalEdge, GlobalEdgeTable),
    MAJOR(GLOBALRGB, GlobalRGB, GlobalRGBTable),
    GROUPMAJOR(GLOBALCONTOUR, GlobalContour, GlobalContourTable, "Invalid value global contour index"),
    MAJOR(GLOBALTWODVECTOR, GlobalTwoDVector, GlobalVectorTable),
    MAJOR(GLOBALTHREEDVECTOR, GlobalThreeDVector, GlobalVectorTable),
    MAJOR(GLOBALSCATTER, GlobalScatter, GlobalScatterTable),
    MAJOR(GLOBALLINEPLOT, GlobalLinePlot, GlobalLinePlotTable),
    MAJOR(GLOBALXY, GlobalLinePlot, GlobalLinePlotTable),
    MAJOR(GLOBALPOLAR, GlobalPolar, GlobalPolarTable),
    MAJOR(BLANKING, Blanking, BlankingTable),
    MAJOR(FIELDLAYERS, FieldLayers, FieldLayersTable),
    MAJOR(LINEPLOTLAYERS, LinePlotLayers, LinePlotLayersTable),
    MAJOR(XYLAYERS, LinePlotLayers, LinePlotLayersTable),
    MAJOR(ISOSURFACELAYERS, IsoSurfaceLayers, IsoSurfaceLayersTable),
    MAJOR(SLICELAYERS, SliceLayers, SliceLayersTable),
    MAJOR(STREAMTRACELAYERS, StreamtraceLayers, StreamtraceLayersTable),
    MAJOR(THREEDAXIS, ThreeDAxis, ThreeDAxisTable),
    MAJOR(TWODAXIS, TwoDAxis, TwoDAxisTable),
    MAJOR(XYLINEAXIS, XYLineAxis, XYLineAxisTable),
    MAJOR(XYAXIS, XYLineAxis, XYLineAxisTable),
    MAJOR(SKETCHAXIS, SketchAxis, TwoDAxisTable),
    MAJOR(POLARAXIS, PolarAxis, PolarAxisTable),
    GROUPMAJOR(GLOBALISOSURFACE, IsoSurfaceAttributes, IsoSurfaceAttributesTable, IsoSliceGroupError),
    GROUPMAJOR(ISOSURFACEATTRIBUTES, IsoSurfaceAttributes, IsoSurfaceAttributesTable, IsoSliceGroupError),
    GROUPMAJOR(GLOBALSLICE, SliceAttributes, SliceAttributesTable, IsoSliceGroupError),
    GROUPMAJOR(SLICEATTRIBUTES, SliceAttributes, SliceAttributesTable, IsoSliceGroupError),
    MAJOR(GLOBALSTREAM, StreamAttributes, StreamAttributesTable),
    MAJOR(STREAMATTRIBUTES, StreamAttributes, StreamAttributesTable),
    MAJOR(GLOBALTHREED, GlobalThreeD, GlobalThreeDTable),
    MAJOR(THREEDVIEW, ThreeDView, ThreeDViewTable),
    MAJOR(POLARVIEW, PolarView, PolarViewTable),
    MAPMAJOR(FIELD, FieldMap, FieldMapStyleTable),
    MAPMAJOR(FIELDMAP, FieldMap, FieldMapStyleTable),
    MAPMAJOR(LINEMAP, LineMap, LineMapStyleTable),
    MAPMAJOR(XYMAP, LineMap, LineMapStyleTable),
};

static_assert(MaxContourGroups == 4 && MaxIsoSurfaceGroups == 4 && MaxSliceGroups == 4,
              "the grouped majors take four groups");

#undef MAJOR
#undef GROUPMAJOR
#undef MAPMAJOR
#undef REC

}  // namespace

const FrameStyleMajor_s *FindFrameStyleMajor(int row) {
    for (const FrameStyleMajor_s &major : FrameMajors)
        if (major.Row == row) return &major;
    return nullptr;
}

const FrameStyleValueSpec_s &FrameStyleTextHeightSpec(int sizeUnits) {
    switch (sizeUnits) {
    case 1: return FrameTextSizeSpec;     // FRAME
    case 4: return AxisTextSizeSpec;      // AXISPERCENTAGE
    case 2: return PointTextSizeSpec;     // POINT
    default: return AboveZeroDoubleSpec;  // GRID, SCREEN
    }
}

const FrameStyleTable_s &GetFieldMapStyleTable() { return FieldMapStyleTable; }
const FrameStyleTable_s &GetLineMapStyleTable() { return LineMapStyleTable; }
