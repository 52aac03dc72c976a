// The tables of the frame style records: one per record, each row with its input rules and the
// place of its value, as style records that the set-value walk sets and reads through; and the
// major rows with the records they address. What the frame adds to the walk (unit suffixes by
// the frame's size, its rectangle, text heights by their units) is in framestyle.cpp.
// Relies on: framestyletables, setvalue (the input rules the general style shares), vocab (row
// numbers).
#include "base/plot/framestyletables.h"

#include <iterator>

#include "base/macro/vocab.h"

namespace {

// ---- input rules ----------------------------------------------------------------------------
// Those the general style shares (any double, angles, percentages, indices, entity numbers)
// come from setvalue; these are the frame's own.

constexpr double DegreesPerRadian = 57.29577951308232;
constexpr double Pi = 3.141592653589793;

const InputSpecs_s CreaseAngleInputSpec{InputSpecType_Double, 0, Pi, DegreesPerRadian, nullptr};
const InputSpecs_s FieldOfViewInputSpec{InputSpecType_Double, 1e-6, Pi, DegreesPerRadian, nullptr};
// Positions in the frame, fractions of its width and height; a unit converts by the frame's size.
const InputSpecs_s XFramePositionInputSpec{InputSpecType_Double, 0, 1, 100, ConvertSuffixToFrameWidths};
const InputSpecs_s YFramePositionInputSpec{InputSpecType_Double, 0, 1, 100, ConvertSuffixToFrameHeights};
const InputSpecs_s FrameLineThicknessInputSpec{InputSpecType_Double, 1e-6, 1, 100, ConvertSuffixToFrameHeights};
// Sizes, lengths and spacings in frame units, and offsets that may point either way.
const InputSpecs_s FrameLengthInputSpec{InputSpecType_Double, 0, 10, 100, ConvertSuffixToFrameHeights};
const InputSpecs_s FrameOffsetInputSpec{InputSpecType_Double, -10, 10, 100, ConvertSuffixToFrameHeights};
const InputSpecs_s PercentNumberInputSpec{InputSpecType_Double, 0, 100, 1, nullptr};
const InputSpecs_s MarginInputSpec{InputSpecType_Double, 0, 10, 100, nullptr};
// The frame's own rectangle, inches on the paper.
const InputSpecs_s PaperPositionInputSpec{InputSpecType_Double, -500, 500, 1, ConvertSuffixToPaperInches};
const InputSpecs_s PaperSizeInputSpec{InputSpecType_Double, 0.1, 1000, 1, ConvertSuffixToPaperInches};

const InputSpecs_s OneBasedIndexInputSpec{InputSpecType_LgIndex, 0, MAXINDEX - 1, 1, nullptr};
const InputSpecs_s ContourLevelInputSpec{InputSpecType_SmInteger, 0, 32699, 1, nullptr};
const InputSpecs_s CustomLabelInputSpec{InputSpecType_SmInteger, 0, 9, 1, nullptr};
const InputSpecs_s NumMinorTicksInputSpec{InputSpecType_SmInteger, 0, 100, 0, nullptr};
const InputSpecs_s NumberOfRodPointsInputSpec{InputSpecType_SmInteger, 3, 100, 0, nullptr};
const InputSpecs_s LinkGroupInputSpec{InputSpecType_SmInteger, 1, 20, 0, nullptr};
const InputSpecs_s TranslucencyInputSpec{InputSpecType_SmInteger, 1, 99, 0, nullptr};
const InputSpecs_s PolyOrderInputSpec{InputSpecType_SmInteger, 1, 10, 0, nullptr};
const InputSpecs_s XYAxisNumberInputSpec{InputSpecType_SmInteger, 0, MaxXYLineAxes - 1, 1, nullptr};
const InputSpecs_s AxisEdgeInputSpec{InputSpecType_SmInteger, 0, 3, 0, nullptr};

// ---- rows -----------------------------------------------------------------------------------

using Target_pf = void *(*)(void *record);

// The target of a row whose value, or whose block, is the record itself.
void *self(void *record) { return record; }

// A text height: its rules are those of the units the shape is sized in, and no others.
constexpr StyleField_s textHeight(int row, Target_pf target) {
    StyleField_s entry = MakeStyleField(row, StyleField_Double, nullptr, target);
    entry.AdjustSpec = FrameTextHeightRules;
    return entry;
}
constexpr StyleField_s computed(int row, const InputSpecs_s &rules, Target_pf target, double (*read)(const void *),
                                bool (*store)(void *, double, const InputSpecs_s &)) {
    StyleField_s entry = MakeStyleField(row, StyleField_Double, &rules, target);
    entry.Read = read;
    entry.Store = store;
    return entry;
}

#define LOC(member) [](void *record) -> void * { return &static_cast<REC *>(record)->member; }
#define BOOLROW(row, member) MakeStyleField(MacroSetValue_##row, StyleField_Bool, nullptr, LOC(member))
#define ENUMROW(row, member) MakeStyleField(MacroSetValue_##row, StyleField_Enum, nullptr, LOC(member))
#define INTROW(row, rules, member) MakeStyleField(MacroSetValue_##row, StyleField_Int, &rules, LOC(member))
#define DBLROW(row, rules, member) MakeStyleField(MacroSetValue_##row, StyleField_Double, &rules, LOC(member))
#define STRROW(row, member) MakeStyleField(MacroSetValue_##row, StyleField_String, nullptr, LOC(member))
#define TEXTHEIGHTROW(row, member) textHeight(MacroSetValue_##row, LOC(member))
#define COMPUTEDROW(row, rules, read, store) computed(MacroSetValue_##row, rules, self, read, store)
#define COMPUTEDMEMBERROW(row, rules, member, read, store) \
    computed(MacroSetValue_##row, rules, LOC(member), read, store)
#define SUBROW(row, member, table) MakeStyleBlock(MacroSetValue_##row, table, LOC(member))
#define SELFROW(row, table) MakeStyleBlock(MacroSetValue_##row, table, self)
// A block behind a number from 1 to count; Element refuses the others.
#define NUMSUBROW(row, member, table, count, message)                                          \
    MakeStyleNumberedBlock(MacroSetValue_##row, table,                                                       \
             [](void *record, int n) -> void * {                                               \
                 if (n < 1 || n > (count)) return nullptr;                                     \
                 return &static_cast<REC *>(record)->member[n - 1];                            \
             },                                                                                \
             message)
// A block without a row of its own: its rows stand in the block of the record.
#define SPLICEROW(member, table) MakeStyleBlock(-1, table, LOC(member))
#define TABLE(name) const StyleRecord_s name##Table{name##Rows, std::size(name##Rows)}

// -- shared sub-records --

#define REC TextShape_s
const StyleField_s TextShapeRows[] = {
    ENUMROW(FONT, Font),
    ENUMROW(SIZEUNITS, SizeUnits),
    TEXTHEIGHTROW(HEIGHT, Height),
};
TABLE(TextShape);
#undef REC

#define REC TextBox_s
const StyleField_s TextBoxRows[] = {
    ENUMROW(BOXTYPE, BoxType),
    DBLROW(MARGIN, MarginInputSpec, Margin),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    ENUMROW(COLOR, Color),
    ENUMROW(FILLCOLOR, FillColor),
};
TABLE(TextBox);
#undef REC

#define REC ValueFormat_s
const StyleField_s ValueFormatRows[] = {
    ENUMROW(FORMATTING, Formatting),
    INTROW(CUSTOMLABEL, CustomLabelInputSpec, CustomLabel),
    INTROW(PRECISION, ValuePrecisionInputSpec, Precision),
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
const StyleField_s IndexRangeRows[] = {
    INTROW(MIN, ZeroAndAboveLgIndexInputSpec, Min),
    INTROW(MAX, ZeroAndAboveLgIndexInputSpec, Max),
    INTROW(SKIP, AboveZeroLgIndexInputSpec, Skip),
};
TABLE(IndexRange);
#undef REC

#define REC AsciiShape_s
const StyleField_s AsciiShapeRows[] = {
    BOOLROW(USEBASEFONT, UseBaseFont),
    ENUMROW(FONTOVERRIDE, FontOverride),
    STRROW(ASCIICHAR, AsciiChar),
};
TABLE(AsciiShape);
#undef REC

#define REC SymbolShape_s
const StyleField_s SymbolShapeRows[] = {
    BOOLROW(ISASCII, IsAscii),
    ENUMROW(GEOMSHAPE, GeomShape),
    SUBROW(ASCIISHAPE, AsciiShape, AsciiShapeTable),
};
TABLE(SymbolShape);
#undef REC

#define REC Effects_s
const StyleField_s EffectsRows[] = {
    ENUMROW(LIGHTINGEFFECT, LightingEffect),
    INTROW(SURFACETRANSLUCENCY, TranslucencyInputSpec, SurfaceTranslucency),
    BOOLROW(USETRANSLUCENCY, UseTranslucency),
    BOOLROW(USEVALUEBLANKING, UseValueBlanking),
};
TABLE(Effects);
#undef REC

#define REC MeshLayer_s
const StyleField_s MeshLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(MESHTYPE, MeshType),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameLengthInputSpec, PatternLength),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
};
TABLE(MeshLayer);
#undef REC

#define REC ContourLayer_s
const StyleField_s ContourLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(CONTOURTYPE, ContourType),
    INTROW(LINECONTOURGROUP, ContourGroupInputSpec, LineContourGroup),
    ENUMROW(FLOODCOLORING, FloodColoring),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameLengthInputSpec, PatternLength),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    BOOLROW(USELIGHTINGEFFECT, UseLightingEffect),
};
TABLE(ContourLayer);
#undef REC

