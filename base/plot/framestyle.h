// The style records of a frame: layout, linking, the frame-wide blocks (time, edges, RGB, four
// contour groups, vectors, scatter, line plot, polar, blanking), layer show flags, one axis block
// per plot type, four iso-surface and four slice groups, streamtraces, 3D state and view, and the
// template records that new field maps and line maps copy. Every record is plain data with one
// table of its rows (row, kind, input check, where the value lives, what follows in the path);
// that table drives both setting and reading. FrameFactoryDefaults holds the compiled-in values,
// FrameBase the configured ones that new frames copy.
// Units inside: fractions of the frame height for sizes and thicknesses (percent in macros),
// fractions of the frame width and height for positions (percent in macros), radians for angles
// (degrees in macros), inches on the paper for the frame rectangle, zero-based entity numbers
// (one-based in macros).
// Relies on: setvalue (the style record walk, input rules and typed setters), vocab (row numbers
// and enumerated sets), macrocomp (assignment operators).
#pragma once

#include <string>
#include <vector>

#include "base/kernel/genbase.h"
#include "base/kernel/types.h"
#include "base/macro/setvalue.h"

// The set-value return codes FrameStyleSetValue gives, under the names the frame layer uses.
constexpr SetValueReturnCode_e FrameStyle_Ok = SetValue_Ok;
constexpr SetValueReturnCode_e FrameStyle_DuplicateValue = SetValue_DuplicateValue;  // nothing changed
// The path does not name a value of the frame style.
constexpr SetValueReturnCode_e FrameStyle_InvalidCommandOption = SetValue_InvalidCommandOption;
// Out of range, not in the row's set, or divide by zero.
constexpr SetValueReturnCode_e FrameStyle_ValueRangeError = SetValue_ValueRangeError;
// Operator or unit suffix not allowed on the row.
constexpr SetValueReturnCode_e FrameStyle_AssignOpError = SetValue_AssignOpError;

// ---- shared sub-records -------------------------------------------------------------------

// FONT SIZEUNITS HEIGHT. Height is in the units SizeUnits names: a fraction of the frame
// height for FRAME, of the axis for AXISPERCENTAGE, points for POINT, grid units for GRID.
struct TextShape_s {
    int Font = 0;       // HELV
    int SizeUnits = 1;  // FRAME
    double Height = 0.03;
};

// BOXTYPE MARGIN LINETHICKNESS COLOR FILLCOLOR. Margin is a fraction of the text height.
struct TextBox_s {
    int BoxType = 0;  // NONE
    double Margin = 0.2;
    double LineThickness = 0.001;
    int Color = 0;      // BLACK
    int FillColor = 7;  // WHITE
};

// NUMFORMAT: how a number becomes label text.
struct ValueFormat_s {
    int Formatting = 3;   // BESTFLOAT
    int CustomLabel = 0;  // zero-based custom label set
    int Precision = 4;
    bool ShowDecimalsOnWholeNumbers = false;
    bool RemoveLeadingZeros = false;
    bool ShowNegativeSign = true;
    std::string DynamicLabelName;
    std::string PositivePrefix, PositiveSuffix, NegativePrefix, NegativeSuffix, ZeroPrefix, ZeroSuffix;
};

// ASCIISHAPE {USEBASEFONT FONTOVERRIDE ASCIICHAR}
struct AsciiShape_s {
    bool UseBaseFont = true;
    int FontOverride = 2;  // GREEK
    std::string AsciiChar = "a";
};

// ISASCII GEOMSHAPE ASCIISHAPE
struct SymbolShape_s {
    bool IsAscii = false;
    int GeomShape = 0;  // SQUARE
    AsciiShape_s AsciiShape;
};

// EFFECTS: LIGHTINGEFFECT SURFACETRANSLUCENCY USETRANSLUCENCY USEVALUEBLANKING
struct Effects_s {
    int LightingEffect = 1;  // GOURAUD
    int SurfaceTranslucency = 50;  // percent
    bool UseTranslucency = false;
    bool UseValueBlanking = true;
};

// MESH: SHOW MESHTYPE COLOR LINEPATTERN PATTERNLENGTH LINETHICKNESS
struct MeshLayer_s {
    bool Show = true;
    int MeshType = 0;  // WIREFRAME
    int Color = 0;
    int LinePattern = 0;  // SOLID
    double PatternLength = 0.02;
    double LineThickness = 0.001;
};

// CONTOUR: SHOW CONTOURTYPE LINECONTOURGROUP FLOODCOLORING COLOR LINEPATTERN PATTERNLENGTH
// LINETHICKNESS USELIGHTINGEFFECT. LineContourGroup is zero-based.
struct ContourLayer_s {
    bool Show = true;
    int ContourType = 1;  // FLOOD
    int LineContourGroup = 0;
    int FloodColoring = 1;  // GROUP1
    int Color = 0;
    int LinePattern = 0;
    double PatternLength = 0.02;
    double LineThickness = 0.001;
    bool UseLightingEffect = true;
};

// VECTOR: SHOW VECTORTYPE ARROWHEADSTYLE COLOR ISTANGENT LINEPATTERN PATTERNLENGTH LINETHICKNESS
struct VectorLayer_s {
    bool Show = true;
    int VectorType = 0;      // TAILATPOINT
    int ArrowheadStyle = 0;  // PLAIN
    int Color = 0;
    bool IsTangent = false;
    int LinePattern = 0;
    double PatternLength = 0.02;
    double LineThickness = 0.001;
};

// SHADE: SHOW COLOR USELIGHTINGEFFECT
struct ShadeLayer_s {
    bool Show = true;
    int Color = 7;  // WHITE
    bool UseLightingEffect = true;
};

// EDGELAYER: SHOW EDGETYPE IBORDER JBORDER KBORDER COLOR LINETHICKNESS
struct EdgeLayer_s {
    bool Show = true;
    int EdgeType = 2;  // BORDERSANDCREASES
    int IBorder = 3, JBorder = 3, KBorder = 3;  // BOTH
    int Color = 0;
    double LineThickness = 0.001;
};

// GRIDAREA (and the polar VIEWPORTSTYLE): DRAWBORDER COLOR LINETHICKNESS ISFILLED FILLCOLOR
// USELIGHTSOURCETOFILL DRAWGRIDLAST
struct GridArea_s {
    bool DrawBorder = false;
    int Color = 0;
    double LineThickness = 0.001;
    bool IsFilled = false;
    int FillColor = 7;
    bool UseLightSourceToFill = true;
    bool DrawGridLast = false;
};

// ---- frame-wide blocks --------------------------------------------------------------------

// $!FRAMELAYOUT. The frame's rectangle is in inches on the paper, Y growing downward: X1 the
// left edge, Y1 the bottom (the greater value), X2 the right edge, Y2 the top. XYPOS is (X1, Y2),
// WIDTH is X2 - X1 and HEIGHT Y1 - Y2.
struct FrameLayout_s {
    bool ShowBorder = true;
    bool ShowHeader = false;
    bool IsTransparent = false;
    int BackgroundColor = 7;  // WHITE
    int HeaderColor = 1;      // RED
    int HeaderFont = 1;       // HELVBOLD
    double BorderThickness = 0.001;  // fraction of the frame height
    Rect_s Rect{1.0, 8.25, 10.0, 0.25};
};

// $!LINKING WITHINFRAME and BETWEENFRAMES.
struct Linking_s {
    bool LinkAxisStyle = false, LinkGridlineStyle = false, LinkLayerLineColor = false, LinkLayerLinePattern = false;
    int LinkGroup = 1;
    bool LinkContourLevels = false, LinkFrameSizeAndPosition = false, LinkXAxisRange = false, LinkYAxisRange = false,
         Link3DView = false, LinkPolarView = false, LinkAxisPosition = false, LinkValueBlanking = false,
         LinkSlicePositions = false, LinkIsoSurfaceValues = false;
};

struct GlobalTime_s {
    double SolutionTime = 0.0;
};

struct GlobalEdge_s {
    double MinCreaseAngle = 2.356194490192345;  // radians (135 degrees)
};

struct RGBLegend_s {
    bool Show = false;
    bool ShowLabels = true;
    TextShape_s TextShape;  // FONT SIZEUNITS HEIGHT stand directly in the legend block
    XY_s XYPos{0.95, 0.8};
    int AnchorAlignment = 2;  // TOPRIGHT
    int TextColor = 0;
    TextBox_s Box;
    bool UseRedVarName = true, UseGreenVarName = true, UseBlueVarName = true;
    std::string RedChannelLabel, GreenChannelLabel, BlueChannelLabel;
    int RGBLegendOrientation = 0;  // RGB
};

// $!GLOBALRGB. The channel variables are zero-based, -1 for none.
struct GlobalRGB_s {
    int RGBMode = 0;  // SPECIFYRGB
    int RedChannelVar = -1, GreenChannelVar = -1, BlueChannelVar = -1;
    double RangeMin = 0.0, RangeMax = 1.0;
    RGBLegend_s Legend;
};

struct ContourLabels_s {
    bool Show = false;
    bool GenerateAutoLabels = false;
    bool AlignAutoLabels = true;
    bool LabelWithValue = false;
    int AutoLevelSkip = 1;
    double AutoLabelSpacing = 0.1;  // frame units
    TextShape_s TextShape{0, 1, 0.025};
    int Color = 0;
    bool IsFilled = false;
    int FillColor = 7;
    double Margin = 0.2;  // fraction of the text height
    ValueFormat_s NumFormat;
};