#define REC VectorLayer_s
const StyleField_s VectorLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(VECTORTYPE, VectorType),
    ENUMROW(ARROWHEADSTYLE, ArrowheadStyle),
    ENUMROW(COLOR, Color),
    BOOLROW(ISTANGENT, IsTangent),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameLengthInputSpec, PatternLength),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
};
TABLE(VectorLayer);
#undef REC

#define REC ShadeLayer_s
const StyleField_s ShadeLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    BOOLROW(USELIGHTINGEFFECT, UseLightingEffect),
};
TABLE(ShadeLayer);
#undef REC

#define REC EdgeLayer_s
const StyleField_s EdgeLayerRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(EDGETYPE, EdgeType),
    ENUMROW(IBORDER, IBorder),
    ENUMROW(JBORDER, JBorder),
    ENUMROW(KBORDER, KBorder),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
};
TABLE(EdgeLayer);
#undef REC

#define REC GridArea_s
const StyleField_s GridAreaRows[] = {
    BOOLROW(DRAWBORDER, DrawBorder),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    BOOLROW(ISFILLED, IsFilled),
    ENUMROW(FILLCOLOR, FillColor),
    BOOLROW(USELIGHTSOURCETOFILL, UseLightSourceToFill),
    BOOLROW(DRAWGRIDLAST, DrawGridLast),
};
TABLE(GridArea);
#undef REC

// A position in the frame (XYPOS of legends, reference objects, the 3D frame axis).
#define REC XY_s
const StyleField_s FramePositionRows[] = {
    DBLROW(X, XFramePositionInputSpec, X),
    DBLROW(Y, YFramePositionInputSpec, Y),
};
TABLE(FramePosition);
#undef REC

// A point or direction in grid units.
#define REC XYZ_s
const StyleField_s GridXYZRows[] = {
    DBLROW(X, DoubleInputSpec, X),
    DBLROW(Y, DoubleInputSpec, Y),
    DBLROW(Z, DoubleInputSpec, Z),
};
TABLE(GridXYZ);
const StyleField_s ScaleXYZRows[] = {
    DBLROW(X, AboveZeroDoubleInputSpec, X),
    DBLROW(Y, AboveZeroDoubleInputSpec, Y),
    DBLROW(Z, AboveZeroDoubleInputSpec, Z),
};
TABLE(ScaleXYZ);
#undef REC

// A viewport in frame fractions, and the polar view's extents in grid units.
#define REC Rect_s
const StyleField_s ViewportRectRows[] = {
    DBLROW(X1, XFramePositionInputSpec, X1),
    DBLROW(Y1, YFramePositionInputSpec, Y1),
    DBLROW(X2, XFramePositionInputSpec, X2),
    DBLROW(Y2, YFramePositionInputSpec, Y2),
};
TABLE(ViewportRect);
const StyleField_s GridRectRows[] = {
    DBLROW(X1, DoubleInputSpec, X1),
    DBLROW(Y1, DoubleInputSpec, Y1),
    DBLROW(X2, DoubleInputSpec, X2),
    DBLROW(Y2, DoubleInputSpec, Y2),
};
TABLE(GridRect);
// The frame's own position: X and Y move the rectangle.
const StyleField_s FrameRectPositionRows[] = {
    COMPUTEDROW(X, PaperPositionInputSpec, ReadFrameLeft, MoveFrameLeft),
    COMPUTEDROW(Y, PaperPositionInputSpec, ReadFrameTop, MoveFrameTop),
};
TABLE(FrameRectPosition);
#undef REC

// -- frame-wide blocks --

#define REC FrameLayout_s
const StyleField_s FrameLayoutRows[] = {
    BOOLROW(SHOWBORDER, ShowBorder),
    BOOLROW(SHOWHEADER, ShowHeader),
    BOOLROW(ISTRANSPARENT, IsTransparent),
    ENUMROW(BACKGROUNDCOLOR, BackgroundColor),
    ENUMROW(HEADERCOLOR, HeaderColor),
    ENUMROW(HEADERFONT, HeaderFont),
    DBLROW(BORDERTHICKNESS, FrameLineThicknessInputSpec, BorderThickness),
    SUBROW(XYPOS, Rect, FrameRectPositionTable),
    COMPUTEDMEMBERROW(WIDTH, PaperSizeInputSpec, Rect, ReadFrameWidth, StoreFrameWidth),
    COMPUTEDMEMBERROW(HEIGHT, PaperSizeInputSpec, Rect, ReadFrameHeight, StoreFrameHeight),
};
TABLE(FrameLayout);
#undef REC