struct ContourLegend_s {
    bool Show = false;
    bool ShowHeader = true;
    double RowSpacing = 1.2;  // multiple of the text height
    XY_s XYPos{0.95, 0.8};
    int AnchorAlignment = 2;  // TOPRIGHT
    bool IsVertical = true;
    bool OverlayBarGrid = true;
    TextShape_s HeaderTextShape{1, 1, 0.025};
    TextShape_s NumberTextShape{0, 1, 0.025};
    int TextColor = 0;
    TextBox_s Box{1, 0.1, 0.001, 0, 7};
    bool IncludeCutoffLevels = false;
    bool AutoResize = false;
    double AutoSizeMaxLimit = 0.5;  // frame units
    int LabelLocation = 0;          // CONTOURLEVELS
    double LabelIncrement = 1.0;
};

struct ColorCutoff_s {
    double RangeMin = 0.25, RangeMax = 0.75;
    bool IncludeMin = false, IncludeMax = false;
};

struct Zebra_s {
    bool Include = false;
    bool IsTransparent = false;
    int Color = 0;
};

// COLORMAPOVERRIDE m. Levels are zero-based.
struct ColorMapOverride_s {
    bool Include = false;
    int Color = 0;
    int StartLevel = 0, EndLevel = 0;
};

constexpr int MaxColorMapOverrides = 16;

struct ColorMapFilter_s {
    int ColorMapDistribution = 1;  // BANDED
    double CMin = 0.0, CMax = 1.0;  // CONTINUOUSCOLOR
    bool ReverseColorMap = false;
    Zebra_s Zebra;
    int ColorMapCycles = 1;
    bool UseFastApproxContinuousFlood = true;
    bool ColorMapOverrideActive = false;
    ColorMapOverride_s ColorMapOverride[MaxColorMapOverrides];
};

struct ContourLineStyle_s {
    int ContourLineMode = 0;  // USEZONELINETYPE
    int LineSkip = 4;
    double PatternLength = 0.02;
};

// $!GLOBALCONTOUR n. Var is zero-based, -1 for none.
struct GlobalContour_s {
    int Var = -1;
    int DefNumLevels = 10;
    std::vector<double> Levels;  // ascending; set by $!CONTOURLEVELS and level generation
    ContourLabels_s Labels;
    ContourLegend_s Legend;
    ColorCutoff_s ColorCutoff;
    ColorMapFilter_s ColorMapFilter;
    ContourLineStyle_s ContourLineStyle;
};

constexpr int MaxContourGroups = 4;

struct MagnitudeLabel_s {
    bool Show = false;
    int TextColor = 0;
    TextShape_s TextShape;
    ValueFormat_s NumFormat;
    double Offset = 0.02;  // frame units
};

struct RefVector_s {
    bool Show = false;
    int Color = 0;
    XY_s XYPos{0.8, 0.1};
    double Magnitude = 1.0;
    double Angle = 0.0;  // radians
    double LineThickness = 0.001;
    MagnitudeLabel_s MagnitudeLabel;
};

// $!GLOBALTWODVECTOR, $!GLOBALTHREEDVECTOR.
struct GlobalVector_s {
    int UVar = -1, VVar = -1, WVar = -1;
    double RelativeLength = 1.0;
    double UniformLength = 0.04;  // frame units
    bool UseRelative = true;
    bool RelativeLengthInGridUnits = true;
    double HeadSizeAsFraction = 0.4;    // of the arrow's length
    double HeadSizeInFrameUnits = 0.02;
    bool SizeHeadByFraction = true;
    double ArrowheadAngle = 0.20943951023931953;  // radians (12 degrees)
    RefVector_s RefVector;
};

// The legend block of scatter and line plots.
struct MapLegend_s {
    bool Show = false;
    bool ShowText = true;
    TextShape_s TextShape{0, 1, 0.025};
    int TextColor = 0;
    TextBox_s Box{1, 0.1, 0.001, 0, 7};
    double RowSpacing = 1.2;
    XY_s XYPos{0.95, 0.8};
    int AnchorAlignment = 2;  // TOPRIGHT
};

// DATALABELS of scatter and line plots. Variables zero-based, -1 for none.
struct DataLabels_s {
    bool ShowNodeLabels = false, ShowCellLabels = false;
    bool ColorByZoneMap = false;
    int Color = 0;
    TextShape_s TextShape{0, 1, 0.02};
    ValueFormat_s NumFormat;
    bool IncludeBox = false;
    int NodeLabelType = 0, CellLabelType = 0;  // INDEX
    int NodeLabelVar = -1, CellLabelVar = -1;
    int SkipMode = 0;            // BYINDEX
    double DistanceSkip = 0.05;  // frame units
    int IndexSkip = 1;
};

struct RefScatSymbol_s {
    bool Show = false;
    int Color = 1;  // RED
    double LineThickness = 0.001;
    bool IsFilled = false;
    int FillColor = 1;
    XY_s XYPos{0.2, 0.9};
    double Magnitude = 1.0;
    SymbolShape_s SymbolShape;
};

struct GlobalScatter_s {
    int Var = -1;
    double RelativeSize = 1.0;
    bool RelativeSizeInGridUnits = false;
    int BaseFont = 0;
    int SphereScatterRenderQuality = 1;  // MEDIUM
    MapLegend_s Legend;
    RefScatSymbol_s RefScatSymbol;
    DataLabels_s DataLabels;
};

// $!GLOBALLINEPLOT (old name $!GLOBALXY).
struct GlobalLinePlot_s {
    DataLabels_s DataLabels;
    MapLegend_s Legend;
};

struct GlobalPolar_s {
    bool DrawStraightLines = true;
    double Angle = 0.017453292519943295;  // radians (1 degree)
};

struct IJKBlanking_s {
    bool Include = false;
    int IJKBlankMode = 0;  // INTERIOR
    double IMinFract = 0.0, JMinFract = 0.0, KMinFract = 0.0;
    double IMaxFract = 1.0, JMaxFract = 1.0, KMaxFract = 1.0;
    int Zone = 0;
};

// CONSTRAINT m. Variables zero-based, -1 for none.
struct BlankingConstraint_s {
    bool Include = false;
    int RelOp = 0;             // LESSTHANOREQUAL
    int ConstraintOp2Mode = 1; // USECONSTANT
    double ValueCutoff = 0.0;
    int VarA = -1, VarB = -1;
    bool Show = false;
    int Color = 1;
    int LinePattern = 0;
    double PatternLength = 0.02;
    double LineThickness = 0.001;
};

constexpr int MaxBlankingConstraints = 8;

struct ValueBlanking_s {
    bool Include = false;
    bool BlankEntireCell = true;
    int ValueBlankCellMode = 2;  // PRIMARYVALUE
    BlankingConstraint_s Constraint[MaxBlankingConstraints];
};

struct DepthBlanking_s {
    bool Include = false;
    double FromFront = 0.0, FromBack = 0.0;  // fractions of the depth range
};

struct Blanking_s {
    IJKBlanking_s IJK;
    ValueBlanking_s Value;
    DepthBlanking_s Depth;
};

// ---- layer show flags ---------------------------------------------------------------------

struct FieldLayers_s {
    int TwoDDrawOrder = 0;  // BYZONE
    bool ShowMesh = true, ShowContour = false, ShowVector = false, ShowScatter = false, ShowShade = false,
         ShowEdge = true;
    bool UseTranslucency = true, UseLightingEffect = true;
};

struct LinePlotLayers_s {
    bool ShowLines = true, ShowSymbols = false, ShowBarCharts = false, ShowErrorBars = false;
};

struct IsoSurfaceLayers_s {
    bool Show = true, ShowMesh = false, ShowContour = true, ShowShade = false;
    bool UseTranslucency = true, UseLightingEffect = true;
};

struct SliceLayers_s {
    bool Show = true, ShowMesh = false, ShowContour = true, ShowVector = false, ShowShade = false, ShowEdge = false;
    bool UseTranslucency = true, UseLightingEffect = true;
};

struct StreamtraceLayers_s {
    bool Show = true, ShowPaths = true, ShowDashes = false, ShowArrowheads = true, ShowMesh = false,
         ShowContour = false, ShowShade = false, ShowMarkers = false;
    bool UseTranslucency = true, UseLightingEffect = true;
};

// ---- axes -----------------------------------------------------------------------------------

struct AxisTicks_s {
    bool ShowOnAxisLine = true, ShowOnOppositeEdge = false, ShowOnGridBorderMin = false,
         ShowOnGridBorderMax = false, ShowOnAllAxes = true;
    int TickDirection = 0;  // IN
    double Length = 0.02;
    double LineThickness = 0.004;
    int NumMinorTicks = 4;
    double MinorLength = 0.012;
    double MinorLineThickness = 0.001;
};

struct AxisTickLabel_s {
    bool ShowOnAxisLine = true, ShowOnOppositeEdge = false, ShowOnGridBorderMin = false,
         ShowOnGridBorderMax = false, ShowOnAllAxes = true;
    bool ShowAtAxisIntersection = true;
    bool EraseBehindLabels = true;
    int Skip = 1;
    int Color = 0;
    TextShape_s TextShape{0, 1, 0.03};
    ValueFormat_s NumFormat;
    double Offset = 0.01;
    int LabelAlignment = 0;  // BYANGLE
    double Angle = 0.0;      // radians
};