#define REC Linking_s
const StyleField_s WithinFrameRows[] = {
    BOOLROW(LINKAXISSTYLE, LinkAxisStyle),
    BOOLROW(LINKGRIDLINESTYLE, LinkGridlineStyle),
    BOOLROW(LINKLAYERLINECOLOR, LinkLayerLineColor),
    BOOLROW(LINKLAYERLINEPATTERN, LinkLayerLinePattern),
};
TABLE(WithinFrame);
const StyleField_s BetweenFramesRows[] = {
    INTROW(LINKGROUP, LinkGroupInputSpec, LinkGroup),
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
const StyleField_s LinkingRows[] = {
    SELFROW(WITHINFRAME, WithinFrameTable),
    SELFROW(BETWEENFRAMES, BetweenFramesTable),
};
TABLE(Linking);
#undef REC

#define REC GlobalTime_s
const StyleField_s GlobalTimeRows[] = {
    DBLROW(SOLUTIONTIME, DoubleInputSpec, SolutionTime),
};
TABLE(GlobalTime);
#undef REC

#define REC GlobalEdge_s
const StyleField_s GlobalEdgeRows[] = {
    DBLROW(MINCREASEANGLE, CreaseAngleInputSpec, MinCreaseAngle),
};
TABLE(GlobalEdge);
#undef REC

#define REC RGBLegend_s
const StyleField_s RGBLegendRows[] = {
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
const StyleField_s GlobalRGBRows[] = {
    ENUMROW(RGBMODE, RGBMode),
    INTROW(REDCHANNELVAR, VarOrNoneInputSpec, RedChannelVar),
    INTROW(GREENCHANNELVAR, VarOrNoneInputSpec, GreenChannelVar),
    INTROW(BLUECHANNELVAR, VarOrNoneInputSpec, BlueChannelVar),
    DBLROW(RANGEMIN, DoubleInputSpec, RangeMin),
    DBLROW(RANGEMAX, DoubleInputSpec, RangeMax),
    SUBROW(LEGEND, Legend, RGBLegendTable),
};
TABLE(GlobalRGB);
#undef REC

#define REC ContourLabels_s
const StyleField_s ContourLabelsRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(GENERATEAUTOLABELS, GenerateAutoLabels),
    BOOLROW(ALIGNAUTOLABELS, AlignAutoLabels),
    BOOLROW(LABELWITHVALUE, LabelWithValue),
    INTROW(AUTOLEVELSKIP, AboveZeroSmIntegerInputSpec, AutoLevelSkip),
    DBLROW(AUTOLABELSPACING, FrameLengthInputSpec, AutoLabelSpacing),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    ENUMROW(COLOR, Color),
    BOOLROW(ISFILLED, IsFilled),
    ENUMROW(FILLCOLOR, FillColor),
    DBLROW(MARGIN, MarginInputSpec, Margin),
    SUBROW(NUMFORMAT, NumFormat, ValueFormatTable),
};
TABLE(ContourLabels);
#undef REC

#define REC ContourLegend_s
const StyleField_s ContourLegendRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWHEADER, ShowHeader),
    DBLROW(ROWSPACING, ZeroAndAboveDoubleInputSpec, RowSpacing),
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
    DBLROW(AUTOSIZEMAXLIMIT, FrameLengthInputSpec, AutoSizeMaxLimit),
    ENUMROW(LABELLOCATION, LabelLocation),
    DBLROW(LABELINCREMENT, AboveZeroDoubleInputSpec, LabelIncrement),
};
TABLE(ContourLegend);
#undef REC

#define REC ColorCutoff_s
const StyleField_s ColorCutoffRows[] = {
    DBLROW(RANGEMIN, DoubleInputSpec, RangeMin),
    DBLROW(RANGEMAX, DoubleInputSpec, RangeMax),
    BOOLROW(INCLUDEMIN, IncludeMin),
    BOOLROW(INCLUDEMAX, IncludeMax),
};
TABLE(ColorCutoff);
#undef REC

#define REC Zebra_s
const StyleField_s ZebraRows[] = {
    BOOLROW(INCLUDE, Include),
    BOOLROW(ISTRANSPARENT, IsTransparent),
    ENUMROW(COLOR, Color),
};
TABLE(Zebra);
#undef REC

#define REC ColorMapOverride_s
const StyleField_s ColorMapOverrideRows[] = {
    BOOLROW(INCLUDE, Include),
    ENUMROW(COLOR, Color),
    INTROW(STARTLEVEL, ContourLevelInputSpec, StartLevel),
    INTROW(ENDLEVEL, ContourLevelInputSpec, EndLevel),
};
TABLE(ColorMapOverride);
#undef REC

#define REC ColorMapFilter_s
const StyleField_s ContinuousColorRows[] = {
    DBLROW(CMIN, DoubleInputSpec, CMin),
    DBLROW(CMAX, DoubleInputSpec, CMax),
};
TABLE(ContinuousColor);
const StyleField_s ColorMapFilterRows[] = {
    ENUMROW(COLORMAPDISTRIBUTION, ColorMapDistribution),
    SELFROW(CONTINUOUSCOLOR, ContinuousColorTable),
    BOOLROW(REVERSECOLORMAP, ReverseColorMap),
    SUBROW(ZEBRA, Zebra, ZebraTable),
    INTROW(COLORMAPCYCLES, AboveZeroSmIntegerInputSpec, ColorMapCycles),
    BOOLROW(USEFASTAPPROXCONTINUOUSFLOOD, UseFastApproxContinuousFlood),
    BOOLROW(USEFASTAPPROXIMATECOLORING, UseFastApproxContinuousFlood),  // the other spelling
    BOOLROW(COLORMAPOVERRIDEACTIVE, ColorMapOverrideActive),
    NUMSUBROW(COLORMAPOVERRIDE, ColorMapOverride, ColorMapOverrideTable, MaxColorMapOverrides,
              "Invalid ColorMap Override number"),
};
TABLE(ColorMapFilter);
#undef REC

#define REC ContourLineStyle_s
const StyleField_s ContourLineStyleRows[] = {
    ENUMROW(CONTOURLINEMODE, ContourLineMode),
    INTROW(LINESKIP, ZeroAndAboveSmIntegerInputSpec, LineSkip),
    DBLROW(PATTERNLENGTH, FrameLengthInputSpec, PatternLength),
};
TABLE(ContourLineStyle);
#undef REC

#define REC GlobalContour_s
const StyleField_s GlobalContourRows[] = {
    INTROW(VAR, VarOrNoneInputSpec, Var),
    INTROW(DEFNUMLEVELS, NumContourLevelsInputSpec, DefNumLevels),
    SUBROW(LABELS, Labels, ContourLabelsTable),
    SUBROW(LEGEND, Legend, ContourLegendTable),
    SUBROW(COLORCUTOFF, ColorCutoff, ColorCutoffTable),
    SUBROW(COLORMAPFILTER, ColorMapFilter, ColorMapFilterTable),
    SUBROW(CONTOURLINESTYLE, ContourLineStyle, ContourLineStyleTable),
};
TABLE(GlobalContour);
#undef REC

#define REC MagnitudeLabel_s
const StyleField_s MagnitudeLabelRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(TEXTCOLOR, TextColor),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    SUBROW(NUMFORMAT, NumFormat, ValueFormatTable),
    DBLROW(OFFSET, FrameOffsetInputSpec, Offset),
};
TABLE(MagnitudeLabel);
#undef REC

#define REC RefVector_s
const StyleField_s RefVectorRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    SUBROW(XYPOS, XYPos, FramePositionTable),
    DBLROW(MAGNITUDE, AboveZeroDoubleInputSpec, Magnitude),
    DBLROW(ANGLE, AngleInputSpec, Angle),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    SUBROW(MAGNITUDELABEL, MagnitudeLabel, MagnitudeLabelTable),
};
TABLE(RefVector);
#undef REC