// GRIDLINES and MINORGRIDLINES.
struct AxisGridlines_s {
    bool Show = false;
    int Color = 0;
    int LinePattern = 0;
    double PatternLength = 0.02;
    double LineThickness = 0.001;
    double Cutoff = 0.0;
};

struct AxisTitle_s {
    bool ShowOnAxisLine = true, ShowOnOppositeEdge = false, ShowOnGridBorderMin = false,
         ShowOnGridBorderMax = false, ShowOnAllAxes = false;
    int TitleMode = 1;  // USEVARNAME
    std::string Text;
    int Color = 0;
    TextShape_s TextShape{1, 1, 0.036};
    double Offset = 0.04;
    double PercentAlongLine = 0.5;
};

struct AxisLine_s {
    bool Show = true;
    bool ShowOppositeEdge = false;
    int Color = 0;
    double LineThickness = 0.004;
    int AxisAlignment = 2;  // WITHGRIDMIN
    double OpposingAxisValue = 0.0;
    double Position = 0.5;  // fraction along the viewport
    double Angle = 0.0;     // radians
    double Offset = 0.0;
    bool ShowBothDirections = false;
    bool ShowPerpendicular = false;
    int Edge = 0;
};

// XDETAIL, YDETAIL, ZDETAIL, THETADETAIL, RDETAIL. VarNum is zero-based.
struct AxisDetail_s {
    bool ShowAxis = true;
    int CoordScale = 0;  // LINEAR
    double RangeMin = 0.0, RangeMax = 1.0;
    bool IsReversed = false;
    bool ClipData = true;
    double ValueAtOrigin = 0.0;
    bool AutoGrid = true;
    double GrSpacing = 0.1;
    double GrAnchor = 0.0;
    int VarNum = 0;
    AxisTicks_s Ticks;
    AxisTickLabel_s TickLabel;
    AxisGridlines_s Gridlines;
    AxisGridlines_s MinorGridlines;
    AxisTitle_s Title;
    AxisLine_s AxisLine;
};

struct PreciseGrid_s {
    bool Include = false;
    double Size = 0.0025;
    int Color = 0;
};

// The grid block that the 2D, line plot and sketch axes share. The viewport is in frame
// fractions, Y up from the bottom edge.
struct AxisGrid_s {
    bool PreserveAxisScale = true;
    bool AutoAdjustRangesToNiceValues = true;
    int AxisMode = 0;  // INDEPENDENT
    double DepXToYRatio = 1.0;
    GridArea_s GridArea;
    Rect_s ViewportPosition{0.13, 0.11, 0.88, 0.88};
    double ViewportNiceFitBuffer = 0.15;
    double ViewportTopSnapTarget = 1.0;
    double ViewportTopSnapTolerance = 0.1;
    PreciseGrid_s PreciseGrid;
};

// $!TWODAXIS and $!SKETCHAXIS.
struct TwoDAxis_s {
    AxisGrid_s Grid;
    AxisDetail_s XDetail, YDetail;
};

constexpr int MaxXYLineAxes = 5;

// $!XYLINEAXIS (old name $!XYAXIS): five X and five Y axes.
struct XYLineAxis_s {
    AxisGrid_s Grid;
    AxisDetail_s XDetail[MaxXYLineAxes], YDetail[MaxXYLineAxes];
};

struct FrameAxis_s {
    bool Show = true;
    double Size = 0.08;
    double LineThickness = 0.004;
    int Color = 0;
    XY_s XYPos{0.1, 0.1};
};

struct ThreeDAxis_s {
    int AxisMode = 1;  // XYZDEPENDENT
    double XYDepXToYRatio = 1.0, DepXToYRatio = 1.0, DepXToZRatio = 1.0;
    GridArea_s GridArea;
    bool EdgeAutoReset = true;
    bool PreserveAxisScale = true;
    FrameAxis_s FrameAxis;
    double AspectRatioLimit = 25.0, AspectRatioReset = 2.0;
    double BoxAspectRatioLimit = 25.0, BoxAspectRatioReset = 2.0;
    AxisDetail_s XDetail, YDetail, ZDetail;
};

struct PolarAxis_s {
    bool PreserveAxisScale = true;
    int ThetaMode = 0;  // DEGREES
    double ThetaPeriod = 360.0;
    GridArea_s GridArea;
    Rect_s ViewportPosition{0.13, 0.11, 0.88, 0.88};
    GridArea_s ViewportStyle;
    PreciseGrid_s PreciseGrid;
    AxisDetail_s ThetaDetail, RDetail;
};

// ---- computed objects -----------------------------------------------------------------------

// $!GLOBALISOSURFACE n. DefinitionContourGroup is zero-based.
struct IsoSurfaceAttributes_s {
    bool ObeySourceZoneBlanking = false;
    bool ShowGroup = false;
    int DefinitionContourGroup = 0;
    int IsoSurfaceSelection = 1;  // ONESPECIFICVALUE
    double IsoValue1 = 0.0, IsoValue2 = 0.0, IsoValue3 = 0.0;
    int MarchingCubeAlgorithm = 1;  // CLASSICPLUS
    MeshLayer_s Mesh;
    ContourLayer_s Contour;
    ShadeLayer_s Shade;
    Effects_s Effects;
};

constexpr int MaxIsoSurfaceGroups = 4;

// PRIMARYPOSITION, STARTPOSITION, ENDPOSITION: X Y Z in grid units, I J K zero-based.
struct SlicePosition_s {
    double X = 0.0, Y = 0.0, Z = 0.0;
    int I = 0, J = 0, K = 0;
};

// $!GLOBALSLICE n.
struct SliceAttributes_s {
    bool ObeySourceZoneBlanking = false;
    bool ShowGroup = false;
    int SliceSurface = 0;  // XPLANES
    bool ShowPrimarySlice = true;
    SlicePosition_s PrimaryPosition;
    bool ShowStartEndSlice = false;
    SlicePosition_s StartPosition, EndPosition;
    bool ShowIntermediateSlices = false;
    int NumIntermediateSlices = 1;
    MeshLayer_s Mesh;
    ContourLayer_s Contour;
    VectorLayer_s Vector;
    ShadeLayer_s Shade;
    EdgeLayer_s EdgeLayer;
    Effects_s Effects;
};

constexpr int MaxSliceGroups = 4;

struct StreamTermLine_s {
    bool Show = true;
    bool IsActive = false;
    int Color = 0;
    int LinePattern = 0;
    double PatternLength = 0.02;
    double LineThickness = 0.001;
};

struct StreamTiming_s {
    bool ShowMarkers = false, ShowDashes = false;
    int MarkColor = 0;
    double MarkSize = 0.01;  // frame units
    double TimeStart = 0.0, TimeEnd = 0.0, TimeDelta = 0.0, TimeAnchor = 0.0;
    SymbolShape_s MarkSymbol{false, 8, {}};  // SPHERE
};

struct RodRibbon_s {
    double Width = 0.01;  // grid units
    int NumRodPoints = 3;
    MeshLayer_s Mesh;
    ContourLayer_s Contour;
    ShadeLayer_s Shade;
    Effects_s Effects;
};

// $!GLOBALSTREAM (old name $!STREAMATTRIBUTES). Steps are fractions of a cell.
struct StreamAttributes_s {
    bool ObeySourceZoneBlanking = true;
    bool ShowPaths = true;
    StreamTermLine_s TermLine;
    StreamTiming_s StreamTiming;
    int DashSkip = 1;
    RodRibbon_s RodRibbon;
    bool AddArrows = true;
    double CellFraction = 0.25, MinCellFraction = 0.00001;
    double ArrowheadSize = 0.012;     // frame units
    int MaxSteps = 500;
    double ArrowheadSpacing = 0.1;    // frame units
};

// ---- 3D and polar state -------------------------------------------------------------------

struct LightSource_s {
    XYZ_s XYZDirection{-0.2, -0.2, 0.959};
    double Intensity = 75.0, BackgroundLight = 25.0, SurfaceColorContrast = 100.0;  // percent
    bool IncludeSpecular = true;
    double SpecularIntensity = 40.0, SpecularShininess = 60.0;
};

struct SlicePlane_s {
    XYZ_s Origin{0.0, 0.0, 0.0};
    XYZ_s Normal{0.0, 0.0, 1.0};
};

struct GlobalThreeD_s {
    bool PerformExtra3DSorting = false;
    double AxisBoxPadding = 5.0;
    XYZ_s AxisScaleFact{1.0, 1.0, 1.0};
    XYZ_s RotateOrigin{0.0, 0.0, 0.0};
    LightSource_s LightSource;
    bool ForceGouraudFor3DContFlood = true;
    bool ForcePaneledFor3DCellFlood = true;
    double LineLiftFraction = 0.002, SymbolLiftFraction = 0.006, VectorLiftFraction = 0.005;
    SlicePlane_s Slice;
};

// $!THREEDVIEW. Angles in radians.
struct ThreeDView_s {
    bool DrawInPerspective = false;
    double PsiAngle = 1.0471975511965976;     // 60 degrees
    double ThetaAngle = -2.0943951023931953;  // -120 degrees
    double AlphaAngle = 0.0;
    XYZ_s ViewerPosition{6.0, 4.0, 5.0};
    double FieldOfView = 0.20943951023931953;  // 12 degrees
    double ViewWidth = 2.0;
};

struct PolarView_s {
    Rect_s Extents{-1.0, -1.0, 1.0, 1.0};
};