#define REC GlobalVector_s
const StyleField_s GlobalVectorRows[] = {
    INTROW(UVAR, VarOrNoneInputSpec, UVar),
    INTROW(VVAR, VarOrNoneInputSpec, VVar),
    INTROW(WVAR, VarOrNoneInputSpec, WVar),
    DBLROW(RELATIVELENGTH, ZeroAndAboveDoubleInputSpec, RelativeLength),
    DBLROW(UNIFORMLENGTH, FrameLengthInputSpec, UniformLength),
    BOOLROW(USERELATIVE, UseRelative),
    BOOLROW(RELATIVELENGTHINGRIDUNITS, RelativeLengthInGridUnits),
    DBLROW(HEADSIZEASFRACTION, PercentageInputSpec, HeadSizeAsFraction),
    DBLROW(HEADSIZEINFRAMEUNITS, FrameLengthInputSpec, HeadSizeInFrameUnits),
    BOOLROW(SIZEHEADBYFRACTION, SizeHeadByFraction),
    DBLROW(ARROWHEADANGLE, AngleInputSpec, ArrowheadAngle),
    SUBROW(REFVECTOR, RefVector, RefVectorTable),
};
TABLE(GlobalVector);
#undef REC

#define REC MapLegend_s
const StyleField_s MapLegendRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWTEXT, ShowText),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    ENUMROW(TEXTCOLOR, TextColor),
    SUBROW(BOX, Box, TextBoxTable),
    DBLROW(ROWSPACING, ZeroAndAboveDoubleInputSpec, RowSpacing),
    SUBROW(XYPOS, XYPos, FramePositionTable),
    ENUMROW(ANCHORALIGNMENT, AnchorAlignment),
};
TABLE(MapLegend);
#undef REC

#define REC DataLabels_s
const StyleField_s DataLabelsRows[] = {
    BOOLROW(SHOWNODELABELS, ShowNodeLabels),
    BOOLROW(SHOWCELLLABELS, ShowCellLabels),
    BOOLROW(COLORBYZONEMAP, ColorByZoneMap),
    ENUMROW(COLOR, Color),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    SUBROW(NUMFORMAT, NumFormat, ValueFormatTable),
    BOOLROW(INCLUDEBOX, IncludeBox),
    ENUMROW(NODELABELTYPE, NodeLabelType),
    INTROW(NODELABELVAR, VarOrNoneInputSpec, NodeLabelVar),
    ENUMROW(CELLLABELTYPE, CellLabelType),
    INTROW(CELLLABELVAR, VarOrNoneInputSpec, CellLabelVar),
    ENUMROW(SKIPMODE, SkipMode),
    DBLROW(DISTANCESKIP, FrameLengthInputSpec, DistanceSkip),
    INTROW(INDEXSKIP, AboveZeroLgIndexInputSpec, IndexSkip),
};
TABLE(DataLabels);
#undef REC

#define REC RefScatSymbol_s
const StyleField_s RefScatSymbolRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    BOOLROW(ISFILLED, IsFilled),
    ENUMROW(FILLCOLOR, FillColor),
    SUBROW(XYPOS, XYPos, FramePositionTable),
    DBLROW(MAGNITUDE, AboveZeroDoubleInputSpec, Magnitude),
    SUBROW(SYMBOLSHAPE, SymbolShape, SymbolShapeTable),
};
TABLE(RefScatSymbol);
#undef REC

#define REC GlobalScatter_s
const StyleField_s GlobalScatterRows[] = {
    INTROW(VAR, VarOrNoneInputSpec, Var),
    DBLROW(RELATIVESIZE, ZeroAndAboveDoubleInputSpec, RelativeSize),
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
const StyleField_s GlobalLinePlotRows[] = {
    SUBROW(DATALABELS, DataLabels, DataLabelsTable),
    SUBROW(LEGEND, Legend, MapLegendTable),
};
TABLE(GlobalLinePlot);
#undef REC

#define REC GlobalPolar_s
const StyleField_s GlobalPolarRows[] = {
    BOOLROW(DRAWSTRAIGHTLINES, DrawStraightLines),
    DBLROW(ANGLE, AngleInputSpec, Angle),
};
TABLE(GlobalPolar);
#undef REC

#define REC IJKBlanking_s
const StyleField_s IJKBlankingRows[] = {
    BOOLROW(INCLUDE, Include),
    ENUMROW(IJKBLANKMODE, IJKBlankMode),
    DBLROW(IMINFRACT, PercentageInputSpec, IMinFract),
    DBLROW(JMINFRACT, PercentageInputSpec, JMinFract),
    DBLROW(KMINFRACT, PercentageInputSpec, KMinFract),
    DBLROW(IMAXFRACT, PercentageInputSpec, IMaxFract),
    DBLROW(JMAXFRACT, PercentageInputSpec, JMaxFract),
    DBLROW(KMAXFRACT, PercentageInputSpec, KMaxFract),
    INTROW(ZONE, ZoneNumInputSpec, Zone),
};
TABLE(IJKBlanking);
#undef REC

#define REC BlankingConstraint_s
const StyleField_s BlankingConstraintRows[] = {
    BOOLROW(INCLUDE, Include),
    ENUMROW(RELOP, RelOp),
    ENUMROW(CONSTRAINTOP2MODE, ConstraintOp2Mode),
    DBLROW(VALUECUTOFF, DoubleInputSpec, ValueCutoff),
    INTROW(VARA, VarOrNoneInputSpec, VarA),
    INTROW(VARB, VarOrNoneInputSpec, VarB),
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameLengthInputSpec, PatternLength),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
};
TABLE(BlankingConstraint);
#undef REC

#define REC ValueBlanking_s
const StyleField_s ValueBlankingRows[] = {
    BOOLROW(INCLUDE, Include),
    BOOLROW(BLANKENTIRECELL, BlankEntireCell),
    ENUMROW(VALUEBLANKCELLMODE, ValueBlankCellMode),
    NUMSUBROW(CONSTRAINT, Constraint, BlankingConstraintTable, MaxBlankingConstraints,
              "Invalid Value Blanking Constraint number"),
};
TABLE(ValueBlanking);
#undef REC

#define REC DepthBlanking_s
const StyleField_s DepthBlankingRows[] = {
    BOOLROW(INCLUDE, Include),
    DBLROW(FROMFRONT, PercentageInputSpec, FromFront),
    DBLROW(FROMBACK, PercentageInputSpec, FromBack),
};
TABLE(DepthBlanking);
#undef REC

#define REC Blanking_s
const StyleField_s BlankingRows[] = {
    SUBROW(IJK, IJK, IJKBlankingTable),
    SUBROW(VALUE, Value, ValueBlankingTable),
    SUBROW(DEPTH, Depth, DepthBlankingTable),
};
TABLE(Blanking);
#undef REC

// -- layer show flags --