// ---- map templates --------------------------------------------------------------------------

struct FieldScatter_s {
    bool Show = true;
    SymbolShape_s SymbolShape;
    int Color = 0;
    int FillMode = 0;  // NONE
    int FillColor = 0;
    bool SizeByVariable = false;
    double FrameSize = 0.025;
    double LineThickness = 0.001;
};

// POINTS; the skips are the IJKSKIP block.
struct FieldPoints_s {
    int PointsToPlot = 0;  // SURFACENODES
    LgIndex_t ISkip = 1, JSkip = 1, KSkip = 1;
};

// Index ranges as given: MIN 1, MAX 0 for the last index, SKIP 1.
struct FieldSurfaces_s {
    int SurfacesToPlot = 0;  // BOUNDARYFACES
    IndexRange_s IRange{1, 0, 1}, JRange{1, 0, 1}, KRange{1, 0, 1};
};

struct FieldVolumeMode_s {
    bool ShowIsoSurfaces = true, ShowSlices = true, ShowStreamtraces = true;
};

// The style of one field map ($!FIELDMAP, $!FIELD): the record new maps copy.
struct FieldMapStyle_s {
    MeshLayer_s Mesh;
    ContourLayer_s Contour;
    VectorLayer_s Vector;
    ShadeLayer_s Shade;
    EdgeLayer_s EdgeLayer;
    FieldScatter_s Scatter;
    FieldPoints_s Points;
    FieldSurfaces_s Surfaces;
    FieldVolumeMode_s VolumeMode;
    Effects_s Effects;
    int Group = 1;  // as given, from 1
};

// ASSIGN of a line map. Variables, the zone and the axis numbers are zero-based; the polar
// theta and R variables are the X and Y variables under their polar names.
struct LineMapAssign_s {
    int Zone = 0;
    int XAxisVar = 0, YAxisVar = 1;
    int XAxis = 0, YAxis = 0;
    int FunctionDependency = 0;  // XINDEPENDENT
    int ShowInLegend = 2;        // AUTO
    int Sort = 0;                // NONE
    int SortVar = -1;
};

struct LineMapLines_s {
    bool Show = true;
    int Color = 0;
    int LinePattern = 0;
    double PatternLength = 0.02;
    double LineThickness = 0.001;
};

struct LineMapCurves_s {
    int CurveType = 0;  // LINESEG
    int NumPts = 200;
    int PolyOrder = 3;
    int WeightVar = -1;
    bool UseWeightVar = false;
    double IndVarMin = -1e150, IndVarMax = 1e150;
    bool UseIndVarRange = false;
    bool ClampSpline = false;
    double SplineDerivativeAtStart = 0.0, SplineDerivativeAtEnd = 0.0;
    std::string ExtendedName, ExtendedSettings;
};

struct LineMapSymbols_s {
    bool Show = false;
    SymbolShape_s SymbolShape;
    int Color = 0;
    int FillMode = 0;
    int FillColor = 0;
    double Size = 0.025;
    double LineThickness = 0.001;
    int SkipMode = 0;  // BYINDEX
    double Skipping = 1.0;
};

struct LineMapBarCharts_s {
    bool Show = false;
    int Color = 0;
    int FillMode = 2;  // USELINECOLOR
    int FillColor = 0;
    double Size = 0.025;
    double LineThickness = 0.001;
};

struct LineMapErrorBars_s {
    int Var = -1;
    bool Show = false;
    int BarType = 5;  // VERT
    int Color = 0;
    double LineThickness = 0.001;
    int SkipMode = 0;
    double Skipping = 1.0;
    double Size = 0.025;
};

struct LineMapIndices_s {
    int IJKLines = 0;  // I
    IndexRange_s IRange{1, 0, 1}, JRange{1, 0, 1}, KRange{1, 0, 1};
};

// The style of one line map ($!LINEMAP, $!XYMAP): the record new maps copy.
struct LineMapStyle_s {
    std::string Name = "&ZN&: &DV&";
    LineMapAssign_s Assign;
    LineMapLines_s Lines;
    LineMapCurves_s Curves;
    LineMapSymbols_s Symbols;
    LineMapBarCharts_s BarCharts;
    LineMapErrorBars_s ErrorBars;
    LineMapIndices_s Indices;
};

// ---- the frame style ------------------------------------------------------------------------

struct FrameStyle_s {
    FrameLayout_s FrameLayout;
    Linking_s Linking;
    GlobalTime_s GlobalTime;
    GlobalEdge_s GlobalEdge;
    GlobalRGB_s GlobalRGB;
    GlobalContour_s GlobalContour[MaxContourGroups];
    GlobalVector_s GlobalTwoDVector, GlobalThreeDVector;
    GlobalScatter_s GlobalScatter;
    GlobalLinePlot_s GlobalLinePlot;
    GlobalPolar_s GlobalPolar;
    Blanking_s Blanking;
    FieldLayers_s FieldLayers;
    LinePlotLayers_s LinePlotLayers;
    IsoSurfaceLayers_s IsoSurfaceLayers;
    SliceLayers_s SliceLayers;
    StreamtraceLayers_s StreamtraceLayers;
    ThreeDAxis_s ThreeDAxis;
    TwoDAxis_s TwoDAxis;
    XYLineAxis_s XYLineAxis;
    TwoDAxis_s SketchAxis;
    PolarAxis_s PolarAxis;
    IsoSurfaceAttributes_s IsoSurfaceAttributes[MaxIsoSurfaceGroups];
    SliceAttributes_s SliceAttributes[MaxSliceGroups];
    StreamAttributes_s StreamAttributes;
    GlobalThreeD_s GlobalThreeD;
    ThreeDView_s ThreeDView;
    PolarView_s PolarView;
    FieldMapStyle_s FieldMap;  // template of new field maps
    LineMapStyle_s LineMap;    // template of new line maps
    TextStyle_s BaseText;      // BASETEXT: how new text of the frame starts out
    GeomStyle_s BaseGeom;      // BASEGEOM: how new geometries of the frame start out
};

extern FrameStyle_s FrameFactoryDefaults;
extern FrameStyle_s FrameBase;

// Fills FrameFactoryDefaults with the compiled-in values and copies them to FrameBase.
void InitializeFrameFactoryDefaults();
// Moves FrameBase, never the factory record, to the values current work uses (streamtrace
// MAXSTEPS 10000 in place of 500).
void ModernizeFrameDefaults();
// The record a new frame copies: the factory values or the configured ones.
const FrameStyle_s &GetFrameTemplate(bool useFactory);

// True for the major rows that address a frame: the frame's style records, and the frame
// rows the set-value command handles itself (PLOTTYPE, FRAMENAME, the active map sets,
// BASETEXT, BASEGEOM).
bool IsFrameStyleMajorRow(int row);

// Changes one value of the frame style. path holds up to seven entries, -1 where unused: the
// major row in [0]; behind GLOBALCONTOUR, GLOBALISOSURFACE, ISOSURFACEATTRIBUTES, GLOBALSLICE and
// SLICEATTRIBUTES the group number (1 to 4) stands in [1] in place of a row; behind FIELD,
// FIELDMAP, LINEMAP and XYMAP [1] holds the map set and the map template is addressed; behind the
// numbered sub-parents (XDETAIL and YDETAIL of XYLINEAXIS and XYAXIS, COLORMAPOVERRIDE,
// CONSTRAINT) the next entry is that number, from 1. argValue carries integers, enumerated values,
// booleans and strings (const char *); doubleValue doubles, in macro units. assignOp is an
// AssignOp_e. On failure *error (if given) holds the message.
SetValueReturnCode_e FrameStyleSetValue(FrameStyle_s *style, const int path[7], ArbParam_t argValue,
                                        double doubleValue, int assignOp, std::string *error);
// Reads one value in macro units: doubles into *doubleOut, the rest into *argOut (a string as a
// const char * owned by the style). FrameStyle_Ok, or FrameStyle_InvalidCommandOption for a path
// that names no value.
SetValueReturnCode_e FrameStyleGetValue(const FrameStyle_s *style, const int path[7], double *doubleOut,
                                        ArbParam_t *argOut);

// The same for one map's record, with the path as for FIELD/FIELDMAP or LINEMAP/XYMAP above (the
// rows from [2] on). frameRect is the frame's rectangle, for unit suffixes.
SetValueReturnCode_e FieldMapStyleSetValue(FieldMapStyle_s *map, const Rect_s &frameRect, const int path[7],
                                           ArbParam_t argValue, double doubleValue, int assignOp, std::string *error);
SetValueReturnCode_e FieldMapStyleGetValue(const FieldMapStyle_s *map, const int path[7], double *doubleOut,
                                           ArbParam_t *argOut);
SetValueReturnCode_e LineMapStyleSetValue(LineMapStyle_s *map, const Rect_s &frameRect, const int path[7],
                                          ArbParam_t argValue, double doubleValue, int assignOp, std::string *error);
SetValueReturnCode_e LineMapStyleGetValue(const LineMapStyle_s *map, const int path[7], double *doubleOut,
                                          ArbParam_t *argOut);

// Every colour value of a record that equals a becomes b, and every one that equals b becomes a
// (a new frame background trades places with the old one throughout a frame's style).
void SwapFrameStyleColors(FrameStyle_s *style, int a, int b);
void SwapFieldMapStyleColors(FieldMapStyle_s *map, int a, int b);
void SwapLineMapStyleColors(LineMapStyle_s *map, int a, int b);