#define REC FieldLayers_s
const StyleField_s FieldLayersRows[] = {
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
const StyleField_s LinePlotLayersRows[] = {
    BOOLROW(SHOWLINES, ShowLines),
    BOOLROW(SHOWSYMBOLS, ShowSymbols),
    BOOLROW(SHOWBARCHARTS, ShowBarCharts),
    BOOLROW(SHOWERRORBARS, ShowErrorBars),
};
TABLE(LinePlotLayers);
#undef REC

#define REC IsoSurfaceLayers_s
const StyleField_s IsoSurfaceLayersRows[] = {
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
const StyleField_s SliceLayersRows[] = {
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
const StyleField_s StreamtraceLayersRows[] = {
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
const StyleField_s AxisTicksRows[] = {
    BOOLROW(SHOWONAXISLINE, ShowOnAxisLine),
    BOOLROW(SHOWONOPPOSITEEDGE, ShowOnOppositeEdge),
    BOOLROW(SHOWONGRIDBORDERMIN, ShowOnGridBorderMin),
    BOOLROW(SHOWONGRIDBORDERMAX, ShowOnGridBorderMax),
    BOOLROW(SHOWONALLAXES, ShowOnAllAxes),
    ENUMROW(TICKDIRECTION, TickDirection),
    DBLROW(LENGTH, FrameLengthInputSpec, Length),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    INTROW(NUMMINORTICKS, NumMinorTicksInputSpec, NumMinorTicks),
    DBLROW(MINORLENGTH, FrameLengthInputSpec, MinorLength),
    DBLROW(MINORLINETHICKNESS, FrameLineThicknessInputSpec, MinorLineThickness),
};
TABLE(AxisTicks);
#undef REC

#define REC AxisTickLabel_s
const StyleField_s AxisTickLabelRows[] = {
    BOOLROW(SHOWONAXISLINE, ShowOnAxisLine),
    BOOLROW(SHOWONOPPOSITEEDGE, ShowOnOppositeEdge),
    BOOLROW(SHOWONGRIDBORDERMIN, ShowOnGridBorderMin),
    BOOLROW(SHOWONGRIDBORDERMAX, ShowOnGridBorderMax),
    BOOLROW(SHOWONALLAXES, ShowOnAllAxes),
    BOOLROW(SHOWATAXISINTERSECTION, ShowAtAxisIntersection),
    BOOLROW(ERASEBEHINDLABELS, EraseBehindLabels),
    INTROW(SKIP, AboveZeroSmIntegerInputSpec, Skip),
    ENUMROW(COLOR, Color),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    SUBROW(NUMFORMAT, NumFormat, ValueFormatTable),
    DBLROW(OFFSET, FrameOffsetInputSpec, Offset),
    ENUMROW(LABELALIGNMENT, LabelAlignment),
    DBLROW(ANGLE, TextAngleInputSpec, Angle),
};
TABLE(AxisTickLabel);
#undef REC

#define REC AxisGridlines_s
const StyleField_s AxisGridlinesRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameLengthInputSpec, PatternLength),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    DBLROW(CUTOFF, PercentageInputSpec, Cutoff),
};
TABLE(AxisGridlines);
#undef REC

#define REC AxisTitle_s
const StyleField_s AxisTitleRows[] = {
    BOOLROW(SHOWONAXISLINE, ShowOnAxisLine),
    BOOLROW(SHOWONOPPOSITEEDGE, ShowOnOppositeEdge),
    BOOLROW(SHOWONGRIDBORDERMIN, ShowOnGridBorderMin),
    BOOLROW(SHOWONGRIDBORDERMAX, ShowOnGridBorderMax),
    BOOLROW(SHOWONALLAXES, ShowOnAllAxes),
    ENUMROW(TITLEMODE, TitleMode),
    STRROW(TEXT, Text),
    ENUMROW(COLOR, Color),
    SUBROW(TEXTSHAPE, TextShape, TextShapeTable),
    DBLROW(OFFSET, FrameOffsetInputSpec, Offset),
    DBLROW(PERCENTALONGLINE, PercentageInputSpec, PercentAlongLine),
};
TABLE(AxisTitle);
#undef REC

#define REC AxisLine_s
const StyleField_s AxisLineRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(SHOWOPPOSITEEDGE, ShowOppositeEdge),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    ENUMROW(AXISALIGNMENT, AxisAlignment),
    DBLROW(OPPOSINGAXISVALUE, DoubleInputSpec, OpposingAxisValue),
    DBLROW(POSITION, PercentageInputSpec, Position),
    DBLROW(ANGLE, AngleInputSpec, Angle),
    DBLROW(OFFSET, FrameOffsetInputSpec, Offset),
    BOOLROW(SHOWBOTHDIRECTIONS, ShowBothDirections),
    BOOLROW(SHOWPERPENDICULAR, ShowPerpendicular),
    INTROW(EDGE, AxisEdgeInputSpec, Edge),
};
TABLE(AxisLine);
#undef REC

#define REC AxisDetail_s
const StyleField_s AxisDetailRows[] = {
    BOOLROW(SHOWAXIS, ShowAxis),
    ENUMROW(COORDSCALE, CoordScale),
    DBLROW(RANGEMIN, DoubleInputSpec, RangeMin),
    DBLROW(RANGEMAX, DoubleInputSpec, RangeMax),
    BOOLROW(ISREVERSED, IsReversed),
    BOOLROW(CLIPDATA, ClipData),
    DBLROW(VALUEATORIGIN, DoubleInputSpec, ValueAtOrigin),
    BOOLROW(AUTOGRID, AutoGrid),
    DBLROW(GRSPACING, AboveZeroDoubleInputSpec, GrSpacing),
    DBLROW(GRANCHOR, DoubleInputSpec, GrAnchor),
    INTROW(VARNUM, VarNumInputSpec, VarNum),
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
const StyleField_s PreciseGridRows[] = {
    BOOLROW(INCLUDE, Include),
    DBLROW(SIZE, FrameLengthInputSpec, Size),
    ENUMROW(COLOR, Color),
};
TABLE(PreciseGrid);
#undef REC

#define REC AxisGrid_s
const StyleField_s AxisGridRows[] = {
    BOOLROW(PRESERVEAXISSCALE, PreserveAxisScale),
    BOOLROW(AUTOADJUSTRANGESTONICEVALUES, AutoAdjustRangesToNiceValues),
    ENUMROW(AXISMODE, AxisMode),
    DBLROW(DEPXTOYRATIO, AboveZeroDoubleInputSpec, DepXToYRatio),
    SUBROW(GRIDAREA, GridArea, GridAreaTable),
    SUBROW(VIEWPORTPOSITION, ViewportPosition, ViewportRectTable),
    DBLROW(VIEWPORTNICEFITBUFFER, PercentageInputSpec, ViewportNiceFitBuffer),
    DBLROW(VIEWPORTTOPSNAPTARGET, PercentageInputSpec, ViewportTopSnapTarget),
    DBLROW(VIEWPORTTOPSNAPTOLERANCE, PercentageInputSpec, ViewportTopSnapTolerance),
    SUBROW(PRECISEGRID, PreciseGrid, PreciseGridTable),
};
TABLE(AxisGrid);
#undef REC

#define REC TwoDAxis_s
const StyleField_s TwoDAxisRows[] = {
    SPLICEROW(Grid, AxisGridTable),
    SUBROW(XDETAIL, XDetail, AxisDetailTable),
    SUBROW(YDETAIL, YDetail, AxisDetailTable),
};
TABLE(TwoDAxis);
#undef REC

#define REC XYLineAxis_s
const StyleField_s XYLineAxisRows[] = {
    SPLICEROW(Grid, AxisGridTable),
    NUMSUBROW(XDETAIL, XDetail, AxisDetailTable, MaxXYLineAxes, "Invalid Axis Number for X- or Y-Axis Detail"),
    NUMSUBROW(YDETAIL, YDetail, AxisDetailTable, MaxXYLineAxes, "Invalid Axis Number for X- or Y-Axis Detail"),
};
TABLE(XYLineAxis);
#undef REC

#define REC FrameAxis_s
const StyleField_s FrameAxisRows[] = {
    BOOLROW(SHOW, Show),
    DBLROW(SIZE, FrameLengthInputSpec, Size),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    ENUMROW(COLOR, Color),
    SUBROW(XYPOS, XYPos, FramePositionTable),
};
TABLE(FrameAxis);
#undef REC

#define REC ThreeDAxis_s
const StyleField_s ThreeDAxisRows[] = {
    ENUMROW(AXISMODE, AxisMode),
    DBLROW(XYDEPXTOYRATIO, AboveZeroDoubleInputSpec, XYDepXToYRatio),
    DBLROW(DEPXTOYRATIO, AboveZeroDoubleInputSpec, DepXToYRatio),
    DBLROW(DEPXTOZRATIO, AboveZeroDoubleInputSpec, DepXToZRatio),
    SUBROW(GRIDAREA, GridArea, GridAreaTable),
    BOOLROW(EDGEAUTORESET, EdgeAutoReset),
    BOOLROW(PRESERVEAXISSCALE, PreserveAxisScale),
    SUBROW(FRAMEAXIS, FrameAxis, FrameAxisTable),
    DBLROW(ASPECTRATIOLIMIT, AboveZeroDoubleInputSpec, AspectRatioLimit),
    DBLROW(ASPECTRATIORESET, AboveZeroDoubleInputSpec, AspectRatioReset),
    DBLROW(BOXASPECTRATIOLIMIT, AboveZeroDoubleInputSpec, BoxAspectRatioLimit),
    DBLROW(BOXASPECTRATIORESET, AboveZeroDoubleInputSpec, BoxAspectRatioReset),
    SUBROW(XDETAIL, XDetail, AxisDetailTable),
    SUBROW(YDETAIL, YDetail, AxisDetailTable),
    SUBROW(ZDETAIL, ZDetail, AxisDetailTable),
};
TABLE(ThreeDAxis);
#undef REC

#define REC PolarAxis_s
const StyleField_s PolarAxisRows[] = {
    BOOLROW(PRESERVEAXISSCALE, PreserveAxisScale),
    ENUMROW(THETAMODE, ThetaMode),
    DBLROW(THETAPERIOD, AboveZeroDoubleInputSpec, ThetaPeriod),
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
const StyleField_s IsoSurfaceAttributesRows[] = {
    BOOLROW(OBEYSOURCEZONEBLANKING, ObeySourceZoneBlanking),
    BOOLROW(SHOWGROUP, ShowGroup),
    INTROW(DEFINITIONCONTOURGROUP, ContourGroupInputSpec, DefinitionContourGroup),
    ENUMROW(ISOSURFACESELECTION, IsoSurfaceSelection),
    DBLROW(ISOVALUE1, DoubleInputSpec, IsoValue1),
    DBLROW(ISOVALUE2, DoubleInputSpec, IsoValue2),
    DBLROW(ISOVALUE3, DoubleInputSpec, IsoValue3),
    ENUMROW(MARCHINGCUBEALGORITHM, MarchingCubeAlgorithm),
    SUBROW(MESH, Mesh, MeshLayerTable),
    SUBROW(CONTOUR, Contour, ContourLayerTable),
    SUBROW(SHADE, Shade, ShadeLayerTable),
    SUBROW(EFFECTS, Effects, EffectsTable),
};
TABLE(IsoSurfaceAttributes);
#undef REC

#define REC SlicePosition_s
const StyleField_s SlicePositionRows[] = {
    DBLROW(X, DoubleInputSpec, X),
    DBLROW(Y, DoubleInputSpec, Y),
    DBLROW(Z, DoubleInputSpec, Z),
    INTROW(I, OneBasedIndexInputSpec, I),
    INTROW(J, OneBasedIndexInputSpec, J),
    INTROW(K, OneBasedIndexInputSpec, K),
};
TABLE(SlicePosition);
#undef REC

#define REC SliceAttributes_s
const StyleField_s SliceAttributesRows[] = {
    BOOLROW(OBEYSOURCEZONEBLANKING, ObeySourceZoneBlanking),
    BOOLROW(SHOWGROUP, ShowGroup),
    ENUMROW(SLICESURFACE, SliceSurface),
    BOOLROW(SHOWPRIMARYSLICE, ShowPrimarySlice),
    SUBROW(PRIMARYPOSITION, PrimaryPosition, SlicePositionTable),
    BOOLROW(SHOWSTARTENDSLICE, ShowStartEndSlice),
    SUBROW(STARTPOSITION, StartPosition, SlicePositionTable),
    SUBROW(ENDPOSITION, EndPosition, SlicePositionTable),
    BOOLROW(SHOWINTERMEDIATESLICES, ShowIntermediateSlices),
    INTROW(NUMINTERMEDIATESLICES, AboveZeroSmIntegerInputSpec, NumIntermediateSlices),
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
const StyleField_s StreamTermLineRows[] = {
    BOOLROW(SHOW, Show),
    BOOLROW(ISACTIVE, IsActive),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameLengthInputSpec, PatternLength),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
};
TABLE(StreamTermLine);
#undef REC

#define REC StreamTiming_s
const StyleField_s StreamTimingRows[] = {
    BOOLROW(SHOWMARKERS, ShowMarkers),
    BOOLROW(SHOWDASHES, ShowDashes),
    ENUMROW(MARKCOLOR, MarkColor),
    DBLROW(MARKSIZE, FrameLengthInputSpec, MarkSize),
    DBLROW(TIMESTART, DoubleInputSpec, TimeStart),
    DBLROW(TIMEEND, DoubleInputSpec, TimeEnd),
    DBLROW(TIMEDELTA, DoubleInputSpec, TimeDelta),
    DBLROW(TIMEANCHOR, DoubleInputSpec, TimeAnchor),
    SUBROW(MARKSYMBOL, MarkSymbol, SymbolShapeTable),
};
TABLE(StreamTiming);
#undef REC

#define REC RodRibbon_s
const StyleField_s RodRibbonRows[] = {
    DBLROW(WIDTH, ZeroAndAboveDoubleInputSpec, Width),
    INTROW(NUMRODPOINTS, NumberOfRodPointsInputSpec, NumRodPoints),
    SUBROW(MESH, Mesh, MeshLayerTable),
    SUBROW(CONTOUR, Contour, ContourLayerTable),
    SUBROW(SHADE, Shade, ShadeLayerTable),
    SUBROW(EFFECTS, Effects, EffectsTable),
};
TABLE(RodRibbon);
#undef REC

#define REC StreamAttributes_s
const StyleField_s StreamAttributesRows[] = {
    BOOLROW(OBEYSOURCEZONEBLANKING, ObeySourceZoneBlanking),
    BOOLROW(SHOWPATHS, ShowPaths),
    SUBROW(TERMLINE, TermLine, StreamTermLineTable),
    SUBROW(STREAMTIMING, StreamTiming, StreamTimingTable),
    INTROW(DASHSKIP, AboveZeroLgIndexInputSpec, DashSkip),
    SUBROW(RODRIBBON, RodRibbon, RodRibbonTable),
    BOOLROW(ADDARROWS, AddArrows),
    DBLROW(CELLFRACTION, AboveZeroDoubleInputSpec, CellFraction),
    DBLROW(MINCELLFRACTION, AboveZeroDoubleInputSpec, MinCellFraction),
    DBLROW(ARROWHEADSIZE, FrameLengthInputSpec, ArrowheadSize),
    INTROW(MAXSTEPS, AboveZeroLgIndexInputSpec, MaxSteps),
    DBLROW(ARROWHEADSPACING, FrameLengthInputSpec, ArrowheadSpacing),
};
TABLE(StreamAttributes);
#undef REC

// -- 3D and polar state --

#define REC LightSource_s
const StyleField_s LightSourceRows[] = {
    SUBROW(XYZDIRECTION, XYZDirection, GridXYZTable),
    DBLROW(INTENSITY, PercentNumberInputSpec, Intensity),
    DBLROW(BACKGROUNDLIGHT, PercentNumberInputSpec, BackgroundLight),
    DBLROW(SURFACECOLORCONTRAST, PercentNumberInputSpec, SurfaceColorContrast),
    BOOLROW(INCLUDESPECULAR, IncludeSpecular),
    DBLROW(SPECULARINTENSITY, PercentNumberInputSpec, SpecularIntensity),
    DBLROW(SPECULARSHININESS, PercentNumberInputSpec, SpecularShininess),
};
TABLE(LightSource);
#undef REC

#define REC SlicePlane_s
const StyleField_s SlicePlaneRows[] = {
    SUBROW(ORIGIN, Origin, GridXYZTable),
    SUBROW(NORMAL, Normal, GridXYZTable),
};
TABLE(SlicePlane);
#undef REC

#define REC GlobalThreeD_s
const StyleField_s GlobalThreeDRows[] = {
    BOOLROW(PERFORMEXTRA3DSORTING, PerformExtra3DSorting),
    DBLROW(AXISBOXPADDING, ZeroAndAboveDoubleInputSpec, AxisBoxPadding),
    SUBROW(AXISSCALEFACT, AxisScaleFact, ScaleXYZTable),
    SUBROW(ROTATEORIGIN, RotateOrigin, GridXYZTable),
    SUBROW(LIGHTSOURCE, LightSource, LightSourceTable),
    BOOLROW(FORCEGOURAUDFOR3DCONTFLOOD, ForceGouraudFor3DContFlood),
    BOOLROW(FORCEPANELEDFOR3DCELLFLOOD, ForcePaneledFor3DCellFlood),
    DBLROW(LINELIFTFRACTION, PercentageInputSpec, LineLiftFraction),
    DBLROW(SYMBOLLIFTFRACTION, PercentageInputSpec, SymbolLiftFraction),
    DBLROW(VECTORLIFTFRACTION, PercentageInputSpec, VectorLiftFraction),
    SUBROW(SLICE, Slice, SlicePlaneTable),
};
TABLE(GlobalThreeD);
#undef REC

#define REC ThreeDView_s
const StyleField_s ThreeDViewRows[] = {
    BOOLROW(DRAWINPERSPECTIVE, DrawInPerspective),
    DBLROW(PSIANGLE, AngleInputSpec, PsiAngle),
    DBLROW(THETAANGLE, AngleInputSpec, ThetaAngle),
    DBLROW(ALPHAANGLE, AngleInputSpec, AlphaAngle),
    SUBROW(VIEWERPOSITION, ViewerPosition, GridXYZTable),
    DBLROW(FIELDOFVIEW, FieldOfViewInputSpec, FieldOfView),
    DBLROW(VIEWWIDTH, AboveZeroDoubleInputSpec, ViewWidth),
};
TABLE(ThreeDView);
#undef REC

#define REC PolarView_s
const StyleField_s PolarViewRows[] = {
    SUBROW(EXTENTS, Extents, GridRectTable),
};
TABLE(PolarView);
#undef REC

// -- map templates --

#define REC FieldScatter_s
const StyleField_s FieldScatterRows[] = {
    BOOLROW(SHOW, Show),
    SUBROW(SYMBOLSHAPE, SymbolShape, SymbolShapeTable),
    ENUMROW(COLOR, Color),
    ENUMROW(FILLMODE, FillMode),
    ENUMROW(FILLCOLOR, FillColor),
    BOOLROW(SIZEBYVARIABLE, SizeByVariable),
    DBLROW(FRAMESIZE, FrameLengthInputSpec, FrameSize),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
};
TABLE(FieldScatter);
#undef REC

#define REC FieldPoints_s
const StyleField_s IJKSkipRows[] = {
    INTROW(I, AboveZeroLgIndexInputSpec, ISkip),
    INTROW(J, AboveZeroLgIndexInputSpec, JSkip),
    INTROW(K, AboveZeroLgIndexInputSpec, KSkip),
};
TABLE(IJKSkip);
const StyleField_s FieldPointsRows[] = {
    ENUMROW(POINTSTOPLOT, PointsToPlot),
    SELFROW(IJKSKIP, IJKSkipTable),
};
TABLE(FieldPoints);
#undef REC

#define REC FieldSurfaces_s
const StyleField_s FieldSurfacesRows[] = {
    ENUMROW(SURFACESTOPLOT, SurfacesToPlot),
    SUBROW(IRANGE, IRange, IndexRangeTable),
    SUBROW(JRANGE, JRange, IndexRangeTable),
    SUBROW(KRANGE, KRange, IndexRangeTable),
};
TABLE(FieldSurfaces);
#undef REC

#define REC FieldVolumeMode_s
const StyleField_s VolumeObjectsToPlotRows[] = {
    BOOLROW(SHOWISOSURFACES, ShowIsoSurfaces),
    BOOLROW(SHOWSLICES, ShowSlices),
    BOOLROW(SHOWSTREAMTRACES, ShowStreamtraces),
};
TABLE(VolumeObjectsToPlot);
const StyleField_s FieldVolumeModeRows[] = {
    SELFROW(VOLUMEOBJECTSTOPLOT, VolumeObjectsToPlotTable),
};
TABLE(FieldVolumeMode);
#undef REC

#define REC FieldMapStyle_s
const StyleField_s FieldMapStyleRows[] = {
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
    INTROW(GROUP, AboveZeroLgIndexInputSpec, Group),
};
TABLE(FieldMapStyle);
#undef REC

#define REC LineMapAssign_s
const StyleField_s LineMapAssignRows[] = {
    INTROW(ZONE, ZoneNumInputSpec, Zone),
    INTROW(XAXISVAR, VarNumInputSpec, XAxisVar),
    INTROW(YAXISVAR, VarNumInputSpec, YAxisVar),
    INTROW(THETAAXISVAR, VarNumInputSpec, XAxisVar),
    INTROW(RAXISVAR, VarNumInputSpec, YAxisVar),
    INTROW(XAXIS, XYAxisNumberInputSpec, XAxis),
    INTROW(YAXIS, XYAxisNumberInputSpec, YAxis),
    ENUMROW(FUNCTIONDEPENDENCY, FunctionDependency),
    ENUMROW(SHOWINLEGEND, ShowInLegend),
    ENUMROW(SORT, Sort),
    INTROW(SORTVAR, VarOrNoneInputSpec, SortVar),
};
TABLE(LineMapAssign);
#undef REC

#define REC LineMapLines_s
const StyleField_s LineMapLinesRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    ENUMROW(LINEPATTERN, LinePattern),
    DBLROW(PATTERNLENGTH, FrameLengthInputSpec, PatternLength),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
};
TABLE(LineMapLines);
#undef REC

#define REC LineMapCurves_s
const StyleField_s LineMapCurvesRows[] = {
    ENUMROW(CURVETYPE, CurveType),
    INTROW(NUMPTS, CurvePointsInputSpec, NumPts),
    INTROW(POLYORDER, PolyOrderInputSpec, PolyOrder),
    INTROW(WEIGHTVAR, VarOrNoneInputSpec, WeightVar),
    BOOLROW(USEWEIGHTVAR, UseWeightVar),
    DBLROW(INDVARMIN, DoubleInputSpec, IndVarMin),
    DBLROW(INDVARMAX, DoubleInputSpec, IndVarMax),
    BOOLROW(USEINDVARRANGE, UseIndVarRange),
    BOOLROW(CLAMPSPLINE, ClampSpline),
    DBLROW(SPLINEDERIVATIVEATSTART, DoubleInputSpec, SplineDerivativeAtStart),
    DBLROW(SPLINEDERIVATIVEATEND, DoubleInputSpec, SplineDerivativeAtEnd),
    STRROW(EXTENDEDNAME, ExtendedName),
    STRROW(EXTENDEDSETTINGS, ExtendedSettings),
};
TABLE(LineMapCurves);
#undef REC

#define REC LineMapSymbols_s
const StyleField_s LineMapSymbolsRows[] = {
    BOOLROW(SHOW, Show),
    SUBROW(SYMBOLSHAPE, SymbolShape, SymbolShapeTable),
    ENUMROW(COLOR, Color),
    ENUMROW(FILLMODE, FillMode),
    ENUMROW(FILLCOLOR, FillColor),
    DBLROW(SIZE, FrameLengthInputSpec, Size),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    ENUMROW(SKIPMODE, SkipMode),
    DBLROW(SKIPPING, ZeroAndAboveDoubleInputSpec, Skipping),
};
TABLE(LineMapSymbols);
#undef REC

#define REC LineMapBarCharts_s
const StyleField_s LineMapBarChartsRows[] = {
    BOOLROW(SHOW, Show),
    ENUMROW(COLOR, Color),
    ENUMROW(FILLMODE, FillMode),
    ENUMROW(FILLCOLOR, FillColor),
    DBLROW(SIZE, FrameLengthInputSpec, Size),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
};
TABLE(LineMapBarCharts);
#undef REC

#define REC LineMapErrorBars_s
const StyleField_s LineMapErrorBarsRows[] = {
    INTROW(VAR, VarOrNoneInputSpec, Var),
    BOOLROW(SHOW, Show),
    ENUMROW(BARTYPE, BarType),
    ENUMROW(COLOR, Color),
    DBLROW(LINETHICKNESS, FrameLineThicknessInputSpec, LineThickness),
    ENUMROW(SKIPMODE, SkipMode),
    DBLROW(SKIPPING, ZeroAndAboveDoubleInputSpec, Skipping),
    DBLROW(SIZE, FrameLengthInputSpec, Size),
};
TABLE(LineMapErrorBars);
#undef REC

#define REC LineMapIndices_s
const StyleField_s LineMapIndicesRows[] = {
    ENUMROW(IJKLINES, IJKLines),
    SUBROW(IRANGE, IRange, IndexRangeTable),
    SUBROW(JRANGE, JRange, IndexRangeTable),
    SUBROW(KRANGE, KRange, IndexRangeTable),
};
TABLE(LineMapIndices);
#undef REC

#define REC LineMapStyle_s
const StyleField_s LineMapStyleRows[] = {
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

constexpr const char *IsoSliceGroupError = "Invalid group number specified.";

static_assert(MaxContourGroups == 4 && MaxIsoSurfaceGroups == 4 && MaxSliceGroups == 4,
              "the grouped majors take four groups");

// The map majors (FIELD, FIELDMAP, LINEMAP, XYMAP) have the map set in the path where a group
// would stand; framestyle.cpp takes them to the templates.
#define REC FrameStyle_s
const StyleField_s FrameStyleRows[] = {
    SUBROW(LINKING, Linking, LinkingTable),
    SUBROW(FRAMELINKING, Linking, LinkingTable),
    SUBROW(FRAMELAYOUT, FrameLayout, FrameLayoutTable),
    SUBROW(GLOBALTIME, GlobalTime, GlobalTimeTable),
    SUBROW(GLOBALEDGE, GlobalEdge, GlobalEdgeTable),
    SUBROW(GLOBALRGB, GlobalRGB, GlobalRGBTable),
    NUMSUBROW(GLOBALCONTOUR, GlobalContour, GlobalContourTable, MaxContourGroups, "Invalid value global contour index"),
    SUBROW(GLOBALTWODVECTOR, GlobalTwoDVector, GlobalVectorTable),
    SUBROW(GLOBALTHREEDVECTOR, GlobalThreeDVector, GlobalVectorTable),
    SUBROW(GLOBALSCATTER, GlobalScatter, GlobalScatterTable),
    SUBROW(GLOBALLINEPLOT, GlobalLinePlot, GlobalLinePlotTable),
    SUBROW(GLOBALXY, GlobalLinePlot, GlobalLinePlotTable),
    SUBROW(GLOBALPOLAR, GlobalPolar, GlobalPolarTable),
    SUBROW(BLANKING, Blanking, BlankingTable),
    SUBROW(FIELDLAYERS, FieldLayers, FieldLayersTable),
    SUBROW(LINEPLOTLAYERS, LinePlotLayers, LinePlotLayersTable),
    SUBROW(XYLAYERS, LinePlotLayers, LinePlotLayersTable),
    SUBROW(ISOSURFACELAYERS, IsoSurfaceLayers, IsoSurfaceLayersTable),
    SUBROW(SLICELAYERS, SliceLayers, SliceLayersTable),
    SUBROW(STREAMTRACELAYERS, StreamtraceLayers, StreamtraceLayersTable),
    SUBROW(THREEDAXIS, ThreeDAxis, ThreeDAxisTable),
    SUBROW(TWODAXIS, TwoDAxis, TwoDAxisTable),
    SUBROW(XYLINEAXIS, XYLineAxis, XYLineAxisTable),
    SUBROW(XYAXIS, XYLineAxis, XYLineAxisTable),
    SUBROW(SKETCHAXIS, SketchAxis, TwoDAxisTable),
    SUBROW(POLARAXIS, PolarAxis, PolarAxisTable),
    NUMSUBROW(GLOBALISOSURFACE, IsoSurfaceAttributes, IsoSurfaceAttributesTable, MaxIsoSurfaceGroups,
              IsoSliceGroupError),
    NUMSUBROW(ISOSURFACEATTRIBUTES, IsoSurfaceAttributes, IsoSurfaceAttributesTable, MaxIsoSurfaceGroups,
              IsoSliceGroupError),
    NUMSUBROW(GLOBALSLICE, SliceAttributes, SliceAttributesTable, MaxSliceGroups, IsoSliceGroupError),
    NUMSUBROW(SLICEATTRIBUTES, SliceAttributes, SliceAttributesTable, MaxSliceGroups, IsoSliceGroupError),
    SUBROW(GLOBALSTREAM, StreamAttributes, StreamAttributesTable),
    SUBROW(STREAMATTRIBUTES, StreamAttributes, StreamAttributesTable),
    SUBROW(GLOBALTHREED, GlobalThreeD, GlobalThreeDTable),
    SUBROW(THREEDVIEW, ThreeDView, ThreeDViewTable),
    SUBROW(POLARVIEW, PolarView, PolarViewTable),
};
TABLE(FrameStyle);
#undef REC

}  // namespace

const StyleRecord_s &GetFrameStyleRecord() { return FrameStyleTable; }
const StyleRecord_s &GetFieldMapStyleRecord() { return FieldMapStyleTable; }
const StyleRecord_s &GetLineMapStyleRecord() { return LineMapStyleTable; }
